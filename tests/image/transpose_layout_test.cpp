// ippiTranspose_8u_C1R and ippiTranspose_8u_C3R at every slot this processor runs: the small
// examples that define the operation, random regions against a plain model in every layout
// pair, regions of several blocks with narrower last strips and lower last blocks, and the
// checks that refuse a call before anything is written.
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using nuv::test::Layout;

using TransposeFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

struct Form {
    TransposeFn transpose;
    int channels;
    char const* name;
};

Form const forms[] = {{ippiTranspose_8u_C1R, 1, "C1"}, {ippiTranspose_8u_C3R, 3, "C3"}};

// The model: destination pixel (x, y) is source pixel (y, x), its bytes in their order.
std::vector<std::uint8_t> modelTranspose(std::vector<std::uint8_t> const& src, int width,
                                         int height, int channels) {
    std::vector<std::uint8_t> dst(src.size());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                dst[(static_cast<std::size_t>(x) * height + y) * channels + c] =
                    src[(static_cast<std::size_t>(y) * width + x) * channels + c];
    return dst;
}

std::string describe(int width, int height, Layout const& s, Layout const& d) {
    auto layout = [](Layout const& l) {
        return "{pad " + std::to_string(l.padding) + ", off " + std::to_string(l.misalign) +
               (l.negative ? ", up" : "") + (l.guard == 0 ? ", no guard" : "") + "}";
    };
    return std::to_string(width) + "x" + std::to_string(height) + " src" + layout(s) + " dst" +
           layout(d);
}

// Transposes a random region between two layouts at every slot; the destination starts with
// a byte that differs from every expected one at its place, so a missed byte cannot pass.
void expectModel(Form const& form, int width, int height, Layout const& srcLayout,
                 Layout const& dstLayout, std::mt19937& rng) {
    SCOPED_TRACE(std::string(form.name) + " " + describe(width, height, srcLayout, dstLayout));
    GuardedImage src(width * form.channels, height, srcLayout);
    GuardedImage dst(height * form.channels, width, dstLayout);
    src.fillRandom(rng);
    const std::vector<std::uint8_t> before = src.packed();
    const std::vector<std::uint8_t> expected = modelTranspose(before, width, height, form.channels);
    forEachSlot([&](int) {
        for (int y = 0; y < dst.height(); ++y)
            for (int x = 0; x < dst.rowBytes(); ++x)
                dst.row(y)[x] = static_cast<Ipp8u>(~expected[y * dst.rowBytes() + x]);
        ASSERT_EQ(form.transpose(src.first(), src.step(), dst.first(), dst.step(), {width, height}),
                  ippStsNoErr);
        EXPECT_EQ(dst.packed(), expected);
        EXPECT_TRUE(dst.guardsIntact());
    });
    EXPECT_EQ(src.packed(), before);
    EXPECT_TRUE(src.guardsIntact());
}

// --------------------------------------------------------------------- exact examples

TEST(TransposeRegion, TwoByThreeGray) {
    forEachSlot([](int) {
        const Ipp8u src[3][2] = {{1, 2}, {3, 4}, {5, 6}};
        Ipp8u dst[2][3] = {};
        ASSERT_EQ(ippiTranspose_8u_C1R(&src[0][0], 2, &dst[0][0], 3, {2, 3}), ippStsNoErr);
        const Ipp8u expected[2][3] = {{1, 3, 5}, {2, 4, 6}};
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x) EXPECT_EQ(dst[y][x], expected[y][x]) << y << "," << x;
    });
}

TEST(TransposeRegion, OnePixelIsCopied) {
    forEachSlot([](int) {
        const Ipp8u gray = 77;
        Ipp8u grayOut[3] = {0, 0, 0};
        ASSERT_EQ(ippiTranspose_8u_C1R(&gray, 1, grayOut + 1, 1, {1, 1}), ippStsNoErr);
        EXPECT_EQ(grayOut[0], 0);
        EXPECT_EQ(grayOut[1], 77);
        EXPECT_EQ(grayOut[2], 0);

        const Ipp8u colour[3] = {9, 8, 7};
        Ipp8u colourOut[5] = {0, 0, 0, 0, 0};
        ASSERT_EQ(ippiTranspose_8u_C3R(colour, 3, colourOut + 1, 3, {1, 1}), ippStsNoErr);
        const Ipp8u expected[5] = {0, 9, 8, 7, 0};
        for (int i = 0; i < 5; ++i) EXPECT_EQ(colourOut[i], expected[i]) << i;
    });
}

// A row of two pixels becomes a column of two, each pixel's bytes in their order.
TEST(TransposeRegion, ThreeChannelPixelsKeepTheirByteOrder) {
    forEachSlot([](int) {
        const Ipp8u src[6] = {10, 20, 30, 40, 50, 60};
        Ipp8u dst[2][4] = {};  // one pixel per row, a step of 4
        ASSERT_EQ(ippiTranspose_8u_C3R(src, 6, &dst[0][0], 4, {2, 1}), ippStsNoErr);
        const Ipp8u expected[2][4] = {{10, 20, 30, 0}, {40, 50, 60, 0}};
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 4; ++x) EXPECT_EQ(dst[y][x], expected[y][x]) << y << "," << x;
    });
}

// --------------------------------------------------------------------- against the model

TEST(TransposeRegion, RandomSizesInEveryLayoutPair) {
    std::mt19937 rng(20240612);
    for (Form const& form : forms) {
        for (int round = 0; round < 10; ++round) {
            const int width = static_cast<int>(rng() % 70) + 1;
            const int height = static_cast<int>(rng() % 70) + 1;
            const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
            for (Layout const& s : layouts)
                for (Layout const& d : layouts) expectModel(form, width, height, s, d, rng);
        }
    }
}

// Every width and height from 1 to 20 against every other: each tile size with each rest,
// and the last tiles of a block whose wide loads and stores must stay inside it.
TEST(TransposeRegion, EverySmallShape) {
    std::mt19937 rng(8);
    const Layout packed{0, 0, false, 0};
    const Layout odd{3, 5, false, 32};
    for (Form const& form : forms)
        for (int width = 1; width <= 20; ++width)
            for (int height = 1; height <= 20; ++height)
                expectModel(form, width, height, packed, odd, rng);
}

// Regions wider and higher than a block whose sizes are no multiple of it: the last strip is
// narrower and the last block of each strip lower. Thin regions make a block size below 64.
TEST(TransposeRegion, SeveralBlocksWithNarrowerLastStripsAndLowerLastBlocks) {
    std::mt19937 rng(31);
    struct Shape {
        int width, height;
    };
    std::vector<Shape> shapes = {{65, 65},  {127, 65}, {65, 130}, {200, 71},
                                 {71, 200}, {300, 9},  {9, 300},  {129, 129}};
    for (int i = 0; i < 4; ++i)
        shapes.push_back({static_cast<int>(rng() % 200) + 65, static_cast<int>(rng() % 200) + 65});
    for (Form const& form : forms) {
        for (Shape const& shape : shapes) {
            const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
            expectModel(form, shape.width, shape.height, layouts[0], layouts[2], rng);
            expectModel(form, shape.width, shape.height, layouts[3], layouts[1], rng);
            expectModel(form, shape.width, shape.height, layouts[2], layouts[4], rng);
        }
    }
}

// Source rows a multiple of 512 bytes apart share cache sets, and some generations walk such
// blocks in another order; the bytes must not change with it.
TEST(TransposeRegion, SourceRowsAMultipleOf512Apart) {
    std::mt19937 rng(77);
    for (Form const& form : forms) {
        for (int round = 0; round < 8; ++round) {
            const int width = static_cast<int>(rng() % 150) + 1;
            const int height = static_cast<int>(rng() % 150) + 1;
            const int rowBytes = width * form.channels;
            const int step = (rowBytes / 512 + 1 + static_cast<int>(rng() % 2)) * 512;
            const Layout source{step - rowBytes, static_cast<int>(rng() % 16), round % 2 == 1, 32};
            expectModel(form, width, height, source, {static_cast<int>(rng() % 9), 0, false, 32},
                        rng);
        }
    }
}

// --------------------------------------------------------------------- steps

// No step is tested: a zero source step reads the first row again for every row, so each
// destination row repeats one source byte (one pixel in C3).
TEST(TransposeRegion, ZeroSourceStepRepeatsTheFirstRow) {
    std::mt19937 rng(12);
    forEachSlot([&](int) {
        for (Form const& form : forms) {
            for (int width : {1, 7, 23, 70}) {
                const int height = 19;
                SCOPED_TRACE(std::string(form.name) + " width " + std::to_string(width));
                GuardedImage src(width * form.channels, 1, {0, 3, false, 32});
                GuardedImage dst(height * form.channels, width, {4, 1, false, 32});
                src.fillRandom(rng);
                dst.fill(0);
                ASSERT_EQ(form.transpose(src.first(), 0, dst.first(), dst.step(), {width, height}),
                          ippStsNoErr);
                for (int x = 0; x < width; ++x)
                    for (int y = 0; y < height; ++y)
                        for (int c = 0; c < form.channels; ++c)
                            ASSERT_EQ(dst.row(x)[y * form.channels + c],
                                      src.row(0)[x * form.channels + c])
                                << "x " << x << " y " << y;
                EXPECT_TRUE(dst.guardsIntact());
            }
        }
    });
}

// --------------------------------------------------------------------- refused calls

TEST(TransposeRegion, NullPointersComeBeforeSizeAndNothingIsWritten) {
    std::mt19937 rng(3);
    forEachSlot([&](int) {
        for (Form const& form : forms) {
            SCOPED_TRACE(form.name);
            GuardedImage src(6 * form.channels, 4), dst(4 * form.channels, 6);
            src.fillRandom(rng);
            dst.fillRandom(rng);
            const std::vector<std::uint8_t> before = dst.packed();
            const std::vector<std::uint8_t> source = src.packed();
            struct Case {
                bool nullSrc, nullDst;
                IppiSize size;
                IppStatus status;
            };
            const Case cases[] = {
                {true, false, {6, 4}, ippStsNullPtrErr},  {false, true, {6, 4}, ippStsNullPtrErr},
                {true, true, {6, 4}, ippStsNullPtrErr},   {true, false, {0, 4}, ippStsNullPtrErr},
                {false, true, {6, -1}, ippStsNullPtrErr}, {false, false, {0, 4}, ippStsSizeErr},
                {false, false, {6, 0}, ippStsSizeErr},    {false, false, {-3, 4}, ippStsSizeErr},
                {false, false, {6, -7}, ippStsSizeErr},   {false, false, {0, -1}, ippStsSizeErr},
            };
            for (Case const& c : cases) {
                SCOPED_TRACE(std::to_string(c.size.width) + "x" + std::to_string(c.size.height) +
                             (c.nullSrc ? " null src" : "") + (c.nullDst ? " null dst" : ""));
                EXPECT_EQ(form.transpose(c.nullSrc ? nullptr : src.first(), src.step(),
                                         c.nullDst ? nullptr : dst.first(), dst.step(), c.size),
                          c.status);
                EXPECT_EQ(dst.packed(), before);
                EXPECT_TRUE(dst.guardsIntact());
                EXPECT_EQ(src.packed(), source);
            }
        }
    });
}

// Sizes are refused whatever the steps, which are never looked at.
TEST(TransposeRegion, NoStepIsTested) {
    forEachSlot([](int) {
        for (Form const& form : forms) {
            Ipp8u src[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, dst[12] = {};
            EXPECT_EQ(form.transpose(src, 0, dst, 0, {0, 1}), ippStsSizeErr);
            EXPECT_EQ(form.transpose(src, -5, dst, -9, {1, 0}), ippStsSizeErr);
            for (Ipp8u b : dst) EXPECT_EQ(b, 0);
            // One pixel with nonsense steps: only the first pixel is read and written.
            EXPECT_EQ(form.transpose(src, -5, dst, -9, {1, 1}), ippStsNoErr);
            for (int i = 0; i < 12; ++i) EXPECT_EQ(dst[i], i < form.channels ? src[i] : 0) << i;
        }
    });
}

}  // namespace
