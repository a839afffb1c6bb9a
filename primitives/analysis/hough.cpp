// Straight lines in an edge image by a Hough transform over (rho, theta), in the caller's
// buffer only. The edge points are listed once per row; then for each angle every point
// votes for the cell round((x cos + y sin) / rho step) in one row of counters, and the row
// of the angle before is tested for peaks right away, against its own neighbours and the
// rows of the angles on each side. Three counter rows turn round, so memory grows with the
// number of cells, not with cells times angles. The peaks go into a list sorted by votes in
// which the first found of equal votes stays in front.
//
// Cell positions are fixed point with 10 fractional bits: tables of 1024 sin / rho step and
// 1024 cos / rho step from an angle that accumulates its float step (rounding and all), and
// per point x * cos + y * sin in float, rounded to even, plus half a cell before the shift.
#include "primitives/simd/floats.h"
#include "primitives/simd/simd.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;
using F = Floats<16>;

struct Geometry {
    int numRho, lastAngle, rhoOffset;
};
Geometry geometryOf(IppiSize roi, IppiRhoTheta delta) {
    const int numRho =
        static_cast<int>(static_cast<float>(2 * (roi.width + roi.height) + 1) / delta.rho);
    const int lastAngle = static_cast<int>(3.14159 / static_cast<double>(delta.theta));
    return {numRho, lastAngle, (numRho - 1) / 2};
}

std::int64_t bufferBytes(IppiSize roi, Geometry g, int maxLineCount) {
    return static_cast<std::int64_t>(roi.height) * (4LL * roi.width + 64) + 16LL * maxLineCount +
           16LL * g.numRho + 8LL * g.lastAngle + 296;
}

template <class T>
T* alignedIn(Byte* area, std::uintptr_t alignment) {
    const auto at = reinterpret_cast<std::uintptr_t>(area);
    return reinterpret_cast<T*>((at + alignment - 1) & ~(alignment - 1));
}

struct HoughPeak {
    std::int32_t rhoIndex, thetaIndex, votes, unused;
};

// The buffer's areas, in order: three counter rows (each a guard of four ints, then the
// counters), the peak list, the cosine and sine tables, the peak row (guard, then cells),
// and the point lists (per row its count, then from the fifth int its columns).
struct Layout {
    Layout(Byte* buffer, IppiSize roi, Geometry g, int maxLineCount) {
        Byte* area = buffer;
        rows = alignedIn<std::int32_t>(area, 32);
        rowStride = ((4 * g.numRho + 47) & ~31) / 4;
        area += 12 * g.numRho + 176;
        peaks = alignedIn<HoughPeak>(area, 32);
        area += 16 * maxLineCount + 32;
        cosine = reinterpret_cast<std::int32_t*>(area);
        area += 4 * (g.lastAngle + 1);
        sine = reinterpret_cast<std::int32_t*>(area);
        area += 4 * (g.lastAngle + 1);
        peakRow = alignedIn<std::int32_t>(area, 32) + 4;
        area += 4 * g.numRho + 80;
        points = alignedIn<std::int32_t>(area, 16);
        pointStride = ((4 * roi.width + 31) & ~15) / 4;
    }
    std::int32_t* counters(int row) const { return rows + row * rowStride + 4; }
    std::int32_t* pointRow(int y) const { return points + static_cast<Offset>(y) * pointStride; }

    std::int32_t* rows;
    int rowStride;
    HoughPeak* peaks;
    std::int32_t *cosine, *sine, *peakRow, *points;
    int pointStride;
};

void fillTables(Layout const& b, Geometry g, IppiRhoTheta delta) {
    const double scale = static_cast<double>(1.0f / delta.rho) * 1024.0;
    float angle = 0.0f;
    for (int k = 0; k <= g.lastAngle; ++k, angle += delta.theta) {
        b.sine[k] = static_cast<std::int32_t>(std::sin(static_cast<double>(angle)) * scale);
        b.cosine[k] = static_cast<std::int32_t>(std::cos(static_cast<double>(angle)) * scale);
    }
}

// Per row, the columns of the non-zero pixels in ascending order, 16 pixels a test.
void listPoints(Layout const& b, Ipp8u const* image, int step, IppiSize roi) {
    for (int y = 0; y < roi.height; ++y) {
        Byte const* row = rowAt(image, step, y);
        std::int32_t* list = b.pointRow(y);
        int count = 0, x = 0;
        for (; x + 16 <= roi.width; x += 16)
            for (unsigned set = ~L::byteMask(L::equal(L::load(row + x), L::zero())) & 0xFFFFu;
                 set != 0; set &= set - 1)
                list[4 + count++] = x + __builtin_ctz(set);
        for (; x < roi.width; ++x)
            if (row[x] != 0) list[4 + count++] = x;
        list[0] = count;
    }
}

// Every point votes for its cell at this angle, four points at a time and the rest singly,
// with the same float operations in the same order. Nothing else is kept per vote: the peak
// test walks the whole row, cheaper than tracking which cells got votes.
void vote(Layout const& b, Geometry g, IppiSize roi, std::int32_t* counters, int cosine, int sine) {
    const float c = static_cast<float>(cosine), s = static_cast<float>(sine);
    const auto cells = static_cast<unsigned>(g.numRho);
    auto count = [&](int cell) {
        // Outside the row only with steps of the region's size.
        if (static_cast<unsigned>(cell) < cells) ++counters[cell];
    };
    const L::V half = L::ints(512), offset = L::ints(g.rhoOffset);
    for (int y = 0; y < roi.height; ++y) {
        std::int32_t const* list = b.pointRow(y);
        const int n = list[0];
        if (n == 0) continue;
        const float p = static_cast<float>(y) * s;
        int k = 0;
        for (; k + 4 <= n; k += 4) {
            const F::F x = F::fromInts(L::load(list + 4 + k));
            const L::V v = F::roundToInts(F::add(F::mul(x, F::fill(c)), F::fill(p)));
            alignas(16) std::int32_t cells[4];
            L::store(cells, L::addInts(L::shiftIntsRightSigned<10>(L::addInts(v, half)), offset));
            for (int cell : cells) count(cell);
        }
        for (; k < n; ++k)
            count(((roundToInt(static_cast<float>(list[4 + k]) * c + p) + 512) >> 10) +
                  g.rhoOffset);
    }
}

// Writes into the peak row, from cell 0 to `high` in blocks of 4, each cell's votes where
// it is a peak and 0 elsewhere: above the threshold, at least the bound, above the cell
// before and the previous angle's, at least the cell after and the next angle's. Only one
// cell of a plateau wins. Cell -1 is the row's zero guard. Returns whether any cell passed
// the first two tests, without which the row holds no peak.
bool testPeaks(std::int32_t const* centre, std::int32_t const* previous, std::int32_t const* next,
               std::int32_t* peaks, int high, int threshold, int bound) {
    const L::V above = L::ints(threshold), least = L::ints(bound);
    bool found = false;
    for (int i = 0; i <= high; i += 4) {
        const L::V c = L::load(centre + i);
        const L::V candidates = L::bitAndNot(L::greaterInts(c, above), L::greaterInts(least, c));
        if (!L::any(candidates)) {
            L::store(peaks + i, L::zero());
            continue;
        }
        found = true;
        L::V peak = L::bitAnd(candidates, L::greaterInts(c, L::load(centre + i - 1)));
        peak = L::bitAndNot(peak, L::greaterInts(L::load(centre + i + 1), c));
        peak = L::bitAnd(peak, L::greaterInts(c, L::load(previous + i)));
        peak = L::bitAndNot(peak, L::greaterInts(L::load(next + i), c));
        L::store(peaks + i, L::bitAnd(peak, c));
    }
    return found;
}

class PeakList {
public:
    PeakList(HoughPeak* list, int capacity) : _list(list), _capacity(capacity) {}
    int count() const { return _count; }
    int bound() const { return _bound; }

    void insert(int rho, int theta, int votes) {
        if (_count < _capacity)
            ++_count;
        else
            _bound = _list[_capacity - 1].votes;
        int at = 0;
        while (at < _capacity && _list[at].votes >= votes) ++at;
        if (at == _capacity) return;
        std::memmove(_list + at + 1, _list + at, sizeof(HoughPeak) * (_capacity - 1 - at));
        _list[at] = {rho, theta, votes, 0};
    }

private:
    HoughPeak* _list;
    int _capacity, _count = 0, _bound = 0;
};

int houghKernel(Layout const& b, Geometry g, IppiSize roi, int threshold, int maxLineCount) {
    for (int r = 0; r < 3; ++r) std::memset(b.counters(r) - 4, 0, 4 * (g.numRho + 4));
    PeakList list(b.peaks, maxLineCount);
    // The peaks of the row of angle `centre`, between the rows of the angles on each side.
    auto peaksOf = [&](int centre, std::int32_t const* previous, std::int32_t const* next) {
        if (!testPeaks(b.counters(centre % 3), previous, next, b.peakRow, g.numRho - 1, threshold,
                       list.bound()))
            return;
        for (int i = 0; i < g.numRho; ++i)
            if (b.peakRow[i] != 0) list.insert(i, centre, b.peakRow[i]);
    };
    for (int t = 0; t <= g.lastAngle; ++t) {
        std::int32_t* current = b.counters(t % 3);
        std::memset(current, 0, 4 * g.numRho);
        vote(b, g, roi, current, b.cosine[t], b.sine[t]);
        if (t > 0) peaksOf(t - 1, b.counters((t + 1) % 3), current);
    }
    std::int32_t* beyond = b.counters((g.lastAngle + 1) % 3);
    std::memset(beyond, 0, 4 * g.numRho);
    peaksOf(g.lastAngle, b.counters((g.lastAngle + 2) % 3), beyond);
    return list.count();
}

// Steps must be positive (NaN is not).
bool stepsPositive(IppiRhoTheta delta) {
    return delta.rho > 0 && delta.theta > 0;
}

}  // namespace

IppStatus ippiHoughLineGetSize_8u_C1R(IppiSize roiSize, IppiRhoTheta delta, int maxLineCount,
                                      int* pBufSize) {
    const IppStatus status = firstFailure(
        {nullCheck(pBufSize), sizeCheck(roiSize), {!stepsPositive(delta), ippStsBadArgErr}});
    if (status != ippStsNoErr) return status;
    const std::int64_t bytes = bufferBytes(roiSize, geometryOf(roiSize, delta), maxLineCount);
    *pBufSize = static_cast<int>(static_cast<std::uint32_t>(bytes));
    return bytes > 2147483647 ? ippStsSizeOverflowWrn : ippStsNoErr;
}

IppStatus ippiHoughLine_8u32f_C1R(Ipp8u const* pSrc, int srcStep, IppiSize roiSize,
                                  IppiRhoTheta delta, int threshold, IppiRhoTheta* pLine,
                                  int maxLineCount, int* pLineCount, Ipp8u* pBuffer) {
    const IppStatus status = firstFailure(
        {nullCheck(pSrc, pLine, pLineCount, pBuffer),
         {srcStep < 1, ippStsStepErr},
         {roiSize.width < 1 || roiSize.height < 1 || maxLineCount < 1, ippStsSizeErr},
         {!stepsPositive(delta) || delta.rho > static_cast<float>(roiSize.width + roiSize.height) ||
              static_cast<double>(delta.theta) > 3.14159 || threshold < 1,
          ippStsBadArgErr}});
    if (status != ippStsNoErr) return status;
    const Geometry g = geometryOf(roiSize, delta);
    const Layout b(pBuffer, roiSize, g, maxLineCount);
    std::memset(pBuffer, 0, 12 * g.numRho + 176);
    std::memset(b.peaks, 0, sizeof(HoughPeak) * maxLineCount);
    fillTables(b, g, delta);
    listPoints(b, pSrc, srcStep, roiSize);
    const int found = houghKernel(b, g, roiSize, threshold, maxLineCount);
    const int n = found < maxLineCount ? found : maxLineCount;
    for (int k = 0; k < n; ++k) {
        pLine[k].rho = static_cast<float>(b.peaks[k].rhoIndex - g.rhoOffset) * delta.rho;
        pLine[k].theta = static_cast<float>(b.peaks[k].thetaIndex) * delta.theta;
    }
    *pLineCount = n;
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
