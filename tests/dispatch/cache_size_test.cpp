// The largest cache: by deterministic cache parameters (leaf 4), by descriptor bytes
// (leaf 2) where leaf 4 is missing, once per process, and 0 on other vendors.
#include "support/fake_processor.h"
#include "primitives/dispatch/dispatch_state.h"

namespace nuv::test {
namespace {

namespace dispatch = nuv::prim::dispatch;

constexpr int KiB = 1024;
constexpr int MiB = 1024 * 1024;

// Leaf-4 row: type in EAX bits 4..0 (1 data, 2 instruction, 3 unified), level in 7..5.
CpuRegs level(Ipp32u type, Ipp32u lvl, Ipp32u ways, Ipp32u partitions, Ipp32u lineSize,
              Ipp32u sets) {
    return {type | (lvl << 5), ((ways - 1) << 22) | ((partitions - 1) << 12) | (lineSize - 1),
            sets - 1, 0};
}

FakeProcessor intelWithMaxLeaf(Ipp32u maxLeaf) {
    FakeProcessor cpu;
    cpu.vendor("GenuineIntel", maxLeaf);
    return cpu;
}

struct CacheAnswer {
    IppStatus status;
    int size;
};

CacheAnswer askCache() {
    int size = -12345;  // every path writes it
    const IppStatus status = ippGetMaxCacheSizeB(&size);
    return {status, size};
}

void expectCache(CacheAnswer got, IppStatus status, int size) {
    EXPECT_EQ(got.status, status);
    EXPECT_EQ(got.size, size);
}

using CacheSizeTest = DispatchTest;

// ---------------------------------------------------------------- leaf 4

TEST_F(CacheSizeTest, Leaf4LargestLevelOfRecordedProcessors) {
    play(processors::haswell());
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    nuvResetDispatchState();
    play(processors::core2Merom());
    expectCache(askCache(), ippStsNoErr, 4 * MiB);
    nuvResetDispatchState();
    // Highest leaf 5: leaf 4 is there.
    play(processors::prescott());
    expectCache(askCache(), ippStsNoErr, 1 * MiB);
    EXPECT_EQ(cpu().calls(2), 0);
}

TEST_F(CacheSizeTest, Leaf4SkipsInstructionCachesAndStopsAtTypeZero) {
    FakeProcessor cpu = intelWithMaxLeaf(4);
    cpu.answer(4, 0, level(1, 1, 8, 1, 64, 64))        // data, 32 KiB
        .answer(4, 1, level(2, 1, 16, 1, 64, 16384))   // instruction, 16 MiB: skipped
        .answer(4, 2, level(3, 2, 4, 1, 64, 1024))     // unified, 256 KiB
        .answer(4, 3, {0x100, 0xFFFFFFFF, 0xFF, 0})    // type 0 with garbage: the end
        .answer(4, 4, level(3, 3, 16, 1, 64, 65536));  // past the end, 64 MiB: never read
    play(cpu);
    expectCache(askCache(), ippStsNoErr, 256 * KiB);
    EXPECT_EQ(this->cpu().calls(4), 4);
}

TEST_F(CacheSizeTest, Leaf4CountsPartitionsAndOtherTypes) {
    FakeProcessor cpu = intelWithMaxLeaf(0xB);
    cpu.answer(4, 0, level(1, 1, 8, 1, 64, 64))
        .answer(4, 1, level(4, 2, 4, 2, 64, 512))  // a type above 3 counts: 256 KiB
        .answer(4, 2, {});
    play(cpu);
    expectCache(askCache(), ippStsNoErr, 4 * 2 * 64 * 512);
}

TEST_F(CacheSizeTest, Leaf4AsksAtMost32SubLeaves) {
    FakeProcessor cpu = intelWithMaxLeaf(4);
    for (Ipp32u s = 0; s < 40; ++s) cpu.answer(4, s, level(1, 1, 1, 1, 64, s + 1));
    play(cpu);
    // Sub-leaf 31 is the largest one looked at.
    expectCache(askCache(), ippStsNoErr, 64 * 32);
    EXPECT_EQ(this->cpu().calls(4), 32);
}

TEST_F(CacheSizeTest, Leaf4WrappedProductsAreSigned) {
    // 1024 * 1024 * 2048: 2^31 wraps to a negative figure and never wins.
    FakeProcessor negative = intelWithMaxLeaf(4);
    negative.answer(4, 0, level(1, 1, 1024, 1024, 2048, 1)).answer(4, 1, level(1, 2, 8, 1, 64, 64));
    play(negative);
    expectCache(askCache(), ippStsNoErr, 32 * KiB);
    nuvResetDispatchState();
    // Alone, it leaves nothing: the size is unknown.
    FakeProcessor alone = intelWithMaxLeaf(4);
    alone.answer(4, 0, level(1, 1, 1024, 1024, 2048, 1));
    play(alone);
    expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
    nuvResetDispatchState();
    // 2^32 wraps to 0.
    FakeProcessor zero = intelWithMaxLeaf(4);
    zero.answer(4, 0, level(1, 1, 1024, 1024, 4096, 1));
    play(zero);
    expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
}

TEST_F(CacheSizeTest, Leaf4WithoutLevelsIsUnknown) {
    FakeProcessor cpu = intelWithMaxLeaf(4);
    // Leaf 2 would answer, but leaf 4 is the method when it exists.
    cpu.answer(2, {0x00000001, 0, 0, 0x0000004D});
    play(cpu);
    expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
    EXPECT_EQ(this->cpu().calls(2), 0);
    // Only instruction caches: unknown as well.
    nuvResetDispatchState();
    FakeProcessor instructionOnly = intelWithMaxLeaf(4);
    instructionOnly.answer(4, 0, level(2, 1, 8, 1, 64, 64));
    play(instructionOnly);
    expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
}

// ---------------------------------------------------------------- leaf 2

TEST_F(CacheSizeTest, Leaf2RecordedProcessor) {
    play(processors::northwood());
    expectCache(askCache(), ippStsNoErr, 512 * KiB);
    EXPECT_EQ(cpu().calls(4), 0);
}

TEST_F(CacheSizeTest, Leaf2UsedBelowLeaf4) {
    for (Ipp32u maxLeaf : {2u, 3u}) {
        SCOPED_TRACE(maxLeaf);
        nuvResetDispatchState();
        FakeProcessor cpu = intelWithMaxLeaf(maxLeaf);
        cpu.answer(2, {0x00000001, 0, 0, 0x00000043}).answer(4, 0, level(1, 1, 16, 1, 64, 65536));
        play(cpu);
        expectCache(askCache(), ippStsNoErr, 512 * KiB);
        EXPECT_EQ(this->cpu().calls(4), 0);
    }
}

TEST_F(CacheSizeTest, Leaf2TableOrderDecides) {
    // 0x43 (512 KiB) and 0x22 (512 KiB) come first in the registers; 0x4D (16 MiB) comes
    // last but earlier in the table.
    FakeProcessor cpu = intelWithMaxLeaf(2);
    cpu.answer(2, {0x00224301, 0x00000000, 0x00000000, 0x4D000000});
    play(cpu);
    expectCache(askCache(), ippStsNoErr, 16384 * KiB);
}

TEST_F(CacheSizeTest, Leaf2EveryTableRow) {
    struct Row {
        unsigned char descriptor;
        int kib;
    } const rows[] = {
        {0xEC, 24576}, {0xEB, 18432}, {0x4D, 16384}, {0xEA, 12288}, {0x4C, 12288}, {0xE4, 8192},
        {0xDE, 8192},  {0x4B, 8192},  {0x47, 8192},  {0x4E, 6144},  {0x4A, 6144},  {0xE3, 4096},
        {0xDD, 4096},  {0xD8, 4096},  {0x49, 4096},  {0x29, 4096},  {0x46, 4096},  {0x48, 3072},
        {0xE2, 2048},  {0xDC, 2048},  {0xD7, 2048},  {0xD2, 2048},  {0x25, 2048},  {0x7D, 2048},
        {0x85, 2048},  {0x45, 2048},  {0xD6, 1024},  {0xD1, 1024},  {0x23, 1024},  {0x87, 1024},
        {0x7C, 1024},  {0x78, 1024},  {0x84, 1024},  {0x44, 1024},  {0xD0, 512},   {0x22, 512},
        {0x7B, 512},   {0x80, 512},   {0x86, 512},   {0x3E, 512},   {0x7F, 512},   {0x83, 512},
        {0x43, 512},   {0x3D, 384},   {0x21, 256},   {0x7A, 256},   {0x82, 256},   {0x3C, 256},
        {0x3F, 256},   {0x42, 256},   {0x3A, 192},   {0x79, 128},   {0x39, 128},   {0x3B, 128},
        {0x41, 128},
    };
    static_assert(sizeof rows / sizeof rows[0] == 55);
    for (Row const& row : rows) {
        SCOPED_TRACE(::testing::Message() << std::hex << int(row.descriptor));
        // Each descriptor in each position of EDX.
        for (int shift = 0; shift < 32; shift += 8) {
            nuvResetDispatchState();
            FakeProcessor cpu = intelWithMaxLeaf(2);
            cpu.answer(2, {0x00000001, 0, 0, Ipp32u{row.descriptor} << shift});
            play(cpu);
            // A descriptor of 0x80 or more in the top byte sets bit 31: the register then
            // counts as empty.
            if (shift == 24 && row.descriptor >= 0x80)
                expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
            else
                expectCache(askCache(), ippStsNoErr, row.kib * KiB);
        }
    }
    // The table as the frame holds it: 55 rows, then the end.
    EXPECT_EQ(dispatch::tableCache[55].descriptor, 0);
    for (int i = 0; i < 55; ++i) {
        EXPECT_EQ(dispatch::tableCache[i].descriptor, rows[i].descriptor) << i;
        EXPECT_EQ(dispatch::tableCache[i].size, rows[i].kib * KiB) << i;
    }
}

TEST_F(CacheSizeTest, Leaf2RegistersWithBit31AreIgnored) {
    FakeProcessor cpu = intelWithMaxLeaf(2);
    cpu.answer(2, {0x00000001, 0x800000EC, 0x80EB0000, 0x00000043});
    play(cpu);
    expectCache(askCache(), ippStsNoErr, 512 * KiB);
}

TEST_F(CacheSizeTest, Leaf2EaxWithBit31StillCountsItsRound) {
    // EAX holds no descriptors but its low byte still says one round; EBX then comes first in
    // the buffer and its low byte sits at the position the scan leaves out.
    FakeProcessor cpu = intelWithMaxLeaf(2);
    cpu.answer(2, {0x80EC0001, 0x0000434D, 0, 0});
    play(cpu);
    expectCache(askCache(), ippStsNoErr, 512 * KiB);
}

TEST_F(CacheSizeTest, Leaf2EaxUpperBytesAreDescriptors) {
    // Its low byte is the round count; the three above it are looked at.
    FakeProcessor cpu = intelWithMaxLeaf(2);
    cpu.answer(2, {0x3B000001, 0, 0, 0});
    play(cpu);
    expectCache(askCache(), ippStsNoErr, 128 * KiB);
}

TEST_F(CacheSizeTest, Leaf2MoreThanOneRoundIsUnknown) {
    for (Ipp32u eax : {0x4D000002u, 0x4D000000u, 0x4D0000FFu, 0x4D000100u}) {
        SCOPED_TRACE(eax);
        nuvResetDispatchState();
        FakeProcessor cpu = intelWithMaxLeaf(2);
        cpu.answer(2, {eax, 0x00000043, 0, 0});
        play(cpu);
        expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
    }
}

TEST_F(CacheSizeTest, Leaf2WithoutKnownDescriptorsIsUnknown) {
    struct Case {
        char const* name;
        CpuRegs leaf2;
    } const cases[] = {
        {"UnknownDescriptors", {0x665B5001, 0, 0, 0x00007040}},
        {"NoRegisters", {0x80000001, 0, 0, 0}},
        {"OnlyBit31Registers", {0x80000001, 0x800000EC, 0x80000043, 0x8000004D}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        nuvResetDispatchState();
        FakeProcessor cpu = intelWithMaxLeaf(2);
        cpu.answer(2, c.leaf2);
        play(cpu);
        expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
    }
}

TEST_F(CacheSizeTest, OwnGetCacheSizeReportsMinusOne) {
    FakeProcessor cpu = intelWithMaxLeaf(2);
    cpu.answer(2, {0x00000002, 0, 0, 0x43});
    play(cpu);
    EXPECT_EQ(dispatch::ownGetCacheSize(dispatch::tableCache), -1);
    cpu.answer(2, {0x00000001, 0, 0, 0x43});
    play(cpu);
    EXPECT_EQ(dispatch::ownGetCacheSize(dispatch::tableCache), 512 * KiB);
}

// ---------------------------------------------------------------- no answer

TEST_F(CacheSizeTest, HighestLeafBelowTwo) {
    for (Ipp32u maxLeaf : {0u, 1u}) {
        SCOPED_TRACE(maxLeaf);
        nuvResetDispatchState();
        FakeProcessor cpu = intelWithMaxLeaf(maxLeaf);
        cpu.answer(2, {0x00000001, 0, 0, 0x43});
        play(cpu);
        expectCache(askCache(), ippStsNoCpuFeaturesWrn, 0);
        EXPECT_EQ(this->cpu().calls(2), 0);
        EXPECT_EQ(this->cpu().calls(4), 0);
    }
}

TEST_F(CacheSizeTest, OtherVendorHasNoCacheSize) {
    play(processors::amdZen2());
    expectCache(askCache(), ippStsNoCpuFeaturesWrn, 0);
    EXPECT_EQ(cpu().calls(4), 0);
    EXPECT_EQ(cpu().calls(2), 0);
    expectCache(askCache(), ippStsNoCpuFeaturesWrn, 0);
    // Whatever selection did.
    nuvResetDispatchState();
    EXPECT_EQ(ippStaticInit(), ippStsNonGenuineCpuWrn);
    expectCache(askCache(), ippStsNoCpuFeaturesWrn, 0);
}

TEST_F(CacheSizeTest, NullPointerAsksNothing) {
    play(processors::haswell());
    EXPECT_EQ(ippGetMaxCacheSizeB(nullptr), ippStsNullPtrErr);
    EXPECT_EQ(cpu().totalCalls(), 0);
    EXPECT_EQ(dispatch::ownStatus, 1);
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    // Also after the query.
    EXPECT_EQ(ippGetMaxCacheSizeB(nullptr), ippStsNullPtrErr);
}

// ---------------------------------------------------------------- once per process

TEST_F(CacheSizeTest, QueryRunsOnce) {
    play(processors::haswell());
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    EXPECT_EQ(cpu().calls(4), 5);
    cpu().resetCounts();
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    EXPECT_EQ(cpu().totalCalls(), 0);
    // Another processor now: the figure stays the first one's.
    play(processors::northwood());
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    EXPECT_EQ(cpu().totalCalls(), 0);
    EXPECT_EQ(dispatch::ownStatus, 0);
    EXPECT_EQ(dispatch::cacheSize, 8 * MiB);
}

TEST_F(CacheSizeTest, FailureIsKeptForGood) {
    play(processors::amdZen2());
    expectCache(askCache(), ippStsNoCpuFeaturesWrn, 0);
    play(processors::haswell());
    expectCache(askCache(), ippStsNoCpuFeaturesWrn, 0);
    EXPECT_EQ(cpu().totalCalls(), 0);

    nuvResetDispatchState();
    FakeProcessor unknown = intelWithMaxLeaf(2);
    unknown.answer(2, {0x00000002, 0, 0, 0});
    play(unknown);
    expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
    play(processors::haswell());
    expectCache(askCache(), ippStsCacheSizeUnknownWrn, 0);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

TEST_F(CacheSizeTest, ResetAsksAgain) {
    play(processors::haswell());
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    nuvResetDispatchState();
    EXPECT_EQ(dispatch::ownStatus, 1);
    EXPECT_EQ(dispatch::cacheSize, 0);
    play(processors::northwood());
    expectCache(askCache(), ippStsNoErr, 512 * KiB);
}

TEST_F(CacheSizeTest, IndependentOfSelection) {
    play(processors::haswell());
    EXPECT_EQ(ippInitCpu(33), ippStsNoErr);
    expectCache(askCache(), ippStsNoErr, 8 * MiB);
    EXPECT_EQ(ippJumpIndexForMergedLibs, 2u);
}

// ---------------------------------------------------------------- the copy family's route

TEST_F(CacheSizeTest, LegacyRouteUsesItsOwnTableOnIntelOnly) {
    play(processors::northwood());
    EXPECT_EQ(nuvLegacyCacheSize(), 512 * KiB);
    // Asked afresh each time, and beside the frame's own figure.
    play(processors::haswell());
    EXPECT_EQ(nuvLegacyCacheSize(), 0);  // 0xFF and others: no row of its table
    FakeProcessor large = intelWithMaxLeaf(0xD);
    large.answer(2, {0x00EB0001, 0, 0, 0x00000043});
    play(large);
    EXPECT_EQ(nuvLegacyCacheSize(), 18432 * KiB);
    // Its table has no row below 512 KiB.
    FakeProcessor small = intelWithMaxLeaf(2);
    small.answer(2, {0x00000001, 0, 0, 0x3D});
    play(small);
    EXPECT_EQ(nuvLegacyCacheSize(), 0);
    play(processors::amdZen2().answer(2, {0x00000001, 0, 0, 0x43}));
    EXPECT_EQ(nuvLegacyCacheSize(), 0);
    FakeProcessor lowLeaf = intelWithMaxLeaf(1);
    lowLeaf.answer(2, {0x00000001, 0, 0, 0x43});
    play(lowLeaf);
    EXPECT_EQ(nuvLegacyCacheSize(), 0);
    EXPECT_EQ(this->cpu().calls(2), 0);
}

// ---------------------------------------------------------------- the processor running the tests

TEST_F(CacheSizeTest, RealProcessor) {
    __builtin_cpu_init();
    const CacheAnswer first = askCache();
    if (__builtin_cpu_is("intel")) {
        EXPECT_EQ(first.status, ippStsNoErr);
        EXPECT_GT(first.size, 0);
    } else {
        expectCache(first, ippStsNoCpuFeaturesWrn, 0);
    }
    const CacheAnswer second = askCache();
    EXPECT_EQ(second.status, first.status);
    EXPECT_EQ(second.size, first.size);
}

}  // namespace
}  // namespace nuv::test
