// The exported C-linkage bodies <variant>_<name> of one generation: thin shims into the
// generation's namespace, emitted only where the generation serves one of the name's slots.
// The compiler turns each into a single jump.
#include "primitives/dispatch/variant.h"
#include "primitives/dispatch/generations.def"

#define NUV_CAT_(a, b) a##b
#define NUV_CAT(a, b) NUV_CAT_(a, b)

// Is a generation token this compilation's own? The build defines NUV_SELF_<own token> as
// NUV_PROBE, so pasting NUV_SELF_ to a token gives a comma (1) only for the own one.
#define NUV_PROBE ~, 1
#define NUV_SECOND(a, b, ...) b
#define NUV_SECOND_(...) NUV_SECOND(__VA_ARGS__)
#define NUV_IS_SELF(generation) NUV_SECOND_(NUV_CAT(NUV_SELF_, generation), 0, )

// Does this generation serve any of the seven slots of a name whose slots 2 and 3 are given?
#define NUV_OR_00 0
#define NUV_OR_01 1
#define NUV_OR_10 1
#define NUV_OR_11 1
#define NUV_OR(a, b) NUV_CAT(NUV_OR_, NUV_CAT(a, b))
#define NUV_ANY_(a, b, c, d, e, f, g, h) \
    NUV_OR(a, NUV_OR(b, NUV_OR(c, NUV_OR(d, NUV_OR(e, NUV_OR(f, NUV_OR(g, h)))))))
#define NUV_ANY(...) NUV_ANY_(__VA_ARGS__)
#define NUV_SELF_BIT(generation, features, ...) , NUV_IS_SELF(generation)
#define NUV_SERVES(slot2, slot3) NUV_ANY(0 NUV_SLOTS(NUV_SELF_BIT, slot2, slot3))

#define NUV_EMIT_1(...) __VA_ARGS__
#define NUV_EMIT_0(...)
#define NUV_EMIT(flag, ...) NUV_CAT(NUV_EMIT_, flag)(__VA_ARGS__)

#define NUV_SHIM(name, slot2, slot3, ret, params, args)                               \
    NUV_EMIT(                                                                         \
        NUV_SERVES(slot2, slot3),                                                     \
        extern "C" __attribute__((visibility("default"))) ret NUV_CAT(NUV_V, _##name) \
            params { return nuv::prim::NUV_V::name args; })
#define NUV_DISPATCHED NUV_SHIM
#define NUV_INTERNAL NUV_SHIM
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
