// RGB to video-range YCbCr and back, in fixed point. A row has a block part and a scalar
// tail with different fixed-point formats, so a pixel's bytes depend on its column; and the
// forward block of n8 and later floors where m7's block rounds. Those differences are the
// bytes of this family, kept exactly.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

constexpr bool kShuffles = NUV_GEN != Gen::m7;  // every later generation has SSSE3

int clampByte(int v) {
    return v < 0 ? 0 : v > 255 ? 255 : v;
}
int saturateWord(int v) {
    return v < -32768 ? -32768 : v > 32767 ? 32767 : v;
}

// ---- RGB to YCbCr

// The tail: one 16.16 sum per channel, rounded by its offset; the low byte is stored.
void toYCbCrTail(Byte const* s, Byte* d) {
    const int r = s[0], g = s[1], b = s[2];
    d[0] = static_cast<Byte>((r * 16843 + g * 33030 + b * 6423 + 0x108000) >> 16);
    d[1] = static_cast<Byte>((r * -9699 + g * -19071 + b * 28770 - 0x7F8000) >> 16);
    d[2] = static_cast<Byte>((r * 28770 + g * -24117 + b * -4653 - 0x7F8000) >> 16);
}

// m7's block: two partial sums, each shifted by 11 before they are added; rounds.
int m7Channel(int r, int g, int b, int wr, int wg, int wb, int offset) {
    return clampByte((((r * wr + g * wg) >> 11) + ((b * wb) >> 11) + offset) >> 4);
}
void toYCbCrBlockM7(Byte const* s, Byte* d) {
    const int r = s[0], g = s[1], b = s[2];
    d[0] = static_cast<Byte>(m7Channel(r, g, b, 8421, 16515, 3211, 264));
    d[1] = static_cast<Byte>(m7Channel(r, g, b, -4850, -9535, 14385, 2056));
    d[2] = static_cast<Byte>(m7Channel(r, g, b, 14385, -12059, -2327, 2056));
}

using L = Lanes<16>;
using V = L::V;

// m7's block, 16 pixels: the products in 32 bits, r and g summed in word pairs.
V m7Quarter(V rg, V b0, int wr, int wg, int wb, int offset) {
    const V partial = L::shiftIntsRightSigned<11>(L::mulAddPairs(rg, L::wordPairs(wr, wg)));
    const V blue = L::shiftIntsRightSigned<11>(L::mulAddPairs(b0, L::wordPairs(wb, 0)));
    return L::shiftIntsRightSigned<4>(L::addInts(L::addInts(partial, blue), L::ints(offset)));
}
V m7Plane(V const (&rg)[4], V const (&b0)[4], int wr, int wg, int wb, int offset) {
    V q[4];
    for (int i = 0; i < 4; ++i) q[i] = m7Quarter(rg[i], b0[i], wr, wg, wb, offset);
    return L::narrow(L::narrowInts(q[0], q[1]), L::narrowInts(q[2], q[3]));
}
void toYCbCrBlockM7x16(Byte const* s, Byte* d) {
    const Planes rgb = loadChannels(s);
    V rg[4], b0[4];
    for (int half = 0; half < 2; ++half) {
        const V r = half ? L::widenHigh(rgb.c[0]) : L::widenLow(rgb.c[0]);
        const V g = half ? L::widenHigh(rgb.c[1]) : L::widenLow(rgb.c[1]);
        const V b = half ? L::widenHigh(rgb.c[2]) : L::widenLow(rgb.c[2]);
        rg[2 * half] = L::interleaveLow<16>(r, g);
        rg[2 * half + 1] = L::interleaveHigh<16>(r, g);
        b0[2 * half] = L::interleaveLow<16>(b, L::zero());
        b0[2 * half + 1] = L::interleaveHigh<16>(b, L::zero());
    }
    const Planes ycc = {{m7Plane(rg, b0, 8421, 16515, 3211, 264),
                         m7Plane(rg, b0, -4850, -9535, 14385, 2056),
                         m7Plane(rg, b0, 14385, -12059, -2327, 2056)}};
    storeChannels(ycc, d);
}

#if defined(__SSSE3__)
// The later block, 16 pixels: rounded Q15 products of the channels scaled by 2^7, summed
// with an offset of 16 or 128 plus 2/64, shifted with the sign: it floors.

V q15(V x, int c) {
    return L::mulRoundedQ15(x, L::words(c));
}
// One half (8 pixels) of each channel as words scaled by 2^7.
struct Scaled {
    V r, g, b;
};
V channelWords(V plane, bool high) {
    return L::shiftWordsLeft<7>(high ? L::widenHigh(plane) : L::widenLow(plane));
}
void toYCbCrWords(Scaled const& x, V& y, V& cb, V& cr) {
    y = L::addWords(L::addWords(q15(x.r, 4211), q15(x.g, 8258)),
                    L::addWords(q15(x.b, 1606), L::words(1026)));
    cb = L::addWords(L::subWords(L::subWords(q15(x.b, 7193), q15(x.g, 4768)), q15(x.r, 2425)),
                     L::words(8194));
    cr = L::addWords(L::subWords(L::subWords(q15(x.r, 7193), q15(x.g, 6029)), q15(x.b, 1163)),
                     L::words(8194));
    y = L::shiftWordsRightSigned<6>(y);
    cb = L::shiftWordsRightSigned<6>(cb);
    cr = L::shiftWordsRightSigned<6>(cr);
}
void toYCbCrBlock16(Byte const* s, Byte* d) {
    const Planes rgb = loadChannels(s);
    V lo[3], hi[3];
    for (int half = 0; half < 2; ++half) {
        const Scaled x{channelWords(rgb.c[0], half), channelWords(rgb.c[1], half),
                       channelWords(rgb.c[2], half)};
        V* out = half ? hi : lo;
        toYCbCrWords(x, out[0], out[1], out[2]);
    }
    Planes ycc;
    for (int c = 0; c < 3; ++c) ycc.c[c] = L::narrow(lo[c], hi[c]);
    storeChannels(ycc, d);
}
#endif

void toYCbCrRow(Byte const* s, Byte* d, int width) {
    int x = 0;
    if constexpr (kShuffles) {
#if defined(__SSSE3__)
        for (; x + 16 <= width; x += 16) toYCbCrBlock16(s + 3 * x, d + 3 * x);
#endif
    } else {
        const int block = width & ~7;
        for (; x + 16 <= block; x += 16) toYCbCrBlockM7x16(s + 3 * x, d + 3 * x);
        for (; x < block; ++x) toYCbCrBlockM7(s + 3 * x, d + 3 * x);
    }
    for (; x < width; ++x) toYCbCrTail(s + 3 * x, d + 3 * x);
}

// ---- YCbCr to RGB

// The tail: 16.16 products, truncated, clamped.
void toRgbTail(Byte const* s, Byte* d) {
    const int cb = s[1] - 128, cr = s[2] - 128, yy = s[0] * 76284 - 1220544;
    d[0] = static_cast<Byte>(clampByte((cr * 104595 + yy) >> 16));
    d[1] = static_cast<Byte>(clampByte((cb * -25690 + yy + cr * -53281) >> 16));
    d[2] = static_cast<Byte>(clampByte((cb * 132186 + yy) >> 16));
}

// The block, one pixel: high halves of 16-bit products, each sum saturated to 16 bits, a
// rounding term of 8 in 1/16.
int mulHigh(int a, int c) {
    return (a * c) >> 16;
}
int rgbChannel(int y, int u, int v, int wr, int wb) {
    const int s = saturateWord(saturateWord(saturateWord(y + mulHigh(v, wr)) + mulHigh(u, wb)) + 8);
    return clampByte(s >> 4);
}
void toRgbBlockPixel(Byte const* s, Byte* d) {
    const int y = mulHigh((s[0] - 16) * 128, 9536), u = (s[1] - 128) * 128, v = (s[2] - 128) * 128;
    d[0] = static_cast<Byte>(rgbChannel(y, u, v, 13074, 0));
    d[1] = static_cast<Byte>(rgbChannel(y, u, v, -6660, -3203));
    d[2] = static_cast<Byte>(rgbChannel(y, u, v, 0, 16523));
}

V rgbWords(V y, V u, V v, int wr, int wb) {
    V s = L::addWordsSaturated(y, L::mulHighWords(v, L::words(wr)));
    s = L::addWordsSaturated(s, L::mulHighWords(u, L::words(wb)));
    s = L::addWordsSaturated(s, L::words(8));
    return L::shiftWordsRightSigned<4>(s);
}
V centred(V plane, bool high, int centre) {
    return L::shiftWordsLeft<7>(
        L::subWords(high ? L::widenHigh(plane) : L::widenLow(plane), L::words(centre)));
}
void toRgbBlock16(Byte const* s, Byte* d) {
    const Planes ycc = loadChannels(s);
    V lo[3], hi[3];
    for (int half = 0; half < 2; ++half) {
        const V y = L::mulHighWords(centred(ycc.c[0], half, 16), L::words(9536));
        const V u = centred(ycc.c[1], half, 128), v = centred(ycc.c[2], half, 128);
        V* out = half ? hi : lo;
        out[0] = rgbWords(y, u, v, 13074, 0);
        out[1] = rgbWords(y, u, v, -6660, -3203);
        out[2] = rgbWords(y, u, v, 0, 16523);
    }
    Planes rgb;
    for (int c = 0; c < 3; ++c) rgb.c[c] = L::narrow(lo[c], hi[c]);
    storeChannels(rgb, d);
}

// Blocks of 8 and one of 4 cover all but the last width & 3 pixels, in every generation.
void toRgbRow(Byte const* s, Byte* d, int width) {
    const int block = width & ~3;
    int x = 0;
    for (; x + 16 <= block; x += 16) toRgbBlock16(s + 3 * x, d + 3 * x);
    for (; x < block; ++x) toRgbBlockPixel(s + 3 * x, d + 3 * x);
    for (; x < width; ++x) toRgbTail(s + 3 * x, d + 3 * x);
}

}  // namespace

IppStatus ippiRGBToYCbCr_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize) {
    return convertRows(pSrc, srcStep, pDst, dstStep, roiSize, toYCbCrRow);
}

IppStatus ippiYCbCrToRGB_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize) {
    return convertRows(pSrc, srcStep, pDst, dstStep, roiSize, toRgbRow);
}

}  // namespace nuv::prim::NUV_V
