// HSV and HLS both ways through the shared sweep. The models compute one pixel in plain
// single precision with the processor's approximate reciprocal, in the form of each
// generation's block or tail; ties, grays and extremes run at block and tail columns, and
// the worked numbers pin the reference bytes.
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
int clampByte(int v) {
    return v < 0 ? 0 : v > 255 ? 255 : v;
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

using PixelModel = Pixel (*)(Generation, bool block, Pixel);
struct Conversion {
    char const* name;
    PixelModel model;
    int group;  // the first width & ~(group - 1) pixels of a row are block pixels
};
Conversion const conversions[] = {{"ippiRGBToHSV_8u_C3R", toHsv, 4},
                                  {"ippiHSVToRGB_8u_C3R", fromHsv, 4},
                                  {"ippiRGBToHLS_8u_C3R", toHls, 8},
                                  {"ippiHLSToRGB_8u_C3R", fromHls, 8}};

template <int K>
IppStatus rowModel(ModelInput const& in, Bytes& out) {
    Conversion const& k = conversions[K];
    const int w = in.size.width;
    Bytes const& s = in.sources[0];
    out.resize(s.size());
    for (std::size_t i = 0; i < s.size(); i += 3) {
        const bool block = int(i / 3 % w) < (w & ~(k.group - 1));
        const Pixel p = k.model(in.generation, block, {s[i], s[i + 1], s[i + 2]});
        for (int c = 0; c < 3; ++c) out[i + c] = std::uint8_t(p[c]);
    }
    return ippStsNoErr;
}

auto const unary = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size);
};

#define NUV_CASE(name)                                           \
#name, callOf(bodies::name, unary), 1, 3, 3, false, false, { \
        0                                                        \
    }
std::vector<SweepCase> const& cases() {
    static std::vector<SweepCase> const all = {
        {NUV_CASE(ippiRGBToHSV_8u_C3R), rowModel<0>, {}},
        {NUV_CASE(ippiHSVToRGB_8u_C3R), rowModel<1>, {}},
        {NUV_CASE(ippiRGBToHLS_8u_C3R), rowModel<2>, {}},
        {NUV_CASE(ippiHLSToRGB_8u_C3R), rowModel<3>, {}},
    };
    return all;
}
#undef NUV_CASE

class HsvHlsSweep : public PrimitiveSweep {
protected:
    // The bytes of one packed call of `width` x `height` pixels, or empty if the generation
    // has no body of `name` here.
    Bytes convert(char const* name, Bytes const& src, int width, int height) {
        const int slot = slotOf(GetParam(), name);
        if (slot < 0) return {};
        Bytes dst(src.size(), 0x5A);
        for (SweepCase const& c : cases())
            if (c.name == name) {
                const int step = 3 * width;
                EXPECT_EQ(
                    c.call(slot,
                           {src.data(), step, nullptr, 0, dst.data(), step, {width, height}, 0}),
                    ippStsNoErr);
            }
        return dst;
    }
};

TEST_P(HsvHlsSweep, RandomRegionsMatchTheModels) {
    std::mt19937 rng(3000 + static_cast<int>(GetParam()));
    if (sweepRandom(cases(), 40, rng) == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// Every pixel of the channel values below: ties of two and three maxima, grays, the ends of
// the range and hues at the sector edges, once all at block columns (rows of 8) and once
// all at tail columns (rows of 1).
TEST_P(HsvHlsSweep, TiesAndExtremesAtBlockAndTailColumns) {
    int const values[] = {0, 1, 42, 43, 127, 128, 170, 212, 213, 254, 255};
    Bytes src;
    for (int a : values)
        for (int b : values)
            for (int c : values) src.insert(src.end(), {Ipp8u(a), Ipp8u(b), Ipp8u(c)});
    src.resize(src.size() - src.size() % 24);  // whole rows of 8
    const int pixels = int(src.size() / 3);
    for (Conversion const& k : conversions)
        for (int width : {8, 1}) {
            const Bytes got = convert(k.name, src, width, pixels / width);
            if (got.empty()) continue;
            for (int i = 0; i < pixels; ++i) {
                const Pixel in = {src[3 * i], src[3 * i + 1], src[3 * i + 2]};
                const Pixel want = k.model(GetParam(), width == 8, in);
                const Pixel have = {got[3 * i], got[3 * i + 1], got[3 * i + 2]};
                ASSERT_EQ(have, want) << k.name << " width " << width << " pixel " << in[0] << ","
                                      << in[1] << "," << in[2];
            }
        }
}

// A row of 19 equal pixels: columns 0..15 are block columns of both families, 16..18 tail.
struct Example {
    char const* name;
    Pixel in, out;
    enum Where { both, tail, blockAndM7, blockAfterN8, m7 } where;  // -1: a byte left open
};

TEST_P(HsvHlsSweep, WorkedNumbers) {
    using E = Example;
    Example const examples[] = {
        {"ippiRGBToHSV_8u_C3R", {0, 0, 0}, {0, 0, 0}, E::both},
        {"ippiRGBToHSV_8u_C3R", {77, 77, 77}, {0, 0, 77}, E::both},
        {"ippiRGBToHSV_8u_C3R", {255, 0, 0}, {0, 255, 255}, E::both},
        {"ippiRGBToHSV_8u_C3R", {0, 255, 0}, {85, 255, 255}, E::both},
        {"ippiRGBToHSV_8u_C3R", {0, 0, 255}, {170, 255, 255}, E::both},
        {"ippiHSVToRGB_8u_C3R", {0, 255, 255}, {255, 0, 0}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {43, 255, 255}, {252, 255, 0}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {85, 255, 255}, {0, 255, 0}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {128, 255, 255}, {0, 252, 255}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {170, 255, 255}, {0, 0, 255}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {213, 255, 255}, {255, 0, 252}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {254, 255, 255}, {255, 0, 6}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {255, 255, 255}, {255, 0, 0}, E::tail},
        {"ippiHSVToRGB_8u_C3R", {99, 0, 140}, {140, 140, 140}, E::both},
        {"ippiRGBToHLS_8u_C3R", {90, 90, 90}, {0, 90, 0}, E::both},
        {"ippiRGBToHLS_8u_C3R", {0, 255, 0}, {85, 127, -1}, E::tail},
        {"ippiRGBToHLS_8u_C3R", {0, 0, 255}, {170, 127, -1}, E::tail},
        {"ippiRGBToHLS_8u_C3R", {255, 255, 255}, {0, 255, 0}, E::both},
        {"ippiRGBToHLS_8u_C3R", {255, 0, 0}, {0, 127, -1}, E::tail},
        {"ippiRGBToHLS_8u_C3R", {255, 0, 0}, {0, 127, -1}, E::blockAndM7},
        {"ippiRGBToHLS_8u_C3R", {255, 0, 0}, {0, 128, -1}, E::blockAfterN8},
        {"ippiHLSToRGB_8u_C3R", {0, 127, 255}, {254, 0, 0}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {85, 127, 255}, {0, 254, 0}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {170, 127, 255}, {0, 0, 254}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {43, 127, 255}, {251, 254, 0}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {0, 128, 255}, {254, 1, 1}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {0, 128, 128}, {191, 64, 64}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {200, 64, 200}, {84, 13, 114}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {255, 127, 255}, {254, 0, 0}, E::m7},
        {"ippiHLSToRGB_8u_C3R", {0, 255, 255}, {255, 255, 255}, E::both},
        {"ippiHLSToRGB_8u_C3R", {0, 0, 255}, {0, 0, 0}, E::both},
        {"ippiHLSToRGB_8u_C3R", {100, 128, 0}, {128, 128, 128}, E::both},
    };
    const bool truncates = !roundsLikeY8(GetParam());
    for (Example const& e : examples) {
        Bytes src;
        for (int x = 0; x < 19; ++x) src.insert(src.end(), e.in.begin(), e.in.end());
        const Bytes got = convert(e.name, src, 19, 1);
        if (got.empty()) continue;
        const bool checksBlock =
            e.where == E::both ||
            (truncates ? e.where == E::blockAndM7 || e.where == E::m7 : e.where == E::blockAfterN8);
        const bool checksTail =
            e.where == E::both || e.where == E::tail || (e.where == E::m7 && truncates);
        for (int column : {0, 15, 16, 18}) {
            if (column < 16 ? !checksBlock : !checksTail) continue;
            Pixel have = {got[3 * column], got[3 * column + 1], got[3 * column + 2]};
            for (int c = 0; c < 3; ++c)
                if (e.out[c] < 0) have[c] = -1;
            EXPECT_EQ(have, e.out) << e.name << " of " << e.in[0] << "," << e.in[1] << ","
                                   << e.in[2] << " at column " << column;
        }
    }
}

// Pointers, then the size; steps are never refused.
TEST_P(HsvHlsSweep, RefusedCalls) {
    for (SweepCase const& c : cases())
        sweepRefusals(c, {{true, false, {8, 4}, 0, ippStsNullPtrErr},
                          {false, true, {0, 4}, 0, ippStsNullPtrErr},
                          {false, false, {0, 4}, 0, ippStsSizeErr},
                          {false, false, {8, -1}, 0, ippStsSizeErr}});
}

NUV_SWEEP_GENERATIONS(HsvHlsSweep);

}  // namespace
