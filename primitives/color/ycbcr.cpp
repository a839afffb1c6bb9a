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
[[maybe_unused]] void toYCbCrBlockM7(Byte const* s, Byte* d) {
    const int r = s[0], g = s[1], b = s[2];
    d[0] = static_cast<Byte>(m7Channel(r, g, b, 8421, 16515, 3211, 264));
    d[1] = static_cast<Byte>(m7Channel(r, g, b, -4850, -9535, 14385, 2056));
    d[2] = static_cast<Byte>(m7Channel(r, g, b, 14385, -12059, -2327, 2056));
}

using L = Lanes<16>;
using V = L::V;

// 16 pixels as planes through Planes, or 32 pixels as two sets of planes joined into 32-byte
// lanes: the pixel moves stay 16 bytes wide, the arithmetic takes the wide lanes.
template <void (*Arithmetic)(V const (&)[3], V (&)[3])>
void block16(Byte const* s, Byte* d) {
    const Planes in = loadChannels(s);
    Planes out;
    Arithmetic(in.c, out.c);
    storeChannels(out, d);
}
// One half of a plane of bytes as words scaled by 2^7, less the centre first.
template <class WL>
typename WL::V centred(typename WL::V plane, bool high, int centre) {
    return WL::template shiftWordsLeft<7>(
        WL::subWords(high ? WL::widenHigh(plane) : WL::widenLow(plane), WL::words(centre)));
}

#if defined(__AVX2__)
using WideL = Lanes<32>;
template <void (*Arithmetic)(WideL::V const (&)[3], WideL::V (&)[3])>
void block32(Byte const* s, Byte* d) {
    Planes first = loadChannels(s), second = loadChannels(s + 48);
    WideL::V in[3], out[3];
    for (int c = 0; c < 3; ++c) in[c] = WideL::combine(first.c[c], second.c[c]);
    Arithmetic(in, out);
    for (int c = 0; c < 3; ++c) {
        first.c[c] = WideL::lowHalf(out[c]);
        second.c[c] = WideL::highHalf(out[c]);
    }
    storeChannels(first, d);
    storeChannels(second, d + 48);
}
#endif

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
[[maybe_unused]] void toYCbCrBlockM7x16(Byte const* s, Byte* d) {
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
// The later block: rounded Q15 products of the channels scaled by 2^7, summed with an offset
// of 16 or 128 plus 2/64, shifted with the sign: it floors. Written once over lanes of words,
// for 16 pixels in 16-byte lanes and, where AVX2 has them, 32 pixels in 32-byte lanes.

template <class WL>
typename WL::V q15(typename WL::V x, int c) {
    return WL::mulRoundedQ15(x, WL::words(c));
}
template <class WL>
void toYCbCrPlanes(typename WL::V const (&rgb)[3], typename WL::V (&ycc)[3]) {
    using W = typename WL::V;
    W out[2][3];
    for (int half = 0; half < 2; ++half) {
        const W r = centred<WL>(rgb[0], half, 0), g = centred<WL>(rgb[1], half, 0),
                b = centred<WL>(rgb[2], half, 0);
        const W y = WL::addWords(WL::addWords(q15<WL>(r, 4211), q15<WL>(g, 8258)),
                                 WL::addWords(q15<WL>(b, 1606), WL::words(1026)));
        const W cb = WL::addWords(
            WL::subWords(WL::subWords(q15<WL>(b, 7193), q15<WL>(g, 4768)), q15<WL>(r, 2425)),
            WL::words(8194));
        const W cr = WL::addWords(
            WL::subWords(WL::subWords(q15<WL>(r, 7193), q15<WL>(g, 6029)), q15<WL>(b, 1163)),
            WL::words(8194));
        out[half][0] = WL::template shiftWordsRightSigned<6>(y);
        out[half][1] = WL::template shiftWordsRightSigned<6>(cb);
        out[half][2] = WL::template shiftWordsRightSigned<6>(cr);
    }
    for (int c = 0; c < 3; ++c) ycc[c] = WL::narrow(out[0][c], out[1][c]);
}
#endif

void toYCbCrRow(Byte const* s, Byte* d, int width) {
    int x = 0;
    if constexpr (kShuffles) {
#if defined(__SSSE3__)
#if defined(__AVX2__)
        for (; x + 32 <= width; x += 32) block32<toYCbCrPlanes<WideL>>(s + 3 * x, d + 3 * x);
#endif
        for (; x + 16 <= width; x += 16) block16<toYCbCrPlanes<L>>(s + 3 * x, d + 3 * x);
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

template <class WL>
typename WL::V rgbWords(typename WL::V y, typename WL::V u, typename WL::V v, int wr, int wb) {
    typename WL::V s = WL::addWordsSaturated(y, WL::mulHighWords(v, WL::words(wr)));
    s = WL::addWordsSaturated(s, WL::mulHighWords(u, WL::words(wb)));
    s = WL::addWordsSaturated(s, WL::words(8));
    return WL::template shiftWordsRightSigned<4>(s);
}
template <class WL>
void toRgbPlanes(typename WL::V const (&ycc)[3], typename WL::V (&rgb)[3]) {
    using W = typename WL::V;
    W out[2][3];
    for (int half = 0; half < 2; ++half) {
        const W y = WL::mulHighWords(centred<WL>(ycc[0], half, 16), WL::words(9536));
        const W u = centred<WL>(ycc[1], half, 128), v = centred<WL>(ycc[2], half, 128);
        out[half][0] = rgbWords<WL>(y, u, v, 13074, 0);
        out[half][1] = rgbWords<WL>(y, u, v, -6660, -3203);
        out[half][2] = rgbWords<WL>(y, u, v, 0, 16523);
    }
    for (int c = 0; c < 3; ++c) rgb[c] = WL::narrow(out[0][c], out[1][c]);
}

// Blocks of 8 and one of 4 cover all but the last width & 3 pixels, in every generation.
void toRgbRow(Byte const* s, Byte* d, int width) {
    const int block = width & ~3;
    int x = 0;
#if defined(__AVX2__)
    for (; x + 32 <= block; x += 32) block32<toRgbPlanes<WideL>>(s + 3 * x, d + 3 * x);
#endif
    for (; x + 16 <= block; x += 16) block16<toRgbPlanes<L>>(s + 3 * x, d + 3 * x);
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
