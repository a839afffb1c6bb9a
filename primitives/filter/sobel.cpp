// The 3x3 Sobel operators on bytes, in two passes through a row of 16-bit values: a column
// pass over the three rows of the mask area, then a row pass into the destination, saturated
// to a byte, so that one sign of the gradient survives. The two operators keep opposite
// senses of their axis:
//   horizontal  bottom minus top (-1 -2 -1 / 0 0 0 / 1 2 1): bright below dark is positive;
//               the middle row is never read;
//   vertical    left minus right (1 0 -1 / 2 0 -2 / 1 0 -1): bright left of dark is positive.
// Neighbours of a channel value lie `channels` bytes away in the interleaved row. Reads stay
// inside columns -1..width and rows -1..height of the source; the row buffer is allocated on
// each call, for a strip of columns.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;
using Word = std::int16_t;

enum class Axis { horizontal, vertical };

// Column pass over n bytes of the area's three rows: the difference bottom - top, or the
// weighted sum top + 2 middle + bottom.
template <Axis A>
void columnPass(Byte const* top, Byte const* middle, Byte const* bottom, Word* out, int n) {
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        const L::V t = L::load(top + i), b = L::load(bottom + i);
        L::V low, high;
        if constexpr (A == Axis::horizontal) {
            low = L::subWords(L::widenLow(b), L::widenLow(t));
            high = L::subWords(L::widenHigh(b), L::widenHigh(t));
        } else {
            const L::V m = L::load(middle + i);
            low = L::addWords(L::addWords(L::widenLow(t), L::widenLow(b)),
                              L::shiftWordsLeft<1>(L::widenLow(m)));
            high = L::addWords(L::addWords(L::widenHigh(t), L::widenHigh(b)),
                               L::shiftWordsLeft<1>(L::widenHigh(m)));
        }
        L::store(out + i, low);
        L::store(out + i + 8, high);
    }
    for (; i < n; ++i)
        out[i] = A == Axis::horizontal ? Word(bottom[i] - top[i])
                                       : Word(top[i] + 2 * middle[i] + bottom[i]);
}

// Row pass into n bytes: d + 2 d[c] + d[2c] (horizontal) or b - b[2c] clipped at 0
// (vertical), saturated to 255.
template <Axis A>
void rowPass(Word const* in, Byte* dst, int n, int c) {
    int i = 0;
    auto block = [&](int at) {
        const L::V a = L::load(in + at), m = L::load(in + at + c), z = L::load(in + at + 2 * c);
        if constexpr (A == Axis::horizontal) {
            return L::addWords(L::addWords(a, z), L::shiftWordsLeft<1>(m));
        } else {
            return L::subWordsSaturatedUnsigned(a, z);
        }
    };
    for (; i + 16 <= n; i += 16) L::store(dst + i, L::narrow(block(i), block(i + 8)));
    for (; i < n; ++i) {
        const int r =
            A == Axis::horizontal ? in[i] + 2 * in[i + c] + in[i + 2 * c] : in[i] - in[i + 2 * c];
        dst[i] = static_cast<Byte>(r < 0 ? 0 : r > 255 ? 255 : r);
    }
}

// Rows are filtered in strips of at most this many destination bytes, so that the row
// buffer stays well under 64 KiB at any width and the allocator serves it again on the next
// call without a trip to the system. Every destination byte depends on its own column pass
// values only, so the strips change no byte.
constexpr int kStripBytes = 4096;

// The row buffer's size in bytes, computed in 32 bits from the strip's width rounded up to 16.
int bufferBytes(Axis a, int width, int c) {
    const int w = (width + 15) & ~15;
    return a == Axis::horizontal ? 4 * c * ((w + 2 * c + 31) & ~31)
                                 : 2 * c * ((w + 2 * c + 15) & ~15);
}

template <Axis A, int C>
IppStatus sobel(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi) {
    const IppStatus status = firstFailure(
        {nullCheck(pSrc, pDst), sizeCheck(roi), {srcStep < 1 || dstStep < 1, ippStsStepErr}});
    if (status != ippStsNoErr) return status;
    const int rowBytes = roi.width * C;
    const int strip = rowBytes < kStripBytes ? rowBytes : kStripBytes;
    Ipp8u* buffer = ippsMalloc_8u(bufferBytes(A, (strip + C - 1) / C, C));
    if (buffer == nullptr) return ippStsMemAllocErr;
    Word* row = reinterpret_cast<Word*>(buffer);
    Byte const* area = rowAt(pSrc, srcStep, -1) - C;  // the mask area's top-left pixel
    for (int x = 0; x < rowBytes; x += strip) {
        const int n = rowBytes - x < strip ? rowBytes - x : strip;
        for (int y = 0; y < roi.height; ++y) {
            Byte const* top = rowAt(area, srcStep, y) + x;
            columnPass<A>(top, rowAt(top, srcStep, 1), rowAt(top, srcStep, 2), row, n + 2 * C);
            rowPass<A>(row, rowAt(pDst, dstStep, y) + x, n, C);
        }
    }
    ippsFree(buffer);
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiFilterSobelHoriz_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                      IppiSize roiSize) {
    return sobel<Axis::horizontal, 1>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiFilterSobelHoriz_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                      IppiSize roiSize) {
    return sobel<Axis::horizontal, 3>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiFilterSobelVert_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize) {
    return sobel<Axis::vertical, 1>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiFilterSobelVert_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize) {
    return sobel<Axis::vertical, 3>(pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // namespace nuv::prim::NUV_V
