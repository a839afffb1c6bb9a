// Selection by detection (ippStaticInit, ippInit, ippInitCpu(-1)) on recorded processors,
// selection forced by processor code, and selection on the processor running the tests.
#include "support/fake_processor.h"
#include "primitives/dispatch/dispatch_state.h"
#include "support/slots.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <string>

namespace nuv::test {
namespace {

namespace dispatch = nuv::prim::dispatch;

struct Selection {
    Ipp32u index, lp;
    Ipp64u mask, detected = 0;
};

void expectSelection(Selection const& expected) {
    Ipp64u detected = 0;
    EXPECT_EQ(ippGetCpuFeatures(&detected, nullptr), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibs, expected.index);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, expected.lp);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), expected.mask);
    EXPECT_EQ(detected, expected.detected);
}

using Maker = std::function<FakeProcessor()>;
// A recorded processor with leaf-1 ECX and leaf-7 EBX bits taken away or added, with another
// control register, or with an extra answer.
Maker edit(Maker base, Ipp32u ecxOff, Ipp32u leaf7Off, Ipp32u ecxOn = 0) {
    return [=] {
        FakeProcessor cpu = base();
        CpuRegs leaf1 = cpu.query(1, 0), leaf7 = cpu.query(7, 0);
        leaf1.ecx = (leaf1.ecx & ~ecxOff) | ecxOn;
        leaf7.ebx &= ~leaf7Off;
        return cpu.answer(1, leaf1).answer(7, 0, leaf7);
    };
}
Maker withXcr0(Maker base, Ipp64u xcr0) {
    return [=] { return base().xcr0(xcr0); };
}
Maker with(Maker base, Ipp32u leaf, CpuRegs regs) {
    return [=] { return base().answer(leaf, regs); };
}

struct DetectionCase {
    char const* name;
    Maker processor;
    Selection expected;
    IppStatus status;
};

using namespace processors;
constexpr Ipp32u fma = 1u << 12, osxsave = 1u << 27, movbe = 1u << 22;
constexpr Ipp32u bmi1 = 1u << 3, avx2 = 1u << 5, bmi2 = 1u << 8;
constexpr IppStatus ok = ippStsNoErr;
const Selection avxSlot{5, 0, 0x6FDF, 0x6FFF}, sse41Slot{4, 0, 0xCDF, 0x6DDF};

DetectionCase const detectionCases[] = {
    {"Haswell", haswell, {6, 0, 0xEFFF, 0xEFFF}, ok},
    {"IvyBridge", ivyBridge, {5, 0, 0x6FDF, 0x6FDF}, ok},
    {"Westmere", westmere, {4, 0, 0xCDF, 0xCDF}, ok},
    {"Silvermont", silvermont, {4, 0, 0xCDF, 0x2CFF}, ok},  // slot 4 keeps no MOVBE, RDRAND
    {"Penryn", penryn, {4, 0, 0x5F, 0x5F}, ok},
    {"Core2Merom", core2Merom, {2, 0, 0x1F, 0x1F}, ok},
    {"AtomBonnell", atomBonnell, {3, 1, 0x3F, 0x3F}, ok},
    {"Prescott", prescott, {1, 0, 0xF, 0xF}, ok},
    {"Northwood", northwood, {0, 0, 7, 7}, ippStsNoCpuFeaturesWrn},
    // Another vendor is selected as usual and told; that warning wins over the one of a
    // processor below the lowest variant.
    {"AmdZen2", amdZen2, {6, 0, 0xEFFF, 0xEFFF}, ippStsNonGenuineCpuWrn},
    {"AmdWithoutSse3",
     with(amdZen2, 1, {0xF48, 0, 0, 0x078BFBFF}),
     {0, 0, 7, 7},
     ippStsNonGenuineCpuWrn},
    // AVX2 counts only complete; slot 5's mask drops MOVBE.
    {"HaswellWithoutBmi2", edit(haswell, 0, bmi2), avxSlot, ok},
    {"HaswellWithoutBmi1", edit(haswell, 0, bmi1), avxSlot, ok},
    {"HaswellWithoutAvx2", edit(haswell, 0, avx2), avxSlot, ok},
    {"HaswellWithoutFma", edit(haswell, fma, 0), avxSlot, ok},
    // AVX not saved by the system: the SSE4.1 slot; the detected word keeps AVX2.
    {"IvyBridgeXcr0Sse", withXcr0(ivyBridge, 3), sse41Slot, ok},
    {"IvyBridgeXcr0YmmOnly", withXcr0(ivyBridge, 5), sse41Slot, ok},
    {"IvyBridgeNoOsxsave", edit(ivyBridge, osxsave, 0), sse41Slot, ok},
    {"HaswellXcr0Sse", withXcr0(haswell, 3), {4, 0, 0xCDF, 0xEDFF}, ok},
    // The coprocessor bit is read only for family 0xB, and slot 6 drops it.
    {"CoprocessorFamily",
     with(with(haswell, 1, {0xB10, 0x02100800, 0x7FFAFBFF, 0xBFEBFBFF}), 0x20000001u, {0, 0, 0, 2}),
     {6, 0, 0xEFFF, 0xFFFF},
     ok},
    {"ExtraLeafOutsideFamilyB",
     with(haswell, 0x20000001u, {0, 0, 0, 2}),
     {6, 0, 0xEFFF, 0xEFFF},
     ok},
    // MOVBE without SSSE3 passes both SSSE3 slots by.
    {"MovbeWithoutSsse3", edit(prescott, 0, 0, movbe), {1, 0, 0xF, 0x2F}, ok},
    {"MovbeWithoutSse3", edit(northwood, 0, 0, movbe), {0, 0, 7, 0x27}, ippStsNoCpuFeaturesWrn},
};

class Detection : public DispatchTest, public ::testing::WithParamInterface<DetectionCase> {};

// ippStaticInit, ippInit and ippInitCpu(-1) select alike; the features are read once per
// process, and the control register only where the processor allows it (the fake fails the
// test otherwise).
TEST_P(Detection, SelectsSlotMaskAndStatus) {
    DetectionCase const& c = GetParam();
    play(c.processor());
    EXPECT_EQ(ippStaticInit(), c.status);
    expectSelection(c.expected);
    EXPECT_LE(cpu().xcr0Reads(), 1);
    cpu().resetCounts();
    EXPECT_EQ(ippStaticInit(), c.status);
    expectSelection(c.expected);
    EXPECT_EQ(cpu().calls(1) + cpu().calls(7), 0);
    for (auto select : {+[] { return ippInit(); }, +[] { return ippInitCpu(-1); }}) {
        nuvResetDispatchState();
        EXPECT_EQ(select(), c.status);
        expectSelection(c.expected);
    }
}

INSTANTIATE_TEST_SUITE_P(RecordedProcessors, Detection, ::testing::ValuesIn(detectionCases),
                         [](auto const& info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- forced by code

struct ForcedRow {
    int code;
    Selection expected;  // the mask is the detected word as well
};

ForcedRow const forcedRows[] = {
    {0, {1, 0, 0xF}},    {32, {1, 0, 0xF}},   {66, {1, 0, 0xF}},    {33, {2, 0, 0x1F}},
    {34, {2, 0, 0x1F}},  {67, {2, 0, 0x1F}},  {36, {3, 1, 0x3F}},   {35, {4, 0, 0x5F}},
    {68, {4, 0, 0x5F}},  {37, {4, 0, 0xDF}},  {69, {4, 0, 0xDF}},   {38, {4, 0, 0xCDF}},
    {71, {4, 0, 0xCDF}}, {70, {5, 0, 0xFDF}}, {73, {5, 0, 0x6FDF}}, {74, {6, 0, 0xEFFF}},
};

using SelectionTest = DispatchTest;

// The forced word stands in for detection whatever the processor has, and a later
// detection selects from it.
TEST_F(SelectionTest, ForcedCodesSetSlotMaskAndDetectedWord) {
    for (ForcedRow row : forcedRows) {
        SCOPED_TRACE(row.code);
        row.expected.detected = row.expected.mask;
        for (FakeProcessor const& processor : {haswell(), northwood(), core2Merom()}) {
            restart();
            play(processor);
            EXPECT_EQ(ippInitCpu(row.code), ippStsNoErr);
            expectSelection(row.expected);
            EXPECT_EQ(cpu().calls(1), 0);
            EXPECT_EQ(ippInit(), ippStsNoErr);
            expectSelection(row.expected);
            EXPECT_EQ(cpu().calls(1), 0);
        }
    }
}

// Codes below the lowest variant keep the selection and adopt the mask in force (7 in a fresh
// process) as the detected word; unknown codes change nothing at all.
TEST_F(SelectionTest, CodesBelowTheLowestVariantAndUnknownCodes) {
    for (int code : {1, 2, 5, 11, 64, 65, 96}) {
        SCOPED_TRACE(code);
        restart();
        play(haswell());
        EXPECT_EQ(ippInitCpu(code), ippStsNoCpuFeaturesWrn);
        expectSelection({0, 0, 7, 7});
        EXPECT_EQ(cpu().totalCalls(), 0);
        EXPECT_EQ(ippInit(), ippStsNoCpuFeaturesWrn);  // and detection then finds nothing above
        restart();
        play(atomBonnell());
        EXPECT_EQ(ippStaticInit(), ippStsNoErr);
        EXPECT_EQ(ippSetCpuFeaturesMask(0x1234), ippStsNoErr);
        EXPECT_EQ(ippInitCpu(code), ippStsNoCpuFeaturesWrn);
        expectSelection({3, 1, 0x1234, 0x1234});
    }
    for (int code : {12, 31, 39, 63, 72, 75, 95, 97, 128, -2, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(code);
        restart();
        play(haswell());
        EXPECT_EQ(ippInitCpu(code), ippStsUnknownCpuCodeWrn);
        EXPECT_EQ(dispatch::ownFeaturesAreValid, 0);
        expectSelection({0, 0, 7, 0xEFFF});
        EXPECT_EQ(ippInitCpu(36), ippStsNoErr);
        EXPECT_EQ(ippSetCpuFeaturesMask(0x77), ippStsNoErr);
        EXPECT_EQ(ippInitCpu(code), ippStsUnknownCpuCodeWrn);
        expectSelection({3, 1, 0x77, 0x3F});
    }
}

TEST_F(SelectionTest, FreshProcessAndFixedQueries) {
    play(haswell());
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 0u);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 7u);
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 0);
    for (int code : {-1, 0, 1, 36, 74, 97, INT_MIN, INT_MAX}) {
        EXPECT_EQ(ippIsCpuEnabled(code), 1);
        EXPECT_EQ(ippEnableCpu(code), ippStsNoErr);
    }
    // Nothing has asked the processor or selected.
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
    EXPECT_EQ(cpu().totalCalls(), 0);
    // The low-power flag follows each selection.
    play(atomBonnell());
    for (auto [code, lp] : {std::pair{-1, 1u}, {74, 0u}, {36, 1u}, {33, 0u}}) {
        EXPECT_EQ(ippInitCpu(code), ippStsNoErr);
        EXPECT_EQ(ippJumpIndexForMergedLibsLP, lp);
    }
}

TEST_F(SelectionTest, RealProcessorSelectsTheBestExecutableSlot) {
    const IppStatus status = ippInit();
    const std::vector<int> slots = executableSlots();
    EXPECT_EQ(static_cast<int>(ippJumpIndexForMergedLibs),
              *std::max_element(slots.begin(), slots.end()));
    __builtin_cpu_init();
    EXPECT_EQ(status, __builtin_cpu_is("intel") ? ippStsNoErr : ippStsNonGenuineCpuWrn);
    Ipp64u detected = 0;
    EXPECT_EQ(ippGetCpuFeatures(&detected, nullptr), ippStsNoErr);
    EXPECT_EQ(ippGetEnabledCpuFeatures() & ~detected, 0u);
}

}  // namespace
}  // namespace nuv::test
