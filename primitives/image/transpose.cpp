// Transposition of one- and three-channel 8-bit regions, out of place and, for squares, in
// place. The region is cut into square blocks of up to 64 pixels so that one block of source
// and one of destination stay in the first-level cache while their rows and columns trade
// places; inside a block, register tiles do the work. Newer generations send a large aligned
// one-channel image through a second blocking of 512 by 512 when it would not fit twice in
// the cache, so that a frame does not evict itself.
#include "primitives/image/transpose_tiles.h"

namespace nuv::prim::NUV_V {
namespace {

// Out-of-place blocks are at most this many pixels on a side.
constexpr int kBlock = 64;
// In-place blocks: the one-channel form swaps two blocks at a time, so they are half as large.
constexpr int kInPlaceBlockC1 = 32;
constexpr int kInPlaceBlockC3 = 64;
// Tiles of the large route.
constexpr int kLargeTile = 512;

// The register tiles of each generation: m7 has no byte shuffle and moves three-channel
// pixels by plain loops; the SSSE3 generations read sixteen one-channel columns per row load
// and shuffle 4x4 pixels; l9 transposes 16x16 bytes and 8x8 pixels in AVX2 registers. From
// u8 on, a large aligned one-channel image that would not fit twice in the cache takes the
// tiled route, whose lines stream past the cache.
enum class C1Tiles { bytes8x8, bytes16x8, bytes16x16 };
enum class C3Tiles { plainLoops, pixels4x4, pixels8x8 };
struct TransposePolicy {
    C1Tiles c1;
    C3Tiles c3;
    bool largeRoute;
};
constexpr TransposePolicy transposePolicies[generationCount] = {
    /* m7 */ {C1Tiles::bytes8x8, C3Tiles::plainLoops, false},
    /* n8 */ {C1Tiles::bytes16x8, C3Tiles::pixels4x4, false},
    /* u8 */ {C1Tiles::bytes16x8, C3Tiles::pixels4x4, true},
    /* y8 */ {C1Tiles::bytes16x8, C3Tiles::pixels4x4, true},
    /* e9 */ {C1Tiles::bytes16x8, C3Tiles::pixels4x4, true},
    /* l9 */ {C1Tiles::bytes16x16, C3Tiles::pixels8x8, true},
};
constexpr TransposePolicy const& policy = ofThisGeneration(transposePolicies);

// The large route streams when twice the image passes the largest cache; an unknown cache
// counts as none at all, so such an image always takes it there.
constexpr StreamRule largeRouteRule{0, false, CacheQuery::largest, 2, false, 0};

inline int smallest(int a, int b) {
    return a < b ? a : b;
}

inline Byte const* at(Byte const* p, int step, int y, int xBytes) {
    return rowAt(p, step, y) + xBytes;
}
inline Byte* at(Byte* p, int step, int y, int xBytes) {
    return rowAt(p, step, y) + xBytes;
}

// Bytes of the source rows [y0, y1) for the columns [x0, x1), one at a time: the rests
// beside and below the tiles.
void transposeBytes(Byte const* src, int srcStep, Byte* dst, int dstStep, int x0, int x1, int y0,
                    int y1) {
    for (int x = x0; x < x1; ++x) {
        Byte* d = at(dst, dstStep, x, 0);
        for (int y = y0; y < y1; ++y) d[y] = *at(src, srcStep, y, x);
    }
}

// ------------------------------------------------------------------ one channel

// One block: eight columns at a time, each 8x8 tile through the three-level interleave, or
// sixteen per row load where the policy says so. Rests below eight rows or columns go byte by
// byte.
void transposeBlockC1(Byte const* src, int srcStep, Byte* dst, int dstStep, int width, int height) {
    const Offset ss = srcStep, ds = dstStep;
    int x = 0;
    if constexpr (policy.c1 != C1Tiles::bytes8x8) {
        for (; x + 16 <= width; x += 16) {
            int y = 0;
            if constexpr (policy.c1 == C1Tiles::bytes16x16) {
                for (; y + 16 <= height; y += 16)
                    transpose16x16<Align::unaligned>(at(src, srcStep, y, x), ss,
                                                     at(dst, dstStep, x, y), ds);
            }
            for (; y + 8 <= height; y += 8)
                transpose16x8<Align::unaligned>(at(src, srcStep, y, x), ss, at(dst, dstStep, x, y),
                                                ds);
            transposeBytes(src, srcStep, dst, dstStep, x, x + 16, y, height);
        }
    }
    for (; x + 8 <= width; x += 8) {
        int y = 0;
        for (; y + 8 <= height; y += 8)
            transpose8x8(at(src, srcStep, y, x), ss, at(dst, dstStep, x, y), ds);
        transposeBytes(src, srcStep, dst, dstStep, x, x + 8, y, height);
    }
    transposeBytes(src, srcStep, dst, dstStep, x, width, 0, height);
}

// A tile of the large route: width and height are multiples of 64, source rows start on 16
// bytes and destination rows on 64. Rows a power of two apart fall into one cache set, so a
// block transposed straight from source to destination would read and write each line
// several times. Instead each 64x64 block is gathered line by line into a packed buffer,
// transposed there in the first-level cache, and sent out as whole destination lines with
// streaming stores: the image does not fit in the cache (that is why this route runs), so
// its lines would only evict the caller's data.
void transposeLargeTile(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                        int height) {
    alignas(64) Byte in[kBlock * kBlock];
    alignas(64) Byte out[kBlock * kBlock];
    for (int bx = 0; bx < width; bx += kBlock) {
        for (int by = 0; by < height; by += kBlock) {
            for (int r = 0; r < kBlock; ++r) {
                Byte const* line = at(src, srcStep, by + r, bx);
                for (int i = 0; i < kBlock; i += 16)
                    L16::storeAligned(in + r * kBlock + i, L16::loadAligned(line + i));
            }
            for (int x = 0; x < kBlock; x += 16) {
                for (int y = 0; y < kBlock;) {
                    if constexpr (policy.c1 == C1Tiles::bytes16x16) {
                        transpose16x16<Align::aligned>(in + y * kBlock + x, kBlock,
                                                       out + x * kBlock + y, kBlock);
                        y += 16;
                    } else {
                        transpose16x8<Align::aligned>(in + y * kBlock + x, kBlock,
                                                      out + x * kBlock + y, kBlock);
                        y += 8;
                    }
                }
            }
            for (int r = 0; r < kBlock; ++r)
                streamLine64<IntLanes>(at(dst, dstStep, bx + r, by), out + r * kBlock);
        }
    }
}

// The whole image in tiles of 512 by 512, row band by row band, left to right within a band;
// a last tile of a row or column takes what is left.
void transposeLarge(Byte const* src, int srcStep, Byte* dst, int dstStep, int width, int height) {
    for (int ty = 0; ty < height; ty += kLargeTile) {
        const int th = smallest(kLargeTile, height - ty);
        for (int tx = 0; tx < width; tx += kLargeTile) {
            const int tw = smallest(kLargeTile, width - tx);
            transposeLargeTile(at(src, srcStep, ty, tx), srcStep, at(dst, dstStep, tx, ty), dstStep,
                               tw, th);
        }
    }
    fenceStreamedStores();
}

// The large route is worth taking for wide images whose blocks all come out whole and whose
// rows allow aligned vectors, when twice the image does not fit in the cache.
bool takesLargeRoute(Byte const* pSrc, int srcStep, Byte const* pDst, int dstStep,
                     IppiSize roiSize) {
    if constexpr (!policy.largeRoute) {
        return false;
    } else {
        if (roiSize.width <= 1024) return false;
        if (roiSize.width % 64 != 0 || roiSize.height % 64 != 0) return false;
        if (srcStep % 16 != 0 || !isAligned(pSrc, 16)) return false;
        if (dstStep % 64 != 0 || !isAligned(pDst, 64)) return false;
        return streams(largeRouteRule, static_cast<std::int64_t>(roiSize.width) * roiSize.height);
    }
}

// ------------------------------------------------------------------ three channels

// m7: no tiles, pixels of three bytes by a plain double loop, two source rows a turn. The
// two pixels of a turn are neighbours in the destination and leave as one 8-byte store, whose
// last two bytes belong to the next turn and are written again by it; the 4-byte loads read
// the first byte of the next pixel, which the block has for all but its last column.
inline void movePixelPair(Byte const* upper, Byte const* lower, Byte* d) {
    const std::uint32_t top = loadBytes<4>(upper), bottom = loadBytes<4>(lower);
    storeBytes<8>(d, (top & 0xFFFFFFu) | (static_cast<std::uint64_t>(bottom & 0xFFFFFFu) << 24));
}

// Down one source column at a time, so that each destination row is written front to back.
void transposePixelsByColumn(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                             int height) {
    for (int x = 0; x < width; ++x) {
        Byte const* column = at(src, srcStep, 0, 3 * x);
        Byte* d = at(dst, dstStep, x, 0);
        int y = 0;
        if (x + 1 < width) {
            for (; y + 3 <= height; y += 2)
                movePixelPair(column + static_cast<Offset>(y) * srcStep,
                              column + static_cast<Offset>(y + 1) * srcStep, d + 3 * y);
        }
        for (; y < height; ++y) copyPixel3(column + static_cast<Offset>(y) * srcStep, d + 3 * y);
    }
}

// In bands of eight columns, each source row pair moving eight pixel pairs.
void transposePixelsByBand(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                           int height) {
    constexpr int kBand = 8;
    for (int x0 = 0; x0 < width; x0 += kBand) {
        const int x1 = smallest(x0 + kBand, width);
        const int wide = smallest(x1, width - 1);
        int y = 0;
        for (; y + 3 <= height; y += 2) {
            Byte const* upper = at(src, srcStep, y, 0);
            Byte const* lower = at(src, srcStep, y + 1, 0);
            int x = x0;
            for (; x < wide; ++x)
                movePixelPair(upper + 3 * x, lower + 3 * x, at(dst, dstStep, x, 3 * y));
            for (; x < x1; ++x) {
                Byte* d = at(dst, dstStep, x, 3 * y);
                copyPixel3(upper + 3 * x, d);
                copyPixel3(lower + 3 * x, d + 3);
            }
        }
        for (; y < height; ++y) {
            Byte const* row = at(src, srcStep, y, 0);
            for (int x = x0; x < x1; ++x) copyPixel3(row + 3 * x, at(dst, dstStep, x, 3 * y));
        }
    }
}

// Source rows whose distance is a multiple of 512 bytes fall into at most eight sets of the
// first-level cache, fewer than the block's rows: running down a column, each row would evict
// the line the next column needs. Such blocks go by bands, all others by columns.
[[maybe_unused]] void transposePixelsPlain(Byte const* src, int srcStep, Byte* dst, int dstStep,
                                           int width, int height) {
    const int distance = srcStep < 0 ? -srcStep : srcStep;
    if (distance % 512 == 0) {
        transposePixelsByBand(src, srcStep, dst, dstStep, width, height);
    } else {
        transposePixelsByColumn(src, srcStep, dst, dstStep, width, height);
    }
}

// Pixels of the source rows [y0, y1) for the columns [x0, x1).
[[maybe_unused]] inline void transposePixels(Byte const* src, int srcStep, Byte* dst, int dstStep,
                                             int x0, int x1, int y0, int y1) {
    for (int x = x0; x < x1; ++x) {
        Byte* d = at(dst, dstStep, x, 0);
        for (int y = y0; y < y1; ++y) copyPixel3(at(src, srcStep, y, 3 * x), d + 3 * y);
    }
}

// Tiles of T x T pixels, 4 with SSSE3 byte shuffles, 8 in AVX2. A tile may read and write a
// few bytes past its pixels where the block has two more columns (rows) beyond the tile; the
// bytes written there belong to the tile below in the same columns, which comes later.
template <int T, bool WideLoads, bool WideStores>
inline void pixelTile(Byte const* s, Offset ss, Byte* d, Offset ds) {
    if constexpr (T == 8) {
        transposePixels8x8<WideLoads, WideStores>(s, ss, d, ds);
    } else {
        transposePixels4x4<WideLoads, WideStores>(s, ss, d, ds);
    }
}

template <int T>
void transposeBlockC3ByTiles(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                             int height) {
    const Offset ss = srcStep, ds = dstStep;
    int x = 0;
    for (; x + T <= width; x += T) {
        const bool wideLoads = x + T + 2 <= width;
        int y = 0;
        // Rows in ascending order: the filler a wide store leaves is overwritten by the next
        // tile or by the rest loop below.
        for (; y + T <= height; y += T) {
            Byte const* s = at(src, srcStep, y, 3 * x);
            Byte* d = at(dst, dstStep, x, 3 * y);
            const bool wideStores = y + T + 2 <= height;
            if (wideLoads) {
                if (wideStores) {
                    pixelTile<T, true, true>(s, ss, d, ds);
                } else {
                    pixelTile<T, true, false>(s, ss, d, ds);
                }
            } else {
                if (wideStores) {
                    pixelTile<T, false, true>(s, ss, d, ds);
                } else {
                    pixelTile<T, false, false>(s, ss, d, ds);
                }
            }
        }
        transposePixels(src, srcStep, dst, dstStep, x, x + T, y, height);
    }
    transposePixels(src, srcStep, dst, dstStep, x, width, 0, height);
}

void transposeBlockC3(Byte const* src, int srcStep, Byte* dst, int dstStep, int width, int height) {
    if constexpr (policy.c3 == C3Tiles::plainLoops) {
        transposePixelsPlain(src, srcStep, dst, dstStep, width, height);
    } else {
        transposeBlockC3ByTiles<policy.c3 == C3Tiles::pixels8x8 ? 8 : 4>(src, srcStep, dst, dstStep,
                                                                         width, height);
    }
}

// ------------------------------------------------------------------ the block walk

// Vertical strips of B columns, each cut into blocks of B rows; the last strip may be
// narrower and the last block of a strip lower.
template <int Channels, class Block>
void walkBlocks(Byte const* src, int srcStep, Byte* dst, int dstStep, IppiSize roiSize,
                Block block) {
    const int b = smallest(smallest(roiSize.width, roiSize.height), kBlock);
    for (int x0 = 0; x0 < roiSize.width; x0 += b) {
        const int bw = smallest(b, roiSize.width - x0);
        for (int y0 = 0; y0 < roiSize.height; y0 += b) {
            const int bh = smallest(b, roiSize.height - y0);
            block(at(src, srcStep, y0, Channels * x0), srcStep, at(dst, dstStep, x0, Channels * y0),
                  dstStep, bw, bh);
        }
    }
}

// ------------------------------------------------------------------ in place

// Swaps two 8x8 tiles across the diagonal, or transposes a diagonal tile where both are one.
inline void swapTiles8(Byte* upper, Byte* lower, Offset step) {
    const Tile8 a = loadTransposed8x8(upper, step);
    const Tile8 b = loadTransposed8x8(lower, step);
    storeTile8(upper, step, b);
    storeTile8(lower, step, a);
}

inline void swapBytes(Byte* a, Byte* b) {
    const Byte t = *a;
    *a = *b;
    *b = t;
}

// An off-diagonal pair: the block of `height` rows and `width` columns at `upper` trades
// places with the block of `width` rows and `height` columns at `lower`, each transposed.
void swapBlocksC1(Byte* upper, Byte* lower, int step, int width, int height) {
    const Offset s = step;
    const int fullRows = height & ~7, fullCols = width & ~7;
    for (int r = 0; r < fullRows; r += 8)
        for (int c = 0; c < fullCols; c += 8)
            swapTiles8(at(upper, step, r, c), at(lower, step, c, r), s);
    for (int r = 0; r < height; ++r) {
        const int c0 = r < fullRows ? fullCols : 0;
        for (int c = c0; c < width; ++c) swapBytes(at(upper, step, r, c), at(lower, step, c, r));
    }
}

// A block on the diagonal: the elements above it trade places with those below; the
// diagonal itself keeps its values.
void transposeDiagonalBlockC1(Byte* p, int step, int n) {
    const Offset s = step;
    const int full = n & ~7;
    for (int r = 0; r < full; r += 8) {
        Byte* diagonal = at(p, step, r, r);
        storeTile8(diagonal, s, loadTransposed8x8(diagonal, s));
        for (int c = r + 8; c < full; c += 8) swapTiles8(at(p, step, r, c), at(p, step, c, r), s);
    }
    for (int r = 0; r < n; ++r) {
        const int c0 = r + 1 > full ? r + 1 : full;
        for (int c = c0; c < n; ++c) swapBytes(at(p, step, r, c), at(p, step, c, r));
    }
}

inline void swapPixels3(Byte* a, Byte* b) {
    for (int i = 0; i < 3; ++i) swapBytes(a + i, b + i);
}

void swapBlocksC3(Byte* upper, Byte* lower, int step, int width, int height) {
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
            swapPixels3(at(upper, step, r, 3 * c), at(lower, step, c, 3 * r));
}

void transposeDiagonalBlockC3(Byte* p, int step, int n) {
    for (int r = 0; r < n; ++r)
        for (int c = r + 1; c < n; ++c) swapPixels3(at(p, step, r, 3 * c), at(p, step, c, 3 * r));
}

// Diagonal blocks from the top left to the bottom right; after each, the blocks right of it
// in its block row trade places with their mirrors below it.
template <int Channels, class Diagonal, class Pair>
IppStatus transposeSquareInPlace(Byte* p, int step, IppiSize roiSize, int blockLimit,
                                 Diagonal diagonal, Pair pair) {
    // Only a square keeps its shape in its own memory.
    const IppStatus status = firstFailure(
        {nullCheck(p), sizeCheck(roiSize), {roiSize.width != roiSize.height, ippStsSizeErr}});
    if (status != ippStsNoErr) return status;
    const int n = roiSize.width;
    const int b = smallest(n, blockLimit);
    for (int i0 = 0; i0 < n; i0 += b) {
        const int bi = smallest(b, n - i0);
        diagonal(at(p, step, i0, Channels * i0), step, bi);
        for (int j0 = i0 + b; j0 < n; j0 += b) {
            const int bj = smallest(b, n - j0);
            pair(at(p, step, i0, Channels * j0), at(p, step, j0, Channels * i0), step, bj, bi);
        }
    }
    return ippStsNoErr;
}

}  // namespace

// ------------------------------------------------------------------ entry points

IppStatus ippiTranspose_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize) {
    return transposeSquareInPlace<1>(pSrcDst, srcDstStep, roiSize, kInPlaceBlockC1,
                                     transposeDiagonalBlockC1, swapBlocksC1);
}

IppStatus ippiTranspose_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize) {
    return transposeSquareInPlace<3>(pSrcDst, srcDstStep, roiSize, kInPlaceBlockC3,
                                     transposeDiagonalBlockC3, swapBlocksC3);
}

// Same address and step means the caller wants the region transposed where it lies.
IppStatus ippiTranspose_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize) {
    if (pSrc == pDst && srcStep == dstStep) return ippiTranspose_8u_C1IR(pDst, dstStep, roiSize);
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst), sizeCheck(roiSize)});
    if (status != ippStsNoErr) return status;
    if (takesLargeRoute(pSrc, srcStep, pDst, dstStep, roiSize)) {
        transposeLarge(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
        return ippStsNoErr;
    }
    walkBlocks<1>(pSrc, srcStep, pDst, dstStep, roiSize, transposeBlockC1);
    return ippStsNoErr;
}

IppStatus ippiTranspose_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize) {
    if (pSrc == pDst && srcStep == dstStep) return ippiTranspose_8u_C3IR(pDst, dstStep, roiSize);
    const IppStatus status = firstFailure({nullCheck(pSrc, pDst), sizeCheck(roiSize)});
    if (status != ippStsNoErr) return status;
    walkBlocks<3>(pSrc, srcStep, pDst, dstStep, roiSize, transposeBlockC3);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
