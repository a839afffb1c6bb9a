// RGB to HSV and back in single precision, every channel a full byte: hue 0..255 is the
// circle, and hue 255 counts as hue 0 on the way back. The forward direction divides by the
// processor's approximate reciprocal, never by a true division. A row's first width & ~3
// pixels run as a vector block and the rest as a scalar tail, and the two differ on purpose
// where maxima tie: the tail's later tests overwrite the earlier ones (blue over green over
// red), the block's masks prefer red, then green, then blue, except that green loses a tie
// with red. Both give the same hue in exact arithmetic, but the reciprocal's error falls on
// opposite sides of a rounding edge, so a tied pixel's hue depends on its column by one.
// l9's blocks fuse some products and sums, which moves last bits.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

constexpr float kHueScale = 42.5f;  // one hue sector in byte units
constexpr float kFull = 255.0f;
const float kInv60 = floatOfBits(0x3C888889);
const float kByteToDegrees = floatOfBits(0x3FB4B4B5);
const float kInv255 = floatOfBits(0x3B808081);

float largest(float a, float b, float c) {
    return std::max(std::max(a, b), c);
}
float smallest(float a, float b, float c) {
    return std::min(std::min(a, b), c);
}

// ---- RGB to HSV

void toHsvTail(Byte const* s, Byte* d) {
    const float r = s[0], g = s[1], b = s[2];
    const float v = largest(r, g, b), m = smallest(r, g, b), range = v - m;
    d[2] = static_cast<Byte>(v);
    if (v == 0 || range == 0) {
        d[1] = 0;
        d[0] = 0;
        return;
    }
    const float rv = reciprocal(v), rd = reciprocal(range);
    d[1] = static_cast<Byte>(roundToInt((rv * range) * kFull));
    const float cr = (v - r) * rd, cg = (v - g) * rd, cb = (v - b) * rd;
    float h = 0;
    if (v == r) h = cb - cg;
    if (v == g) h = (cr - cb) + 2.0f;
    if (v == b) h = (cg - cr) + 4.0f;
    h = h * kHueScale;
    if (h < 0) h = h + kFull;
    d[0] = static_cast<Byte>(roundToInt(h));
}

struct ToHsvBlock {
    template <class FL>
    void operator()(FL, Byte const* s, Byte* d) const {
        using F = typename FL::F;
        F c[3];
        loadPixels(FL{}, s, c);
        const F r = c[0], g = c[1], b = c[2];
        const F v = FL::max(FL::max(r, g), b), m = FL::min(FL::min(r, g), b);
        const F range = FL::sub(v, m);
        // Grays (and black) take 255 more in both reciprocals, which keeps them finite; their
        // S and H are cleared below.
        const F gray = FL::equal(range, FL::zero());
        const F lift = FL::bitAnd(gray, FL::fill(kFull));
        const F rv = FL::reciprocal(FL::add(v, lift)), rd = FL::reciprocal(FL::add(range, lift));
        const F sat = FL::mul(FL::mul(rv, range), FL::fill(kFull));
        const F green = FL::bitAndNot(FL::equal(g, v), FL::equal(r, v));
        const F blue = FL::bitAndNot(FL::equal(b, v), green);
#if defined(__FMA__)
        const F cg = FL::mul(FL::sub(v, g), rd);
        const F redTerm = FL::mulSub(rd, FL::sub(v, b), cg);
        const F greenTerm = FL::negMulAdd(rd, FL::sub(r, b), FL::fill(2.0f));
        const F blueTerm = FL::mulAdd(rd, FL::sub(r, g), FL::fill(4.0f));
#else
        const F cr = FL::mul(FL::sub(v, r), rd), cg = FL::mul(FL::sub(v, g), rd),
                cb = FL::mul(FL::sub(v, b), rd);
        const F redTerm = FL::sub(cb, cg);
        const F greenTerm = FL::add(FL::sub(cr, cb), FL::fill(2.0f));
        const F blueTerm = FL::add(FL::sub(cg, cr), FL::fill(4.0f));
#endif
        const F sector = FL::select(green, greenTerm, FL::select(blue, blueTerm, redTerm));
        const F hue = FL::mul(sector, FL::fill(kHueScale));
        // Only the red sector goes below zero; l9 wraps it with one rounding. Elsewhere the
        // wrap adds 255 below zero and 0 above, which leaves those hues as they are.
        const F below = FL::less(hue, FL::zero());
#if defined(__FMA__)
        const F wrapped = FL::mulAdd(sector, FL::fill(kHueScale), FL::fill(kFull));
        const F h = FL::select(below, wrapped, hue);
#else
        const F h = FL::add(hue, FL::bitAnd(below, FL::fill(kFull)));
#endif
        const typename FL::I out[3] = {FL::roundToInts(FL::bitAndNot(h, gray)),
                                       FL::roundToInts(FL::bitAndNot(sat, gray)),
                                       FL::roundToInts(v)};
        storePixels(FL{}, out, d);
    }
};

// ---- HSV to RGB

// The six sectors of the hue, R, G and B from v, p, q and t.
template <class T>
void bySector(int i, T v, T p, T q, T t, T (&out)[3]) {
    T const table[6][3] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
    for (int k = 0; k < 3; ++k) out[k] = table[i][k];
}

void toRgbTail(Byte const* s, Byte* d) {
    const int hue = s[0], sat = s[1];
    const Byte value = s[2];
    if (sat == 0) {
        d[0] = d[1] = d[2] = value;
        return;
    }
    const float v = value;
    const float x = hue == 255 ? 0.0f : static_cast<float>(hue);  // keeps h6 below 6
    const float h6 = (x * kInv60) * kByteToDegrees;
    const int i = truncateToInt(h6);
    const float f = h6 - static_cast<float>(i);
    const float vs = v * (static_cast<float>(sat) * kInv255);
    const float p = v - vs, fv = f * vs, q = v - fv, t = p + fv;
    int out[3];
    bySector(i, int{value}, roundToInt(p), roundToInt(q), roundToInt(t), out);
    for (int k = 0; k < 3; ++k) d[k] = static_cast<Byte>(out[k]);
}

struct ToRgbBlock {
    template <class FL>
    void operator()(FL, Byte const* s, Byte* d) const {
        using F = typename FL::F;
        F c[3];
        loadPixels(FL{}, s, c);
        const F hue = c[0], sat = c[1], v = c[2];
        const F x = FL::bitAndNot(hue, FL::equal(hue, FL::fill(255.0f)));
        const F h6 = FL::mul(FL::mul(x, FL::fill(kInv60)), FL::fill(kByteToDegrees));
        const F i = FL::fromInts(FL::truncateToInts(h6));
        // A saturation of 0 needs no mask of its own: p, q and t all come out as v.
#if defined(__FMA__)
        const F inv255 = FL::fill(kInv255), one = FL::fill(1.0f);
        const F f = FL::mulSub(FL::fill(kInv60 * kByteToDegrees), x, i);
        const F vs = FL::mul(FL::mul(inv255, v), sat);
        const F q = FL::negMulAdd(f, vs, v);
        const F p = FL::bitXor(FL::mul(FL::mulSub(inv255, sat, one), v), FL::fill(-0.0f));
        const F t = FL::mul(FL::mulAdd(sat, FL::mulSub(inv255, f, inv255), one), v);
#else
        const F f = FL::sub(h6, i);
        const F vs = FL::mul(v, FL::mul(sat, FL::fill(kInv255)));
        const F p = FL::sub(v, vs), fv = FL::mul(f, vs);
        const F q = FL::sub(v, fv), t = FL::add(p, fv);
#endif
        auto below = [&](float k) { return FL::less(i, FL::fill(k)); };
        const F red = FL::select(
            below(1), v,
            FL::select(below(2), q, FL::select(below(4), p, FL::select(below(5), t, v))));
        const F green =
            FL::select(below(1), t, FL::select(below(3), v, FL::select(below(4), q, p)));
        const F blue = FL::select(below(2), p, FL::select(below(3), t, FL::select(below(5), v, q)));
        const typename FL::I out[3] = {FL::roundToInts(red), FL::roundToInts(green),
                                       FL::roundToInts(blue)};
        storePixels(FL{}, out, d);
    }
};

}  // namespace

IppStatus ippiRGBToHSV_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize) {
    return convertInBlocks<4>(pSrc, srcStep, pDst, dstStep, roiSize, ToHsvBlock{}, toHsvTail);
}

IppStatus ippiHSVToRGB_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize) {
    return convertInBlocks<4>(pSrc, srcStep, pDst, dstStep, roiSize, ToRgbBlock{}, toRgbTail);
}

}  // namespace nuv::prim::NUV_V
