// Three-byte pixels as single-precision planes, for the colour conversions that compute in
// floats: four pixels (12 bytes, nothing touched past them) to three vectors of four floats
// and back, eight at a time where the compilation has AVX, and the walk of one row as a
// vector block of whole groups and a scalar tail. Part of the vector layer: see simd.h.
#pragma once

#include "primitives/simd/floats.h"
#include "primitives/simd/lanes.h"
#include "primitives/simd/region.h"

namespace nuv::prim::NUV_V::simd {

namespace pixelMoves {

using L = Lanes<16>;

// 32-bit lanes a[i], a[j], b[k], b[l]: SSE2 has no 32-bit shuffle of two sources but the
// float one, which moves bits unchanged.
template <int I, int J, int K, int Lo>
L::V pick(L::V a, L::V b) {
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(Lo, K, J, I)));
}

}  // namespace pixelMoves

// Four pixels to one vector of 32-bit integers per channel.
inline void splitFour(Byte const* s, Lanes<16>::V (&c)[3]) {
    using L = Lanes<16>;
    using pixelMoves::pick;
    const L::V bytes = L::loadLow12(s);
#if defined(__SSSE3__)
    c[0] = _mm_shuffle_epi8(
        bytes, _mm_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1));
    c[1] = _mm_shuffle_epi8(
        bytes, _mm_setr_epi8(1, -1, -1, -1, 4, -1, -1, -1, 7, -1, -1, -1, 10, -1, -1, -1));
    c[2] = _mm_shuffle_epi8(
        bytes, _mm_setr_epi8(2, -1, -1, -1, 5, -1, -1, -1, 8, -1, -1, -1, 11, -1, -1, -1));
#else
    // Bytes 0-3, 4-7 and 8-11 as integers, then a transposition by lane picks.
    const L::V low = _mm_unpacklo_epi8(bytes, L::zero()),
               high = _mm_unpackhi_epi8(bytes, L::zero());
    const L::V d0 = _mm_unpacklo_epi16(low, L::zero());   // r0 g0 b0 r1
    const L::V d1 = _mm_unpackhi_epi16(low, L::zero());   // g1 b1 r2 g2
    const L::V d2 = _mm_unpacklo_epi16(high, L::zero());  // b2 r3 g3 b3
    c[0] = pick<0, 3, 0, 2>(d0, pick<2, 2, 1, 1>(d1, d2));
    c[1] = pick<0, 2, 0, 2>(pick<1, 1, 0, 0>(d0, d1), pick<3, 3, 2, 2>(d1, d2));
    c[2] = pick<0, 2, 0, 3>(pick<2, 2, 1, 1>(d0, d1), d2);
#endif
}

// One vector of 32-bit integers per channel to four pixels, each value saturated to 0..255.
inline void joinFour(Lanes<16>::V const (&c)[3], Byte* d) {
    using L = Lanes<16>;
    using pixelMoves::pick;
#if defined(__SSSE3__)
    const L::V planes = _mm_packus_epi16(_mm_packs_epi32(c[0], c[1]), _mm_packs_epi32(c[2], c[2]));
    L::storeLow12(d, _mm_shuffle_epi8(planes, _mm_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11,
                                                            -1, -1, -1, -1)));
#else
    const L::V d0 = pick<0, 2, 0, 2>(pick<0, 0, 0, 0>(c[0], c[1]), pick<0, 0, 1, 1>(c[2], c[0]));
    const L::V d1 = pick<0, 2, 0, 2>(pick<1, 1, 1, 1>(c[1], c[2]), pick<2, 2, 2, 2>(c[0], c[1]));
    const L::V d2 = pick<0, 2, 0, 2>(pick<2, 2, 3, 3>(c[2], c[0]), pick<3, 3, 3, 3>(c[1], c[2]));
    L::storeLow12(d, _mm_packus_epi16(_mm_packs_epi32(d0, d1), _mm_packs_epi32(d2, d2)));
#endif
}

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
