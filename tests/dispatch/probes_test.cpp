// The processor probes against the bits they are defined by.
#include "support/fake_processor.h"
#include "primitives/dispatch/probes.h"

#include <tuple>
#include <vector>

namespace nuv::test {
namespace {

FakeProcessor withLeaf1(CpuRegs leaf1, Ipp32u maxLeaf = 0xD) {
    FakeProcessor cpu;
    cpu.vendor("GenuineIntel", maxLeaf).answer(1, leaf1);
    return cpu;
}

using ProbesTest = DispatchTest;

TEST_F(ProbesTest, CompositeProbes) {
    // Hyper-threading: the flag and more than one logical processor (EBX bits 23..16).
    for (auto [ebx, edx, expected] : {std::tuple{0x20000u, 1u << 28, 1},
                                      {0xFF0000u, 1u << 28, 1},
                                      {0x10000u, 1u << 28, 0},
                                      {0x100000u, 0u, 0},
                                      {0xFF01FFFFu, ~0u, 0},
                                      {0x0102FFFFu, 1u << 28, 1}}) {
        play(withLeaf1({0, ebx, 0, edx}));
        EXPECT_EQ(ipp_is_htt_extension(), expected) << ebx;
    }
    // 64-bit mode from leaf 0x80000001 EDX bit 29; below that leaf, what 0x80000000 answers.
    for (auto [maxExt, edx, expected] : {std::tuple{0x80000008u, 1u << 29, 1},
                                         {0x80000001u, 1u << 29, 1},
                                         {0x80000008u, ~(1u << 29), 0},
                                         {0x80000000u, 1u << 29, int(0x80000000u)},
                                         {5u, 1u << 29, 5}}) {
        play(withLeaf1({})
                 .answer(0x80000000u, {maxExt, 0, 0, 0})
                 .answer(0x80000001u, {0, 0, 0, edx}));
        EXPECT_EQ(ipp_is_em64t_extension(), expected) << maxExt;
    }
    // AVX: OSXSAVE and AVX in leaf 1, and the system saving both register states.
    const Ipp32u both = (1u << 27) | (1u << 28);
    for (auto [ecx, xcr0, expected] : {std::tuple{both, Ipp64u{7}, 1},
                                       {both, Ipp64u{6}, 1},
                                       {both, Ipp64u{0xE7}, 1},
                                       {both, Ipp64u{3}, 0},
                                       {both, Ipp64u{5}, 0},
                                       {1u << 28, Ipp64u{7}, 0},
                                       {1u << 27, Ipp64u{7}, 0},
                                       {~(1u << 27), Ipp64u{7}, 0}}) {
        play(withLeaf1({0, 0, ecx, 0}).xcr0(xcr0));
        EXPECT_EQ(ipp_is_avx_extension(), expected) << ecx << " " << xcr0;
    }
    // Cores on the die: leaf 4 EAX bits 31..26 plus one; one core below leaf 4.
    play(withLeaf1({}, 4).answer(4, 0, {0xFC000121, 0, 0, 0}).answer(4, 1, {0x04000122, 0, 0, 0}));
    EXPECT_EQ(ipp_get_cores_on_die(), 64);
    play(withLeaf1({}, 3).answer(4, 0, {0x0C000121, 0, 0, 0}));
    EXPECT_EQ(ipp_get_cores_on_die(), 1);
    EXPECT_EQ(cpu().calls(4), 0);
}

TEST_F(ProbesTest, VendorAndIdentity) {
    play(processors::amdZen2());
    EXPECT_EQ(ipp_max_cpuid_input(), 0x10);
    EXPECT_EQ(ipp_is_GenuineIntel(), 0);
    // The vendor words come from EBX, EDX, ECX in that order.
    for (char const* vendor : {"GenuineIntex", "genuineIntel", "CentaurHauls"}) {
        play(FakeProcessor().vendor(vendor, 0xD));
        EXPECT_EQ(ipp_is_GenuineIntel(), 0) << vendor;
    }
    play(FakeProcessor().answer(0, {0xD, 0x756E6547u, 0x49656E69u, 0x6C65746Eu}));
    EXPECT_EQ(ipp_is_GenuineIntel(), 0);
    EXPECT_EQ(ipp_get_pentium_ident(nullptr), 0);
    NuvProcessorIdent id;
    play(processors::haswell());
    EXPECT_EQ(ipp_has_cpuid(), 1);
    EXPECT_EQ(ipp_is_GenuineIntel(), 1);
    EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
    EXPECT_EQ((std::vector<int>{id.family, id.model, id.stepping, id.type, id.coresOnDie}),
              (std::vector<int>{6, 0x3C, 3, 0, 8}));
    EXPECT_STREQ(id.vendor, "GenuineIntel");
    EXPECT_EQ((std::vector<Ipp32u>{id.maxLeaf, id.maxExtLeaf, id.signature, id.misc, id.featuresEcx,
                                   id.featuresEdx}),
              (std::vector<Ipp32u>{0xD, 0x80000008u, 0x306C3, 0x2100800, 0x7FFAFBFF, 0xBFEBFBFF}));
    EXPECT_EQ((std::vector<int>{id.genuineIntel, id.rdtsc, id.mmx, id.sse, id.sse2, id.sse3,
                                id.ssse3, id.sse41, id.sse42, id.movbe, id.avx, id.htt, id.em64t}),
              std::vector<int>(13, 1));
    // Family 0xF adds the extended family and takes the extended model; other families
    // ignore the extended model; the type is bits 13..12.
    struct Ident {
        FakeProcessor cpu;
        int family, model, stepping, type;
    } const idents[] = {{processors::amdZen2(), 0x17, 0x71, 0, 0},
                        {processors::northwood(), 0xF, 2, 9, 0},
                        {withLeaf1({0x000F2561, 0, 0, 0}), 5, 6, 1, 2}};
    for (Ident const& i : idents) {
        play(i.cpu);
        EXPECT_EQ(ipp_get_pentium_ident(&id), 1);
        EXPECT_EQ((std::vector<int>{id.family, id.model, id.stepping, id.type}),
                  (std::vector<int>{i.family, i.model, i.stepping, i.type}));
    }
    EXPECT_EQ((std::vector<int>{id.sse2, id.avx, id.em64t}), (std::vector<int>{0, 0, 0}));
}

TEST_F(ProbesTest, RealProcessor) {
    __builtin_cpu_init();
    EXPECT_EQ(ipp_is_GenuineIntel(), __builtin_cpu_is("intel") ? 1 : 0);
    EXPECT_EQ(ipp_is_pni_extension(), __builtin_cpu_supports("sse3") ? 1 : 0);
    EXPECT_EQ(ipp_is_sse41_extension(), __builtin_cpu_supports("sse4.1") ? 1 : 0);
    EXPECT_EQ(ipp_is_avx_extension(), __builtin_cpu_supports("avx") ? 1 : 0);
    EXPECT_EQ(ipp_is_em64t_extension(), 1);
    EXPECT_GE(ipp_get_cores_on_die(), 1);
    const Ipp64u first = ipp_get_pentium_counter();
    volatile Ipp64u sink = 0;
    for (int i = 0; i < 100000; ++i) sink = sink + static_cast<Ipp64u>(i);
    EXPECT_GT(ipp_get_pentium_counter(), first);
}

}  // namespace
}  // namespace nuv::test
