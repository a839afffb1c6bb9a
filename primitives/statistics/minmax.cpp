// The smallest and largest byte of a region, per channel. The one-channel form stops reading
// once it has seen both 0 and 255, the usual case for camera frames; the answer is the same.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

struct Extremes {
    Byte min = 255, max = 0;
    void take(Byte b) {
        min = b < min ? b : min;
        max = b > max ? b : max;
    }
    bool full() const { return min == 0 && max == 255; }
};

template <class L>
int extremeVectors(Byte const* s, int x, int n, Extremes& e) {
    if (x + L::width > n) return x;
    typename L::V lo = L::bytes(255), hi = L::zero();
    for (; x + L::width <= n; x += L::width) {
        const typename L::V v = L::load(s + x);
        lo = L::minBytes(lo, v);
        hi = L::maxBytes(hi, v);
    }
    e.take(L::smallestByte(lo));
    e.take(L::largestByte(hi));
    return x;
}

void extremesOfRow(Byte const* s, int n, Extremes& e) {
    int x = extremeVectors<IntLanes>(s, 0, n, e);
    if constexpr (IntLanes::width > 16) x = extremeVectors<Lanes<16>>(s, x, n, e);
    for (; x < n; ++x) e.take(s[x]);
}

// Three channels, 16 pixels at a time as planes.
void extremesOfRowC3(Byte const* s, int n, Extremes (&e)[3]) {
    using L = Lanes<16>;
    int x = 0;
    if (n >= 16) {
        L::V lo[3] = {L::bytes(255), L::bytes(255), L::bytes(255)},
             hi[3] = {L::zero(), L::zero(), L::zero()};
        for (; x + 16 <= n; x += 16) {
            const Planes p = loadChannels(s + 3 * x);
            for (int c = 0; c < 3; ++c) {
                lo[c] = L::minBytes(lo[c], p.c[c]);
                hi[c] = L::maxBytes(hi[c], p.c[c]);
            }
        }
        for (int c = 0; c < 3; ++c) {
            e[c].take(L::smallestByte(lo[c]));
            e[c].take(L::largestByte(hi[c]));
        }
    }
    for (; x < n; ++x)
        for (int c = 0; c < 3; ++c) e[c].take(s[3 * x + c]);
}

// Steps are not tested: zero re-reads the first row.
IppStatus checks(Ipp8u const* pSrc, void const* pMin, void const* pMax, IppiSize roiSize) {
    return firstFailure({nullCheck(pSrc, pMin, pMax), sizeCheck(roiSize)});
}

}  // namespace

IppStatus ippiMinMax_8u_C1R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize, Ipp8u* pMin,
                            Ipp8u* pMax) {
    const IppStatus status = checks(pSrc, pMin, pMax, roiSize);
    if (status != ippStsNoErr) return status;
    Extremes e;
    for (int y = 0; y < roiSize.height && !e.full(); ++y)
        extremesOfRow(rowAt(pSrc, srcStep, y), roiSize.width, e);
    *pMin = e.min;
    *pMax = e.max;
    return ippStsNoErr;
}

IppStatus ippiMinMax_8u_C3R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize, Ipp8u min[3],
                            Ipp8u max[3]) {
    const IppStatus status = checks(pSrc, min, max, roiSize);
    if (status != ippStsNoErr) return status;
    Extremes e[3];
    forEachRow(
        roiSize.width, roiSize.height, [&](int n, Byte const* s) { extremesOfRowC3(s, n, e); },
        plane(pSrc, srcStep));
    for (int c = 0; c < 3; ++c) {
        min[c] = e[c].min;
        max[c] = e[c].max;
    }
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
