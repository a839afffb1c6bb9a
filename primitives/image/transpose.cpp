// Transposition of one- and three-channel 8-bit regions, out of place and, for squares, in
// place. The region is cut into square blocks of up to 64 pixels so that one block of source
// and one of destination stay in the first-level cache while their rows and columns trade
// places; inside a block, register tiles do the work. Newer generations send a large aligned
// one-channel image through a second blocking of 512 by 512 when it would not fit twice in
// the cache, so that a frame does not evict itself.
#include "primitives/dispatch/variant.h"

#include <cstddef>
#include <cstdint>

namespace nuv::prim::NUV_V {

#include "primitives/image/transpose_tiles.inc"

namespace {

// Out-of-place blocks are at most this many pixels on a side.
constexpr int kBlock = 64;
// In-place blocks: the one-channel form swaps two blocks at a time, so they are half as large.
constexpr int kInPlaceBlockC1 = 32;
constexpr int kInPlaceBlockC3 = 64;
// Tiles of the large route.
constexpr int kLargeTile = 512;

inline int smallest(int a, int b) {
    return a < b ? a : b;
}

inline Byte const* at(Byte const* p, int step, int y, int xBytes) {
    return p + static_cast<Offset>(y) * step + xBytes;
}
inline Byte* at(Byte* p, int step, int y, int xBytes) {
    return p + static_cast<Offset>(y) * step + xBytes;
}

inline bool multipleOf(std::uintptr_t value, std::uintptr_t unit) {
    return value % unit == 0;
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

// One block: eight columns at a time, each 8x8 tile through the three-level interleave; the
// SSSE3 and later generations read sixteen columns per row load, and l9 transposes 16x16
// tiles in AVX2 registers. Rests below eight rows or columns go byte by byte.
template <Gen G>
void owniTranspose_8u_C1R_M7(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                             int height) {
    const Offset ss = srcStep, ds = dstStep;
    int x = 0;
    if constexpr (G != Gen::m7) {
        for (; x + 16 <= width; x += 16) {
            int y = 0;
            if constexpr (G == Gen::l9) {
                for (; y + 16 <= height; y += 16)
                    transpose16x16<G, false>(at(src, srcStep, y, x), ss, at(dst, dstStep, x, y),
                                             ds);
            }
            for (; y + 8 <= height; y += 8)
                transpose16x8<G, false>(at(src, srcStep, y, x), ss, at(dst, dstStep, x, y), ds);
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
template <Gen G>
void owniTransposeWxH_8uC1(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                           int height) {
    alignas(64) Byte in[kBlock * kBlock];
    alignas(64) Byte out[kBlock * kBlock];
    for (int bx = 0; bx < width; bx += kBlock) {
        for (int by = 0; by < height; by += kBlock) {
            for (int r = 0; r < kBlock; ++r) {
                Byte const* line = at(src, srcStep, by + r, bx);
                for (int i = 0; i < kBlock; i += 16)
                    store16<true>(in + r * kBlock + i, load16<true>(line + i));
            }
            for (int x = 0; x < kBlock; x += 16) {
                for (int y = 0; y < kBlock;) {
                    if constexpr (G == Gen::l9) {
                        transpose16x16<G, true>(in + y * kBlock + x, kBlock, out + x * kBlock + y,
                                                kBlock);
                        y += 16;
                    } else {
                        transpose16x8<G, true>(in + y * kBlock + x, kBlock, out + x * kBlock + y,
                                               kBlock);
                        y += 8;
                    }
                }
            }
            for (int r = 0; r < kBlock; ++r)
                streamLine64<G>(at(dst, dstStep, bx + r, by), out + r * kBlock);
        }
    }
}

// The whole image in tiles of 512 by 512, row band by row band, left to right within a band;
// a last tile of a row or column takes what is left.
template <Gen G>
void owniTranspose8u_C1R_core2(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                               int height) {
    for (int ty = 0; ty < height; ty += kLargeTile) {
        const int th = smallest(kLargeTile, height - ty);
        for (int tx = 0; tx < width; tx += kLargeTile) {
            const int tw = smallest(kLargeTile, width - tx);
            owniTransposeWxH_8uC1<G>(at(src, srcStep, ty, tx), srcStep, at(dst, dstStep, tx, ty),
                                     dstStep, tw, th);
        }
    }
    // Streaming stores are weakly ordered: later reads, on this thread or another, must see
    // them.
    _mm_sfence();
}

// The large route is worth taking for wide images whose blocks all come out whole and whose
// rows allow aligned vectors, when twice the image does not fit in the cache. An unknown
// cache size counts as 0, so such an image always takes it there.
template <Gen G>
bool takesLargeRoute(Byte const* pSrc, int srcStep, Byte const* pDst, int dstStep,
                     IppiSize roiSize) {
    if constexpr (G == Gen::m7 || G == Gen::n8) {
        return false;
    } else {
        if (roiSize.width <= 1024) return false;
        if (roiSize.width % 64 != 0 || roiSize.height % 64 != 0) return false;
        if (srcStep % 16 != 0 || !multipleOf(reinterpret_cast<std::uintptr_t>(pSrc), 16))
            return false;
        if (dstStep % 64 != 0 || !multipleOf(reinterpret_cast<std::uintptr_t>(pDst), 64))
            return false;
        int cacheSize = 0;
        ippGetMaxCacheSizeB(&cacheSize);
        return static_cast<std::int64_t>(cacheSize) <
               2 * static_cast<std::int64_t>(roiSize.width) * roiSize.height;
    }
}

// ------------------------------------------------------------------ three channels

// m7: no tiles, pixels of three bytes by a plain double loop, two source rows a turn. The
// two pixels of a turn are neighbours in the destination and leave as one 8-byte store, whose
// last two bytes belong to the next turn and are written again by it; the 4-byte loads read
// the first byte of the next pixel, which the block has for all but its last column.
template <Gen G>
inline void movePixelPair(Byte const* upper, Byte const* lower, Byte* d) {
    std::uint32_t top, bottom;
    __builtin_memcpy(&top, upper, 4);
    __builtin_memcpy(&bottom, lower, 4);
    const std::uint64_t pair =
        (top & 0xFFFFFFu) | (static_cast<std::uint64_t>(bottom & 0xFFFFFFu) << 24);
    __builtin_memcpy(d, &pair, 8);
}

// Down one source column at a time, so that each destination row is written front to back.
template <Gen G>
void transposePixelsByColumn(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                             int height) {
    for (int x = 0; x < width; ++x) {
        Byte const* column = at(src, srcStep, 0, 3 * x);
        Byte* d = at(dst, dstStep, x, 0);
        int y = 0;
        if (x + 1 < width) {
            for (; y + 3 <= height; y += 2)
                movePixelPair<G>(column + static_cast<Offset>(y) * srcStep,
                                 column + static_cast<Offset>(y + 1) * srcStep, d + 3 * y);
        }
        for (; y < height; ++y) copyPixel3(column + static_cast<Offset>(y) * srcStep, d + 3 * y);
    }
}

// In bands of eight columns, each source row pair moving eight pixel pairs.
template <Gen G>
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
                movePixelPair<G>(upper + 3 * x, lower + 3 * x, at(dst, dstStep, x, 3 * y));
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
template <Gen G>
void transposePixelsPlain(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                          int height) {
    const int distance = srcStep < 0 ? -srcStep : srcStep;
    if (distance % 512 == 0) {
        transposePixelsByBand<G>(src, srcStep, dst, dstStep, width, height);
    } else {
        transposePixelsByColumn<G>(src, srcStep, dst, dstStep, width, height);
    }
}

// Pixels of the source rows [y0, y1) for the columns [x0, x1).
inline void transposePixels(Byte const* src, int srcStep, Byte* dst, int dstStep, int x0, int x1,
                            int y0, int y1) {
    for (int x = x0; x < x1; ++x) {
        Byte* d = at(dst, dstStep, x, 0);
        for (int y = y0; y < y1; ++y) copyPixel3(at(src, srcStep, y, 3 * x), d + 3 * y);
    }
}

// Tiles of T x T pixels, 4 with SSSE3 byte shuffles, 8 in AVX2. A tile may read and write a
// few bytes past its pixels where the block has two more columns (rows) beyond the tile; the
// bytes written there belong to the tile below in the same columns, which comes later.
template <Gen G, int T, bool WideLoads, bool WideStores>
inline void pixelTile(Byte const* s, Offset ss, Byte* d, Offset ds) {
    if constexpr (T == 8) {
        transposePixels8x8<G, WideLoads, WideStores>(s, ss, d, ds);
    } else {
        transposePixels4x4<G, WideLoads, WideStores>(s, ss, d, ds);
    }
}

template <Gen G>
void owniTranspose_8u_C3R(Byte const* src, int srcStep, Byte* dst, int dstStep, int width,
                          int height) {
    constexpr int T = G == Gen::l9 ? 8 : 4;
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
                    pixelTile<G, T, true, true>(s, ss, d, ds);
                } else {
                    pixelTile<G, T, true, false>(s, ss, d, ds);
                }
            } else {
                if (wideStores) {
                    pixelTile<G, T, false, true>(s, ss, d, ds);
                } else {
                    pixelTile<G, T, false, false>(s, ss, d, ds);
                }
            }
        }
        transposePixels(src, srcStep, dst, dstStep, x, x + T, y, height);
    }
    transposePixels(src, srcStep, dst, dstStep, x, width, 0, height);
}

template <Gen G>
void transposeBlockC3(Byte const* src, int srcStep, Byte* dst, int dstStep, int width, int height) {
    if constexpr (G == Gen::m7) {
        transposePixelsPlain<G>(src, srcStep, dst, dstStep, width, height);
    } else {
        owniTranspose_8u_C3R<G>(src, srcStep, dst, dstStep, width, height);
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
void owniTranspose_8u_C1IR_M7(Byte* upper, Byte* lower, int step, int width, int height) {
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
    if (p == nullptr) return ippStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return ippStsSizeErr;
    // Only a square keeps its shape in its own memory.
    if (roiSize.width != roiSize.height) return ippStsSizeErr;
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
                                     transposeDiagonalBlockC1, owniTranspose_8u_C1IR_M7);
}

IppStatus ippiTranspose_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize) {
    return transposeSquareInPlace<3>(pSrcDst, srcDstStep, roiSize, kInPlaceBlockC3,
                                     transposeDiagonalBlockC3, swapBlocksC3);
}

// Same address and step means the caller wants the region transposed where it lies.
IppStatus ippiTranspose_8u_C1R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize) {
    if (pSrc == pDst && srcStep == dstStep) return ippiTranspose_8u_C1IR(pDst, dstStep, roiSize);
    if (pSrc == nullptr || pDst == nullptr) return ippStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return ippStsSizeErr;
    if (takesLargeRoute<NUV_GEN>(pSrc, srcStep, pDst, dstStep, roiSize)) {
        owniTranspose8u_C1R_core2<NUV_GEN>(pSrc, srcStep, pDst, dstStep, roiSize.width,
                                           roiSize.height);
        return ippStsNoErr;
    }
    walkBlocks<1>(pSrc, srcStep, pDst, dstStep, roiSize, owniTranspose_8u_C1R_M7<NUV_GEN>);
    return ippStsNoErr;
}

IppStatus ippiTranspose_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize) {
    if (pSrc == pDst && srcStep == dstStep) return ippiTranspose_8u_C3IR(pDst, dstStep, roiSize);
    if (pSrc == nullptr || pDst == nullptr) return ippStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return ippStsSizeErr;
    walkBlocks<3>(pSrc, srcStep, pDst, dstStep, roiSize, transposeBlockC3<NUV_GEN>);
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
