// Thresholds against constant bounds, one bound (and value) per channel. A byte equal to a
// bound always stays. Three layers: the dispatched entries, the general forms they reduce to
// (each with its own order of checks, the mode tested first in the value forms and last in
// the plain ones), and three row workers:
//   clip     max(x, t) below, min(x, t) above: t stands in where x passes it;
//   value    a mask of where the saturated difference is 0 keeps x, v fills the rest;
//   band     two such masks, x >= tLT and x <= tGT; tGT >= tLT is checked first, so at most
//            one of the two values is ever chosen.
// A three-channel row is a run of bytes whose bounds repeat every three bytes: a vector at row
// byte o takes the bound pattern of phase o % 3. Every byte is read before it is written, so
// a source equal to the destination works in place.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

enum class Mode { below, above };  // IppCmpOp 0 and 4

bool knownMode(IppCmpOp mode) {
    return mode == ippCmpLess || mode == ippCmpGreater;
}
Mode modeOf(IppCmpOp mode) {
    return mode == ippCmpLess ? Mode::below : Mode::above;
}

// One constant per channel repeated along a row; bytes[phase + k] is the constant of row
// byte o + k where o % 3 == phase.
struct Cycle {
    Byte bytes[2 + 32];
    Cycle(Byte const* perChannel, int channels) {
        for (int i = 0; i < int(sizeof bytes); ++i)
            bytes[i] = perChannel[channels == 3 ? i % 3 : 0];
    }
};

// The vectors of a cycle at its three phases.
template <class L>
struct Pattern {
    typename L::V at[3];
    explicit Pattern(Cycle const& c) {
        for (int phase = 0; phase < 3; ++phase) at[phase] = L::load(c.bytes + phase);
    }
};

template <class L, Mode M>
struct Clip {
    Pattern<L> t;
    explicit Clip(Cycle const (&c)[1]) : t(c[0]) {}
    typename L::V operator()(typename L::V x, int phase) const {
        return M == Mode::below ? L::maxBytes(x, t.at[phase]) : L::minBytes(x, t.at[phase]);
    }
    static Byte byte(Byte x, Cycle const (&c)[1], int phase) {
        const Byte t = c[0].bytes[phase];
        return M == Mode::below ? (x < t ? t : x) : (x > t ? t : x);
    }
};

// Where x - t (above) or t - x (below) saturates to 0, x stays; elsewhere v.
template <class L>
typename L::V keeps(typename L::V x, typename L::V t, Mode m) {
    return L::equal(m == Mode::above ? L::subSaturated(x, t) : L::subSaturated(t, x), L::zero());
}

template <class L, Mode M>
struct Replace {
    Pattern<L> t, v;
    explicit Replace(Cycle const (&c)[2]) : t(c[0]), v(c[1]) {}
    typename L::V operator()(typename L::V x, int phase) const {
        const typename L::V keep = keeps<L>(x, t.at[phase], M);
        return L::bitOr(L::bitAnd(x, keep), L::bitAndNot(v.at[phase], keep));
    }
    static Byte byte(Byte x, Cycle const (&c)[2], int phase) {
        const Byte t = c[0].bytes[phase];
        return (M == Mode::below ? x < t : x > t) ? c[1].bytes[phase] : x;
    }
};

// The cycles are tLT, vLT, tGT, vGT.
template <class L>
struct Band {
    Pattern<L> tLT, vLT, tGT, vGT;
    explicit Band(Cycle const (&c)[4]) : tLT(c[0]), vLT(c[1]), tGT(c[2]), vGT(c[3]) {}
    typename L::V operator()(typename L::V x, int phase) const {
        const typename L::V m1 = keeps<L>(x, tLT.at[phase], Mode::below);
        const typename L::V m2 = keeps<L>(x, tGT.at[phase], Mode::above);
        return L::bitOr(L::bitAnd(L::bitAnd(x, m1), m2),
                        L::bitOr(L::bitAndNot(vLT.at[phase], m1), L::bitAndNot(vGT.at[phase], m2)));
    }
    static Byte byte(Byte x, Cycle const (&c)[4], int phase) {
        if (x < c[0].bytes[phase]) return c[1].bytes[phase];
        if (x > c[2].bytes[phase]) return c[3].bytes[phase];
        return x;
    }
};

// Bytes x0.. of a row of n bytes, whole vectors only; returns where it stopped.
template <class L, class Op>
int vectorPart(Byte const* s, Byte* d, int x, int n, int channels, Op const& op) {
    constexpr int W = L::width;
    const int advance = channels == 3 ? W % 3 : 0;
    int phase = channels == 3 ? x % 3 : 0;
    // Three vectors a pass return to the pass's first phase.
    for (; x + 3 * W <= n; x += 3 * W)
        for (int k = 0, p = phase; k < 3; ++k, p = (p + advance) % 3)
            L::store(d + x + k * W, op(L::load(s + x + k * W), p));
    for (; x + W <= n; x += W, phase = (phase + advance) % 3)
        L::store(d + x, op(L::load(s + x), phase));
    return x;
}

// The worker of every form: rows top to bottom, each as wide vectors, then 16-byte ones in
// generations with wider lanes, then single bytes.
template <template <class, Mode...> class Op, int K, Mode... M>
void thresholdRows(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize size,
                   int channels, Cycle const (&cycles)[K]) {
    const Op<IntLanes, M...> wide(cycles);
    const Op<Lanes<16>, M...> narrow(cycles);
    const int n = size.width * channels;
    forEachRow(
        n, size.height,
        [&](int, Byte const* s, Byte* d) {
            int x = vectorPart<IntLanes>(s, d, 0, n, channels, wide);
            if constexpr (IntLanes::width > 16)
                x = vectorPart<Lanes<16>>(s, d, x, n, channels, narrow);
            for (; x < n; ++x)
                d[x] = Op<Lanes<16>, M...>::byte(s[x], cycles, channels == 3 ? x % 3 : 0);
        },
        plane(pSrc, srcStep), plane(pDst, dstStep));
}

Check stepCheck(int srcStep, int dstStep) {
    return {srcStep < 1 || dstStep < 1, ippStsStepErr};
}

template <template <class, Mode> class Op, int K>
void byMode(Mode mode, Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize size,
            int channels, Cycle const (&cycles)[K]) {
    if (mode == Mode::below) {
        thresholdRows<Op, K, Mode::below>(pSrc, srcStep, pDst, dstStep, size, channels, cycles);
    } else {
        thresholdRows<Op, K, Mode::above>(pSrc, srcStep, pDst, dstStep, size, channels, cycles);
    }
}

// The byte workers, one- and three-channel: source, step, destination, step, size, then the
// bounds (upper before lower in the band workers).
void ownippiThreshold_8u_C1(Byte const* s, int ss, Byte* d, int ds, IppiSize size, Byte t, Mode m) {
    byMode<Clip>(m, s, ss, d, ds, size, 1, {Cycle(&t, 1)});
}
void ownippiThreshold_8u_C3(Byte const* s, int ss, Byte* d, int ds, IppiSize size, Byte const* t,
                            Mode m) {
    byMode<Clip>(m, s, ss, d, ds, size, 3, {Cycle(t, 3)});
}
void ownippiThreshold_V_8u_C1(Byte const* s, int ss, Byte* d, int ds, IppiSize size, Byte t, Byte v,
                              Mode m) {
    byMode<Replace>(m, s, ss, d, ds, size, 1, {Cycle(&t, 1), Cycle(&v, 1)});
}
void ownippiThreshold_V_8u_C3(Byte const* s, int ss, Byte* d, int ds, IppiSize size, Byte const* t,
                              Byte const* v, Mode m) {
    byMode<Replace>(m, s, ss, d, ds, size, 3, {Cycle(t, 3), Cycle(v, 3)});
}
void ownippiThreshold_GLV_8u_C1(Byte const* s, int ss, Byte* d, int ds, IppiSize size, Byte tGT,
                                Byte vGT, Byte tLT, Byte vLT) {
    thresholdRows<Band, 4>(s, ss, d, ds, size, 1,
                           {Cycle(&tLT, 1), Cycle(&vLT, 1), Cycle(&tGT, 1), Cycle(&vGT, 1)});
}
void ownippiThreshold_GLV_8u_C3(Byte const* s, int ss, Byte* d, int ds, IppiSize size,
                                Byte const* tGT, Byte const* vGT, Byte const* tLT,
                                Byte const* vLT) {
    thresholdRows<Band, 4>(s, ss, d, ds, size, 3,
                           {Cycle(tLT, 3), Cycle(vLT, 3), Cycle(tGT, 3), Cycle(vGT, 3)});
}

}  // namespace

// ---- the general forms

IppStatus ippiThreshold_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize, Ipp8u threshold, IppCmpOp ippCmpOp) {
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst),
                                           sizeCheck(roiSize),
                                           stepCheck(srcStep, dstStep),
                                           {!knownMode(ippCmpOp), ippStsNotSupportedModeErr}});
    if (status != ippStsNoErr) return status;
    ownippiThreshold_8u_C1(pSrc, srcStep, pDst, dstStep, roiSize, threshold, modeOf(ippCmpOp));
    return ippStsNoErr;
}

IppStatus ippiThreshold_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize, Ipp8u const threshold[3], IppCmpOp ippCmpOp) {
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst),
                                           sizeCheck(roiSize),
                                           stepCheck(srcStep, dstStep),
                                           nullCheck(threshold),
                                           {!knownMode(ippCmpOp), ippStsNotSupportedModeErr}});
    if (status != ippStsNoErr) return status;
    ownippiThreshold_8u_C3(pSrc, srcStep, pDst, dstStep, roiSize, threshold, modeOf(ippCmpOp));
    return ippStsNoErr;
}

IppStatus ippiThreshold_LT_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                  IppiSize roiSize, Ipp8u const threshold[3]) {
    return ippiThreshold_8u_C3R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, ippCmpLess);
}

IppStatus ippiThreshold_Val_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                   IppiSize roiSize, Ipp8u threshold, Ipp8u value,
                                   IppCmpOp ippCmpOp) {
    const IppStatus status = firstFailure({{!knownMode(ippCmpOp), ippStsNotSupportedModeErr},
                                           nullCheck(pSrc, pDst),
                                           sizeCheck(roiSize),
                                           stepCheck(srcStep, dstStep)});
    if (status != ippStsNoErr) return status;
    ownippiThreshold_V_8u_C1(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,
                             modeOf(ippCmpOp));
    return ippStsNoErr;
}

IppStatus ippiThreshold_Val_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                   IppiSize roiSize, Ipp8u const threshold[3], Ipp8u const value[3],
                                   IppCmpOp ippCmpOp) {
    const IppStatus status = firstFailure({{!knownMode(ippCmpOp), ippStsNotSupportedModeErr},
                                           nullCheck(pSrc, pDst),
                                           sizeCheck(roiSize),
                                           stepCheck(srcStep, dstStep),
                                           nullCheck(threshold, value)});
    if (status != ippStsNoErr) return status;
    ownippiThreshold_V_8u_C3(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,
                             modeOf(ippCmpOp));
    return ippStsNoErr;
}

IppStatus ippiThreshold_LTValGTVal_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                          IppiSize roiSize, Ipp8u thresholdLT, Ipp8u valueLT,
                                          Ipp8u thresholdGT, Ipp8u valueGT) {
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst),
                                           sizeCheck(roiSize),
                                           stepCheck(srcStep, dstStep),
                                           {thresholdGT < thresholdLT, ippStsThresholdErr}});
    if (status != ippStsNoErr) return status;
    ownippiThreshold_GLV_8u_C1(pSrc, srcStep, pDst, dstStep, roiSize, thresholdGT, valueGT,
                               thresholdLT, valueLT);
    return ippStsNoErr;
}

IppStatus ippiThreshold_LTValGTVal_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                          IppiSize roiSize, Ipp8u const thresholdLT[3],
                                          Ipp8u const valueLT[3], Ipp8u const thresholdGT[3],
                                          Ipp8u const valueGT[3]) {
    IppStatus status =
        firstFailure({nullCheck(pSrc, pDst), sizeCheck(roiSize), stepCheck(srcStep, dstStep),
                      nullCheck(thresholdLT, valueLT, thresholdGT, valueGT)});
    if (status != ippStsNoErr) return status;
    for (int c = 0; c < 3; ++c)
        if (thresholdGT[c] < thresholdLT[c]) return ippStsThresholdErr;
    ownippiThreshold_GLV_8u_C3(pSrc, srcStep, pDst, dstStep, roiSize, thresholdGT, valueGT,
                               thresholdLT, valueLT);
    return ippStsNoErr;
}

// ---- the dispatched entries

IppStatus ippiThreshold_LT_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                  IppiSize roiSize, Ipp8u threshold) {
    return ippiThreshold_8u_C1R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, ippCmpLess);
}

IppStatus ippiThreshold_LT_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   Ipp8u const threshold[3]) {
    return ippiThreshold_LT_8u_C3R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, threshold);
}

IppStatus ippiThreshold_LTVal_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u threshold, Ipp8u value) {
    return ippiThreshold_Val_8u_C1R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,
                                    ippCmpLess);
}

IppStatus ippiThreshold_LTVal_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u const threshold[3],
                                     Ipp8u const value[3]) {
    return ippiThreshold_Val_8u_C3R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,
                                    ippCmpLess);
}

IppStatus ippiThreshold_GTVal_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u threshold, Ipp8u value) {
    return ippiThreshold_Val_8u_C1R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,
                                    ippCmpGreater);
}

IppStatus ippiThreshold_GTVal_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u const threshold[3],
                                     Ipp8u const value[3]) {
    return ippiThreshold_Val_8u_C3R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,
                                    ippCmpGreater);
}

IppStatus ippiThreshold_LTValGTVal_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                           Ipp8u thresholdLT, Ipp8u valueLT, Ipp8u thresholdGT,
                                           Ipp8u valueGT) {
    return ippiThreshold_LTValGTVal_8u_C1R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize,
                                           thresholdLT, valueLT, thresholdGT, valueGT);
}

IppStatus ippiThreshold_LTValGTVal_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                           Ipp8u const thresholdLT[3], Ipp8u const valueLT[3],
                                           Ipp8u const thresholdGT[3], Ipp8u const valueGT[3]) {
    return ippiThreshold_LTValGTVal_8u_C3R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize,
                                           thresholdLT, valueLT, thresholdGT, valueGT);
}

}  // namespace nuv::prim::NUV_V
