// Selection by detection (ippStaticInit, ippInit, ippInitCpu(-1)) on recorded processors,
// selection forced by processor code, and selection on the processor running the tests.
#include "support/fake_processor.h"
#include "primitives/dispatch/dispatch_state.h"
#include "support/slots.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace nuv::test {
namespace {

namespace dispatch = nuv::prim::dispatch;

Ipp64u detectedWord() {
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    return word;
}

struct Selection {
    Ipp32u index;
    Ipp32u lp;
    Ipp64u mask;
    Ipp64u detected;
};

void expectSelection(Selection const& expected) {
    EXPECT_EQ(ippJumpIndexForMergedLibs, expected.index);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, expected.lp);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), expected.mask) << std::hex;
    EXPECT_EQ(detectedWord(), expected.detected) << std::hex;
}

// ---------------------------------------------------------------- detection

FakeProcessor withLeaf1(FakeProcessor cpu, CpuRegs leaf1) {
    return cpu.answer(1, leaf1);
}

CpuRegs leaf1Of(FakeProcessor const& cpu) {
    return cpu.query(1, 0);
}

FakeProcessor haswellWithout(Ipp32u leaf7EbxBits, Ipp32u leaf1EcxBits) {
    FakeProcessor cpu = processors::haswell();
    CpuRegs leaf1 = leaf1Of(cpu);
    leaf1.ecx &= ~leaf1EcxBits;
    CpuRegs leaf7 = cpu.query(7, 0);
    leaf7.ebx &= ~leaf7EbxBits;
    return cpu.answer(1, leaf1).answer(7, 0, leaf7);
}

struct DetectionCase {
    char const* name;
    std::function<FakeProcessor()> processor;
    Selection expected;
    IppStatus status;
};

std::ostream& operator<<(std::ostream& out, DetectionCase const& c) {
    return out << c.name;
}

std::vector<DetectionCase> detectionCases() {
    using namespace processors;
    return {
        {"HaswellAvx2", haswell, {6, 0, 0xEFFF, 0xEFFF}, ippStsNoErr},
        {"IvyBridgeAvxNoAvx2", ivyBridge, {5, 0, 0x6FDF, 0x6FDF}, ippStsNoErr},
        {"WestmereSse42AesClmul", westmere, {4, 0, 0xCDF, 0xCDF}, ippStsNoErr},
        // Slot 4 keeps neither MOVBE nor RDRAND.
        {"SilvermontSse42Movbe", silvermont, {4, 0, 0xCDF, 0x2CFF}, ippStsNoErr},
        {"PenrynSse41", penryn, {4, 0, 0x5F, 0x5F}, ippStsNoErr},
        {"Core2MeromSsse3", core2Merom, {2, 0, 0x1F, 0x1F}, ippStsNoErr},
        {"AtomBonnellSsse3Movbe", atomBonnell, {3, 1, 0x3F, 0x3F}, ippStsNoErr},
        {"PrescottSse3", prescott, {1, 0, 0xF, 0xF}, ippStsNoErr},
        {"NorthwoodNoSse3", northwood, {0, 0, 7, 7}, ippStsNoCpuFeaturesWrn},
        // Another vendor: selected as usual, and told.
        {"AmdZen2", amdZen2, {6, 0, 0xEFFF, 0xEFFF}, ippStsNonGenuineCpuWrn},
        // The vendor warning replaces the warning of a processor below the lowest variant.
        {"AmdWithoutSse3",
         [] {
             FakeProcessor cpu = amdZen2();
             return cpu.answer(1, {0x00000F48, 0, 0, 0x078BFBFF});
         },
         {0, 0, 7, 7},
         ippStsNonGenuineCpuWrn},
        // AVX2 counts only complete: without BMI2, or without FMA, slot 5 it is, and slot 5's
        // mask drops MOVBE.
        {"HaswellWithoutBmi2",
         [] { return haswellWithout(1u << 8, 0); },
         {5, 0, 0x6FDF, 0x6FFF},
         ippStsNoErr},
        {"HaswellWithoutBmi1",
         [] { return haswellWithout(1u << 3, 0); },
         {5, 0, 0x6FDF, 0x6FFF},
         ippStsNoErr},
        {"HaswellWithoutAvx2Bit",
         [] { return haswellWithout(1u << 5, 0); },
         {5, 0, 0x6FDF, 0x6FFF},
         ippStsNoErr},
        {"HaswellWithoutFma",
         [] { return haswellWithout(0, 1u << 12); },
         {5, 0, 0x6FDF, 0x6FFF},
         ippStsNoErr},
        // AVX in the processor but not saved by the system: the SSE4.1 slot.
        {"IvyBridgeXcr0SseOnly",
         [] { return ivyBridge().xcr0(3); },
         {4, 0, 0xCDF, 0x6DDF},
         ippStsNoErr},
        {"IvyBridgeXcr0YmmWithoutXmm",
         [] { return ivyBridge().xcr0(5); },
         {4, 0, 0xCDF, 0x6DDF},
         ippStsNoErr},
        {"IvyBridgeNoOsxsave",
         [] {
             return withLeaf1(ivyBridge(),
                              {0x000306A9, 0x03100800, 0x7FBAE3FF & ~(1u << 27), 0xBFEBFBFF});
         },
         {4, 0, 0xCDF, 0x6DDF},
         ippStsNoErr},
        // The AVX2 bit stays in the detected word even when the system does not save the
        // registers; only the mask leaves it out.
        {"HaswellXcr0SseOnly",
         [] { return processors::haswell().xcr0(3); },
         {4, 0, 0xCDF, 0xEDFF},
         ippStsNoErr},
        // The coprocessor-family bit is read only for family 0xB, and slot 6 drops it.
        {"CoprocessorFamily",
         [] {
             FakeProcessor cpu = processors::haswell();
             CpuRegs leaf1 = leaf1Of(cpu);
             leaf1.eax = 0x00000B10;
             return cpu.answer(1, leaf1).answer(0x20000001u, {0, 0, 0, 0x2});
         },
         {6, 0, 0xEFFF, 0xFFFF},
         ippStsNoErr},
        {"ExtraLeafIgnoredOutsideFamilyB",
         [] {
             return processors::haswell().answer(0x20000001u, {0, 0, 0, 0x2});
         },
         {6, 0, 0xEFFF, 0xEFFF},
         ippStsNoErr},
        // MOVBE without SSSE3 passes both SSSE3 slots by.
        {"MovbeWithoutSsse3",
         [] {
             CpuRegs leaf1 = leaf1Of(processors::prescott());
             leaf1.ecx |= 1u << 22;
             return withLeaf1(processors::prescott(), leaf1);
         },
         {1, 0, 0xF, 0x2F},
         ippStsNoErr},
        {"MovbeWithoutSse3",
         [] {
             CpuRegs leaf1 = leaf1Of(processors::northwood());
             leaf1.ecx |= 1u << 22;
             return withLeaf1(processors::northwood(), leaf1);
         },
         {0, 0, 7, 0x27},
         ippStsNoCpuFeaturesWrn},
    };
}

class Detection : public DispatchTest, public ::testing::WithParamInterface<DetectionCase> {};

TEST_P(Detection, SelectsSlotMaskAndStatus) {
    DetectionCase const& c = GetParam();
    play(c.processor());
    EXPECT_EQ(ippStaticInit(), c.status);
    expectSelection(c.expected);
    // The system's control register is read only where the processor allows it; the fake
    // fails the test otherwise.
    EXPECT_LE(cpu().xcr0Reads(), 1);
}

TEST_P(Detection, IppInitAndCodeMinusOneSelectAlike) {
    DetectionCase const& c = GetParam();
    play(c.processor());
    EXPECT_EQ(ippInit(), c.status);
    expectSelection(c.expected);

    nuvResetDispatchState();
    EXPECT_EQ(ippInitCpu(-1), c.status);
    expectSelection(c.expected);
}

TEST_P(Detection, RepeatedSelectionIsStable) {
    DetectionCase const& c = GetParam();
    play(c.processor());
    EXPECT_EQ(ippStaticInit(), c.status);
    cpu().resetCounts();
    EXPECT_EQ(ippStaticInit(), c.status);
    expectSelection(c.expected);
    // The feature word is read once per process; later selections only ask for the vendor.
    EXPECT_EQ(cpu().calls(1), 0);
    EXPECT_EQ(cpu().calls(7), 0);
}

INSTANTIATE_TEST_SUITE_P(RecordedProcessors, Detection, ::testing::ValuesIn(detectionCases()),
                         [](auto const& info) { return std::string(info.param.name); });

using SelectionTest = DispatchTest;

TEST_F(SelectionTest, FreshProcessRunsSlotZero) {
    play(processors::haswell());
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 0u);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 7u);
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 0);
    // Nothing has asked the processor yet.
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(SelectionTest, NoOsxsaveNeverReadsTheControlRegister) {
    CpuRegs leaf1 = leaf1Of(processors::ivyBridge());
    leaf1.ecx &= ~(1u << 27);
    play(withLeaf1(processors::ivyBridge(), leaf1));
    EXPECT_EQ(ippStaticInit(), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 4u);
    EXPECT_EQ(cpu().xcr0Reads(), 0);
}

TEST_F(SelectionTest, LpFlagFollowsEachSelection) {
    play(processors::atomBonnell());
    EXPECT_EQ(ippStaticInit(), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 1u);
    EXPECT_EQ(ippInitCpu(74), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 0u);
    EXPECT_EQ(ippInitCpu(36), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 1u);
    EXPECT_EQ(ippInitCpu(33), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 0u);
}

TEST_F(SelectionTest, SelectionKeepsTheDetectedWord) {
    play(processors::silvermont());
    EXPECT_EQ(ippStaticInit(), ippStsNoErr);
    // Only the mask shrinks.
    EXPECT_EQ(dispatch::ownFeatures, 0x2CFFu);
    EXPECT_EQ(dispatch::ownFeaturesMask, 0xCDFu);
}

TEST_F(SelectionTest, EnableQueriesAreFixed) {
    play(processors::haswell());
    for (int code : {-1, 0, 1, 36, 70, 74, 97, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(ippIsCpuEnabled(code), 1);
        EXPECT_EQ(ippEnableCpu(code), ippStsNoErr);
    }
    // Neither selects nor asks the processor.
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 7u);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

// ---------------------------------------------------------------- forced by code

struct ForcedRow {
    int code;
    Ipp32u index;
    Ipp32u lp;
    Ipp64u mask;
};

std::ostream& operator<<(std::ostream& out, ForcedRow const& r) {
    return out << r.code;
}

ForcedRow const forcedRows[] = {
    {0, 1, 0, 0xF},    {32, 1, 0, 0xF},   {66, 1, 0, 0xF},    {33, 2, 0, 0x1F},
    {34, 2, 0, 0x1F},  {67, 2, 0, 0x1F},  {36, 3, 1, 0x3F},   {35, 4, 0, 0x5F},
    {68, 4, 0, 0x5F},  {37, 4, 0, 0xDF},  {69, 4, 0, 0xDF},   {38, 4, 0, 0xCDF},
    {71, 4, 0, 0xCDF}, {70, 5, 0, 0xFDF}, {73, 5, 0, 0x6FDF}, {74, 6, 0, 0xEFFF},
};

class ForcedCode : public DispatchTest, public ::testing::WithParamInterface<ForcedRow> {};

TEST_P(ForcedCode, SetsSlotMaskAndDetectedWord) {
    ForcedRow const& row = GetParam();
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(row.code), ippStsNoErr);
    expectSelection({row.index, row.lp, row.mask, row.mask});
    // The forced word stands in for detection: the processor is never asked.
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_P(ForcedCode, IgnoresWhatTheProcessorHas) {
    ForcedRow const& row = GetParam();
    play(processors::northwood());
    EXPECT_EQ(ippStaticInit(), ippStsNoCpuFeaturesWrn);
    EXPECT_EQ(ippInitCpu(row.code), ippStsNoErr);
    expectSelection({row.index, row.lp, row.mask, row.mask});
}

TEST_P(ForcedCode, LaterDetectionSelectsFromTheForcedWord) {
    ForcedRow const& row = GetParam();
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(row.code), ippStsNoErr);
    cpu().resetCounts();
    // Every forced mask, taken as the detected word, leads detection back to the same slot:
    // the processor's own AVX2 is no longer seen.
    EXPECT_EQ(ippInit(), ippStsNoErr);
    expectSelection({row.index, row.lp, row.mask, row.mask});
    EXPECT_EQ(cpu().calls(1), 0);
}

INSTANTIATE_TEST_SUITE_P(CodeTable, ForcedCode, ::testing::ValuesIn(forcedRows),
                         [](auto const& info) { return "Code" + std::to_string(info.param.code); });

class BelowLowestVariant : public DispatchTest, public ::testing::WithParamInterface<int> {};

TEST_P(BelowLowestVariant, FreshProcessKeepsSlotZeroAndDetectsSeven) {
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(GetParam()), ippStsNoCpuFeaturesWrn);
    // The mask in force, 7 in a fresh process, becomes the detected word.
    expectSelection({0, 0, 7, 7});
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_P(BelowLowestVariant, KeepsSelectionAndAdoptsTheMaskInForce) {
    play(processors::atomBonnell());
    EXPECT_EQ(ippStaticInit(), ippStsNoErr);
    EXPECT_EQ(ippSetCpuFeaturesMask(0x1234), ippStsNoErr);
    EXPECT_EQ(ippInitCpu(GetParam()), ippStsNoCpuFeaturesWrn);
    expectSelection({3, 1, 0x1234, 0x1234});
}

INSTANTIATE_TEST_SUITE_P(CodeTable, BelowLowestVariant,
                         ::testing::Values(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 64, 65, 96),
                         [](auto const& info) { return "Code" + std::to_string(info.param); });

class UnknownCode : public DispatchTest, public ::testing::WithParamInterface<int> {};

TEST_P(UnknownCode, ChangesNothingInAFreshProcess) {
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(GetParam()), ippStsUnknownCpuCodeWrn);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 0u);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 7u);
    // The detected word was not touched: it is still unread, and reading it asks the processor.
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 0);
    EXPECT_EQ(detectedWord(), 0xEFFFu);
}

TEST_P(UnknownCode, ChangesNothingAfterASelection) {
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(36), ippStsNoErr);
    EXPECT_EQ(ippSetCpuFeaturesMask(0x77), ippStsNoErr);
    EXPECT_EQ(ippInitCpu(GetParam()), ippStsUnknownCpuCodeWrn);
    expectSelection({3, 1, 0x77, 0x3F});
}

INSTANTIATE_TEST_SUITE_P(CodeTable, UnknownCode,
                         ::testing::Values(12, 13, 31, 39, 63, 72, 75, 95, 97, 128, -2, INT_MIN,
                                           INT_MAX),
                         [](auto const& info) {
                             const int code = info.param;
                             return code < 0 ? "Minus" + std::to_string(-(long long)code)
                                             : "Code" + std::to_string(code);
                         });

TEST_F(SelectionTest, CodeOneInAFreshProcessDetectsSeven) {
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(1), ippStsNoCpuFeaturesWrn);
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 7u);
    // And a detection that follows selects from that word: nothing above slot 0.
    EXPECT_EQ(ippInit(), ippStsNoCpuFeaturesWrn);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
}

TEST_F(SelectionTest, CodeAvx2OnAProcessorWithoutIt) {
    play(processors::core2Merom());
    EXPECT_EQ(ippInitCpu(74), ippStsNoErr);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 6u);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 0xEFFFu);
}

TEST_F(SelectionTest, CodeMinusOneOnAnotherVendor) {
    play(processors::amdZen2());
    EXPECT_EQ(ippInitCpu(-1), ippStsNonGenuineCpuWrn);
    expectSelection({6, 0, 0xEFFF, 0xEFFF});
}

// ---------------------------------------------------------------- the processor running the tests

TEST_F(SelectionTest, RealProcessorSelectsAnExecutableSlot) {
    const IppStatus status = ippInit();
    const std::vector<int> slots = executableSlots();
    const int selected = static_cast<int>(ippJumpIndexForMergedLibs);
    EXPECT_NE(std::find(slots.begin(), slots.end(), selected), slots.end())
        << "slot " << selected << " selected";
    // And the best one, judged by the compiler's own processor query.
    EXPECT_EQ(selected, *std::max_element(slots.begin(), slots.end()));
    __builtin_cpu_init();
    EXPECT_EQ(status, __builtin_cpu_is("intel") ? ippStsNoErr : ippStsNonGenuineCpuWrn);
    // Every enabled feature is one the processor reported.
    EXPECT_EQ(ippGetEnabledCpuFeatures() & ~detectedWord(), 0u);
}

}  // namespace
}  // namespace nuv::test
