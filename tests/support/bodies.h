// The exported per-generation bodies, for tests that reach a primitive without its stub:
// the internal ones (ippiSet_8u_C1R, ippsZero_8u ...) have no stub at all. For each of
// them, nuv::test::slotTable::<name>[slot] is the body that the slot would run.
#pragma once

#include "primitives/dispatch/generations.def"

#include <nuv/primitives.h>

// The body of each slot, declared once per slot (a repeated declaration is harmless).
#define NUV_DECLARE_BODY(generation, features, name, ret, params) ret generation##_##name params;
#define NUV_BODIES(name, slot2, slot3, ret, params, args) \
    NUV_SLOTS(NUV_DECLARE_BODY, slot2, slot3, name, ret, params)

extern "C" {
#define NUV_DISPATCHED NUV_BODIES
#define NUV_INTERNAL NUV_BODIES
#include <nuv/primitives/dispatched.def>
#include "primitives/dispatch/internal.def"
#undef NUV_DISPATCHED
#undef NUV_INTERNAL
}

namespace nuv::test::slotTable {
#define NUV_BODY_ENTRY(generation, features, name) generation##_##name,
#define NUV_SLOT_TABLE(name, slot2, slot3, ret, params, args) \
    inline ret(*const name[7]) params = {NUV_SLOTS(NUV_BODY_ENTRY, slot2, slot3, name)};
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
