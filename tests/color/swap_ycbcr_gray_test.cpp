// Channel swaps, YCbCr both ways and gray through the shared sweep: plain models of each
// generation's block and tail, the worked numbers that define them, and refused calls.
#include "support/bodies.h"
#include "support/sweep.h"

#include <array>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;
using Pixel = std::array<int, 3>;

// ---- channel swaps

int const orders[][3] = {{2, 1, 0}, {0, 1, 2}, {0, 0, 0}, {1, 2, 0},
                         {2, 2, 1}, {1, 2, 3}, {3, 0, 3}};
std::vector<int> const threeChannelOrders = {0, 1, 2, 3, 4}, fourChannelOrders = {0, 1, 3, 5, 6};

// Output channel c is input channel order[c]; the three-channel forms refuse steps below 1.
template <int SrcPixel, bool InPlace>
IppStatus swapModel(ModelInput const& in, Bytes& out) {
    if (SrcPixel == 3 && (in.dstStep < 1 || (!InPlace && in.srcStep < 1))) return ippStsStepErr;
    Bytes const& src = InPlace ? in.dstBefore : in.sources[0];
    const std::size_t pixels = src.size() / SrcPixel;
    out.resize(3 * pixels);
    for (std::size_t i = 0; i < pixels; ++i)
        for (int c = 0; c < 3; ++c) out[3 * i + c] = src[SrcPixel * i + orders[in.arg][c]];
    return ippStsNoErr;
}

// ---- YCbCr and gray: which columns are block columns, and each formula on one pixel

int clampByte(long v) {
    return v < 0 ? 0 : v > 255 ? 255 : int(v);
}
// Floor division by a power of two, spelled without shifts.
long floorDiv(long a, long b) {
    return a >= 0 ? a / b : -((-a + b - 1) / b);
}

Pixel toYCbCrTail(Pixel p) {
    auto f = [&](long wr, long wg, long wb, long offset) {
        return int(floorDiv(p[0] * wr + p[1] * wg + p[2] * wb + offset, 65536) & 255);
    };
    return {f(16843, 33030, 6423, 0x108000), f(-9699, -19071, 28770, -0x7F8000),
            f(28770, -24117, -4653, -0x7F8000)};
}
Pixel toYCbCrBlockM7(Pixel p) {
    auto f = [&](long wr, long wg, long wb, long offset) {
        return clampByte(floorDiv(
            floorDiv(p[0] * wr + p[1] * wg, 2048) + floorDiv(p[2] * wb, 2048) + offset, 16));
    };
    return {f(8421, 16515, 3211, 264), f(-4850, -9535, 14385, 2056), f(14385, -12059, -2327, 2056)};
}
Pixel toYCbCrBlockLater(Pixel p) {
    auto q15 = [](long channel, long c) { return floorDiv(channel * 128 * c + 16384, 32768); };
    return {clampByte(floorDiv(q15(p[0], 4211) + q15(p[1], 8258) + q15(p[2], 1606) + 1026, 64)),
            clampByte(floorDiv(q15(p[2], 7193) - q15(p[1], 4768) - q15(p[0], 2425) + 8194, 64)),
            clampByte(floorDiv(q15(p[0], 7193) - q15(p[1], 6029) - q15(p[2], 1163) + 8194, 64))};
}
Pixel toRgbTail(Pixel p) {
    const long cb = p[1] - 128, cr = p[2] - 128, yy = p[0] * 76284L - 1220544;
    return {clampByte(floorDiv(cr * 104595 + yy, 65536)),
            clampByte(floorDiv(cb * -25690 + yy + cr * -53281, 65536)),
            clampByte(floorDiv(cb * 132186 + yy, 65536))};
}
Pixel toRgbBlock(Pixel p) {
    auto word = [](long v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : v; };
    auto high = [](long a, long c) { return floorDiv(a * c, 65536); };
    const long y = high((p[0] - 16) * 128, 9536), u = (p[1] - 128) * 128, v = (p[2] - 128) * 128;
    auto f = [&](long wr, long wb) {
        return clampByte(floorDiv(word(word(word(y + high(v, wr)) + high(u, wb)) + 8), 16));
    };
    return {f(13074, 0), f(-6660, -3203), f(0, 16523)};
}
int grayTail(Pixel p) {
    return int((p[0] * 9798L + p[1] * 19235L + p[2] * 3736L + 16384) / 32768);
}
int grayBlock(Pixel p) {
    const long sum = p[0] * 9798L / 256 + p[1] * 19235L / 256 + p[2] * 3736L / 256;
    return clampByte((sum + 64) / 128);
}

enum class Conversion { toYCbCr, toRgb, toGray };

// The first block(width) columns of a row are block columns.
int blockColumns(Conversion k, Generation g, int width) {
    switch (k) {
        case Conversion::toYCbCr:
            return width & (g == Generation::m7 ? ~7 : ~15);
        case Conversion::toRgb:
            return width & ~3;
        case Conversion::toGray:
            return width & (g == Generation::l9 ? ~15 : ~7);
    }
    return 0;
}

Pixel convertPixel(Conversion k, Generation g, bool block, Pixel p) {
    switch (k) {
        case Conversion::toYCbCr:
            return !block                ? toYCbCrTail(p)
                   : g == Generation::m7 ? toYCbCrBlockM7(p)
                                         : toYCbCrBlockLater(p);
        case Conversion::toRgb:
            return block ? toRgbBlock(p) : toRgbTail(p);
        case Conversion::toGray:
            return {block ? grayBlock(p) : grayTail(p), 0, 0};
    }
    return {};
}

template <Conversion K>
IppStatus conversionModel(ModelInput const& in, Bytes& out) {
    const int outBytes = K == Conversion::toGray ? 1 : 3, w = in.size.width;
    out.resize(std::size_t(w) * in.size.height * outBytes);
    for (int y = 0; y < in.size.height; ++y)
        for (int x = 0; x < w; ++x) {
            const std::size_t i = std::size_t(y) * w + x;
            Bytes const& s = in.sources[0];
            const Pixel p = convertPixel(K, in.generation, x < blockColumns(K, in.generation, w),
                                         {s[3 * i], s[3 * i + 1], s[3 * i + 2]});
            for (int c = 0; c < outBytes; ++c) out[i * outBytes + c] = std::uint8_t(p[c]);
        }
    return ippStsNoErr;
}

// ---- the cases

auto const swapCopy = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, orders[c.arg]);
};
auto const swapInPlace = [](auto f, Call const& c) {
    return f(c.dst, c.dstStep, c.size, orders[c.arg]);
};
auto const unary = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size);
};

#define NUV_CASE(name) #name, callOf(bodies::name
std::vector<SweepCase> const& cases() {
    static std::vector<SweepCase> const all = {
        {NUV_CASE(ippiSwapChannels_8u_C3R), swapCopy), 1, 3, 3, false, false, threeChannelOrders,
         swapModel<3, false>, {}},
        {NUV_CASE(ippiSwapChannels_8u_C3IR), swapInPlace), 0, 3, 3, false, false,
         threeChannelOrders, swapModel<3, true>, {}},
        {NUV_CASE(ippiSwapChannels_8u_C4C3R), swapCopy), 1, 4, 3, false, false, fourChannelOrders,
         swapModel<4, false>, {}},
        {NUV_CASE(ippiRGBToYCbCr_8u_C3R), unary), 1, 3, 3, false, false, {0},
         conversionModel<Conversion::toYCbCr>, {}},
        {NUV_CASE(ippiYCbCrToRGB_8u_C3R), unary), 1, 3, 3, false, false, {0},
         conversionModel<Conversion::toRgb>, {}},
        {NUV_CASE(ippiRGBToGray_8u_C3C1R), unary), 1, 3, 1, false, false, {0},
         conversionModel<Conversion::toGray>, {}},
    };
    return all;
}
#undef NUV_CASE

class ColorSweep : public PrimitiveSweep {};

TEST_P(ColorSweep, RandomRegionsMatchTheModels) {
    std::mt19937 rng(2000 + static_cast<int>(GetParam()));
    if (sweepRandom(cases(), 40, rng) == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// A row of 19 equal pixels: column 0 is a block column in every generation, column 18 a tail.
struct Example {
    char const* name;
    Pixel in;
    Pixel block, tail;
    bool laterBlockDiffers;  // the n8-and-later YCbCr block, given as `laterBlock`
    Pixel laterBlock;
};

TEST_P(ColorSweep, WorkedNumbers) {
    Example const examples[] = {
        {"ippiRGBToYCbCr_8u_C3R", {255, 0, 0}, {82, 90, 240}, {82, 90, 240}, true, {81, 90, 239}},
        {"ippiRGBToYCbCr_8u_C3R", {0, 0, 0}, {16, 128, 128}, {16, 128, 128}, false, {}},
        {"ippiRGBToYCbCr_8u_C3R", {255, 255, 255}, {235, 128, 128}, {235, 128, 128}, false, {}},
        {"ippiRGBToYCbCr_8u_C3R", {0, 255, 0}, {145, 54, 34}, {145, 54, 34}, true, {144, 53, 34}},
        {"ippiRGBToYCbCr_8u_C3R",
         {100, 100, 100},
         {102, 128, 128},
         {102, 128, 128},
         true,
         {101, 128, 128}},
        {"ippiYCbCrToRGB_8u_C3R", {16, 128, 128}, {0, 0, 0}, {0, 0, 0}, false, {}},
        {"ippiYCbCrToRGB_8u_C3R", {235, 128, 128}, {255, 255, 255}, {254, 254, 254}, false, {}},
        {"ippiYCbCrToRGB_8u_C3R", {145, 54, 34}, {0, 255, 1}, {0, 255, 0}, false, {}},
        {"ippiYCbCrToRGB_8u_C3R", {128, 0, 255}, {255, 77, 0}, {255, 77, 0}, false, {}},
        {"ippiYCbCrToRGB_8u_C3R", {5, 128, 128}, {0, 0, 0}, {0, 0, 0}, false, {}},
        {"ippiRGBToGray_8u_C3C1R", {255, 255, 255}, {255}, {255}, false, {}},
        {"ippiRGBToGray_8u_C3C1R", {255, 0, 0}, {76}, {76}, false, {}},
        {"ippiRGBToGray_8u_C3C1R", {0, 255, 0}, {150}, {150}, false, {}},
        {"ippiRGBToGray_8u_C3C1R", {0, 0, 255}, {29}, {29}, false, {}},
        {"ippiRGBToGray_8u_C3C1R", {100, 150, 200}, {141}, {141}, false, {}},
    };
    for (Example const& e : examples) {
        const int slot = slotOf(GetParam(), e.name);
        if (slot < 0) continue;
        SCOPED_TRACE(std::string(e.name) + " " + std::to_string(e.in[0]) + "," +
                     std::to_string(e.in[1]) + "," + std::to_string(e.in[2]));
        const int outBytes = std::string(e.name).find("Gray") != std::string::npos ? 1 : 3;
        Bytes src, dst(19 * 3, 0x5A);
        for (int x = 0; x < 19; ++x) src.insert(src.end(), e.in.begin(), e.in.end());
        for (SweepCase const& c : cases()) {
            if (c.name == e.name) {
                ASSERT_EQ(c.call(slot, {src.data(), 57, nullptr, 0, dst.data(), 57, {19, 1}, 0}),
                          ippStsNoErr);
            }
        }
        const Pixel block =
            e.laterBlockDiffers && GetParam() != Generation::m7 ? e.laterBlock : e.block;
        for (int c = 0; c < outBytes; ++c) {
            EXPECT_EQ(dst[c], block[c]) << "block channel " << c;
            EXPECT_EQ(dst[18 * outBytes + c], e.tail[c]) << "tail channel " << c;
        }
    }
}

// Pointers, then the size, then steps (the three-channel swaps only), then the order.
TEST_P(ColorSweep, RefusedCalls) {
    constexpr IppStatus null = ippStsNullPtrErr, size = ippStsSizeErr;
    std::vector<Refusal> const pointersThenSize = {{true, false, {8, 4}, 0, null},
                                                   {false, true, {0, 4}, 0, null},
                                                   {false, false, {0, 4}, 0, size},
                                                   {false, false, {8, -1}, 0, size}};
    for (SweepCase const& c : cases()) {
        std::vector<Refusal> rows;  // an in-place form has no source to be null
        for (Refusal const& r : pointersThenSize)
            if (c.sources > 0 || !r.nullSrc) rows.push_back(r);
        sweepRefusals(c, rows);
    }
    for (char const* name : {"ippiSwapChannels_8u_C3R", "ippiSwapChannels_8u_C3IR"}) {
        const int slot = slotOf(GetParam(), name);
        if (slot < 0) continue;
        Bytes img(64, 1);
        int const bad[] = {0, 3, 1}, negative[] = {-1, 0, 0};
        auto call = [&](Ipp8u* p, int step, IppiSize s, int const* order) {
            return std::string(name).find("IR") != std::string::npos
                       ? bodies::ippiSwapChannels_8u_C3IR[slot](p, step, s, order)
                       : bodies::ippiSwapChannels_8u_C3R[slot](p, step, p + 32, step, s, order);
        };
        EXPECT_EQ(call(img.data(), 6, {2, 2}, nullptr), null);
        EXPECT_EQ(call(img.data(), 0, {0, 2}, bad), size);
        EXPECT_EQ(call(img.data(), 0, {2, 2}, bad), ippStsStepErr);
        EXPECT_EQ(call(img.data(), 6, {2, 2}, bad), ippStsChannelOrderErr);
        EXPECT_EQ(call(img.data(), 6, {2, 2}, negative), ippStsChannelOrderErr);
        EXPECT_EQ(img, Bytes(64, 1));
    }
    const int slot = slotOf(GetParam(), "ippiSwapChannels_8u_C4C3R");
    if (slot >= 0) {
        Bytes src(8, 1), dst(6, 0);
        int const four[] = {3, 3, 0}, five[] = {0, 4, 0};
        EXPECT_EQ(
            bodies::ippiSwapChannels_8u_C4C3R[slot](src.data(), 0, dst.data(), 0, {2, 3}, five),
            ippStsChannelOrderErr);
        EXPECT_EQ(dst, Bytes(6, 0));
        src[3] = 9;  // a zero step is accepted: every row is the same row
        EXPECT_EQ(
            bodies::ippiSwapChannels_8u_C4C3R[slot](src.data(), 0, dst.data(), 0, {2, 3}, four),
            ippStsNoErr);
        EXPECT_EQ(dst, (Bytes{9, 9, 1, 1, 1, 1}));
    }
}

// The same buffer given twice is the in-place form on the destination's step.
TEST_P(ColorSweep, SwapWithEqualPointersWorksInPlace) {
    const int slot = slotOf(GetParam(), "ippiSwapChannels_8u_C3R");
    if (slot < 0) GTEST_SKIP();
    Bytes img(3 * 40 * 2);
    for (std::size_t i = 0; i < img.size(); ++i) img[i] = std::uint8_t(i);
    Bytes expected = img;
    for (std::size_t i = 0; i < img.size(); i += 3) std::swap(expected[i], expected[i + 2]);
    EXPECT_EQ(
        bodies::ippiSwapChannels_8u_C3R[slot](img.data(), 1, img.data(), 120, {40, 2}, orders[0]),
        ippStsNoErr);
    EXPECT_EQ(img, expected);
}

NUV_SWEEP_GENERATIONS(ColorSweep);

}  // namespace
