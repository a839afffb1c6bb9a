// Where a family's strategy differs by generation (block sizes, which worker moves a row,
// when stores stream), it is one table of six rows in generation order, m7, n8, u8, y8, e9,
// l9, and each compilation takes its own row: one way to choose, and the differences stand
// side by side. Part of the vector layer: see simd.h.
#pragma once

#include "primitives/simd/scalar.h"

namespace nuv::prim::NUV_V::simd {

inline constexpr int generationCount = 6;

template <class P>
inline constexpr P const& ofThisGeneration(P const (&table)[generationCount]) {
    return table[NUV_V_ID];
}

}  // namespace nuv::prim::NUV_V::simd
