// Single-precision lanes: `Floats<16>` (four floats) in every generation, `Floats<32>` (eight)
// where the compilation has AVX. Every operation is one instruction rounded as the processor
// rounds (to nearest, ties to even, by default); nothing here fuses two operations unless
// its name says so, and the fused forms exist only where the compilation has FMA. The
// conversions to integers round by the processor's mode or truncate, as named.
//
// The scalar forms at the end are the same instructions on one float, for the scalar tails
// of rows: `reciprocal` is the processor's approximation, not 1/x.
#pragma once

#include "primitives/simd/scalar.h"

#include <immintrin.h>

namespace nuv::prim::NUV_V::simd {

template <int W>
struct Floats;

template <>
struct Floats<16> {
    using F = __m128;
    using I = __m128i;
    static constexpr int count = 4;

    static F zero() { return _mm_setzero_ps(); }
    static F fill(float value) { return _mm_set1_ps(value); }
    // A constant given by its bits, so that the value is exactly the one meant.
    static F ofBits(std::uint32_t bits) {
        return _mm_castsi128_ps(_mm_set1_epi32(static_cast<int>(bits)));
    }
    static F load(float const* p) { return _mm_loadu_ps(p); }
    static void store(float* p, F v) { _mm_storeu_ps(p, v); }

    static F fromInts(I v) { return _mm_cvtepi32_ps(v); }
    static I roundToInts(F v) { return _mm_cvtps_epi32(v); }
    static I truncateToInts(F v) { return _mm_cvttps_epi32(v); }
    static I asInts(F v) { return _mm_castps_si128(v); }
    static F ofInts(I v) { return _mm_castsi128_ps(v); }

    static F add(F a, F b) { return _mm_add_ps(a, b); }
    static F sub(F a, F b) { return _mm_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm_mul_ps(a, b); }
    static F div(F a, F b) { return _mm_div_ps(a, b); }
    static F min(F a, F b) { return _mm_min_ps(a, b); }
    static F max(F a, F b) { return _mm_max_ps(a, b); }
    // The approximate reciprocal, relative error at most 1.5 * 2^-12.
    static F reciprocal(F a) { return _mm_rcp_ps(a); }
#if defined(__FMA__)
    static F mulAdd(F a, F b, F c) {
        return _mm_fmadd_ps(a, b, c);
    }  // a * b + c
    static F mulSub(F a, F b, F c) {
        return _mm_fmsub_ps(a, b, c);
    }  // a * b - c
    static F negMulAdd(F a, F b, F c) {
        return _mm_fnmadd_ps(a, b, c);
    }  // c - a * b
#endif

    // Compares give all ones or all zeros per lane.
    static F equal(F a, F b) {
        return _mm_cmpeq_ps(a, b);
    }
    static F notEqual(F a, F b) {
        return _mm_cmpneq_ps(a, b);
    }
    static F less(F a, F b) {
        return _mm_cmplt_ps(a, b);
    }
    static F lessOrEqual(F a, F b) {
        return _mm_cmple_ps(a, b);
    }
    static F greater(F a, F b) {
        return _mm_cmpgt_ps(a, b);
    }

    static F bitAnd(F a, F b) {
        return _mm_and_ps(a, b);
    }
    static F bitOr(F a, F b) {
        return _mm_or_ps(a, b);
    }
    static F bitXor(F a, F b) {
        return _mm_xor_ps(a, b);
    }
    // a and not b.
    static F bitAndNot(F a, F b) {
        return _mm_andnot_ps(b, a);
    }
    // mask ? a : b, lane by lane, for masks from the compares.
    static F select(F mask, F a, F b) {
#if defined(__SSE4_1__)
        return _mm_blendv_ps(b, a, mask);
#else
        return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
#endif
    }
};

#if defined(__AVX__)
template <>
struct Floats<32> {
    using F = __m256;
    using I = __m256i;
    using Half = Floats<16>;
    static constexpr int count = 8;

    static F zero() { return _mm256_setzero_ps(); }
    static F fill(float value) { return _mm256_set1_ps(value); }
    static F ofBits(std::uint32_t bits) {
        return _mm256_castsi256_ps(_mm256_set1_epi32(static_cast<int>(bits)));
    }
    static F load(float const* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, F v) { _mm256_storeu_ps(p, v); }
    static F combine(Half::F low, Half::F high) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1);
    }
    static Half::F lowHalf(F v) { return _mm256_castps256_ps128(v); }
    static Half::F highHalf(F v) { return _mm256_extractf128_ps(v, 1); }

    static F fromInts(I v) { return _mm256_cvtepi32_ps(v); }
    static I roundToInts(F v) { return _mm256_cvtps_epi32(v); }
    static I truncateToInts(F v) { return _mm256_cvttps_epi32(v); }
    static I asInts(F v) { return _mm256_castps_si256(v); }
    static F ofInts(I v) { return _mm256_castsi256_ps(v); }

    static F add(F a, F b) { return _mm256_add_ps(a, b); }
    static F sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm256_mul_ps(a, b); }
    static F div(F a, F b) { return _mm256_div_ps(a, b); }
    static F min(F a, F b) { return _mm256_min_ps(a, b); }
    static F max(F a, F b) { return _mm256_max_ps(a, b); }
    static F reciprocal(F a) { return _mm256_rcp_ps(a); }
#if defined(__FMA__)
    static F mulAdd(F a, F b, F c) {
        return _mm256_fmadd_ps(a, b, c);
    }
    static F mulSub(F a, F b, F c) {
        return _mm256_fmsub_ps(a, b, c);
    }
    static F negMulAdd(F a, F b, F c) {
        return _mm256_fnmadd_ps(a, b, c);
    }
#endif

    static F equal(F a, F b) {
        return _mm256_cmp_ps(a, b, _CMP_EQ_OQ);
    }
    static F notEqual(F a, F b) {
        return _mm256_cmp_ps(a, b, _CMP_NEQ_UQ);
    }
    static F less(F a, F b) {
        return _mm256_cmp_ps(a, b, _CMP_LT_OS);
    }
    static F lessOrEqual(F a, F b) {
        return _mm256_cmp_ps(a, b, _CMP_LE_OS);
    }
    static F greater(F a, F b) {
        return _mm256_cmp_ps(a, b, _CMP_GT_OS);
    }

    static F bitAnd(F a, F b) {
        return _mm256_and_ps(a, b);
    }
    static F bitOr(F a, F b) {
        return _mm256_or_ps(a, b);
    }
    static F bitXor(F a, F b) {
        return _mm256_xor_ps(a, b);
    }
    static F bitAndNot(F a, F b) {
        return _mm256_andnot_ps(b, a);
    }
    static F select(F mask, F a, F b) {
        return _mm256_blendv_ps(b, a, mask);
    }
};
#endif

// ---- one float at a time, for scalar tails

// The same approximation as the vector form, lane for lane.
inline float reciprocal(float x) {
    return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x)));
}
// Round by the processor's mode (to nearest, ties to even, by default).
inline int roundToInt(float x) {
    return _mm_cvtss_si32(_mm_set_ss(x));
}
inline int truncateToInt(float x) {
    return _mm_cvttss_si32(_mm_set_ss(x));
}
inline float floatOfBits(std::uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}
#if defined(__FMA__)
inline float mulAdd(float a, float b, float c) {
    return _mm_cvtss_f32(_mm_fmadd_ss(_mm_set_ss(a), _mm_set_ss(b), _mm_set_ss(c)));
}
#endif

}  // namespace nuv::prim::NUV_V::simd
