// Clearing vectors. Up to SSE4.1 the worker clears by 16 bytes and asks the cache size the
// copy family's older way; the AVX generations clear by 32 bytes and ask
// ippGetMaxCacheSizeB. Either way a block larger than the cache is written with
// non-temporal stores, so clearing it does not evict the caller's working set.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

// Below its bound a clear surely fits in cache and the cache is not asked at all. The older
// generations ask the copy family's descriptor table, the AVX ones the largest cache; either
// way only a block at least as large as the cache (past it, for the AVX ones) streams.
constexpr StreamRule zeroStreaming[generationCount] = {
    /* m7 */ {0x80000, false, CacheQuery::copyTable, 1, true},
    /* n8 */ {0x80000, false, CacheQuery::copyTable, 1, true},
    /* u8 */ {0x80000, false, CacheQuery::copyTable, 1, true},
    /* y8 */ {0x80000, false, CacheQuery::copyTable, 1, true},
    /* e9 */ {0x200000, false, CacheQuery::largest, 1, false},
    /* l9 */ {0x200000, false, CacheQuery::largest, 1, false},
};
constexpr StreamRule const& streaming = ofThisGeneration(zeroStreaming);

// Fewer than 16 bytes: two overlapping stores of the widest piece that fits, so no byte
// loop runs for more than three bytes.
void clearShort(Byte* p, int n) {
    if (n >= 8) {
        storeBytes<8>(p, 0);
        storeBytes<8>(p + n - 8, 0);
    } else if (n >= 4) {
        storeBytes<4>(p, 0);
        storeBytes<4>(p + n - 4, 0);
    } else {
        for (int i = 0; i < n; ++i) p[i] = 0;
    }
}

// Clears a piece of N bytes at p if p has the address bit N, so that p reaches the next
// multiple of 2N.
template <int N>
inline void clearToAlignment(Byte*& p, int& n) {
    if (misalignment(p, 2 * N) >= N) {
        storeBytes<N>(p, 0);
        p += N;
        n -= N;
    }
}

#if !defined(__AVX__)
// m7, n8, u8, y8: align to 16 bytes by pieces of 1, 2, 4 and 8, clear 64-byte blocks, then
// up to three aligned 16-byte stores and a short rest.
void clearBy16(Byte* p, int n) {
    using L = Lanes<16>;
    if (n >= 16) {
        // Each piece is taken by the address as it stands after the smaller ones.
        clearToAlignment<1>(p, n);
        clearToAlignment<2>(p, n);
        clearToAlignment<4>(p, n);
        clearToAlignment<8>(p, n);
        const L::V zero = L::zero();
        if (n >= 64) {
            if (streams(streaming, n)) {
                for (; n >= 64; n -= 64, p += 64)
                    for (int i = 0; i < 64; i += 16) L::stream(p + i, zero);
                fenceStreamedStores();
            } else {
                for (; n >= 64; n -= 64, p += 64)
                    for (int i = 0; i < 64; i += 16) L::storeAligned(p + i, zero);
            }
        }
        for (; n >= 16; n -= 16, p += 16) L::storeAligned(p, zero);
    }
    clearShort(p, n);
}

#else
// e9, l9: 32-byte stores, the last ones ending at the block's end (overlapping earlier
// ones) so no loop of small pieces runs.
void clearBy32(Byte* p, int n) {
    using L = Lanes<32>;
    const L::V zero = L::zero();
    if (n < 32) {
        if (n >= 16) {
            Lanes<16>::store(p, Lanes<16>::zero());
            Lanes<16>::store(p + n - 16, Lanes<16>::zero());
        } else {
            clearShort(p, n);
        }
        return;
    }
    Byte* const end = p + n;
    if (streams(streaming, n)) {
        // An unaligned head of 64 bytes, then streaming from the next 64-byte boundary, so
        // every streamed block fills one cache line.
        L::store(p, zero);
        L::store(p + 32, zero);
        p += 64 - misalignment(p, 64);
        for (; end - p >= 64; p += 64) {
            L::stream(p, zero);
            L::stream(p + 32, zero);
        }
        L::store(end - 64, zero);
        L::store(end - 32, zero);
        fenceStreamedStores();
        return;
    }
    if (n >= 128) {
        // Align the loop's stores to 32 bytes; the head store covers what is skipped.
        L::store(p, zero);
        p += 32 - misalignment(p, 32);
        for (; end - p >= 64; p += 64) {
            L::storeAligned(p, zero);
            L::storeAligned(p + 32, zero);
        }
    }
    // Fewer than 128 bytes are left and the block holds at least 32, so the last store may
    // start before p.
    for (; end - p > 32; p += 32) L::store(p, zero);
    L::store(end - 32, zero);
}
#endif

}  // namespace

// The worker of both zeroing forms. A byte count of 0 or below clears nothing.
Ipp8u* ownsZero_8u(Ipp8u* pDst, int byteCount) {
#if defined(__AVX__)
    clearBy32(pDst, byteCount);
#else
    clearBy16(pDst, byteCount);
#endif
    return pDst;
}

IppStatus ippsZero_8u(Ipp8u* pDst, int length) {
    const IppStatus status = firstFailure({nullCheck(pDst), {length < 1, ippStsSizeErr}});
    if (status != ippStsNoErr) return status;
    ownsZero_8u(pDst, length);
    return ippStsNoErr;
}

IppStatus ippsZero_32s(Ipp32s* pDst, int length) {
    const IppStatus status = firstFailure({nullCheck(pDst), {length < 1, ippStsSizeErr}});
    if (status != ippStsNoErr) return status;
    // The byte count is a 32-bit product: a length above 0x1FFFFFFF wraps.
    const int byteCount = product32(length, 4);
    ownsZero_8u(reinterpret_cast<Ipp8u*>(pDst), byteCount);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
