// The frame allocator and its typed forms: the block layout, seen through counting hooks
// that hand out memory at every offset from a 64-byte boundary; lengths that never reach
// the hook; the padded row steps; and a hook that fails.
#include "support/slots.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// What the counting hooks saw. The counting malloc serves one block at a time from an arena,
// at a chosen distance from a 64-byte boundary; it fails when asked for more than the arena
// holds or when told to. calloc and realloc, which the allocator never uses, count as others.
struct HookRecord {
    int mallocCalls = 0, freeCalls = 0, otherCalls = 0;
    std::size_t lastRequest = 0;
    void *lastRaw = nullptr, *lastFreed = nullptr;
} record;
alignas(64) unsigned char arena[1 << 16];
std::size_t arenaOffset = 0;
bool failAllocations = false;

class AllocationTest : public ::testing::Test {
protected:
    void SetUp() override {
        i_malloc = [](std::size_t size) -> void* {
            ++record.mallocCalls;
            record.lastRequest = size;
            const bool fits = !failAllocations && size <= sizeof arena - arenaOffset;
            return record.lastRaw = fits ? arena + arenaOffset : nullptr;
        };
        i_calloc = [](std::size_t, std::size_t) -> void* { return ++record.otherCalls, nullptr; };
        i_realloc = [](void*, std::size_t) -> void* { return ++record.otherCalls, nullptr; };
        i_free = [](void* p) { ++record.freeCalls, record.lastFreed = p; };
        record = {};
        arenaOffset = 0;
        failAllocations = false;
    }
    void TearDown() override {
        i_malloc = std::malloc;
        i_calloc = std::calloc;
        i_realloc = std::realloc;
        i_free = std::free;
    }

    // The block for a request of `length` bytes that the hook served at record.lastRaw: 72
    // bytes more asked, 64-byte aligned within them, the hook's pointer in the 8 bytes below.
    static void expectLayout(void* user, int length) {
        ASSERT_NE(user, nullptr);
        const auto raw = reinterpret_cast<std::uintptr_t>(record.lastRaw);
        const auto address = reinterpret_cast<std::uintptr_t>(user);
        EXPECT_EQ(record.lastRequest, static_cast<std::size_t>(length) + 72);
        EXPECT_EQ(address % 64, 0u);
        EXPECT_GE(address - raw, 8u);
        EXPECT_LE(address - raw, 71u);
        void* stored = nullptr;
        std::memcpy(&stored, static_cast<unsigned char*>(user) - 8, sizeof stored);
        EXPECT_EQ(stored, record.lastRaw);
    }
};

// Lengths below 1 never reach the hook; the length is widened before the slack is added; a
// failing hook gives null everywhere (the step is stored first); null is never freed.
TEST_F(AllocationTest, RefusalsAndFailures) {
    for (int length : {0, -1, INT_MIN}) EXPECT_EQ(ippMalloc(length), nullptr);
    EXPECT_EQ(record.mallocCalls, 0);
    EXPECT_EQ(ippMalloc(INT_MAX), nullptr);
    EXPECT_EQ(record.lastRequest, static_cast<std::size_t>(INT_MAX) + 72);
    failAllocations = true;
    nuv::test::forEachSlot([](int) {
        EXPECT_EQ(ippsMalloc_8u(10), nullptr);
        for (auto allocate : {ippiMalloc_8u_C1, ippiMalloc_8u_C3}) {
            int step = -1;
            EXPECT_EQ(allocate(10, 10, &step), nullptr);
            EXPECT_EQ(step, 64);
        }
        ippsFree(nullptr);
        ippiFree(nullptr);
    });
    ippFree(nullptr);
    EXPECT_EQ(record.freeCalls, 0);
}

// Rows padded to 64 bytes, every block released to the hook by either free function, at
// every slot and hook offset.
TEST_F(AllocationTest, VectorsAndPaddedImageRows) {
    struct Case {
        int channels, width, height, step;
    } const cases[] = {{1, 1, 1, 64},   {1, 64, 1, 64}, {1, 65, 3, 128}, {1, 129, 5, 192},
                       {3, 22, 2, 128}, {3, 21, 2, 64}, {3, 43, 4, 192}, {3, 64, 3, 192}};
    nuv::test::forEachSlot([&](int slot) {
        record = {};
        EXPECT_EQ(ippsMalloc_8u(0), nullptr);
        EXPECT_EQ(ippsMalloc_8u(-3), nullptr);
        EXPECT_EQ(record.mallocCalls, 0);
        arenaOffset = static_cast<std::size_t>(slot) * 9;
        Ipp8u* p = ippsMalloc_8u(10);
        expectLayout(p, 10);
        ippiFree(p);
        EXPECT_EQ(record.lastFreed, record.lastRaw);
        for (Case const& c : cases) {
            SCOPED_TRACE(std::to_string(c.channels) + " " + std::to_string(c.width));
            arenaOffset = static_cast<std::size_t>(slot) * 5 + 1;
            int step = -1;
            p = (c.channels == 3 ? ippiMalloc_8u_C3 : ippiMalloc_8u_C1)(c.width, c.height, &step);
            EXPECT_EQ(step, c.step);
            expectLayout(p, c.step * c.height);
            ippsFree(p);
            EXPECT_EQ(record.lastFreed, record.lastRaw);
        }
    });
}

// Empty images store a zero step; sizes are 32-bit products and steps their low 32 bits.
TEST_F(AllocationTest, ImageSizesAndSteps) {
    struct Case {
        int channels, width, height, step;
    } const cases[] = {{1, 0, 5, 0},
                       {3, 5, 0, 0},
                       {1, -1, 5, 0},
                       {3, 5, -2, 0},
                       {1, 65536, 32768, 65536},        // 2^31 bytes: negative, no block
                       {1, 65536, 65536, 65536},        // wraps to 0
                       {1, INT_MAX, 1, INT_MIN},        // the row rounds up past 2^31
                       {3, 715827883, 1, -2147483584},  // 2^31 + 1 rounds to 2^31 + 64
                       {3, 65536, 16384, 196608}};      // 3 * 2^30 wraps negative
    nuv::test::forEachSlot([&](int) {
        for (Case const& c : cases) {
            int step = 99;
            EXPECT_EQ(
                (c.channels == 3 ? ippiMalloc_8u_C3 : ippiMalloc_8u_C1)(c.width, c.height, &step),
                nullptr);
            EXPECT_EQ(step, c.step) << c.width << "x" << c.height;
        }
        EXPECT_EQ(ippiMalloc_8u_C1(5, 5, nullptr), nullptr);
        EXPECT_EQ(ippiMalloc_8u_C3(5, 5, nullptr), nullptr);
    });
    EXPECT_EQ(record.mallocCalls, 0);
    // A product that wraps to a small positive size reaches the hook with that size.
    int step = 0;
    Ipp8u* p = ippiMalloc_8u_C1(64, 67108865, &step);  // 64 * (2^26 + 1) = 2^32 + 64
    EXPECT_EQ(step, 64);
    expectLayout(p, 64);
    ippiFree(p);
}

// The hooks start as the C library's, so blocks go back and forth between them; blocks and
// rows from it are aligned and writable over their whole span (the sanitizer checks it).
TEST(AllocationDefaultsTest, TheCLibrary) {
    EXPECT_EQ(i_version, 1);
    EXPECT_EQ(i_min_version, 0);
    EXPECT_TRUE(i_malloc == &std::malloc && i_calloc == &std::calloc &&
                i_realloc == &std::realloc && i_free == &std::free);
    for (int length : {1, 63, 64, 65, 100000}) {
        auto* p = static_cast<unsigned char*>(ippMalloc(length));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 64, 0u);
        std::memset(p, 0x5C, static_cast<std::size_t>(length));
        ippFree(p);
    }
    int step = 0;
    Ipp8u* image = ippiMalloc_8u_C3(101, 7, &step);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(step, 320);
    std::memset(image, 1, static_cast<std::size_t>(step) * 7);
    ippiFree(image);
}

}  // namespace
