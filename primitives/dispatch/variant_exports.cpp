// The exported C-linkage bodies <variant>_<name> of one generation: thin shims into the
// generation's namespace, emitted only where the dispatch lists put this generation in a
// slot. The compiler turns each into a single jump.
#include "primitives/dispatch/variant.h"

#define NUV_CAT_(a, b) a##b
#define NUV_CAT(a, b) NUV_CAT_(a, b)

// NUV_HAS_<generation>_<slot 2>_<slot 3>: does that generation serve the name?
#define NUV_HAS_m7_n8_n8 1
#define NUV_HAS_m7_u8_u8 1
#define NUV_HAS_m7_u8_n8 1
#define NUV_HAS_n8_n8_n8 1
#define NUV_HAS_n8_u8_u8 0
#define NUV_HAS_n8_u8_n8 1
#define NUV_HAS_u8_n8_n8 0
#define NUV_HAS_u8_u8_u8 1
#define NUV_HAS_u8_u8_n8 1
#define NUV_HAS_y8_n8_n8 1
#define NUV_HAS_y8_u8_u8 1
#define NUV_HAS_y8_u8_n8 1
#define NUV_HAS_e9_n8_n8 1
#define NUV_HAS_e9_u8_u8 1
#define NUV_HAS_e9_u8_n8 1
#define NUV_HAS_l9_n8_n8 1
#define NUV_HAS_l9_u8_u8 1
#define NUV_HAS_l9_u8_n8 1

#define NUV_SERVES(slot2, slot3) \
    NUV_CAT(NUV_HAS_, NUV_CAT(NUV_V, NUV_CAT(_, NUV_CAT(slot2, NUV_CAT(_, slot3)))))
#define NUV_EMIT_1(...) __VA_ARGS__
#define NUV_EMIT_0(...)

#define NUV_SHIM(name, slot2, slot3, ret, params, args)                                 \
    NUV_CAT(NUV_EMIT_, NUV_SERVES(slot2, slot3))                                        \
    (extern "C" __attribute__((visibility("default"))) ret NUV_CAT(NUV_V, _##name) params { \
        return nuv::prim::NUV_V::name args;                                             \
    })
#define NUV_DISPATCHED NUV_SHIM
#define NUV_INTERNAL NUV_SHIM
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
