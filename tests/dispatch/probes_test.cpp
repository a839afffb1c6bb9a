// The processor probes against the bits they are defined by.
#include "support/fake_processor.h"
#include "primitives/dispatch/probes.h"

namespace nuv::test {
namespace {

FakeProcessor withLeaf1(CpuRegs leaf1, Ipp32u maxLeaf = 0xD) {
    FakeProcessor cpu;
    cpu.vendor("GenuineIntel", maxLeaf).answer(1, leaf1);
    return cpu;
}

struct SingleBitProbe {
    char const* name;
    int (*probe)();
    bool inEcx;  // else EDX
    int bit;
};

SingleBitProbe const singleBitProbes[] = {
    {"ipp_has_rdtsc", ipp_has_rdtsc, false, 4},
    {"ipp_is_mmx_extension", ipp_is_mmx_extension, false, 23},
    {"ipp_is_ssx_extension", ipp_is_ssx_extension, false, 25},
    {"ipp_is_wni_extension", ipp_is_wni_extension, false, 26},
    {"ipp_is_pni_extension", ipp_is_pni_extension, true, 0},
    {"ipp_is_mni_extension", ipp_is_mni_extension, true, 9},
    {"ipp_is_sse41_extension", ipp_is_sse41_extension, true, 19},
    {"ipp_is_sse42_extension", ipp_is_sse42_extension, true, 20},
    {"ipp_is_movbe", ipp_is_movbe, true, 22},
};

using ProbesTest = DispatchTest;

TEST_F(ProbesTest, SingleBitProbes) {
    for (SingleBitProbe const& p : singleBitProbes) {
        SCOPED_TRACE(p.name);
        CpuRegs only;
        (p.inEcx ? only.ecx : only.edx) = 1u << p.bit;
        play(withLeaf1(only));
        EXPECT_EQ(p.probe(), 1);

        CpuRegs allBut{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
        (p.inEcx ? allBut.ecx : allBut.edx) &= ~(1u << p.bit);
        play(withLeaf1(allBut));
        EXPECT_EQ(p.probe(), 0);
        // The same bit in the other register does not count.
        CpuRegs otherRegister;
        (p.inEcx ? otherRegister.edx : otherRegister.ecx) = 1u << p.bit;
        play(withLeaf1(otherRegister));
        EXPECT_EQ(p.probe(), 0);
    }
}

TEST_F(ProbesTest, RecordedProcessors) {
    play(processors::atomBonnell());
    EXPECT_EQ(ipp_is_pni_extension(), 1);
    EXPECT_EQ(ipp_is_mni_extension(), 1);
    EXPECT_EQ(ipp_is_movbe(), 1);
    EXPECT_EQ(ipp_is_sse41_extension(), 0);
    play(processors::northwood());
    EXPECT_EQ(ipp_is_wni_extension(), 1);
    EXPECT_EQ(ipp_is_pni_extension(), 0);
    EXPECT_EQ(ipp_max_cpuid_input(), 2);
}

TEST_F(ProbesTest, HyperThreadingNeedsTheFlagAndMoreThanOneLogicalProcessor) {
    struct Case {
        Ipp32u ebx, edx;
        int expected;
    } const cases[] = {
        {0x00020000, 1u << 28, 1}, {0x00FF0000, 1u << 28, 1}, {0x00010000, 1u << 28, 0},
        {0x00000000, 1u << 28, 0}, {0x00100000, 0, 0},        {0xFF01FFFF, 0xFFFFFFFF, 0},
        {0x0102FFFF, 1u << 28, 1},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message() << std::hex << c.ebx << " " << c.edx);
        play(withLeaf1({0, c.ebx, 0, c.edx}));
        EXPECT_EQ(ipp_is_htt_extension(), c.expected);
    }
}

TEST_F(ProbesTest, Em64tFromTheExtendedLeaf) {
    struct Case {
        Ipp32u maxExt, edx;
        int expected;
    } const cases[] = {
        {0x80000008u, 1u << 29, 1},
        {0x80000001u, 1u << 29, 1},
        {0x80000008u, ~(1u << 29), 0},
        // Without leaf 0x80000001 the answer of leaf 0x80000000 is what comes back.
        {0x80000000u, 1u << 29, static_cast<int>(0x80000000u)},
        {0x00000000u, 1u << 29, 0},
        {0x00000005u, 1u << 29, 5},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message() << std::hex << c.maxExt);
        FakeProcessor cpu = withLeaf1({});
        cpu.answer(0x80000000u, {c.maxExt, 0, 0, 0}).answer(0x80000001u, {0, 0, 0, c.edx});
        play(cpu);
        EXPECT_EQ(ipp_is_em64t_extension(), c.expected);
        if (c.maxExt < 0x80000001u) {
            EXPECT_EQ(this->cpu().calls(0x80000001u), 0);
        }
    }
    play(processors::haswell());
    EXPECT_EQ(ipp_is_em64t_extension(), 1);
}

TEST_F(ProbesTest, AvxNeedsBothLeaf1BitsAndBothSavedStates) {
    struct Case {
        Ipp32u ecx;
        Ipp64u xcr0;
        int expected;
    } const cases[] = {
        {(1u << 27) | (1u << 28), 7, 1},
        {(1u << 27) | (1u << 28), 6, 1},
        {(1u << 27) | (1u << 28), 0xE7, 1},
        {(1u << 27) | (1u << 28), 3, 0},
        {(1u << 27) | (1u << 28), 5, 0},
        {(1u << 27) | (1u << 28), 0, 0},
        {1u << 28, 7, 0},
        {1u << 27, 7, 0},
        {~(1u << 27), 7, 0},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(::testing::Message() << std::hex << c.ecx << " " << c.xcr0);
        play(withLeaf1({0, 0, c.ecx, 0}).xcr0(c.xcr0));
        EXPECT_EQ(ipp_is_avx_extension(), c.expected);
        // Without OSXSAVE the control register is not read (the fake fails the test if so).
        if (!(c.ecx & (1u << 27))) {
            EXPECT_EQ(cpu().xcr0Reads(), 0);
        }
    }
}

TEST_F(ProbesTest, CoresOnDie) {
    play(processors::haswell());
    EXPECT_EQ(ipp_get_cores_on_die(), 8);  // EAX bits 31..26 of leaf 4 hold 7
    FakeProcessor cpu = withLeaf1({}, 4);
    cpu.answer(4, 0, {0xFC000121, 0, 0, 0}).answer(4, 1, {0x04000122, 0, 0, 0});
    play(cpu);
    EXPECT_EQ(ipp_get_cores_on_die(), 64);
    // Below leaf 4 there is one core.
    FakeProcessor old = withLeaf1({}, 3);
    old.answer(4, 0, {0x0C000121, 0, 0, 0});
    play(old);
    EXPECT_EQ(ipp_get_cores_on_die(), 1);
    EXPECT_EQ(this->cpu().calls(4), 0);
}

TEST_F(ProbesTest, MaxInputAndVendor) {
    play(processors::haswell());
    EXPECT_EQ(ipp_has_cpuid(), 1);
    EXPECT_EQ(ipp_max_cpuid_input(), 0xD);
    EXPECT_EQ(ipp_is_GenuineIntel(), 1);
    play(processors::amdZen2());
    EXPECT_EQ(ipp_max_cpuid_input(), 0x10);
    EXPECT_EQ(ipp_is_GenuineIntel(), 0);

    for (char const* vendor :
         {"GenuineIntex", "genuineIntel", "GenuineIotel", "CentaurHauls", "            "}) {
        SCOPED_TRACE(vendor);
        FakeProcessor cpu;
        cpu.vendor(vendor, 0xD);
        play(cpu);
        EXPECT_EQ(ipp_is_GenuineIntel(), 0);
    }
    // The three words are read from EBX, EDX, ECX in that order; the same text in EBX, ECX,
    // EDX is not the vendor.
    FakeProcessor swapped;
    swapped.answer(0, {0xD, 0x756E6547u, 0x49656E69u, 0x6C65746Eu});
    play(swapped);
    EXPECT_EQ(ipp_is_GenuineIntel(), 0);
}

TEST_F(ProbesTest, PentiumIdentOfRecordedProcessors) {
    EXPECT_EQ(ipp_get_pentium_ident(nullptr), 0);

    play(processors::haswell());
    NuvProcessorIdent id;
    EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
    EXPECT_EQ(id.family, 6);
    EXPECT_EQ(id.model, 0x3C);
    EXPECT_EQ(id.stepping, 3);
    EXPECT_EQ(id.type, 0);
    EXPECT_STREQ(id.vendor, "GenuineIntel");
    EXPECT_EQ(id.maxLeaf, 0xDu);
    EXPECT_EQ(id.maxExtLeaf, 0x80000008u);
    EXPECT_EQ(id.signature, 0x000306C3u);
    EXPECT_EQ(id.misc, 0x02100800u);
    EXPECT_EQ(id.featuresEcx, 0x7FFAFBFFu);
    EXPECT_EQ(id.featuresEdx, 0xBFEBFBFFu);
    EXPECT_EQ(id.genuineIntel, 1);
    EXPECT_EQ(id.rdtsc, 1);
    EXPECT_EQ(id.mmx, 1);
    EXPECT_EQ(id.sse, 1);
    EXPECT_EQ(id.sse2, 1);
    EXPECT_EQ(id.sse3, 1);
    EXPECT_EQ(id.ssse3, 1);
    EXPECT_EQ(id.sse41, 1);
    EXPECT_EQ(id.sse42, 1);
    EXPECT_EQ(id.movbe, 1);
    EXPECT_EQ(id.avx, 1);
    EXPECT_EQ(id.htt, 1);
    EXPECT_EQ(id.em64t, 1);
    EXPECT_EQ(id.coresOnDie, 8);

    // Family 0xF adds the extended family; the extended model counts for it as well.
    play(processors::amdZen2());
    EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
    EXPECT_EQ(id.family, 0x17);
    EXPECT_EQ(id.model, 0x71);
    EXPECT_EQ(id.stepping, 0);
    EXPECT_STREQ(id.vendor, "AuthenticAMD");
    EXPECT_EQ(id.genuineIntel, 0);
    EXPECT_EQ(id.avx, 1);

    play(processors::northwood());
    EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
    EXPECT_EQ(id.family, 0xF);
    EXPECT_EQ(id.model, 2);
    EXPECT_EQ(id.stepping, 9);
    EXPECT_EQ(id.sse2, 1);
    EXPECT_EQ(id.sse3, 0);
    EXPECT_EQ(id.avx, 0);
    EXPECT_EQ(id.coresOnDie, 1);
    EXPECT_EQ(id.em64t, 0);

    // Other families ignore the extended model; the type field is bits 13..12.
    play(withLeaf1({0x000F2561, 0, 0, 0}));
    EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
    EXPECT_EQ(id.family, 5);
    EXPECT_EQ(id.model, 6);
    EXPECT_EQ(id.stepping, 1);
    EXPECT_EQ(id.type, 2);
}

TEST_F(ProbesTest, RealProcessor) {
    __builtin_cpu_init();
    EXPECT_EQ(ipp_has_cpuid(), 1);
    EXPECT_GE(ipp_max_cpuid_input(), 1);
    EXPECT_EQ(ipp_is_GenuineIntel(), __builtin_cpu_is("intel") ? 1 : 0);
    EXPECT_EQ(ipp_is_pni_extension(), __builtin_cpu_supports("sse3") ? 1 : 0);
    EXPECT_EQ(ipp_is_mni_extension(), __builtin_cpu_supports("ssse3") ? 1 : 0);
    EXPECT_EQ(ipp_is_sse41_extension(), __builtin_cpu_supports("sse4.1") ? 1 : 0);
    EXPECT_EQ(ipp_is_sse42_extension(), __builtin_cpu_supports("sse4.2") ? 1 : 0);
    EXPECT_EQ(ipp_is_avx_extension(), __builtin_cpu_supports("avx") ? 1 : 0);
    EXPECT_EQ(ipp_is_em64t_extension(), 1);
    EXPECT_GE(ipp_get_cores_on_die(), 1);
    NuvProcessorIdent id;
    EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
    EXPECT_EQ(id.sse2, 1);
}

TEST_F(ProbesTest, CounterAdvances) {
    const Ipp64u first = ipp_get_pentium_counter();
    volatile Ipp64u sink = 0;
    for (int i = 0; i < 100000; ++i) sink = sink + static_cast<Ipp64u>(i);
    const Ipp64u second = ipp_get_pentium_counter();
    EXPECT_GT(second, first);
}

}  // namespace
}  // namespace nuv::test
