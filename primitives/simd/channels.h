// Interleaved three-channel pixels to planes and back: four pixels (12 bytes) to one vector
// of 32-bit integers per channel, and 16 pixels (48 bytes) to three planes of bytes, where
// plane c holds channel c of the 16 pixels in order. Byte shuffles do it where the
// compilation has SSSE3; before that, lane picks and packs. Part of the vector layer: see
// simd.h.
#pragma once

#include "primitives/simd/lanes.h"

#include <array>

namespace nuv::prim::NUV_V::simd {

struct Planes {
    Lanes<16>::V c[3];
};

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

#if defined(__SSSE3__)

namespace channelMasks {

using Mask = std::array<char, 16>;

// Byte i of the result takes byte `from(i)` of a 48-byte sequence if it lies in vector v.
template <class From>
constexpr Mask part(From from, int v) {
    Mask m{};
    for (int i = 0; i < 16; ++i) {
        const int q = from(i);
        m[i] = static_cast<char>(q / 16 == v ? q % 16 : 0x80);
    }
    return m;
}

// Plane c, from vector v of the interleaved pixels.
constexpr Mask split(int c, int v) {
    return part([c](int i) { return 3 * i + c; }, v);
}
// Interleaved vector j, from plane v: output byte 16j + i is plane (16j+i)%3, pixel (16j+i)/3.
constexpr Mask join(int j, int v) {
    Mask m{};
    for (int i = 0; i < 16; ++i) {
        const int p = 16 * j + i;
        m[i] = static_cast<char>(p % 3 == v ? p / 3 : 0x80);
    }
    return m;
}

using Table = std::array<std::array<Mask, 3>, 3>;
constexpr Table table(Mask (*of)(int, int)) {
    Table t{};
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) t[a][b] = of(a, b);
    return t;
}
inline constexpr Table splitTable = table(split);
inline constexpr Table joinTable = table(join);

}  // namespace channelMasks

inline Lanes<16>::V maskOf(channelMasks::Mask const& m) {
    return Lanes<16>::load(m.data());
}

// Three vectors of interleaved pixels to three planes.
inline Planes splitChannels(Lanes<16>::V const (&in)[3]) {
    using L = Lanes<16>;
    Planes out;
    for (int c = 0; c < 3; ++c) {
        L::V plane = L::zero();
        for (int v = 0; v < 3; ++v)
            plane = L::bitOr(plane, L::shuffle(in[v], maskOf(channelMasks::splitTable[c][v])));
        out.c[c] = plane;
    }
    return out;
}

// Three planes to three vectors of interleaved pixels.
inline void joinChannels(Planes const& planes, Lanes<16>::V (&out)[3]) {
    using L = Lanes<16>;
    for (int j = 0; j < 3; ++j) {
        L::V v = L::zero();
        for (int c = 0; c < 3; ++c)
            v = L::bitOr(v, L::shuffle(planes.c[c], maskOf(channelMasks::joinTable[j][c])));
        out[j] = v;
    }
}

#endif

// Four pixels of 32 bits whose top byte is zero, each 64-bit pair closed to six bytes: the
// second pixel of each pair moved down a byte, two zero bytes after each six.
inline Lanes<16>::V closePairs(Lanes<16>::V pixels) {
    using L = Lanes<16>;
    const L::V low32 = _mm_set_epi32(0, -1, 0, -1);
    return L::bitOr(L::bitAnd(pixels, low32), _mm_srli_epi64(L::bitAndNot(pixels, low32), 8));
}

// The same four pixels to 12 bytes at d and two zero bytes after them, in two 8-byte stores:
// for a caller whose next store covers those two bytes.
inline void storeThreeOfFourOver(Lanes<16>::V pixels, Byte* d) {
    const Lanes<16>::V pairs = closePairs(pixels);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d), pairs);
    _mm_storeh_pi(reinterpret_cast<__m64*>(d + 6), _mm_castsi128_ps(pairs));
}

// The same four pixels to exactly 12 bytes at d: the upper pair also moved down two bytes.
inline void storeThreeOfFour(Lanes<16>::V pixels, Byte* d) {
    using L = Lanes<16>;
    const L::V first6 = _mm_set_epi32(0, 0, 0xFFFF, -1);
    const L::V next6 = _mm_set_epi32(0, -1, static_cast<int>(0xFFFF0000u), 0);
    const L::V pairs = closePairs(pixels);
    L::storeLow12(
        d, L::bitOr(L::bitAnd(pairs, first6), L::bitAnd(L::shiftBytesRight<2>(pairs), next6)));
}

// 16 pixels from s to planes, and planes to 16 pixels at d.
inline Planes loadChannels(Byte const* s) {
    using L = Lanes<16>;
#if defined(__SSSE3__)
    const L::V in[3] = {L::load(s), L::load(s + 16), L::load(s + 32)};
    return splitChannels(in);
#else
    // The 48 bytes and 48 of padding are shuffled perfectly five times: vector j interleaved
    // byte by byte with vector j + 3. One shuffle sends byte n of the 96 to 2n mod 95, so
    // five send channel c of pixel p, byte 3p + c, to 32 * (3p + c) mod 95 = 32c + p: plane
    // c starts vector 2c.
    L::V v[6] = {L::load(s), L::load(s + 16), L::load(s + 32), L::zero(), L::zero(), L::zero()};
    for (int layer = 0; layer < 5; ++layer) {
        L::V next[6];
        for (int j = 0; j < 3; ++j) {
            next[2 * j] = L::interleaveLow<8>(v[j], v[j + 3]);
            next[2 * j + 1] = L::interleaveHigh<8>(v[j], v[j + 3]);
        }
        for (int j = 0; j < 6; ++j) v[j] = next[j];
    }
    return {{v[0], v[2], v[4]}};
#endif
}

inline void storeChannels(Planes const& p, Byte* d) {
    using L = Lanes<16>;
#if defined(__SSSE3__)
    L::V out[3];
    joinChannels(p, out);
    L::store(d, out[0]);
    L::store(d + 16, out[1]);
    L::store(d + 32, out[2]);
#else
    // Each pixel as a 32-bit r | g << 8 | b << 16, four at a time packed to 12 bytes.
    for (int half = 0; half < 2; ++half) {
        const L::V rg =
            half ? L::interleaveHigh<8>(p.c[0], p.c[1]) : L::interleaveLow<8>(p.c[0], p.c[1]);
        const L::V b = half ? L::widenHigh(p.c[2]) : L::widenLow(p.c[2]);
        storeThreeOfFour(L::interleaveLow<16>(rg, b), d + 24 * half);
        storeThreeOfFour(L::interleaveHigh<16>(rg, b), d + 24 * half + 12);
    }
#endif
}

}  // namespace nuv::prim::NUV_V::simd
