// Mirroring of one- and three-channel 8-bit regions about the horizontal axis (flip 0: rows
// swap top to bottom), the vertical axis (flip 1: columns swap left to right) or both
// (flip 2). A three-channel pixel moves whole, its bytes in their order.
//
// The copying forms hand over to the in-place forms when source and destination are one
// region. Both refuse to flip a single row top to bottom or a single column left to right:
// callers rely on that refusal, so it stays although the result would be well defined.
#include "primitives/image/mirror_rows.h"

namespace nuv::prim::NUV_V {
namespace {

// Pointers first, then the size, the axis and the minimum size along each flipped axis. No
// step is tested.
template <class... P>
inline IppStatus checkMirror(IppiSize size, int flip, P const*... pointers) {
    return firstFailure({nullCheck(pointers...),
                         sizeCheck(size),
                         {flip < 0 || flip > 2, ippStsMirrorAxisErr},
                         {flip != 1 && size.height < 2, ippStsSizeErr},
                         {flip != 0 && size.width < 2, ippStsSizeErr}});
}

// When the top-to-bottom copy streams its stores past the cache, by the source span
// (|srcStep| * height). The one-channel forms of m7 stream above 1 MiB and those of n8 to e9
// above 2 MiB; their three-channel forms never do. l9 asks the cache: a frame and its mirror
// that would not fit in it together stream, so that they do not evict the caller's data and
// skip reading each destination line before writing it, but one that fits stays there for
// the caller to use. Without a known cache the rule assumes a last-level cache of 16 MiB, so
// a span above 8 MiB streams.
constexpr StreamRule cacheAware{0x100000, false, CacheQuery::largest, 2, false, 0x800000};
constexpr StreamRule rowStreaming[2][generationCount] = {
    {streamAbove(0x100000), streamAbove(0x200000), streamAbove(0x200000), streamAbove(0x200000),
     streamAbove(0x200000), cacheAware},
    {neverStream, neverStream, neverStream, neverStream, neverStream, cacheAware},
};

template <int C>
void mirrorCopy(Byte const* src, int srcStep, Byte* dst, int dstStep, IppiSize size, int flip) {
    // A row of a three-channel region wider than 2 GiB has no 32-bit length; nothing is moved.
    if (std::int64_t{C} * size.width > 0x7FFFFFFF) return;
    if (flip == 0) {
        const std::int64_t span = (srcStep < 0 ? -std::int64_t{srcStep} : srcStep) * size.height;
        const bool streamed = streams(ofThisGeneration(rowStreaming[C == 3]), span);
        mirrorRowsCopy<C>(src, srcStep, dst, dstStep, C * size.width, size.height, streamed);
    } else {
        mirrorColumnsCopy<C>(src, srcStep, dst, dstStep, size.width, size.height, flip == 2);
    }
}

template <int C>
void mirrorInPlace(Byte* p, int step, IppiSize size, int flip) {
    if (std::int64_t{C} * size.width > 0x7FFFFFFF) return;
    if (flip == 0) {
        mirrorRowsInPlace(p, step, C * size.width, size.height);
    } else {
        mirrorColumnsInPlace<C>(p, step, size.width, size.height, flip == 2);
    }
}

}  // namespace

IppStatus ippiMirror_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, int flip) {
    const IppStatus status = checkMirror(roiSize, flip, pSrcDst);
    if (status != ippStsNoErr) return status;
    mirrorInPlace<1>(pSrcDst, srcDstStep, roiSize, flip);
    return ippStsNoErr;
}

IppStatus ippiMirror_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, int flip) {
    const IppStatus status = checkMirror(roiSize, flip, pSrcDst);
    if (status != ippStsNoErr) return status;
    mirrorInPlace<3>(pSrcDst, srcDstStep, roiSize, flip);
    return ippStsNoErr;
}

// One region with one step is mirrored in place, before any check of this form: a null
// pair is refused there. Equal pointers with different steps go the copying way.
IppStatus ippiMirror_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, int flip) {
    if (pSrc == pDst && srcStep == dstStep) return ippiMirror_8u_C1IR(pDst, dstStep, roiSize, flip);
    const IppStatus status = checkMirror(roiSize, flip, pSrc, pDst);
    if (status != ippStsNoErr) return status;
    mirrorCopy<1>(pSrc, srcStep, pDst, dstStep, roiSize, flip);
    return ippStsNoErr;
}

IppStatus ippiMirror_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, int flip) {
    if (pSrc == pDst && srcStep == dstStep) return ippiMirror_8u_C3IR(pDst, dstStep, roiSize, flip);
    const IppStatus status = checkMirror(roiSize, flip, pSrc, pDst);
    if (status != ippStsNoErr) return status;
    mirrorCopy<3>(pSrc, srcStep, pDst, dstStep, roiSize, flip);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
