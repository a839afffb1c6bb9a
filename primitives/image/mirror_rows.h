// The mirror's row workers: reflection into a second image and in place. Each worker is
// written once over block chains, lists of block types from the largest to the one-pixel
// block, and each generation's policy row names the chain its instruction set affords.
#pragma once

#include "primitives/image/copy_runs.h"
#include "primitives/image/mirror_blocks.h"

#include <type_traits>

namespace nuv::prim::NUV_V {
namespace {

// How each generation mirrors: the byte blocks of one-channel rows (16 bytes, or 32 with
// AVX2), the pixel blocks of three-channel rows (four pixels in general registers before
// SSSE3, sixteen by byte shuffles, 32 with AVX2), and how rows move top to bottom: the region
// copy's run mover, or l9's own 64-byte blocks.
enum class PixelBlocks { general4, shuffled16, shuffled32 };
struct MirrorPolicy {
    int byteBlock;
    PixelBlocks pixels;
    bool rowsBy64;
};
constexpr MirrorPolicy mirrorPolicies[generationCount] = {
    /* m7 */ {16, PixelBlocks::general4, false},
    /* n8 */ {16, PixelBlocks::shuffled16, false},
    /* u8 */ {16, PixelBlocks::shuffled16, false},
    /* y8 */ {16, PixelBlocks::shuffled16, false},
    /* e9 */ {16, PixelBlocks::shuffled16, false},
    /* l9 */ {32, PixelBlocks::shuffled32, true},
};
constexpr MirrorPolicy const& mirrorPolicy = ofThisGeneration(mirrorPolicies);

// ------------------------------------------------------------------- walking a block chain

// One row read forward from s and written backward from dEnd, block after block, each block
// type of the chain taking what the larger ones left. No byte is written twice.
template <class B, class... Smaller>
void copyReversed(Byte const* s, Byte* dEnd, int n) {
    for (; n >= B::bytes; s += B::bytes, dEnd -= B::bytes, n -= B::bytes)
        B::store(dEnd - B::bytes, B::reverse(B::load(s)));
    if constexpr (sizeof...(Smaller) > 0) {
        if (n > 0) copyReversed<Smaller...>(s, dEnd, n);
    }
}

// The same for the vector generations: the largest block that fits the row runs it, and the
// rest is one more such block ending at the row's end, overlapping the last one. That is
// sound only because source and destination are different memory.
template <class B, class... Smaller>
void copyReversedOverlapping(Byte const* s, Byte* d, int n) {
    if constexpr (sizeof...(Smaller) > 0) {
        if (n < B::bytes) {
            copyReversedOverlapping<Smaller...>(s, d, n);
            return;
        }
    }
    Byte* dEnd = d + n;
    int left = n;
    for (Byte const* p = s; left >= B::bytes; p += B::bytes, dEnd -= B::bytes, left -= B::bytes)
        B::store(dEnd - B::bytes, B::reverse(B::load(p)));
    if (left > 0) B::store(d, B::reverse(B::load(s + n - B::bytes)));
}

// Two blocks trade places reversed, both read before either is written.
template <class B>
inline void swapBlocksReversed(Byte* a, Byte* b) {
    const auto x = B::load(a);
    const auto y = B::load(b);
    B::store(a, B::reverse(y));
    B::store(b, B::reverse(x));
}

// One row reversed in place: the outer blocks of the span swap places reversed, from the
// edges inward. When less than two blocks are left, a span of at least one block is done by
// two overlapping blocks; a shorter one goes to the next block type.
template <class B, class... Smaller>
void reverseSpan(Byte* lo, int n) {
    for (; n >= 2 * B::bytes; lo += B::bytes, n -= 2 * B::bytes)
        swapBlocksReversed<B>(lo, lo + n - B::bytes);
    if (n >= B::bytes) {
        swapBlocksReversed<B>(lo, lo + n - B::bytes);
        return;
    }
    if constexpr (sizeof...(Smaller) > 0) {
        if (n > 0) reverseSpan<Smaller...>(lo, n);
    }
}

// Two different rows of n bytes exchanged, each reversed on the way: the top row walks
// forward from `top`, the bottom row backward from `bottomEnd`. The blocks never overlap, as
// a block read after its neighbour was written would be read swapped.
template <class B, class... Smaller>
void swapReversed(Byte* top, Byte* bottomEnd, int n) {
    for (; n >= B::bytes; top += B::bytes, bottomEnd -= B::bytes, n -= B::bytes)
        swapBlocksReversed<B>(top, bottomEnd - B::bytes);
    if constexpr (sizeof...(Smaller) > 0) {
        if (n > 0) swapReversed<Smaller...>(top, bottomEnd, n);
    }
}

// A chain of block types for the three row operations. Overlapping chains end a copied row
// with one block laid against its end; the others take what is left by smaller blocks.
template <bool Overlapping, class... B>
struct Chain {
    static void copyRow(Byte const* s, Byte* d, int n) {
        if constexpr (Overlapping) {
            copyReversedOverlapping<B...>(s, d, n);
        } else {
            copyReversed<B...>(s, d + n, n);
        }
    }
    static void reverseRow(Byte* p, int n) { reverseSpan<B...>(p, n); }
    static void swapRows(Byte* top, Byte* bottomEnd, int n) {
        swapReversed<B...>(top, bottomEnd, n);
    }
};

// The chains of this generation, for copies and for work in place. Vector blocks come
// unrolled in twos or fours so that a turn keeps several loads in flight; m7's copy of
// three-channel rows takes ten groups of four pixels a turn.
template <int C>
struct Chains;

template <>
struct Chains<1> {
    static constexpr bool wide = mirrorPolicy.byteBlock == 32;
    using Copy = std::conditional_t<
        wide, Chain<true, Repeat<Bytes32<>, 2>, Bytes32<>, Bytes16, Bytes8, Bytes4, Bytes2, Bytes1>,
        Chain<true, Repeat<Bytes16, 4>, Bytes16, Bytes8, Bytes4, Bytes2, Bytes1>>;
    using InPlace = std::conditional_t<
        wide, Copy, Chain<true, Repeat<Bytes16, 2>, Bytes16, Bytes8, Bytes4, Bytes2, Bytes1>>;
};

template <>
struct Chains<3> {
    static constexpr PixelBlocks p = mirrorPolicy.pixels;
    using Copy = std::conditional_t<
        p == PixelBlocks::general4, Chain<false, Repeat<Pixels4, 10>, Pixels4, Pixel1>,
        std::conditional_t<p == PixelBlocks::shuffled32,
                           Chain<true, Pixels32<>, Pixels16<>, Pixels4, Pixel1>,
                           Chain<true, Repeat<Pixels16<>, 2>, Pixels16<>, Pixels4, Pixel1>>>;
    using InPlace =
        std::conditional_t<p == PixelBlocks::general4,
                           Chain<true, Repeat<Pixels4, 2>, Pixels4, Pixel1>,
                           std::conditional_t<p == PixelBlocks::shuffled32,
                                              Chain<true, Pixels32<>, Pixels16<>, Pixels4, Pixel1>,
                                              Chain<true, Pixels16<>, Pixels4, Pixel1>>>;
};

// ----------------------------------------------------------- m7: the one-channel flip copy

// 32 bytes a turn with loads and stores as the path allows, then one step each of 16 and 8
// bytes, then pairs and a last byte.
template <class Load, class Store>
void flipRowBy32(Byte const* s, Byte* dEnd, int n, Load load, Store store) {
    using L = Lanes<16>;
    for (; n >= 32; s += 32, dEnd -= 32, n -= 32) {
        const L::V a = load(s), b = load(s + 16);
        store(dEnd - 16, L::reverseBytes(a));
        store(dEnd - 32, L::reverseBytes(b));
    }
    if (n > 0) copyReversed<Bytes16, Bytes8, Bytes2, Bytes1>(s, dEnd, n);
}

// ------------------------------------------------------------ left to right, into a copy

// Source rows are walked from the top; the destination from one byte past the end of its
// first row (flip about the vertical axis) or of its last row (both axes, walking upward).
template <int C>
void mirrorColumnsCopy(Byte const* src, int srcStep, Byte* dst, int dstStep, int width, int height,
                       bool bothAxes) {
    const int rowBytes = C * width;
    Byte* dEnd = (bothAxes ? rowAt(dst, dstStep, height - 1) : dst) + rowBytes;
    const Offset dStep = bothAxes ? -Offset{dstStep} : Offset{dstStep};
    auto rows = [&](auto row) {
        Byte const* s = src;
        Byte* e = dEnd;
        for (int y = 0; y < height; ++y, s += srcStep, e += dStep) row(s, e, rowBytes);
    };
    if constexpr (C == 1 && mirrorPolicy.pixels == PixelBlocks::general4) {
        // m7: the aligned path needs every row aligned on both sides, so it is chosen once;
        // a large aligned region streams.
        using M = Moves<Lanes<16>>;
        const bool aligned =
            isAligned(src, 16) && isAligned(dEnd, 16) && srcStep % 16 == 0 && dstStep % 16 == 0;
        const int span = product32(
            static_cast<int>(static_cast<unsigned>(srcStep) + static_cast<unsigned>(dstStep)),
            height);
        if (aligned && span > 0x100000) {
            rows([](Byte const* s, Byte* e, int n) {
                flipRowBy32(s, e, n, M::loadAligned, M::stream);
            });
            fenceStreamedStores();
        } else if (aligned) {
            rows([](Byte const* s, Byte* e, int n) {
                flipRowBy32(s, e, n, M::loadAligned, M::storeAligned);
            });
        } else {
            rows([](Byte const* s, Byte* e, int n) { flipRowBy32(s, e, n, M::load, M::store); });
        }
    } else {
        rows([](Byte const* s, Byte* e, int n) { Chains<C>::Copy::copyRow(s, e - n, n); });
    }
}

// ---------------------------------------------------------------- left to right, in place

// About the vertical axis each row is reversed; about both, row y and row height - 1 - y
// exchange reversed, and the middle row of an odd height is reversed alone.
template <int C>
void mirrorColumnsInPlace(Byte* p, int step, int width, int height, bool bothAxes) {
    using Chain = typename Chains<C>::InPlace;
    const int rowBytes = C * width;
    if (!bothAxes) {
        for (int y = 0; y < height; ++y) Chain::reverseRow(rowAt(p, step, y), rowBytes);
        return;
    }
    for (int y = 0; y < height / 2; ++y)
        Chain::swapRows(rowAt(p, step, y), rowAt(p, step, height - 1 - y) + rowBytes, rowBytes);
    if (height & 1) Chain::reverseRow(rowAt(p, step, height / 2), rowBytes);
}

// ---------------------------------------------------------------- top to bottom, in place

// Exchanges n bytes of two different rows, 64 bytes at a time and then 32, 16, 8, 4, 2 and 1
// as the count asks. The 16-byte moves are aligned when both rows are; the 32-byte moves of
// the AVX generations are unaligned, which costs nothing on aligned data.
template <class L, Align A>
inline void exchangeVectors(Byte* a, Byte* b, int bytes) {
    typename L::V x[64 / L::width], y[64 / L::width];
    const int count = bytes / L::width;
    for (int i = 0; i < count; ++i) {
        x[i] = L::template loadAs<A>(a + i * L::width);
        y[i] = L::template loadAs<A>(b + i * L::width);
    }
    for (int i = 0; i < count; ++i) {
        L::template storeAs<A>(a + i * L::width, y[i]);
        L::template storeAs<A>(b + i * L::width, x[i]);
    }
}

template <int N>
inline void exchangeScalar(Byte* a, Byte* b) {
    const Uint<N> x = loadBytes<N>(a), y = loadBytes<N>(b);
    storeBytes<N>(a, y);
    storeBytes<N>(b, x);
}

template <Align A>
void exchangeRowBytes(Byte* a, Byte* b, int n) {
    using Wide = MoveLanes;
    constexpr Align wideAlign = Wide::width == 16 ? A : Align::unaligned;
    for (; n >= 64; a += 64, b += 64, n -= 64) exchangeVectors<Wide, wideAlign>(a, b, 64);
    if (n & 32) {
        exchangeVectors<Wide, wideAlign>(a, b, 32);
        a += 32;
        b += 32;
    }
    if (n & 16) {
        exchangeVectors<Lanes<16>, A>(a, b, 16);
        a += 16;
        b += 16;
    }
    if (n & 8) {
        exchangeScalar<8>(a, b);
        a += 8;
        b += 8;
    }
    if (n & 4) {
        exchangeScalar<4>(a, b);
        a += 4;
        b += 4;
    }
    if (n & 2) {
        exchangeScalar<2>(a, b);
        a += 2;
        b += 2;
    }
    if (n & 1) exchangeScalar<1>(a, b);
}

// Row y and row height - 1 - y exchange for y below height / 2; the middle row of an odd
// height stays.
void mirrorRowsInPlace(Byte* p, int step, int rowBytes, int height) {
    const bool aligned = isAligned(p, 16) && step % 16 == 0;
    for (int y = 0; y < height / 2; ++y) {
        Byte* a = rowAt(p, step, y);
        Byte* b = rowAt(p, step, height - 1 - y);
        if (aligned) {
            exchangeRowBytes<Align::aligned>(a, b, rowBytes);
        } else {
            exchangeRowBytes<Align::unaligned>(a, b, rowBytes);
        }
    }
}

// ---------------------------------------------------------------- top to bottom, into a copy

// l9's own row copy: 64-byte blocks of two 32-byte moves; a rest is one more block ending at
// the row's end, and a row shorter than a block two pieces of the largest size that fits.
template <int W = 32>
void copyRowBy64(Byte const* s, Byte* d, int n) {
    if (n < 64) {
        if (n >= 32) {
            moveVector<W>(s, d);
            moveVector<W>(s + n - 32, d + n - 32);
        } else if (n >= 16) {
            moveVector<16>(s, d);
            moveVector<16>(s + n - 16, d + n - 16);
        } else {
            copyShortRun(s, d, n);
        }
        return;
    }
    int left = n;
    Byte const* p = s;
    Byte* q = d;
    for (; left >= 64; p += 64, q += 64, left -= 64) {
        moveVector<W>(p, q);
        moveVector<W>(p + 32, q + 32);
    }
    if (left > 0) {
        moveVector<W>(s + n - 64, d + n - 64);
        moveVector<W>(s + n - 32, d + n - 32);
    }
}

// The three-channel form: rows three times as long are first brought to a 32-byte
// destination boundary, so that none of the stores of the loop splits a cache line.
template <int W = 32>
void copyRowBy64Aligned(Byte const* s, Byte* d, int n) {
    if (n >= 128) {
        if (const int off = misalignment(d, 32)) {
            moveVector<W>(s, d);
            advance(s, d, n, 32 - off);
        }
    }
    copyRowBy64<W>(s, d, n);
}

// Rows long enough to stream: a whole aligned block loop and a head and tail around it.
constexpr int kStreamRowMin = 128;

// Source row y to destination row height - 1 - y: streamed past the cache when the caller
// says so and rows are long enough, else by the generation's row copy.
template <int C>
void mirrorRowsCopy(Byte const* src, int srcStep, Byte* dst, int dstStep, int rowBytes, int height,
                    bool streamed) {
    auto rows = [&](auto row) {
        for (int y = 0; y < height; ++y)
            row(rowAt(src, srcStep, y), rowAt(dst, dstStep, height - 1 - y), rowBytes);
    };
    if (streamed && rowBytes >= kStreamRowMin) {
        rows(streamRun<MoveLanes::width, MoveLanes::width>);
        fenceStreamedStores();
    } else if constexpr (mirrorPolicy.rowsBy64) {
        if constexpr (C == 1) {
            rows(copyRowBy64<>);
        } else {
            rows(copyRowBy64Aligned<>);
        }
    } else {
        rows([](Byte const* s, Byte* d, int n) { copyRun(s, d, n, false); });
    }
}

}  // namespace
}  // namespace nuv::prim::NUV_V
