// Interleaved three-channel pixels to planes and back, 16 pixels (48 bytes, three vectors)
// at a time, by byte shuffles: so it exists only where the compilation has SSSE3. Plane c
// holds channel c of the 16 pixels in order. Part of the vector layer: see simd.h.
#pragma once

#include "primitives/simd/lanes.h"

#include <array>

namespace nuv::prim::NUV_V::simd {

#if defined(__SSSE3__)

struct Planes {
    Lanes<16>::V c[3];
};

namespace channelMasks {

using Mask = std::array<char, 16>;

// Byte i of the result takes byte `from(i)` of a 48-byte sequence if it lies in vector v.
template <class From>
constexpr Mask part(From from, int v) {
    Mask m{};
    for (int i = 0; i < 16; ++i) {
        const int q = from(i);
        m[i] = static_cast<char>(q / 16 == v ? q % 16 : 0x80);
    }
    return m;
}

// Plane c, from vector v of the interleaved pixels.
constexpr Mask split(int c, int v) {
    return part([c](int i) { return 3 * i + c; }, v);
}
// Interleaved vector j, from plane v: output byte 16j + i is plane (16j+i)%3, pixel (16j+i)/3.
constexpr Mask join(int j, int v) {
    Mask m{};
    for (int i = 0; i < 16; ++i) {
        const int p = 16 * j + i;
        m[i] = static_cast<char>(p % 3 == v ? p / 3 : 0x80);
    }
    return m;
}

using Table = std::array<std::array<Mask, 3>, 3>;
constexpr Table table(Mask (*of)(int, int)) {
    Table t{};
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) t[a][b] = of(a, b);
    return t;
}
inline constexpr Table splitTable = table(split);
inline constexpr Table joinTable = table(join);

}  // namespace channelMasks

inline Lanes<16>::V maskOf(channelMasks::Mask const& m) {
    return Lanes<16>::load(m.data());
}

// Three vectors of interleaved pixels to three planes.
inline Planes splitChannels(Lanes<16>::V const (&in)[3]) {
    using L = Lanes<16>;
    Planes out;
    for (int c = 0; c < 3; ++c) {
        L::V plane = L::zero();
        for (int v = 0; v < 3; ++v)
            plane = L::bitOr(plane, L::shuffle(in[v], maskOf(channelMasks::splitTable[c][v])));
        out.c[c] = plane;
    }
    return out;
}

// Three planes to three vectors of interleaved pixels.
inline void joinChannels(Planes const& planes, Lanes<16>::V (&out)[3]) {
    using L = Lanes<16>;
    for (int j = 0; j < 3; ++j) {
        L::V v = L::zero();
        for (int c = 0; c < 3; ++c)
            v = L::bitOr(v, L::shuffle(planes.c[c], maskOf(channelMasks::joinTable[j][c])));
        out[j] = v;
    }
}

#endif

}  // namespace nuv::prim::NUV_V::simd
