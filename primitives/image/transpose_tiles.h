// Register tiles behind the transposition primitives, written on the vector layer. Every
// generation compiles its own copy; the tiles that need SSSE3 or AVX2 are templates on the
// lanes they use, so a generation only instantiates the ones its policy row names.
#pragma once

#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L16 = Lanes<16>;

inline void copyPixel3(Byte const* s, Byte* d) {
    d[0] = s[0];
    d[1] = s[1];
    d[2] = s[2];
}

// One whole 64-byte line from an aligned buffer to a 64-byte aligned destination, past the
// cache.
template <class L>
inline void streamLine64(Byte* d, Byte const* s) {
    for (int i = 0; i < 64; i += L::width) L::stream(d + i, L::loadAligned(s + i));
}

// ------------------------------------------------------------------ one channel, 8x8

// An 8x8 tile after transposition: pair[k] holds output row 2k in its low and output row
// 2k + 1 in its high eight bytes.
struct Tile8 {
    L16::V pair[4];
};

// The two upper levels of the interleave. rows01 holds source rows 0 and 1 interleaved byte
// by byte, rows23, rows45, rows67 the other pairs. Pairs of 16-bit words then gather four
// rows of a column, pairs of 32-bit words all eight.
inline Tile8 finishTile8(L16::V rows01, L16::V rows23, L16::V rows45, L16::V rows67) {
    const L16::V cols0to3Top = L16::interleaveLow<16>(rows01, rows23);
    const L16::V cols4to7Top = L16::interleaveHigh<16>(rows01, rows23);
    const L16::V cols0to3Bottom = L16::interleaveLow<16>(rows45, rows67);
    const L16::V cols4to7Bottom = L16::interleaveHigh<16>(rows45, rows67);
    return {{L16::interleaveLow<32>(cols0to3Top, cols0to3Bottom),
             L16::interleaveHigh<32>(cols0to3Top, cols0to3Bottom),
             L16::interleaveLow<32>(cols4to7Top, cols4to7Bottom),
             L16::interleaveHigh<32>(cols4to7Top, cols4to7Bottom)}};
}

inline Tile8 loadTransposed8x8(Byte const* s, Offset ss) {
    L16::V r[8];
    for (int i = 0; i < 8; ++i) r[i] = L16::loadLow(s + i * ss);
    return finishTile8(L16::interleaveLow<8>(r[0], r[1]), L16::interleaveLow<8>(r[2], r[3]),
                       L16::interleaveLow<8>(r[4], r[5]), L16::interleaveLow<8>(r[6], r[7]));
}

inline void storeTile8(Byte* d, Offset ds, Tile8 const& t) {
    for (int k = 0; k < 4; ++k) {
        L16::storeLow(d + 2 * k * ds, t.pair[k]);
        L16::storeHigh(d + (2 * k + 1) * ds, t.pair[k]);
    }
}

inline void transpose8x8(Byte const* s, Offset ss, Byte* d, Offset ds) {
    storeTile8(d, ds, loadTransposed8x8(s, ss));
}

// 16 columns by 8 rows: one 16-byte load per row, and the two halves of each interleaved
// pair feed two 8x8 tiles, so a row is read once for sixteen output rows.
template <Align A>
inline void transpose16x8(Byte const* s, Offset ss, Byte* d, Offset ds) {
    L16::V r[8];
    for (int i = 0; i < 8; ++i) r[i] = L16::loadAs<A>(s + i * ss);
    storeTile8(d, ds,
               finishTile8(L16::interleaveLow<8>(r[0], r[1]), L16::interleaveLow<8>(r[2], r[3]),
                           L16::interleaveLow<8>(r[4], r[5]), L16::interleaveLow<8>(r[6], r[7])));
    storeTile8(d + 8 * ds, ds,
               finishTile8(L16::interleaveHigh<8>(r[0], r[1]), L16::interleaveHigh<8>(r[2], r[3]),
                           L16::interleaveHigh<8>(r[4], r[5]), L16::interleaveHigh<8>(r[6], r[7])));
}

// ------------------------------------------------------------------ one channel, 16x16

// Source rows i and i + 8 share a register (low and high half), so each in-half interleave
// works on two 8-row halves at once. After three levels a register holds two output rows,
// each split across the halves; one cross-half permutation joins them.
template <Align A, class L = Lanes<32>>
inline void transpose16x16(Byte const* s, Offset ss, Byte* d, Offset ds) {
    using V = typename L::V;
    V r[8];
    for (int i = 0; i < 8; ++i)
        r[i] = L::combine(L16::loadAs<A>(s + i * ss), L16::loadAs<A>(s + (i + 8) * ss));
    // Bytes: rows 2k and 2k+1 interleaved, columns 0-7 in b[k], 8-15 in b[k + 4].
    V b[8];
    for (int k = 0; k < 4; ++k) {
        b[k] = L::template interleaveLow<8>(r[2 * k], r[2 * k + 1]);
        b[k + 4] = L::template interleaveHigh<8>(r[2 * k], r[2 * k + 1]);
    }
    // 16-bit words: four rows per column; w[4h + q] holds columns 4q..4q+3 of rows 4h..4h+3.
    V w[8];
    for (int h = 0; h < 2; ++h) {
        for (int half = 0; half < 2; ++half) {
            V const& upper = b[4 * half + 2 * h];
            V const& lower = b[4 * half + 2 * h + 1];
            w[4 * h + 2 * half] = L::template interleaveLow<16>(upper, lower);
            w[4 * h + 2 * half + 1] = L::template interleaveHigh<16>(upper, lower);
        }
    }
    // 32-bit words: eight rows per column, columns 2k and 2k + 1 in one register.
    for (int q = 0; q < 4; ++q) {
        // [c0 rows 0-7 | c1 rows 0-7 || c0 rows 8-15 | c1 rows 8-15] -> rows c0 and c1.
        const V rows01 =
            L::template permuteQuads<0xD8>(L::template interleaveLow<32>(w[q], w[4 + q]));
        const V rows23 =
            L::template permuteQuads<0xD8>(L::template interleaveHigh<32>(w[q], w[4 + q]));
        const int c = 4 * q;
        L16::storeAs<A>(d + c * ds, L::lowHalf(rows01));
        L16::storeAs<A>(d + (c + 1) * ds, L::highHalf(rows01));
        L16::storeAs<A>(d + (c + 2) * ds, L::lowHalf(rows23));
        L16::storeAs<A>(d + (c + 3) * ds, L::highHalf(rows23));
    }
}

// ------------------------------------------------------------------ three channels

// A 3-byte pixel widened to a 32-bit word and back, so that pixels move as words; the same
// orders serve each half of 32-byte lanes.
constexpr char kWidenPixels[32] = {0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,
                                   0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1};
constexpr char kNarrowPixels[32] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,
                                    0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1};

template <class L>
inline typename L::V pixelOrder(char const (&order)[32]) {
    if constexpr (L::width == 16) {
        return L::load(order);
    } else {
        return L::constant(order);
    }
}

// 16 bytes of a row where the region has room for them, else exactly 12.
template <bool Wide>
inline L16::V loadPixels4(Byte const* p) {
    return Wide ? L16::load(p) : L16::loadLow12(p);
}
template <bool Wide>
inline void storePixels4(Byte* p, L16::V v) {
    if constexpr (Wide) {
        L16::store(p, v);
    } else {
        L16::storeLow12(p, v);
    }
}

// 4x4 pixels. WideLoads: 16 bytes may be read from each source row (four more than the
// pixels); WideStores: 16 bytes may be written to each destination row, the four beyond the
// pixels being rewritten later with the pixels that belong there.
template <bool WideLoads, bool WideStores, class L = L16>
inline void transposePixels4x4(Byte const* s, Offset ss, Byte* d, Offset ds) {
    using V = typename L::V;
    const V widen = pixelOrder<L>(kWidenPixels), narrow = pixelOrder<L>(kNarrowPixels);
    V row[4];
    for (int i = 0; i < 4; ++i) row[i] = L::shuffle(loadPixels4<WideLoads>(s + i * ss), widen);
    const V pairs01Low = L::template interleaveLow<32>(row[0], row[1]);
    const V pairs23Low = L::template interleaveLow<32>(row[2], row[3]);
    const V pairs01High = L::template interleaveHigh<32>(row[0], row[1]);
    const V pairs23High = L::template interleaveHigh<32>(row[2], row[3]);
    const V out[4] = {L::template interleaveLow<64>(pairs01Low, pairs23Low),
                      L::template interleaveHigh<64>(pairs01Low, pairs23Low),
                      L::template interleaveLow<64>(pairs01High, pairs23High),
                      L::template interleaveHigh<64>(pairs01High, pairs23High)};
    for (int c = 0; c < 4; ++c) storePixels4<WideStores>(d + c * ds, L::shuffle(out[c], narrow));
}

// 8x8 pixels in 32-byte lanes: pixels 0-3 of a row in the low half, 4-7 in the high half,
// each widened to 32 bits in its half; an 8x8 transpose of 32-bit words; then narrowed back.
// The wide forms read 28 bytes per source row and write 28 per destination row, where the
// region has room; the high half's store rewrites the four filler bytes of the low half's.
template <bool WideLoads, bool WideStores, class L = Lanes<32>>
inline void transposePixels8x8(Byte const* s, Offset ss, Byte* d, Offset ds) {
    using V = typename L::V;
    const V widen = pixelOrder<L>(kWidenPixels), narrow = pixelOrder<L>(kNarrowPixels);
    V row[8];
    for (int i = 0; i < 8; ++i) {
        Byte const* p = s + i * ss;
        row[i] = L::shuffle(L::combine(loadPixels4<WideLoads>(p), loadPixels4<WideLoads>(p + 12)),
                            widen);
    }
    // Pairs of rows, then quads; half h holds pixels 4h..4h+3 of the source rows.
    V pairs[8];
    for (int k = 0; k < 4; ++k) {
        pairs[2 * k] = L::template interleaveLow<32>(row[2 * k], row[2 * k + 1]);
        pairs[2 * k + 1] = L::template interleaveHigh<32>(row[2 * k], row[2 * k + 1]);
    }
    V quads[8];
    for (int h = 0; h < 2; ++h) {
        for (int k = 0; k < 2; ++k) {
            V const& upper = pairs[4 * h + k];
            V const& lower = pairs[4 * h + k + 2];
            quads[4 * h + 2 * k] = L::template interleaveLow<64>(upper, lower);
            quads[4 * h + 2 * k + 1] = L::template interleaveHigh<64>(upper, lower);
        }
    }
    // quads[c] (rows 0-3) and quads[4 + c] (rows 4-7) hold columns c and c + 4 in their halves.
    auto storeRow = [narrow](Byte* p, V v) {
        const V packed = L::shuffle(v, narrow);
        storePixels4<WideStores>(p, L::lowHalf(packed));
        storePixels4<WideStores>(p + 12, L::highHalf(packed));
    };
    for (int c = 0; c < 4; ++c) {
        storeRow(d + c * ds, L::lowHalves(quads[c], quads[4 + c]));
        storeRow(d + (c + 4) * ds, L::highHalves(quads[c], quads[4 + c]));
    }
}

}  // namespace
}  // namespace nuv::prim::NUV_V
