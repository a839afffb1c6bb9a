// The feature word: what the processor reports, read once, and the mask of what selection
// lets the bodies use.
#include "primitives/dispatch/dispatch_state.h"
#include "primitives/dispatch/probes.h"

#include <cstring>

namespace nuv::prim::dispatch {

void ownGetReg(Ipp32u regs[4], Ipp32u leaf, Ipp32u subleaf) {
    nuvCpuid(leaf, subleaf, regs);
}

namespace {

Ipp64u flag(Ipp32u word, int bit, Ipp64u feature) {
    return ((word >> bit) & 1u) ? feature : 0;
}

Ipp64u detectFeatures() {
    Ipp32u leaf1[4];
    ownGetReg(leaf1, 1, 0);
    const Ipp32u eax = leaf1[0], ecx = leaf1[2], edx = leaf1[3];
    Ipp64u word =
        flag(edx, 23, ippCPUID_MMX) | flag(edx, 25, ippCPUID_SSE) | flag(edx, 26, ippCPUID_SSE2) |
        flag(ecx, 0, ippCPUID_SSE3) | flag(ecx, 9, ippCPUID_SSSE3) | flag(ecx, 22, ippCPUID_MOVBE) |
        flag(ecx, 19, ippCPUID_SSE41) | flag(ecx, 20, ippCPUID_SSE42) |
        flag(ecx, 28, ippCPUID_AVX) | flag(ecx, 25, ippCPUID_AES) | flag(ecx, 1, ippCPUID_CLMUL) |
        flag(ecx, 30, ippCPUID_RDRRAND) | flag(ecx, 29, ippCPUID_F16C);
    // The system's part of AVX is asked only when the processor has AVX and lets the system
    // report it (OSXSAVE); reading the control register otherwise would fault.
    const Ipp32u osxsaveAndAvx = (1u << 27) | (1u << 28);
    if ((ecx & osxsaveAndAvx) == osxsaveAndAvx && ipp_is_avx_extension())
        word |= ippAVX_ENABLEDBYOS;
    // The coprocessor family answers one extra leaf of its own.
    if (((eax >> 8) & 0xFu) == 0xBu) {
        Ipp32u extra[4];
        ownGetReg(extra, 0x20000001u, 0);
        word |= flag(extra[3], 1, ippCPUID_ABR);
    }
    // AVX2 counts only with everything the l9 bodies use beside it: FMA, BMI1 and BMI2.
    if ((ecx >> 12) & 1u) {
        Ipp32u leaf7[4];
        ownGetReg(leaf7, 7, 0);
        const Ipp32u avx2Bmi1Bmi2 = (1u << 5) | (1u << 3) | (1u << 8);
        if ((leaf7[1] & avx2Bmi1Bmi2) == avx2Bmi1Bmi2) word |= ippCPUID_AVX2;
    }
    return word;
}

// The eight bytes "leafread" read as a little-endian word: a caller who leaves this in the
// feature word before the call asks for an identification query of its own choosing.
Ipp64u leafReadMarker() {
    Ipp64u marker;
    std::memcpy(&marker, "leafread", sizeof marker);
    return marker;
}

}  // namespace

int ownGetMaskFeatures(Ipp64u* pFeatures) {
    if (!ipp_has_cpuid()) return 0;
    if (!ownFeaturesAreValid) {
        ownFeatures = detectFeatures();
        ownFeaturesAreValid = 1;
    }
    *pFeatures = ownFeatures;
    return 1;
}

int ownGetFeature(Ipp64u mask) {
    return (ownFeaturesMask & mask) == mask ? 1 : 0;
}

int ownSetFeatureMask(Ipp64u mask) {
    ownFeaturesMask = mask;
    return 1;
}

void ownMaskIsFeatures() {
    ownFeatures = ownFeaturesMask;
    ownFeaturesAreValid = 1;
}

}  // namespace nuv::prim::dispatch

extern "C" {

IppStatus ippGetCpuFeatures(Ipp64u* pFeatures, Ipp32u* pRegs) {
    using namespace nuv::prim::dispatch;
    Ipp64u word = 0;
    if (!ownGetMaskFeatures(&word)) return ippStsNoCpuFeaturesWrn;
    if (pFeatures == nullptr) return ippStsNullPtrErr;
    const Ipp64u previous = *pFeatures;
    *pFeatures = word;
    if (pRegs == nullptr) return ippStsNoErr;
    if (previous == leafReadMarker())
        ownGetReg(pRegs, pRegs[0], pRegs[2]);
    else
        ownGetReg(pRegs, 1, 0);
    return ippStsNoErr;
}

Ipp64u ippGetEnabledCpuFeatures(void) {
    return nuv::prim::dispatch::ownFeaturesMask;
}

IppStatus ippSetCpuFeaturesMask(Ipp64u mask) {
    nuv::prim::dispatch::ownSetFeatureMask(mask);
    return ippStsNoErr;
}

}  // extern "C"
