// Minimum and maximum filters over a rectangular mask, channel by channel: each destination
// byte is the extreme of its channel over the mask's area. Separable: a row pass takes the
// extreme across the mask's width, a column pass the extreme down the mask's height of row
// pass results. Both passes scan directly for small masks (a few loads a vector, nothing
// kept); for larger ones their cost stops growing with the mask:
//   rows     extremes of windows that double in width, in place in one scratch row, then
//            two overlapping windows of the largest power of two below the width;
//   columns  a running extreme over blocks of mask-height rows: suffix extremes of the block
//            the window starts in, prefix extremes of the block after, one operation each.
// The image is filtered in strips of columns whose scratch stays well under 64 KiB, so that
// the allocator serves it again on the next call without a trip to the system. Reads stay
// exactly inside the mask area. Min and max differ in the byte operation only; an extreme
// is exact, so the order of operations never shows in a byte.
#include "primitives/simd/simd.h"

#include <cstring>

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

// Masks up to this side are scanned directly, larger ones by the running passes; the same
// at every generation, where the direct scan of 5 still wins on its few loads.
constexpr int kDirectSide = 5;
// The scratch of one call: strips of columns are chosen to keep it within this.
constexpr int kScratchBudget = 32 * 1024;

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

// op(L{}, i) for each vector of the widest lanes that fit in n bytes, the last one moved back
// to end at n, overlapping the one before: every kernel here writes each byte from bytes it
// does not write, or in place from itself and another row (an extreme taken twice is the
// same), so a byte done twice comes out the same. Below one vector, tail(i) for each byte.
template <class L, class Op>
bool coverRow(int n, Op& op) {
    if (n < L::width) return false;
    int i = 0;
    for (; i + L::width <= n; i += L::width) op(L{}, i);
    if (i < n) op(L{}, n - L::width);
    return true;
}
template <class Op, class Tail>
void forEachVector(int n, Op op, Tail tail) {
    if (coverRow<IntLanes>(n, op)) return;
    if constexpr (IntLanes::width > 16)
        if (coverRow<Lanes<16>>(n, op)) return;
    for (int i = 0; i < n; ++i) tail(i);
}

// d[i] = extreme of a[i] and b[i] for i in 0..n-1; d may be a, with b another row.
template <class E>
void pairOf(Byte const* a, Byte const* b, Byte* d, int n) {
    forEachVector(
        n,
        [=](auto lanes, int i) {
            using L = decltype(lanes);
            L::store(d + i, E::template of<L>(L::load(a + i), L::load(b + i)));
        },
        [=](int i) { d[i] = E::of(a[i], b[i]); });
}

// ---- row pass: out[i] = extreme of area[i + k * ch] over k in 0..taps-1, for i in 0..n-1

// Direct: `Taps` fixes the count at compile time for the common small masks (0: taken from
// `taps`), so that the scan unrolls.
template <class E, int Taps>
void directRow(Byte const* area, Byte* out, int n, int taps, int ch, Byte*) {
    forEachVector(
        n,
        [=](auto lanes, int i) {
            using L = decltype(lanes);
            L::store(out + i, extremeOf<E, L>(area + i, ch, Taps ? Taps : taps));
        },
        [=](int i) {
            Byte acc = area[i];
            for (int k = 1; k < taps; ++k) acc = E::of(acc, area[i + k * ch]);
            out[i] = acc;
        });
}

// Windows of 2, 4, 8, ... pixels (each level the extreme of the level below and itself
// shifted by its width, the row shortening by that width), up to the largest power of two w
// below `taps`; then the window of `taps` is the extreme of the windows of w at i and at
// i + taps - w. The levels take turns in two scratch rows of n + (taps - 2) * ch bytes.
template <class E>
void doublingRow(Byte const* area, Byte* out, int n, int taps, int ch, Byte* scratch) {
    const int room = n + (taps - 2) * ch;
    Byte const* level = area;
    int w = 1, length = n + (taps - 1) * ch;
    for (Byte* into = scratch; 2 * w < taps; w *= 2) {
        length -= w * ch;
        pairOf<E>(level, level + w * ch, into, length);
        level = into;
        into = into == scratch ? scratch + room : scratch;
    }
    pairOf<E>(level, level + (taps - w) * ch, out, n);
}

using RowPass = void (*)(Byte const*, Byte*, int, int, int, Byte*);

template <class E>
RowPass rowPassFor(int taps) {
    if (taps > kDirectSide) return doublingRow<E>;
    return taps == 3 ? directRow<E, 3> : taps == 5 ? directRow<E, 5> : directRow<E, 0>;
}

// ---- column pass over one strip of columns

// A strip: its part of the mask area of the first destination row, its part of the
// destination, and the row pass that turns an area row into the extremes across the mask.
struct Strip {
    Byte const* area;
    int srcStep;
    Byte* dst;
    int dstStep;
    int n, height, taps, ch;
    RowPass rowPass;
    Byte* rowScratch;
    // The row pass over row j of the mask area, into out.
    void rowOf(int j, Byte* out) const {
        rowPass(rowAt(area, srcStep, j), out, n, taps, ch, rowScratch);
    }
    Byte* dstRow(int y) const { return rowAt(dst, dstStep, y); }
};

// Direct: dst[i] = extreme of the ring's rows at i.
template <class E, int Rows>
void columnPass(Byte const* ring, int ringStep, int rows, Byte* dst, int n) {
    forEachVector(
        n,
        [=](auto lanes, int i) {
            using L = decltype(lanes);
            L::store(dst + i, extremeOf<E, L>(ring + i, ringStep, Rows ? Rows : rows));
        },
        [=](int i) {
            Byte acc = ring[i];
            for (int j = 1; j < rows; ++j)
                acc = E::of(acc, ring[static_cast<Offset>(j) * ringStep + i]);
            dst[i] = acc;
        });
}

using ColumnPass = void (*)(Byte const*, int, int, Byte*, int);

template <class E>
ColumnPass columnPassFor(int rows) {
    return rows == 3 ? columnPass<E, 3> : rows == 5 ? columnPass<E, 5> : columnPass<E, 0>;
}

// A ring of `rows` row-pass results, the oldest overwritten by the next.
template <class E>
void directColumns(Strip const& s, int rows, Byte* ring, int ringStep) {
    const ColumnPass column = columnPassFor<E>(rows);
    for (int j = 0; j < rows - 1; ++j) s.rowOf(j, ring + static_cast<Offset>(j) * ringStep);
    int cursor = rows - 1;
    for (int y = 0; y < s.height; ++y) {
        s.rowOf(y + rows - 1, ring + static_cast<Offset>(cursor) * ringStep);
        column(ring, ringStep, rows, s.dstRow(y), s.n);
        cursor = cursor + 1 == rows ? 0 : cursor + 1;
    }
}

// The k rows of a block become, from the bottom up, the extremes of each row and all below
// it in the block; the top one, the whole block, is the window of the block's first
// destination row and goes straight there.
template <class E>
void suffixes(Byte* block, int step, int k, int n, Byte* firstOut) {
    for (int t = k - 2; t > 0; --t)
        pairOf<E>(block + t * step, block + (t + 1) * step, block + t * step, n);
    pairOf<E>(block, block + step, firstOut, n);
}

// Blocks of k area rows from row 0. The window of destination row y0 + t (y0 a block's first
// row, 0 < t < k) is the suffix extreme of its block from t on and the prefix extreme of the
// next block through its row t - 1. The next block's rows are made as the prefixes need
// them, each in the place of a suffix already used, so one block of rows and the running
// prefix are all the scratch; then they become the suffixes.
template <class E>
void runningColumns(Strip const& s, int k, Byte* scratch, int step) {
    Byte* const block = scratch;
    Byte* const prefix = block + static_cast<Offset>(k) * step;
    for (int t = 0; t < k; ++t) s.rowOf(t, block + t * step);
    suffixes<E>(block, step, k, s.n, s.dstRow(0));
    for (int y0 = 0; y0 < s.height; y0 += k) {
        const int end = k < s.height - y0 ? k : s.height - y0;
        for (int t = 1; t < end; ++t) {
            Byte* added = block + (t - 1) * step;
            s.rowOf(y0 + k + t - 1, added);
            if (t > 1) pairOf<E>(t == 2 ? block : prefix, added, prefix, s.n);
            pairOf<E>(block + t * step, t > 1 ? prefix : added, s.dstRow(y0 + t), s.n);
        }
        if (y0 + k >= s.height) break;
        s.rowOf(y0 + 2 * k - 1, block + (k - 1) * step);
        suffixes<E>(block, step, k, s.n, s.dstRow(y0 + k));
    }
}

// ---- strips

// The strip's width in bytes (a multiple of 32) and the scratch it needs: the column pass's
// rows, and for the doubling row pass two rows with the mask's width beyond the strip.
struct StripPlan {
    int width, columnRows, rowScratch;
    int bytes() const { return columnRows * width + rowScratch; }
};
StripPlan planStrips(int rowBytes, IppiSize mask, int ch) {
    const int columnRows = mask.height > kDirectSide ? mask.height + 1 : mask.height;
    const int beyond = mask.width > kDirectSide ? (mask.width - 2) * ch + 32 : 0;
    const int rowsOfScratch = columnRows + (beyond > 0 ? 2 : 0);
    int width = ((kScratchBudget - 2 * beyond) / rowsOfScratch) & ~31;
    const int whole = (rowBytes + 31) & ~31;
    width = width < 64 ? 64 : width > whole ? whole : width;
    return {width, columnRows, beyond > 0 ? 2 * (width + beyond) : 0};
}

template <class E>
IppStatus filterStrips(Byte const* src, int srcStep, Byte* dst, int dstStep, IppiSize roi,
                       IppiSize mask, IppiPoint anchor, int ch) {
    const int rowBytes = roi.width * ch;
    const StripPlan plan = planStrips(rowBytes, mask, ch);
    Byte* scratch = ippsMalloc_8u(plan.bytes());
    if (scratch == nullptr) return ippStsMemAllocErr;
    // The mask area of the first destination row, from its top-left corner.
    Byte const* area = rowAt(src, srcStep, -anchor.y) - anchor.x * ch;
    Byte* rowScratch = scratch + static_cast<Offset>(plan.columnRows) * plan.width;
    for (int x = 0; x < rowBytes; x += plan.width) {
        const int n = rowBytes - x < plan.width ? rowBytes - x : plan.width;
        const Strip s{area + x,   srcStep, dst + x,
                      dstStep,    n,       roi.height,
                      mask.width, ch,      rowPassFor<E>(mask.width),
                      rowScratch};
        if (mask.height > kDirectSide)
            runningColumns<E>(s, mask.height, scratch, plan.width);
        else
            directColumns<E>(s, mask.height, scratch, plan.width);
    }
    ippsFree(scratch);
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
    return filterStrips<Extreme<Max>>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor,
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
