// RGB to gray with weights of 9798, 19235 and 3736 in 1/32768 (they add up to 32769, and
// white still gives 255). The block truncates each weighted channel to 1/128 before the sum,
// the tail sums exactly: the two can differ by one, and which pixels are block pixels is
// part of the bytes (8-pixel blocks, or 32 and 16 in l9).
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

constexpr int kWeightR = 9798, kWeightG = 19235, kWeightB = 3736;

// l9 runs blocks of 32 and one of 16, the others blocks of 8.
constexpr int blockPixelsOf[generationCount] = {8, 8, 8, 8, 8, 16};
constexpr int kBlockAlign = ofThisGeneration(blockPixelsOf);

Byte grayTail(Byte const* s) {
    return static_cast<Byte>((s[0] * kWeightR + s[1] * kWeightG + s[2] * kWeightB + 16384) >> 15);
}

// The block's arithmetic for one pixel: (x * w) >> 8 per channel, the sum rounded to 1/128.
Byte grayBlockPixel(Byte const* s) {
    const int sum = ((s[0] * kWeightR) >> 8) + ((s[1] * kWeightG) >> 8) + ((s[2] * kWeightB) >> 8);
    const int gray = (sum + 64) >> 7;
    return static_cast<Byte>(gray > 255 ? 255 : gray);
}

using L = Lanes<16>;
using V = L::V;

// Each byte in the high half of a word, times the weight, high half of the product.
V weighted(V plane, bool high, int weight) {
    const V shifted =
        high ? L::interleaveHigh<8>(L::zero(), plane) : L::interleaveLow<8>(L::zero(), plane);
    return L::mulHighWordsUnsigned(shifted, L::words(weight));
}
V grayWords(Planes const& rgb, bool high) {
    V sum = L::addWordsSaturatedUnsigned(weighted(rgb.c[0], high, kWeightR),
                                         weighted(rgb.c[1], high, kWeightG));
    sum = L::addWordsSaturatedUnsigned(sum, weighted(rgb.c[2], high, kWeightB));
    return L::shiftWordsRight<7>(L::addWordsSaturatedUnsigned(sum, L::words(64)));
}
void grayBlock16(Byte const* s, Byte* d) {
    const Planes rgb = loadChannels(s);
    L::store(d, L::narrow(grayWords(rgb, false), grayWords(rgb, true)));
}

void grayRow(Byte const* s, Byte* d, int width) {
    const int block = width & ~(kBlockAlign - 1);
    int x = 0;
    for (; x + 16 <= block; x += 16) grayBlock16(s + 3 * x, d + x);
    for (; x < block; ++x) d[x] = grayBlockPixel(s + 3 * x);
    for (; x < width; ++x) d[x] = grayTail(s + 3 * x);
}

}  // namespace

IppStatus ippiRGBToGray_8u_C3C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                 IppiSize roiSize) {
    return convertRows(pSrc, srcStep, pDst, dstStep, roiSize, grayRow);
}

}  // namespace nuv::prim::NUV_V
