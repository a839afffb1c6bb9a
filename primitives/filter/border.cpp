// A source region copied into a larger destination whose border repeats the nearest edge
// pixel: destination (x, y) is source (clamp(x - left), clamp(y - top)), the three bytes of a
// pixel together. m7, and the three-channel form everywhere, work in the reference order:
// each source row with its side borders, then the bottom rows copied from the last written
// row, then the top rows from the first. The one-channel form of the later generations builds
// every destination row in one downward pass from its source row, reading no destination
// byte. The in-place forms fill the border around a source that already lies in the buffer.
// Rows move by this generation's run copy, a one-channel fill by memset.
#include "primitives/image/copy_runs.h"

#include <cstring>

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

constexpr bool onePassOfGeneration[generationCount] = {false, false, true, true, true, true};
constexpr bool kOnePass = ofThisGeneration(onePassOfGeneration);

// `count` copies of the pixel at p (one or three bytes) from d on.
void fillPixels(Byte* d, Byte const* p, int channels, int count) {
    if (channels == 1) {
        std::memset(d, *p, static_cast<std::size_t>(count));
        return;
    }
    using L = Lanes<16>;
    if (count >= 16) {
        Byte pattern[48];
        for (int i = 0; i < 48; i += 3)
            pattern[i] = p[0], pattern[i + 1] = p[1], pattern[i + 2] = p[2];
        const L::V v[3] = {L::load(pattern), L::load(pattern + 16), L::load(pattern + 32)};
        for (; count >= 16; count -= 16, d += 48)
            for (int k = 0; k < 3; ++k) L::store(d + 16 * k, v[k]);
    }
    for (; count > 0; --count, d += 3) d[0] = p[0], d[1] = p[1], d[2] = p[2];
}

struct Borders {
    int channels, srcWidth, top, left, right, bottom;
    int rowBytes() const { return (left + srcWidth + right) * channels; }
};

// One destination row from its source row: left fill, the row, right fill.
void buildRow(Byte const* s, Byte* d, Borders const& b) {
    fillPixels(d, s, b.channels, b.left);
    copyRun(s, d + b.left * b.channels, b.srcWidth * b.channels, false);
    fillPixels(d + (b.left + b.srcWidth) * b.channels, s + (b.srcWidth - 1) * b.channels,
               b.channels, b.right);
}

void copyRow(Byte const* s, Byte* d, int n) {
    copyRun(s, d, n, false);
}

void replicate(Byte const* src, int srcStep, IppiSize srcRoi, Byte* dst, int dstStep,
               Borders const& b, bool onePass) {
    Byte* first = rowAt(dst, dstStep, b.top);
    if (onePass) {
        for (int y = 0; y < b.top + srcRoi.height + b.bottom; ++y) {
            const int sy = y < b.top                   ? 0
                           : y - b.top < srcRoi.height ? y - b.top
                                                       : srcRoi.height - 1;
            buildRow(rowAt(src, srcStep, sy), rowAt(dst, dstStep, y), b);
        }
        return;
    }
    for (int y = 0; y < srcRoi.height; ++y)
        buildRow(rowAt(src, srcStep, y), rowAt(first, dstStep, y), b);
    Byte* last = rowAt(first, dstStep, srcRoi.height - 1);
    for (int y = 0; y < b.bottom; ++y) copyRow(last, rowAt(last, dstStep, y + 1), b.rowBytes());
    for (int y = 0; y < b.top; ++y) copyRow(first, rowAt(dst, dstStep, y), b.rowBytes());
}

// The source's rows get their side borders where they lie, then the top and bottom rows are
// copied from the finished first and last rows.
void replicateInPlace(Byte* srcDst, int step, IppiSize srcRoi, Borders const& b) {
    const int c = b.channels;
    Byte* first = srcDst - b.left * c;
    for (int y = 0; y < srcRoi.height; ++y) {
        Byte* row = rowAt(srcDst, step, y);
        fillPixels(row - b.left * c, row, c, b.left);
        fillPixels(row + b.srcWidth * c, row + (b.srcWidth - 1) * c, c, b.right);
        if (y == 0)
            for (int t = 0; t < b.top; ++t)
                copyRow(first, rowAt(first, step, t - b.top), b.rowBytes());
    }
    Byte* last = rowAt(first, step, srcRoi.height - 1);
    for (int y = 0; y < b.bottom; ++y) copyRow(last, rowAt(last, step, y + 1), b.rowBytes());
}

Check sizesFit(IppiSize srcRoi, IppiSize dstRoi, int top, int left) {
    return {srcRoi.width < 1 || srcRoi.height < 1 || dstRoi.width < 1 || dstRoi.height < 1 ||
                top < 0 || left < 0 || dstRoi.width < left + srcRoi.width ||
                dstRoi.height < top + srcRoi.height,
            ippStsSizeErr};
}

Borders bordersOf(int channels, IppiSize srcRoi, IppiSize dstRoi, int top, int left) {
    return {channels,
            srcRoi.width,
            top,
            left,
            dstRoi.width - left - srcRoi.width,
            dstRoi.height - top - srcRoi.height};
}

IppStatus inPlaceForm(int channels, Ipp8u* pSrcDst, int step, IppiSize srcRoi, IppiSize dstRoi,
                      int top, int left) {
    const IppStatus status = firstFailure(
        {nullCheck(pSrcDst), {step < 1, ippStsStepErr}, sizesFit(srcRoi, dstRoi, top, left)});
    if (status != ippStsNoErr) return status;
    replicateInPlace(pSrcDst, step, srcRoi, bordersOf(channels, srcRoi, dstRoi, top, left));
    return ippStsNoErr;
}

// The same pointer for source and destination is the in-place form at once, before any other
// test, so the source's step is not looked at then.
IppStatus copyForm(int channels, bool onePass, Ipp8u const* pSrc, int srcStep, IppiSize srcRoi,
                   Ipp8u* pDst, int dstStep, IppiSize dstRoi, int top, int left) {
    if (pSrc == pDst) return inPlaceForm(channels, pDst, dstStep, srcRoi, dstRoi, top, left);
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst),
                                           {srcStep < 1 || dstStep < 1, ippStsStepErr},
                                           sizesFit(srcRoi, dstRoi, top, left)});
    if (status != ippStsNoErr) return status;
    replicate(pSrc, srcStep, srcRoi, pDst, dstStep, bordersOf(channels, srcRoi, dstRoi, top, left),
              onePass);
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiCopyReplicateBorder_8u_C1R(Ipp8u const* pSrc, int srcStep, IppiSize srcRoiSize,
                                         Ipp8u* pDst, int dstStep, IppiSize dstRoiSize,
                                         int topBorderHeight, int leftBorderWidth) {
    return copyForm(1, kOnePass, pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize,
                    topBorderHeight, leftBorderWidth);
}

IppStatus ippiCopyReplicateBorder_8u_C3R(Ipp8u const* pSrc, int srcStep, IppiSize srcRoiSize,
                                         Ipp8u* pDst, int dstStep, IppiSize dstRoiSize,
                                         int topBorderHeight, int leftBorderWidth) {
    return copyForm(3, false, pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight,
                    leftBorderWidth);
}

IppStatus ippiCopyReplicateBorder_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize srcRoiSize,
                                          IppiSize dstRoiSize, int topBorderHeight,
                                          int leftBorderWidth) {
    return inPlaceForm(1, pSrcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight,
                       leftBorderWidth);
}

IppStatus ippiCopyReplicateBorder_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize srcRoiSize,
                                          IppiSize dstRoiSize, int topBorderHeight,
                                          int leftBorderWidth) {
    return inPlaceForm(3, pSrcDst, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight,
                       leftBorderWidth);
}

}  // namespace nuv::prim::NUV_V
