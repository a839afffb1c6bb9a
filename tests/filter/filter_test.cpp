// Borders, min and max filters and the Sobel operators through the shared sweep. Each source
// lies in a block that holds exactly the pixels the primitive may read (the mask area around
// the region, or a border copy's smaller source), so a read beyond it is a sanitizer report;
// plain models give every byte. Then the orders of checks, the sign conventions of the two
// Sobel operators on worked images, a failing allocator, and rows wider than a strip.
#include "support/bodies.h"
#include "support/slots.h"
#include "support/sweep.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

// A packed block of `width` pixels by rows, read at region coordinates offset by margins.
struct Block {
    Bytes const& bytes;
    int width, channels;
    Margins m;
    int at(int x, int y, int c) const {
        return bytes[(static_cast<std::size_t>(y + m.top) * width + x + m.left) * channels + c];
    }
};

// ---- replicated borders: the destination is the case's size, the source lies inside it

struct Border {
    int top, left, right, bottom;
};
Border const borders[] = {{0, 0, 0, 0},  {1, 1, 1, 1}, {2, 0, 0, 0},  {0, 3, 5, 2},
                          {1, 20, 0, 3}, {3, 0, 9, 1}, {2, 50, 1, 0}, {0, 1, 60, 0}};
std::vector<int> const allBorders = {0, 1, 2, 3, 4, 5, 6, 7};
IppiSize sourceSize(IppiSize dst, Border b) {
    return {dst.width - b.left - b.right, dst.height - b.top - b.bottom};
}

// Every destination pixel from the source pixel nearest to it; `source(x, y, c)`.
template <class Source>
Bytes replicated(IppiSize dst, Border b, int ch, Source source) {
    const IppiSize s = sourceSize(dst, b);
    Bytes out;
    for (int y = 0; y < dst.height; ++y)
        for (int x = 0; x < dst.width; ++x)
            for (int c = 0; c < ch; ++c)
                out.push_back(std::uint8_t(source(std::clamp(x - b.left, 0, s.width - 1),
                                                  std::clamp(y - b.top, 0, s.height - 1), c)));
    return out;
}

template <int Ch>
IppStatus borderModel(ModelInput const& in, Bytes& out) {
    if (in.srcStep < 1 || in.dstStep < 1) return ippStsStepErr;
    const Border b = borders[in.arg];
    const Block src{in.sources[0], sourceSize(in.size, b).width, Ch, {}};
    out = replicated(in.size, b, Ch, [&](int x, int y, int c) { return src.at(x, y, c); });
    return ippStsNoErr;
}

// In place, the source is the destination's inner region and only the border is written.
template <int Ch>
IppStatus inPlaceBorderModel(ModelInput const& in, Bytes& out) {
    const Border b = borders[in.arg];
    const IppiSize s = sourceSize(in.size, b);
    if (in.dstStep < 1) return ippStsStepErr;
    if (s.width < 1 || s.height < 1) return ippStsSizeErr;
    const Block block{in.dstBefore, in.size.width, Ch, {b.left, b.top, 0, 0}};
    out = replicated(in.size, b, Ch, [&](int x, int y, int c) { return block.at(x, y, c); });
    return ippStsNoErr;
}

auto const borderCopy = [](auto f, Call const& c) {
    const Border b = borders[c.arg];
    return f(c.src1, c.src1Step, sourceSize(c.size, b), c.dst, c.dstStep, c.size, b.top, b.left);
};
template <int Ch>
Ipp8u* innerFirst(Call const& c) {
    const Border b = borders[c.arg];
    return c.dst == nullptr ? nullptr : c.dst + b.top * c.dstStep + b.left * Ch;
}
template <int Ch>
auto const borderInPlace = [](auto f, Call const& c) {
    const Border b = borders[c.arg];
    return f(innerFirst<Ch>(c), c.dstStep, sourceSize(c.size, b), c.size, b.top, b.left);
};
// The copy form with equal pointers hands over to the in-place form before it looks at the
// source's step.
template <int Ch>
auto const borderEqualPointers = [](auto f, Call const& c) {
    const Border b = borders[c.arg];
    Ipp8u* inner = innerFirst<Ch>(c);
    return f(inner, -1, sourceSize(c.size, b), inner, c.dstStep, c.size, b.top, b.left);
};
Margins bordersAsMargins(int arg) {
    const Border b = borders[arg];
    return {0, 0, -b.left - b.right, -b.top - b.bottom};
}

// ---- min and max: any mask and anchor; the source block is the mask area of the region

struct Mask {
    IppiSize size;
    IppiPoint anchor;
};
Mask const masks[] = {{{1, 1}, {0, 0}},
                      {{3, 1}, {1, 0}},
                      {{1, 3}, {0, 2}},
                      {{3, 3}, {0, 0}},
                      {{3, 3}, {2, 2}},
                      {{5, 4}, {2, 1}},
                      {{17, 2}, {16, 1}},
                      {{2, 9}, {1, 4}},
                      {{40, 3}, {7, 0}},
                      // the running passes, and a mask tall enough to cut a row into strips
                      {{15, 15}, {7, 7}},
                      {{6, 11}, {5, 0}},
                      {{9, 16}, {4, 15}},
                      {{33, 7}, {0, 3}},
                      {{2, 130}, {1, 64}},
                      // refused: width 0, height 0, anchor at the width, anchor above the mask
                      {{0, 3}, {0, 0}},
                      {{3, 0}, {0, 0}},
                      {{3, 3}, {3, 0}},
                      {{3, 3}, {0, -1}}};
std::vector<int> const allMasks = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
constexpr int badWidth = 14, badHeight = 15, anchorAtWidth = 16, anchorAbove = 17;

Margins maskArea(int arg) {
    const Mask m = masks[arg];
    return {m.anchor.x, m.anchor.y, m.size.width - 1 - m.anchor.x, m.size.height - 1 - m.anchor.y};
}

template <bool Max, int Ch>
IppStatus extremeModel(ModelInput const& in, Bytes& out) {
    if (in.srcStep < 1 || in.dstStep < 1) return ippStsStepErr;
    const Mask m = masks[in.arg];
    const Block src{in.sources[0], in.size.width + m.size.width - 1, Ch, {}};
    out.clear();
    for (int y = 0; y < in.size.height; ++y)
        for (int x = 0; x < in.size.width; ++x)
            for (int c = 0; c < Ch; ++c) {
                int e = src.at(x, y, c);
                for (int j = 0; j < m.size.height; ++j)
                    for (int i = 0; i < m.size.width; ++i)
                        e = Max ? std::max(e, src.at(x + i, y + j, c))
                                : std::min(e, src.at(x + i, y + j, c));
                out.push_back(std::uint8_t(e));
            }
    return ippStsNoErr;
}

auto const extreme = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, masks[c.arg].size, masks[c.arg].anchor);
};

// ---- Sobel: bottom minus top, and left minus right, saturated to a byte

template <bool Horizontal, int Ch>
IppStatus sobelModel(ModelInput const& in, Bytes& out) {
    if (in.srcStep < 1 || in.dstStep < 1) return ippStsStepErr;
    const Block s{in.sources[0], in.size.width + 2, Ch, {1, 1, 1, 1}};
    out.clear();
    for (int y = 0; y < in.size.height; ++y)
        for (int x = 0; x < in.size.width; ++x)
            for (int c = 0; c < Ch; ++c) {
                int r = 0;
                for (int d = -1; d <= 1; ++d) {
                    const int weight = d == 0 ? 2 : 1;
                    r += Horizontal ? weight * (s.at(x + d, y + 1, c) - s.at(x + d, y - 1, c))
                                    : weight * (s.at(x - 1, y + d, c) - s.at(x + 1, y + d, c));
                }
                out.push_back(std::uint8_t(std::clamp(r, 0, 255)));
            }
    return ippStsNoErr;
}

auto const sobel = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size);
};
Margins aroundByOne(int) {
    return {1, 1, 1, 1};
}

#define NUV_CASE(name, adapter, sources, channels, args) \
#name, callOf(bodies::name, adapter), sources, channels, channels, false, false, args
std::vector<SweepCase> const& cases() {
    static std::vector<SweepCase> const all = {
        {NUV_CASE(ippiCopyReplicateBorder_8u_C1R, borderCopy, 1, 1, allBorders),
         borderModel<1>,
         {},
         bordersAsMargins},
        {NUV_CASE(ippiCopyReplicateBorder_8u_C3R, borderCopy, 1, 3, allBorders),
         borderModel<3>,
         {},
         bordersAsMargins},
        {NUV_CASE(ippiCopyReplicateBorder_8u_C1IR, borderInPlace<1>, 0, 1, allBorders),
         inPlaceBorderModel<1>,
         {}},
        {NUV_CASE(ippiCopyReplicateBorder_8u_C3IR, borderInPlace<3>, 0, 3, allBorders),
         inPlaceBorderModel<3>,
         {}},
        {NUV_CASE(ippiCopyReplicateBorder_8u_C1R, borderEqualPointers<1>, 0, 1, allBorders),
         inPlaceBorderModel<1>,
         {}},
        {NUV_CASE(ippiCopyReplicateBorder_8u_C3R, borderEqualPointers<3>, 0, 3, allBorders),
         inPlaceBorderModel<3>,
         {}},
        {NUV_CASE(ippiFilterMin_8u_C1R, extreme, 1, 1, allMasks),
         extremeModel<false, 1>,
         {},
         maskArea},
        {NUV_CASE(ippiFilterMin_8u_C3R, extreme, 1, 3, allMasks),
         extremeModel<false, 3>,
         {},
         maskArea},
        {NUV_CASE(ippiFilterMax_8u_C1R, extreme, 1, 1, allMasks),
         extremeModel<true, 1>,
         {},
         maskArea},
        {NUV_CASE(ippiFilterMax_8u_C3R, extreme, 1, 3, allMasks),
         extremeModel<true, 3>,
         {},
         maskArea},
        {NUV_CASE(ippiFilterSobelHoriz_8u_C1R, sobel, 1, 1, {0}),
         sobelModel<true, 1>,
         {},
         aroundByOne},
        {NUV_CASE(ippiFilterSobelHoriz_8u_C3R, sobel, 1, 3, {0}),
         sobelModel<true, 3>,
         {},
         aroundByOne},
        {NUV_CASE(ippiFilterSobelVert_8u_C1R, sobel, 1, 1, {0}),
         sobelModel<false, 1>,
         {},
         aroundByOne},
        {NUV_CASE(ippiFilterSobelVert_8u_C3R, sobel, 1, 3, {0}),
         sobelModel<false, 3>,
         {},
         aroundByOne},
    };
    return all;
}
#undef NUV_CASE

class FilterSweep : public PrimitiveSweep {};

TEST_P(FilterSweep, RandomRegionsMatchTheModels) {
    std::mt19937 rng(6000 + static_cast<int>(GetParam()));
    if (sweepRandom(cases(), 40, rng) == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// Pointers, then the size, then (filters) the mask and the anchor; the border forms refuse
// a destination that cannot hold the source with its top and left borders.
TEST_P(FilterSweep, OrdersOfChecks) {
    constexpr IppStatus null = ippStsNullPtrErr, size = ippStsSizeErr;
    for (SweepCase const& c : cases()) {
        std::vector<Refusal> rows = {{false, true, {0, 4}, 0, null},
                                     {false, false, {0, 4}, 0, size},
                                     {false, false, {8, -1}, 0, size}};
        if (c.sources > 0) rows.push_back({true, false, {0, 4}, 0, null});
        if (c.name.find("ReplicateBorder") != std::string::npos) {
            rows.push_back({false, false, {3, 8}, 6, size});   // 50 border columns
            rows.push_back({false, false, {60, 2}, 1, size});  // two border rows
        }
        if (c.name.find("FilterM") != std::string::npos)
            for (auto [arg, status] : {std::pair{badWidth, ippStsMaskSizeErr},
                                       {badHeight, ippStsMaskSizeErr},
                                       {anchorAtWidth, ippStsAnchorErr},
                                       {anchorAbove, ippStsAnchorErr}}) {
                rows.push_back({false, false, {8, 4}, arg, status});
                rows.push_back({false, false, {8, 0}, arg, size});
            }
        sweepRefusals(c, rows);
    }
}

NUV_SWEEP_GENERATIONS(FilterSweep);

// ---- through the stubs at every slot

using Sobel = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

// A 6x6 image of two halves, filtered inside a one-pixel frame: the 4x4 result.
Bytes sobelOf(Sobel f, bool rows, int first, int second) {
    Bytes src(36), dst(16, 7);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x)
            src[6 * y + x] = std::uint8_t((rows ? y : x) < 3 ? first : second);
    EXPECT_EQ(f(src.data() + 7, 6, dst.data(), 4, {4, 4}), ippStsNoErr);
    return dst;
}

// The horizontal operator answers bright below dark, the vertical one bright left of dark;
// the opposite steps give 0. A step of 64 gives 4 x 64, saturated to 255.
TEST(SobelSigns, EachOperatorKeepsItsSenseOfTheAxis) {
    forEachSlot([](int) {
        const Bytes stepRows = {0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255, 0, 0, 0, 0};
        const Bytes stepColumns = {0, 200, 200, 0, 0, 200, 200, 0, 0, 200, 200, 0, 0, 200, 200, 0};
        EXPECT_EQ(sobelOf(ippiFilterSobelHoriz_8u_C1R, true, 10, 74), stepRows);
        EXPECT_EQ(sobelOf(ippiFilterSobelHoriz_8u_C1R, true, 74, 10), Bytes(16, 0));
        EXPECT_EQ(sobelOf(ippiFilterSobelVert_8u_C1R, false, 60, 10), stepColumns);
        EXPECT_EQ(sobelOf(ippiFilterSobelVert_8u_C1R, false, 10, 60), Bytes(16, 0));
    });
}

// The filters take their buffer from the library's allocator on each call: when it fails,
// the status says so and nothing is written.
TEST(FilterBuffers, AFailingAllocatorLeavesTheDestinationUnwritten) {
    i_malloc = [](std::size_t) -> void* { return nullptr; };
    forEachSlot([](int) {
        Bytes src(200, 9), dst(100, 7);
        const Bytes before = dst;
        EXPECT_EQ(ippiFilterSobelHoriz_8u_C1R(src.data() + 11, 10, dst.data(), 10, {8, 8}),
                  ippStsMemAllocErr);
        EXPECT_EQ(ippiFilterSobelVert_8u_C3R(src.data() + 13, 30, dst.data(), 30, {2, 2}),
                  ippStsMemAllocErr);
        EXPECT_EQ(ippiFilterMax_8u_C1R(src.data(), 10, dst.data(), 10, {8, 8}, {3, 3}, {0, 0}),
                  ippStsMemAllocErr);
        EXPECT_EQ(ippiFilterMin_8u_C3R(src.data(), 30, dst.data(), 30, {2, 2}, {1, 2}, {0, 0}),
                  ippStsMemAllocErr);
        EXPECT_EQ(dst, before);
        // The 1x1 mask is a copy and needs no buffer.
        EXPECT_EQ(ippiFilterMin_8u_C1R(src.data(), 10, dst.data(), 10, {8, 8}, {1, 1}, {0, 0}),
                  ippStsNoErr);
        EXPECT_EQ(dst[0], 9);
    });
    i_malloc = std::malloc;
}

// Rows wider than a strip of the filters' scratch give the bytes of the same rows filtered
// in narrow pieces, and no call asks the allocator for 64 KiB or more, so that the scratch
// comes back from the heap's bins on the next call instead of from the system.
TEST(FilterStrips, WideRowsMatchNarrowPiecesWithScratchUnder64KiB) {
    static std::size_t largest = 0;
    i_malloc = [](std::size_t n) {
        largest = n > largest ? n : largest;
        return std::malloc(n);
    };
    constexpr int width = 3840, height = 24, border = 8, step = (width + 2 * border) * 3;
    std::mt19937 rng(23);
    Bytes src(static_cast<std::size_t>(step) * (height + 2 * border));
    for (auto& b : src) b = std::uint8_t(rng() % 7 == 0 ? rng() : 128 + rng() % 9);
    Ipp8u const* centre = src.data() + border * step + border * 3;
    using Call = std::function<IppStatus(Ipp8u const*, Ipp8u*, int)>;
    const Call calls[] = {
        [](Ipp8u const* s, Ipp8u* d, int w) {
            return ippiFilterMax_8u_C3R(s, step, d, step, {w, height}, {15, 15}, {7, 7});
        },
        [](Ipp8u const* s, Ipp8u* d, int w) {
            return ippiFilterMin_8u_C3R(s, step, d, step, {w, height}, {5, 3}, {2, 1});
        },
        [](Ipp8u const* s, Ipp8u* d, int w) {
            return ippiFilterSobelHoriz_8u_C3R(s, step, d, step, {w, height});
        },
        [](Ipp8u const* s, Ipp8u* d, int w) {
            return ippiFilterSobelVert_8u_C3R(s, step, d, step, {w, height});
        }};
    forEachSlot([&](int) {
        for (Call const& call : calls) {
            Bytes whole(static_cast<std::size_t>(step) * height), pieces = whole;
            ASSERT_EQ(call(centre, whole.data(), width), ippStsNoErr);
            for (int x = 0; x < width; x += 200)
                ASSERT_EQ(call(centre + 3 * x, pieces.data() + 3 * x, std::min(200, width - x)),
                          ippStsNoErr);
            EXPECT_EQ(whole, pieces);
        }
    });
    i_malloc = std::malloc;
    EXPECT_GT(largest, 0u);
    EXPECT_LT(largest, 64u * 1024);
}

}  // namespace
