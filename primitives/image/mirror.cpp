// Mirroring of one- and three-channel 8-bit regions about the horizontal axis (flip 0: rows
// swap top to bottom), the vertical axis (flip 1: columns swap left to right) or both
// (flip 2). A three-channel pixel moves whole, its bytes in their order.
//
// The copying forms hand over to the in-place forms when source and destination are one
// region. Both refuse to flip a single row top to bottom or a single column left to right:
// callers rely on that refusal, so it stays although the result would be well defined.
#include "primitives/dispatch/variant.h"

#include <cstddef>
#include <cstdint>

namespace nuv::prim::NUV_V {

#include "primitives/image/copy_workers.inc"
#include "primitives/image/mirror_blocks.inc"
#include "primitives/image/mirror_workers.inc"

namespace {

// Pointers first, then the size, the axis and the minimum size along each flipped axis. No
// step is tested.
inline IppStatus checkMirror(bool nullPointer, IppiSize size, int flip) {
    if (nullPointer) return ippStsNullPtrErr;
    if (size.width < 1 || size.height < 1) return ippStsSizeErr;
    if (flip < 0 || flip > 2) return ippStsMirrorAxisErr;
    if (flip != 1 && size.height < 2) return ippStsSizeErr;
    if (flip != 0 && size.width < 2) return ippStsSizeErr;
    return ippStsNoErr;
}

// The source span (|srcStep| * height) above which the top-to-bottom copy streams its
// stores past the cache, or -1 for never. The one-channel forms of m7 stream above 1 MiB and
// those of n8 to e9 above 2 MiB; their three-channel forms never do. l9 streams either form
// above 4 MiB: a frame and its mirror together then take more of the last-level cache than
// one core can count on keeping, and the stores that bypass it also skip reading each
// destination line before writing it.
template <Gen G, int C>
constexpr std::int64_t streamingBound() {
    if constexpr (G == Gen::l9) {
        return 0x400000;
    } else if constexpr (C == 3) {
        return -1;
    } else {
        return G == Gen::m7 ? 0x100000 : 0x200000;
    }
}

// Source row y to destination row height - 1 - y, each generation with its own row mover.
template <Gen G, int C>
void flipRowsCopy(Byte const* src, int srcStep, Byte* dst, int dstStep, int rowBytes, int height) {
    constexpr std::int64_t bound = streamingBound<G, C>();
    const std::int64_t span = (srcStep < 0 ? -std::int64_t{srcStep} : srcStep) * height;
    const bool nonTemporal = bound >= 0 && span > bound;
    if constexpr (G == Gen::l9) {
        if constexpr (C == 1) {
            owniExchange_8u<G>(src, srcStep, dst, dstStep, rowBytes, height, nonTemporal);
        } else {
            owniExchange256_8u<G>(src, srcStep, dst, dstStep, rowBytes, height, nonTemporal);
        }
    } else if constexpr (G == Gen::m7) {
        copyRowsUpsideDown<G>(
            src, srcStep, dst, dstStep, rowBytes, height, nonTemporal,
            [](Byte const* s, Byte* d, int n) { owniCopy_8u_C1_M7<G>(s, d, n, false); });
    } else if constexpr (G == Gen::e9) {
        copyRowsUpsideDown<G>(src, srcStep, dst, dstStep, rowBytes, height, nonTemporal,
                              owniCopy8u_E9<G>);
    } else {
        copyRowsUpsideDown<G>(
            src, srcStep, dst, dstStep, rowBytes, height, nonTemporal,
            [](Byte const* s, Byte* d, int n) { owniCopy8uas<G>(s, d, n, false); });
    }
}

// A row of a three-channel region wider than 2 GiB has no 32-bit length; nothing is moved.
template <int C>
inline bool rowFits(IppiSize size) {
    return std::int64_t{C} * size.width <= 0x7FFFFFFF;
}

template <Gen G, int C>
void mirrorCopy(Byte const* src, int srcStep, Byte* dst, int dstStep, IppiSize size, int flip) {
    if (!rowFits<C>(size)) return;
    if (flip == 0) {
        flipRowsCopy<G, C>(src, srcStep, dst, dstStep, C * size.width, size.height);
    } else if constexpr (C == 1) {
        owniFlipCopy_8u_C1<G>(src, srcStep, dst, dstStep, size.width, size.height, flip == 2);
    } else {
        owniFlipCopy_8u_C3<G>(src, srcStep, dst, dstStep, size.width, size.height, flip == 2);
    }
}

template <Gen G, int C>
void mirrorInPlace(Byte* p, int step, IppiSize size, int flip) {
    if (!rowFits<C>(size)) return;
    if (flip == 0) {
        owniExchange_8u_I<G>(p, step, C * size.width, size.height);
    } else if constexpr (C == 1) {
        owniFlip_8u_C1<G>(p, step, size.width, size.height, flip == 2);
    } else {
        owniFlip_8u_C3<G>(p, step, size.width, size.height, flip == 2);
    }
}

}  // namespace

IppStatus ippiMirror_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, int flip) {
    const IppStatus status = checkMirror(pSrcDst == nullptr, roiSize, flip);
    if (status != ippStsNoErr) return status;
    mirrorInPlace<NUV_GEN, 1>(pSrcDst, srcDstStep, roiSize, flip);
    return ippStsNoErr;
}

IppStatus ippiMirror_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, int flip) {
    const IppStatus status = checkMirror(pSrcDst == nullptr, roiSize, flip);
    if (status != ippStsNoErr) return status;
    mirrorInPlace<NUV_GEN, 3>(pSrcDst, srcDstStep, roiSize, flip);
    return ippStsNoErr;
}

// One region with one step is mirrored in place, before any check of this form: a null
// pair is refused there. Equal pointers with different steps go the copying way.
IppStatus ippiMirror_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, int flip) {
    if (pSrc == pDst && srcStep == dstStep) return ippiMirror_8u_C1IR(pDst, dstStep, roiSize, flip);
    const IppStatus status = checkMirror(pSrc == nullptr || pDst == nullptr, roiSize, flip);
    if (status != ippStsNoErr) return status;
    mirrorCopy<NUV_GEN, 1>(pSrc, srcStep, pDst, dstStep, roiSize, flip);
    return ippStsNoErr;
}

IppStatus ippiMirror_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, int flip) {
    if (pSrc == pDst && srcStep == dstStep) return ippiMirror_8u_C3IR(pDst, dstStep, roiSize, flip);
    const IppStatus status = checkMirror(pSrc == nullptr || pDst == nullptr, roiSize, flip);
    if (status != ippStsNoErr) return status;
    mirrorCopy<NUV_GEN, 3>(pSrc, srcStep, pDst, dstStep, roiSize, flip);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
