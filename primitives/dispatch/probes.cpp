#include "primitives/dispatch/probes.h"

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <x86intrin.h>
#endif

namespace {

struct Regs {
    Ipp32u eax, ebx, ecx, edx;
};

Regs query(Ipp32u leaf, Ipp32u subleaf = 0) {
    Ipp32u r[4];
    nuvCpuid(leaf, subleaf, r);
    return {r[0], r[1], r[2], r[3]};
}

int bit(Ipp32u word, int n) {
    return static_cast<int>((word >> n) & 1u);
}

// "GenuineIntel" as the three little-endian words of EBX, EDX and ECX.
constexpr Ipp32u vendorEbx = 0x756E6547u;  // "Genu"
constexpr Ipp32u vendorEdx = 0x49656E69u;  // "ineI"
constexpr Ipp32u vendorEcx = 0x6C65746Eu;  // "ntel"

}  // namespace

extern "C" {

int ipp_has_cpuid(void) {
#if defined(__x86_64__) || defined(__i386__)
    return 1;
#else
    return 0;
#endif
}

int ipp_max_cpuid_input(void) {
    return static_cast<int>(query(0).eax);
}

int ipp_has_rdtsc(void) {
    return bit(query(1).edx, 4);
}
int ipp_is_mmx_extension(void) {
    return bit(query(1).edx, 23);
}
int ipp_is_ssx_extension(void) {
    return bit(query(1).edx, 25);
}
int ipp_is_wni_extension(void) {
    return bit(query(1).edx, 26);
}

int ipp_is_htt_extension(void) {
    const Regs r = query(1);
    // The flag alone is set on many single-core parts; the logical processor count decides.
    return bit(r.edx, 28) && ((r.ebx >> 16) & 0xFFu) > 1 ? 1 : 0;
}

int ipp_is_pni_extension(void) {
    return bit(query(1).ecx, 0);
}

int ipp_is_em64t_extension(void) {
    const Ipp32u maxExt = query(0x80000000u).eax;
    if (maxExt >= 0x80000001u) return bit(query(0x80000001u).edx, 29);
    // Without the extended leaf there is no flag to read, and the answer of leaf 0x80000000
    // is passed on unchanged.
    return static_cast<int>(maxExt);
}

int ipp_is_mni_extension(void) {
    return bit(query(1).ecx, 9);
}
int ipp_is_sse41_extension(void) {
    return bit(query(1).ecx, 19);
}
int ipp_is_sse42_extension(void) {
    return bit(query(1).ecx, 20);
}
int ipp_is_movbe(void) {
    return bit(query(1).ecx, 22);
}

int ipp_is_avx_extension(void) {
    const Regs r = query(1);
    // The control register may be read only when the system has turned on its use (bit 27);
    // then AVX is usable when the system saves both the SSE and the upper AVX state.
    if (!bit(r.ecx, 27) || !bit(r.ecx, 28)) return 0;
    return (nuvXgetbv0() & 6u) == 6u ? 1 : 0;
}

int ipp_get_cores_on_die(void) {
    if (ipp_max_cpuid_input() < 4) return 1;
    return static_cast<int>(query(4, 0).eax >> 26) + 1;
}

Ipp64u ipp_get_pentium_counter(void) {
#if defined(__x86_64__) || defined(__i386__)
    return __rdtsc();
#else
    return 0;
#endif
}

int ipp_is_GenuineIntel(void) {
    const Regs r = query(0);
    return r.ecx == vendorEcx && r.edx == vendorEdx && r.ebx == vendorEbx ? 1 : 0;
}

int ipp_get_pentium_ident(NuvProcessorIdent* ident) {
    if (ident == nullptr) return 0;
    NuvProcessorIdent id;
    std::memset(&id, 0, sizeof id);
    const Regs leaf0 = query(0);
    const Regs leaf1 = query(1);
    id.maxLeaf = leaf0.eax;
    id.maxExtLeaf = query(0x80000000u).eax;
    std::memcpy(id.vendor, &leaf0.ebx, 4);
    std::memcpy(id.vendor + 4, &leaf0.edx, 4);
    std::memcpy(id.vendor + 8, &leaf0.ecx, 4);
    id.vendor[12] = '\0';
    id.signature = leaf1.eax;
    id.misc = leaf1.ebx;
    id.featuresEcx = leaf1.ecx;
    id.featuresEdx = leaf1.edx;

    const int baseFamily = static_cast<int>((leaf1.eax >> 8) & 0xFu);
    const int baseModel = static_cast<int>((leaf1.eax >> 4) & 0xFu);
    id.family =
        baseFamily == 0xF ? baseFamily + static_cast<int>((leaf1.eax >> 20) & 0xFFu) : baseFamily;
    id.model = baseFamily == 0x6 || baseFamily == 0xF
                   ? baseModel + (static_cast<int>((leaf1.eax >> 16) & 0xFu) << 4)
                   : baseModel;
    id.stepping = static_cast<int>(leaf1.eax & 0xFu);
    id.type = static_cast<int>((leaf1.eax >> 12) & 0x3u);

    id.genuineIntel = ipp_is_GenuineIntel();
    id.rdtsc = ipp_has_rdtsc();
    id.mmx = ipp_is_mmx_extension();
    id.sse = ipp_is_ssx_extension();
    id.sse2 = ipp_is_wni_extension();
    id.sse3 = ipp_is_pni_extension();
    id.ssse3 = ipp_is_mni_extension();
    id.sse41 = ipp_is_sse41_extension();
    id.sse42 = ipp_is_sse42_extension();
    id.movbe = ipp_is_movbe();
    id.avx = ipp_is_avx_extension();
    id.htt = ipp_is_htt_extension();
    id.em64t = ipp_is_em64t_extension();
    id.coresOnDie = ipp_get_cores_on_die();
    *ident = id;
    return 1;
}

}  // extern "C"
