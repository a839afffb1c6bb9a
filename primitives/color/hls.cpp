// RGB to HLS and back in single precision; an HLS pixel is H, L, S, the hue computed in
// degrees and scaled to a byte. A row's first width & ~7 pixels run as a vector block and
// the rest as a scalar tail, and the bytes of the two differ by design:
//   forward, the tail refines both reciprocals by a Newton step where the block takes them
//   raw; m7 and n8 truncate everywhere, y8 and later round in the block;
//   backward, m7 and n8 compute block and tail alike and truncate; y8 and later round in the
//   block and divide truly in the tail, which truncates.
// l9 fuses products and sums in its blocks and the two forms of m2 in its backward tail.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

const float kHueOut = floatOfBits(0x3F355555);  // 255 / 360
const float kHueIn = floatOfBits(0x3FB4B4B5);   // 360 / 255
const float kInv255 = floatOfBits(0x3B808081);
const float kInv60 = floatOfBits(0x3C888889);

// m7 and n8 truncate; y8, e9 and l9 round in the blocks and divide truly in the backward tail.
constexpr bool kRounds = NUV_GEN != Gen::m7 && NUV_GEN != Gen::n8;

// ---- RGB to HLS

// A reciprocal refined by one Newton step.
float refinedReciprocal(float x) {
    const float r = reciprocal(x);
    return (r + r) - ((x * r) * r);
}

void toHlsTail(Byte const* s, Byte* d) {
    const float r = s[0], g = s[1], b = s[2];
    const float v = std::max(std::max(r, g), b), m = std::min(std::min(r, g), b);
    const float range = v - m, sum = m + v, lightness = sum * 0.5f;
    d[1] = static_cast<Byte>(truncateToInt(lightness));  // pure red has L 127
    if (range == 0) {
        d[2] = 0;
        d[0] = 0;
        return;
    }
    const float den = lightness <= 127.5f ? sum : 510.0f - sum;
    const float rn = refinedReciprocal(den), qn = refinedReciprocal(range);
    const float saturation = (range * rn) * 255.0f;
    float h;
    if (v == r) {
        h = ((g - b) * 60.0f) * qn;
    } else if (v == g) {
        h = ((b - r) * 60.0f) * qn + 120.0f;
    } else {
        h = ((r - g) * 60.0f) * qn + 240.0f;
    }
    if (h < 0) h = h + 360.0f;
    d[0] = static_cast<Byte>(truncateToInt(h * kHueOut));
    d[2] = static_cast<Byte>(truncateToInt(saturation));
}

template <class FL>
typename FL::I toBytes(typename FL::F x) {
    if constexpr (kRounds) {
        return FL::roundToInts(x);
    } else {
        return FL::truncateToInts(x);
    }
}

struct ToHlsBlock {
    template <class FL>
    void operator()(FL, Byte const* s, Byte* d) const {
        using F = typename FL::F;
        auto k = [](float value) { return FL::fill(value); };
        F c[3];
        loadPixels(FL{}, s, c);
        const F r = c[0], g = c[1], b = c[2];
        const F v = FL::max(FL::max(r, g), b), m = FL::min(FL::min(r, g), b);
        const F range = FL::sub(v, m), sum = FL::add(m, v), lightness = FL::mul(sum, k(0.5f));
        // Grays add 0.5 to the sum and the range before the reciprocals, which keeps them
        // finite; their S and H are cleared below.
        const F gray = FL::equal(range, FL::zero());
        const F lift = FL::bitAnd(gray, k(0.5f));
        const F liftedSum = FL::add(sum, lift);
        const F den = FL::select(FL::lessOrEqual(lightness, k(127.5f)), liftedSum,
                                 FL::sub(k(510.0f), liftedSum));
        const F saturation = FL::mul(FL::mul(FL::reciprocal(den), range), k(255.0f));
        // The branches as in the tail: red if R is the maximum, then green, then blue.
        const F red = FL::equal(r, v);
        const F green = FL::bitAndNot(FL::equal(g, v), red);
        const F rg = FL::sub(r, g), gb = FL::sub(g, b), br = FL::sub(b, r);
        F hue, wrapped;  // only the red branch goes below zero, so the wrap is red's
        if constexpr (kRounds) {
            const F rd = FL::bitAndNot(FL::mul(FL::reciprocal(range), k(60.0f)), gray);
            const F redHue = FL::mul(gb, rd);
#if defined(__FMA__)
            const F greenHue = FL::mulAdd(br, rd, k(120.0f)),
                    blueHue = FL::mulAdd(rg, rd, k(240.0f));
            wrapped = FL::mulAdd(gb, rd, k(360.0f));
#else
            const F greenHue = FL::add(FL::mul(br, rd), k(120.0f));
            const F blueHue = FL::add(FL::mul(rg, rd), k(240.0f));
            wrapped = FL::add(redHue, k(360.0f));
#endif
            hue = FL::select(red, redHue, FL::select(green, greenHue, blueHue));
        } else {
            const F rq = FL::reciprocal(FL::add(range, lift));
            const F n = FL::mul(FL::select(red, gb, FL::select(green, br, rg)), k(60.0f));
            const F bias = FL::select(red, FL::zero(), FL::select(green, k(120.0f), k(240.0f)));
            hue = FL::add(FL::mul(n, rq), bias);
            wrapped = FL::add(hue, k(360.0f));
        }
        hue = FL::mul(FL::select(FL::less(hue, FL::zero()), wrapped, hue), k(kHueOut));
        const typename FL::I out[3] = {toBytes<FL>(FL::bitAndNot(hue, gray)),
                                       toBytes<FL>(lightness),
                                       toBytes<FL>(FL::bitAndNot(saturation, gray))};
        storePixels(FL{}, out, d);
    }
};

// ---- HLS to RGB

// The hue positions of R, G and B for a hue h in degrees.
template <class T>
void positions(T h, T (&x)[3]) {
    x[0] = h + 120;
    if (x[0] > 360) x[0] = x[0] - 360;
    x[1] = h;
    x[2] = h - 120;
    if (x[2] < 0) x[2] = x[2] + 360;
}

// m7 and n8, block and tail alike: multiplications by constants, truncation.
void toRgbByConstants(Byte const* s, Byte* d) {
    const float sat = s[2] * kInv255, h = s[0] * kHueIn, l = s[1] * kInv255;
    if (sat == 0) {
        d[0] = d[1] = d[2] = s[1];
        return;
    }
    const float ls = l * sat;
    const float m2 = l > 0.5f ? (l + sat) - ls : l + ls;
    const float m1 = (l * 2.0f) - m2, range = m2 - m1;
    float x[3];
    positions(h, x);
    for (int k = 0; k < 3; ++k) {
        float f;
        if (x[k] < 60) {
            f = ((x[k] * kInv60) * range) + m1;
        } else if (x[k] < 180) {
            f = m2;
        } else if (x[k] < 240) {
            f = (((240.0f - x[k]) * kInv60) * range) + m1;
        } else {
            f = m1;
        }
        const int byte = truncateToInt(f * 255.0f);
        d[k] = static_cast<Byte>(byte < 0 ? 0 : byte > 255 ? 255 : byte);
    }
}

// y8 and later, the tail: true divisions; the low byte of the truncation is stored.
void toRgbByDivision(Byte const* s, Byte* d) {
    const float sat = s[2] / 255.0f, h = (s[0] * 360.0f) / 255.0f, l = s[1] / 255.0f;
    float m2 = l, m1 = l;
    if (sat != 0) {
#if defined(__FMA__)
        m2 = l <= 0.5f ? mulAdd(sat, l, l) : mulAdd(-sat, l, l + sat);
#else
        m2 = l <= 0.5f ? (sat + 1.0f) * l : (l + sat) - (sat * l);
#endif
        m1 = (l + l) - m2;
    }
    float x[3];
    positions(h, x);
    for (int k = 0; k < 3; ++k) {
        float f;
        if (x[k] < 60) {
            f = (((m2 - m1) * x[k]) / 60.0f) + m1;
        } else if (x[k] < 180) {
            f = m2;
        } else if (x[k] < 240) {
            f = (((m2 - m1) * (240.0f - x[k])) / 60.0f) + m1;
        } else {
            f = m1;
        }
        d[k] = static_cast<Byte>(truncateToInt(f * 255.0f));
    }
}

struct ToRgbBlock {
    template <class FL>
    void operator()(FL, Byte const* s, Byte* d) const {
        using F = typename FL::F;
        auto k = [](float value) { return FL::fill(value); };
        F c[3];
        loadPixels(FL{}, s, c);
        const F h = FL::mul(c[0], k(kHueIn)), l = FL::mul(c[1], k(kInv255));
        const F sat = FL::mul(c[2], k(kInv255));
        const F light = FL::greater(l, k(0.5f));
        F m2;
        if constexpr (kRounds) {
#if defined(__FMA__)
            m2 = FL::select(light, FL::add(l, FL::negMulAdd(l, sat, sat)), FL::mulAdd(l, sat, l));
#else
            const F ls = FL::mul(l, sat);
            m2 = FL::select(light, FL::add(l, FL::sub(sat, ls)), FL::add(l, ls));
#endif
        } else {
            const F ls = FL::mul(l, sat);
            m2 = FL::select(light, FL::sub(FL::add(l, sat), ls), FL::add(l, ls));
        }
        const F m1 = FL::sub(FL::add(l, l), m2);
        const F range = FL::sub(m2, m1);
        // f(x) rises over 0..60, holds m2 to 180, falls to 240 and holds m1 after.
        auto ramp = [&](F x) {
            if constexpr (kRounds) {
#if defined(__FMA__)
                return FL::mulAdd(FL::mul(x, range), k(kInv60), m1);
#else
                return FL::add(FL::mul(FL::mul(x, range), k(kInv60)), m1);
#endif
            } else {
                return FL::add(FL::mul(FL::mul(x, k(kInv60)), range), m1);
            }
        };
        const F hr = FL::add(h, k(120.0f)), hb = FL::sub(h, k(120.0f));
        F const x[3] = {FL::select(FL::greater(hr, k(360.0f)), FL::sub(hr, k(360.0f)), hr), h,
                        FL::select(FL::less(hb, FL::zero()), FL::add(hb, k(360.0f)), hb)};
        const F gray = FL::equal(sat, FL::zero());
        typename FL::I out[3];
        for (int ch = 0; ch < 3; ++ch) {
            const F f = FL::select(FL::less(x[ch], k(60.0f)), ramp(x[ch]),
                                   FL::select(FL::less(x[ch], k(180.0f)), m2,
                                              FL::select(FL::less(x[ch], k(240.0f)),
                                                         ramp(FL::sub(k(240.0f), x[ch])), m1)));
            // A gray is its lightness byte in m7 and n8, the lightness scaled back in the others.
            const F scaled =
                FL::select(gray, kRounds ? FL::mul(l, k(255.0f)) : c[1], FL::mul(f, k(255.0f)));
            out[ch] = toBytes<FL>(scaled);
        }
        storePixels(FL{}, out, d);
    }
};

}  // namespace

IppStatus ippiRGBToHLS_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize) {
    return convertInBlocks<8>(pSrc, srcStep, pDst, dstStep, roiSize, ToHlsBlock{}, toHlsTail);
}

IppStatus ippiHLSToRGB_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize) {
    return convertInBlocks<8>(pSrc, srcStep, pDst, dstStep, roiSize, ToRgbBlock{},
                              kRounds ? toRgbByDivision : toRgbByConstants);
}

}  // namespace nuv::prim::NUV_V
