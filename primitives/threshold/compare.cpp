// A region against a constant, to a one-channel mask of 255 where the comparison holds and 0
// where it does not. Operations 0..4 are less, less or equal, equal, greater or equal and
// greater; the three-channel form demands the comparison in all three channels, each against
// its own value byte. All comparisons are unsigned. An operation above 4 (or negative, as the
// test is unsigned) is a silent success that writes nothing.
//
// Unsigned order needs no sign trick: x <= v exactly where min(x, v) is x.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

enum Op { less, lessOrEqual, equal, greaterOrEqual, greater };

// The mask of one vector against the constant c, for the three operations that reach it.
template <class L>
typename L::V holds(typename L::V x, typename L::V c, Op op) {
    switch (op) {
        case lessOrEqual:
            return L::equal(L::minBytes(x, c), x);
        case greaterOrEqual:
            return L::equal(L::maxBytes(x, c), x);
        default:
            return L::equal(x, c);
    }
}
bool holds(Byte x, Byte c, Op op) {
    return op == lessOrEqual ? x <= c : op == greaterOrEqual ? x >= c : x == c;
}

template <class L>
int compareVectors(Byte const* s, Byte* d, int x, int n, Byte value, Op op) {
    const typename L::V c = L::bytes(value);
    for (; x + L::width <= n; x += L::width) L::store(d + x, holds<L>(L::load(s + x), c, op));
    return x;
}

void compareRowC1(Byte const* s, Byte* d, int n, Byte value, Op op) {
    int x = compareVectors<IntLanes>(s, d, 0, n, value, op);
    if constexpr (IntLanes::width > 16) x = compareVectors<Lanes<16>>(s, d, x, n, value, op);
    for (; x < n; ++x) d[x] = holds(s[x], value, op) ? 0xFF : 0;
}

// Three channels, 16 pixels at a time as planes; `inverted` turns the inclusive comparison of
// each channel into its complement before the channels are joined by AND.
void compareRowC3(Byte const* s, Byte* d, int n, Byte const (&value)[3], Op op, bool inverted) {
    using L = Lanes<16>;
    const L::V c[3] = {L::bytes(value[0]), L::bytes(value[1]), L::bytes(value[2])};
    const L::V flip = inverted ? L::bytes(0xFF) : L::zero();
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        const Planes p = loadChannels(s + 3 * x);
        L::V all = L::bitXor(holds<L>(p.c[0], c[0], op), flip);
        for (int k = 1; k < 3; ++k)
            all = L::bitAnd(all, L::bitXor(holds<L>(p.c[k], c[k], op), flip));
        L::store(d + x, all);
    }
    for (; x < n; ++x) {
        bool all = true;
        for (int k = 0; k < 3; ++k) all = all && holds(s[3 * x + k], value[k], op) != inverted;
        d[x] = all ? 0xFF : 0;
    }
}

// Rows of a region through a row worker; C3 sources are three bytes a pixel.
template <int Channels, class Row>
void compareRows(Byte const* src, int srcStep, Byte* dst, int dstStep, int width, int height,
                 Row row) {
    forEachRun(width, height, row, plane(src, srcStep, Channels), plane(dst, dstStep, 1));
}

// The workers, with the arguments value, source, step, destination, step, width, height.
// Less than v is less or equal to v - 1 and greater than v greater or equal to v + 1: the
// entry has answered v = 0 and v = 255 before.
#define NUV_C1_WORKER(name, op, shift)                                                        \
    void name(Byte value, Byte const* src, int srcStep, Byte* dst, int dstStep, int width,    \
              int height) {                                                                   \
        const Byte v = static_cast<Byte>(value + (shift));                                    \
        compareRows<1>(src, srcStep, dst, dstStep, width, height,                             \
                       [v](int n, Byte const* s, Byte* d) { compareRowC1(s, d, n, v, op); }); \
    }
NUV_C1_WORKER(ownpi_CmpCLT_8u_C1R, lessOrEqual, -1)
NUV_C1_WORKER(ownpi_CmpCLE_8u_C1R, lessOrEqual, 0)
NUV_C1_WORKER(ownpi_CmpCEQ_8u_C1R, equal, 0)
NUV_C1_WORKER(ownpi_CmpCGE_8u_C1R, greaterOrEqual, 0)
NUV_C1_WORKER(ownpi_CmpCGT_8u_C1R, greaterOrEqual, 1)
#undef NUV_C1_WORKER

// The three-channel names tell the relation from the value's side, the mirror of the
// one-channel names: CmpCGT holds where the value is greater than the source. Strict
// relations are the complements of inclusive ones, so no value is out of their reach.
#define NUV_C3_WORKER(name, op, inverted)                                                         \
    void name(Byte const* value, Byte const* src, int srcStep, Byte* dst, int dstStep, int width, \
              int height) {                                                                       \
        Byte const v[3] = {value[0], value[1], value[2]};                                         \
        compareRows<3>(                                                                           \
            src, srcStep, dst, dstStep, width, height,                                            \
            [&v](int n, Byte const* s, Byte* d) { compareRowC3(s, d, n, v, op, inverted); });     \
    }
NUV_C3_WORKER(ownpi_CmpCGT_8u_C3R, greaterOrEqual, true)
NUV_C3_WORKER(ownpi_CmpCGE_8u_C3R, lessOrEqual, false)
NUV_C3_WORKER(ownpi_CmpCEQ_8u_C3R, equal, false)
NUV_C3_WORKER(ownpi_CmpCLE_8u_C3R, greaterOrEqual, false)
NUV_C3_WORKER(ownpi_CmpCLT_8u_C3R, lessOrEqual, true)
#undef NUV_C3_WORKER

IppStatus checks(Ipp8u const* pSrc, int srcStep, Ipp8u const* value, Ipp8u* pDst, int dstStep,
                 IppiSize roiSize) {
    return firstFailure({nullCheck(pSrc, pDst, value),
                         {srcStep < 1 || dstStep < 1, ippStsStepErr},
                         sizeCheck(roiSize)});
}

}  // namespace

IppStatus ippiCompareC_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u value, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize, int op) {
    const IppStatus status = checks(pSrc, srcStep, &value, pDst, dstStep, roiSize);
    if (status != ippStsNoErr) return status;
    if (static_cast<unsigned>(op) > 4) return ippStsNoErr;
    // Nothing is below 0 and nothing above 255.
    if ((op == less && value == 0) || (op == greater && value == 255))
        return ippiSet_8u_C1R(0, pDst, dstStep, roiSize);
    using Worker = void (*)(Byte, Byte const*, int, Byte*, int, int, int);
    static constexpr Worker workers[5] = {ownpi_CmpCLT_8u_C1R, ownpi_CmpCLE_8u_C1R,
                                          ownpi_CmpCEQ_8u_C1R, ownpi_CmpCGE_8u_C1R,
                                          ownpi_CmpCGT_8u_C1R};
    workers[op](value, pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return ippStsNoErr;
}

IppStatus ippiCompareC_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u const value[3], Ipp8u* pDst,
                              int dstStep, IppiSize roiSize, int op) {
    const IppStatus status = checks(pSrc, srcStep, value, pDst, dstStep, roiSize);
    if (status != ippStsNoErr) return status;
    if (static_cast<unsigned>(op) > 4) return ippStsNoErr;
    using Worker = void (*)(Byte const*, Byte const*, int, Byte*, int, int, int);
    static constexpr Worker workers[5] = {ownpi_CmpCGT_8u_C3R, ownpi_CmpCGE_8u_C3R,
                                          ownpi_CmpCEQ_8u_C3R, ownpi_CmpCLE_8u_C3R,
                                          ownpi_CmpCLT_8u_C3R};
    workers[op](value, pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
