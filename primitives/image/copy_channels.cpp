// Copies between channel layouts: gray into channel 0 of a three-channel image, channel 0 out
// of a three-channel image, and four-byte pixels to three bytes.
//
// m7 walks each row two pixels a turn with word loads and stores. The later generations
// gather the bytes with byte shuffles: 16 pixels a block with 128-bit registers (n8, u8,
// y8, e9), 32 pixels a block with 256-bit ones (l9). A row's last block is laid to end at
// the row's end, overlapping the one before, so that no pixel loop runs for rows of a block
// or more.
#include "primitives/dispatch/variant.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nuv::prim::NUV_V {

namespace {

using Index = std::ptrdiff_t;

std::uint16_t load16(Ipp8u const* p) {
    std::uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}
std::uint32_t load32(Ipp8u const* p) {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
std::uint64_t load64(Ipp8u const* p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}
void store16(Ipp8u* p, std::uint16_t v) {
    std::memcpy(p, &v, 2);
}
void store32(Ipp8u* p, std::uint32_t v) {
    std::memcpy(p, &v, 4);
}
void store64(Ipp8u* p, std::uint64_t v) {
    std::memcpy(p, &v, 8);
}

// ---- two pixels a turn: the m7 rows, and the rows too short for a vector block ---------

// The compiler's vectorized form of this loop extracts single bytes from vector registers
// and runs at half the speed of the plain byte stores, so it is kept plain.
#if defined(__GNUC__) && !defined(__clang__)
#define NUV_PLAIN_LOOP __attribute__((optimize("no-tree-vectorize")))
#else
#define NUV_PLAIN_LOOP
#endif

// Only channel 0 is written; the other two bytes of each destination pixel are left alone
// (a caller fills them afterwards or keeps what was there), so these are byte stores.
NUV_PLAIN_LOOP void c1c3Pairs(Ipp8u const* src, Ipp8u* dst, Index n) {
    Index x = 0;
    for (; x + 2 <= n; x += 2) {
        const std::uint16_t two = load16(src + x);
        dst[3 * x] = static_cast<Ipp8u>(two);
        dst[3 * x + 3] = static_cast<Ipp8u>(two >> 8);
    }
    if (x < n) dst[3 * x] = src[x];
}

void c3c1Pairs(Ipp8u const* src, Ipp8u* dst, Index n) {
    Index x = 0;
    // Bytes 0 and 3 of one 32-bit load are the two pixels' channel 0; the load ends at the
    // second pixel's first byte, inside the row.
    for (; x + 2 <= n; x += 2) {
        const std::uint32_t w = load32(src + 3 * x);
        store16(dst + x, static_cast<std::uint16_t>((w & 0xFFu) | ((w >> 16) & 0xFF00u)));
    }
    if (x < n) dst[x] = src[3 * x];
}

// Drops byte 3 of each of two pixels and closes the gap: six bytes in the low end.
std::uint64_t packPair(Ipp8u const* src) {
    const std::uint64_t w = load64(src);
    return (w & 0xFFFFFFu) | ((w >> 8) & 0xFFFFFF000000u);
}

void ac4c3Pairs(Ipp8u const* src, Ipp8u* dst, Index n) {
    Index x = 0;
    // One 8-byte store a pair: its two spare bytes land on the next pair's place and are
    // overwritten there. The last pair is stored as four and two bytes, so nothing past the
    // row is written.
    for (; x + 4 <= n; x += 2) store64(dst + 3 * x, packPair(src + 4 * x));
    if (x + 2 <= n) {
        const std::uint64_t packed = packPair(src + 4 * x);
        store32(dst + 3 * x, static_cast<std::uint32_t>(packed));
        store16(dst + 3 * x + 4, static_cast<std::uint16_t>(packed >> 32));
        x += 2;
    }
    if (x < n) {
        dst[3 * x] = src[4 * x];
        dst[3 * x + 1] = src[4 * x + 1];
        dst[3 * x + 2] = src[4 * x + 2];
    }
}

#if defined(__SSSE3__)
// ---- 16 pixels a block, 128-bit shuffles -------------------------------------------------

constexpr char Z = static_cast<char>(0x80);  // a shuffle index that yields a zero byte

// Channel 0 of 16 pixels lies in three 16-byte pieces of the three-channel row: six pixels
// in the first (at 0, 3 ... 15), five in the second (at 2, 5 ... 14) and five in the third
// (at 1, 4 ... 13). These gather them, each into its place among the 16 results.
alignas(16) constexpr char kGather0[16] = {0, 3, 6, 9, 12, 15, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z};
alignas(16) constexpr char kGather1[16] = {Z, Z, Z, Z, Z, Z, 2, 5, 8, 11, 14, Z, Z, Z, Z, Z};
alignas(16) constexpr char kGather2[16] = {Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, 1, 4, 7, 10, 13};

// The reverse: 16 gray bytes spread to channel 0 of the three pieces. Z marks the bytes of
// channels 1 and 2, which keep the destination's value.
alignas(16) constexpr char kSpread0[16] = {0, Z, Z, 1, Z, Z, 2, Z, Z, 3, Z, Z, 4, Z, Z, 5};
alignas(16) constexpr char kSpread1[16] = {Z, Z, 6, Z, Z, 7, Z, Z, 8, Z, Z, 9, Z, Z, 10, Z};
alignas(16) constexpr char kSpread2[16] = {Z, 11, Z, Z, 12, Z, Z, 13, Z, Z, 14, Z, Z, 15, Z, Z};

// Packs the first three bytes of each of four pixels into the low 12 bytes.
alignas(16) constexpr char kPack12[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, Z, Z, Z, Z};

__m128i load128(void const* p) {
    return _mm_loadu_si128(static_cast<__m128i const*>(p));
}
__m128i constant128(char const* c) {
    return _mm_load_si128(reinterpret_cast<__m128i const*>(c));
}
void store128(void* p, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

// Where the spread pattern has Z, keep the destination; elsewhere the shuffled gray byte
// (which the shuffle leaves zero at the Z places).
__m128i mergeChannel0(__m128i dst, __m128i spread, __m128i pattern) {
    const __m128i keep = _mm_cmplt_epi8(pattern, _mm_setzero_si128());
    return _mm_or_si128(_mm_and_si128(dst, keep), spread);
}

void c1c3Block16(Ipp8u const* src, Ipp8u* dst) {
    const __m128i gray = load128(src);
    const __m128i p0 = constant128(kSpread0), p1 = constant128(kSpread1),
                  p2 = constant128(kSpread2);
    // Channels 1 and 2 are read and written back as they were: there is no byte-masked
    // store short of a slow non-temporal one.
    store128(dst, mergeChannel0(load128(dst), _mm_shuffle_epi8(gray, p0), p0));
    store128(dst + 16, mergeChannel0(load128(dst + 16), _mm_shuffle_epi8(gray, p1), p1));
    store128(dst + 32, mergeChannel0(load128(dst + 32), _mm_shuffle_epi8(gray, p2), p2));
}

void c3c1Block16(Ipp8u const* src, Ipp8u* dst) {
    const __m128i a = _mm_shuffle_epi8(load128(src), constant128(kGather0));
    const __m128i b = _mm_shuffle_epi8(load128(src + 16), constant128(kGather1));
    const __m128i c = _mm_shuffle_epi8(load128(src + 32), constant128(kGather2));
    store128(dst, _mm_or_si128(_mm_or_si128(a, b), c));
}

void ac4c3Block16(Ipp8u const* src, Ipp8u* dst) {
    const __m128i pack = constant128(kPack12);
    const __m128i p0 = _mm_shuffle_epi8(load128(src), pack);
    const __m128i p1 = _mm_shuffle_epi8(load128(src + 16), pack);
    const __m128i p2 = _mm_shuffle_epi8(load128(src + 32), pack);
    const __m128i p3 = _mm_shuffle_epi8(load128(src + 48), pack);
    // Four runs of 12 bytes joined into three registers.
    store128(dst, _mm_or_si128(p0, _mm_slli_si128(p1, 12)));
    store128(dst + 16, _mm_or_si128(_mm_srli_si128(p1, 4), _mm_slli_si128(p2, 8)));
    store128(dst + 32, _mm_or_si128(_mm_srli_si128(p2, 8), _mm_slli_si128(p3, 4)));
}
#endif

#if defined(__AVX2__)
// ---- 32 pixels a block, 256-bit shuffles (l9) ---------------------------------------------
// The byte shuffle works within each 128-bit lane, so each block first lays its 16-byte
// pieces into lanes such that one lane's shuffle pattern is the 128-bit one above.

__m256i load256(void const* p) {
    return _mm256_loadu_si256(static_cast<__m256i const*>(p));
}
void store256(void* p, __m256i v) {
    _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}
__m256i lanes(char const* low, char const* high) {
    return _mm256_setr_m128i(constant128(low), constant128(high));
}

__m256i mergeChannel0(__m256i dst, __m256i spread, __m256i pattern) {
    return _mm256_blendv_epi8(spread, dst, pattern);  // the pattern's high bit marks "keep"
}

void c1c3Block32(Ipp8u const* src, Ipp8u* dst) {
    // 96 destination bytes in three registers. The first takes gray bytes 0..10, all in the
    // source's first 16 bytes; the second bytes 11..21, across the two halves; the third
    // bytes 22..31, all in the second 16.
    const __m128i low = load128(src), high = load128(src + 16);
    const __m256i first = _mm256_broadcastsi128_si256(low);
    const __m256i both = _mm256_setr_m128i(low, high);
    const __m256i second = _mm256_broadcastsi128_si256(high);
    const __m256i p0 = lanes(kSpread0, kSpread1), p1 = lanes(kSpread2, kSpread0),
                  p2 = lanes(kSpread1, kSpread2);
    store256(dst, mergeChannel0(load256(dst), _mm256_shuffle_epi8(first, p0), p0));
    store256(dst + 32, mergeChannel0(load256(dst + 32), _mm256_shuffle_epi8(both, p1), p1));
    store256(dst + 64, mergeChannel0(load256(dst + 64), _mm256_shuffle_epi8(second, p2), p2));
}

void c3c1Block32(Ipp8u const* src, Ipp8u* dst) {
    // Lane 0 gathers pixels 0..15 from bytes 0..47, lane 1 pixels 16..31 from bytes 48..95.
    const __m256i in0 = load256(src), in1 = load256(src + 32), in2 = load256(src + 64);
    const __m256i a = _mm256_blend_epi32(in0, in1, 0xF0);         // bytes 0..15 | 48..63
    const __m256i b = _mm256_permute2x128_si256(in0, in2, 0x21);  // bytes 16..31 | 64..79
    const __m256i c = _mm256_blend_epi32(in1, in2, 0xF0);         // bytes 32..47 | 80..95
    const __m256i r =
        _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(a, lanes(kGather0, kGather0)),
                                        _mm256_shuffle_epi8(b, lanes(kGather1, kGather1))),
                        _mm256_shuffle_epi8(c, lanes(kGather2, kGather2)));
    store256(dst, r);
}

void ac4c3Block32(Ipp8u const* src, Ipp8u* dst) {
    // Each lane packs its four pixels into 12 bytes; the dword permutation then closes the
    // gap between the lanes, giving 24 bytes at the bottom of each register.
    const __m256i pack = lanes(kPack12, kPack12);
    const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
    __m256i q[4];
    for (int k = 0; k < 4; ++k)
        q[k] = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(load256(src + 32 * k), pack), join);
    // Stores of 32 bytes 24 apart, each overwriting the last one's 8 spare bytes; the last
    // piece is stored as 16 and 8 so nothing past the block is written.
    store256(dst, q[0]);
    store256(dst + 24, q[1]);
    store256(dst + 48, q[2]);
    store128(dst + 72, _mm256_castsi256_si128(q[3]));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 88), _mm256_extracti128_si256(q[3], 1));
}
#endif

// A row of n pixels by blocks of B, the last block laid to end at the row's end; rows
// shorter than a block go by pairs.
template <int B, class Block, class Pairs>
void byBlocks(Ipp8u const* src, int srcPixel, Ipp8u* dst, int dstPixel, Index n, Block block,
              Pairs pairs) {
    if (n < B) {
        pairs(src, dst, n);
        return;
    }
    Index x = 0;
    for (; x + B <= n; x += B) block(src + x * srcPixel, dst + x * dstPixel);
    if (x < n) block(src + (n - B) * srcPixel, dst + (n - B) * dstPixel);
}

// ---- the row workers: one policy per generation -----------------------------------------

void owniCopy_8u_C1C3R(Ipp8u const* src, Ipp8u* dst, Index n) {
#if defined(__AVX2__)
    if (n >= 32) return byBlocks<32>(src, 1, dst, 3, n, c1c3Block32, c1c3Pairs);
#endif
#if defined(__SSSE3__)
    byBlocks<16>(src, 1, dst, 3, n, c1c3Block16, c1c3Pairs);
#else
    c1c3Pairs(src, dst, n);
#endif
}

void owniCopy_8u_C3C1R(Ipp8u const* src, Ipp8u* dst, Index n) {
#if defined(__AVX2__)
    if (n >= 32) return byBlocks<32>(src, 3, dst, 1, n, c3c1Block32, c3c1Pairs);
#endif
#if defined(__SSSE3__)
    byBlocks<16>(src, 3, dst, 1, n, c3c1Block16, c3c1Pairs);
#else
    c3c1Pairs(src, dst, n);
#endif
}

void owniCopy_8u_AC4C3R(Ipp8u const* src, Ipp8u* dst, Index n) {
#if defined(__AVX2__)
    if (n >= 32) return byBlocks<32>(src, 4, dst, 3, n, ac4c3Block32, ac4c3Pairs);
#endif
#if defined(__SSSE3__)
    byBlocks<16>(src, 4, dst, 3, n, ac4c3Block16, ac4c3Pairs);
#else
    ac4c3Pairs(src, dst, n);
#endif
}

// The checks of the copy family (pointers, then size; no step is tested, so zero and
// negative steps are honoured), then one call of the row worker per row. Rows that follow
// each other without a gap in both images are one row, which saves a call per row on
// narrow images.
template <class Row>
IppStatus copyRows(Ipp8u const* pSrc, int srcStep, int srcPixel, Ipp8u* pDst, int dstStep,
                   int dstPixel, IppiSize roiSize, Row row) {
    if (pSrc == nullptr || pDst == nullptr) return ippStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return ippStsSizeErr;
    Index width = roiSize.width;
    int height = roiSize.height;
    if (srcStep == static_cast<std::int64_t>(width) * srcPixel &&
        dstStep == static_cast<std::int64_t>(width) * dstPixel) {
        width *= height;
        height = 1;
    }
    for (int y = 0; y < height; ++y)
        row(pSrc + static_cast<Index>(y) * srcStep, pDst + static_cast<Index>(y) * dstStep, width);
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiCopy_8u_C1C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize) {
    return copyRows(pSrc, srcStep, 1, pDst, dstStep, 3, roiSize, owniCopy_8u_C1C3R);
}

IppStatus ippiCopy_8u_C3C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize) {
    return copyRows(pSrc, srcStep, 3, pDst, dstStep, 1, roiSize, owniCopy_8u_C3C1R);
}

IppStatus ippiCopy_8u_AC4C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize roiSize) {
    return copyRows(pSrc, srcStep, 4, pDst, dstStep, 3, roiSize, owniCopy_8u_AC4C3R);
}

}  // namespace nuv::prim::NUV_V
