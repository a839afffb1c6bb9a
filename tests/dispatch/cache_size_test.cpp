// The largest cache: by deterministic cache parameters (leaf 4), by descriptor bytes (leaf 2)
// where leaf 4 is missing, once per process, 0 on other vendors; and the copy family's own
// descriptor route.
#include "support/fake_processor.h"
#include "primitives/dispatch/dispatch_state.h"

#include <functional>
#include <vector>

namespace nuv::test {
namespace {

namespace dispatch = nuv::prim::dispatch;
constexpr int KiB = 1024, MiB = 1024 * 1024;
constexpr IppStatus ok = ippStsNoErr, unknown = ippStsCacheSizeUnknownWrn,
                    noCpu = ippStsNoCpuFeaturesWrn;

// Leaf-4 row: type in EAX bits 4..0 (1 data, 2 instruction, 3 unified), level in 7..5.
CpuRegs level(Ipp32u type, Ipp32u ways, Ipp32u partitions, Ipp32u line, Ipp32u sets) {
    return {type | (1u << 5), ((ways - 1) << 22) | ((partitions - 1) << 12) | (line - 1), sets - 1,
            0};
}

FakeProcessor intel(Ipp32u maxLeaf, std::vector<CpuRegs> levels, CpuRegs leaf2) {
    FakeProcessor cpu;
    cpu.vendor("GenuineIntel", maxLeaf).answer(2, leaf2);
    for (Ipp32u s = 0; s < levels.size(); ++s) cpu.answer(4, s, levels[s]);
    return cpu;
}

using Maker = std::function<FakeProcessor()>;
// Processors with the highest leaf and leaf-4 levels, or with leaf-2 descriptors only.
Maker leaf4(Ipp32u maxLeaf, std::vector<CpuRegs> levels, CpuRegs leaf2 = {}) {
    return [=] { return intel(maxLeaf, levels, leaf2); };
}
Maker leaf2(CpuRegs regs, Ipp32u maxLeaf = 2) {
    return leaf4(maxLeaf, {}, regs);
}

struct CacheCase {
    char const* name;
    Maker cpu;
    IppStatus status;
    int size;
    int leaf2Calls, leaf4Calls;  // -1: not counted
};

const CpuRegs data32K = level(1, 8, 1, 64, 64), negative = level(1, 1024, 1024, 2048, 1);
// Forty levels growing by 64 bytes: only sub-leaves 0..31 are asked.
std::vector<CpuRegs> growing() {
    std::vector<CpuRegs> levels;
    for (Ipp32u s = 0; s < 40; ++s) levels.push_back(level(1, 1, 1, 64, s + 1));
    return levels;
}

CacheCase const cases[] = {
    {"Haswell", processors::haswell, ok, 8 * MiB, 0, 5},
    {"Core2", processors::core2Merom, ok, 4 * MiB, 0, -1},
    {"PrescottLeaf5", processors::prescott, ok, 1 * MiB, 0, -1},
    {"NorthwoodByDescriptor", processors::northwood, ok, 512 * KiB, -1, 0},
    {"OtherVendor", processors::amdZen2, noCpu, 0, 0, 0},
    // Instruction caches are skipped, a type above 3 counts, type 0 ends the list.
    {"Leaf4Levels",
     leaf4(4, {data32K,
               level(2, 16, 1, 64, 16384),
               level(4, 4, 2, 64, 512),
               {0x100, ~0u, 0xFF, 0},
               level(3, 16, 1, 64, 65536)}),
     ok, 4 * 2 * 64 * 512, 0, 4},
    {"Leaf4ThirtyTwoSubleaves", leaf4(4, growing()), ok, 64 * 32, 0, 32},
    // 2^31 is negative as a signed product and never wins; 2^32 wraps to 0.
    {"Leaf4SignedProducts", leaf4(4, {negative, data32K}), ok, 32 * KiB, 0, -1},
    {"Leaf4NegativeAlone", leaf4(4, {negative}), unknown, 0, 0, -1},
    {"Leaf4WrapsToZero", leaf4(4, {level(1, 1024, 1024, 4096, 1)}), unknown, 0, 0, -1},
    // Leaf 4 is the method where it exists, even without levels.
    {"Leaf4Empty", leaf4(4, {}, {1, 0, 0, 0x4D}), unknown, 0, 0, -1},
    {"Leaf4InstructionOnly", leaf4(4, {level(2, 8, 1, 64, 64)}), unknown, 0, 0, -1},
    // Below leaf 4, descriptors; the table's order decides, not the registers'. Registers
    // with bit 31 hold none; EAX's low byte is the round count and its upper bytes are
    // descriptors, even with bit 31 set there.
    {"Leaf2BelowLeaf4", leaf4(3, {level(1, 16, 1, 64, 65536)}, {1, 0, 0, 0x43}), ok, 512 * KiB, 1,
     0},
    {"Leaf2TableOrder", leaf2({0x00224301, 0, 0, 0x4D000000}), ok, 16 * MiB, 1, 0},
    {"Leaf2SmallestRow", leaf2({1, 0, 0, 0x41}), ok, 128 * KiB, 1, 0},
    {"Leaf2LargestRow", leaf2({1, 0x0000EC00, 0, 0}), ok, 24 * MiB, 1, 0},
    {"Leaf2Bit31Registers", leaf2({1, 0x800000EC, 0x80EB0000, 0x43}), ok, 512 * KiB, 1, 0},
    {"Leaf2Bit31InEax", leaf2({0x80EC0001, 0x0000434D, 0, 0}), ok, 512 * KiB, 1, 0},
    {"Leaf2EaxUpperBytes", leaf2({0x3B000001, 0, 0, 0}), ok, 128 * KiB, 1, 0},
    {"Leaf2TopByteAbove0x80", leaf2({1, 0, 0, 0xEC000000}), unknown, 0, 1, 0},
    {"Leaf2TwoRounds", leaf2({0x4D000002, 0x43, 0, 0}), unknown, 0, 1, 0},
    {"Leaf2NoRound", leaf2({0x4D000000, 0x43, 0, 0}), unknown, 0, 1, 0},
    {"Leaf2UnknownDescriptors", leaf2({0x665B5001, 0, 0, 0x7040}), unknown, 0, 1, 0},
    {"HighestLeafOne", leaf2({1, 0, 0, 0x43}, 1), noCpu, 0, 0, 0},
};

class CacheSize : public DispatchTest, public ::testing::WithParamInterface<CacheCase> {};

TEST_P(CacheSize, StatusSizeAndLeavesAsked) {
    CacheCase const& c = GetParam();
    play(c.cpu());
    int size = -12345;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), c.status);
    EXPECT_EQ(size, c.size);
    if (c.leaf2Calls >= 0) {
        EXPECT_EQ(cpu().calls(2), c.leaf2Calls);
    }
    if (c.leaf4Calls >= 0) {
        EXPECT_EQ(cpu().calls(4), c.leaf4Calls);
    }
    // The answer, success or not, is kept for good: another processor later asks nothing.
    play(processors::northwood());
    size = -1;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), c.status);
    EXPECT_EQ(size, c.size);
    EXPECT_EQ(cpu().totalCalls(), 0);
}

INSTANTIATE_TEST_SUITE_P(Processors, CacheSize, ::testing::ValuesIn(cases),
                         [](auto const& info) { return std::string(info.param.name); });

using CacheSizeTest = DispatchTest;

TEST_F(CacheSizeTest, NullPointerAsksNothingAndResetAsksAgain) {
    // The processor running the tests: a size on Intel, none elsewhere.
    __builtin_cpu_init();
    int real = -1;
    EXPECT_EQ(ippGetMaxCacheSizeB(&real), __builtin_cpu_is("intel") ? ok : noCpu);
    EXPECT_EQ(real > 0, __builtin_cpu_is("intel") != 0);
    restart();
    play(processors::haswell());
    EXPECT_EQ(ippGetMaxCacheSizeB(nullptr), ippStsNullPtrErr);
    EXPECT_EQ(cpu().totalCalls(), 0);
    EXPECT_EQ(dispatch::ownStatus, 1);
    EXPECT_EQ(ippInitCpu(33), ippStsNoErr);  // selection does not touch it
    int size = 0;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ok);
    EXPECT_EQ(size, 8 * MiB);
    EXPECT_EQ(ippGetMaxCacheSizeB(nullptr), ippStsNullPtrErr);
    nuvResetDispatchState();
    EXPECT_EQ(dispatch::ownStatus, 1);
    EXPECT_EQ(dispatch::cacheSize, 0);
    play(processors::northwood());
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ok);
    EXPECT_EQ(size, 512 * KiB);
    // The descriptor scan alone reports a failure as -1.
    play(intel(2, {}, {2, 0, 0, 0x43}));
    EXPECT_EQ(dispatch::ownGetCacheSize(dispatch::tableCache), -1);
}

// The copy family's route asks afresh on every call, on "GenuineIntel" with leaf 2 only, and
// its table has no row below 512 KiB.
TEST_F(CacheSizeTest, CopyFamilyRoute) {
    struct Row {
        FakeProcessor cpu;
        int size;
    } const rows[] = {
        {processors::northwood(), 512 * KiB},
        {processors::haswell(), 0},
        {intel(0xD, {}, {0x00EB0001, 0, 0, 0x43}), 18 * MiB},
        {intel(2, {}, {1, 0, 0, 0x3D}), 0},
        {processors::amdZen2().answer(2, {1, 0, 0, 0x43}), 0},
        {intel(1, {}, {1, 0, 0, 0x43}), 0},
    };
    for (Row const& row : rows) {
        play(row.cpu);
        EXPECT_EQ(nuvLegacyCacheSize(), row.size);
    }
    EXPECT_EQ(cpu().calls(2), 0);
}

}  // namespace
}  // namespace nuv::test
