// The one vector layer of the primitive families. A variant unit includes this and writes
// its kernels over namespace `simd`; the build compiles the unit once per generation, and
// everything here lives inside that generation's namespace, so no inline function with
// vector code is ever shared between two generations' units.
//
//   scalar.h     bytes and words, moves of 1 to 8 bytes, address tests, 32-bit sizes
//   lanes.h      Lanes<16> and Lanes<32>: loads and stores (aligned, unaligned, streaming,
//                partial), widen and narrow, saturating and averaging arithmetic, compares,
//                interleaves, byte shuffles and reversal; IntLanes, MoveLanes
//   floats.h     Floats<16> and Floats<32>: single-precision arithmetic, approximate
//                reciprocals, compares and conversions; the same operations on one float
//   channels.h   three-channel pixels to planes and back, 16 at a time (SSSE3)
//   pixelfloats.h  three-channel pixels as float planes, 4 or 8 at a time; a row as vector
//                block and scalar tail
//   region.h     argument checks in order, row addressing, joining gap-free rows into runs,
//                the checked row walk of conversions
//   policy.h     a family's per-generation strategy as a table of six rows
//   streaming.h  when stores stream past the cache, by rule and cache query
//
// A kernel is written once: a loop to the last full vector, then one overlapping vector or
// a scalar tail as the family's bytes demand.
#pragma once

#include "primitives/simd/scalar.h"
#include "primitives/simd/lanes.h"
#include "primitives/simd/floats.h"
#include "primitives/simd/channels.h"
#include "primitives/simd/pixelfloats.h"
#include "primitives/simd/region.h"
#include "primitives/simd/policy.h"
#include "primitives/simd/streaming.h"
