// The blocks that the mirror moves whole, written on the vector layer. A block type B has a
// length `B::bytes` and three operations: `B::load(p)` reads the block at p, `B::reverse(v)`
// turns what load read into the block with its pixels in the opposite order, and
// `B::store(p, v)` writes such a reversed block. For most blocks load and store share one
// value type; the 96-byte three-channel block of l9 loads into halves that only its reverse
// puts back in memory order. No block needs any alignment. Blocks that need SSSE3 or AVX2
// are templates on their lanes, so an older generation never instantiates them.
#pragma once

#include "primitives/simd/simd.h"

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;

// ------------------------------------------------------------------ one channel: bytes

template <class L>
struct ReversedBytes {
    using Loaded = typename L::V;
    using Value = typename L::V;
    static constexpr int bytes = L::width;
    static Loaded load(Byte const* p) { return L::load(p); }
    static Value reverse(Loaded v) { return L::reverseBytes(v); }
    static void store(Byte* p, Value v) { L::store(p, v); }
};
using Bytes16 = ReversedBytes<Lanes<16>>;
template <class L = Lanes<32>>
using Bytes32 = ReversedBytes<L>;

// Blocks of 8, 4, 2 and 1 bytes in a general register.
template <int N>
struct ScalarBytes {
    using Loaded = Uint<N>;
    using Value = Uint<N>;
    static constexpr int bytes = N;
    static Loaded load(Byte const* p) { return loadBytes<N>(p); }
    static Value reverse(Loaded v) {
        if constexpr (N == 8) {
            return __builtin_bswap64(v);
        } else if constexpr (N == 4) {
            return __builtin_bswap32(v);
        } else if constexpr (N == 2) {
            return static_cast<Value>((v << 8) | (v >> 8));
        } else {
            return v;
        }
    }
    static void store(Byte* p, Value v) { storeBytes<N>(p, v); }
};
using Bytes8 = ScalarBytes<8>;
using Bytes4 = ScalarBytes<4>;
using Bytes2 = ScalarBytes<2>;
using Bytes1 = ScalarBytes<1>;

// --------------------------------------------------------------- three channels: pixels

// Four pixels in three 32-bit words, reversed without vectors: a0a1a2b0 b1b2c0c1 c2d0d1d2
// becomes d0d1d2c0 c1c2b0b1 b2a0a1a2 (bytes from the lowest address).
struct Pixels4 {
    struct Value {
        std::uint32_t w0, w1, w2;
    };
    using Loaded = Value;
    static constexpr int bytes = 12;
    static Loaded load(Byte const* p) {
        return {loadBytes<4>(p), loadBytes<4>(p + 4), loadBytes<4>(p + 8)};
    }
    static Value reverse(Loaded v) {
        Value r;
        r.w0 = (v.w2 >> 8) | ((v.w1 << 8) & 0xFF000000u);
        r.w1 = (v.w1 >> 24) | ((v.w2 & 0xFFu) << 8) | ((v.w0 >> 24) << 16) | (v.w1 << 24);
        r.w2 = ((v.w1 >> 8) & 0xFFu) | (v.w0 << 8);
        return r;
    }
    static void store(Byte* p, Value v) {
        storeBytes<4>(p, v.w0);
        storeBytes<4>(p + 4, v.w1);
        storeBytes<4>(p + 8, v.w2);
    }
};

// One pixel: reversing it changes nothing, its bytes keep their order.
struct Pixel1 {
    struct Value {
        Byte b[3];
    };
    using Loaded = Value;
    static constexpr int bytes = 3;
    static Loaded load(Byte const* p) { return {{p[0], p[1], p[2]}}; }
    static Value reverse(Loaded v) { return v; }
    static void store(Byte* p, Value v) {
        p[0] = v.b[0];
        p[1] = v.b[1];
        p[2] = v.b[2];
    }
};

// Sixteen pixels are 48 bytes, three vectors A B C. Output vector k of the reversed block
// draws its bytes from at most three of them; the order for the n-th source of output k
// gives each byte's position in that source, or -128 (a zero) where another source supplies
// it. Output 0 comes from C and B, output 1 from A, B and C, output 2 from A and B.
struct ShuffleOrder {
    char b[16];
};

constexpr ShuffleOrder pixelReverseOrder(int output, int source) {
    ShuffleOrder m{};
    for (int k = 0; k < 16; ++k) {
        const int o = 16 * output + k;
        const int from = 3 * (15 - o / 3) + o % 3 - 16 * source;
        m.b[k] = static_cast<char>(from >= 0 && from < 16 ? from : -128);
    }
    return m;
}

constexpr ShuffleOrder order0FromC = pixelReverseOrder(0, 2);
constexpr ShuffleOrder order0FromB = pixelReverseOrder(0, 1);
constexpr ShuffleOrder order1FromA = pixelReverseOrder(1, 0);
constexpr ShuffleOrder order1FromB = pixelReverseOrder(1, 1);
constexpr ShuffleOrder order1FromC = pixelReverseOrder(1, 2);
constexpr ShuffleOrder order2FromA = pixelReverseOrder(2, 0);
constexpr ShuffleOrder order2FromB = pixelReverseOrder(2, 1);

// The reversal of 16 pixels held as A B C, on 16-byte lanes or half by half on 32-byte ones
// (two independent groups of 16 pixels, one per half).
template <class L>
struct PixelShuffle {
    using V = typename L::V;
    struct Triple {
        V a, b, c;
    };
    static V order(ShuffleOrder const& o) {
        if constexpr (L::width == 16) {
            return L::constant(o.b);
        } else {
            return L::broadcast(Lanes<16>::load(o.b));
        }
    }
    static Triple apply(V a, V b, V c) {
        const V out0 =
            L::bitOr(L::shuffle(c, order(order0FromC)), L::shuffle(b, order(order0FromB)));
        const V out1 =
            L::bitOr(L::bitOr(L::shuffle(a, order(order1FromA)), L::shuffle(b, order(order1FromB))),
                     L::shuffle(c, order(order1FromC)));
        const V out2 =
            L::bitOr(L::shuffle(a, order(order2FromA)), L::shuffle(b, order(order2FromB)));
        return {out0, out1, out2};
    }
};

template <class L = Lanes<16>>
struct Pixels16 {
    using Value = typename PixelShuffle<L>::Triple;
    using Loaded = Value;
    static constexpr int bytes = 48;
    static Loaded load(Byte const* p) { return {L::load(p), L::load(p + 16), L::load(p + 32)}; }
    static Value reverse(Loaded v) { return PixelShuffle<L>::apply(v.a, v.b, v.c); }
    static void store(Byte* p, Value const& v) {
        L::store(p, v.a);
        L::store(p + 16, v.b);
        L::store(p + 32, v.c);
    }
};

// l9: 32 pixels, 96 bytes. The first 16 pixels go to the low halves and the next 16 to the
// high halves, so that the 16-pixel shuffles run on both groups at once; the reversed block
// is the reversed second group followed by the reversed first, which three half permutations
// put in memory order.
template <class L = Lanes<32>>
struct Pixels32 {
    using Loaded = typename PixelShuffle<L>::Triple;
    using Value = Loaded;
    static constexpr int bytes = 96;
    static typename L::V halves(Byte const* low, Byte const* high) {
        return L::combine(Lanes<16>::load(low), Lanes<16>::load(high));
    }
    static Loaded load(Byte const* p) {
        return {halves(p, p + 48), halves(p + 16, p + 64), halves(p + 32, p + 80)};
    }
    static Value reverse(Loaded const& v) {
        const Loaded r = PixelShuffle<L>::apply(v.a, v.b, v.c);
        return {L::highHalves(r.a, r.b), L::crossHalves(r.c, r.a), L::lowHalves(r.b, r.c)};
    }
    static void store(Byte* p, Value const& v) {
        L::store(p, v.a);
        L::store(p + 32, v.b);
        L::store(p + 64, v.c);
    }
};

// ------------------------------------------------------------------------- composition

// N blocks of B one after the other, moved as one: the unrolled turn of a loop.
template <class B, int N>
struct Repeat {
    struct Loaded {
        typename B::Loaded part[N];
    };
    struct Value {
        typename B::Value part[N];
    };
    static constexpr int bytes = N * B::bytes;
    static Loaded load(Byte const* p) {
        Loaded v;
        for (int i = 0; i < N; ++i) v.part[i] = B::load(p + i * B::bytes);
        return v;
    }
    static Value reverse(Loaded const& v) {
        Value r;
        for (int i = 0; i < N; ++i) r.part[i] = B::reverse(v.part[N - 1 - i]);
        return r;
    }
    static void store(Byte* p, Value const& v) {
        for (int i = 0; i < N; ++i) B::store(p + i * B::bytes, v.part[i]);
    }
};

}  // namespace
}  // namespace nuv::prim::NUV_V
