// The region walker: what every primitive entry does before and around its arithmetic. The
// argument checks run in the order a family lists them, the first failure wins and nothing
// is written; rows are addressed by signed steps (a zero step repeats a row, a negative one
// walks upward); rows that follow one another without a gap in every plane are one run, so
// that a narrow image does not pay a row's set-up once per row. Part of the vector layer:
// see simd.h.
#pragma once

#include "primitives/simd/scalar.h"

#include <initializer_list>

namespace nuv::prim::NUV_V::simd {

// ---- checks

struct Check {
    bool failed;
    IppStatus status;
};

// The status of the first failed check in the order given, ippStsNoErr if none failed.
// The conditions are plain comparisons, all evaluated, so their order is only that of the
// statuses.
inline IppStatus firstFailure(std::initializer_list<Check> checks) {
    for (Check const& c : checks)
        if (c.failed) return c.status;
    return ippStsNoErr;
}

template <class... P>
inline Check nullCheck(P const*... pointers) {
    return {((pointers == nullptr) || ...), ippStsNullPtrErr};
}

// Width or height below 1.
inline Check sizeCheck(IppiSize size) {
    return {size.width < 1 || size.height < 1, ippStsSizeErr};
}

// ---- rows

// Row y of a region whose first row is p.
template <class T>
inline T* rowAt(T* p, int step, int y) {
    return p + static_cast<Offset>(y) * step;
}

// One plane of a region: its first row, the signed distance between rows and the bytes of
// one pixel.
template <class T>
struct Plane {
    T* first;
    int step;
    int pixelBytes;
    T* row(int y) const { return rowAt(first, step, y); }
    // Whether row y + 1 starts where row y of `width` pixels ends.
    bool packed(int width) const { return step == static_cast<std::int64_t>(width) * pixelBytes; }
};
template <class T>
inline Plane<T> plane(T* first, int step, int pixelBytes = 1) {
    return {first, step, pixelBytes};
}

// Whether the rows of every plane join into one run.
template <class... T>
inline bool rowsJoin(int width, Plane<T>... planes) {
    return (planes.packed(width) && ...);
}

// Calls run(length, row of each plane...) for each run of the region, lengths in pixels: the
// whole region as one run of width * height pixels when the rows of every plane join, else
// once per row with width. Lengths are 32-bit, as the sizes of the layer are: the joined
// length of a region above 2 GiB wraps, and a run whose length wrapped to 0 or below moves
// nothing. A family whose joined run must not wrap asks for 64-bit lengths.
template <class Length = int, class Run, class... T>
inline void forEachRun(int width, int height, Run&& run, Plane<T>... planes) {
    if (width <= 0) return;
    if (rowsJoin(width, planes...)) {
        Length length;
        if constexpr (sizeof(Length) > sizeof(int)) {
            length = static_cast<Length>(width) * height;
        } else {
            length = product32(width, height);
        }
        if (length > 0) run(length, planes.first...);
        return;
    }
    for (int y = 0; y < height; ++y) run(static_cast<Length>(width), planes.row(y)...);
}

// Calls run(width, row of each plane...) once a row, top to bottom, never joining rows: for
// families whose row split (vector block, scalar tail) is part of their bytes.
template <class Run, class... T>
inline void forEachRow(int width, int height, Run&& run, Plane<T>... planes) {
    for (int y = 0; y < height; ++y) run(width, planes.row(y)...);
}

// The entry of a conversion from one image to another whose steps are not tested (zero
// repeats a row, negative walks upward): pointers, then the size; then row(src, dst, width)
// once a row, top to bottom.
template <class Row>
inline IppStatus convertRows(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize size, Row&& row) {
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst), sizeCheck(size)});
    if (status != ippStsNoErr) return status;
    forEachRow(
        size.width, size.height, [&row](int n, Byte const* s, Byte* d) { row(s, d, n); },
        plane(pSrc, srcStep), plane(pDst, dstStep));
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V::simd
