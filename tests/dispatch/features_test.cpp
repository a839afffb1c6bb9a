// The feature word: each bit from its source, read once, the "leafread" side door, and the
// enabled mask with its setters.
#include "support/fake_processor.h"
#include "primitives/dispatch/dispatch_state.h"

#include <cstring>

namespace nuv::test {
namespace {

namespace dispatch = nuv::prim::dispatch;

// The eight bytes of the text "leafread" as a little-endian word, spelt out.
constexpr Ipp64u leafReadMarker = 0x646165726661656Cull;

using FeaturesTest = DispatchTest;

TEST_F(FeaturesTest, MarkerIsTheTextAsALittleEndianWord) {
    Ipp64u fromText;
    std::memcpy(&fromText, "leafread", sizeof fromText);
    EXPECT_EQ(fromText, leafReadMarker);
}

// A processor with nothing but the given leaf-1 registers (and what the test adds).
FakeProcessor bare(CpuRegs leaf1) {
    FakeProcessor cpu;
    cpu.vendor("GenuineIntel", 0xD).answer(1, leaf1);
    return cpu;
}

struct BitSource {
    char const* name;
    bool inEcx;  // else EDX
    int bit;
    Ipp64u feature;
};

BitSource const leaf1Sources[] = {
    {"MMX", false, 23, ippCPUID_MMX},    {"SSE", false, 25, ippCPUID_SSE},
    {"SSE2", false, 26, ippCPUID_SSE2},  {"SSE3", true, 0, ippCPUID_SSE3},
    {"SSSE3", true, 9, ippCPUID_SSSE3},  {"MOVBE", true, 22, ippCPUID_MOVBE},
    {"SSE41", true, 19, ippCPUID_SSE41}, {"SSE42", true, 20, ippCPUID_SSE42},
    {"AVX", true, 28, ippCPUID_AVX},     {"AES", true, 25, ippCPUID_AES},
    {"CLMUL", true, 1, ippCPUID_CLMUL},  {"RDRAND", true, 30, ippCPUID_RDRRAND},
    {"F16C", true, 29, ippCPUID_F16C},
};

class FeatureWord : public DispatchTest {
protected:
    Ipp64u detectOn(FakeProcessor const& cpu) {
        nuvResetDispatchState();
        play(cpu);
        Ipp64u word = 0;
        EXPECT_EQ(dispatch::ownGetMaskFeatures(&word), 1);
        return word;
    }
};

TEST_F(FeatureWord, EachLeaf1BitAlone) {
    for (BitSource const& source : leaf1Sources) {
        SCOPED_TRACE(source.name);
        CpuRegs only;
        (source.inEcx ? only.ecx : only.edx) = 1u << source.bit;
        EXPECT_EQ(detectOn(bare(only)), source.feature);
    }
}

TEST_F(FeatureWord, EachLeaf1BitMissingFromAFullWord) {
    // All leaf-1 bits set, but with OSXSAVE clear (no system AVX), FMA clear (no AVX2) and a
    // family other than 0xB, so only the table's leaf-1 bits count.
    const Ipp32u ecxAll = ~((1u << 27) | (1u << 12));
    const Ipp64u all =
        0x1 | 0x2 | 0x4 | 0x8 | 0x10 | 0x20 | 0x40 | 0x80 | 0x100 | 0x400 | 0x800 | 0x2000 | 0x4000;
    EXPECT_EQ(detectOn(bare({0x000306C3, 0xFFFFFFFF, ecxAll, 0xFFFFFFFF})), all);
    for (BitSource const& source : leaf1Sources) {
        SCOPED_TRACE(source.name);
        CpuRegs regs{0x000306C3, 0xFFFFFFFF, ecxAll, 0xFFFFFFFF};
        (source.inEcx ? regs.ecx : regs.edx) &= ~(1u << source.bit);
        EXPECT_EQ(detectOn(bare(regs)), all & ~source.feature);
    }
}

TEST_F(FeatureWord, AvxEnabledBySystemNeedsBothBitsAndBothStates) {
    struct Case {
        bool osxsave, avx;
        Ipp64u xcr0;
        bool enabled;
    } const cases[] = {
        {true, true, 7, true},   {true, true, 6, true},    {true, true, 3, false},
        {true, true, 5, false},  {true, true, 1, false},   {true, false, 7, false},
        {false, true, 7, false}, {false, false, 7, false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << "osxsave " << c.osxsave << " avx " << c.avx << " xcr0 " << c.xcr0);
        CpuRegs leaf1;
        leaf1.ecx = (c.osxsave ? 1u << 27 : 0) | (c.avx ? 1u << 28 : 0);
        const Ipp64u word = detectOn(bare(leaf1).xcr0(c.xcr0));
        EXPECT_EQ((word & ippAVX_ENABLEDBYOS) != 0, c.enabled);
        EXPECT_EQ((word & ippCPUID_AVX) != 0, c.avx);
        // The register is read only when leaf 1 allows it.
        if (!(c.osxsave && c.avx)) {
            EXPECT_EQ(cpu().xcr0Reads(), 0);
        }
    }
}

TEST_F(FeatureWord, Avx2NeedsFmaAvx2Bmi1AndBmi2) {
    const Ipp32u fma = 1u << 12;
    const Ipp32u avx2 = 1u << 5, bmi1 = 1u << 3, bmi2 = 1u << 8;
    struct Case {
        Ipp32u ecx, leaf7Ebx;
        bool complete;
    } const cases[] = {
        {fma, avx2 | bmi1 | bmi2, true},     {fma, 0xFFFFFFFF, true},
        {0, avx2 | bmi1 | bmi2, false},      {fma, bmi1 | bmi2, false},
        {fma, avx2 | bmi2, false},           {fma, avx2 | bmi1, false},
        {fma, ~(avx2 | bmi1 | bmi2), false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << std::hex << "ecx " << c.ecx << " leaf 7 ebx " << c.leaf7Ebx);
        CpuRegs leaf1;
        leaf1.ecx = c.ecx;
        FakeProcessor withLeaf7 = bare(leaf1);
        withLeaf7.answer(7, 0, {0, c.leaf7Ebx, 0, 0});
        // Leaf 7 sub-leaf 1 must not be mistaken for sub-leaf 0.
        withLeaf7.answer(7, 1, {0, 0xFFFFFFFF, 0, 0});
        EXPECT_EQ(detectOn(withLeaf7), c.complete ? ippCPUID_AVX2 : 0u);
    }
}

TEST_F(FeatureWord, CoprocessorBitOnlyForFamilyB) {
    FakeProcessor familyB = bare({0x00000B10, 0, 0, 0});
    familyB.answer(0x20000001u, {0, 0, 0, 0x2});
    EXPECT_EQ(detectOn(familyB), ippCPUID_ABR);
    // Bit 1 of EDX, no other.
    familyB.answer(0x20000001u, {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, ~0x2u});
    EXPECT_EQ(detectOn(familyB), 0u);
    // The family field is bits 11..8 alone.
    for (Ipp32u eax : {0x00000A10u, 0x00000F10u, 0x00000310u, 0x0FF00010u, 0x00003010u}) {
        SCOPED_TRACE(eax);
        FakeProcessor other = bare({eax, 0, 0, 0});
        other.answer(0x20000001u, {0, 0, 0, 0x2});
        EXPECT_EQ(detectOn(other), 0u);
        EXPECT_EQ(cpu().calls(0x20000001u), 0);
    }
    FakeProcessor withHighBits = bare({0x0FF03B10, 0, 0, 0});
    withHighBits.answer(0x20000001u, {0, 0, 0, 0x2});
    EXPECT_EQ(detectOn(withHighBits), ippCPUID_ABR);
}

// ---------------------------------------------------------------- ippGetCpuFeatures

TEST_F(FeaturesTest, ReadsTheProcessorOnce) {
    play(processors::haswell());
    Ipp64u first = 0, second = 0;
    EXPECT_EQ(ippGetCpuFeatures(&first, nullptr), ippStsNoErr);
    EXPECT_EQ(cpu().calls(7), 1);
    cpu().resetCounts();
    EXPECT_EQ(ippGetCpuFeatures(&second, nullptr), ippStsNoErr);
    EXPECT_EQ(first, 0xEFFFu);
    EXPECT_EQ(second, 0xEFFFu);
    EXPECT_EQ(cpu().totalCalls(), 0);
    EXPECT_EQ(cpu().xcr0Reads(), 0);
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 1);
    EXPECT_EQ(dispatch::ownFeatures, 0xEFFFu);
    // Another processor later changes nothing: the word is the first one's.
    play(processors::northwood());
    EXPECT_EQ(ippGetCpuFeatures(&second, nullptr), ippStsNoErr);
    EXPECT_EQ(second, 0xEFFFu);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(FeaturesTest, NullFeaturePointer) {
    play(processors::haswell());
    Ipp32u regs[4] = {11, 22, 33, 44};
    EXPECT_EQ(ippGetCpuFeatures(nullptr, regs), ippStsNullPtrErr);
    EXPECT_EQ(ippGetCpuFeatures(nullptr, nullptr), ippStsNullPtrErr);
    // The registers are left alone.
    EXPECT_EQ(regs[0], 11u);
    EXPECT_EQ(regs[1], 22u);
    EXPECT_EQ(regs[2], 33u);
    EXPECT_EQ(regs[3], 44u);
}

TEST_F(FeaturesTest, NullRegistersStoreTheWordOnly) {
    play(processors::penryn());
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    cpu().resetCounts();
    // Even with the marker, no registers means no query.
    word = leafReadMarker;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0x5Fu);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(FeaturesTest, RegistersOfLeaf1WithoutTheMarker) {
    play(processors::haswell());
    const CpuRegs leaf1 = cpu().query(1, 0);
    for (Ipp64u before : {Ipp64u{0}, leafReadMarker ^ 1, leafReadMarker ^ (Ipp64u{1} << 63),
                          leafReadMarker >> 8, ~Ipp64u{0}}) {
        SCOPED_TRACE(before);
        Ipp64u word = before;
        // Leaf and sub-leaf asked for are ignored without the marker.
        Ipp32u regs[4] = {0, 0xDEAD, 4, 0xBEEF};
        EXPECT_EQ(ippGetCpuFeatures(&word, regs), ippStsNoErr);
        EXPECT_EQ(word, 0xEFFFu);
        EXPECT_EQ(regs[0], leaf1.eax);
        EXPECT_EQ(regs[1], leaf1.ebx);
        EXPECT_EQ(regs[2], leaf1.ecx);
        EXPECT_EQ(regs[3], leaf1.edx);
    }
}

TEST_F(FeaturesTest, LeafReadSideDoor) {
    play(processors::haswell());
    struct Case {
        Ipp32u leaf, subleaf;
    } const cases[] = {{0, 0}, {4, 3}, {4, 1}, {7, 0}, {0x80000001u, 0}, {0x1234, 9}};
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message() << std::hex << c.leaf << "." << c.subleaf);
        const CpuRegs expected = cpu().query(c.leaf, c.subleaf);
        Ipp64u word = leafReadMarker;
        Ipp32u regs[4] = {c.leaf, 0x5555, c.subleaf, 0x6666};
        EXPECT_EQ(ippGetCpuFeatures(&word, regs), ippStsNoErr);
        // The marker is gone: the word is the feature word as always.
        EXPECT_EQ(word, 0xEFFFu);
        EXPECT_EQ(regs[0], expected.eax);
        EXPECT_EQ(regs[1], expected.ebx);
        EXPECT_EQ(regs[2], expected.ecx);
        EXPECT_EQ(regs[3], expected.edx);
    }
    // Leaf 0 gives the vendor words.
    Ipp64u word = leafReadMarker;
    Ipp32u regs[4] = {0, 0, 0, 0};
    EXPECT_EQ(ippGetCpuFeatures(&word, regs), ippStsNoErr);
    EXPECT_EQ(regs[0], 0xDu);
    char vendor[13] = {};
    std::memcpy(vendor, &regs[1], 4);
    std::memcpy(vendor + 4, &regs[3], 4);
    std::memcpy(vendor + 8, &regs[2], 4);
    EXPECT_STREQ(vendor, "GenuineIntel");
}

TEST_F(FeaturesTest, SideDoorDoesNotRedetect) {
    play(processors::haswell());
    Ipp64u word = leafReadMarker;
    Ipp32u regs[4] = {4, 0, 0, 0};
    EXPECT_EQ(ippGetCpuFeatures(&word, regs), ippStsNoErr);
    cpu().resetCounts();
    word = leafReadMarker;
    regs[0] = 4;
    regs[2] = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, regs), ippStsNoErr);
    // Only the query asked for: the feature word is not read again.
    EXPECT_EQ(cpu().calls(4), 1);
    EXPECT_EQ(cpu().totalCalls(), 1);
}

// ---------------------------------------------------------------- enabled mask

TEST_F(FeaturesTest, EnabledMaskStartsAtSeven) {
    play(processors::haswell());
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 7u);
    EXPECT_EQ(dispatch::ownGetFeature(0), 1);
    EXPECT_EQ(dispatch::ownGetFeature(ippCPUID_MMX), 1);
    EXPECT_EQ(dispatch::ownGetFeature(ippCPUID_MMX | ippCPUID_SSE | ippCPUID_SSE2), 1);
    EXPECT_EQ(dispatch::ownGetFeature(ippCPUID_SSE3), 0);
    EXPECT_EQ(dispatch::ownGetFeature(ippCPUID_SSE2 | ippCPUID_SSE3), 0);
}

TEST_F(FeaturesTest, GetFeatureAsksForAllBits) {
    play(processors::haswell());
    EXPECT_EQ(dispatch::ownSetFeatureMask(0x8000000000000011ull), 1);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 0x8000000000000011ull);
    EXPECT_EQ(dispatch::ownGetFeature(0x10), 1);
    EXPECT_EQ(dispatch::ownGetFeature(0x8000000000000000ull), 1);
    EXPECT_EQ(dispatch::ownGetFeature(0x8000000000000011ull), 1);
    EXPECT_EQ(dispatch::ownGetFeature(0x11 | 0x2), 0);
    EXPECT_EQ(dispatch::ownGetFeature(0x4000000000000000ull), 0);
}

TEST_F(FeaturesTest, SetMaskZeroChangesOnlyTheEnabledWord) {
    play(processors::haswell());
    EXPECT_EQ(ippStaticInit(), ippStsNoErr);
    int size = 0;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ippStsNoErr);
    cpu().resetCounts();

    EXPECT_EQ(ippSetCpuFeaturesMask(0), ippStsNoErr);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 0u);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 6u);
    EXPECT_EQ(ippJumpIndexForMergedLibsLP, 0u);
    EXPECT_EQ(dispatch::ownFeatures, 0xEFFFu);
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 1);
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0xEFFFu);
    int again = 0;
    EXPECT_EQ(ippGetMaxCacheSizeB(&again), ippStsNoErr);
    EXPECT_EQ(again, size);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(FeaturesTest, SetMaskIsNotValidated) {
    play(processors::northwood());
    // More than the processor has, and bits that name nothing: stored as given, and the
    // slot does not move.
    EXPECT_EQ(ippSetCpuFeaturesMask(0xFFFFFFFFFFFFFFFFull), ippStsNoErr);
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 0xFFFFFFFFFFFFFFFFull);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 0u);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(FeaturesTest, MaskIsFeaturesReplacesTheDetectedWord) {
    play(processors::haswell());
    EXPECT_EQ(ippSetCpuFeaturesMask(0x55), ippStsNoErr);
    dispatch::ownMaskIsFeatures();
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 1);
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0x55u);
    // The processor was never asked: the copied mask counts as the detection.
    EXPECT_EQ(cpu().calls(1), 0);
}

TEST_F(FeaturesTest, MaskIsFeaturesAfterDetection) {
    play(processors::haswell());
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0xEFFFu);
    cpu().resetCounts();
    dispatch::ownMaskIsFeatures();
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 7u);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(FeaturesTest, GetRegPassesLeafAndSubleaf) {
    play(processors::haswell());
    Ipp32u regs[4];
    dispatch::ownGetReg(regs, 4, 2);
    const CpuRegs l2 = cpu().query(4, 2);
    EXPECT_EQ(regs[0], l2.eax);
    EXPECT_EQ(regs[1], l2.ebx);
    EXPECT_EQ(regs[2], l2.ecx);
    EXPECT_EQ(regs[3], l2.edx);
}

}  // namespace
}  // namespace nuv::test
