// The colour primitives through the shared sweep: channel swaps, and conversions whose
// models compute one pixel in the form of each generation's block or tail (fixed point for
// YCbCr and gray; single precision with the processor's approximate reciprocal for HSV and
// HLS). Ties, grays and extremes run at block and at tail columns, worked numbers pin the
// reference bytes, and refused calls leave the destination alone.
#include "support/bodies.h"
#include "support/sweep.h"

#include <immintrin.h>

#include <array>
#include <cmath>
#include <cstring>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;
using Pixel = std::array<int, 3>;
using G = Generation;

int clampByte(long v) {
    return v < 0 ? 0 : v > 255 ? 255 : int(v);
}

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

Pixel toYCbCr(G g, bool block, Pixel p) {
    return !block ? toYCbCrTail(p) : g == G::m7 ? toYCbCrBlockM7(p) : toYCbCrBlockLater(p);
}
Pixel fromYCbCr(G, bool block, Pixel p) {
    return block ? toRgbBlock(p) : toRgbTail(p);
}
Pixel toGray(G, bool block, Pixel p) {
    return {block ? grayBlock(p) : grayTail(p), 0, 0};
}

// ---- HSV and HLS: single precision

float bits(std::uint32_t b) {
    float f;
    std::memcpy(&f, &b, 4);
    return f;
}
float const inv60 = bits(0x3C888889), degreesPerByte = bits(0x3FB4B4B5), inv255 = bits(0x3B808081),
            bytesPerDegree = bits(0x3F355555);

float rcp(float x) {
    return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x)));
}
int nearest(float x) {
    return int(std::nearbyint(x));
}
bool roundsLikeY8(Generation g) {
    return g == Generation::y8 || g == Generation::e9 || g == Generation::l9;
}

// ---- HSV

Pixel toHsv(Generation gen, bool block, Pixel px) {
    const float r = px[0], g = px[1], b = px[2];
    const float v = std::max({r, g, b}), range = v - std::min({r, g, b});
    if (range == 0) return {0, 0, px[0]};
    const float rd = rcp(range);
    const int s = nearest((rcp(v) * range) * 255);
    // Ties: the tail takes the last of red, green, blue to be the maximum; the block takes
    // green only when red is not the maximum.
    const bool green = block ? g == v && r != v : g == v && b != v;
    const bool blue = !green && b == v;
    const bool fused = block && gen == Generation::l9;
    const float cr = (v - r) * rd, cg = (v - g) * rd, cb = (v - b) * rd;
    float sector;
    if (green) {
        sector = fused ? std::fma(-rd, r - b, 2.0f) : (cr - cb) + 2;
    } else if (blue) {
        sector = fused ? std::fma(rd, r - g, 4.0f) : (cg - cr) + 4;
    } else {
        sector = fused ? std::fma(rd, v - b, -cg) : cb - cg;
    }
    float h = sector * 42.5f;
    if (h < 0) h = fused ? std::fma(sector, 42.5f, 255.0f) : h + 255;
    return {nearest(h), s, std::max({px[0], px[1], px[2]})};
}

Pixel fromHsv(Generation gen, bool block, Pixel px) {
    const int value = px[2];
    if (px[1] == 0) return {value, value, value};
    const float v = value, s = px[1];
    const float x = px[0] == 255 ? 0.0f : px[0];
    const float h6 = (x * inv60) * degreesPerByte;
    const int i = int(h6);
    float p, q, t;
    if (block && gen == Generation::l9) {
        const float f = std::fma(inv60 * degreesPerByte, x, -float(i));
        const float vs = (inv255 * v) * s;
        q = std::fma(-f, vs, v);
        p = -(std::fma(inv255, s, -1.0f) * v);
        t = std::fma(s, std::fma(inv255, f, -inv255), 1.0f) * v;
    } else {
        const float f = h6 - float(i), vs = v * (s * inv255);
        p = v - vs;
        q = v - f * vs;
        t = p + f * vs;
    }
    const int P = nearest(p), Q = nearest(q), T = nearest(t);
    Pixel const sectors[6] = {{value, T, P}, {Q, value, P}, {P, value, T},
                              {P, Q, value}, {T, P, value}, {value, P, Q}};
    return sectors[i];
}

// ---- HLS

float newton(float x) {
    const float r = rcp(x);
    return (r + r) - ((x * r) * r);
}

Pixel toHls(Generation gen, bool block, Pixel px) {
    const float r = px[0], g = px[1], b = px[2];
    const float v = std::max({r, g, b}), m = std::min({r, g, b});
    const float range = v - m, sum = m + v, lf = sum * 0.5f;
    const bool rounds = block && roundsLikeY8(gen), fused = block && gen == Generation::l9;
    auto out = [&](float x) { return clampByte(rounds ? nearest(x) : int(x)); };
    if (range == 0) return {0, out(lf), 0};
    const float den = lf <= 127.5f ? sum : 510 - sum;
    const float s = block ? (rcp(den) * range) * 255 : (range * newton(den)) * 255;
    // The first of red, green, blue to be the maximum gives the hue's form.
    const float diff = v == r ? g - b : v == g ? b - r : r - g;
    const float bias = v == r ? 0 : v == g ? 120 : 240;
    float h, wrapped;
    if (!block) {
        h = (diff * 60) * newton(range) + bias;
        wrapped = h + 360;
    } else if (!rounds) {
        h = (diff * 60) * rcp(range) + bias;
        wrapped = h + 360;
    } else {
        const float rd = rcp(range) * 60;
        h = fused && bias != 0 ? std::fma(diff, rd, bias) : diff * rd + bias;
        wrapped = fused ? std::fma(diff, rd, 360.0f) : h + 360;
    }
    if (h < 0) h = wrapped;
    return {out(h * bytesPerDegree), out(lf), out(s)};
}

// The backward direction's f at the hue positions of R, G and B: a ramp up over 0..60, m2
// to 180, a ramp down to 240, m1 after; each value to a byte by `out`.
template <class Ramp, class Out>
Pixel rgbOfHue(float h, float m1, float m2, Ramp ramp, Out out) {
    float x[3] = {h + 120, h, h - 120};
    if (x[0] > 360) x[0] -= 360;
    if (x[2] < 0) x[2] += 360;
    Pixel px;
    for (int c = 0; c < 3; ++c)
        px[c] = out(x[c] < 60 ? ramp(x[c]) : x[c] < 180 ? m2 : x[c] < 240 ? ramp(240 - x[c]) : m1);
    return px;
}

Pixel fromHls(Generation gen, bool block, Pixel px) {
    const bool later = roundsLikeY8(gen), fused = gen == Generation::l9;
    if (later && !block) {  // true divisions, truncation, the low byte
        const float s = px[2] / 255.0f, h = (px[0] * 360.0f) / 255.0f, l = px[1] / 255.0f;
        float m2 = l <= 0.5f ? (fused ? std::fma(s, l, l) : (s + 1) * l)
                             : (fused ? std::fma(-s, l, l + s) : (l + s) - s * l);
        if (s == 0) m2 = l;
        const float m1 = (l + l) - m2;
        return rgbOfHue(
            h, m1, m2, [&](float x) { return (((m2 - m1) * x) / 60) + m1; },
            [](float f) { return int(f * 255) & 255; });
    }
    const float s = px[2] * inv255, h = px[0] * degreesPerByte, l = px[1] * inv255;
    auto out = [&](float f) { return clampByte(later ? nearest(f * 255) : int(f * 255)); };
    if (s == 0) return later ? Pixel{out(l), out(l), out(l)} : Pixel{px[1], px[1], px[1]};
    const float ls = l * s;
    float m2 = l > 0.5f ? (later ? l + (s - ls) : (l + s) - ls) : l + ls;
    if (fused) m2 = l > 0.5f ? l + std::fma(-l, s, s) : std::fma(l, s, l);
    const float m1 = (l + l) - m2, range = m2 - m1;
    auto ramp = [&](float x) {
        if (!later) return ((x * inv60) * range) + m1;
        return fused ? std::fma(x * range, inv60, m1) : ((x * range) * inv60) + m1;
    };
    return rgbOfHue(h, m1, m2, ramp, out);
}

// ---- the cases

using PixelModel = Pixel (*)(G, bool block, Pixel);
struct Conversion {
    char const* name;
    PixelModel model;
    int outBytes;
    int (*blockColumns)(G, int width);  // the first ones of a row are block columns
};
Conversion const conversions[] = {
    {"ippiRGBToYCbCr_8u_C3R", toYCbCr, 3, [](G g, int w) { return w & (g == G::m7 ? ~7 : ~15); }},
    {"ippiYCbCrToRGB_8u_C3R", fromYCbCr, 3, [](G, int w) { return w & ~3; }},
    {"ippiRGBToGray_8u_C3C1R", toGray, 1, [](G g, int w) { return w & (g == G::l9 ? ~15 : ~7); }},
    {"ippiRGBToHSV_8u_C3R", toHsv, 3, [](G, int w) { return w & ~3; }},
    {"ippiHSVToRGB_8u_C3R", fromHsv, 3, [](G, int w) { return w & ~3; }},
    {"ippiRGBToHLS_8u_C3R", toHls, 3, [](G, int w) { return w & ~7; }},
    {"ippiHLSToRGB_8u_C3R", fromHls, 3, [](G, int w) { return w & ~7; }},
};

template <int K>
IppStatus conversionModel(ModelInput const& in, Bytes& out) {
    Conversion const& k = conversions[K];
    const int w = in.size.width, n = k.outBytes;
    Bytes const& s = in.sources[0];
    out.resize(s.size() / 3 * n);
    for (std::size_t i = 0; i < s.size() / 3; ++i) {
        const bool block = int(i % w) < k.blockColumns(in.generation, w);
        const Pixel p = k.model(in.generation, block, {s[3 * i], s[3 * i + 1], s[3 * i + 2]});
        for (int c = 0; c < n; ++c) out[n * i + c] = std::uint8_t(p[c]);
    }
    return ippStsNoErr;
}

auto const swapCopy = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, orders[c.arg]);
};
auto const swapInPlace = [](auto f, Call const& c) {
    return f(c.dst, c.dstStep, c.size, orders[c.arg]);
};
auto const unary = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size);
};

#define NUV_CASE(name, adapter) #name, callOf(bodies::name, adapter)
#define NUV_CONVERSION(name, k, outBytes)                                                \
    {                                                                                    \
        NUV_CASE(name, unary), 1, 3, outBytes, false, false, {0}, conversionModel<k>, {} \
    }
std::vector<SweepCase> const& cases() {
    static std::vector<SweepCase> const all = {
        {NUV_CASE(ippiSwapChannels_8u_C3R, swapCopy),
         1,
         3,
         3,
         false,
         false,
         threeChannelOrders,
         swapModel<3, false>,
         {}},
        {NUV_CASE(ippiSwapChannels_8u_C3IR, swapInPlace),
         0,
         3,
         3,
         false,
         false,
         threeChannelOrders,
         swapModel<3, true>,
         {}},
        {NUV_CASE(ippiSwapChannels_8u_C4C3R, swapCopy),
         1,
         4,
         3,
         false,
         false,
         fourChannelOrders,
         swapModel<4, false>,
         {}},
        NUV_CONVERSION(ippiRGBToYCbCr_8u_C3R, 0, 3),
        NUV_CONVERSION(ippiYCbCrToRGB_8u_C3R, 1, 3),
        NUV_CONVERSION(ippiRGBToGray_8u_C3C1R, 2, 1),
        NUV_CONVERSION(ippiRGBToHSV_8u_C3R, 3, 3),
        NUV_CONVERSION(ippiHSVToRGB_8u_C3R, 4, 3),
        NUV_CONVERSION(ippiRGBToHLS_8u_C3R, 5, 3),
        NUV_CONVERSION(ippiHLSToRGB_8u_C3R, 6, 3),
    };
    return all;
}
#undef NUV_CONVERSION
#undef NUV_CASE

class ColorSweep : public PrimitiveSweep {
protected:
    // One packed call of `width` x `height` pixels, or nothing if the generation has no body
    // of the conversion here.
    Bytes convert(Conversion const& k, Bytes const& src, int width, int height) {
        const int slot = slotOf(GetParam(), k.name);
        if (slot < 0) return {};
        Bytes dst(src.size() / 3 * k.outBytes, 0x5A);
        for (SweepCase const& c : cases())
            if (c.name == k.name) {
                EXPECT_EQ(c.call(slot, {src.data(),
                                        3 * width,
                                        nullptr,
                                        0,
                                        dst.data(),
                                        k.outBytes * width,
                                        {width, height},
                                        0}),
                          ippStsNoErr);
            }
        return dst;
    }
};

TEST_P(ColorSweep, RandomRegionsMatchTheModels) {
    std::mt19937 rng(2000 + static_cast<int>(GetParam()));
    if (sweepRandom(cases(), 40, rng) == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// Every pixel of the channel values below (ties of two and three maxima, grays, the ends of
// the range, hues at the sector edges), once all at block columns (rows of 16) and once all
// at tail columns (rows of 1).
TEST_P(ColorSweep, TiesAndExtremesAtBlockAndTailColumns) {
    int const values[] = {0, 1, 16, 42, 43, 127, 128, 170, 213, 235, 254, 255};
    Bytes src;
    for (int a : values)
        for (int b : values)
            for (int c : values) src.insert(src.end(), {Ipp8u(a), Ipp8u(b), Ipp8u(c)});
    const int pixels = int(src.size() / 3);  // 12^3, whole rows of 16
    for (Conversion const& k : conversions)
        for (int width : {16, 1}) {
            const Bytes got = convert(k, src, width, pixels / width);
            if (got.empty()) continue;
            for (int i = 0; i < pixels; ++i) {
                const Pixel in = {src[3 * i], src[3 * i + 1], src[3 * i + 2]};
                const Pixel want = k.model(GetParam(), width == 16, in);
                for (int c = 0; c < k.outBytes; ++c)
                    ASSERT_EQ(got[k.outBytes * i + c], want[c])
                        << k.name << " width " << width << " channel " << c << " of " << in[0]
                        << "," << in[1] << "," << in[2];
            }
        }
}

// A row of 19 equal pixels: columns 0..15 are block columns of every conversion in every
// generation, 16..18 tail columns.
// `where` holds the generations an example holds for (bit g) and its columns.
constexpr unsigned all = 0x3F, m7 = 1, fromN8 = 0x3E, truncating = 0x3, rounding = 0x38;
constexpr unsigned block = 1u << 6, tail = 1u << 7, both = block | tail;
struct Example {
    char const* name;
    Pixel in, out;  // -1: a byte the example leaves open
    unsigned where;
};

TEST_P(ColorSweep, WorkedNumbers) {
    Example const examples[] = {
        {"ippiRGBToYCbCr_8u_C3R", {255, 0, 0}, {82, 90, 240}, tail | all},
        {"ippiRGBToYCbCr_8u_C3R", {255, 0, 0}, {82, 90, 240}, block | m7},
        {"ippiRGBToYCbCr_8u_C3R", {255, 0, 0}, {81, 90, 239}, block | fromN8},
        {"ippiRGBToYCbCr_8u_C3R", {0, 0, 0}, {16, 128, 128}, both | all},
        {"ippiRGBToYCbCr_8u_C3R", {255, 255, 255}, {235, 128, 128}, both | all},
        {"ippiRGBToYCbCr_8u_C3R", {0, 255, 0}, {145, 54, 34}, tail | all},
        {"ippiRGBToYCbCr_8u_C3R", {0, 255, 0}, {145, 54, 34}, block | m7},
        {"ippiRGBToYCbCr_8u_C3R", {0, 255, 0}, {144, 53, 34}, block | fromN8},
        {"ippiRGBToYCbCr_8u_C3R", {100, 100, 100}, {102, 128, 128}, tail | all},
        {"ippiRGBToYCbCr_8u_C3R", {100, 100, 100}, {101, 128, 128}, block | fromN8},
        {"ippiYCbCrToRGB_8u_C3R", {16, 128, 128}, {0, 0, 0}, both | all},
        {"ippiYCbCrToRGB_8u_C3R", {235, 128, 128}, {255, 255, 255}, block | all},
        {"ippiYCbCrToRGB_8u_C3R", {235, 128, 128}, {254, 254, 254}, tail | all},
        {"ippiYCbCrToRGB_8u_C3R", {145, 54, 34}, {0, 255, 1}, block | all},
        {"ippiYCbCrToRGB_8u_C3R", {145, 54, 34}, {0, 255, 0}, tail | all},
        {"ippiYCbCrToRGB_8u_C3R", {128, 0, 255}, {255, 77, 0}, both | all},
        {"ippiRGBToGray_8u_C3C1R", {255, 255, 255}, {255, -1, -1}, both | all},
        {"ippiRGBToGray_8u_C3C1R", {255, 0, 0}, {76, -1, -1}, both | all},
        {"ippiRGBToGray_8u_C3C1R", {0, 255, 0}, {150, -1, -1}, both | all},
        {"ippiRGBToGray_8u_C3C1R", {0, 0, 255}, {29, -1, -1}, both | all},
        {"ippiRGBToGray_8u_C3C1R", {100, 150, 200}, {141, -1, -1}, both | all},
        {"ippiRGBToHSV_8u_C3R", {77, 77, 77}, {0, 0, 77}, both | all},
        {"ippiRGBToHSV_8u_C3R", {255, 0, 0}, {0, 255, 255}, both | all},
        {"ippiRGBToHSV_8u_C3R", {0, 255, 0}, {85, 255, 255}, both | all},
        {"ippiRGBToHSV_8u_C3R", {0, 0, 255}, {170, 255, 255}, both | all},
        {"ippiHSVToRGB_8u_C3R", {0, 255, 255}, {255, 0, 0}, tail | all},
        {"ippiHSVToRGB_8u_C3R", {43, 255, 255}, {252, 255, 0}, tail | all},
        {"ippiHSVToRGB_8u_C3R", {128, 255, 255}, {0, 252, 255}, tail | all},
        {"ippiHSVToRGB_8u_C3R", {213, 255, 255}, {255, 0, 252}, tail | all},
        {"ippiHSVToRGB_8u_C3R", {254, 255, 255}, {255, 0, 6}, both | m7},
        {"ippiHSVToRGB_8u_C3R", {255, 255, 255}, {255, 0, 0}, tail | all},
        {"ippiHSVToRGB_8u_C3R", {99, 0, 140}, {140, 140, 140}, both | all},
        {"ippiRGBToHLS_8u_C3R", {90, 90, 90}, {0, 90, 0}, both | all},
        {"ippiRGBToHLS_8u_C3R", {0, 255, 0}, {85, 127, -1}, tail | all},
        {"ippiRGBToHLS_8u_C3R", {0, 0, 255}, {170, 127, -1}, tail | all},
        {"ippiRGBToHLS_8u_C3R", {255, 255, 255}, {0, 255, 0}, both | all},
        {"ippiRGBToHLS_8u_C3R", {255, 0, 0}, {0, 127, -1}, both | truncating},
        {"ippiRGBToHLS_8u_C3R", {255, 0, 0}, {0, 128, -1}, block | rounding},
        {"ippiHLSToRGB_8u_C3R", {0, 127, 255}, {254, 0, 0}, both | truncating},
        {"ippiHLSToRGB_8u_C3R", {43, 127, 255}, {251, 254, 0}, both | truncating},
        {"ippiHLSToRGB_8u_C3R", {0, 128, 255}, {254, 1, 1}, both | truncating},
        {"ippiHLSToRGB_8u_C3R", {0, 128, 128}, {191, 64, 64}, both | truncating},
        {"ippiHLSToRGB_8u_C3R", {200, 64, 200}, {84, 13, 114}, both | truncating},
        {"ippiHLSToRGB_8u_C3R", {255, 127, 255}, {254, 0, 0}, both | truncating},
        {"ippiHLSToRGB_8u_C3R", {0, 255, 255}, {255, 255, 255}, both | all},
        {"ippiHLSToRGB_8u_C3R", {100, 128, 0}, {128, 128, 128}, both | all},
    };
    for (Example const& e : examples) {
        if (!(e.where >> int(GetParam()) & 1)) continue;
        Conversion const& k =
            *std::find_if(std::begin(conversions), std::end(conversions),
                          [&](Conversion const& c) { return c.name == std::string(e.name); });
        Bytes src;
        for (int x = 0; x < 19; ++x) src.insert(src.end(), e.in.begin(), e.in.end());
        const Bytes got = convert(k, src, 19, 1);
        if (got.empty()) continue;
        for (int column : {0, 15, 16, 18}) {
            if (!(e.where & (column < 16 ? block : tail))) continue;
            for (int c = 0; c < 3; ++c)
                if (e.out[c] >= 0) {
                    EXPECT_EQ(got[k.outBytes * column + c], e.out[c])
                        << e.name << " of " << e.in[0] << "," << e.in[1] << "," << e.in[2]
                        << " at column " << column << " channel " << c;
                }
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
