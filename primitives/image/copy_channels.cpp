// Copies between channel layouts: gray into channel 0 of a three-channel image, gray into all
// three channels, channel 0 out of a three-channel image, and four-byte pixels to three bytes.
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

// Each gray byte three times. A pair is six bytes of one 8-byte store whose two spare bytes
// the next pair overwrites; the last pixels go as bytes, so nothing past the row is written.
void triplePairs(Ipp8u const* src, Ipp8u* dst, Index n) {
    Index x = 0;
    for (; x + 4 <= n; x += 2)
        storeBytes<8>(dst + 3 * x, std::uint64_t{src[x]} * 0x010101u |
                                       std::uint64_t{src[x + 1]} * 0x010101000000u);
    for (; x < n; ++x) dst[3 * x] = dst[3 * x + 1] = dst[3 * x + 2] = src[x];
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

// 16 gray bytes, each three times, as three pieces.
alignas(16) constexpr char kTriple0[16] = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5};
alignas(16) constexpr char kTriple1[16] = {5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10};
alignas(16) constexpr char kTriple2[16] = {10, 11, 11, 11, 12, 12, 12, 13,
                                           13, 13, 14, 14, 14, 15, 15, 15};

// Packs the first three bytes of each of four pixels into the low 12 bytes.
alignas(16) constexpr char kPack12[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, Z, Z, Z, Z};

using L16 = Lanes<16>;

// Where the spread pattern has Z, keep the destination; elsewhere the shuffled gray byte
// (which the shuffle leaves zero at the Z places).
template <class L = L16>
typename L::V mergeChannel0(typename L::V dst, typename L::V spread, typename L::V pattern) {
    const typename L::V keep = L::lessSigned(pattern, L::zero());
    return L::bitOr(L::bitAnd(dst, keep), spread);
}

template <class L = L16>
void c1c3Block16(Ipp8u const* src, Ipp8u* dst) {
    const typename L::V gray = L::load(src);
    const typename L::V p0 = L::constant(kSpread0), p1 = L::constant(kSpread1),
                        p2 = L::constant(kSpread2);
    // Channels 1 and 2 are read and written back as they were: there is no byte-masked
    // store short of a slow non-temporal one.
    L::store(dst, mergeChannel0<L>(L::load(dst), L::shuffle(gray, p0), p0));
    L::store(dst + 16, mergeChannel0<L>(L::load(dst + 16), L::shuffle(gray, p1), p1));
    L::store(dst + 32, mergeChannel0<L>(L::load(dst + 32), L::shuffle(gray, p2), p2));
}

template <class L = L16>
void tripleBlock16(Ipp8u const* src, Ipp8u* dst) {
    const typename L::V gray = L::load(src);
    L::store(dst, L::shuffle(gray, L::constant(kTriple0)));
    L::store(dst + 16, L::shuffle(gray, L::constant(kTriple1)));
    L::store(dst + 32, L::shuffle(gray, L::constant(kTriple2)));
}

template <class L = L16>
void c3c1Block16(Ipp8u const* src, Ipp8u* dst) {
    const typename L::V a = L::shuffle(L::load(src), L::constant(kGather0));
    const typename L::V b = L::shuffle(L::load(src + 16), L::constant(kGather1));
    const typename L::V c = L::shuffle(L::load(src + 32), L::constant(kGather2));
    L::store(dst, L::bitOr(L::bitOr(a, b), c));
}

template <class L = L16>
void ac4c3Block16(Ipp8u const* src, Ipp8u* dst) {
    const typename L::V pack = L::constant(kPack12);
    const typename L::V p0 = L::shuffle(L::load(src), pack);
    const typename L::V p1 = L::shuffle(L::load(src + 16), pack);
    const typename L::V p2 = L::shuffle(L::load(src + 32), pack);
    const typename L::V p3 = L::shuffle(L::load(src + 48), pack);
    // Four runs of 12 bytes joined into three registers.
    L::store(dst, L::bitOr(p0, L::template shiftBytesLeft<12>(p1)));
    L::store(dst + 16,
             L::bitOr(L::template shiftBytesRight<4>(p1), L::template shiftBytesLeft<8>(p2)));
    L::store(dst + 32,
             L::bitOr(L::template shiftBytesRight<8>(p2), L::template shiftBytesLeft<4>(p3)));
}
// ---- 32 pixels a block, 256-bit shuffles (l9) ---------------------------------------------
// The byte shuffle works within each 128-bit lane, so each block first lays its 16-byte
// pieces into lanes such that one lane's shuffle pattern is the 128-bit one above.

template <class L, class H = L16>
typename L::V lanes(char const (&low)[16], char const (&high)[16]) {
    return L::combine(H::constant(low), H::constant(high));
}

template <class L>
typename L::V mergeChannel0Wide(typename L::V dst, typename L::V spread, typename L::V pattern) {
    return L::select(pattern, spread, dst);  // the pattern's high bit marks "keep"
}

template <class L = Lanes<32>, class H = L16>
void c1c3Block32(Ipp8u const* src, Ipp8u* dst) {
    // 96 destination bytes in three registers. The first takes gray bytes 0..10, all in the
    // source's first 16 bytes; the second bytes 11..21, across the two halves; the third
    // bytes 22..31, all in the second 16.
    const typename H::V low = H::load(src), high = H::load(src + 16);
    const typename L::V first = L::broadcast(low);
    const typename L::V both = L::combine(low, high);
    const typename L::V second = L::broadcast(high);
    const typename L::V p0 = lanes<L>(kSpread0, kSpread1), p1 = lanes<L>(kSpread2, kSpread0),
                        p2 = lanes<L>(kSpread1, kSpread2);
    L::store(dst, mergeChannel0Wide<L>(L::load(dst), L::shuffle(first, p0), p0));
    L::store(dst + 32, mergeChannel0Wide<L>(L::load(dst + 32), L::shuffle(both, p1), p1));
    L::store(dst + 64, mergeChannel0Wide<L>(L::load(dst + 64), L::shuffle(second, p2), p2));
}

template <class L = Lanes<32>, class H = L16>
void tripleBlock32(Ipp8u const* src, Ipp8u* dst) {
    // The pieces lie in the lanes as in c1c3Block32.
    const typename H::V low = H::load(src), high = H::load(src + 16);
    L::store(dst, L::shuffle(L::broadcast(low), lanes<L>(kTriple0, kTriple1)));
    L::store(dst + 32, L::shuffle(L::combine(low, high), lanes<L>(kTriple2, kTriple0)));
    L::store(dst + 64, L::shuffle(L::broadcast(high), lanes<L>(kTriple1, kTriple2)));
}

template <class L = Lanes<32>, class H = L16>
void c3c1Block32(Ipp8u const* src, Ipp8u* dst) {
    // Lane 0 gathers pixels 0..15 from bytes 0..47, lane 1 pixels 16..31 from bytes 48..95.
    const typename L::V in0 = L::load(src), in1 = L::load(src + 32), in2 = L::load(src + 64);
    const typename L::V a = L::joinHalves(in0, in1);   // bytes 0..15 | 48..63
    const typename L::V b = L::crossHalves(in0, in2);  // bytes 16..31 | 64..79
    const typename L::V c = L::joinHalves(in1, in2);   // bytes 32..47 | 80..95
    const typename L::V r = L::bitOr(L::bitOr(L::shuffle(a, lanes<L>(kGather0, kGather0)),
                                              L::shuffle(b, lanes<L>(kGather1, kGather1))),
                                     L::shuffle(c, lanes<L>(kGather2, kGather2)));
    L::store(dst, r);
}

template <class L = Lanes<32>, class H = L16>
void ac4c3Block32(Ipp8u const* src, Ipp8u* dst) {
    // Each lane packs its four pixels into 12 bytes; the dword permutation then closes the
    // gap between the lanes, giving 24 bytes at the bottom of each register.
    const typename L::V pack = lanes<L>(kPack12, kPack12);
    const typename L::V join = L::dwords(0, 1, 2, 4, 5, 6, 3, 7);
    typename L::V q[4];
    for (int k = 0; k < 4; ++k)
        q[k] = L::permuteDwords(L::shuffle(L::load(src + 32 * k), pack), join);
    // Stores of 32 bytes 24 apart, each overwriting the last one's 8 spare bytes; the last
    // piece is stored as 16 and 8 so nothing past the block is written.
    L::store(dst, q[0]);
    L::store(dst + 24, q[1]);
    L::store(dst + 48, q[2]);
    H::store(dst + 72, L::lowHalf(q[3]));
    H::storeLow(dst + 88, L::highHalf(q[3]));
}
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

// ---- the row workers

// Pixels per vector block: m7 has no byte shuffle and goes by pairs; the SSSE3 generations
// take 16 pixels a block in 16-byte registers, l9 32 in 32-byte ones (and 16 for a row
// shorter than that).
constexpr int channelBlockPixels[generationCount] = {0, 16, 16, 16, 16, 32};
constexpr int blockPixels = ofThisGeneration(channelBlockPixels);

template <int SrcPixel, int DstPixel, class Pairs, class Block16, class Block32>
void channelRow(Ipp8u const* src, Ipp8u* dst, Index n, Pairs pairs, Block16 block16,
                Block32 block32) {
    if constexpr (blockPixels == 32) {
        if (n >= 32) return byBlocks<32>(src, SrcPixel, dst, DstPixel, n, block32, pairs);
    }
    if constexpr (blockPixels >= 16) {
        byBlocks<16>(src, SrcPixel, dst, DstPixel, n, block16, pairs);
    } else {
        pairs(src, dst, n);
    }
}

// The blocks are named through generic lambdas, so that a generation without them never
// instantiates them.
void grayToChannel0Row(Ipp8u const* src, Ipp8u* dst, Index n) {
    channelRow<1, 3>(
        src, dst, n, c1c3Pairs, [](auto s, auto d) { c1c3Block16(s, d); },
        [](auto s, auto d) { c1c3Block32(s, d); });
}

void grayToAllRow(Ipp8u const* src, Ipp8u* dst, Index n) {
    channelRow<1, 3>(
        src, dst, n, triplePairs, [](auto s, auto d) { tripleBlock16(s, d); },
        [](auto s, auto d) { tripleBlock32(s, d); });
}

void channel0ToGrayRow(Ipp8u const* src, Ipp8u* dst, Index n) {
    channelRow<3, 1>(
        src, dst, n, c3c1Pairs, [](auto s, auto d) { c3c1Block16(s, d); },
        [](auto s, auto d) { c3c1Block32(s, d); });
}

void fourToThreeRow(Ipp8u const* src, Ipp8u* dst, Index n) {
    channelRow<4, 3>(
        src, dst, n, ac4c3Pairs, [](auto s, auto d) { ac4c3Block16(s, d); },
        [](auto s, auto d) { ac4c3Block32(s, d); });
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
    return copyRows(pSrc, srcStep, 1, pDst, dstStep, 3, roiSize, grayToChannel0Row);
}

IppStatus ippiGrayToRGB_8u_C1C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                 IppiSize roiSize) {
    return copyRows(pSrc, srcStep, 1, pDst, dstStep, 3, roiSize, grayToAllRow);
}

IppStatus ippiCopy_8u_C3C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize) {
    return copyRows(pSrc, srcStep, 3, pDst, dstStep, 1, roiSize, channel0ToGrayRow);
}

IppStatus ippiCopy_8u_AC4C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize roiSize) {
    return copyRows(pSrc, srcStep, 4, pDst, dstStep, 3, roiSize, fourToThreeRow);
}

}  // namespace nuv::prim::NUV_V
