#include "primitives/dispatch/fpu_control.h"

#include <cstdint>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#define NUV_HAS_X87_SSE 1
#else
#define NUV_HAS_X87_SSE 0
#endif

namespace {

constexpr unsigned int sseExceptionFlags = 0x3F;
constexpr unsigned int dazBit = 0x40;

#if NUV_HAS_X87_SSE

unsigned int x87ControlWord() {
    std::uint16_t cw;
    __asm__ volatile("fnstcw %0" : "=m"(cw));
    return cw;
}

unsigned int x87StatusWord() {
    std::uint16_t sw;
    __asm__ volatile("fnstsw %0" : "=m"(sw));
    return sw;
}

void x87ClearExceptions() {
    __asm__ volatile("fnclex");
}

void x87LoadControlWord(unsigned int controlWord) {
    // A pending flag that the new word unmasks would fault at the next x87 instruction.
    x87ClearExceptions();
    const std::uint16_t cw = static_cast<std::uint16_t>(controlWord);
    __asm__ volatile("fldcw %0" : : "m"(cw));
}

unsigned int mxcsr() {
    std::uint32_t value;
    __asm__ volatile("stmxcsr %0" : "=m"(value));
    return value;
}

// The MXCSR bits this processor accepts, from the save area of FXSAVE: a mask of 0 there
// means the processor predates the field and takes everything but denormals-are-zero.
unsigned int mxcsrWritableBits() {
    alignas(16) unsigned char area[512];
    std::memset(area, 0, sizeof area);
    __asm__ volatile("fxsave %0" : "=m"(area));
    std::uint32_t mask;
    std::memcpy(&mask, area + 28, sizeof mask);
    return mask != 0 ? mask : 0xFFBFu;
}

void loadMxcsr(unsigned int value) {
    // A reserved bit set in the register faults, so only the accepted bits go in.
    const std::uint32_t accepted = value & mxcsrWritableBits();
    __asm__ volatile("ldmxcsr %0" : : "m"(accepted));
}

#else

unsigned int x87ControlWord() {
    return 0;
}
unsigned int x87StatusWord() {
    return 0;
}
void x87ClearExceptions() {}
void x87LoadControlWord(unsigned int) {}
unsigned int mxcsr() {
    return 0;
}
unsigned int mxcsrWritableBits() {
    return 0;
}
void loadMxcsr(unsigned int) {}

#endif

std::uint64_t bitsOf(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

constexpr std::uint64_t exponentBits = 0x7FF0000000000000ull;
constexpr std::uint64_t fractionBits = 0x000FFFFFFFFFFFFFull;

}  // namespace

extern "C" {

void ps_set_cw_fpu(unsigned int controlWord) {
    x87LoadControlWord(controlWord);
}
unsigned int ps_get_cw_fpu(void) {
    return x87ControlWord();
}
unsigned int ps_get_sw_fpu(void) {
    return x87StatusWord();
}
void ps_clear_fpu(void) {
    x87ClearExceptions();
}

unsigned int ipp_control87(unsigned int controlWord, unsigned int mask) {
    if (mask != 0) x87LoadControlWord((x87ControlWord() & ~mask) | (controlWord & mask));
    return x87ControlWord();
}

unsigned int ipp_status87(void) {
    return x87StatusWord();
}

unsigned int ipp_clear87(void) {
    const unsigned int status = x87StatusWord();
    x87ClearExceptions();
    return status;
}

unsigned int ipp_set_rcpc_fpu(unsigned int rounding, unsigned int precision) {
    const unsigned int previous = x87ControlWord();
    x87LoadControlWord((previous & ~0xF00u) | ((rounding & 3u) << 10) | ((precision & 3u) << 8));
    return previous;
}

unsigned int ipp_set_cw_fpu(unsigned int controlWord) {
    const unsigned int previous = x87ControlWord();
    x87LoadControlWord(controlWord);
    return previous;
}

void ps_set_ssx(unsigned int value) {
    loadMxcsr(value);
}
unsigned int ps_get_ssx(void) {
    return mxcsr();
}
void ipp_clear_ssx(void) {
    loadMxcsr(mxcsr() & ~sseExceptionFlags);
}

unsigned int ipp_set_rc_ssx(unsigned int rounding) {
    const unsigned int previous = mxcsr();
    loadMxcsr((previous & ~0x6000u) | ((rounding & 3u) << 13));
    return previous;
}

unsigned int ipp_set_cw_ssx(unsigned int value, unsigned int mask) {
    const unsigned int previous = mxcsr();
    loadMxcsr((previous & ~mask) | (value & mask));
    return previous;
}

int ipp_tst_daz_ssx(void) {
    return (mxcsrWritableBits() & dazBit) ? 1 : 0;
}

int ipp_isnan(double value) {
    const std::uint64_t bits = bitsOf(value);
    return (bits & exponentBits) == exponentBits && (bits & fractionBits) != 0 ? 1 : 0;
}

int ipp_finite(double value) {
    return (bitsOf(value) & exponentBits) != exponentBits ? 1 : 0;
}

}  // extern "C"
