// The floating-point control group on the processor running the tests: round trips of the
// x87 control word and of MXCSR, flags raised and cleared, and no fault whatever is loaded.
#include "support/fake_processor.h"
#include "primitives/dispatch/fpu_control.h"

#include <cfenv>
#include <cstdint>
#include <cstring>
#include <limits>

namespace nuv::test {
namespace {

#if defined(__x86_64__) || defined(__i386__)

// The saved environment covers the x87 words and MXCSR; every test leaves them as found.
class FpuControlTest : public DispatchTest {
protected:
    void SetUp() override {
        DispatchTest::SetUp();
        std::fegetenv(&_saved);
    }
    void TearDown() override {
        std::fesetenv(&_saved);
        DispatchTest::TearDown();
    }
    void restore() { std::fesetenv(&_saved); }

private:
    std::fenv_t _saved;
};

constexpr unsigned int x87Invalid = 0x1;
constexpr unsigned int x87Flags = 0x3F;
constexpr unsigned int sseFlags = 0x3F;
constexpr unsigned int sseZeroDivide = 0x4;

// The square root of -1 on the x87 unit: an invalid operation, masked by default.
void raiseX87Invalid() {
    __asm__ volatile("fld1\n\tfchs\n\tfsqrt\n\tfstp %%st(0)" ::: "st");
}

// One x87 instruction that waits: it faults if an unmasked flag is pending.
void touchX87() {
    __asm__ volatile("fld1\n\tfstp %%st(0)\n\tfwait" ::: "st");
}

double doubleFromBits(std::uint64_t bits) {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Round trips, the rounding and precision fields (arguments cut to them), selected bits,
// and rounding that takes effect.
TEST_F(FpuControlTest, X87ControlWord) {
    const unsigned int original = ps_get_cw_fpu();
    for (unsigned int cw : {0x27Fu, 0xF7Fu, 0x07Fu, 0x37Fu}) {
        ps_set_cw_fpu(cw);
        EXPECT_EQ(ps_get_cw_fpu(), cw);
    }
    EXPECT_EQ(ipp_set_cw_fpu(0x27F), 0x37Fu);
    EXPECT_EQ(ipp_set_cw_fpu(original), 0x27Fu);
    ps_set_cw_fpu(0x37F);
    const unsigned int steps[][3] = {
        {0xFFFF, 0, 0x37F}, {0xC00, 0xC00, 0xF7F}, {0x000, 0x300, 0xC7F}};
    for (auto const& [value, mask, after] : steps) {
        EXPECT_EQ(ipp_control87(value, mask), after);  // the word as it now stands
        EXPECT_EQ(ps_get_cw_fpu(), after);
    }
    ps_set_cw_fpu(0x37F);
    EXPECT_EQ(ipp_set_rcpc_fpu(3, 2), 0x37Fu);
    EXPECT_EQ(ipp_set_rcpc_fpu(0x5, 0x7), 0xE7Fu);
    EXPECT_EQ(ps_get_cw_fpu(), 0x77Fu);
    volatile long double one = 1.0L, three = 3.0L;
    ipp_set_rcpc_fpu(1, 3);  // down, extended
    const long double down = one / three;
    ipp_set_rcpc_fpu(2, 3);  // up
    const long double up = one / three;
    restore();
    EXPECT_LT(down, up);
}

// Flags raised and cleared; no setter faults when it unmasks a pending flag.
TEST_F(FpuControlTest, X87Flags) {
    ps_clear_fpu();
    EXPECT_EQ(ipp_status87() & x87Flags, 0u);
    raiseX87Invalid();
    EXPECT_EQ(ps_get_sw_fpu() & x87Invalid, x87Invalid);
    EXPECT_EQ(ipp_clear87() & x87Invalid, x87Invalid);
    EXPECT_EQ(ps_get_sw_fpu() & x87Flags, 0u);
    const unsigned int masked = ps_get_cw_fpu() | x87Flags;
    const unsigned int unmasked = masked & ~x87Invalid;
    void (*const setters[])(unsigned int) = {[](unsigned int cw) { ps_set_cw_fpu(cw); },
                                             [](unsigned int cw) { ipp_set_cw_fpu(cw); },
                                             [](unsigned int) { ipp_control87(0, x87Invalid); },
                                             [](unsigned int cw) {
                                                 ps_set_cw_fpu(cw);
                                                 ipp_set_rcpc_fpu(0, 3);
                                             }};
    for (auto set : setters) {
        ps_set_cw_fpu(masked);
        raiseX87Invalid();
        set(unmasked);
        touchX87();
        EXPECT_EQ(ps_get_sw_fpu() & x87Flags, 0u);
    }
    ps_set_cw_fpu(masked);
}

TEST_F(FpuControlTest, Mxcsr) {
    const unsigned int original = ps_get_ssx();
    ps_set_ssx(0x7F80);
    EXPECT_EQ(ps_get_ssx(), 0x7F80u);
    ps_set_ssx(original);
    EXPECT_EQ(ps_get_ssx(), original);
    ps_set_ssx(0x1F80);
    for (unsigned int rc : {0u, 1u, 2u, 3u, 5u}) {  // cut to two bits
        const unsigned int before = ps_get_ssx();
        EXPECT_EQ(ipp_set_rc_ssx(rc), before);
        EXPECT_EQ(ps_get_ssx(), 0x1F80u | ((rc & 3) << 13));
    }
    ps_set_ssx(0x1F80);
    // Bits outside the mask stay, whatever the value says.
    EXPECT_EQ(ipp_set_cw_ssx(0x8000, 0x8000), 0x1F80u);
    EXPECT_EQ(ipp_set_cw_ssx(0xFFFFFFFF, 0x6000), 0x9F80u);
    EXPECT_EQ(ipp_set_cw_ssx(0x0000, 0x8000), 0xFF80u);
    EXPECT_EQ(ps_get_ssx(), 0x7F80u);
    ps_set_ssx(0x1F80);
    volatile double zero = 0.0, one = 1.0, three = 3.0;
    volatile double infinite = one / zero;
    (void)infinite;
    EXPECT_EQ(ps_get_ssx() & sseZeroDivide, sseZeroDivide);
    ipp_clear_ssx();
    EXPECT_EQ(ps_get_ssx(), 0x1F80u);  // flags go, masks stay
    ipp_set_rc_ssx(1);
    const double down = one / three;
    ipp_set_rc_ssx(2);
    const double up = one / three;
    restore();
    EXPECT_LT(down, up);
}

// Every architectural bit but denormals-are-zero is accepted everywhere; that one and the
// bits above 15 only where the processor says so, and then denormals read as zero.
TEST_F(FpuControlTest, ReservedBitsAndDenormals) {
    const int daz = ipp_tst_daz_ssx();
    EXPECT_TRUE(daz == 0 || daz == 1);
    ps_set_ssx(0xFFFFFFFF);
    const unsigned int all = ps_get_ssx();
    ipp_set_cw_ssx(0xFFFF0000, 0xFFFF0000);
    EXPECT_EQ(ps_get_ssx(), all);
    restore();
    EXPECT_EQ(all & 0xFFBFu, 0xFFBFu);
    EXPECT_EQ((all & 0x40u) != 0, daz == 1);
    ps_set_ssx(0x1F80);
    volatile double tiny = 1e-310, zero = 0.0;
    ipp_set_cw_ssx(0x40, 0x40);
    const unsigned int mxcsr = ps_get_ssx();
    const double sum = tiny + zero;
    restore();
    EXPECT_EQ(mxcsr & 0x40u, daz ? 0x40u : 0u);
    EXPECT_EQ(sum, daz ? 0.0 : 1e-310);
}

// Classified by the bits: not even a signaling NaN raises a flag.
TEST_F(FpuControlTest, Classification) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double largest = std::numeric_limits<double>::max();
    struct Row {
        double value;
        int nan, finite;
    } const rows[] = {{std::numeric_limits<double>::quiet_NaN(), 1, 0},
                      {doubleFromBits(0x7FF0000000000001ull), 1, 0},
                      {-inf, 0, 0},
                      {std::numeric_limits<double>::denorm_min(), 0, 1},
                      {-largest, 0, 1}};
    ps_set_ssx(0x1F80);
    for (Row const& r : rows) {
        EXPECT_EQ(ipp_isnan(r.value), r.nan) << r.value;
        EXPECT_EQ(ipp_finite(r.value), r.finite) << r.value;
    }
    EXPECT_EQ(ps_get_ssx() & sseFlags, 0u);
}

#endif

}  // namespace
}  // namespace nuv::test
