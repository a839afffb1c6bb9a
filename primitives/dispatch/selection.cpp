// Choosing the slot that every stub jumps through: by detection (ippStaticInit, ippInit) or
// by a processor code (ippInitCpu). Nothing in the library calls these; a host that never
// does runs the m7 bodies everywhere.
#include "primitives/dispatch/dispatch_state.h"
#include "primitives/dispatch/probes.h"

namespace nuv::prim::dispatch {

namespace {

// The AVX processor code; no code is ever disabled in this build, but selection asks.
constexpr int avxCpuCode = 70;

void selectSlot(Ipp32u index, Ipp32u lp, Ipp64u mask) {
    ippJumpIndexForMergedLibs = index;
    ippJumpIndexForMergedLibsLP = lp;
    ownSetFeatureMask(mask);
}

// The forced selections of ippInitCpu. The masks name what each variant's bodies may use;
// they are not checked against the processor that runs them.
struct ForcedCode {
    int code;
    Ipp32u index;
    Ipp32u lp;
    Ipp64u mask;
};

ForcedCode const forcedCodes[] = {
    {0, 1, 0, 0xF},    {32, 1, 0, 0xF},   {66, 1, 0, 0xF},    {33, 2, 0, 0x1F},
    {34, 2, 0, 0x1F},  {67, 2, 0, 0x1F},  {36, 3, 1, 0x3F},   {35, 4, 0, 0x5F},
    {68, 4, 0, 0x5F},  {37, 4, 0, 0xDF},  {69, 4, 0, 0xDF},   {38, 4, 0, 0xCDF},
    {71, 4, 0, 0xCDF}, {70, 5, 0, 0xFDF}, {73, 5, 0, 0x6FDF}, {74, 6, 0, 0xEFFF},
};

// Codes of processors older than the lowest variant: known, but nothing to select.
bool belowLowestVariant(int code) {
    return (code >= 1 && code <= 11) || code == 64 || code == 65 || code == 96;
}

}  // namespace

IppStatus ownippStaticInitCpu(int cpuCode) {
    if (cpuCode == -1) return ippInit();
    IppStatus status;
    if (belowLowestVariant(cpuCode)) {
        status = ippStsNoCpuFeaturesWrn;
    } else {
        ForcedCode const* forced = nullptr;
        for (ForcedCode const& row : forcedCodes)
            if (row.code == cpuCode) forced = &row;
        if (forced == nullptr) return ippStsUnknownCpuCodeWrn;
        selectSlot(forced->index, forced->lp, forced->mask);
        status = ippStsNoErr;
    }
    // The mask in force becomes the detected word, so ippGetCpuFeatures reports what was
    // forced rather than what the processor has.
    ownMaskIsFeatures();
    return status;
}

}  // namespace nuv::prim::dispatch

extern "C" {

IppStatus ippStaticInit(void) {
    using namespace nuv::prim::dispatch;
    Ipp64u f = 0;
    IppStatus result = ippGetCpuFeatures(&f, nullptr);
    if (result != ippStsNoErr) {
        selectSlot(0, 0, 7);
    } else if ((f & ippCPUID_AVX) && (f & ippAVX_ENABLEDBYOS) && ippIsCpuEnabled(avxCpuCode)) {
        // Slot 5 drops MOVBE and everything from bit 15 up; slot 6 only the coprocessor bit.
        if (f & ippCPUID_AVX2)
            selectSlot(6, 0, f & 0xEFFF);
        else
            selectSlot(5, 0, f & 0x6FDF);
    } else if (f & ippCPUID_SSE41) {
        selectSlot(4, 0, f & 0xCDF);
    } else if ((f & ippCPUID_MOVBE) && (f & ippCPUID_SSSE3)) {
        selectSlot(3, 1, f & 0x3F);
    } else if ((f & ippCPUID_SSSE3) && !(f & ippCPUID_MOVBE)) {
        selectSlot(2, 0, f & 0x1F);
    } else if (f & ippCPUID_SSE3) {
        // Also where MOVBE comes without SSSE3: neither SSSE3 slot takes it.
        selectSlot(1, 0, f & 0xF);
    } else {
        selectSlot(0, 0, f & 7);
        result = ippStsNoCpuFeaturesWrn;
    }
    // The selection stands on any vendor; the caller is only told.
    if (!ipp_has_cpuid() || !ipp_is_GenuineIntel()) return ippStsNonGenuineCpuWrn;
    return result;
}

IppStatus ippInit(void) {
    return ippStaticInit();
}

IppStatus ippInitCpu(int cpuCode) {
    return nuv::prim::dispatch::ownippStaticInitCpu(cpuCode);
}

// No processor can be disabled in this build.
int ippIsCpuEnabled(int cpuCode) {
    (void)cpuCode;
    return 1;
}

IppStatus ippEnableCpu(int cpuCode) {
    (void)cpuCode;
    return ippStsNoErr;
}

}  // extern "C"
