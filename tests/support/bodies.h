// The exported per-generation bodies, for tests that reach a primitive without its stub:
// the internal ones (ippiSet_8u_C1R, ippsZero_8u ...) have no stub at all. For each of
// them, nuv::test::slotTable::<name>[slot] is the body that the slot would run.
#pragma once

#include <nuv/primitives.h>

#define NUV_BODIES(name, slot2, slot3, ret, params, args) \
    ret m7_##name params;                                 \
    ret slot2##_##name params;                            \
    ret slot3##_##name params;                            \
    ret y8_##name params;                                 \
    ret e9_##name params;                                 \
    ret l9_##name params;

extern "C" {
#define NUV_DISPATCHED NUV_BODIES
#define NUV_INTERNAL NUV_BODIES
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
#undef NUV_DISPATCHED
#undef NUV_INTERNAL
}

namespace nuv::test::slotTable {
#define NUV_SLOT_TABLE(name, slot2, slot3, ret, params, args)                                  \
    inline ret(*const name[7]) params = {m7_##name, m7_##name, slot2##_##name, slot3##_##name, \
                                         y8_##name, e9_##name, l9_##name};
#define NUV_DISPATCHED NUV_SLOT_TABLE
#define NUV_INTERNAL NUV_SLOT_TABLE
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
#undef NUV_DISPATCHED
#undef NUV_INTERNAL
}  // namespace nuv::test::slotTable

// Every name with a body per generation, dispatched or internal, and the variants of its
// slots 2 and 3.
namespace nuv::test {
struct NamedSlots {
    char const* name;
    char const* slot2;
    char const* slot3;
};
inline NamedSlots const namedSlots[] = {
#define NUV_NAMED_SLOTS(name, slot2, slot3, ret, params, args) {#name, #slot2, #slot3},
#define NUV_DISPATCHED NUV_NAMED_SLOTS
#define NUV_INTERNAL NUV_NAMED_SLOTS
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
#undef NUV_DISPATCHED
#undef NUV_INTERNAL
};
}  // namespace nuv::test
