// Sums and means of the bytes of a region, per channel. The sums are exact integers; the
// one-channel mean divides by the pixel count, the three-channel one multiplies by its
// reciprocal, and the two can differ in the last bit (49 * (1.0 / 49) is just below 1).
// The pixel count is the 32-bit product of width and height, as the region walker's.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

template <class L>
typename L::V sumAt(Byte const* s) {
    return L::sumBytesByEights(L::load(s));
}

// Bytes x0.. of a row, in whole vectors, added into `acc`; returns where it stopped. Four
// vectors a turn go to two sums, so that no load waits on the add before it.
template <class L>
int sumVectors(Byte const* s, int x, int n, typename L::V& acc) {
    constexpr int W = L::width;
    typename L::V other = L::zero();
    for (; x + 4 * W <= n; x += 4 * W) {
        acc = L::addQuads(acc, L::addQuads(sumAt<L>(s + x), sumAt<L>(s + x + W)));
        other = L::addQuads(other, L::addQuads(sumAt<L>(s + x + 2 * W), sumAt<L>(s + x + 3 * W)));
    }
    for (; x + W <= n; x += W) acc = L::addQuads(acc, sumAt<L>(s + x));
    acc = L::addQuads(acc, other);
    return x;
}

std::uint64_t sumRow(Byte const* s, int n) {
    IntLanes::V wide = IntLanes::zero();
    Lanes<16>::V narrow = Lanes<16>::zero();
    int x = sumVectors<IntLanes>(s, 0, n, wide);
    if constexpr (IntLanes::width > 16) x = sumVectors<Lanes<16>>(s, x, n, narrow);
    std::uint64_t total = IntLanes::sumOfQuads(wide) + Lanes<16>::sumOfQuads(narrow);
    for (; x < n; ++x) total += s[x];
    return total;
}

// Three channels, 16 pixels at a time as planes.
void sumRowC3(Byte const* s, int n, std::uint64_t (&total)[3]) {
    using L = Lanes<16>;
    L::V acc[3] = {L::zero(), L::zero(), L::zero()};
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        const Planes p = loadChannels(s + 3 * x);
        for (int c = 0; c < 3; ++c) acc[c] = L::addQuads(acc[c], L::sumBytesByEights(p.c[c]));
    }
    for (int c = 0; c < 3; ++c) total[c] += L::sumOfQuads(acc[c]);
    for (; x < n; ++x)
        for (int c = 0; c < 3; ++c) total[c] += s[3 * x + c];
}

// Steps are not tested: zero re-reads the first row.
IppStatus sumChecks(Ipp8u const* pSrc, void const* result, IppiSize roiSize) {
    return firstFailure({nullCheck(pSrc, result), sizeCheck(roiSize)});
}

double pixelCount(IppiSize roiSize) {
    return static_cast<double>(product32(roiSize.width, roiSize.height));
}

}  // namespace

IppStatus ippiSum_8u_C1R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize, Ipp64f* pSum) {
    const IppStatus status = sumChecks(pSrc, pSum, roiSize);
    if (status != ippStsNoErr) return status;
    std::uint64_t total = 0;
    forEachRow(
        roiSize.width, roiSize.height, [&](int n, Byte const* s) { total += sumRow(s, n); },
        plane(pSrc, srcStep));
    *pSum = static_cast<double>(total);
    return ippStsNoErr;
}

IppStatus ippiSum_8u_C3R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize, Ipp64f sum[3]) {
    const IppStatus status = sumChecks(pSrc, sum, roiSize);
    if (status != ippStsNoErr) return status;
    std::uint64_t total[3] = {0, 0, 0};
    forEachRow(
        roiSize.width, roiSize.height, [&](int n, Byte const* s) { sumRowC3(s, n, total); },
        plane(pSrc, srcStep));
    for (int c = 0; c < 3; ++c) sum[c] = static_cast<double>(total[c]);
    return ippStsNoErr;
}

IppStatus ippiMean_8u_C1R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize, Ipp64f* pMean) {
    if (pMean == nullptr) return ippStsNullPtrErr;
    double sum = 0;
    const IppStatus status = ippiSum_8u_C1R(pSrc, srcStep, roiSize, &sum);
    if (status != ippStsNoErr) return status;
    *pMean = sum / pixelCount(roiSize);
    return ippStsNoErr;
}

IppStatus ippiMean_8u_C3R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize, Ipp64f mean[3]) {
    if (mean == nullptr) return ippStsNullPtrErr;
    double sum[3];
    const IppStatus status = ippiSum_8u_C3R(pSrc, srcStep, roiSize, sum);
    if (status != ippStsNoErr) return status;
    const double reciprocal = 1.0 / pixelCount(roiSize);
    for (int c = 0; c < 3; ++c) mean[c] = sum[c] * reciprocal;
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
