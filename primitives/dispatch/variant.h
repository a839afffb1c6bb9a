// Included first by every variant translation unit. The build compiles each family source
// once per processor generation (primitives/dispatch/generations.def) with NUV_V set to the
// generation's token; all code of that compilation lives in namespace nuv::prim::NUV_V, so that no
// inline function or template with vector code is shared between two generations.
#pragma once

#include <nuv/primitives.h>
#include <immintrin.h>

#if !defined(NUV_V) || !defined(NUV_V_ID)
#error "variant sources are compiled once per generation with NUV_V and NUV_V_ID set"
#endif

namespace nuv::prim {

// The generations in the order of their ids. Where a family's strategy differs by
// generation, the kernel takes it as a policy keyed on this value, not as a copy of the code.
enum class Gen {
#define NUV_GENERATION(token, flags) token,
#include "primitives/dispatch/generations.def"
#undef NUV_GENERATION
};

}  // namespace nuv::prim

#define NUV_GEN (static_cast<nuv::prim::Gen>(NUV_V_ID))

// Declarations of every primitive of the dispatch lists inside this generation's namespace.
namespace nuv::prim::NUV_V {
#define NUV_DISPATCHED(name, slot2, slot3, ret, params, args) ret name params;
#define NUV_INTERNAL(name, slot2, slot3, ret, params, args) ret name params;
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
#undef NUV_DISPATCHED
#undef NUV_INTERNAL
}  // namespace nuv::prim::NUV_V
