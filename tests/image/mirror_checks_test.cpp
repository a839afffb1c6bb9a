// The mirror primitives' exact examples, the order of their checks with nothing written on a
// refusal, the deliberate refusal of one-row and one-column flips, and the hand-over to the
// in-place forms.
#include "support/bodies.h"
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using Bytes = std::vector<std::uint8_t>;

using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, int);
using InPlaceFn = IppStatus (*)(Ipp8u*, int, IppiSize, int);

// A packed region of the given bytes.
struct Packed {
    Packed(int width, int height, int channels, Bytes bytes)
        : size{width, height}, step(width * channels), data(std::move(bytes)) {}
    IppiSize size;
    int step;
    Bytes data;
};

// The copying form through its stub and the in-place body of the slot, on the same input.
void expectBothForms(int slot, CopyFn copy, InPlaceFn const* inPlace, Packed const& in, int flip,
                     Bytes const& expected) {
    Bytes out(in.data.size(), 0xEE);
    ASSERT_EQ(copy(in.data.data(), in.step, out.data(), in.step, in.size, flip), ippStsNoErr);
    EXPECT_EQ(out, expected) << "copying form";
    Bytes same = in.data;
    ASSERT_EQ(inPlace[slot](same.data(), in.step, in.size, flip), ippStsNoErr);
    EXPECT_EQ(same, expected) << "in-place form";
}

// ----------------------------------------------------------------------- exact examples

TEST(MirrorExamples, TwoByTwoGray) {
    forEachSlot([](int slot) {
        const Packed image(2, 2, 1, {1, 2, 3, 4});
        const Bytes expected[3] = {{3, 4, 1, 2}, {2, 1, 4, 3}, {4, 3, 2, 1}};
        for (int flip = 0; flip < 3; ++flip) {
            SCOPED_TRACE("flip " + std::to_string(flip));
            expectBothForms(slot, ippiMirror_8u_C1R, nuv::test::slotTable::ippiMirror_8u_C1IR,
                            image, flip, expected[flip]);
        }
    });
}

// A three-channel pixel moves whole and keeps the order of its bytes.
TEST(MirrorExamples, ThreeChannelPixelsKeepTheirByteOrder) {
    forEachSlot([](int slot) {
        const Packed row(2, 1, 3, {10, 20, 30, 40, 50, 60});
        expectBothForms(slot, ippiMirror_8u_C3R, nuv::test::slotTable::ippiMirror_8u_C3IR, row, 1,
                        {40, 50, 60, 10, 20, 30});
        const Packed square(2, 2, 3, {10, 20, 30, 1, 2, 3, 4, 5, 6, 7, 8, 9});
        expectBothForms(slot, ippiMirror_8u_C3R, nuv::test::slotTable::ippiMirror_8u_C3IR, square,
                        0, {4, 5, 6, 7, 8, 9, 10, 20, 30, 1, 2, 3});
        expectBothForms(slot, ippiMirror_8u_C3R, nuv::test::slotTable::ippiMirror_8u_C3IR, square,
                        2, {7, 8, 9, 4, 5, 6, 1, 2, 3, 10, 20, 30});
    });
}

// Both axes in place on 3 by 3: the centre stays, the other eight pixels swap in pairs.
TEST(MirrorExamples, ThreeByThreeBothAxesInPlaceKeepsTheCentre) {
    forEachSlot([](int slot) {
        Bytes pixels;
        for (int i = 0; i < 9; ++i)
            for (int c = 0; c < 3; ++c) pixels.push_back(static_cast<std::uint8_t>(10 * i + c));
        Bytes expected;
        for (int i = 8; i >= 0; --i)
            for (int c = 0; c < 3; ++c) expected.push_back(static_cast<std::uint8_t>(10 * i + c));
        ASSERT_EQ(nuv::test::slotTable::ippiMirror_8u_C3IR[slot](pixels.data(), 9, {3, 3}, 2),
                  ippStsNoErr);
        EXPECT_EQ(pixels, expected);
        EXPECT_EQ(pixels[12], 40);  // the centre pixel (1, 1)
    });
}

// The middle pixel of an odd width and the middle row of an odd height stay where they are;
// with both axes the middle row of an odd height is reversed on its own.
TEST(MirrorExamples, MiddlesOfOddSizes) {
    forEachSlot([](int slot) {
        const Packed row(5, 1, 1, {1, 2, 3, 4, 5});
        expectBothForms(slot, ippiMirror_8u_C1R, nuv::test::slotTable::ippiMirror_8u_C1IR, row, 1,
                        {5, 4, 3, 2, 1});
        const Packed column(1, 3, 1, {7, 8, 9});
        expectBothForms(slot, ippiMirror_8u_C1R, nuv::test::slotTable::ippiMirror_8u_C1IR, column,
                        0, {9, 8, 7});
        const Packed threeRows(3, 3, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9});
        expectBothForms(slot, ippiMirror_8u_C1R, nuv::test::slotTable::ippiMirror_8u_C1IR,
                        threeRows, 2, {9, 8, 7, 6, 5, 4, 3, 2, 1});
    });
}

// ----------------------------------------------------------------------- refused calls

struct Refusal {
    bool nullSrc, nullDst;
    IppiSize size;
    int flip;
    IppStatus status;
    char const* why;
};

// In the order of the checks: pointers, size, axis, then the minimum size along each flipped
// axis. Each row would pass every check after the one that refuses it.
Refusal const refusals[] = {
    {true, false, {0, 0}, 7, ippStsNullPtrErr, "null source before the size and the axis"},
    {false, true, {-1, 4}, 3, ippStsNullPtrErr, "null destination before the size"},
    {true, true, {5, 4}, 0, ippStsNullPtrErr, "both null"},
    {false, false, {0, 4}, 3, ippStsSizeErr, "zero width before the axis"},
    {false, false, {5, -2}, -1, ippStsSizeErr, "negative height before the axis"},
    {false, false, {5, 4}, 3, ippStsMirrorAxisErr, "axis 3"},
    {false, false, {5, 4}, -1, ippStsMirrorAxisErr, "axis -1"},
    {false, false, {1, 1}, 3, ippStsMirrorAxisErr, "axis before the one-row and one-column tests"},
    {false, false, {5, 1}, 0, ippStsSizeErr, "one row top to bottom"},
    {false, false, {5, 1}, 2, ippStsSizeErr, "one row, both axes"},
    {false, false, {1, 4}, 1, ippStsSizeErr, "one column left to right"},
    {false, false, {1, 4}, 2, ippStsSizeErr, "one column, both axes"},
};

// Each refusal at each slot, through the copying stub and through the in-place body, with a
// destination whose bytes and guards must all stay as they were.
TEST(MirrorChecks, RefusalsComeInOrderAndWriteNothing) {
    std::mt19937 rng(3);
    struct Form {
        int channels;
        CopyFn copy;
        InPlaceFn const* inPlace;
    };
    const Form forms[] = {{1, ippiMirror_8u_C1R, nuv::test::slotTable::ippiMirror_8u_C1IR},
                          {3, ippiMirror_8u_C3R, nuv::test::slotTable::ippiMirror_8u_C3IR}};
    forEachSlot([&](int slot) {
        for (Form const& form : forms) {
            GuardedImage src(8 * form.channels, 6), dst(8 * form.channels, 6);
            src.fillRandom(rng);
            dst.fillRandom(rng);
            const Bytes srcBefore = src.packed(), dstBefore = dst.packed();
            for (Refusal const& r : refusals) {
                SCOPED_TRACE(std::string(r.why) + ", " + std::to_string(form.channels) +
                             " channels");
                EXPECT_EQ(form.copy(r.nullSrc ? nullptr : src.first(), src.step(),
                                    r.nullDst ? nullptr : dst.first(), dst.step(), r.size, r.flip),
                          r.status);
                const bool nullInPlace = r.nullSrc || r.nullDst;
                EXPECT_EQ(form.inPlace[slot](nullInPlace ? nullptr : dst.first(), dst.step(),
                                             r.size, r.flip),
                          r.status);
                // And the copying form on one region, which hands over to the in-place form.
                EXPECT_EQ(
                    form.copy(nullInPlace ? nullptr : dst.first(), dst.step(),
                              nullInPlace ? nullptr : dst.first(), dst.step(), r.size, r.flip),
                    r.status);
                EXPECT_EQ(dst.packed(), dstBefore);
                EXPECT_EQ(src.packed(), srcBefore);
                EXPECT_TRUE(dst.guardsIntact());
            }
        }
    });
}

// The same sizes on the other axis are well defined and done: one row left to right, one
// column top to bottom.
TEST(MirrorChecks, OneRowAndOneColumnAlongTheOtherAxisSucceed) {
    forEachSlot([](int) {
        Bytes row = {1, 2, 3, 4, 5, 6, 7}, out(7, 0);
        ASSERT_EQ(ippiMirror_8u_C1R(row.data(), 7, out.data(), 7, {7, 1}, 1), ippStsNoErr);
        EXPECT_EQ(out, (Bytes{7, 6, 5, 4, 3, 2, 1}));
        Bytes column = {1, 2, 3, 4, 5, 6}, down(6, 0);
        ASSERT_EQ(ippiMirror_8u_C3R(column.data(), 3, down.data(), 3, {1, 2}, 0), ippStsNoErr);
        EXPECT_EQ(down, (Bytes{4, 5, 6, 1, 2, 3}));
    });
}

// No step is tested: a zero source step mirrors the first row into every row.
TEST(MirrorChecks, NoStepIsTested) {
    forEachSlot([](int) {
        Bytes src = {1, 2, 3, 4}, dst(12, 0);
        ASSERT_EQ(ippiMirror_8u_C1R(src.data(), 0, dst.data(), 4, {4, 3}, 1), ippStsNoErr);
        EXPECT_EQ(dst, (Bytes{4, 3, 2, 1, 4, 3, 2, 1, 4, 3, 2, 1}));
        EXPECT_EQ(ippiMirror_8u_C1R(src.data(), -4, dst.data(), 0, {0, 3}, 1), ippStsSizeErr);
    });
}

// ----------------------------------------------------------------------- the hand-over

// One region with one step is mirrored in place through the copying stub. Rows long enough
// for the vector blocks show it: a forward read with a backward write in one buffer would
// read bytes it had already overwritten.
TEST(MirrorHandOver, OneRegionAndOneStepIsMirroredInPlace) {
    forEachSlot([](int) {
        for (int flip = 0; flip < 3; ++flip) {
            SCOPED_TRACE("flip " + std::to_string(flip));
            const int width = 150, height = 5, step = 160;
            Bytes c1(static_cast<std::size_t>(step) * height), c3(3 * c1.size());
            for (std::size_t i = 0; i < c1.size(); ++i) c1[i] = static_cast<std::uint8_t>(i * 13);
            for (std::size_t i = 0; i < c3.size(); ++i) c3[i] = static_cast<std::uint8_t>(i * 7);
            Bytes expected1 = c1, expected3 = c3;
            for (int y = 0; y < height; ++y) {
                const int sy = flip == 1 ? y : height - 1 - y;
                for (int x = 0; x < width; ++x) {
                    const int sx = flip == 0 ? x : width - 1 - x;
                    expected1[y * step + x] = c1[sy * step + sx];
                    for (int c = 0; c < 3; ++c)
                        expected3[y * 3 * step + 3 * x + c] = c3[sy * 3 * step + 3 * sx + c];
                }
            }
            ASSERT_EQ(ippiMirror_8u_C1R(c1.data(), step, c1.data(), step, {width, height}, flip),
                      ippStsNoErr);
            EXPECT_EQ(c1, expected1);
            ASSERT_EQ(
                ippiMirror_8u_C3R(c3.data(), 3 * step, c3.data(), 3 * step, {width, height}, flip),
                ippStsNoErr);
            EXPECT_EQ(c3, expected3);
        }
    });
}

// Equal pointers with different steps take the copying way. Source rows walk down from p and
// destination rows up from it, so the copy of the top-to-bottom flip is well defined: row 0
// lands above p, and row 1 at p.
TEST(MirrorHandOver, EqualPointersWithDifferentStepsCopy) {
    forEachSlot([](int) {
        const int width = 37;
        Bytes buffer(300);
        for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] = static_cast<std::uint8_t>(i);
        const Bytes before = buffer;
        Ipp8u* p = buffer.data() + 100;
        ASSERT_EQ(ippiMirror_8u_C1R(p, 100, p, -100, {width, 2}, 0), ippStsNoErr);
        for (int x = 0; x < width; ++x) {
            EXPECT_EQ(buffer[x], before[100 + x]) << "byte " << x;
            EXPECT_EQ(buffer[100 + x], before[200 + x]) << "byte " << x;
            EXPECT_EQ(buffer[200 + x], before[200 + x]) << "byte " << x;
        }
    });
}

}  // namespace
