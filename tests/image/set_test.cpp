// Filling a one-channel region: statuses, exact bytes in every layout at every slot, the
// single run of packed rows, and the streaming path for regions larger than the cache.
#include "support/bodies.h"
#include "support/fake_processor.h"
#include "support/guarded.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using nuv::test::GuardedImage;
using nuv::test::Layout;

// Runs ippiSet_8u_C1R as slot `slot` would and checks the region and everything around it.
void expectFilled(int slot, Ipp8u value, int width, int height, Layout layout, std::mt19937& rng) {
    GuardedImage dst(width, height, layout);
    dst.fillRandom(rng);
    ASSERT_EQ(
        nuv::test::slotTable::ippiSet_8u_C1R[slot](value, dst.first(), dst.step(), {width, height}),
        ippStsNoErr);
    for (int y = 0; y < height; ++y) {
        Ipp8u const* row = dst.row(y);
        int x = 0;
        while (x < width && row[x] == value) ++x;
        ASSERT_EQ(x, width) << "byte " << x << " of row " << y << " is " << int{row[x]}
                            << "; region " << width << "x" << height << ", step " << dst.step();
    }
    EXPECT_TRUE(dst.guardsIntact()) << width << "x" << height << ", step " << dst.step();
}

TEST(SetTest, RefusesNullAndEmptyRegionsWithoutWriting) {
    nuv::test::forEachSlot([](int slot) {
        auto const set = nuv::test::slotTable::ippiSet_8u_C1R[slot];
        GuardedImage dst(8, 4);
        dst.fill(7);
        // The pointer is checked before the size.
        EXPECT_EQ(set(1, nullptr, 8, {8, 4}), ippStsNullPtrErr);
        EXPECT_EQ(set(1, nullptr, 8, {0, 0}), ippStsNullPtrErr);
        for (IppiSize size :
             {IppiSize{0, 4}, IppiSize{8, 0}, IppiSize{-1, 4}, IppiSize{8, -3}, IppiSize{0, 0}})
            EXPECT_EQ(set(1, dst.first(), dst.step(), size), ippStsSizeErr)
                << size.width << "x" << size.height;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 8; ++x) ASSERT_EQ(dst.row(y)[x], 7);
        EXPECT_TRUE(dst.guardsIntact());
    });
}

TEST(SetTest, FillsRandomSizesInEveryLayout) {
    std::mt19937 rng(1234);
    nuv::test::forEachSlot([&](int slot) {
        for (Layout const& layout : nuv::test::standardLayouts(rng))
            for (int i = 0; i < 12; ++i) {
                const int width = static_cast<int>(rng() % 70) + 1;
                const int height = static_cast<int>(rng() % 7) + 1;
                expectFilled(slot, static_cast<Ipp8u>(rng()), width, height, layout, rng);
            }
    });
}

TEST(SetTest, LongRowsAtEveryStartAlignment) {
    // Rows of 64 bytes and more take the aligned block path after an unaligned head store;
    // the head overlaps the first block by up to 15 bytes.
    std::mt19937 rng(99);
    nuv::test::forEachSlot([&](int slot) {
        for (int misalign = 0; misalign < 16; ++misalign)
            for (int width : {15, 16, 17, 63, 64, 65, 79, 80, 127, 128, 129, 191, 250}) {
                expectFilled(slot, 0xC3, width, 3, {5, misalign, false, 32}, rng);
                expectFilled(slot, 0x3C, width, 2, {0, misalign, true, 32}, rng);
            }
    });
}

TEST(SetTest, PackedRowsAreOneRunAndPaddedRowsKeepTheirGaps) {
    std::mt19937 rng(7);
    nuv::test::forEachSlot([&](int slot) {
        // dstStep equal to the width: one run of width * height bytes, whatever the width.
        for (int width : {1, 3, 16, 21, 64, 70})
            for (int misalign : {0, 1, 9})
                expectFilled(slot, 0x5A, width, 37, {0, misalign, false, 32}, rng);
        // dstStep above the width: the bytes between rows are left as they were.
        for (int width : {1, 3, 16, 21, 64, 70})
            for (int padding : {1, 7, 64})
                expectFilled(slot, 0xA6, width, 9, {padding, 3, false, 32}, rng);
    });
}

// ---- streaming path --------------------------------------------------------------------

// A GenuineIntel processor whose leaf 4 reports one 1 MiB data cache, counting queries. It
// has no leaf-2 descriptor: the fill asks ippGetMaxCacheSizeB alone.
class SetStreamingTest : public nuv::test::DispatchTest {
protected:
    void SetUp() override {
        DispatchTest::SetUp();
        play(nuv::test::processors::smallCacheIntel(0, 1024 * 1024));
    }
    int cpuidCalls() { return cpu().totalCalls(); }
};

TEST_F(SetStreamingTest, RegionsLargerThanTheCacheAreFilledExactly) {
    std::mt19937 rng(5);
    nuv::test::forEachSlot([&](int slot) {
        // 1100 * 1000 bytes pass the 1 MiB cache: streaming stores, one run and row by row.
        restart();
        expectFilled(slot, 0x11, 1100, 1000, {0, 0, false, 32}, rng);
        EXPECT_GT(cpuidCalls(), 0) << "the cache size was not asked for";
        expectFilled(slot, 0x22, 1100, 1000, {13, 7, false, 32}, rng);
        expectFilled(slot, 0x33, 1099, 1001, {0, 5, true, 32}, rng);
    });
}

TEST_F(SetStreamingTest, TheCacheIsAskedOnlyAboveHalfAMebibyte) {
    std::mt19937 rng(6);
    nuv::test::forEachSlot([&](int slot) {
        restart();
        expectFilled(slot, 0x44, 1024, 512, {0, 0, false, 32}, rng);  // exactly 0x80000 bytes
        EXPECT_EQ(cpuidCalls(), 0);
        // Just above: asked, and below the cache size, so the plain stores fill it.
        expectFilled(slot, 0x55, 1025, 512, {3, 1, false, 32}, rng);
        EXPECT_GT(cpuidCalls(), 0);
    });
}

TEST(SetNoCacheTest, LargeRegionsOnThisProcessorAreFilledExactly) {
    // Whatever this processor answers (another vendor gives no size), the bytes are the same.
    std::mt19937 rng(8);
    nuv::test::forEachSlot([&](int slot) {
        expectFilled(slot, 0x77, 1500, 1000, {0, 3, false, 32}, rng);
        expectFilled(slot, 0x78, 1500, 1000, {9, 0, true, 32}, rng);
    });
}

}  // namespace
