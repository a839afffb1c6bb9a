// Region copy of one- and three-channel 8-bit images. The three-channel form is the
// one-channel form with rows three times as long. Each generation keeps its own strategy:
// which mover copies a run, and when a copy is large enough that its stores should stream
// past the cache rather than evict the caller's working set.
#include "primitives/image/copy_runs.h"

#include <cstring>

namespace nuv::prim::NUV_V {
namespace {

// The mover of each generation is the run copy's (copy_runs.h); here is when it streams.
struct CopyPolicy {
    // When the copy streams, by the region's bytes; the cache is asked only past the bound.
    StreamRule stream;
    // Runs (after joining) shorter than this never stream.
    int minStreamedRun;
    // Rows shorter than this never stream, whatever the region's size.
    int minStreamedRow;
    // Runs of at least this many bytes that do not stream go to the C library's memcpy,
    // which picks its moves for this very processor; 0 keeps the generation's own mover.
    int libraryRunMin;
};

// m7 streams above 1 MiB whatever the cache: the processors it serves have caches of that
// order, and it has no cache query of its own. n8 to y8 learn the cache by the copy family's
// own descriptor table; e9 and l9 ask the largest cache, and only for rows of 1 KiB or more.
// On the AVX processors the library's memcpy moves a long run faster than plain 32-byte
// moves (it knows the processor's string moves and prefetch distance); a short one pays
// more for the call than it gains.
constexpr CopyPolicy copyPolicies[generationCount] = {
    /* m7 */ {streamAbove(0x100000), 0, 0, 0},
    /* n8 */ {{0x20000, false, CacheQuery::copyTable, 2, false}, 64, 0, 0},
    /* u8 */ {{0x100000, true, CacheQuery::copyTable, 2, true}, 64, 0, 0},
    /* y8 */ {{0x100000, true, CacheQuery::copyTable, 2, true}, 64, 0, 0},
    /* e9 */ {{0x200000, false, CacheQuery::largest, 2, false}, 128, 1024, 2048},
    /* l9 */ {{0x200000, false, CacheQuery::largest, 2, false}, 128, 1024, 2048},
};
constexpr CopyPolicy const& policy = ofThisGeneration(copyPolicies);

// The pointers are checked first, then the size; no step is tested, so a zero step repeats
// a row and a negative one walks the image upward.
IppStatus copyRegion(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize size,
                     int channels) {
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst), sizeCheck(size)});
    if (status != ippStsNoErr) return status;
    const int rowBytes = product32(channels, size.width);
    const int run = rowsJoin(rowBytes, plane(pSrc, srcStep), plane(pDst, dstStep))
                        ? product32(rowBytes, size.height)
                        : rowBytes;
    const bool streamed = rowBytes >= policy.minStreamedRow && run >= policy.minStreamedRun &&
                          streams(policy.stream, product32(rowBytes, size.height));
    const bool library = !streamed && policy.libraryRunMin > 0 && run >= policy.libraryRunMin;
    forEachRun(
        rowBytes, size.height,
        [streamed, library](int n, Byte const* s, Byte* d) {
            if (library) {
                std::memcpy(d, s, static_cast<std::size_t>(n));
            } else {
                copyRun(s, d, n, streamed);
            }
        },
        plane(pSrc, srcStep), plane(pDst, dstStep));
    if (streamed) fenceStreamedStores();
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiCopy_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize) {
    return copyRegion(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

IppStatus ippiCopy_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize) {
    return copyRegion(pSrc, srcStep, pDst, dstStep, roiSize, 3);
}

}  // namespace nuv::prim::NUV_V
