// Clearing vectors. Up to SSE4.1 the worker clears by 16 bytes and asks the cache size the
// copy family's older way; the AVX generations clear by 32 bytes and ask
// ippGetMaxCacheSizeB. Either way a block larger than the cache is written with
// non-temporal stores, so clearing it does not evict the caller's working set.
#include "primitives/dispatch/cpu_query.h"
#include "primitives/dispatch/variant.h"

#include <cstdint>
#include <cstring>

namespace nuv::prim::NUV_V {

namespace {

constexpr bool kWide = NUV_GEN == Gen::e9 || NUV_GEN == Gen::l9;
#if defined(__AVX__)
static_assert(kWide, "only the AVX generations take the 32-byte form");
#else
static_assert(!kWide, "the AVX generations are compiled with AVX");
#endif

// Below these sizes a clear surely fits in cache and the cache is not asked at all.
constexpr int kLegacyStreamThreshold = 0x80000;
constexpr int kWideStreamThreshold = 0x200000;

void store8(Ipp8u* p, std::uint64_t v) {
    std::memcpy(p, &v, 8);
}
void store4(Ipp8u* p, std::uint32_t v) {
    std::memcpy(p, &v, 4);
}

// Fewer than 16 bytes: two overlapping stores of the widest piece that fits, so no byte
// loop runs for more than three bytes.
void clearShort(Ipp8u* p, int n) {
    if (n >= 8) {
        store8(p, 0);
        store8(p + n - 8, 0);
    } else if (n >= 4) {
        store4(p, 0);
        store4(p + n - 4, 0);
    } else {
        for (int i = 0; i < n; ++i) p[i] = 0;
    }
}

#if !defined(__AVX__)
// m7, n8, u8, y8: align to 16 bytes by pieces of 1, 2, 4 and 8, clear 64-byte blocks, then
// up to three aligned 16-byte stores and a short rest.
void clearBy16(Ipp8u* p, int n) {
    if (n >= 16) {
        // Each piece is taken by the address as it stands after the smaller ones.
        if (reinterpret_cast<std::uintptr_t>(p) & 1) {
            *p = 0;
            p += 1;
            n -= 1;
        }
        if (reinterpret_cast<std::uintptr_t>(p) & 2) {
            std::memset(p, 0, 2);
            p += 2;
            n -= 2;
        }
        if (reinterpret_cast<std::uintptr_t>(p) & 4) {
            store4(p, 0);
            p += 4;
            n -= 4;
        }
        if (reinterpret_cast<std::uintptr_t>(p) & 8) {
            store8(p, 0);
            p += 8;
            n -= 8;
        }
        const __m128i zero = _mm_setzero_si128();
        if (n >= 64) {
            // Only a block larger than the cache is streamed; the legacy query answers 0
            // when it knows no size, which keeps the plain path.
            bool stream = false;
            if (n > kLegacyStreamThreshold) {
                const int cacheSize = nuvLegacyCacheSize();
                stream = cacheSize > 0 && n >= cacheSize;
            }
            if (stream) {
                for (; n >= 64; n -= 64, p += 64) {
                    _mm_stream_si128(reinterpret_cast<__m128i*>(p), zero);
                    _mm_stream_si128(reinterpret_cast<__m128i*>(p + 16), zero);
                    _mm_stream_si128(reinterpret_cast<__m128i*>(p + 32), zero);
                    _mm_stream_si128(reinterpret_cast<__m128i*>(p + 48), zero);
                }
                _mm_sfence();
            } else {
                for (; n >= 64; n -= 64, p += 64) {
                    _mm_store_si128(reinterpret_cast<__m128i*>(p), zero);
                    _mm_store_si128(reinterpret_cast<__m128i*>(p + 16), zero);
                    _mm_store_si128(reinterpret_cast<__m128i*>(p + 32), zero);
                    _mm_store_si128(reinterpret_cast<__m128i*>(p + 48), zero);
                }
            }
        }
        for (; n >= 16; n -= 16, p += 16) _mm_store_si128(reinterpret_cast<__m128i*>(p), zero);
    }
    clearShort(p, n);
}

#else
// e9, l9: 32-byte stores, the last ones ending at the block's end (overlapping earlier
// ones) so no loop of small pieces runs.
void clearBy32(Ipp8u* p, int n) {
    const __m256i zero = _mm256_setzero_si256();
    if (n < 32) {
        if (n >= 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_setzero_si128());
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p + n - 16), _mm_setzero_si128());
        } else {
            clearShort(p, n);
        }
        return;
    }
    Ipp8u* const end = p + n;
    bool stream = false;
    if (n > kWideStreamThreshold) {
        int cacheSize = 0;
        stream = ippGetMaxCacheSizeB(&cacheSize) == ippStsNoErr && cacheSize > 0 && n > cacheSize;
    }
    if (stream) {
        // An unaligned head of 64 bytes, then streaming from the next 64-byte boundary, so
        // every streamed block fills one cache line.
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), zero);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 32), zero);
        p = reinterpret_cast<Ipp8u*>((reinterpret_cast<std::uintptr_t>(p) + 64) &
                                     ~std::uintptr_t{63});
        for (; end - p >= 64; p += 64) {
            _mm256_stream_si256(reinterpret_cast<__m256i*>(p), zero);
            _mm256_stream_si256(reinterpret_cast<__m256i*>(p + 32), zero);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 64), zero);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 32), zero);
        _mm_sfence();
        return;
    }
    if (n >= 128) {
        // Align the loop's stores to 32 bytes; the head store covers what is skipped.
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), zero);
        p = reinterpret_cast<Ipp8u*>((reinterpret_cast<std::uintptr_t>(p) + 32) &
                                     ~std::uintptr_t{31});
        for (; end - p >= 64; p += 64) {
            _mm256_store_si256(reinterpret_cast<__m256i*>(p), zero);
            _mm256_store_si256(reinterpret_cast<__m256i*>(p + 32), zero);
        }
    }
    // Fewer than 128 bytes are left and the block holds at least 32, so the last store may
    // start before p.
    for (; end - p > 32; p += 32) _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), zero);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 32), zero);
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
    if (pDst == nullptr) return ippStsNullPtrErr;
    if (length < 1) return ippStsSizeErr;
    ownsZero_8u(pDst, length);
    return ippStsNoErr;
}

IppStatus ippsZero_32s(Ipp32s* pDst, int length) {
    if (pDst == nullptr) return ippStsNullPtrErr;
    if (length < 1) return ippStsSizeErr;
    // The byte count is a 32-bit product: a length above 0x1FFFFFFF wraps.
    const int byteCount = static_cast<int>(static_cast<std::uint32_t>(length) * 4u);
    ownsZero_8u(reinterpret_cast<Ipp8u*>(pDst), byteCount);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
