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

// What the counting hooks saw.
struct HookRecord {
    int mallocCalls = 0;
    std::size_t lastRequest = 0;
    void* lastRaw = nullptr;
    int freeCalls = 0;
    void* lastFreed = nullptr;
    int otherCalls = 0;  // calloc and realloc, which the allocator never uses
};
HookRecord record;

// The counting malloc serves one block at a time from an arena, at a chosen distance from a
// 64-byte boundary; it fails when asked for more than the arena holds or when told to.
alignas(64) unsigned char arena[1 << 16];
std::size_t arenaOffset = 0;
bool failAllocations = false;

void* countingMalloc(std::size_t size) {
    ++record.mallocCalls;
    record.lastRequest = size;
    record.lastRaw = nullptr;
    if (failAllocations || size > sizeof arena - arenaOffset) return nullptr;
    record.lastRaw = arena + arenaOffset;
    return record.lastRaw;
}
void countingFree(void* p) {
    ++record.freeCalls;
    record.lastFreed = p;
}
void* countingCalloc(std::size_t, std::size_t) {
    ++record.otherCalls;
    return nullptr;
}
void* countingRealloc(void*, std::size_t) {
    ++record.otherCalls;
    return nullptr;
}

class AllocationTest : public ::testing::Test {
protected:
    void SetUp() override {
        _saved = {i_malloc, i_calloc, i_realloc, i_free};
        i_malloc = countingMalloc;
        i_calloc = countingCalloc;
        i_realloc = countingRealloc;
        i_free = countingFree;
        record = {};
        arenaOffset = 0;
        failAllocations = false;
    }
    void TearDown() override {
        i_malloc = _saved.malloc;
        i_calloc = _saved.calloc;
        i_realloc = _saved.realloc;
        i_free = _saved.free;
    }

    // The block layout for a request of `length` bytes that the hook served at record.lastRaw.
    static void expectLayout(void* user, int length) {
        ASSERT_NE(user, nullptr);
        ASSERT_NE(record.lastRaw, nullptr);
        const auto raw = reinterpret_cast<std::uintptr_t>(record.lastRaw);
        const auto address = reinterpret_cast<std::uintptr_t>(user);
        EXPECT_EQ(record.lastRequest, static_cast<std::size_t>(length) + 72);
        EXPECT_EQ(address % 64, 0u);
        EXPECT_GE(address - raw, 8u);
        EXPECT_LE(address - raw, 71u);
        EXPECT_LE(address + static_cast<std::uintptr_t>(length), raw + length + 72)
            << "the block runs past what the hook gave";
        void* stored = nullptr;
        std::memcpy(&stored, static_cast<unsigned char*>(user) - 8, sizeof stored);
        EXPECT_EQ(stored, record.lastRaw) << "the hook's pointer is not in the 8 bytes below";
    }

private:
    struct Hooks {
        void* (*malloc)(std::size_t);
        void* (*calloc)(std::size_t, std::size_t);
        void* (*realloc)(void*, std::size_t);
        void (*free)(void*);
    } _saved{};
};

TEST_F(AllocationTest, LengthsBelowOneNeverReachTheHook) {
    EXPECT_EQ(ippMalloc(0), nullptr);
    EXPECT_EQ(ippMalloc(-1), nullptr);
    EXPECT_EQ(ippMalloc(INT_MIN), nullptr);
    EXPECT_EQ(record.mallocCalls, 0);
}

TEST_F(AllocationTest, BlocksAreAlignedAtEveryHookOffset) {
    for (std::size_t offset = 0; offset < 64; ++offset)
        for (int length : {1, 7, 63, 64, 65, 1000}) {
            SCOPED_TRACE("hook offset " + std::to_string(offset) + ", length " +
                         std::to_string(length));
            arenaOffset = offset;
            record = {};
            void* p = ippMalloc(length);
            EXPECT_EQ(record.mallocCalls, 1);
            expectLayout(p, length);
            ippFree(p);
            EXPECT_EQ(record.freeCalls, 1);
            EXPECT_EQ(record.lastFreed, record.lastRaw)
                << "ippFree must give back the hook's pointer";
        }
    EXPECT_EQ(record.otherCalls, 0);
}

TEST_F(AllocationTest, TheLengthIsWidenedBeforeTheSlackIsAdded) {
    EXPECT_EQ(ippMalloc(INT_MAX), nullptr);  // the arena cannot serve it
    EXPECT_EQ(record.mallocCalls, 1);
    EXPECT_EQ(record.lastRequest, static_cast<std::size_t>(INT_MAX) + 72);
}

TEST_F(AllocationTest, AFailingHookGivesNullEverywhere) {
    failAllocations = true;
    EXPECT_EQ(ippMalloc(10), nullptr);
    nuv::test::forEachSlot([](int) {
        EXPECT_EQ(ippsMalloc_8u(10), nullptr);
        int step = -1;
        EXPECT_EQ(ippiMalloc_8u_C1(10, 10, &step), nullptr);
        EXPECT_EQ(step, 64) << "the step is stored before the allocation";
        step = -1;
        EXPECT_EQ(ippiMalloc_8u_C3(10, 10, &step), nullptr);
        EXPECT_EQ(step, 64);
    });
    EXPECT_EQ(record.freeCalls, 0);
}

TEST_F(AllocationTest, FreeingNullDoesNothing) {
    ippFree(nullptr);
    nuv::test::forEachSlot([](int) {
        ippsFree(nullptr);
        ippiFree(nullptr);
    });
    EXPECT_EQ(record.freeCalls, 0);
}

TEST_F(AllocationTest, VectorAllocationAtEverySlot) {
    nuv::test::forEachSlot([](int slot) {
        record = {};
        EXPECT_EQ(ippsMalloc_8u(0), nullptr);
        EXPECT_EQ(ippsMalloc_8u(-3), nullptr);
        EXPECT_EQ(record.mallocCalls, 0);
        arenaOffset = static_cast<std::size_t>(slot) * 9;
        Ipp8u* p = ippsMalloc_8u(10);
        EXPECT_EQ(record.mallocCalls, 1);
        expectLayout(p, 10);
        ippsFree(p);
        EXPECT_EQ(record.lastFreed, record.lastRaw);
        p = ippsMalloc_8u(3);
        ippiFree(p);  // both release functions are the frame's ippFree
        EXPECT_EQ(record.lastFreed, record.lastRaw);
        EXPECT_EQ(record.freeCalls, 2);
    });
}

TEST_F(AllocationTest, ImageRowsArePaddedToSixtyFourBytes) {
    struct Case {
        bool threeChannels;
        int width, height, step;
    };
    Case const cases[] = {
        {false, 1, 1, 64},    {false, 64, 1, 64},   {false, 65, 1, 128}, {false, 65, 3, 128},
        {false, 128, 2, 128}, {false, 129, 5, 192}, {true, 22, 2, 128},  {true, 21, 2, 64},
        {true, 1, 1, 64},     {true, 43, 4, 192},   {true, 64, 3, 192},
    };
    nuv::test::forEachSlot([&](int slot) {
        for (Case const& c : cases) {
            SCOPED_TRACE(std::string(c.threeChannels ? "C3 " : "C1 ") + std::to_string(c.width) +
                         "x" + std::to_string(c.height));
            record = {};
            arenaOffset = static_cast<std::size_t>(slot) * 5 + 1;
            int step = -1;
            Ipp8u* p = c.threeChannels ? ippiMalloc_8u_C3(c.width, c.height, &step)
                                       : ippiMalloc_8u_C1(c.width, c.height, &step);
            EXPECT_EQ(step, c.step);
            expectLayout(p, c.step * c.height);
            ippiFree(p);
            EXPECT_EQ(record.lastFreed, record.lastRaw);
        }
    });
}

TEST_F(AllocationTest, EmptyImagesStoreAZeroStep) {
    nuv::test::forEachSlot([](int) {
        for (IppiSize size : {IppiSize{0, 5}, IppiSize{5, 0}, IppiSize{-1, 5}, IppiSize{5, -2}}) {
            int step = 99;
            EXPECT_EQ(ippiMalloc_8u_C1(size.width, size.height, &step), nullptr);
            EXPECT_EQ(step, 0);
            step = 99;
            EXPECT_EQ(ippiMalloc_8u_C3(size.width, size.height, &step), nullptr);
            EXPECT_EQ(step, 0);
        }
        EXPECT_EQ(ippiMalloc_8u_C1(5, 5, nullptr), nullptr);
        EXPECT_EQ(ippiMalloc_8u_C3(5, 5, nullptr), nullptr);
        EXPECT_EQ(ippiMalloc_8u_C1(0, 0, nullptr), nullptr);
    });
    EXPECT_EQ(record.mallocCalls, 0);
}

TEST_F(AllocationTest, ImageSizesAreThirtyTwoBitProducts) {
    nuv::test::forEachSlot([](int) {
        int step = 0;
        // 65536 * 32768 bytes is 2^31: negative in 32 bits, so no block and no hook call.
        EXPECT_EQ(ippiMalloc_8u_C1(65536, 32768, &step), nullptr);
        EXPECT_EQ(step, 65536);
        // 65536 * 65536 wraps to 0.
        EXPECT_EQ(ippiMalloc_8u_C1(65536, 65536, &step), nullptr);
        EXPECT_EQ(step, 65536);
        // The widest row rounds up past 2^31 and is stored as a negative step.
        EXPECT_EQ(ippiMalloc_8u_C1(INT_MAX, 1, &step), nullptr);
        EXPECT_EQ(step, INT_MIN);
        // 3 * 715827883 = 2^31 + 1 rounds to 2^31 + 64, kept as its low 32 bits.
        EXPECT_EQ(ippiMalloc_8u_C3(715827883, 1, &step), nullptr);
        EXPECT_EQ(step, -2147483584);
        // 3 * 65536 * 16384 = 3 * 2^30 wraps to -2^30.
        EXPECT_EQ(ippiMalloc_8u_C3(65536, 16384, &step), nullptr);
        EXPECT_EQ(step, 196608);
    });
    EXPECT_EQ(record.mallocCalls, 0);
    // A product that wraps to a small positive size does reach the hook, with that size.
    int step = 0;
    record = {};
    Ipp8u* p = ippiMalloc_8u_C1(64, 67108865, &step);  // 64 * (2^26 + 1) = 2^32 + 64
    EXPECT_EQ(step, 64);
    EXPECT_EQ(record.mallocCalls, 1);
    expectLayout(p, 64);
    ippiFree(p);
}

TEST(AllocationDefaultsTest, HooksStartAsTheCLibrary) {
    EXPECT_EQ(i_version, 1);
    EXPECT_EQ(i_min_version, 0);
    EXPECT_EQ(i_malloc, &std::malloc);
    EXPECT_EQ(i_calloc, &std::calloc);
    EXPECT_EQ(i_realloc, &std::realloc);
    EXPECT_EQ(i_free, &std::free);
    // So a block from i_malloc can be returned with std::free and the reverse.
    void* p = i_malloc(32);
    ASSERT_NE(p, nullptr);
    std::free(p);
    p = std::malloc(32);
    i_free(p);
}

TEST(AllocationDefaultsTest, BlocksFromTheCLibraryAreAlignedAndWritable) {
    for (int length : {1, 2, 63, 64, 65, 4096, 100000}) {
        auto* p = static_cast<unsigned char*>(ippMalloc(length));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 64, 0u);
        void* raw = nullptr;
        std::memcpy(&raw, p - 8, sizeof raw);
        const auto distance =
            reinterpret_cast<std::uintptr_t>(p) - reinterpret_cast<std::uintptr_t>(raw);
        EXPECT_GE(distance, 8u);
        EXPECT_LE(distance, 71u);
        std::memset(p, 0x5C, static_cast<std::size_t>(length));  // the sanitizer checks the span
        ippFree(p);
    }
    int step = 0;
    Ipp8u* image = ippiMalloc_8u_C3(101, 7, &step);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(step, 320);
    for (int y = 0; y < 7; ++y) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image + y * step) % 64, 0u);
        std::memset(image + y * step, 1, static_cast<std::size_t>(step));
    }
    ippiFree(image);
}

}  // namespace
