// ippiCopy_8u_C1R and ippiCopy_8u_C3R at every slot this processor runs: odd sizes, padded,
// misaligned and upward rows, every destination alignment for the block loops, and the
// checks that refuse a call before anything is written.
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using nuv::test::Layout;

using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

struct Form {
    CopyFn copy;
    int channels;
    char const* name;
};

Form const forms[] = {{ippiCopy_8u_C1R, 1, "C1"}, {ippiCopy_8u_C3R, 3, "C3"}};

// Every destination byte starts as the complement of its source byte, so a byte the copy
// misses can never pass for a copied one.
void fillComplement(GuardedImage& dst, GuardedImage const& src) {
    for (int y = 0; y < dst.height(); ++y) {
        Ipp8u const* from = src.row(y);
        Ipp8u* to = dst.row(y);
        for (int x = 0; x < dst.rowBytes(); ++x) to[x] = static_cast<Ipp8u>(~from[x]);
    }
}

std::string describe(int width, int height, Layout const& s, Layout const& d) {
    return std::to_string(width) + "x" + std::to_string(height) + " src{pad " +
           std::to_string(s.padding) + ", off " + std::to_string(s.misalign) +
           (s.negative ? ", up" : "") + "} dst{pad " + std::to_string(d.padding) + ", off " +
           std::to_string(d.misalign) + (d.negative ? ", up" : "") + "}";
}

// Copies a random region between the two layouts at every slot and checks the bytes, the
// untouched guards and padding, and the untouched source.
void expectExactCopy(Form const& form, int width, int height, Layout const& srcLayout,
                     Layout const& dstLayout, std::mt19937& rng) {
    SCOPED_TRACE(std::string(form.name) + " " + describe(width, height, srcLayout, dstLayout));
    const int rowBytes = width * form.channels;
    GuardedImage src(rowBytes, height, srcLayout);
    GuardedImage dst(rowBytes, height, dstLayout);
    src.fillRandom(rng);
    const std::vector<std::uint8_t> expected = src.packed();
    forEachSlot([&](int) {
        fillComplement(dst, src);
        ASSERT_EQ(form.copy(src.first(), src.step(), dst.first(), dst.step(), {width, height}),
                  ippStsNoErr);
        EXPECT_EQ(dst.packed(), expected);
        EXPECT_TRUE(dst.guardsIntact());
    });
    EXPECT_EQ(src.packed(), expected);
    EXPECT_TRUE(src.guardsIntact());
}

TEST(CopyRegion, RandomSizesInEveryLayoutPair) {
    std::mt19937 rng(20240611);
    for (Form const& form : forms) {
        for (int round = 0; round < 12; ++round) {
            const int width = static_cast<int>(rng() % 70) + 1;
            const int height = static_cast<int>(rng() % 6) + 1;
            const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
            for (Layout const& s : layouts)
                for (Layout const& d : layouts) expectExactCopy(form, width, height, s, d, rng);
        }
    }
}

bool rowsEqual(GuardedImage const& a, GuardedImage const& b) {
    for (int y = 0; y < a.height(); ++y)
        if (std::memcmp(a.row(y), b.row(y), static_cast<std::size_t>(a.rowBytes())) != 0)
            return false;
    return true;
}

// Rows that follow one another in both images are moved as one run; rows with the same step
// that is longer than the row are not, and their padding must stay as it was.
TEST(CopyRegion, ContiguousRowsAndEqualPaddedSteps) {
    std::mt19937 rng(7);
    for (Form const& form : forms) {
        for (int round = 0; round < 10; ++round) {
            const int width = static_cast<int>(rng() % 300) + 1;
            const int height = static_cast<int>(rng() % 40) + 2;
            const int srcOffset = static_cast<int>(rng() % 16);
            const int dstOffset = static_cast<int>(rng() % 16);
            const int padding = static_cast<int>(rng() % 20) + 1;
            const std::pair<Layout, Layout> pairs[] = {
                {{0, srcOffset, false, 32}, {0, dstOffset, false, 32}},
                {{padding, srcOffset, false, 32}, {padding, dstOffset, false, 32}},
                // Both upward with equal negative steps: never one run.
                {{0, srcOffset, true, 32}, {0, dstOffset, true, 32}},
            };
            for (auto const& [srcLayout, dstLayout] : pairs) {
                SCOPED_TRACE(std::string(form.name) + " " +
                             describe(width, height, srcLayout, dstLayout));
                const int rowBytes = width * form.channels;
                GuardedImage src(rowBytes, height, srcLayout), dst(rowBytes, height, dstLayout);
                src.fillRandom(rng);
                forEachSlot([&](int) {
                    fillComplement(dst, src);
                    ASSERT_EQ(form.copy(src.first(), src.step(), dst.first(), dst.step(),
                                        {width, height}),
                              ippStsNoErr);
                    EXPECT_TRUE(rowsEqual(dst, src));
                    EXPECT_TRUE(dst.guardsIntact());
                });
            }
        }
    }
}

// Rows long enough for the block loops, with every destination offset in a 16-byte block
// (and a varying one in the 64-byte line) against sources aligned, eight past a boundary,
// and odd, so that each way of loading the source and each head runs.
TEST(CopyRegion, LongRowsAtEveryDestinationAlignment) {
    std::mt19937 rng(99);
    std::vector<int> rowLengths = {64,  65,  79,  80,  81,   95,   127,  128,  129,  200,
                                   255, 256, 257, 383, 1000, 1023, 1024, 1025, 2047, 3000};
    for (int i = 0; i < 4; ++i) rowLengths.push_back(static_cast<int>(rng() % 2937) + 64);
    const int sourceOffsets[] = {0, 8, 1, 7, 13, 4};
    for (int rowBytes : rowLengths) {
        for (int dstOffset = 0; dstOffset < 16; ++dstOffset) {
            for (int srcOffset : sourceOffsets) {
                // Different steps keep the rows apart, so each row is a run of its own.
                const Layout srcLayout{0, srcOffset, false, 32};
                const Layout dstLayout{static_cast<int>(rng() % 64) + 1,
                                       dstOffset + static_cast<int>(rng() % 4) * 16, false, 32};
                SCOPED_TRACE(describe(rowBytes, 2, srcLayout, dstLayout));
                GuardedImage src(rowBytes, 2, srcLayout), dst(rowBytes, 2, dstLayout);
                src.fillRandom(rng);
                forEachSlot([&](int) {
                    fillComplement(dst, src);
                    ASSERT_EQ(ippiCopy_8u_C1R(src.first(), src.step(), dst.first(), dst.step(),
                                              {rowBytes, 2}),
                              ippStsNoErr);
                    EXPECT_TRUE(rowsEqual(dst, src));
                    EXPECT_TRUE(dst.guardsIntact());
                });
            }
        }
    }
}

TEST(CopyRegion, ThreeChannelRowsOfEveryLengthClass) {
    std::mt19937 rng(5);
    for (int width : {21, 22, 27, 43, 86, 341, 342, 400, 1000}) {
        for (int round = 0; round < 3; ++round) {
            const Layout s{static_cast<int>(rng() % 9), static_cast<int>(rng() % 64),
                           rng() % 2 == 0, 32};
            const Layout d{static_cast<int>(rng() % 9), static_cast<int>(rng() % 64),
                           rng() % 2 == 0, 32};
            expectExactCopy(forms[1], width, 3, s, d, rng);
        }
    }
}

// ----------------------------------------------------------------------- refused calls

// Each refusal at each slot, with a destination whose bytes must all stay as they were.
TEST(CopyRegion, NullPointersComeBeforeSizeAndNothingIsWritten) {
    std::mt19937 rng(3);
    forEachSlot([&](int) {
        for (Form const& form : forms) {
            SCOPED_TRACE(form.name);
            GuardedImage src(8 * form.channels, 4), dst(8 * form.channels, 4);
            src.fillRandom(rng);
            fillComplement(dst, src);
            const std::vector<std::uint8_t> before = dst.packed();
            struct Case {
                bool nullSrc, nullDst;
                IppiSize size;
                IppStatus status;
            };
            const Case cases[] = {
                {true, false, {8, 4}, ippStsNullPtrErr},  {false, true, {8, 4}, ippStsNullPtrErr},
                {true, true, {8, 4}, ippStsNullPtrErr},   {true, false, {0, 4}, ippStsNullPtrErr},
                {false, true, {8, -1}, ippStsNullPtrErr}, {false, false, {0, 4}, ippStsSizeErr},
                {false, false, {8, 0}, ippStsSizeErr},    {false, false, {-3, 4}, ippStsSizeErr},
                {false, false, {8, -7}, ippStsSizeErr},   {false, false, {0, 0}, ippStsSizeErr},
            };
            for (Case const& c : cases) {
                SCOPED_TRACE(std::to_string(c.size.width) + "x" + std::to_string(c.size.height));
                EXPECT_EQ(form.copy(c.nullSrc ? nullptr : src.first(), src.step(),
                                    c.nullDst ? nullptr : dst.first(), dst.step(), c.size),
                          c.status);
                EXPECT_EQ(dst.packed(), before);
                EXPECT_TRUE(dst.guardsIntact());
            }
        }
    });
}

// A refused call tests no step: a zero step with a bad size is still a size error.
TEST(CopyRegion, NoStepIsTested) {
    forEachSlot([&](int) {
        Ipp8u src[16] = {}, dst[16] = {};
        EXPECT_EQ(ippiCopy_8u_C1R(src, 0, dst, 0, {0, 1}), ippStsSizeErr);
        EXPECT_EQ(ippiCopy_8u_C1R(src, -5, dst, 0, {1, 1}), ippStsNoErr);
        EXPECT_EQ(ippiCopy_8u_C3R(src, 0, dst, -1, {1, 1}), ippStsNoErr);
    });
}

// ----------------------------------------------------------------------- exact examples

// A destination with step -100 whose first row is the bottom one receives the image upside
// down.
TEST(CopyRegion, NegativeDestinationStepCopiesUpsideDown) {
    forEachSlot([&](int) {
        for (int width : {100, 37}) {
            SCOPED_TRACE(width);
            std::vector<Ipp8u> src(5 * 100), dst(5 * 100, 0xEE);
            for (std::size_t i = 0; i < src.size(); ++i) src[i] = static_cast<Ipp8u>(i * 7 + 1);
            ASSERT_EQ(ippiCopy_8u_C1R(src.data(), 100, dst.data() + 400, -100, {width, 5}),
                      ippStsNoErr);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 100; ++x)
                    EXPECT_EQ(dst[(4 - y) * 100 + x], x < width ? src[y * 100 + x] : 0xEE)
                        << "row " << y << " byte " << x;
        }
    });
}

// 64 bytes to a destination three bytes past a 16-byte boundary: the head block and the
// loop write three bytes twice, and the result is still a plain copy.
TEST(CopyRegion, SixtyFourBytesThreePastABoundary) {
    forEachSlot([&](int) {
        alignas(64) Ipp8u src[64];
        alignas(64) Ipp8u dst[96];
        for (int i = 0; i < 64; ++i) src[i] = static_cast<Ipp8u>(200 - i);
        for (Ipp8u& b : dst) b = 0x11;
        ASSERT_EQ(ippiCopy_8u_C1R(src, 64, dst + 3, 64, {64, 1}), ippStsNoErr);
        for (int i = 0; i < 96; ++i)
            EXPECT_EQ(dst[i], i >= 3 && i < 67 ? src[i - 3] : 0x11) << "byte " << i;
    });
}

// A zero source step repeats the first row; a zero destination step leaves the last row.
TEST(CopyRegion, ZeroStepsAreHonoured) {
    std::mt19937 rng(11);
    forEachSlot([&](int) {
        for (Form const& form : forms) {
            for (int width : {1, 5, 33, 70}) {
                const int rowBytes = width * form.channels;
                SCOPED_TRACE(std::string(form.name) + " width " + std::to_string(width));
                GuardedImage src(rowBytes, 6, {3, 1, false, 32});
                GuardedImage dst(rowBytes, 6, {0, 9, false, 32});
                src.fillRandom(rng);
                fillComplement(dst, src);
                ASSERT_EQ(form.copy(src.first(), 0, dst.first(), dst.step(), {width, 6}),
                          ippStsNoErr);
                for (int y = 0; y < 6; ++y)
                    EXPECT_EQ(std::vector<Ipp8u>(dst.row(y), dst.row(y) + rowBytes),
                              std::vector<Ipp8u>(src.row(0), src.row(0) + rowBytes));

                GuardedImage one(rowBytes, 1, {0, 5, false, 32});
                one.fill(0);
                ASSERT_EQ(form.copy(src.first(), src.step(), one.first(), 0, {width, 6}),
                          ippStsNoErr);
                EXPECT_EQ(std::vector<Ipp8u>(one.row(0), one.row(0) + rowBytes),
                          std::vector<Ipp8u>(src.row(5), src.row(5) + rowBytes));
                EXPECT_TRUE(one.guardsIntact());
            }
        }
    });
}

// The three-channel copy moves all 3 * width bytes of a row, exactly as the one-channel copy
// of a row three times as wide.
TEST(CopyRegion, ThreeChannelsIsOneChannelOfTripleWidth) {
    std::mt19937 rng(13);
    forEachSlot([&](int) {
        GuardedImage src(3 * 29, 7, {5, 3, false, 32});
        GuardedImage viaC3(3 * 29, 7, {2, 6, true, 32}), viaC1(3 * 29, 7, {2, 6, true, 32});
        src.fillRandom(rng);
        viaC3.fill(0);
        viaC1.fill(0);
        ASSERT_EQ(ippiCopy_8u_C3R(src.first(), src.step(), viaC3.first(), viaC3.step(), {29, 7}),
                  ippStsNoErr);
        ASSERT_EQ(ippiCopy_8u_C1R(src.first(), src.step(), viaC1.first(), viaC1.step(), {87, 7}),
                  ippStsNoErr);
        EXPECT_EQ(viaC3.packed(), src.packed());
        EXPECT_EQ(viaC3.packed(), viaC1.packed());
        EXPECT_TRUE(viaC3.guardsIntact());
    });
}

}  // namespace
