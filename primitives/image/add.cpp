// Addition of two 8-bit regions with a power-of-two scale and saturation. The three-channel
// form is the one-channel form with rows three times as long: the operation knows no
// channels.
//
// The scale factor picks one row rule, and every generation must give the bytes of the
// scalar rule exactly; the vector forms below are built from operations whose results are
// exact on bytes, never from approximations that happen to agree on most inputs.
#include "primitives/dispatch/variant.h"

#include <cstddef>
#include <cstdint>

namespace nuv::prim::NUV_V {

namespace {

using Byte = Ipp8u;
using Length = std::ptrdiff_t;

// ---- vector lanes of this generation ----------------------------------------------------
//
// l9 works on 32 bytes at a time; the older generations, e9 included (its integer
// arithmetic is 128 bits wide), on 16. Every helper lives in this generation's namespace,
// so no wide instruction can leak into an older generation's unit through the linker.

#if defined(__AVX2__)
struct Lanes {
    using V = __m256i;
    static constexpr int width = 32;

    static V load(Byte const* p) { return _mm256_loadu_si256(reinterpret_cast<V const*>(p)); }
    static V loadAligned(Byte const* p) { return _mm256_load_si256(reinterpret_cast<V const*>(p)); }
    static void storeAligned(Byte* p, V v) { _mm256_store_si256(reinterpret_cast<V*>(p), v); }

    static V zero() { return _mm256_setzero_si256(); }
    static V bytes(int value) { return _mm256_set1_epi8(static_cast<char>(value)); }
    static V words(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }
    static V bitAnd(V a, V b) { return _mm256_and_si256(a, b); }
    static V bitOr(V a, V b) { return _mm256_or_si256(a, b); }
    static V bitXor(V a, V b) { return _mm256_xor_si256(a, b); }
    static V addSaturated(V a, V b) { return _mm256_adds_epu8(a, b); }
    static V subBytes(V a, V b) { return _mm256_sub_epi8(a, b); }
    static V average(V a, V b) { return _mm256_avg_epu8(a, b); }
    static V equal(V a, V b) { return _mm256_cmpeq_epi8(a, b); }
    // Widening and narrowing work within each 128-bit half; done in pairs they put every
    // byte back where it came from.
    static V widenLow(V a) { return _mm256_unpacklo_epi8(a, zero()); }
    static V widenHigh(V a) { return _mm256_unpackhi_epi8(a, zero()); }
    static V narrow(V low, V high) { return _mm256_packus_epi16(low, high); }
    static V addWords(V a, V b) { return _mm256_add_epi16(a, b); }
    static V shiftWords(V a, __m128i count) { return _mm256_srl_epi16(a, count); }
};
#else
struct Lanes {
    using V = __m128i;
    static constexpr int width = 16;

    static V load(Byte const* p) { return _mm_loadu_si128(reinterpret_cast<V const*>(p)); }
    static V loadAligned(Byte const* p) { return _mm_load_si128(reinterpret_cast<V const*>(p)); }
    static void storeAligned(Byte* p, V v) { _mm_store_si128(reinterpret_cast<V*>(p), v); }

    static V zero() { return _mm_setzero_si128(); }
    static V bytes(int value) { return _mm_set1_epi8(static_cast<char>(value)); }
    static V words(int value) { return _mm_set1_epi16(static_cast<short>(value)); }
    static V bitAnd(V a, V b) { return _mm_and_si128(a, b); }
    static V bitOr(V a, V b) { return _mm_or_si128(a, b); }
    static V bitXor(V a, V b) { return _mm_xor_si128(a, b); }
    static V addSaturated(V a, V b) { return _mm_adds_epu8(a, b); }
    static V subBytes(V a, V b) { return _mm_sub_epi8(a, b); }
    static V average(V a, V b) { return _mm_avg_epu8(a, b); }
    static V equal(V a, V b) { return _mm_cmpeq_epi8(a, b); }
    static V widenLow(V a) { return _mm_unpacklo_epi8(a, zero()); }
    static V widenHigh(V a) { return _mm_unpackhi_epi8(a, zero()); }
    static V narrow(V low, V high) { return _mm_packus_epi16(low, high); }
    static V addWords(V a, V b) { return _mm_add_epi16(a, b); }
    static V shiftWords(V a, __m128i count) { return _mm_srl_epi16(a, count); }
};
#endif

// Only l9 may use 32-byte integer lanes; every other generation's processors lack them.
static_assert((NUV_GEN == Gen::l9) == (Lanes::width == 32), "vector width of the wrong generation");

using V = Lanes::V;

// ---- the row rules ----------------------------------------------------------------------
//
// Each rule has a scalar form (heads, tails and short rows) and a vector form; `minVector`
// is the shortest row worth the vector loop, since a row must first be brought to an
// aligned destination by scalar steps. The saturating rules are cheap per byte and need a
// longer row to pay for that head.

// Factor 0: the saturated sum.
struct SaturatedSum {
    static constexpr Length minVector = 3 * Lanes::width - 1;
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = a + b;
        return static_cast<Byte>(t > 255 ? 255 : t);
    }
    V vector(V a, V b) const { return Lanes::addSaturated(a, b); }
};

// Factor 1: half the sum, a tie going to the even neighbour. The byte average rounds every
// tie up; where the sum is odd and that rounded-up value is odd too, the even neighbour is
// one below. This stays in bytes, with no widening.
struct HalfSum {
    static constexpr Length minVector = 2 * Lanes::width - 1;
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = a + b;
        return static_cast<Byte>((t + ((t >> 1) & 1)) >> 1);
    }
    V vector(V a, V b) const {
        const V up = Lanes::average(a, b);
        const V oddTieUp = Lanes::bitAnd(Lanes::bitAnd(Lanes::bitXor(a, b), up), Lanes::bytes(1));
        return Lanes::subBytes(up, oddTieUp);
    }
};

// Factors 2 to 9: the sum shifted right by s, rounded to nearest with ties to even. The
// nine-bit sum plus the rounding term stays below 2^10, so 16-bit lanes hold it.
struct ScaledSum {
    static constexpr Length minVector = 2 * Lanes::width - 1;
    explicit ScaledSum(int shift)
        : _shift(shift),
          _bias((1 << (shift - 1)) - 1),
          _count(_mm_cvtsi32_si128(shift)),
          _biasWords(Lanes::words((1 << (shift - 1)) - 1)),
          _oneWords(Lanes::words(1)) {}
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = a + b;
        return static_cast<Byte>((t + _bias + ((t >> _shift) & 1)) >> _shift);
    }
    V words(V t) const {
        const V parity = Lanes::bitAnd(Lanes::shiftWords(t, _count), _oneWords);
        return Lanes::shiftWords(Lanes::addWords(Lanes::addWords(t, _biasWords), parity), _count);
    }
    V vector(V a, V b) const {
        const V low = Lanes::addWords(Lanes::widenLow(a), Lanes::widenLow(b));
        const V high = Lanes::addWords(Lanes::widenHigh(a), Lanes::widenHigh(b));
        return Lanes::narrow(words(low), words(high));
    }

    int _shift;
    unsigned _bias;
    __m128i _count;
    V _biasWords;
    V _oneWords;
};

// Factors -1 to -7: the sum shifted left by k, saturated. Doubling a saturated byte with
// saturation k times gives min(t << k, 255) exactly: once a step saturates, every later one
// stays at 255, and before that no step has lost anything. No 16-bit lane is needed, and
// none can wrap to a negative number before the pack.
struct ShiftedSum {
    static constexpr Length minVector = 2 * Lanes::width - 1;
    explicit ShiftedSum(int shift) : _shift(shift) {}
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = (a + b) << _shift;
        return static_cast<Byte>(t > 255 ? 255 : t);
    }
    V vector(V a, V b) const {
        V sum = Lanes::addSaturated(a, b);
        for (int i = 0; i < _shift; ++i) sum = Lanes::addSaturated(sum, sum);
        return sum;
    }

    int _shift;
};

// Factor -8 and below: any non-zero byte shifted by eight or more passes 255, so the result
// only says whether either source byte is non-zero.
struct AnyNonZero {
    static constexpr Length minVector = 3 * Lanes::width - 1;
    Byte scalar(unsigned a, unsigned b) const { return static_cast<Byte>((a | b) != 0 ? 255 : 0); }
    V vector(V a, V b) const {
        // Equal to zero gives all ones; the complement is the answer.
        return Lanes::bitXor(Lanes::equal(Lanes::bitOr(a, b), Lanes::zero()), Lanes::bytes(-1));
    }
};

// ---- one run ------------------------------------------------------------------------------

inline bool isAligned(void const* p) {
    return (reinterpret_cast<std::uintptr_t>(p) & (Lanes::width - 1)) == 0;
}

template <bool Aligned>
inline V loadAs(Byte const* p) {
    if constexpr (Aligned) {
        return Lanes::loadAligned(p);
    } else {
        return Lanes::load(p);
    }
}

// The vector loop over whole vectors from an aligned destination, with each source loaded
// as its alignment allows. Two vectors a turn keep two independent chains in flight.
template <bool Aligned1, bool Aligned2, class Rule>
Length vectorLoop(Byte const* s1, Byte const* s2, Byte* d, Length n, Rule const& rule) {
    constexpr Length w = Lanes::width;
    Length x = 0;
    for (; x + 2 * w <= n; x += 2 * w) {
        const V r0 = rule.vector(loadAs<Aligned1>(s1 + x), loadAs<Aligned2>(s2 + x));
        const V r1 = rule.vector(loadAs<Aligned1>(s1 + x + w), loadAs<Aligned2>(s2 + x + w));
        Lanes::storeAligned(d + x, r0);
        Lanes::storeAligned(d + x + w, r1);
    }
    for (; x + w <= n; x += w)
        Lanes::storeAligned(d + x, rule.vector(loadAs<Aligned1>(s1 + x), loadAs<Aligned2>(s2 + x)));
    return x;
}

// Scalar steps up to an aligned destination, whole vectors, scalar steps for the rest. Each
// destination byte is written once, after both of its source bytes were read, so a
// destination that is one of the sources walks safely.
template <class Rule>
void addRun(Byte const* s1, Byte const* s2, Byte* d, Length n, Rule const& rule) {
    Length x = 0;
    if (n >= Rule::minVector) {
        const Length head =
            static_cast<Length>((0 - reinterpret_cast<std::uintptr_t>(d)) & (Lanes::width - 1));
        for (; x < head; ++x) d[x] = rule.scalar(s1[x], s2[x]);
        const bool aligned1 = isAligned(s1 + x);
        const bool aligned2 = isAligned(s2 + x);
        if (aligned1 && aligned2) {
            x += vectorLoop<true, true>(s1 + x, s2 + x, d + x, n - x, rule);
        } else if (aligned1) {
            x += vectorLoop<true, false>(s1 + x, s2 + x, d + x, n - x, rule);
        } else if (aligned2) {
            x += vectorLoop<false, true>(s1 + x, s2 + x, d + x, n - x, rule);
        } else {
            x += vectorLoop<false, false>(s1 + x, s2 + x, d + x, n - x, rule);
        }
    }
    for (; x < n; ++x) d[x] = rule.scalar(s1[x], s2[x]);
}

// ---- the row workers, one per row of the factor table ----------------------------------------

void ownsAdd_8u(Byte const* s1, Byte const* s2, Byte* d, Length n) {
    addRun(s1, s2, d, n, SaturatedSum{});
}

void ownsAdd_8u_1Sfs(Byte const* s1, Byte const* s2, Byte* d, Length n) {
    addRun(s1, s2, d, n, HalfSum{});
}

void ownsAdd_8u_PosSfs(Byte const* s1, Byte const* s2, Byte* d, Length n, int shift) {
    addRun(s1, s2, d, n, ScaledSum(shift));
}

void ownsAdd_8u_NegSfs(Byte const* s1, Byte const* s2, Byte* d, Length n, int shift) {
    addRun(s1, s2, d, n, ShiftedSum(shift));
}

void ownsAdd_8u_Bound(Byte const* s1, Byte const* s2, Byte* d, Length n) {
    addRun(s1, s2, d, n, AnyNonZero{});
}

// Rows that follow one another without a gap in all three regions are one run, so that a
// narrow image does not pay the row set-up once per row.
template <class Worker>
void forEachRun(Byte const* s1, int step1, Byte const* s2, int step2, Byte* d, int dstStep,
                IppiSize size, Worker worker) {
    if (step1 == size.width && step2 == size.width && dstStep == size.width) {
        worker(s1, s2, d, static_cast<Length>(size.width) * size.height);
        return;
    }
    for (int y = 0; y < size.height; ++y, s1 += step1, s2 += step2, d += dstStep)
        worker(s1, s2, d, static_cast<Length>(size.width));
}

// Products of the region's dimensions are 32-bit, wrapping as in the rest of the layer.
inline int product32(int a, int b) {
    return static_cast<int>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

}  // namespace

IppStatus ippiAdd_8u_C1RSfs(Ipp8u const* pSrc1, int src1Step, Ipp8u const* pSrc2, int src2Step,
                            Ipp8u* pDst, int dstStep, IppiSize roiSize, int scaleFactor) {
    if (pSrc1 == nullptr || pSrc2 == nullptr || pDst == nullptr) return ippStsNullPtrErr;
    if (roiSize.height < 1 || roiSize.width < 1) return ippStsSizeErr;
    // No step is tested: a zero step repeats a row, a negative one walks upward.

    // A shift of ten or more leaves nothing of a nine-bit sum: the sources need not be read.
    if (scaleFactor > 9) return ippiSet_8u_C1R(0, pDst, dstStep, roiSize);

    auto run = [&](auto worker) {
        forEachRun(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize, worker);
    };
    if (scaleFactor == 0) {
        run(ownsAdd_8u);
    } else if (scaleFactor == 1) {
        run(ownsAdd_8u_1Sfs);
    } else if (scaleFactor > 1) {
        run([scaleFactor](Byte const* s1, Byte const* s2, Byte* d, Length n) {
            ownsAdd_8u_PosSfs(s1, s2, d, n, scaleFactor);
        });
    } else if (scaleFactor > -8) {
        run([shift = -scaleFactor](Byte const* s1, Byte const* s2, Byte* d, Length n) {
            ownsAdd_8u_NegSfs(s1, s2, d, n, shift);
        });
    } else {
        run(ownsAdd_8u_Bound);
    }
    return ippStsNoErr;
}

IppStatus ippiAdd_8u_C3RSfs(Ipp8u const* pSrc1, int src1Step, Ipp8u const* pSrc2, int src2Step,
                            Ipp8u* pDst, int dstStep, IppiSize roiSize, int scaleFactor) {
    // The width is refused before any pointer is looked at; the rest of the checks are the
    // one-channel form's.
    if (roiSize.width < 1) return ippStsSizeErr;
    return ippiAdd_8u_C1RSfs(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep,
                             {product32(3, roiSize.width), roiSize.height}, scaleFactor);
}

}  // namespace nuv::prim::NUV_V
