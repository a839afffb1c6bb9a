// Three-byte pixels as single-precision planes, for the colour conversions that compute in
// floats: four pixels (12 bytes, nothing touched past them) to three vectors of four floats
// and back, eight at a time where the compilation has AVX, and the walk of one row as a
// vector block of whole groups and a scalar tail. Part of the vector layer: see simd.h.
#pragma once

#include "primitives/simd/channels.h"
#include "primitives/simd/floats.h"
#include "primitives/simd/region.h"

namespace nuv::prim::NUV_V::simd {

// Pixels as floats and integers back to pixels, at the width of a float lanes type: four
// pixels for Floats<16>, eight for Floats<32>.
inline void loadPixels(Floats<16>, Byte const* s, Floats<16>::F (&c)[3]) {
    Lanes<16>::V ints[3];
    splitFour(s, ints);
    for (int k = 0; k < 3; ++k) c[k] = Floats<16>::fromInts(ints[k]);
}
inline void storePixels(Floats<16>, Floats<16>::I const (&c)[3], Byte* d) {
    joinFour(c, d);
}

#if defined(__AVX__)
inline void loadPixels(Floats<32>, Byte const* s, Floats<32>::F (&c)[3]) {
    Lanes<16>::V low[3], high[3];
    splitFour(s, low);
    splitFour(s + 12, high);
    for (int k = 0; k < 3; ++k)
        c[k] = Floats<32>::fromInts(
            _mm256_insertf128_si256(_mm256_castsi128_si256(low[k]), high[k], 1));
}
inline void storePixels(Floats<32>, Floats<32>::I const (&c)[3], Byte* d) {
    Lanes<16>::V low[3], high[3];
    for (int k = 0; k < 3; ++k) {
        low[k] = _mm256_castsi256_si128(c[k]);
        high[k] = _mm256_extractf128_si256(c[k], 1);
    }
    joinFour(low, d);
    joinFour(high, d + 12);
}
#endif

// The whole conversion, checked as convertRows checks it: in each row the first
// width & ~(Group - 1) pixels go through `block(Floats<W>{}, src, dst)` (eight at a time where
// the generation has AVX, else four), the rest one by one through `tail(src, dst)`. There is
// no alignment lead-in: a pixel's path depends on its column only.
template <int Group, class Block, class Tail>
IppStatus convertInBlocks(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize size,
                          Block block, Tail tail) {
    static_assert(Group == 4 || Group == 8, "blocks are whole vectors of four floats");
    return convertRows(pSrc, srcStep, pDst, dstStep, size, [&](Byte const* s, Byte* d, int width) {
        const int blockEnd = width & ~(Group - 1);
        int x = 0;
#if defined(__AVX__)
        for (; x + 8 <= blockEnd; x += 8) block(Floats<32>{}, s + 3 * x, d + 3 * x);
#endif
        for (; x < blockEnd; x += 4) block(Floats<16>{}, s + 3 * x, d + 3 * x);
        for (; x < width; ++x) tail(s + 3 * x, d + 3 * x);
    });
}

}  // namespace nuv::prim::NUV_V::simd
