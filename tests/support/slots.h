// Running a primitive at every dispatch slot that this processor can execute.
#pragma once

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nuv::test {

// Slots 0..6 whose instruction sets the processor running the tests supports, judged by
// the compiler's own processor query, not by the library's selection code under test.
std::vector<int> executableSlots();

// The variant token that serves a slot for a name whose slots 2 and 3 are given.
std::string variantOfSlot(int slot, char const* slot2, char const* slot3);

// Sets the exported index word for its lifetime and restores the previous value.
class ScopedSlot {
public:
    explicit ScopedSlot(int slot);
    ~ScopedSlot();
    ScopedSlot(ScopedSlot const&) = delete;
    ScopedSlot& operator=(ScopedSlot const&) = delete;

private:
    Ipp32u _saved;
};

// Calls f(slot) once per executable slot with the index word set to it; failures name the
// slot.
template <class F>
void forEachSlot(F&& f) {
    for (int slot : executableSlots()) {
        ScopedSlot scoped(slot);
        SCOPED_TRACE("slot " + std::to_string(slot));
        f(slot);
    }
}

}  // namespace nuv::test
