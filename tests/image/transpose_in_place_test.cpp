// In-place transposition: the R forms hand a call whose source and destination are one
// region over to ippiTranspose_8u_C1IR / _C3IR, which transpose squares and refuse any other
// shape. Checked through the stubs and through each slot's in-place body directly.
#include "support/bodies.h"
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
using InPlaceFn = IppStatus (*)(Ipp8u*, int, IppiSize);

struct Form {
    TransposeFn transpose;
    InPlaceFn const* inPlace;  // the slot table of the in-place body
    int channels;
    char const* name;
};

Form const forms[] = {
    {ippiTranspose_8u_C1R, nuv::test::slotTable::ippiTranspose_8u_C1IR, 1, "C1"},
    {ippiTranspose_8u_C3R, nuv::test::slotTable::ippiTranspose_8u_C3IR, 3, "C3"},
};

std::vector<std::uint8_t> modelSquare(std::vector<std::uint8_t> const& src, int n, int channels) {
    std::vector<std::uint8_t> dst(src.size());
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            for (int c = 0; c < channels; ++c)
                dst[(static_cast<std::size_t>(x) * n + y) * channels + c] =
                    src[(static_cast<std::size_t>(y) * n + x) * channels + c];
    return dst;
}

// Square sides around the in-place blocks (32 in C1, 64 in C3) and the 8x8 tiles, and random
// ones up to 70.
std::vector<int> squareSides(std::mt19937& rng) {
    std::vector<int> sides = {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 40, 63, 64, 65, 97, 130};
    for (int i = 0; i < 6; ++i) sides.push_back(static_cast<int>(rng() % 70) + 1);
    return sides;
}

// Runs `call` on a random square in `layout` at every slot and checks it against the model,
// the guards and padding around it included.
template <class Call>
void expectSquareTransposed(Form const& form, int n, Layout const& layout, std::mt19937& rng,
                            Call call) {
    SCOPED_TRACE(std::string(form.name) + " side " + std::to_string(n) + " pad " +
                 std::to_string(layout.padding) + " off " + std::to_string(layout.misalign) +
                 (layout.negative ? " up" : ""));
    GuardedImage image(n * form.channels, n, layout);
    image.fillRandom(rng);
    const std::vector<std::uint8_t> original = image.packed();
    const std::vector<std::uint8_t> expected = modelSquare(original, n, form.channels);
    forEachSlot([&](int slot) {
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n * form.channels; ++x)
                image.row(y)[x] = original[static_cast<std::size_t>(y) * n * form.channels + x];
        ASSERT_EQ(call(slot, image), ippStsNoErr);
        EXPECT_EQ(image.packed(), expected);
        EXPECT_TRUE(image.guardsIntact());
    });
}

TEST(TransposeInPlace, EqualPointersAndStepsTransposeASquareWhereItLies) {
    std::mt19937 rng(41);
    for (Form const& form : forms) {
        const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
        for (int n : squareSides(rng)) {
            for (Layout const& layout : {layouts[0], layouts[2], layouts[3]}) {
                expectSquareTransposed(form, n, layout, rng, [&](int, GuardedImage& image) {
                    return form.transpose(image.first(), image.step(), image.first(), image.step(),
                                          {n, n});
                });
            }
        }
    }
}

// The in-place bodies themselves, slot by slot, without the hand-over.
TEST(TransposeInPlace, EachSlotsInPlaceBody) {
    std::mt19937 rng(43);
    for (Form const& form : forms) {
        const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
        for (int n : squareSides(rng)) {
            for (Layout const& layout : {layouts[1], layouts[4]}) {
                expectSquareTransposed(form, n, layout, rng, [&](int slot, GuardedImage& image) {
                    return form.inPlace[slot](image.first(), image.step(), {n, n});
                });
            }
        }
    }
}

// The diagonal keeps its values while everything around it moves.
TEST(TransposeInPlace, DiagonalIsLeftAlone) {
    forEachSlot([](int) {
        for (Form const& form : forms) {
            const int n = 45;
            GuardedImage image(n * form.channels, n, {5, 3, false, 32});
            for (int y = 0; y < n; ++y)
                for (int x = 0; x < n * form.channels; ++x)
                    image.row(y)[x] = static_cast<Ipp8u>(y * 3 + x * 5 + 1);
            ASSERT_EQ(
                form.transpose(image.first(), image.step(), image.first(), image.step(), {n, n}),
                ippStsNoErr);
            for (int i = 0; i < n; ++i)
                for (int c = 0; c < form.channels; ++c)
                    EXPECT_EQ(image.row(i)[i * form.channels + c],
                              static_cast<Ipp8u>(i * 3 + (i * form.channels + c) * 5 + 1));
            // Pixel (row 2, column 9) now holds what pixel (row 9, column 2) held.
            for (int c = 0; c < form.channels; ++c)
                EXPECT_EQ(image.row(2)[9 * form.channels + c],
                          static_cast<Ipp8u>(9 * 3 + (2 * form.channels + c) * 5 + 1));
        }
    });
}

// Only a square keeps its shape where it lies: a non-square call with equal pointers and
// steps is a size error with nothing written, though a copy would have been possible.
TEST(TransposeInPlace, NonSquareRegionIsRefusedAndNothingIsWritten) {
    std::mt19937 rng(47);
    forEachSlot([&](int slot) {
        for (Form const& form : forms) {
            SCOPED_TRACE(form.name);
            GuardedImage image(30 * form.channels, 30, {2, 1, false, 32});
            image.fillRandom(rng);
            const std::vector<std::uint8_t> before = image.packed();
            const IppiSize shapes[] = {{3, 2}, {2, 3}, {30, 29}, {1, 30}, {17, 16}};
            for (IppiSize size : shapes) {
                SCOPED_TRACE(std::to_string(size.width) + "x" + std::to_string(size.height));
                EXPECT_EQ(
                    form.transpose(image.first(), image.step(), image.first(), image.step(), size),
                    ippStsSizeErr);
                EXPECT_EQ(form.inPlace[slot](image.first(), image.step(), size), ippStsSizeErr);
                EXPECT_EQ(image.packed(), before);
                EXPECT_TRUE(image.guardsIntact());
            }
        }
    });
}

// The in-place form checks the pointer, then width and height, then the shape.
TEST(TransposeInPlace, StatusOrder) {
    forEachSlot([](int slot) {
        for (Form const& form : forms) {
            SCOPED_TRACE(form.name);
            Ipp8u bytes[48];
            for (int i = 0; i < 48; ++i) bytes[i] = static_cast<Ipp8u>(i);
            // Null source and destination with equal steps are handed over and refused there.
            EXPECT_EQ(form.transpose(nullptr, 12, nullptr, 12, {4, 4}), ippStsNullPtrErr);
            EXPECT_EQ(form.transpose(nullptr, 12, nullptr, 12, {0, 3}), ippStsNullPtrErr);
            EXPECT_EQ(form.inPlace[slot](nullptr, 12, {4, 4}), ippStsNullPtrErr);
            EXPECT_EQ(form.inPlace[slot](nullptr, 12, {2, 3}), ippStsNullPtrErr);
            EXPECT_EQ(form.inPlace[slot](bytes, 12, {0, 0}), ippStsSizeErr);
            EXPECT_EQ(form.inPlace[slot](bytes, 12, {4, -4}), ippStsSizeErr);
            EXPECT_EQ(form.inPlace[slot](bytes, 12, {-2, 3}), ippStsSizeErr);
            EXPECT_EQ(form.inPlace[slot](bytes, 12, {4, 2}), ippStsSizeErr);
            for (int i = 0; i < 48; ++i) EXPECT_EQ(bytes[i], i);
            // No step is tested: a one-pixel square is its own transpose whatever the step.
            EXPECT_EQ(form.inPlace[slot](bytes, 0, {1, 1}), ippStsNoErr);
            EXPECT_EQ(form.transpose(bytes, -7, bytes, -7, {1, 1}), ippStsNoErr);
            for (int i = 0; i < 48; ++i) EXPECT_EQ(bytes[i], i);
        }
    });
}

// Equal pointers with different steps are no in-place call: a shape the in-place form
// refuses is transposed as the copy form does it (here a row of two pixels into a column,
// which reads each byte before anything overwrites it).
TEST(TransposeInPlace, EqualPointersWithDifferentStepsAreNoHandOver) {
    forEachSlot([](int) {
        Ipp8u row[8] = {1, 2, 0, 0, 0, 0, 0, 0};
        EXPECT_EQ(ippiTranspose_8u_C1R(row, 8, row, 4, {2, 1}), ippStsNoErr);
        const Ipp8u expected[8] = {1, 2, 0, 0, 2, 0, 0, 0};
        for (int i = 0; i < 8; ++i) EXPECT_EQ(row[i], expected[i]) << i;
    });
}

}  // namespace
