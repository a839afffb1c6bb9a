// Minimum and maximum filters over a rectangular mask, channel by channel: each destination
// byte is the extreme of its channel over the mask's area. Separable: a row pass takes the
// extreme across the mask's width by a direct scan (the cost is row width times mask width),
// into a ring of mask-height buffer rows, and a column pass takes the extreme down the ring
// into the destination row. Reads stay exactly inside the mask area; the buffer comes from
// the library's allocator on each call. Min and max differ in the byte operation only.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

template <bool Max>
struct Extreme {
    template <class L>
    static typename L::V of(typename L::V a, typename L::V b) {
        return Max ? L::maxBytes(a, b) : L::minBytes(a, b);
    }
    static Byte of(Byte a, Byte b) { return Max ? (a > b ? a : b) : (a < b ? a : b); }
};

// The extreme of `count` vectors p, p + stride, ...: four a pass, so that neither the loop
// nor the chain of dependent operations grows with the mask.
template <class E, class L>
typename L::V extremeOf(Byte const* p, Offset stride, int count) {
    auto of = [](typename L::V a, typename L::V b) { return E::template of<L>(a, b); };
    typename L::V acc = L::load(p);
    int k = 1;
    for (; k + 4 <= count; k += 4, p += 4 * stride)
        acc = of(acc, of(of(L::load(p + stride), L::load(p + 2 * stride)),
                         of(L::load(p + 3 * stride), L::load(p + 4 * stride))));
    for (; k < count; ++k) acc = of(acc, L::load(p += stride));
    return acc;
}

// buffer[i] = extreme of area[i + k * ch] over k in 0..taps-1, for i in 0..n-1. `Taps` fixes
// the count at compile time for the common small masks (0: taken from `taps`), so that the
// scan unrolls.
template <class E, class L, int Taps>
int rowVectors(Byte const* area, Byte* out, int i, int n, int taps, int ch) {
    for (; i + L::width <= n; i += L::width)
        L::store(out + i, extremeOf<E, L>(area + i, ch, Taps ? Taps : taps));
    return i;
}
template <class E, int Taps>
void rowPass(Byte const* area, Byte* out, int n, int taps, int ch) {
    int i = rowVectors<E, IntLanes, Taps>(area, out, 0, n, taps, ch);
    if constexpr (IntLanes::width > 16)
        i = rowVectors<E, Lanes<16>, Taps>(area, out, i, n, taps, ch);
    for (; i < n; ++i) {
        Byte acc = area[i];
        for (int k = 1; k < taps; ++k) acc = E::of(acc, area[i + k * ch]);
        out[i] = acc;
    }
}

// dst[i] = extreme of the ring's rows at i.
template <class E, class L, int Rows>
int columnVectors(Byte const* ring, int ringStep, int rows, Byte* dst, int i, int n) {
    for (; i + L::width <= n; i += L::width)
        L::store(dst + i, extremeOf<E, L>(ring + i, ringStep, Rows ? Rows : rows));
    return i;
}
template <class E, int Rows>
void columnPass(Byte const* ring, int ringStep, int rows, Byte* dst, int n) {
    int i = columnVectors<E, IntLanes, Rows>(ring, ringStep, rows, dst, 0, n);
    if constexpr (IntLanes::width > 16)
        i = columnVectors<E, Lanes<16>, Rows>(ring, ringStep, rows, dst, i, n);
    for (; i < n; ++i) {
        Byte acc = ring[i];
        for (int j = 1; j < rows; ++j)
            acc = E::of(acc, ring[static_cast<Offset>(j) * ringStep + i]);
        dst[i] = acc;
    }
}

using RowPass = void (*)(Byte const*, Byte*, int, int, int);
using ColumnPass = void (*)(Byte const*, int, int, Byte*, int);

// The passes for a mask side: unrolled for 3 and 5, general otherwise.
template <class E>
RowPass rowPassFor(int taps) {
    return taps == 3 ? rowPass<E, 3> : taps == 5 ? rowPass<E, 5> : rowPass<E, 0>;
}
template <class E>
ColumnPass columnPassFor(int rows) {
    return rows == 3 ? columnPass<E, 3> : rows == 5 ? columnPass<E, 5> : columnPass<E, 0>;
}

template <class E>
IppStatus filterRows(Byte const* src, int srcStep, Byte* dst, int dstStep, IppiSize roi,
                     IppiSize mask, IppiPoint anchor, int ch) {
    const int rowBytes = roi.width * ch;
    const int ringStep = (rowBytes + 31) & ~31;
    Byte* ring = ippsMalloc_8u(product32(mask.height, ringStep));
    if (ring == nullptr) return ippStsMemAllocErr;
    // The mask area of the first destination row, from its top-left corner.
    Byte const* area = rowAt(src, srcStep, -anchor.y) - anchor.x * ch;
    const RowPass rowPass = rowPassFor<E>(mask.width);
    const ColumnPass columnPass = columnPassFor<E>(mask.height);
    for (int j = 0; j < mask.height - 1; ++j)
        rowPass(rowAt(area, srcStep, j), ring + static_cast<Offset>(j) * ringStep, rowBytes,
                mask.width, ch);
    int cursor = mask.height - 1;  // the oldest row is overwritten next
    for (int y = 0; y < roi.height; ++y) {
        rowPass(rowAt(area, srcStep, y + mask.height - 1),
                ring + static_cast<Offset>(cursor) * ringStep, rowBytes, mask.width, ch);
        columnPass(ring, ringStep, mask.height, rowAt(dst, dstStep, y), rowBytes);
        cursor = cursor + 1 == mask.height ? 0 : cursor + 1;
    }
    ippsFree(ring);
    return ippStsNoErr;
}

template <bool Max, int Channels>
IppStatus filterExtreme(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                        IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    const IppStatus status = firstFailure(
        {nullCheck(pSrc, pDst),
         sizeCheck(dstRoiSize),
         {srcStep < 1 || dstStep < 1, ippStsStepErr},
         {maskSize.width < 1 || maskSize.height < 1, ippStsMaskSizeErr},
         {anchor.x < 0 || anchor.x >= maskSize.width || anchor.y < 0 || anchor.y >= maskSize.height,
          ippStsAnchorErr}});
    if (status != ippStsNoErr) return status;
    if (maskSize.width == 1 && maskSize.height == 1)
        // This generation's own copy, not the stub.
        return Channels == 1
                   ? nuv::prim::NUV_V::ippiCopy_8u_C1R(pSrc, srcStep, pDst, dstStep, dstRoiSize)
                   : nuv::prim::NUV_V::ippiCopy_8u_C3R(pSrc, srcStep, pDst, dstStep, dstRoiSize);
    return filterRows<Extreme<Max>>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor,
                                    Channels);
}

}  // namespace

IppStatus ippiFilterMin_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    return filterExtreme<false, 1>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor);
}

IppStatus ippiFilterMin_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    return filterExtreme<false, 3>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor);
}

IppStatus ippiFilterMax_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    return filterExtreme<true, 1>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor);
}

IppStatus ippiFilterMax_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    return filterExtreme<true, 3>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor);
}

}  // namespace nuv::prim::NUV_V
