// ippiMirror_8u_C1R and ippiMirror_8u_C3R, and their in-place forms, against a plain
// reflection at every slot this processor runs: random sizes around and above the block
// lengths, padded, misaligned and upward rows, guard bytes around every row, and the aligned,
// streaming and wide-row paths of the generations.
#include "support/bodies.h"
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using nuv::test::Layout;

using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, int);
using InPlaceFn = IppStatus (*)(Ipp8u*, int, IppiSize, int);

struct Form {
    int channels;
    CopyFn copy;                     // through the stub
    InPlaceFn const* inPlaceBodies;  // the body each slot runs
    char const* name;
};

Form const forms[] = {
    {1, ippiMirror_8u_C1R, nuv::test::slotTable::ippiMirror_8u_C1IR, "C1"},
    {3, ippiMirror_8u_C3R, nuv::test::slotTable::ippiMirror_8u_C3IR, "C3"},
};

// Packed rows mirrored pixel by pixel: the pixel at (x, y) of the result is the one at the
// reflected place of the source, its bytes in their order.
std::vector<std::uint8_t> reflected(std::vector<std::uint8_t> const& packed, int width, int height,
                                    int channels, int flip) {
    std::vector<std::uint8_t> out(packed.size());
    const std::size_t rowBytes = static_cast<std::size_t>(width) * channels;
    for (int y = 0; y < height; ++y) {
        const int sy = flip == 1 ? y : height - 1 - y;
        for (int x = 0; x < width; ++x) {
            const int sx = flip == 0 ? x : width - 1 - x;
            for (int c = 0; c < channels; ++c)
                out[y * rowBytes + static_cast<std::size_t>(x) * channels + c] =
                    packed[sy * rowBytes + static_cast<std::size_t>(sx) * channels + c];
        }
    }
    return out;
}

// What the checks say of a valid pointer pair: a single row is not flipped top to bottom,
// nor a single column left to right.
IppStatus expectedStatus(int width, int height, int flip) {
    if (flip != 1 && height < 2) return ippStsSizeErr;
    if (flip != 0 && width < 2) return ippStsSizeErr;
    return ippStsNoErr;
}

// Every destination byte starts as the complement of the source byte at the same place, so
// a byte the mirror misses never passes for one it wrote, even where a flip keeps it in place.
void fillComplement(GuardedImage& dst, GuardedImage const& src) {
    for (int y = 0; y < dst.height(); ++y)
        for (int x = 0; x < dst.rowBytes(); ++x) dst.row(y)[x] = static_cast<Ipp8u>(~src.row(y)[x]);
}

// The index of the first differing byte, or -1: large regions must not print whole vectors.
long firstDifference(std::vector<std::uint8_t> const& a, std::vector<std::uint8_t> const& b) {
    if (a.size() != b.size()) return 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return static_cast<long>(i);
    return -1;
}

std::string describe(Layout const& l) {
    return "{pad " + std::to_string(l.padding) + ", off " + std::to_string(l.misalign) +
           (l.negative ? ", up" : "") + (l.guard == 0 ? ", no guard" : "") + "}";
}

std::string describe(Form const& form, int width, int height, int flip) {
    return std::string(form.name) + " " + std::to_string(width) + "x" + std::to_string(height) +
           " flip " + std::to_string(flip);
}

// The copying form between two layouts at every slot: bytes, status, guards and padding of
// the destination, and the source untouched. A refused call writes nothing.
void expectCopyMirrors(Form const& form, int width, int height, int flip, Layout const& srcLayout,
                       Layout const& dstLayout, std::mt19937& rng) {
    SCOPED_TRACE(describe(form, width, height, flip) + " src" + describe(srcLayout) + " dst" +
                 describe(dstLayout));
    const int rowBytes = width * form.channels;
    GuardedImage src(rowBytes, height, srcLayout), dst(rowBytes, height, dstLayout);
    src.fillRandom(rng);
    const std::vector<std::uint8_t> source = src.packed();
    const IppStatus status = expectedStatus(width, height, flip);
    forEachSlot([&](int) {
        fillComplement(dst, src);
        const std::vector<std::uint8_t> before = dst.packed();
        ASSERT_EQ(
            form.copy(src.first(), src.step(), dst.first(), dst.step(), {width, height}, flip),
            status);
        EXPECT_EQ(firstDifference(dst.packed(),
                                  status == ippStsNoErr
                                      ? reflected(source, width, height, form.channels, flip)
                                      : before),
                  -1);
        EXPECT_TRUE(dst.guardsIntact());
    });
    EXPECT_EQ(firstDifference(src.packed(), source), -1);
    EXPECT_TRUE(src.guardsIntact());
}

// The in-place form at every slot, once through the body that the slot runs and once through
// the copying form's stub with one region as source and destination.
void expectInPlaceMirrors(Form const& form, int width, int height, int flip, Layout const& layout,
                          std::mt19937& rng) {
    SCOPED_TRACE(describe(form, width, height, flip) + " " + describe(layout));
    const int rowBytes = width * form.channels;
    GuardedImage image(rowBytes, height, layout);
    image.fillRandom(rng);
    const std::vector<std::uint8_t> source = image.packed();
    const IppStatus status = expectedStatus(width, height, flip);
    const std::vector<std::uint8_t> expected =
        status == ippStsNoErr ? reflected(source, width, height, form.channels, flip) : source;
    forEachSlot([&](int slot) {
        for (bool viaStub : {false, true}) {
            SCOPED_TRACE(viaStub ? "through the copying form" : "in-place body");
            image.fill(0);
            for (int y = 0; y < height; ++y)
                std::copy(source.begin() + static_cast<long>(y) * rowBytes,
                          source.begin() + static_cast<long>(y + 1) * rowBytes, image.row(y));
            const IppStatus got = viaStub ? form.copy(image.first(), image.step(), image.first(),
                                                      image.step(), {width, height}, flip)
                                          : form.inPlaceBodies[slot](image.first(), image.step(),
                                                                     {width, height}, flip);
            ASSERT_EQ(got, status);
            EXPECT_EQ(firstDifference(image.packed(), expected), -1);
            EXPECT_TRUE(image.guardsIntact());
        }
    });
}

// ------------------------------------------------------------------- small random regions

TEST(MirrorLayout, CopyFormsMatchTheReflectionInEveryLayoutPair) {
    std::mt19937 rng(20240612);
    for (Form const& form : forms) {
        for (int round = 0; round < 8; ++round) {
            const int width = static_cast<int>(rng() % 70) + 1;
            const int height = static_cast<int>(rng() % 6) + 1;
            const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
            for (int flip = 0; flip < 3; ++flip)
                for (Layout const& s : layouts)
                    for (Layout const& d : layouts)
                        expectCopyMirrors(form, width, height, flip, s, d, rng);
        }
    }
}

TEST(MirrorLayout, InPlaceFormsMatchTheReflectionInEveryLayout) {
    std::mt19937 rng(31);
    for (Form const& form : forms) {
        for (int round = 0; round < 24; ++round) {
            const int width = static_cast<int>(rng() % 70) + 1;
            const int height = static_cast<int>(rng() % 7) + 1;
            for (Layout const& layout : nuv::test::standardLayouts(rng))
                for (int flip = 0; flip < 3; ++flip)
                    expectInPlaceMirrors(form, width, height, flip, layout, rng);
        }
    }
}

// Every width from 1 to 70 and heights 1 to 4, so that each block, each overlapping rest and
// each middle of an in-place row runs at least once, odd and even.
TEST(MirrorLayout, EveryNarrowWidth) {
    std::mt19937 rng(8);
    for (Form const& form : forms) {
        for (int width = 1; width <= 70; ++width) {
            const int height = width % 4 + 1;
            const Layout s{static_cast<int>(rng() % 5), static_cast<int>(rng() % 16), false, 32};
            const Layout d{static_cast<int>(rng() % 5), static_cast<int>(rng() % 16),
                           width % 2 == 0, 32};
            for (int flip = 0; flip < 3; ++flip) {
                expectCopyMirrors(form, width, height, flip, s, d, rng);
                expectInPlaceMirrors(form, width, height, flip, d, rng);
            }
        }
    }
}

// ------------------------------------------------------------------ rows above the blocks

// Rows around and above the 64- and 96-byte turns of the vector generations, also not
// multiples of them, in both directions and at odd offsets.
TEST(MirrorLayout, WideRowsAroundTheBlockLengths) {
    std::mt19937 rng(64);
    std::vector<int> widths = {64,  65,  95,  96,  97,  127, 128, 129, 160, 191,
                               192, 193, 255, 256, 257, 300, 383, 641, 1000};
    for (int i = 0; i < 6; ++i) widths.push_back(static_cast<int>(rng() % 1900) + 71);
    for (Form const& form : forms) {
        for (int width : widths) {
            const int height = static_cast<int>(rng() % 4) + 2;
            const Layout s{static_cast<int>(rng() % 40), static_cast<int>(rng() % 64),
                           rng() % 3 == 0, 32};
            const Layout d{static_cast<int>(rng() % 40), static_cast<int>(rng() % 64),
                           rng() % 3 == 0, 32};
            for (int flip = 0; flip < 3; ++flip) {
                expectCopyMirrors(form, width, height, flip, s, d, rng);
                expectInPlaceMirrors(form, width, height, flip, d, rng);
            }
        }
    }
}

// ----------------------------------------------------------------- paths chosen per call

// Both rows and both steps on 16-byte boundaries, with the row's end of the destination
// aligned too: the aligned one-channel flip copy. Above 1 MiB of steps times rows its stores
// stream; the bytes must be the same.
TEST(MirrorPaths, AlignedAndStreamingOneChannelFlips) {
    std::mt19937 rng(16);
    struct Case {
        int width, height, padding;
    };
    // 2048 bytes of steps times 600 rows passes 1 MiB; the others stay below it.
    const Case cases[] = {{1024, 600, 0}, {64, 8, 0}, {1000, 40, 8}, {40, 9, 24}, {2000, 300, 0}};
    for (Case const& c : cases) {
        // The destination starts where its row's end falls on a 16-byte boundary.
        const int misalign = (16 - c.width % 16) % 16;
        for (int flip = 1; flip < 3; ++flip) {
            expectCopyMirrors(forms[0], c.width, c.height, flip, {c.padding, 0, false, 32},
                              {c.padding, misalign, false, 32}, rng);
            // The same rows with a source one byte off: the unaligned path.
            expectCopyMirrors(forms[0], c.width, c.height, flip, {c.padding, 1, false, 32},
                              {c.padding, misalign, false, 32}, rng);
        }
    }
}

// Regions beyond the bounds at which the top-to-bottom copy streams its stores (one channel:
// 1 MiB for m7, 2 MiB for n8 to e9; both forms above 4 MiB in l9), downward and upward, with
// destinations off their boundaries, the shortest row that streams and a row one byte
// shorter, and the three-channel form, which streams in l9 only.
TEST(MirrorPaths, LargeRegionsTopToBottom) {
    std::mt19937 rng(17);
    expectCopyMirrors(forms[0], 128, 16400, 0, {0, 0, false, 32}, {0, 9, false, 32}, rng);
    expectCopyMirrors(forms[0], 127, 8300, 0, {1, 0, false, 32}, {0, 3, false, 32}, rng);
    expectCopyMirrors(forms[0], 2001, 2200, 0, {3, 5, false, 32}, {0, 7, true, 32}, rng);
    expectCopyMirrors(forms[1], 701, 2100, 0, {0, 0, true, 32}, {2, 17, false, 32}, rng);
}

// The in-place row exchange in its aligned form (start and step on 16-byte boundaries) and
// unaligned, for every length class of the exchange.
TEST(MirrorPaths, InPlaceExchangeAlignedAndNot) {
    std::mt19937 rng(18);
    for (int rowBytes : {1, 2, 3, 7, 15, 16, 31, 32, 48, 63, 64, 65, 127, 128, 255, 1024, 1777}) {
        const int padding = (16 - rowBytes % 16) % 16;
        for (int height : {2, 3, 8, 9}) {
            expectInPlaceMirrors(forms[0], rowBytes, height, 0, {padding, 0, false, 32}, rng);
            expectInPlaceMirrors(forms[0], rowBytes, height, 0, {padding, 16, true, 32}, rng);
            expectInPlaceMirrors(forms[0], rowBytes, height, 0, {padding + 3, 5, false, 32}, rng);
        }
    }
}

// Large in-place flips, every axis.
TEST(MirrorPaths, LargeRegionsInPlace) {
    std::mt19937 rng(19);
    for (int flip = 0; flip < 3; ++flip) {
        expectInPlaceMirrors(forms[0], 1301, 403, flip, {3, 1, false, 32}, rng);
        expectInPlaceMirrors(forms[1], 641, 481, flip, {0, 0, true, 32}, rng);
    }
}

}  // namespace
