// Addition of two 8-bit regions with a power-of-two scale and saturation. The three-channel
// form is the one-channel form with rows three times as long: the operation knows no
// channels.
//
// The scale factor picks one row rule, and every generation must give the bytes of the
// scalar rule exactly; the vector forms below are built from operations whose results are
// exact on bytes, never from approximations that happen to agree on most inputs.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using Length = Offset;
// l9 works on 32 bytes at a time; the older generations, e9 included (its integer
// arithmetic is 128 bits wide), on 16.
using L = IntLanes;
using V = L::V;

// ---- the row rules ----------------------------------------------------------------------
//
// Each rule has a scalar form (heads, tails and short rows) and a vector form; `minVector`
// is the shortest row worth the vector loop, since a row must first be brought to an
// aligned destination by scalar steps. The saturating rules are cheap per byte and need a
// longer row to pay for that head.

// Factor 0: the saturated sum.
struct SaturatedSum {
    static constexpr Length minVector = 3 * L::width - 1;
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = a + b;
        return static_cast<Byte>(t > 255 ? 255 : t);
    }
    V vector(V a, V b) const { return L::addSaturated(a, b); }
};

// Factor 1: half the sum, a tie going to the even neighbour. The byte average rounds every
// tie up; where the sum is odd and that rounded-up value is odd too, the even neighbour is
// one below. This stays in bytes, with no widening.
struct HalfSum {
    static constexpr Length minVector = 2 * L::width - 1;
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = a + b;
        return static_cast<Byte>((t + ((t >> 1) & 1)) >> 1);
    }
    V vector(V a, V b) const {
        const V up = L::average(a, b);
        const V oddTieUp = L::bitAnd(L::bitAnd(L::bitXor(a, b), up), L::bytes(1));
        return L::subBytes(up, oddTieUp);
    }
};

// Factors 2 to 9: the sum shifted right by s, rounded to nearest with ties to even. The
// nine-bit sum plus the rounding term stays below 2^10, so 16-bit lanes hold it.
struct ScaledSum {
    static constexpr Length minVector = 2 * L::width - 1;
    explicit ScaledSum(int shift)
        : _shift(shift),
          _bias((1 << (shift - 1)) - 1),
          _count(Lanes<16>::fromInt(shift)),
          _biasWords(L::words((1 << (shift - 1)) - 1)),
          _oneWords(L::words(1)) {}
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = a + b;
        return static_cast<Byte>((t + _bias + ((t >> _shift) & 1)) >> _shift);
    }
    V words(V t) const {
        const V parity = L::bitAnd(L::shiftWordsRight(t, _count), _oneWords);
        return L::shiftWordsRight(L::addWords(L::addWords(t, _biasWords), parity), _count);
    }
    V vector(V a, V b) const {
        const V low = L::addWords(L::widenLow(a), L::widenLow(b));
        const V high = L::addWords(L::widenHigh(a), L::widenHigh(b));
        return L::narrow(words(low), words(high));
    }

    int _shift;
    unsigned _bias;
    Lanes<16>::V _count;
    V _biasWords;
    V _oneWords;
};

// Factors -1 to -7: the sum shifted left by k, saturated. Doubling a saturated byte with
// saturation k times gives min(t << k, 255) exactly: once a step saturates, every later one
// stays at 255, and before that no step has lost anything. No 16-bit lane is needed, and
// none can wrap to a negative number before the pack.
struct ShiftedSum {
    static constexpr Length minVector = 2 * L::width - 1;
    explicit ShiftedSum(int shift) : _shift(shift) {}
    Byte scalar(unsigned a, unsigned b) const {
        const unsigned t = (a + b) << _shift;
        return static_cast<Byte>(t > 255 ? 255 : t);
    }
    V vector(V a, V b) const {
        V sum = L::addSaturated(a, b);
        for (int i = 0; i < _shift; ++i) sum = L::addSaturated(sum, sum);
        return sum;
    }

    int _shift;
};

// Factor -8 and below: any non-zero byte shifted by eight or more passes 255, so the result
// only says whether either source byte is non-zero.
struct AnyNonZero {
    static constexpr Length minVector = 3 * L::width - 1;
    Byte scalar(unsigned a, unsigned b) const { return static_cast<Byte>((a | b) != 0 ? 255 : 0); }
    V vector(V a, V b) const {
        // Equal to zero gives all ones; the complement is the answer.
        return L::bitXor(L::equal(L::bitOr(a, b), L::zero()), L::bytes(-1));
    }
};

// ---- one run ------------------------------------------------------------------------------

// The vector loop over whole vectors from an aligned destination, with each source loaded
// as its alignment allows. Two vectors a turn keep two independent chains in flight.
template <Align A1, Align A2, class Rule>
Length vectorLoop(Byte const* s1, Byte const* s2, Byte* d, Length n, Rule const& rule) {
    constexpr Length w = L::width;
    Length x = 0;
    for (; x + 2 * w <= n; x += 2 * w) {
        const V r0 = rule.vector(L::loadAs<A1>(s1 + x), L::loadAs<A2>(s2 + x));
        const V r1 = rule.vector(L::loadAs<A1>(s1 + x + w), L::loadAs<A2>(s2 + x + w));
        L::storeAligned(d + x, r0);
        L::storeAligned(d + x + w, r1);
    }
    for (; x + w <= n; x += w)
        L::storeAligned(d + x, rule.vector(L::loadAs<A1>(s1 + x), L::loadAs<A2>(s2 + x)));
    return x;
}

// Scalar steps up to an aligned destination, whole vectors, scalar steps for the rest. Each
// destination byte is written once, after both of its source bytes were read, so a
// destination that is one of the sources walks safely.
template <class Rule>
void addRun(Byte const* s1, Byte const* s2, Byte* d, Length n, Rule const& rule) {
    Length x = 0;
    if (n >= Rule::minVector) {
        const Length head = bytesToAlignment(d, L::width);
        for (; x < head; ++x) d[x] = rule.scalar(s1[x], s2[x]);
        const bool aligned1 = isAligned(s1 + x, L::width);
        const bool aligned2 = isAligned(s2 + x, L::width);
        if (aligned1 && aligned2) {
            x += vectorLoop<Align::aligned, Align::aligned>(s1 + x, s2 + x, d + x, n - x, rule);
        } else if (aligned1) {
            x += vectorLoop<Align::aligned, Align::unaligned>(s1 + x, s2 + x, d + x, n - x, rule);
        } else if (aligned2) {
            x += vectorLoop<Align::unaligned, Align::aligned>(s1 + x, s2 + x, d + x, n - x, rule);
        } else {
            x += vectorLoop<Align::unaligned, Align::unaligned>(s1 + x, s2 + x, d + x, n - x, rule);
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

}  // namespace

IppStatus ippiAdd_8u_C1RSfs(Ipp8u const* pSrc1, int src1Step, Ipp8u const* pSrc2, int src2Step,
                            Ipp8u* pDst, int dstStep, IppiSize roiSize, int scaleFactor) {
    // No step is tested: a zero step repeats a row, a negative one walks upward.
    const IppStatus status = firstFailure({nullCheck(pSrc1, pSrc2, pDst), sizeCheck(roiSize)});
    if (status != ippStsNoErr) return status;

    // A shift of ten or more leaves nothing of a nine-bit sum: the sources need not be read.
    if (scaleFactor > 9) return ippiSet_8u_C1R(0, pDst, dstStep, roiSize);

    // Rows that follow one another without a gap in all three regions are one run, so that a
    // narrow image does not pay the row set-up once per row; that run may pass 2 GiB.
    auto run = [&](auto worker) {
        forEachRun<Length>(
            roiSize.width, roiSize.height,
            [&](Length n, Byte const* s1, Byte const* s2, Byte* d) { worker(s1, s2, d, n); },
            plane(pSrc1, src1Step), plane(pSrc2, src2Step), plane(pDst, dstStep));
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
