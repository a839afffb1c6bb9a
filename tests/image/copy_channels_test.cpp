// Copies between channel layouts, against a plain per-pixel model: statuses, every slot,
// every layout of source and destination, widths that run every block and tail path, and
// the destination bytes that the gray-to-three-channel copy must leave alone.
#include "support/guarded.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using nuv::test::GuardedImage;
using nuv::test::Layout;

using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

// One channel copy: its stub, the bytes per pixel on each side, and the model of one pixel.
struct ChannelCopy {
    char const* name;
    CopyFn fn;
    int srcPixel;
    int dstPixel;
    void (*pixel)(Ipp8u const* src, Ipp8u* dst);
};

ChannelCopy const kCopies[] = {
    {"ippiCopy_8u_C1C3R", ippiCopy_8u_C1C3R, 1, 3,
     [](Ipp8u const* s, Ipp8u* d) { d[0] = s[0]; }},  // d[1], d[2] stay as they were
    {"ippiCopy_8u_C3C1R", ippiCopy_8u_C3C1R, 3, 1, [](Ipp8u const* s, Ipp8u* d) { d[0] = s[0]; }},
    {"ippiCopy_8u_AC4C3R", ippiCopy_8u_AC4C3R, 4, 3,
     [](Ipp8u const* s, Ipp8u* d) {
         d[0] = s[0];
         d[1] = s[1];
         d[2] = s[2];
     }},
};

// What the destination must hold afterwards: its old bytes with the model applied.
std::vector<Ipp8u> modelResult(ChannelCopy const& copy, GuardedImage const& src,
                               std::vector<Ipp8u> dst, int width, int height) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            copy.pixel(src.row(y) + x * copy.srcPixel,
                       dst.data() + (static_cast<std::size_t>(y) * width + x) * copy.dstPixel);
    return dst;
}

// Runs one copy through its stub and compares with the model, guards included.
void expectCopy(ChannelCopy const& copy, int width, int height, Layout srcLayout, Layout dstLayout,
                std::mt19937& rng) {
    GuardedImage src(width * copy.srcPixel, height, srcLayout);
    GuardedImage dst(width * copy.dstPixel, height, dstLayout);
    src.fillRandom(rng);
    dst.fillRandom(rng);
    const std::vector<Ipp8u> expected = modelResult(copy, src, dst.packed(), width, height);
    ASSERT_EQ(copy.fn(src.first(), src.step(), dst.first(), dst.step(), {width, height}),
              ippStsNoErr);
    const std::vector<Ipp8u> actual = dst.packed();
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(int{actual[i]}, int{expected[i]})
            << copy.name << " " << width << "x" << height << ": pixel "
            << (i / copy.dstPixel) % width << " of row " << i / copy.dstPixel / width << ", byte "
            << i % copy.dstPixel << "; steps " << src.step() << ", " << dst.step();
    EXPECT_TRUE(dst.guardsIntact()) << copy.name << " " << width << "x" << height;
    EXPECT_TRUE(src.guardsIntact()) << copy.name << " wrote to its source";
}

TEST(CopyChannelsTest, RefusesNullPointersThenEmptySizes) {
    nuv::test::forEachSlot([](int) {
        for (ChannelCopy const& copy : kCopies) {
            SCOPED_TRACE(copy.name);
            GuardedImage src(4 * copy.srcPixel, 4), dst(4 * copy.dstPixel, 4);
            dst.fill(9);
            EXPECT_EQ(copy.fn(nullptr, src.step(), dst.first(), dst.step(), {4, 4}),
                      ippStsNullPtrErr);
            EXPECT_EQ(copy.fn(src.first(), src.step(), nullptr, dst.step(), {4, 4}),
                      ippStsNullPtrErr);
            EXPECT_EQ(copy.fn(nullptr, src.step(), dst.first(), dst.step(), {0, 4}),
                      ippStsNullPtrErr);
            for (IppiSize size : {IppiSize{0, 4}, IppiSize{4, 0}, IppiSize{-2, 4}, IppiSize{4, -1}})
                EXPECT_EQ(copy.fn(src.first(), src.step(), dst.first(), dst.step(), size),
                          ippStsSizeErr)
                    << size.width << "x" << size.height;
            for (Ipp8u byte : dst.packed()) ASSERT_EQ(byte, 9);
            EXPECT_TRUE(dst.guardsIntact());
        }
    });
}

TEST(CopyChannelsTest, MatchTheModelInEveryLayoutAtEverySlot) {
    std::mt19937 rng(2024);
    nuv::test::forEachSlot([&](int) {
        const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
        for (ChannelCopy const& copy : kCopies)
            for (Layout const& srcLayout : layouts)
                for (Layout const& dstLayout : layouts)
                    for (int i = 0; i < 4; ++i) {
                        const int width = static_cast<int>(rng() % 70) + 1;
                        const int height = static_cast<int>(rng() % 5) + 1;
                        expectCopy(copy, width, height, srcLayout, dstLayout, rng);
                    }
    });
}

TEST(CopyChannelsTest, EveryWidthUpToThreeBlocks) {
    // Blocks of 16 and 32 pixels, the overlapping last block, the pairs and the odd pixel.
    std::mt19937 rng(31);
    nuv::test::forEachSlot([&](int) {
        for (ChannelCopy const& copy : kCopies)
            for (int width = 1; width <= 100; ++width) {
                expectCopy(copy, width, 2, {3, 5, false, 32}, {1, 11, false, 32}, rng);
                if (::testing::Test::HasFatalFailure()) return;
            }
    });
}

TEST(CopyChannelsTest, PackedRowsAndLargeFrames) {
    // Packed rows on both sides may be walked as one long row; the bytes must not change.
    std::mt19937 rng(77);
    nuv::test::forEachSlot([&](int) {
        for (ChannelCopy const& copy : kCopies) {
            expectCopy(copy, 1, 67, {}, {}, rng);
            expectCopy(copy, 5, 13, {}, {}, rng);
            expectCopy(copy, 640, 48, {}, {}, rng);
            expectCopy(copy, 641, 47, {0, 3, false, 32}, {0, 0, true, 32}, rng);
            expectCopy(copy, 333, 20, {}, {2, 0, false, 32}, rng);  // only the source packed
        }
    });
}

TEST(CopyChannelsTest, GrayToChannelZeroLeavesTheOtherChannels) {
    nuv::test::forEachSlot([](int) {
        for (int width : {1, 2, 15, 16, 17, 31, 32, 33, 47, 64, 97}) {
            GuardedImage src(width, 3), dst(3 * width, 3, {4, 1, false, 32});
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < width; ++x) {
                    src.row(y)[x] = static_cast<Ipp8u>(x + 10 * y);
                    dst.row(y)[3 * x] = 0xEE;
                    dst.row(y)[3 * x + 1] = 0x11;
                    dst.row(y)[3 * x + 2] = 0x22;
                }
            ASSERT_EQ(
                ippiCopy_8u_C1C3R(src.first(), src.step(), dst.first(), dst.step(), {width, 3}),
                ippStsNoErr);
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < width; ++x) {
                    ASSERT_EQ(dst.row(y)[3 * x], static_cast<Ipp8u>(x + 10 * y)) << width;
                    ASSERT_EQ(dst.row(y)[3 * x + 1], 0x11) << width << " at " << x;
                    ASSERT_EQ(dst.row(y)[3 * x + 2], 0x22) << width << " at " << x;
                }
            EXPECT_TRUE(dst.guardsIntact());
        }
    });
}

TEST(CopyChannelsTest, ExactBytes) {
    nuv::test::forEachSlot([](int) {
        // Three BGR pixels: channel 0 out.
        Ipp8u const bgr[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
        Ipp8u gray[3] = {};
        ASSERT_EQ(ippiCopy_8u_C3C1R(bgr, 9, gray, 3, {3, 1}), ippStsNoErr);
        EXPECT_EQ(std::vector<Ipp8u>(gray, gray + 3), (std::vector<Ipp8u>{1, 4, 7}));
        // Two BGRA pixels: the fourth byte dropped.
        Ipp8u const bgra[8] = {10, 20, 30, 40, 50, 60, 70, 80};
        Ipp8u three[6] = {};
        ASSERT_EQ(ippiCopy_8u_AC4C3R(bgra, 8, three, 6, {2, 1}), ippStsNoErr);
        EXPECT_EQ(std::vector<Ipp8u>(three, three + 6),
                  (std::vector<Ipp8u>{10, 20, 30, 50, 60, 70}));
        // Two gray pixels into channel 0.
        Ipp8u const two[2] = {200, 201};
        Ipp8u out[6] = {0, 1, 2, 3, 4, 5};
        ASSERT_EQ(ippiCopy_8u_C1C3R(two, 2, out, 6, {2, 1}), ippStsNoErr);
        EXPECT_EQ(std::vector<Ipp8u>(out, out + 6), (std::vector<Ipp8u>{200, 1, 2, 201, 4, 5}));
    });
}

TEST(CopyChannelsTest, StepsAreNotTested) {
    // A zero source step reads the first row for every row; a negative destination step
    // writes the rows upward. Neither is refused.
    std::mt19937 rng(3);
    nuv::test::forEachSlot([&](int) {
        for (ChannelCopy const& copy : kCopies) {
            SCOPED_TRACE(copy.name);
            const int width = 37, height = 4;
            GuardedImage src(width * copy.srcPixel, 1);
            src.fillRandom(rng);
            GuardedImage dst(width * copy.dstPixel, height, {0, 0, true, 32});
            dst.fill(0);
            ASSERT_EQ(copy.fn(src.first(), 0, dst.first(), dst.step(), {width, height}),
                      ippStsNoErr);
            std::vector<Ipp8u> row(static_cast<std::size_t>(width) * copy.dstPixel, 0);
            for (int x = 0; x < width; ++x)
                copy.pixel(src.first() + x * copy.srcPixel, row.data() + x * copy.dstPixel);
            for (int y = 0; y < height; ++y)
                EXPECT_EQ(std::vector<Ipp8u>(dst.row(y), dst.row(y) + row.size()), row) << y;
            EXPECT_TRUE(dst.guardsIntact());
        }
    });
}

}  // namespace
