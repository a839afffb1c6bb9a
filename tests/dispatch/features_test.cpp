// The feature word: each bit from its source, read once, the "leafread" side door, and the
// enabled mask with its setters.
#include "support/fake_processor.h"
#include "primitives/dispatch/dispatch_state.h"

#include <cstring>

namespace nuv::test {
namespace {

namespace dispatch = nuv::prim::dispatch;

// The eight bytes of the text "leafread" as a little-endian word.
constexpr Ipp64u leafReadMarker = 0x646165726661656Cull;

class FeatureWord : public DispatchTest {
protected:
    // The word detected on a processor with nothing but these leaf-1 and leaf-7 registers.
    Ipp64u detectOn(CpuRegs leaf1, CpuRegs leaf7 = {}, Ipp64u xcr0 = 0) {
        restart();
        FakeProcessor bare;
        bare.vendor("GenuineIntel", 0xD).answer(1, leaf1).answer(7, 0, leaf7).xcr0(xcr0);
        // Leaf 7 sub-leaf 1 must not be mistaken for sub-leaf 0.
        bare.answer(7, 1, {0, ~0u, 0, 0}).answer(0x20000001u, {0, 0, 0, 2});
        play(bare);
        Ipp64u word = 0;
        EXPECT_EQ(dispatch::ownGetMaskFeatures(&word), 1);
        return word;
    }
};

TEST_F(FeatureWord, AvxNeedsTheSystemAndAvx2NeedsFmaAvx2Bmi1Bmi2) {
    const Ipp32u osxsave = 1u << 27, avx = 1u << 28;
    struct AvxCase {
        Ipp32u ecx;
        Ipp64u xcr0;
        bool enabled;
    } const avxCases[] = {{osxsave | avx, 7, true},  {osxsave | avx, 6, true},
                          {osxsave | avx, 3, false}, {osxsave | avx, 5, false},
                          {osxsave, 7, false},       {avx, 7, false}};
    for (AvxCase const& c : avxCases) {
        SCOPED_TRACE(::testing::Message() << c.ecx << " " << c.xcr0);
        const Ipp64u word = detectOn({0, 0, c.ecx, 0}, {}, c.xcr0);
        EXPECT_EQ((word & ippAVX_ENABLEDBYOS) != 0, c.enabled);
        EXPECT_EQ((word & ippCPUID_AVX) != 0, (c.ecx & avx) != 0);
    }
    const Ipp32u fma = 1u << 12, bmi1 = 1u << 3, avx2 = 1u << 5, bmi2 = 1u << 8;
    struct Avx2Case {
        Ipp32u ecx, leaf7Ebx;
        bool complete;
    } const avx2Cases[] = {{fma, avx2 | bmi1 | bmi2, true}, {fma, ~0u, true},
                           {0, avx2 | bmi1 | bmi2, false},  {fma, bmi1 | bmi2, false},
                           {fma, avx2 | bmi2, false},       {fma, avx2 | bmi1, false}};
    for (Avx2Case const& c : avx2Cases)
        EXPECT_EQ(detectOn({0, 0, c.ecx, 0}, {0, c.leaf7Ebx, 0, 0}),
                  c.complete ? ippCPUID_AVX2 : 0u)
            << c.ecx << " " << c.leaf7Ebx;
}

using FeaturesTest = DispatchTest;

// Read once per process; a null word is refused without touching the registers; without the
// marker the registers get leaf 1, with it the leaf and sub-leaf they name, and neither asks
// for the features again.
TEST_F(FeaturesTest, GetCpuFeaturesAndTheSideDoor) {
    Ipp64u fromText;
    std::memcpy(&fromText, "leafread", sizeof fromText);
    EXPECT_EQ(fromText, leafReadMarker);
    play(processors::haswell());
    Ipp32u regs[4] = {11, 22, 33, 44};
    EXPECT_EQ(ippGetCpuFeatures(nullptr, regs), ippStsNullPtrErr);
    EXPECT_EQ(regs[0] + regs[1] + regs[2] + regs[3], 110u);
    Ipp64u word = leafReadMarker;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0xEFFFu);
    EXPECT_EQ(cpu().calls(7), 1);
    struct Ask {
        Ipp64u word;
        Ipp32u leaf, subleaf, answeredLeaf, answeredSubleaf;
    } const asks[] = {{0, 4, 3, 1, 0},
                      {leafReadMarker ^ 1, 4, 3, 1, 0},
                      {leafReadMarker >> 8, 4, 3, 1, 0},
                      {leafReadMarker, 4, 3, 4, 3},
                      {leafReadMarker, 0, 0, 0, 0},
                      {leafReadMarker, 0x80000001u, 0, 0x80000001u, 0}};
    for (Ask const& a : asks) {
        cpu().resetCounts();
        word = a.word;
        Ipp32u r[4] = {a.leaf, 0x5555, a.subleaf, 0x6666};
        EXPECT_EQ(ippGetCpuFeatures(&word, r), ippStsNoErr);
        EXPECT_EQ(word, 0xEFFFu);
        const CpuRegs expected = cpu().query(a.answeredLeaf, a.answeredSubleaf);
        EXPECT_EQ(r[0], expected.eax);
        EXPECT_EQ(r[1], expected.ebx);
        EXPECT_EQ(r[2], expected.ecx);
        EXPECT_EQ(r[3], expected.edx);
        EXPECT_EQ(cpu().totalCalls(), 2) << "one query of the registers, one of the test";
    }
    // Another processor later changes nothing: the word is the first one's.
    play(processors::northwood());
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0xEFFFu);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(FeaturesTest, EnabledMask) {
    play(processors::haswell());
    EXPECT_EQ(ippGetEnabledCpuFeatures(), 7u);
    EXPECT_EQ(dispatch::ownGetFeature(ippCPUID_MMX | ippCPUID_SSE | ippCPUID_SSE2), 1);
    EXPECT_EQ(dispatch::ownGetFeature(ippCPUID_SSE2 | ippCPUID_SSE3), 0);
    // Every bit asked for must be enabled.
    EXPECT_EQ(dispatch::ownSetFeatureMask(0x8000000000000011ull), 1);
    EXPECT_EQ(dispatch::ownGetFeature(0x8000000000000011ull), 1);
    EXPECT_EQ(dispatch::ownGetFeature(0x13), 0);
    EXPECT_EQ(dispatch::ownGetFeature(0x4000000000000000ull), 0);
    // The setter stores any mask as given and moves no slot; selection and the detected word
    // stay.
    EXPECT_EQ(ippStaticInit(), ippStsNoErr);
    cpu().resetCounts();
    for (Ipp64u mask : {Ipp64u{0}, ~Ipp64u{0}}) {
        EXPECT_EQ(ippSetCpuFeaturesMask(mask), ippStsNoErr);
        EXPECT_EQ(ippGetEnabledCpuFeatures(), mask);
        EXPECT_EQ(ippJumpIndexForMergedLibs, 6u);
        EXPECT_EQ(dispatch::ownFeatures, 0xEFFFu);
    }
    EXPECT_EQ(cpu().totalCalls(), 0);
    // The mask may replace the detected word, before detection or after it.
    EXPECT_EQ(ippSetCpuFeaturesMask(0x55), ippStsNoErr);
    dispatch::ownMaskIsFeatures();
    Ipp64u word = 0;
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0x55u);
    restart();
    play(processors::haswell());
    EXPECT_EQ(ippSetCpuFeaturesMask(0x55), ippStsNoErr);
    dispatch::ownMaskIsFeatures();
    EXPECT_EQ(dispatch::ownFeaturesAreValid, 1);
    EXPECT_EQ(ippGetCpuFeatures(&word, nullptr), ippStsNoErr);
    EXPECT_EQ(word, 0x55u);
    EXPECT_EQ(cpu().calls(1), 0);
}

}  // namespace
}  // namespace nuv::test
