// The run movers of the region copy, also used by the top-to-bottom mirror. A mover copies
// one run of `n` bytes; source and destination never overlap, so a byte may be written twice
// where that saves a branch. The streaming movers leave the fence to their caller, who
// issues it once after the last run: a fence per run would make each run wait until the
// stores of the one before have drained. Each generation compiles its own copy of every mover
// inside its namespace; the movers that need SSSE3 or AVX are templates, so an older generation
// never instantiates them.
#pragma once

#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

// ---- tails shared by the movers

// Pieces of 8 bytes, then one each of 4, 2 and 1 as the count asks.
inline void copyTailBy8421(Byte const* s, Byte* d, int n) {
    for (; n >= 8; advance(s, d, n, 8)) moveBytes<8>(s, d);
    if (n & 4) {
        moveBytes<4>(s, d);
        advance(s, d, n, 4);
    }
    if (n & 2) {
        moveBytes<2>(s, d);
        advance(s, d, n, 2);
    }
    if (n & 1) moveBytes<1>(s, d);
}

// Below 16 bytes: two pieces of the largest size that fits, the second ending at the run's
// end, overlapping the first where the count is not a power of two.
inline void copyShortRun(Byte const* s, Byte* d, int n) {
    if (n >= 8) {
        moveBytes<8>(s, d);
        moveBytes<8>(s + n - 8, d + n - 8);
    } else if (n >= 4) {
        moveBytes<4>(s, d);
        moveBytes<4>(s + n - 4, d + n - 4);
    } else {
        for (int i = 0; i < n; ++i) moveBytes<1>(s + i, d + i);
    }
}

// What is left after a block loop, with at least W bytes before `s` belonging to the run:
// whole vectors, then one more ending exactly at the run's end.
template <int W>
inline void copyTailByVectors(Byte const* s, Byte* d, int n) {
    for (; n >= W; advance(s, d, n, W)) moveVector<W>(s, d);
    if (n > 0) moveVector<W>(s + n - W, d + n - W);
}

// Blocks of 64 bytes while at least 64 bytes remain: a vector per `load`, all of a block's
// loads before its stores, each written by `store` (aligned, unaligned or streamed).
template <class L, class Load, class Store>
inline void copyBlocks64(Byte const*& s, Byte*& d, int& n, Load load, Store store) {
    for (; n >= 64; advance(s, d, n, 64)) {
        if constexpr (L::width == 16) {
            const typename L::V a = load(s), b = load(s + 16), c = load(s + 32), e = load(s + 48);
            store(d, a);
            store(d + 16, b);
            store(d + 32, c);
            store(d + 48, e);
        } else {
            const typename L::V a = load(s), b = load(s + 32);
            store(d, a);
            store(d + 32, b);
        }
    }
}

// The loads and stores a block loop is built from, as objects the compiler inlines.
template <class L>
struct Moves {
    using V = typename L::V;
    static constexpr auto load = [](Byte const* p) { return L::load(p); };
    static constexpr auto loadAligned = [](Byte const* p) { return L::loadAligned(p); };
    static constexpr auto store = [](Byte* p, V v) { L::store(p, v); };
    static constexpr auto storeAligned = [](Byte* p, V v) { L::storeAligned(p, v); };
    static constexpr auto stream = [](Byte* p, V v) { L::stream(p, v); };
};

// ---- m7: 16-byte aligned stores, the source read as its alignment allows

inline void copyRunAlignedStores(Byte const* s, Byte* d, int n, bool streamed) {
    using L = Lanes<16>;
    using M = Moves<L>;
    // Off an 8-byte boundary lddqu serves loads that split a cache line; eight bytes past a
    // 16-byte boundary two 8-byte loads never split one.
    constexpr auto loadCrossing = [](Byte const* p) { return L::loadCrossing(p); };
    constexpr auto loadHalves = [](Byte const* p) { return L::loadHalves(p); };
    if (n >= 64) {
        if (const int off = misalignment(d, 16)) {
            // One unaligned block reaches the destination's boundary; up to 15 of its bytes
            // are written again by the loop.
            L::store(d, L::loadCrossing(s));
            advance(s, d, n, 16 - off);
        }
        if (n >= 64) {
            if (streamed) {
                copyBlocks64<L>(s, d, n, loadCrossing, M::stream);
            } else if (misalignment(s, 8)) {
                copyBlocks64<L>(s, d, n, loadCrossing, M::storeAligned);
            } else if (misalignment(s, 16)) {
                copyBlocks64<L>(s, d, n, loadHalves, M::storeAligned);
            } else {
                copyBlocks64<L>(s, d, n, M::loadAligned, M::storeAligned);
            }
        }
        if (n == 0) return;
    }
    copyTailBy8421(s, d, n);
}

// ---- n8, u8, y8: 16-byte blocks into an aligned destination, the source joined

// A source `S` bytes past its 16-byte boundary, read as aligned blocks and joined by byte
// alignment, so that no load splits a cache line. The aligned block below `s` must belong
// to the run (the caller sees to it), and the loop stops while the block above the last one
// it stores still lies inside the run.
template <int S, class L = Lanes<16>>
void copyBlocksJoined(Byte const*& s, Byte*& d, int& n) {
    Byte const* base = s - S;
    typename L::V prev = L::loadAligned(base);
    for (; n >= 80; advance(s, d, n, 64)) {
        const typename L::V a = L::loadAligned(base + 16), b = L::loadAligned(base + 32);
        const typename L::V c = L::loadAligned(base + 48), e = L::loadAligned(base + 64);
        L::storeAligned(d, L::template alignRight<S>(a, prev));
        L::storeAligned(d + 16, L::template alignRight<S>(b, a));
        L::storeAligned(d + 32, L::template alignRight<S>(c, b));
        L::storeAligned(d + 48, L::template alignRight<S>(e, c));
        prev = e;
        base += 64;
    }
}

inline void copyBlocksAligned(Byte const*& s, Byte*& d, int& n) {
    using M = Moves<Lanes<16>>;
    copyBlocks64<Lanes<16>>(s, d, n, M::loadAligned, M::storeAligned);
}

// The block loop for each source offset from its 16-byte boundary once the destination is
// aligned; at offset 0 the source is read by aligned loads directly.
using BlockLoop = void (*)(Byte const*&, Byte*&, int&);
// clang-format off
template <class L = Lanes<16>>
constexpr BlockLoop joinedBlockLoops[16] = {
    copyBlocksAligned,
    copyBlocksJoined<1, L>,  copyBlocksJoined<2, L>,  copyBlocksJoined<3, L>,
    copyBlocksJoined<4, L>,  copyBlocksJoined<5, L>,  copyBlocksJoined<6, L>,
    copyBlocksJoined<7, L>,  copyBlocksJoined<8, L>,  copyBlocksJoined<9, L>,
    copyBlocksJoined<10, L>, copyBlocksJoined<11, L>, copyBlocksJoined<12, L>,
    copyBlocksJoined<13, L>, copyBlocksJoined<14, L>, copyBlocksJoined<15, L>};
// clang-format on

template <class L = Lanes<16>>
void copyRunJoined(Byte const* s, Byte* d, int n) {
    if (n < 16) {
        copyShortRun(s, d, n);
        return;
    }
    if (n >= 80) {
        int head = bytesToAlignment(d, 16);
        const int shift = misalignment(s + head, 16);
        // The joined loop's first load starts `shift` bytes below the source; a second head
        // block keeps that load inside the run.
        if (shift > head) head += 16;
        if (head > 0) {
            moveVector<16>(s, d);
            if (head > 16) moveVector<16>(s + 16, d + 16);
            advance(s, d, n, head);
        }
        joinedBlockLoops<L>[shift](s, d, n);
    }
    copyTailByVectors<16>(s, d, n);
}

// Both pointers 16-byte aligned. The bytes past the last whole 64-byte block go first, taken
// from the end by the bits of the count, then the blocks from the top down.
inline void copyRunBackward(Byte const* s, Byte* d, int n) {
    using L = Lanes<16>;
    int p = n;
    if (p & 1) {
        p -= 1;
        moveBytes<1>(s + p, d + p);
    }
    if (p & 2) {
        p -= 2;
        moveBytes<2>(s + p, d + p);
    }
    if (p & 4) {
        p -= 4;
        moveBytes<4>(s + p, d + p);
    }
    if (p & 8) {
        p -= 8;
        moveBytes<8>(s + p, d + p);
    }
    // From here on p is a multiple of 16, so the pieces are aligned.
    while (p & 63) {
        p -= 16;
        L::storeAligned(d + p, L::loadAligned(s + p));
    }
    for (p -= 64; p >= 0; p -= 64) {
        const L::V e = L::loadAligned(s + p + 48), c = L::loadAligned(s + p + 32);
        const L::V b = L::loadAligned(s + p + 16), a = L::loadAligned(s + p);
        L::storeAligned(d + p + 48, e);
        L::storeAligned(d + p + 32, c);
        L::storeAligned(d + p + 16, b);
        L::storeAligned(d + p, a);
    }
}

// The processor first matches a load against earlier stores by the low 12 address bits. When
// the source lies just below the destination in those bits (directly or across a 4 KiB
// step), the loads of a forward walk keep meeting the addresses of stores just issued and
// wait for them; walking the run backward keeps the two apart.
inline bool aliasesForward(Byte const* s, Byte const* d) {
    const int diff =
        static_cast<int>(addressOf(s) & 0xFFF) - static_cast<int>(addressOf(d) & 0xFFF);
    return diff >= 0xF60 || (diff < 0 && diff >= -0xA0);
}

// Vectors of W bytes stream past the cache from an AlignTo-byte boundary of the destination,
// which one unaligned head of AlignTo bytes reaches; the rest is whole vectors and one more
// ending at the run's end. Runs of at least 2 * AlignTo bytes.
template <int W, int AlignTo>
void streamRun(Byte const* s, Byte* d, int n) {
    if (const int off = misalignment(d, AlignTo)) {
        for (int i = 0; i < AlignTo; i += W) moveVector<W>(s + i, d + i);
        advance(s, d, n, AlignTo - off);
    }
    copyBlocks64<Lanes<W>>(s, d, n, Moves<Lanes<W>>::load, Moves<Lanes<W>>::stream);
    copyTailByVectors<W>(s, d, n);
}

inline constexpr int touchBlockBytes = 0x40000;

// u8, y8: the source of each block is pulled into the cache by one read per 64-byte line
// first, so the streaming pass that follows waits on no miss of its own.
inline void streamRunTouched(Byte const* s, Byte* d, int n) {
    using L = Lanes<16>;
    if (const int off = misalignment(d, 16)) {
        moveVector<16>(s, d);
        advance(s, d, n, 16 - off);
    }
    while (n >= 16) {
        const int block = n < touchBlockBytes ? (n & ~15) : touchBlockBytes;
        for (int i = 0; i < block; i += 64)
            static_cast<void>(*static_cast<Byte const volatile*>(s + i));
        for (int i = 0; i < block; i += 16) L::stream(d + i, L::load(s + i));
        advance(s, d, n, block);
    }
    if (n > 0) moveVector<16>(s + n - 16, d + n - 16);
}

// ---- e9, l9: 32-byte moves

template <int W = 32>
void copyRunWide(Byte const* s, Byte* d, int n) {
    if (n < 32) {
        if (n >= 16) {
            moveVector<16>(s, d);
            moveVector<16>(s + n - 16, d + n - 16);
        } else {
            copyShortRun(s, d, n);
        }
        return;
    }
    if (n <= 64) {
        moveVector<W>(s, d);
        moveVector<W>(s + n - W, d + n - W);
        return;
    }
    // Long runs start with one block that brings the destination to a 32-byte boundary, so
    // no store of the loop splits a cache line.
    if (n >= 256) {
        if (const int off = misalignment(d, W)) {
            moveVector<W>(s, d);
            advance(s, d, n, W - off);
        }
    }
    using L = Lanes<W>;
    for (; n >= 128; advance(s, d, n, 128)) {
        const typename L::V a = L::load(s), b = L::load(s + 32);
        const typename L::V c = L::load(s + 64), e = L::load(s + 96);
        L::store(d, a);
        L::store(d + 32, b);
        L::store(d + 64, c);
        L::store(d + 96, e);
    }
    copyTailByVectors<W>(s, d, n);
}

// ---- the run copy of each generation

enum class Mover {
    alignedStores,  // 16-byte aligned stores, lddqu or split loads by the source's alignment
    joined,         // aligned loads joined by byte alignment; streams whole lines
    joinedTouched,  // the same, backward where the two addresses alias; streaming touches the
                    // source of each block first
    wide,           // 32-byte moves; streams whole lines
};
constexpr Mover runMovers[generationCount] = {Mover::alignedStores, Mover::joined,
                                              Mover::joinedTouched, Mover::joinedTouched,
                                              Mover::wide,          Mover::wide};
constexpr Mover runMover = ofThisGeneration(runMovers);

// One run copied by this generation's mover, through the cache or streamed past it; after
// streamed runs the caller fences.
inline void copyRun(Byte const* s, Byte* d, int n, bool streamed) {
    if constexpr (runMover == Mover::alignedStores) {
        copyRunAlignedStores(s, d, n, streamed);
    } else if constexpr (runMover == Mover::wide) {
        if (streamed) {
            streamRun<32, 64>(s, d, n);
        } else {
            copyRunWide(s, d, n);
        }
    } else if constexpr (runMover == Mover::joined) {
        if (streamed) {
            streamRun<16, 64>(s, d, n);
        } else {
            copyRunJoined(s, d, n);
        }
    } else {
        if (streamed) {
            streamRunTouched(s, d, n);
        } else if (isAligned(s, 16) && isAligned(d, 16) && aliasesForward(s, d)) {
            copyRunBackward(s, d, n);
        } else {
            copyRunJoined(s, d, n);
        }
    }
}

}  // namespace
}  // namespace nuv::prim::NUV_V
