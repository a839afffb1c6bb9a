// The scalar vocabulary of the primitive families: byte and word types, moves of 1 to 8
// bytes through integers (no alignment needed, no aliasing trouble), address tests and the
// 32-bit size arithmetic of the layer. Part of the vector layer: see simd.h.
#pragma once

#include "primitives/dispatch/variant.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nuv::prim::NUV_V::simd {

using Byte = Ipp8u;
using Word = std::uint16_t;
// Byte distances inside a region: a row index times a step needs more than 32 bits.
using Offset = std::ptrdiff_t;

// The unsigned integer of N bytes, for moves of 1, 2, 4 and 8 bytes.
template <int N>
struct UintOf;
template <>
struct UintOf<1> {
    using type = std::uint8_t;
};
template <>
struct UintOf<2> {
    using type = std::uint16_t;
};
template <>
struct UintOf<4> {
    using type = std::uint32_t;
};
template <>
struct UintOf<8> {
    using type = std::uint64_t;
};
template <int N>
using Uint = typename UintOf<N>::type;

template <int N>
inline Uint<N> loadBytes(void const* p) {
    Uint<N> v;
    std::memcpy(&v, p, N);
    return v;
}
template <int N>
inline void storeBytes(void* p, Uint<N> v) {
    std::memcpy(p, &v, N);
}
template <int N>
inline void moveBytes(Byte const* s, Byte* d) {
    storeBytes<N>(d, loadBytes<N>(s));
}

inline std::uintptr_t addressOf(void const* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}
// Bytes past the last multiple of `unit` (a power of two) below p.
inline int misalignment(void const* p, int unit) {
    return static_cast<int>(addressOf(p) & static_cast<std::uintptr_t>(unit - 1));
}
inline bool isAligned(void const* p, int unit) {
    return misalignment(p, unit) == 0;
}
// Bytes from p up to the next multiple of `unit`, 0 if p is one.
inline int bytesToAlignment(void const* p, int unit) {
    return static_cast<int>((0 - addressOf(p)) & static_cast<std::uintptr_t>(unit - 1));
}

// Products of a region's dimensions are 32-bit, wrapping as the rest of the layer does.
inline int product32(int a, int b) {
    return static_cast<int>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

// Advances a source and a destination together and counts the bytes off.
inline void advance(Byte const*& s, Byte*& d, int& n, int by) {
    s += by;
    d += by;
    n -= by;
}

}  // namespace nuv::prim::NUV_V::simd
