// Copies between channel layouts: gray into channel 0 of a three-channel image, channel 0 out
// of a three-channel image, and four-byte pixels to three bytes.
//
// m7 walks each row two pixels a turn with word loads and stores. The later generations
// gather the bytes with byte shuffles: 16 pixels a block with 128-bit registers (n8, u8,
// y8, e9), 32 pixels a block with 256-bit ones (l9). A row's last block is laid to end at
// the row's end, overlapping the one before, so that no pixel loop runs for rows of a block
// or more.
#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using Index = Offset;

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
        const std::uint16_t two = loadBytes<2>(src + x);
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
        const std::uint32_t w = loadBytes<4>(src + 3 * x);
        storeBytes<2>(dst + x, static_cast<Word>((w & 0xFFu) | ((w >> 16) & 0xFF00u)));
    }
    if (x < n) dst[x] = src[3 * x];
}

// Drops byte 3 of each of two pixels and closes the gap: six bytes in the low end.
std::uint64_t packPair(Ipp8u const* src) {
    const std::uint64_t w = loadBytes<8>(src);
    return (w & 0xFFFFFFu) | ((w >> 8) & 0xFFFFFF000000u);
}

void ac4c3Pairs(Ipp8u const* src, Ipp8u* dst, Index n) {
    Index x = 0;
    // One 8-byte store a pair: its two spare bytes land on the next pair's place and are
    // overwritten there. The last pair is stored as four and two bytes, so nothing past the
    // row is written.
    for (; x + 4 <= n; x += 2) storeBytes<8>(dst + 3 * x, packPair(src + 4 * x));
    if (x + 2 <= n) {
        const std::uint64_t packed = packPair(src + 4 * x);
        storeBytes<4>(dst + 3 * x, static_cast<std::uint32_t>(packed));
        storeBytes<2>(dst + 3 * x + 4, static_cast<std::uint16_t>(packed >> 32));
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

using L16 = Lanes<16>;

// Where the spread pattern has Z, keep the destination; elsewhere the shuffled gray byte
// (which the shuffle leaves zero at the Z places).
L16::V mergeChannel0(L16::V dst, L16::V spread, L16::V pattern) {
    const L16::V keep = L16::lessSigned(pattern, L16::zero());
    return L16::bitOr(L16::bitAnd(dst, keep), spread);
}

void c1c3Block16(Ipp8u const* src, Ipp8u* dst) {
    const L16::V gray = L16::load(src);
    const L16::V p0 = L16::constant(kSpread0), p1 = L16::constant(kSpread1),
                 p2 = L16::constant(kSpread2);
    // Channels 1 and 2 are read and written back as they were: there is no byte-masked
    // store short of a slow non-temporal one.
    L16::store(dst, mergeChannel0(L16::load(dst), L16::shuffle(gray, p0), p0));
    L16::store(dst + 16, mergeChannel0(L16::load(dst + 16), L16::shuffle(gray, p1), p1));
    L16::store(dst + 32, mergeChannel0(L16::load(dst + 32), L16::shuffle(gray, p2), p2));
}

void c3c1Block16(Ipp8u const* src, Ipp8u* dst) {
    const L16::V a = L16::shuffle(L16::load(src), L16::constant(kGather0));
    const L16::V b = L16::shuffle(L16::load(src + 16), L16::constant(kGather1));
    const L16::V c = L16::shuffle(L16::load(src + 32), L16::constant(kGather2));
    L16::store(dst, L16::bitOr(L16::bitOr(a, b), c));
}

void ac4c3Block16(Ipp8u const* src, Ipp8u* dst) {
    const L16::V pack = L16::constant(kPack12);
    const L16::V p0 = L16::shuffle(L16::load(src), pack);
    const L16::V p1 = L16::shuffle(L16::load(src + 16), pack);
    const L16::V p2 = L16::shuffle(L16::load(src + 32), pack);
    const L16::V p3 = L16::shuffle(L16::load(src + 48), pack);
    // Four runs of 12 bytes joined into three registers.
    L16::store(dst, L16::bitOr(p0, L16::shiftBytesLeft<12>(p1)));
    L16::store(dst + 16, L16::bitOr(L16::shiftBytesRight<4>(p1), L16::shiftBytesLeft<8>(p2)));
    L16::store(dst + 32, L16::bitOr(L16::shiftBytesRight<8>(p2), L16::shiftBytesLeft<4>(p3)));
}
#endif

#if defined(__AVX2__)
// ---- 32 pixels a block, 256-bit shuffles (l9) ---------------------------------------------
// The byte shuffle works within each 128-bit lane, so each block first lays its 16-byte
// pieces into lanes such that one lane's shuffle pattern is the 128-bit one above.

using L32 = Lanes<32>;

L32::V lanes(char const (&low)[16], char const (&high)[16]) {
    return L32::combine(L16::constant(low), L16::constant(high));
}

L32::V mergeChannel0(L32::V dst, L32::V spread, L32::V pattern) {
    return L32::select(pattern, spread, dst);  // the pattern's high bit marks "keep"
}

void c1c3Block32(Ipp8u const* src, Ipp8u* dst) {
    // 96 destination bytes in three registers. The first takes gray bytes 0..10, all in the
    // source's first 16 bytes; the second bytes 11..21, across the two halves; the third
    // bytes 22..31, all in the second 16.
    const L16::V low = L16::load(src), high = L16::load(src + 16);
    const L32::V first = L32::broadcast(low);
    const L32::V both = L32::combine(low, high);
    const L32::V second = L32::broadcast(high);
    const L32::V p0 = lanes(kSpread0, kSpread1), p1 = lanes(kSpread2, kSpread0),
                 p2 = lanes(kSpread1, kSpread2);
    L32::store(dst, mergeChannel0(L32::load(dst), L32::shuffle(first, p0), p0));
    L32::store(dst + 32, mergeChannel0(L32::load(dst + 32), L32::shuffle(both, p1), p1));
    L32::store(dst + 64, mergeChannel0(L32::load(dst + 64), L32::shuffle(second, p2), p2));
}

void c3c1Block32(Ipp8u const* src, Ipp8u* dst) {
    // Lane 0 gathers pixels 0..15 from bytes 0..47, lane 1 pixels 16..31 from bytes 48..95.
    const L32::V in0 = L32::load(src), in1 = L32::load(src + 32), in2 = L32::load(src + 64);
    const L32::V a = L32::joinHalves(in0, in1);   // bytes 0..15 | 48..63
    const L32::V b = L32::crossHalves(in0, in2);  // bytes 16..31 | 64..79
    const L32::V c = L32::joinHalves(in1, in2);   // bytes 32..47 | 80..95
    const L32::V r = L32::bitOr(L32::bitOr(L32::shuffle(a, lanes(kGather0, kGather0)),
                                           L32::shuffle(b, lanes(kGather1, kGather1))),
                                L32::shuffle(c, lanes(kGather2, kGather2)));
    L32::store(dst, r);
}

void ac4c3Block32(Ipp8u const* src, Ipp8u* dst) {
    // Each lane packs its four pixels into 12 bytes; the dword permutation then closes the
    // gap between the lanes, giving 24 bytes at the bottom of each register.
    const L32::V pack = lanes(kPack12, kPack12);
    const L32::V join = L32::dwords(0, 1, 2, 4, 5, 6, 3, 7);
    L32::V q[4];
    for (int k = 0; k < 4; ++k)
        q[k] = L32::permuteDwords(L32::shuffle(L32::load(src + 32 * k), pack), join);
    // Stores of 32 bytes 24 apart, each overwriting the last one's 8 spare bytes; the last
    // piece is stored as 16 and 8 so nothing past the block is written.
    L32::store(dst, q[0]);
    L32::store(dst + 24, q[1]);
    L32::store(dst + 48, q[2]);
    L16::store(dst + 72, L32::lowHalf(q[3]));
    L16::storeLow(dst + 88, L32::highHalf(q[3]));
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
// negative steps are honoured), then one call of the row worker per run.
template <class Row>
IppStatus copyRows(Ipp8u const* pSrc, int srcStep, int srcPixel, Ipp8u* pDst, int dstStep,
                   int dstPixel, IppiSize roiSize, Row row) {
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst), sizeCheck(roiSize)});
    if (status != ippStsNoErr) return status;
    forEachRun<Index>(
        roiSize.width, roiSize.height, [row](Index n, Byte const* s, Byte* d) { row(s, d, n); },
        plane(pSrc, srcStep, srcPixel), plane(pDst, dstStep, dstPixel));
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
