// Connected components of a marker image, in place: every non-zero pixel is made 255 (which
// is why no label may be 255), then each 255 met in raster order seeds one flood fill with
// the next label. Labels run from the first to the last and start again, while the count goes
// on, so with more components than labels one label stands for several. The buffer is the
// fills' stack; its size comes from the fill's own query.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;

// The first column from x on that holds 255, or the width.
int nextUnlabelled(Byte const* row, int x, int width) {
    const L::V marker = L::bytes(255);
    for (; x + 16 <= width; x += 16)
        if (const int found = L::byteMask(L::equal(L::load(row + x), marker)))
            return x + __builtin_ctz(found);
    while (x < width && row[x] != 255) ++x;
    return x;
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
    nuv::prim::NUV_V::ippiThreshold_GTVal_8u_C1R(pMarker, markerStep, pMarker, markerStep, roiSize,
                                                 0, 255);
    const auto fill = norm == 0 ? nuv::prim::NUV_V::ippiFloodFill_8Con_8u_C1IR
                                : nuv::prim::NUV_V::ippiFloodFill_4Con_8u_C1IR;
    int label = minLabel, count = 0;
    for (int y = 0; y < roiSize.height; ++y) {
        Byte const* row = rowAt(pMarker, markerStep, y);
        for (int x = nextUnlabelled(row, 0, roiSize.width); x < roiSize.width;
             x = nextUnlabelled(row, x + 1, roiSize.width)) {
            IppiFillRegion region;
            fill(pMarker, markerStep, roiSize, {x, y}, label, &region, pBuffer);
            ++count;
            label = label == maxLabel ? minLabel : label + 1;
        }
    }
    *pNumber = count;
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
