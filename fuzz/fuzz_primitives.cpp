// The primitives with arbitrary arguments at every slot this processor executes: sizes,
// signed steps with padding, null pointers, masks, anchors, modes and values from the
// fuzzer's bytes. Every image lies flush against an inaccessible page, on the low side or
// the high side as the input says, in a block that holds exactly its rows (and for filters
// the mask area around them), so a read or write outside is a crash the fuzzer reports. A
// refused call must leave its destination as it was.
#include "fuzz_input.h"

#include <nuv/primitives.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

using nuv::fuzz::Input;

namespace {
int selectedSlot = 0;
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ippInit();
    selectedSlot = static_cast<int>(ippJumpIndexForMergedLibs);
    return 0;
}

namespace {

// Rows of an image in a block of pages between two inaccessible ones.
class Fenced {
public:
    // `rows` rows of `rowBytes`, `step` apart (any sign); flush against the high guard when
    // `high`.
    Fenced(int rowBytes, int rows, int step, bool high, Input& in) {
        const std::size_t distance = static_cast<std::size_t>(step < 0 ? -(long)step : step);
        _span = rowBytes < 1 || rows < 1 ? 1 : distance * (rows - 1) + rowBytes;
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t pages = (_span + page - 1) / page;
        _mapped = (pages + 2) * page;
        _base = static_cast<std::uint8_t*>(
            mmap(nullptr, _mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (_base == MAP_FAILED) std::abort();
        mprotect(_base, page, PROT_NONE);
        mprotect(_base + (pages + 1) * page, page, PROT_NONE);
        _lowest = high ? _base + (pages + 1) * page - _span : _base + page;
        for (std::size_t i = 0; i < _span; ++i) _lowest[i] = in.byte();
        _first = step < 0 && rows > 1 ? _lowest + distance * (rows - 1) : _lowest;
    }
    ~Fenced() { munmap(_base, _mapped); }
    Fenced(Fenced const&) = delete;
    Fenced& operator=(Fenced const&) = delete;

    std::uint8_t* first() const { return _first; }
    std::vector<std::uint8_t> bytes() const { return {_lowest, _lowest + _span}; }

private:
    std::uint8_t *_base, *_lowest, *_first;
    std::size_t _span, _mapped;
};

// One call's arguments: the destination region's size and the primitive's extras.
struct Call {
    Ipp8u const* src;
    int srcStep;
    Ipp8u const* src2;
    int src2Step;
    Ipp8u* dst;
    int dstStep;
    IppiSize size;
    Input* in;
    Ipp8u value() const { return in->byte(); }
};

enum class Shape { same, transposed, none, inPlace };

struct Entry {
    int srcBytes, dstBytes;  // per pixel; 0: no such image
    Shape shape;
    // The source's extra pixels around the region: left, top, right, bottom.
    std::function<void(Input&, int (&)[4], int (&)[4])> margins;
    std::function<IppStatus(Call const&, int const (&)[4])> call;
};

void noMargins(Input&, int (&m)[4], int (&extra)[4]) {
    std::memset(m, 0, sizeof m);
    std::memset(extra, 0, sizeof extra);
}
// A mask and anchor from the input; the source holds the mask area when they are valid.
void maskArea(Input& in, int (&m)[4], int (&extra)[4]) {
    extra[0] = in.in(-1, 9), extra[1] = in.in(-1, 9);  // mask width, height
    extra[2] = in.in(-1, 9), extra[3] = in.in(-1, 9);  // anchor x, y
    const bool valid = extra[0] > 0 && extra[1] > 0 && extra[2] >= 0 && extra[2] < extra[0] &&
                       extra[3] >= 0 && extra[3] < extra[1];
    m[0] = valid ? extra[2] : 0, m[1] = valid ? extra[3] : 0;
    m[2] = valid ? extra[0] - 1 - extra[2] : 0, m[3] = valid ? extra[1] - 1 - extra[3] : 0;
}
void aroundByOne(Input&, int (&m)[4], int (&extra)[4]) {
    for (int& v : m) v = 1;
    std::memset(extra, 0, sizeof extra);
}
// A border copy's source lies in the destination's size less the borders.
void bordered(Input& in, int (&m)[4], int (&extra)[4]) {
    extra[0] = in.in(-1, 6), extra[1] = in.in(-1, 6);  // top, left
    extra[2] = in.in(0, 6), extra[3] = in.in(0, 6);    // bottom, right
    m[0] = m[1] = 0, m[2] = -extra[1] - extra[3], m[3] = -extra[0] - extra[2];
}

IppiSize lessBorders(IppiSize s, int const (&e)[4]) {
    return {s.width - e[1] - e[3], s.height - e[0] - e[2]};
}

using Unary = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);
using Rank = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, IppiSize, IppiPoint);
using Border = IppStatus (*)(Ipp8u const*, int, IppiSize, Ipp8u*, int, IppiSize, int, int);
using Margins = void (*)(Input&, int (&)[4], int (&)[4]);

Entry unary(Unary f, int srcBytes, int dstBytes, Shape shape = Shape::same,
            Margins margins = noMargins) {
    return {srcBytes, dstBytes, shape, margins,
            [f](Call const& c, auto&) { return f(c.src, c.srcStep, c.dst, c.dstStep, c.size); }};
}
Entry rank(Rank f, int bytes) {
    return {bytes, bytes, Shape::same, maskArea, [f](Call const& c, int const(&e)[4]) {
                return f(c.src, c.srcStep, c.dst, c.dstStep, c.size, {e[0], e[1]}, {e[2], e[3]});
            }};
}
Entry border(Border f, int bytes) {
    return {bytes, bytes, Shape::same, bordered, [f](Call const& c, int const(&e)[4]) {
                return f(c.src, c.srcStep, lessBorders(c.size, e), c.dst, c.dstStep, c.size, e[0],
                         e[1]);
            }};
}

std::vector<Entry> const& entries() {
    static std::vector<Entry> const all = {
        unary(ippiCopy_8u_C1R, 1, 1),
        unary(ippiCopy_8u_C3R, 3, 3),
        unary(ippiCopy_8u_C1C3R, 1, 3),
        unary(ippiCopy_8u_C3C1R, 3, 1),
        unary(ippiCopy_8u_AC4C3R, 4, 3),
        unary(ippiRGBToHSV_8u_C3R, 3, 3),
        unary(ippiHSVToRGB_8u_C3R, 3, 3),
        unary(ippiRGBToHLS_8u_C3R, 3, 3),
        unary(ippiHLSToRGB_8u_C3R, 3, 3),
        unary(ippiRGBToYCbCr_8u_C3R, 3, 3),
        unary(ippiYCbCrToRGB_8u_C3R, 3, 3),
        unary(ippiRGBToGray_8u_C3C1R, 3, 1),
        unary(ippiTranspose_8u_C1R, 1, 1, Shape::transposed),
        unary(ippiTranspose_8u_C3R, 3, 3, Shape::transposed),
        unary(ippiFilterSobelHoriz_8u_C1R, 1, 1, Shape::same, aroundByOne),
        unary(ippiFilterSobelHoriz_8u_C3R, 3, 3, Shape::same, aroundByOne),
        unary(ippiFilterSobelVert_8u_C1R, 1, 1, Shape::same, aroundByOne),
        unary(ippiFilterSobelVert_8u_C3R, 3, 3, Shape::same, aroundByOne),
        rank(ippiFilterMin_8u_C1R, 1),
        rank(ippiFilterMin_8u_C3R, 3),
        rank(ippiFilterMax_8u_C1R, 1),
        rank(ippiFilterMax_8u_C3R, 3),
        border(ippiCopyReplicateBorder_8u_C1R, 1),
        border(ippiCopyReplicateBorder_8u_C3R, 3),
        {1, 1, Shape::same, noMargins,
         [](Call const& c, auto&) {
             return ippiAdd_8u_C1RSfs(c.src, c.srcStep, c.src2, c.src2Step, c.dst, c.dstStep,
                                      c.size, c.in->in(-2, 20));
         }},
        {3, 3, Shape::same, noMargins,
         [](Call const& c, auto&) {
             return ippiAdd_8u_C3RSfs(c.src, c.srcStep, c.src2, c.src2Step, c.dst, c.dstStep,
                                      c.size, c.in->in(-2, 20));
         }},
        {1, 1, Shape::same, noMargins,
         [](Call const& c, auto&) {
             return ippiMirror_8u_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.size, c.in->in(-1, 3));
         }},
        {3, 3, Shape::same, noMargins,
         [](Call const& c, auto&) {
             return ippiMirror_8u_C3R(c.src, c.srcStep, c.dst, c.dstStep, c.size, c.in->in(-1, 3));
         }},
        {3, 3, Shape::same, noMargins,
         [](Call const& c, auto&) {
             const int order[3] = {c.in->in(-1, 3), c.in->in(-1, 3), c.in->in(-1, 3)};
             return ippiSwapChannels_8u_C3R(c.src, c.srcStep, c.dst, c.dstStep, c.size, order);
         }},
        {0, 3, Shape::inPlace, noMargins,
         [](Call const& c, auto&) {
             const int order[3] = {c.in->in(-1, 3), c.in->in(-1, 3), c.in->in(-1, 3)};
             return ippiSwapChannels_8u_C3IR(c.dst, c.dstStep, c.size, order);
         }},
        {4, 3, Shape::same, noMargins,
         [](Call const& c, auto&) {
             const int order[3] = {c.in->in(-1, 4), c.in->in(-1, 4), c.in->in(-1, 4)};
             return ippiSwapChannels_8u_C4C3R(c.src, c.srcStep, c.dst, c.dstStep, c.size, order);
         }},
        {1, 1, Shape::same, noMargins,
         [](Call const& c, auto&) {
             return ippiThreshold_LT_8u_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.size, c.value());
         }},
        {0, 3, Shape::inPlace, noMargins,
         [](Call const& c, auto&) {
             const Ipp8u t[3] = {c.value(), c.value(), c.value()};
             return ippiThreshold_LT_8u_C3IR(c.dst, c.dstStep, c.size, t);
         }},
        {1, 1, Shape::same, noMargins,
         [](Call const& c, auto&) {
             const bool lt = c.in->flag();
             return (lt ? ippiThreshold_LTVal_8u_C1R : ippiThreshold_GTVal_8u_C1R)(
                 c.src, c.srcStep, c.dst, c.dstStep, c.size, c.value(), c.value());
         }},
        {3, 3, Shape::same, noMargins,
         [](Call const& c, auto&) {
             const Ipp8u t[3] = {c.value(), c.value(), c.value()}, v[3] = {c.value(), 1, 2};
             const bool lt = c.in->flag();
             return (lt ? ippiThreshold_LTVal_8u_C3R : ippiThreshold_GTVal_8u_C3R)(
                 c.src, c.srcStep, c.dst, c.dstStep, c.size, t, v);
         }},
        {0, 1, Shape::inPlace, noMargins,
         [](Call const& c, auto&) {
             return ippiThreshold_LTValGTVal_8u_C1IR(c.dst, c.dstStep, c.size, c.value(), c.value(),
                                                     c.value(), c.value());
         }},
        {0, 3, Shape::inPlace, noMargins,
         [](Call const& c, auto&) {
             const Ipp8u lt[3] = {c.value(), c.value(), c.value()}, gt[3] = {c.value(), 9, 200};
             return ippiThreshold_LTValGTVal_8u_C3IR(c.dst, c.dstStep, c.size, lt, lt, gt, gt);
         }},
        {1, 1, Shape::same, noMargins,
         [](Call const& c, auto&) {
             return ippiCompareC_8u_C1R(c.src, c.srcStep, c.value(), c.dst, c.dstStep, c.size,
                                        c.in->in(-1, 6));
         }},
        {3, 1, Shape::same, noMargins,
         [](Call const& c, auto&) {
             const Ipp8u v[3] = {c.value(), c.value(), c.value()};
             return ippiCompareC_8u_C3R(c.src, c.srcStep, v, c.dst, c.dstStep, c.size,
                                        c.in->in(-1, 6));
         }},
        {3, 0, Shape::none, noMargins,
         [](Call const& c, auto&) {
             double mean[3];
             Ipp8u low[3], high[3];
             ippiMean_8u_C3R(c.src, c.srcStep, c.size, mean);
             ippiMean_8u_C1R(c.src, c.srcStep, c.size, mean);
             ippiMinMax_8u_C1R(c.src, c.srcStep, c.size, low, high);
             return ippiMinMax_8u_C3R(c.src, c.srcStep, c.size, low, high);
         }},
        {0, 1, Shape::inPlace, noMargins,
         [](Call const& c, auto&) {
             int size = 0, count = 0;
             if (ippiLabelMarkersGetBufferSize_8u_C1R(c.size, &size) != ippStsNoErr) size = 64;
             // Exactly the queried scratch, against its own guard.
             Fenced scratch(size, 1, size, true, *c.in);
             return ippiLabelMarkers_8u_C1IR(c.dst, c.dstStep, c.size, c.in->in(-1, 4),
                                             c.in->in(250, 256), c.in->in(-1, 2), &count,
                                             scratch.first());
         }},
        {1, 0, Shape::none, noMargins,
         [](Call const& c, auto&) {
             const IppiRhoTheta delta{static_cast<float>(c.in->in(-1, 40)) / 4,
                                      static_cast<float>(c.in->in(-1, 40)) / 12};
             const int max = c.in->in(-1, 8);
             int size = 0, count = 0;
             if (ippiHoughLineGetSize_8u_C1R(c.size, delta, max, &size) != ippStsNoErr || size < 1)
                 size = 64;
             Fenced scratch(size, 1, size, true, *c.in);
             std::vector<IppiRhoTheta> lines(max > 0 ? max : 1);
             return ippiHoughLine_8u32f_C1R(c.src, c.srcStep, c.size, delta, c.in->in(-1, 6),
                                            lines.data(), max, &count, scratch.first());
         }},
    };
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input in(data, size);
    Entry const& e = entries()[in.in(0, static_cast<int>(entries().size()) - 1)];
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(in.in(0, selectedSlot));
    const IppiSize roi{in.in(-1, 48), in.in(-1, 24)};
    const bool high = in.flag();
    int margins[4], extra[4];
    e.margins(in, margins, extra);

    const int srcWidth = roi.width + margins[0] + margins[2];
    const int srcRows = roi.height + margins[1] + margins[3];
    const int srcRow = srcWidth * e.srcBytes;
    const int srcStep = (srcRow + in.in(-4, 12)) * (in.in(0, 7) == 0 ? -1 : 1);
    std::unique_ptr<Fenced> src, src2, dst;
    if (e.srcBytes > 0) {
        src = std::make_unique<Fenced>(srcRow, srcRows, srcStep, high, in);
        src2 = std::make_unique<Fenced>(srcRow, srcRows, srcStep, !high, in);
    }
    const bool turned = e.shape == Shape::transposed;
    const int dstRow = (turned ? roi.height : roi.width) * e.dstBytes;
    const int dstRows = turned ? roi.width : roi.height;
    const int dstStep = (dstRow + in.in(-4, 12)) * (in.in(0, 7) == 0 ? -1 : 1);
    if (e.dstBytes > 0) dst = std::make_unique<Fenced>(dstRow, dstRows, dstStep, !high, in);

    // The region's first pixel sits margins[0] pixels and margins[1] rows into the source.
    Ipp8u const* first =
        src ? src->first() + static_cast<long>(margins[1]) * srcStep + margins[0] * e.srcBytes
            : nullptr;
    if (src && (srcRows < 1 || srcRow < 1)) first = src->first();
    const int nulls = in.in(0, 15);
    const Call call{nulls == 1 ? nullptr : first,
                    srcStep,
                    src2 ? src2->first() : nullptr,
                    srcStep,
                    dst && nulls != 2 ? dst->first() : nullptr,
                    dstStep,
                    roi,
                    &in};
    const std::vector<std::uint8_t> before = dst ? dst->bytes() : std::vector<std::uint8_t>();
    const IppStatus status = e.call(call, extra);
    if (status < 0 && dst && dst->bytes() != before) std::abort();  // refused, yet written
    return 0;
}
