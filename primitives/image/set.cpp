// Filling a one-channel region with a constant. The same routine in every generation; each
// compilation encodes its 16-byte stores with that generation's instructions.
#include "primitives/dispatch/variant.h"

#include <cstddef>
#include <cstdint>

namespace nuv::prim::NUV_V {

namespace {

// Regions above this many bytes are worth asking the cache size for: below it the fill
// surely fits in cache, and the one-time query would be the only cost.
constexpr int kCacheQueryThreshold = 0x80000;

// One run of n bytes. Runs of 64 bytes or more are brought to a 16-byte boundary by one
// unaligned store (up to 15 bytes are written twice), so the 64-byte blocks that follow
// use aligned stores; non-temporal ones bypass the cache for regions larger than it.
void owniSet_8u_C1_M7(Ipp8u* dst, int n, __m128i value16, bool nonTemporal) {
    if (n >= 64) {
        const int misalign = static_cast<int>(reinterpret_cast<std::uintptr_t>(dst) & 15);
        if (misalign != 0) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), value16);
            dst += 16 - misalign;
            n -= 16 - misalign;
        }
        if (nonTemporal) {
            for (; n >= 64; n -= 64, dst += 64) {
                _mm_stream_si128(reinterpret_cast<__m128i*>(dst), value16);
                _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 16), value16);
                _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 32), value16);
                _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 48), value16);
            }
            // Streaming stores are weakly ordered; later reads of the region by this
            // thread or another must see them.
            _mm_sfence();
        } else {
            for (; n >= 64; n -= 64, dst += 64) {
                _mm_store_si128(reinterpret_cast<__m128i*>(dst), value16);
                _mm_store_si128(reinterpret_cast<__m128i*>(dst + 16), value16);
                _mm_store_si128(reinterpret_cast<__m128i*>(dst + 32), value16);
                _mm_store_si128(reinterpret_cast<__m128i*>(dst + 48), value16);
            }
        }
    }
    // A short run was not aligned above, so the rest uses unaligned stores.
    for (; n >= 16; n -= 16, dst += 16) _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), value16);
    const Ipp8u byte = static_cast<Ipp8u>(_mm_cvtsi128_si32(value16));
    for (; n > 0; --n) *dst++ = byte;
}

}  // namespace

IppStatus ippiSet_8u_C1R(Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roiSize) {
    if (pDst == nullptr) return ippStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return ippStsSizeErr;

    // Sizes are 32-bit products; they wrap rather than trap for regions above 2 GiB.
    const int total = static_cast<int>(static_cast<std::uint32_t>(roiSize.width) *
                                       static_cast<std::uint32_t>(roiSize.height));
    int runLength = roiSize.width;
    int runs = roiSize.height;
    // Rows that follow each other without a gap are one run: one call instead of one per
    // row, which matters for narrow images.
    if (dstStep == roiSize.width) {
        runLength = total;
        runs = 1;
    }

    bool nonTemporal = false;
    int cacheSize = 0;
    if (total > kCacheQueryThreshold && ippGetMaxCacheSizeB(&cacheSize) == ippStsNoErr)
        nonTemporal = total >= cacheSize;

    const __m128i value16 = _mm_set1_epi8(static_cast<char>(value));
    for (int y = 0; y < runs; ++y)
        owniSet_8u_C1_M7(pDst + static_cast<std::ptrdiff_t>(y) * dstStep, runLength, value16,
                         nonTemporal);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
