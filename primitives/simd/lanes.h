// Vector lanes of 16 and 32 bytes. `Lanes<16>` exists in every generation; `Lanes<32>` only
// where the compilation has AVX (moves and streaming) and its integer operations only where
// it has AVX2, so that a wide instruction can never be emitted into an older generation's
// unit. Operations that need SSSE3 or SSE4.1 appear only under those instruction sets.
//
// Kernels name a width once (`using L = Lanes<16>;` or `IntLanes`, the widest integer lanes
// of the generation) and are written over `L::V` and the static operations below. On 32-byte
// lanes the shuffles, interleaves, widening and narrowing work within each 16-byte half, as
// the instructions do; done in pairs they put every byte back where it came from.
#pragma once

#include "primitives/simd/scalar.h"

#include <immintrin.h>

namespace nuv::prim::NUV_V::simd {

enum class Align { unaligned, aligned };

template <int W>
struct Lanes;

template <>
struct Lanes<16> {
    using V = __m128i;
    static constexpr int width = 16;

    // ---- loads and stores
    static V load(void const* p) { return _mm_loadu_si128(static_cast<V const*>(p)); }
    static V loadAligned(void const* p) { return _mm_load_si128(static_cast<V const*>(p)); }
    template <Align A>
    static V loadAs(void const* p) {
        if constexpr (A == Align::aligned) {
            return loadAligned(p);
        } else {
            return load(p);
        }
    }
    // An unaligned load made for data that crosses cache lines (SSE3's lddqu).
    static V loadCrossing(void const* p) { return _mm_lddqu_si128(static_cast<V const*>(p)); }
    // Two 8-byte loads: from an address 8 bytes past a 16-byte boundary neither splits a
    // cache line.
    static V loadHalves(void const* p) {
        const V low = loadLow(p);
        return _mm_castpd_si128(
            _mm_loadh_pd(_mm_castsi128_pd(low), static_cast<double const*>(p) + 1));
    }
    // Partial: 8 bytes into the low half, the high half zero.
    static V loadLow(void const* p) { return _mm_loadl_epi64(static_cast<V const*>(p)); }
    static void store(void* p, V v) { _mm_storeu_si128(static_cast<V*>(p), v); }
    static void storeAligned(void* p, V v) { _mm_store_si128(static_cast<V*>(p), v); }
    template <Align A>
    static void storeAs(void* p, V v) {
        if constexpr (A == Align::aligned) {
            storeAligned(p, v);
        } else {
            store(p, v);
        }
    }
    // A non-temporal store to a 16-byte aligned address; end the streaming with
    // fenceStreamedStores().
    static void stream(void* p, V v) { _mm_stream_si128(static_cast<V*>(p), v); }
    // Partial: the low or the high 8 bytes.
    static void storeLow(void* p, V v) { _mm_storel_epi64(static_cast<V*>(p), v); }
    // movhps: its built-in form makes no claim of alignment, unlike the double store.
    static void storeHigh(void* p, V v) {
        _mm_storeh_pi(static_cast<__m64*>(p), _mm_castsi128_ps(v));
    }
    // Partial: exactly 12 bytes, for pixels at the edge of a region where 16 could reach past
    // it; the top four bytes of a load are zero.
    static V loadLow12(void const* p) {
        return _mm_unpacklo_epi64(loadLow(p),
                                  fromInt(loadBytes<4>(static_cast<Byte const*>(p) + 8)));
    }
    static void storeLow12(void* p, V v) {
        storeLow(p, v);
        storeBytes<4>(static_cast<Byte*>(p) + 8,
                      static_cast<std::uint32_t>(lowInt(_mm_srli_si128(v, 8))));
    }

    // ---- constants and scalars
    static V zero() { return _mm_setzero_si128(); }
    static V bytes(int value) { return _mm_set1_epi8(static_cast<char>(value)); }
    static V words(int value) { return _mm_set1_epi16(static_cast<short>(value)); }
    static V fromInt(int value) { return _mm_cvtsi32_si128(value); }
    static int lowInt(V v) { return _mm_cvtsi128_si32(v); }

    // ---- bitwise
    static V bitAnd(V a, V b) { return _mm_and_si128(a, b); }
    static V bitOr(V a, V b) { return _mm_or_si128(a, b); }
    static V bitXor(V a, V b) { return _mm_xor_si128(a, b); }
    // a & ~b
    static V bitAndNot(V a, V b) { return _mm_andnot_si128(b, a); }

    // ---- byte and word arithmetic
    static V addSaturated(V a, V b) { return _mm_adds_epu8(a, b); }
    static V subSaturated(V a, V b) { return _mm_subs_epu8(a, b); }
    static V addBytes(V a, V b) { return _mm_add_epi8(a, b); }
    static V subBytes(V a, V b) { return _mm_sub_epi8(a, b); }
    // (a + b + 1) >> 1 per unsigned byte.
    static V average(V a, V b) { return _mm_avg_epu8(a, b); }
    static V minBytes(V a, V b) { return _mm_min_epu8(a, b); }
    static V maxBytes(V a, V b) { return _mm_max_epu8(a, b); }
    // Sums of each eight bytes into the two 64-bit halves (no overflow is possible).
    static V sumBytesByEights(V a) { return _mm_sad_epu8(a, zero()); }
    static V addQuads(V a, V b) { return _mm_add_epi64(a, b); }
    static std::uint64_t sumOfQuads(V a) {
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(a)) +
               static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(a, a)));
    }
    // The smallest and the largest of the 16 bytes.
    static Byte smallestByte(V a) {
        a = _mm_min_epu8(a, _mm_srli_si128(a, 8));
        a = _mm_min_epu8(a, _mm_srli_si128(a, 4));
        a = _mm_min_epu8(a, _mm_srli_si128(a, 2));
        return static_cast<Byte>(lowInt(_mm_min_epu8(a, _mm_srli_si128(a, 1))));
    }
    static Byte largestByte(V a) {
        a = _mm_max_epu8(a, _mm_srli_si128(a, 8));
        a = _mm_max_epu8(a, _mm_srli_si128(a, 4));
        a = _mm_max_epu8(a, _mm_srli_si128(a, 2));
        return static_cast<Byte>(lowInt(_mm_max_epu8(a, _mm_srli_si128(a, 1))));
    }
    // Whether any byte of a compare's mask is set.
    static bool any(V mask) { return _mm_movemask_epi8(mask) != 0; }
    // The top bit of each byte, byte 0 in bit 0.
    static int byteMask(V mask) { return _mm_movemask_epi8(mask); }
    static V addWords(V a, V b) { return _mm_add_epi16(a, b); }
    static V subWords(V a, V b) { return _mm_sub_epi16(a, b); }
    static V addWordsSaturated(V a, V b) { return _mm_adds_epi16(a, b); }
    static V addWordsSaturatedUnsigned(V a, V b) { return _mm_adds_epu16(a, b); }
    static V subWordsSaturatedUnsigned(V a, V b) { return _mm_subs_epu16(a, b); }
    // The high 16 bits of the 32-bit products of words, signed or unsigned.
    static V mulHighWords(V a, V b) { return _mm_mulhi_epi16(a, b); }
    static V mulHighWordsUnsigned(V a, V b) { return _mm_mulhi_epu16(a, b); }
    // Words shifted right with their sign (floors).
    template <int N>
    static V shiftWordsRightSigned(V a) {
        return _mm_srai_epi16(a, N);
    }
    // Pairs of signed words multiplied and summed into 32-bit integers: a0*b0 + a1*b1, ...
    static V mulAddPairs(V a, V b) { return _mm_madd_epi16(a, b); }
    // The word pair (low, high) in every 32-bit lane.
    static V wordPairs(int low, int high) {
        return _mm_set1_epi32(static_cast<int>((static_cast<unsigned>(high) << 16) |
                                               (static_cast<unsigned>(low) & 0xFFFFu)));
    }
    static V ints(int value) { return _mm_set1_epi32(value); }
    static V addInts(V a, V b) { return _mm_add_epi32(a, b); }
    // Signed 32-bit compare: all ones where a > b.
    static V greaterInts(V a, V b) { return _mm_cmpgt_epi32(a, b); }
    // 32-bit integers shifted right with their sign (floors).
    template <int N>
    static V shiftIntsRightSigned(V a) {
        return _mm_srai_epi32(a, N);
    }
    // Signed 32-bit integers to signed words with saturation: low's four, then high's.
    static V narrowInts(V low, V high) { return _mm_packs_epi32(low, high); }
    static V shiftWordsRight(V a, V count) { return _mm_srl_epi16(a, count); }
    template <int N>
    static V shiftWordsRight(V a) {
        return _mm_srli_epi16(a, N);
    }
    template <int N>
    static V shiftWordsLeft(V a) {
        return _mm_slli_epi16(a, N);
    }
    // Whole-register shifts by N bytes, zeros shifted in.
    template <int N>
    static V shiftBytesRight(V a) {
        return _mm_srli_si128(a, N);
    }
    template <int N>
    static V shiftBytesLeft(V a) {
        return _mm_slli_si128(a, N);
    }

    // ---- compares: all ones where true
    static V equal(V a, V b) { return _mm_cmpeq_epi8(a, b); }
    static V lessSigned(V a, V b) { return _mm_cmplt_epi8(a, b); }
    static V greaterSigned(V a, V b) { return _mm_cmpgt_epi8(a, b); }

    // ---- widening and narrowing of unsigned bytes
    static V widenLow(V a) { return _mm_unpacklo_epi8(a, zero()); }
    static V widenHigh(V a) { return _mm_unpackhi_epi8(a, zero()); }
    // Signed words to unsigned bytes with saturation: low's eight, then high's.
    static V narrow(V low, V high) { return _mm_packus_epi16(low, high); }

    // ---- interleaves: elements of `Bits` bits taken in turn from a and b
    template <int Bits>
    static V interleaveLow(V a, V b) {
        if constexpr (Bits == 8) {
            return _mm_unpacklo_epi8(a, b);
        } else if constexpr (Bits == 16) {
            return _mm_unpacklo_epi16(a, b);
        } else if constexpr (Bits == 32) {
            return _mm_unpacklo_epi32(a, b);
        } else {
            static_assert(Bits == 64, "elements of 8, 16, 32 or 64 bits");
            return _mm_unpacklo_epi64(a, b);
        }
    }
    template <int Bits>
    static V interleaveHigh(V a, V b) {
        if constexpr (Bits == 8) {
            return _mm_unpackhi_epi8(a, b);
        } else if constexpr (Bits == 16) {
            return _mm_unpackhi_epi16(a, b);
        } else if constexpr (Bits == 32) {
            return _mm_unpackhi_epi32(a, b);
        } else {
            static_assert(Bits == 64, "elements of 8, 16, 32 or 64 bits");
            return _mm_unpackhi_epi64(a, b);
        }
    }

    // ---- reversal: the 16 bytes in the opposite order
    static V reverseBytes(V x) {
#if defined(__SSSE3__)
        return shuffle(x, _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
#else
        // No byte shuffle before SSSE3: the words of each half are reversed, the halves
        // swapped, and then the two bytes of every word.
        x = _mm_shufflelo_epi16(x, 0x1B);
        x = _mm_shufflehi_epi16(x, 0x1B);
        x = _mm_shuffle_epi32(x, 0x4E);
        return _mm_or_si128(_mm_slli_epi16(x, 8), _mm_srli_epi16(x, 8));
#endif
    }

#if defined(__SSSE3__)
    // ---- byte shuffles (SSSE3)
    // Byte i of the result is byte order[i] of x, or zero where order[i] has its top bit set.
    static V shuffle(V x, V order) {
        return _mm_shuffle_epi8(x, order);
    }
    static V constant(char const (&c)[16]) {
        return load(c);
    }
    // (a * b + 0x4000) >> 15 on signed words: the rounded high half of a Q15 product.
    static V mulRoundedQ15(V a, V b) {
        return _mm_mulhrs_epi16(a, b);
    }
    // The 16 bytes that start S bytes into lo and continue into hi.
    template <int S>
    static V alignRight(V hi, V lo) {
        return _mm_alignr_epi8(hi, lo, S);
    }
#endif

#if defined(__SSE4_1__)
    // Bytes of b where the mask byte has its top bit set, of a elsewhere (SSE4.1).
    static V select(V mask, V a, V b) {
        return _mm_blendv_epi8(a, b, mask);
    }
#endif
};

#if defined(__AVX__)
template <>
struct Lanes<32> {
    using V = __m256i;
    using Half = __m128i;
    static constexpr int width = 32;

    // ---- loads and stores (AVX)
    static V load(void const* p) { return _mm256_loadu_si256(static_cast<V const*>(p)); }
    static V loadAligned(void const* p) { return _mm256_load_si256(static_cast<V const*>(p)); }
    template <Align A>
    static V loadAs(void const* p) {
        if constexpr (A == Align::aligned) {
            return loadAligned(p);
        } else {
            return load(p);
        }
    }
    static void store(void* p, V v) { _mm256_storeu_si256(static_cast<V*>(p), v); }
    static void storeAligned(void* p, V v) { _mm256_store_si256(static_cast<V*>(p), v); }
    template <Align A>
    static void storeAs(void* p, V v) {
        if constexpr (A == Align::aligned) {
            storeAligned(p, v);
        } else {
            store(p, v);
        }
    }
    // A non-temporal store to a 32-byte aligned address; end the streaming with
    // fenceStreamedStores().
    static void stream(void* p, V v) { _mm256_stream_si256(static_cast<V*>(p), v); }
    static V zero() { return _mm256_setzero_si256(); }
    static Half lowHalf(V v) { return _mm256_castsi256_si128(v); }
    // Two 16-byte halves in one register, low first.
    // With AVX2 the integer insert keeps the value in the integer domain.
    static V combine(Half low, Half high) {
#if defined(__AVX2__)
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
#else
        return _mm256_setr_m128i(low, high);
#endif
    }

#if defined(__AVX2__)
    // ---- everything below works on integers and needs AVX2
    static V bytes(int value) {
        return _mm256_set1_epi8(static_cast<char>(value));
    }
    static V words(int value) {
        return _mm256_set1_epi16(static_cast<short>(value));
    }
    static V broadcast(Half h) {
        return _mm256_broadcastsi128_si256(h);
    }
    static Half highHalf(V v) {
        return _mm256_extracti128_si256(v, 1);
    }
    static V swapHalves(V v) {
        return permuteQuads<0x4E>(v);
    }
    // The low half of a under the high half of b.
    static V joinHalves(V a, V b) {
        return _mm256_blend_epi32(a, b, 0xF0);
    }
    // The high half of a under the low half of b.
    static V crossHalves(V a, V b) {
        return _mm256_permute2x128_si256(a, b, 0x21);
    }
    // The two low halves, a's first; the two high halves, a's first.
    static V lowHalves(V a, V b) {
        return _mm256_permute2x128_si256(a, b, 0x20);
    }
    static V highHalves(V a, V b) {
        return _mm256_permute2x128_si256(a, b, 0x31);
    }
    // Quadword i of the result is quadword (Order >> 2i) & 3 of v, across the halves.
    template <int Order>
    static V permuteQuads(V v) {
        return _mm256_permute4x64_epi64(v, Order);
    }
    static V dwords(int d0, int d1, int d2, int d3, int d4, int d5, int d6, int d7) {
        return _mm256_setr_epi32(d0, d1, d2, d3, d4, d5, d6, d7);
    }
    // Dword i of the result is dword order[i] of v, across the halves.
    static V permuteDwords(V v, V order) {
        return _mm256_permutevar8x32_epi32(v, order);
    }

    static V bitAnd(V a, V b) {
        return _mm256_and_si256(a, b);
    }
    static V bitOr(V a, V b) {
        return _mm256_or_si256(a, b);
    }
    static V bitXor(V a, V b) {
        return _mm256_xor_si256(a, b);
    }
    static V bitAndNot(V a, V b) {
        return _mm256_andnot_si256(b, a);
    }

    static V addSaturated(V a, V b) {
        return _mm256_adds_epu8(a, b);
    }
    static V subSaturated(V a, V b) {
        return _mm256_subs_epu8(a, b);
    }
    static V addBytes(V a, V b) {
        return _mm256_add_epi8(a, b);
    }
    static V subBytes(V a, V b) {
        return _mm256_sub_epi8(a, b);
    }
    static V average(V a, V b) {
        return _mm256_avg_epu8(a, b);
    }
    static V minBytes(V a, V b) {
        return _mm256_min_epu8(a, b);
    }
    static V maxBytes(V a, V b) {
        return _mm256_max_epu8(a, b);
    }
    static V sumBytesByEights(V a) {
        return _mm256_sad_epu8(a, zero());
    }
    static V addQuads(V a, V b) {
        return _mm256_add_epi64(a, b);
    }
    static std::uint64_t sumOfQuads(V a) {
        return Lanes<16>::sumOfQuads(_mm_add_epi64(lowHalf(a), highHalf(a)));
    }
    static Byte smallestByte(V a) {
        return Lanes<16>::smallestByte(_mm_min_epu8(lowHalf(a), highHalf(a)));
    }
    static Byte largestByte(V a) {
        return Lanes<16>::largestByte(_mm_max_epu8(lowHalf(a), highHalf(a)));
    }
    static bool any(V mask) {
        return _mm256_movemask_epi8(mask) != 0;
    }
    static V addWords(V a, V b) {
        return _mm256_add_epi16(a, b);
    }
    static V subWords(V a, V b) {
        return _mm256_sub_epi16(a, b);
    }
    static V addWordsSaturated(V a, V b) {
        return _mm256_adds_epi16(a, b);
    }
    static V shiftWordsRight(V a, __m128i count) {
        return _mm256_srl_epi16(a, count);
    }
    // The high 16 bits of the 32-bit products of signed words.
    static V mulHighWords(V a, V b) {
        return _mm256_mulhi_epi16(a, b);
    }
    // (a * b + 0x4000) >> 15 on signed words: the rounded high half of a Q15 product.
    static V mulRoundedQ15(V a, V b) {
        return _mm256_mulhrs_epi16(a, b);
    }
    // Words shifted right with their sign (floors).
    template <int N>
    static V shiftWordsRightSigned(V a) {
        return _mm256_srai_epi16(a, N);
    }
    template <int N>
    static V shiftWordsRight(V a) {
        return _mm256_srli_epi16(a, N);
    }
    template <int N>
    static V shiftWordsLeft(V a) {
        return _mm256_slli_epi16(a, N);
    }

    static V equal(V a, V b) {
        return _mm256_cmpeq_epi8(a, b);
    }
    static V greaterSigned(V a, V b) {
        return _mm256_cmpgt_epi8(a, b);
    }
    static V lessSigned(V a, V b) {
        return _mm256_cmpgt_epi8(b, a);
    }

    static V widenLow(V a) {
        return _mm256_unpacklo_epi8(a, zero());
    }
    static V widenHigh(V a) {
        return _mm256_unpackhi_epi8(a, zero());
    }
    static V narrow(V low, V high) {
        return _mm256_packus_epi16(low, high);
    }

    template <int Bits>
    static V interleaveLow(V a, V b) {
        if constexpr (Bits == 8) {
            return _mm256_unpacklo_epi8(a, b);
        } else if constexpr (Bits == 16) {
            return _mm256_unpacklo_epi16(a, b);
        } else if constexpr (Bits == 32) {
            return _mm256_unpacklo_epi32(a, b);
        } else {
            static_assert(Bits == 64, "elements of 8, 16, 32 or 64 bits");
            return _mm256_unpacklo_epi64(a, b);
        }
    }
    template <int Bits>
    static V interleaveHigh(V a, V b) {
        if constexpr (Bits == 8) {
            return _mm256_unpackhi_epi8(a, b);
        } else if constexpr (Bits == 16) {
            return _mm256_unpackhi_epi16(a, b);
        } else if constexpr (Bits == 32) {
            return _mm256_unpackhi_epi32(a, b);
        } else {
            static_assert(Bits == 64, "elements of 8, 16, 32 or 64 bits");
            return _mm256_unpackhi_epi64(a, b);
        }
    }

    // Byte shuffle within each half; `order` holds the same 16 indices in both halves or
    // different ones per half.
    static V shuffle(V x, V order) {
        return _mm256_shuffle_epi8(x, order);
    }
    static V constant(char const (&c)[32]) {
        return load(c);
    }
    template <int S>
    static V alignRight(V hi, V lo) {
        return _mm256_alignr_epi8(hi, lo, S);
    }
    // The 32 bytes in the opposite order: each half reversed, then the halves swapped.
    static V reverseBytes(V x) {
        const V order =
            broadcast(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
        return swapHalves(shuffle(x, order));
    }
    static V select(V mask, V a, V b) {
        return _mm256_blendv_epi8(a, b, mask);
    }
#endif
};
#endif

// The widest integer lanes of this generation: 32 bytes with AVX2 (l9), 16 bytes otherwise.
// e9's AVX has 32-byte moves but 16-byte integer arithmetic.
#if defined(__AVX2__)
using IntLanes = Lanes<32>;
#else
using IntLanes = Lanes<16>;
#endif
// The widest moves of this generation: 32 bytes with AVX (e9, l9).
#if defined(__AVX__)
using MoveLanes = Lanes<32>;
#else
using MoveLanes = Lanes<16>;
#endif

static_assert((NUV_GEN == Gen::l9) == (IntLanes::width == 32),
              "32-byte integer lanes belong to l9 alone");
static_assert((NUV_GEN == Gen::e9 || NUV_GEN == Gen::l9) == (MoveLanes::width == 32),
              "32-byte moves belong to the AVX generations alone");

// Streamed stores are weakly ordered: a region written by them must be fenced before the
// caller, or another thread, reads it.
inline void fenceStreamedStores() {
    _mm_sfence();
}

// One vector of width W copied from s to d, unaligned.
template <int W>
inline void moveVector(Byte const* s, Byte* d) {
    Lanes<W>::store(d, Lanes<W>::load(s));
}

}  // namespace nuv::prim::NUV_V::simd
