// The internal primitives that the front end calls as well, each through a stub of its own
// that stays inside the library: declarations for the front end's units.
#pragma once

#include <nuv/primitives.h>

extern "C" {
#define NUV_INTERNAL(name, slot2, slot3, ret, params, args)
#define NUV_FRONTEND(name, slot2, slot3, ret, params, args) \
    __attribute__((visibility("hidden"))) ret name params;
#include "primitives/dispatch/internal.def"
#undef NUV_INTERNAL
#undef NUV_FRONTEND
}
