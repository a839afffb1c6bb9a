// Scanline flood fills of one value with another, 4- or 8-connected, working only in the
// caller's buffer: a stack of runs, each a 24-byte record {y, left, right, parentLeft,
// parentRight, dir} whose row y + dir holds the run it was found from. A popped run scans
// the row away from its parent whole, and the parent's row only outside the parent's span,
// which was scanned already; the first record's empty parent span (right + 1..right) makes
// it scan both neighbour rows whole. Every run found is extended over the whole row; the
// 8-connected fill reaches one column further each way. Area counts at a push, the bounding
// box widens at a pop. The searches along a row (a scan's next pixel of the old value, a
// run's two ends) compare 16 pixels at a time while a whole block lies in the row.
//
// The size query gives room for a quarter of the pixels as records, and some shapes need
// more (a comb of height 3 keeps nine records where the query has room for seven). The fill
// never writes past that room: a run found on a full stack is filled but not kept, and when
// the stack runs dry the region is swept for pixels of the old value beside the new one,
// each such run starting the fill again. The sweep relies on what labelling guarantees: no
// pixel of the new value outside this component touches one of the old value.
#include "primitives/simd/simd.h"

#include <cstdint>
#include <cstring>

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;

struct FillSpan {
    std::int32_t y, left, right, parentLeft, parentRight, dir;
};
static_assert(sizeof(FillSpan) == 24, "the record layout of the stack");

int queriedSize(IppiSize roi) {
    const std::int64_t bytes = ((static_cast<std::int64_t>(roi.height) * 24 * roi.width) >> 2) + 32;
    return static_cast<int>(static_cast<std::uint32_t>(bytes));
}

class Fill {
public:
    Fill(Byte* image, int step, IppiSize roi, Byte oldValue, Byte newValue, bool eight,
         Byte* buffer)
        : _image(image),
          _step(step),
          _width(roi.width),
          _height(roi.height),
          _v(oldValue),
          _n(newValue),
          _eight(eight) {
        const auto start = reinterpret_cast<std::uintptr_t>(buffer);
        const std::uintptr_t aligned = (start + 7) & ~std::uintptr_t{7};
        _stack = reinterpret_cast<FillSpan*>(aligned);
        const std::int64_t room = queriedSize(roi) - static_cast<std::int64_t>(aligned - start);
        _capacity = room > 0 ? static_cast<int>(room / 24) : 0;
    }

    void run(IppiPoint seed, IppiFillRegion* region) {
        const Run first = fillRun(seed.y, seed.x);
        _area = first.right - first.left + 1;
        _box = {first.left, first.right, seed.y, seed.y};
        if (_height > 1) {
            push(seedRecord(seed.y, first));
            drain();
            while (_overflowed) sweep();
        }
        region->area = static_cast<double>(_area);
        region->value[0] = _n;
        region->value[1] = region->value[2] = 0;
        region->rect = {_box.left, _box.top, _box.right - _box.left + 1,
                        _box.bottom - _box.top + 1};
    }

private:
    struct Run {
        int left, right;
    };
    struct Box {
        int left, right, top, bottom;
        void widen(int l, int r, int y) {
            left = l < left ? l : left;
            right = r > right ? r : right;
            top = y < top ? y : top;
            bottom = y > bottom ? y : bottom;
        }
    };

    Byte* row(int y) const { return rowAt(_image, _step, y); }

    // The last column of the run of the old value that reaches column x + 1 from x, searched
    // 16 pixels at a time while a whole block lies in the row.
    int runEnd(Byte const* r, int x) const {
        const L::V old = L::bytes(_v);
        int i = x + 1;
        for (; i + 16 <= _width; i += 16) {
            const int equal = L::byteMask(L::equal(L::load(r + i), old));
            if (equal != 0xFFFF) return i + __builtin_ctz(~equal) - 1;
        }
        while (i < _width && r[i] == _v) ++i;
        return i - 1;
    }

    // n bytes of the new value from d: 16 at a time, the last block overlapping the one
    // before, 8 and single bytes below 16.
    void write(Byte* d, int n) const {
        const L::V value = L::bytes(_n);
        if (n >= 16) {
            for (int i = 0; i + 16 < n; i += 16) L::store(d + i, value);
            L::store(d + n - 16, value);
            return;
        }
        if (n >= 8) {
            L::storeLow(d, value);
            L::storeLow(d + n - 8, value);
            return;
        }
        for (int i = 0; i < n; ++i) d[i] = _n;
    }

    // The first column of the run of the old value that reaches column x - 1 from x, searched
    // 16 pixels at a time while a whole block lies in the row.
    int runStart(Byte const* r, int x) const {
        const L::V old = L::bytes(_v);
        int i = x;
        for (; i >= 16; i -= 16) {
            const int equal = L::byteMask(L::equal(L::load(r + i - 16), old));
            if (equal != 0xFFFF) return i - 16 + (31 - __builtin_clz(~equal & 0xFFFF)) + 1;
        }
        while (i > 0 && r[i - 1] == _v) --i;
        return i;
    }

    // Writes the new value over the whole run through (x, y), whose pixel has the old value.
    Run fillRun(int y, int x) {
        Byte* r = row(y);
        const int left = runStart(r, x), right = runEnd(r, x);
        write(r + left, right - left + 1);
        return {left, right};
    }

    FillSpan seedRecord(int y, Run run) const {
        return {y, run.left, run.right, run.right + 1, run.right, y == _height - 1 ? -1 : 1};
    }

    // A run that finds the stack full is filled but not kept; its box counts now.
    void push(FillSpan const& span) {
        if (_count == _capacity) {
            _overflowed = true;
            _box.widen(span.left, span.right, span.y);
            return;
        }
        std::memcpy(_stack + _count++, &span, sizeof span);
    }

    // The first column in from..to that holds the old value, or to + 1; 16 pixels at a time
    // while a whole block lies in the row (a block may pass `to`, never the row's end).
    int nextOld(Byte const* r, int from, int to) const {
        const L::V old = L::bytes(_v);
        for (; from <= to && from + 16 <= _width; from += 16)
            if (const int equal = L::byteMask(L::equal(L::load(r + from), old))) {
                const int at = from + __builtin_ctz(equal);
                return at <= to ? at : to + 1;
            }
        while (from <= to && r[from] != _v) ++from;
        return from;
    }

    // Runs of the old value in row y starting within from..to, found from `parent`.
    void scan(int y, int from, int to, FillSpan const& parent, int dir) {
        Byte const* r = row(y);
        for (int i = nextOld(r, from, to); i <= to; i = nextOld(r, i, to)) {
            const Run found = fillRun(y, i);
            _area += found.right - found.left + 1;
            push({y, found.left, found.right, parent.left, parent.right, dir});
            i = found.right + 2;
        }
    }

    void drain() {
        while (_count > 0) {
            FillSpan s;
            std::memcpy(&s, _stack + --_count, sizeof s);
            _box.widen(s.left, s.right, s.y);
            const int a = _eight && s.left > 0 ? s.left - 1 : s.left;
            const int b = _eight && s.right < _width - 1 ? s.right + 1 : s.right;
            const int away = s.y - s.dir;
            if (static_cast<unsigned>(away) < static_cast<unsigned>(_height))
                scan(away, a, b, s, s.dir);
            scan(s.y + s.dir, a, s.parentLeft - 1, s, -s.dir);
            scan(s.y + s.dir, s.parentRight + 1, b, s, -s.dir);
        }
    }

    // Runs are always filled whole, so a pixel of the old value never has the new one beside
    // it in its own row: only the rows above and below can touch it.
    bool touchesNewValue(int y, int x) const {
        const int from = _eight && x > 0 ? x - 1 : x;
        const int to = _eight && x < _width - 1 ? x + 1 : x;
        for (int dy : {-1, 1}) {
            if (static_cast<unsigned>(y + dy) >= static_cast<unsigned>(_height)) continue;
            Byte const* n = row(y + dy);
            for (int i = from; i <= to; ++i)
                if (n[i] == _n) return true;
        }
        return false;
    }

    // Runs left unscanned by a full stack: each pixel of the old value beside the new one
    // starts the fill again, until a sweep ends with no run refused.
    void sweep() {
        _overflowed = false;
        for (int y = 0; y < _height; ++y) {
            Byte const* r = row(y);
            for (int x = 0; x < _width; ++x) {
                if (r[x] != _v || !touchesNewValue(y, x)) continue;
                const Run found = fillRun(y, x);
                _area += found.right - found.left + 1;
                push(seedRecord(y, found));
                drain();
                x = found.right;
            }
        }
    }

    Byte* _image;
    int _step, _width, _height;
    Byte _v, _n;
    bool _eight;
    FillSpan* _stack;
    int _count = 0, _capacity = 0;
    bool _overflowed = false;
    std::int32_t _area = 0;
    Box _box{};
};

IppStatus floodFill(bool eight, Ipp8u* pImage, int imageStep, IppiSize roi, IppiPoint seed,
                    int newVal, IppiFillRegion* pRegion, Ipp8u* pBuffer) {
    const IppStatus status =
        firstFailure({nullCheck(pImage, pRegion, pBuffer),
                      sizeCheck(roi),
                      {imageStep < roi.width, ippStsStepErr},
                      {seed.x < 0 || seed.x >= roi.width || seed.y < 0 || seed.y >= roi.height,
                       ippStsOutOfRangeErr}});
    if (status != ippStsNoErr) return status;
    const Byte v = rowAt(pImage, imageStep, seed.y)[seed.x], n = static_cast<Byte>(newVal);
    if (v == n) return ippStsNoErr;
    Fill(pImage, imageStep, roi, v, n, eight, pBuffer).run(seed, pRegion);
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiFloodFillGetSize(IppiSize roiSize, int* pBufSize) {
    const IppStatus status = firstFailure({nullCheck(pBufSize), sizeCheck(roiSize)});
    if (status != ippStsNoErr) return status;
    *pBufSize = queriedSize(roiSize);
    return ippStsNoErr;
}

IppStatus ippiFloodFill_4Con_8u_C1IR(Ipp8u* pImage, int imageStep, IppiSize roiSize, IppiPoint seed,
                                     int newVal, IppiFillRegion* pRegion, Ipp8u* pBuffer) {
    return floodFill(false, pImage, imageStep, roiSize, seed, newVal, pRegion, pBuffer);
}

IppStatus ippiFloodFill_8Con_8u_C1IR(Ipp8u* pImage, int imageStep, IppiSize roiSize, IppiPoint seed,
                                     int newVal, IppiFillRegion* pRegion, Ipp8u* pBuffer) {
    return floodFill(true, pImage, imageStep, roiSize, seed, newVal, pRegion, pBuffer);
}

}  // namespace nuv::prim::NUV_V
