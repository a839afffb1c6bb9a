// Connected components of a marker image, in place: every non-zero pixel gets the label of its
// component, components numbered in raster order of their first pixel. Labels run from the
// first to the last and start again, while the count goes on, so with more components than
// labels one label stands for several. The buffer is sized by the flood fill's own query.
//
// Two passes over runs of non-zero pixels, so that thin shapes such as edges cost a few
// operations a run rather than a fill's searches around every pixel. The first pass numbers
// the runs in raster order and joins each to the runs of the row above that touch it
// (one column further each way for 8-connectivity), always under the smaller number, so a
// component's root is its first run. The second pass finds the same runs again in the same
// order and writes each its root's label, the roots numbered as they come. The buffer holds
// one parent per run and the runs of two rows; where it has no room for that (a region one
// or two rows high), each non-zero pixel is made 255 and every 255 met in raster order seeds
// one flood fill with the next label.
#include "primitives/simd/simd.h"

#include <cstdint>

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;

// Bit i set where byte i of the n (at most 64) from p is non-zero; 64 bytes by compares.
std::uint64_t nonZeroBits(Byte const* p, int n) {
    std::uint64_t bits = 0;
    if (n == 64) {
        for (int k = 0; k < 4; ++k)
            bits |=
                static_cast<std::uint64_t>(L::byteMask(L::equal(L::load(p + 16 * k), L::zero())))
                << (16 * k);
        return ~bits;
    }
    for (int i = 0; i < n; ++i) bits |= static_cast<std::uint64_t>(p[i] != 0) << i;
    return bits;
}

// Calls run(left, right) for each run of non-zero pixels of the row, left to right, found
// from the bits of 64 pixels at a time; a run may go on from one word into the next.
template <class Run>
void forEachRun(Byte const* row, int width, Run&& run) {
    int open = -1;  // the first column of a run still going on, or -1
    for (int x = 0; x < width; x += 64) {
        const std::uint64_t bits = nonZeroBits(row + x, width - x < 64 ? width - x : 64);
        int from = 0;  // the bits below are done
        for (;;) {
            if (open < 0) {
                const std::uint64_t starts = bits & (~std::uint64_t{0} << from);
                if (starts == 0) break;
                from = __builtin_ctzll(starts);
                open = x + from;
            }
            const std::uint64_t stops = ~bits & (~std::uint64_t{0} << from);
            if (stops == 0) break;
            from = __builtin_ctzll(stops);
            run(open, x + from - 1);
            open = -1;
        }
    }
    if (open >= 0) run(open, width - 1);
}

struct Span {
    std::int32_t left, right;
};

// The runs of non-zero pixels of one row, in order; returns their number.
int runsOf(Byte const* row, int width, Span* runs) {
    int n = 0;
    forEachRun(row, width, [&](int left, int right) { runs[n++] = {left, right}; });
    return n;
}

class RunForest {
public:
    explicit RunForest(std::int32_t* parent) : _parent(parent) {}
    std::int32_t add() {
        _parent[_count] = _count;
        return _count++;
    }
    std::int32_t root(std::int32_t r) {
        while (_parent[r] != r) r = _parent[r] = _parent[_parent[r]];
        return r;
    }
    // The larger root goes under the smaller.
    void join(std::int32_t a, std::int32_t b) {
        a = root(a), b = root(b);
        if (a < b) _parent[b] = a;
        if (b < a) _parent[a] = b;
    }
    std::int32_t* parents() const { return _parent; }

private:
    std::int32_t* _parent;
    std::int32_t _count = 0;
};

// First pass: run numbers in raster order and their forest.
void joinRuns(Byte const* image, int step, IppiSize roi, int reach, RunForest& forest, Span* above,
              Span* current) {
    int aboveCount = 0;
    std::int32_t aboveFirst = 0;
    for (int y = 0; y < roi.height; ++y) {
        const int count = runsOf(rowAt(image, step, y), roi.width, current);
        int j = 0;
        for (int k = 0; k < count; ++k) {
            const std::int32_t id = forest.add();
            const Span s = current[k];
            while (j < aboveCount && above[j].right < s.left - reach) ++j;
            for (int i = j; i < aboveCount && above[i].left <= s.right + reach; ++i)
                forest.join(id, aboveFirst + i);
        }
        aboveFirst += aboveCount;
        aboveCount = count;
        Span* const done = above;
        above = current;
        current = done;
    }
}

// Second pass: each root takes the next label, every other run its root's; a run's entry
// becomes its label, negated and less one, once it is written, and a parent always comes
// before its children.
int writeLabels(Byte* image, int step, IppiSize roi, std::int32_t* parent, int minLabel,
                int maxLabel) {
    std::int32_t id = 0;
    int label = minLabel, count = 0;
    for (int y = 0; y < roi.height; ++y) {
        Byte* row = rowAt(image, step, y);
        forEachRun(row, roi.width, [&](int left, int right) {
            int value;
            if (parent[id] == id) {
                value = label;
                ++count;
                label = label == maxLabel ? minLabel : label + 1;
            } else {
                value = -1 - parent[parent[id]];
            }
            parent[id++] = -1 - value;
            for (int i = left; i <= right; ++i) row[i] = static_cast<Byte>(value);
        });
    }
    return count;
}

// The buffer's room from its first 8-byte boundary, as the query gives its size.
std::int64_t roomOf(Byte const* buffer, IppiSize roi) {
    int size = 0;
    nuv::prim::NUV_V::ippiFloodFillGetSize(roi, &size);
    const auto start = reinterpret_cast<std::uintptr_t>(buffer);
    return size - static_cast<std::int64_t>(((start + 7) & ~std::uintptr_t{7}) - start);
}

// Runs of a row are at most half its width, rounded up.
bool runsFit(Byte const* buffer, IppiSize roi) {
    const std::int64_t perRow = (roi.width + 1) / 2;
    return 4 * perRow * roi.height + 2 * 8 * perRow <= roomOf(buffer, roi);
}

int labelRuns(Byte* image, int step, IppiSize roi, int minLabel, int maxLabel, bool eight,
              Byte* buffer) {
    auto* parent = reinterpret_cast<std::int32_t*>((reinterpret_cast<std::uintptr_t>(buffer) + 7) &
                                                   ~std::uintptr_t{7});
    const std::int64_t perRow = (roi.width + 1) / 2;
    auto* above = reinterpret_cast<Span*>(parent + perRow * roi.height);
    RunForest forest(parent);
    joinRuns(image, step, roi, eight ? 1 : 0, forest, above, above + perRow);
    return writeLabels(image, step, roi, parent, minLabel, maxLabel);
}

// The first column from x on that holds 255, or the width.
int nextUnlabelled(Byte const* row, int x, int width) {
    const L::V marker = L::bytes(255);
    for (; x + 16 <= width; x += 16)
        if (const int found = L::byteMask(L::equal(L::load(row + x), marker)))
            return x + __builtin_ctz(found);
    while (x < width && row[x] != 255) ++x;
    return x;
}

int labelByFills(Byte* image, int step, IppiSize roi, int minLabel, int maxLabel, bool eight,
                 Byte* buffer) {
    nuv::prim::NUV_V::ippiThreshold_GTVal_8u_C1R(image, step, image, step, roi, 0, 255);
    const auto fill = eight ? nuv::prim::NUV_V::ippiFloodFill_8Con_8u_C1IR
                            : nuv::prim::NUV_V::ippiFloodFill_4Con_8u_C1IR;
    int label = minLabel, count = 0;
    for (int y = 0; y < roi.height; ++y) {
        Byte const* row = rowAt(image, step, y);
        for (int x = nextUnlabelled(row, 0, roi.width); x < roi.width;
             x = nextUnlabelled(row, x + 1, roi.width)) {
            IppiFillRegion region;
            fill(image, step, roi, {x, y}, label, &region, buffer);
            ++count;
            label = label == maxLabel ? minLabel : label + 1;
        }
    }
    return count;
}

}  // namespace

IppStatus ippiLabelMarkersGetBufferSize_8u_C1R(IppiSize roiSize, int* pBufSize) {
    return nuv::prim::NUV_V::ippiFloodFillGetSize(roiSize, pBufSize);
}

IppStatus ippiLabelMarkers_8u_C1IR(Ipp8u* pMarker, int markerStep, IppiSize roiSize, int minLabel,
                                   int maxLabel, int norm, int* pNumber, Ipp8u* pBuffer) {
    const IppStatus status =
        firstFailure({nullCheck(pMarker, pBuffer, pNumber),
                      sizeCheck(roiSize),
                      {markerStep < roiSize.width, ippStsStepErr},
                      {minLabel < 1 || maxLabel >= 255 || minLabel > maxLabel, ippStsBadArgErr},
                      {norm != 0 && norm != 1, ippStsBadArgErr}});
    if (status != ippStsNoErr) return status;
    const auto label = runsFit(pBuffer, roiSize) ? labelRuns : labelByFills;
    *pNumber = label(pMarker, markerStep, roiSize, minLabel, maxLabel, norm == 0, pBuffer);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
