// Region copy of one- and three-channel 8-bit images. The three-channel form is the
// one-channel form with rows three times as long. Each generation keeps its own strategy:
// which worker moves a row, and when a copy is large enough that its stores should stream
// past the cache rather than evict the caller's working set.
#include "primitives/dispatch/variant.h"

#include "primitives/dispatch/cpu_query.h"

#include <cstdint>

namespace nuv::prim::NUV_V {

#include "primitives/image/copy_workers.inc"

namespace {

// Products of the region's dimensions are 32-bit, wrapping as the rest of the layer does.
inline int product32(int a, int b) {
    return static_cast<int>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

struct Region {
    Byte const* src;
    int srcStep;
    Byte* dst;
    int dstStep;
    int rowBytes;
    int height;
};

// Rows that follow one another without a gap in both images are moved as one run: for a
// narrow image the call per row would cost more than the move. Returns the run length and
// sets `runs` to the number of runs.
inline int runLength(Region const& r, int& runs) {
    if (r.srcStep == r.dstStep && r.srcStep == r.rowBytes) {
        runs = 1;
        return product32(r.rowBytes, r.height);
    }
    runs = r.height;
    return r.rowBytes;
}

template <class Move>
void forEachRun(Region const& r, int n, int runs, Move move) {
    // A wrapped length of a region above 2 GiB moves nothing.
    if (n <= 0) return;
    Byte const* s = r.src;
    Byte* d = r.dst;
    for (int y = 0; y < runs; ++y, s += r.srcStep, d += r.dstStep) move(s, d, n);
}

// m7 streams above 1 MiB whatever the cache: the processors it serves have caches of that
// order, and it has no cache query of its own.
template <Gen G>
void copyRegionM7(Region const& r) {
    int runs = 0;
    const int n = runLength(r, runs);
    const bool nonTemporal = product32(r.rowBytes, r.height) > 0x100000;
    forEachRun(r, n, runs, [nonTemporal](Byte const* s, Byte* d, int length) {
        owniCopy_8u_C1_M7<G>(s, d, length, nonTemporal);
    });
}

// n8, u8, y8 learn the cache size by the copy family's own descriptor table. Only a region
// past the size threshold pays for the query; no answer means no streaming.
template <Gen G>
void copyRegionLegacy(Region const& r) {
    int runs = 0;
    const int n = runLength(r, runs);
    const std::int64_t total = product32(r.rowBytes, r.height);
    bool nonTemporal = false;
    if (n >= 64) {
        if constexpr (G == Gen::n8) {
            if (total > 0x20000) {
                const int cache = nuvLegacyCacheSize();
                nonTemporal = cache > 0 && 2 * total > cache;
            }
        } else {
            if (total >= 0x100000) {
                const int cache = nuvLegacyCacheSize();
                nonTemporal = cache > 0 && 2 * total >= cache;
            }
        }
    }
    forEachRun(r, n, runs, [nonTemporal](Byte const* s, Byte* d, int length) {
        owniCopy8uas<G>(s, d, length, nonTemporal);
    });
}

// e9, l9: rows of 1 KiB and more go to owniCopy8u_cn, which streams when twice the region
// passes both 4 MiB and the largest cache; everything else is plain 32-byte moves.
template <Gen G>
void owniCopy8u_cn(Region const& r) {
    int runs = 0;
    const int n = runLength(r, runs);
    const std::int64_t total = product32(r.rowBytes, r.height);
    bool nonTemporal = false;
    if (2 * total > 0x400000 && n >= 128) {
        int cache = 0;
        nonTemporal = ippGetMaxCacheSizeB(&cache) == ippStsNoErr && 2 * total > cache;
    }
    if (nonTemporal) {
        forEachRun(r, n, runs,
                   [](Byte const* s, Byte* d, int length) { streamRun32<G>(s, d, length); });
    } else {
        forEachRun(r, n, runs,
                   [](Byte const* s, Byte* d, int length) { owniCopy8u_E9<G>(s, d, length); });
    }
}

template <Gen G>
void copyRegionAvx(Region const& r) {
    if (r.rowBytes >= 1024) {
        owniCopy8u_cn<G>(r);
        return;
    }
    int runs = 0;
    const int n = runLength(r, runs);
    forEachRun(r, n, runs,
               [](Byte const* s, Byte* d, int length) { owniCopy8u_E9<G>(s, d, length); });
}

template <Gen G>
void copyRegion(Region const& r) {
    if constexpr (G == Gen::m7) {
        copyRegionM7<G>(r);
    } else if constexpr (G == Gen::n8 || G == Gen::u8 || G == Gen::y8) {
        copyRegionLegacy<G>(r);
    } else {
        copyRegionAvx<G>(r);
    }
}

// The pointers are checked first, then the size; no step is tested, so a zero step repeats
// a row and a negative one walks the image upward.
inline IppStatus copyChecked(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize roiSize, int channels) {
    if (pSrc == nullptr || pDst == nullptr) return ippStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return ippStsSizeErr;
    copyRegion<NUV_GEN>(
        {pSrc, srcStep, pDst, dstStep, product32(channels, roiSize.width), roiSize.height});
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiCopy_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize) {
    return copyChecked(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

IppStatus ippiCopy_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize) {
    return copyChecked(pSrc, srcStep, pDst, dstStep, roiSize, 3);
}

}  // namespace nuv::prim::NUV_V
