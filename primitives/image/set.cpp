// Filling a one-channel region with a constant. The same routine in every generation; each
// compilation encodes its 16-byte stores with that generation's instructions.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;

// Regions above 512 KiB are worth asking the cache size for: below it the fill surely fits
// in cache, and the one-time query would be the only cost. A region as large as the cache
// streams.
constexpr StreamRule setStreaming{0x80000, false, CacheQuery::largest, 1, true};

// One run of n bytes. Runs of 64 bytes or more are brought to a 16-byte boundary by one
// unaligned store (up to 15 bytes are written twice), so the 64-byte blocks that follow
// use aligned stores; streamed ones bypass the cache for regions larger than it.
void fillRun(Byte* d, int n, L::V value, bool streamed) {
    if (n >= 64) {
        if (const int off = misalignment(d, 16)) {
            L::store(d, value);
            d += 16 - off;
            n -= 16 - off;
        }
        if (streamed) {
            for (; n >= 64; n -= 64, d += 64)
                for (int i = 0; i < 64; i += 16) L::stream(d + i, value);
            fenceStreamedStores();
        } else {
            for (; n >= 64; n -= 64, d += 64)
                for (int i = 0; i < 64; i += 16) L::storeAligned(d + i, value);
        }
    }
    // A short run was not aligned above, so the rest uses unaligned stores.
    for (; n >= 16; n -= 16, d += 16) L::store(d, value);
    const Byte byte = static_cast<Byte>(L::lowInt(value));
    for (; n > 0; --n) *d++ = byte;
}

}  // namespace

IppStatus ippiSet_8u_C1R(Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roiSize) {
    const IppStatus status = firstFailure({nullCheck(pDst), sizeCheck(roiSize)});
    if (status != ippStsNoErr) return status;
    const bool streamed = streams(setStreaming, product32(roiSize.width, roiSize.height));
    const L::V value16 = L::bytes(value);
    forEachRun(
        roiSize.width, roiSize.height, [&](int n, Byte* d) { fillRun(d, n, value16, streamed); },
        plane(pDst, dstStep));
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
