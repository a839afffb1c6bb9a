#include "support/slots.h"

#include "primitives/dispatch/generations.def"

#include <iterator>

namespace nuv::test {

namespace {
// The slot lines of the generation list with slots 2 and 3 as the placeholders "2" and "3".
#define NUV_SLOT_NAME(generation, features, ...) #generation,
char const* const slotGenerations[] = {NUV_SLOTS(NUV_SLOT_NAME, 2, 3)};
}  // namespace

std::vector<int> executableSlots() {
    __builtin_cpu_init();
    // The compiler's query reports AVX only where the operating system saves the registers.
#define NUV_CPU(feature) __builtin_cpu_supports(#feature)
#define NUV_SLOT_RUNS(generation, features, ...) static_cast<bool>(features),
    const bool runs[] = {NUV_SLOTS(NUV_SLOT_RUNS, n8, u8)};
#undef NUV_CPU
    std::vector<int> slots;
    for (int slot = 0; slot < static_cast<int>(std::size(runs)); ++slot)
        if (runs[slot]) slots.push_back(slot);
    return slots;
}

std::string variantOfSlot(int slot, char const* slot2, char const* slot3) {
    const std::string generation = slotGenerations[slot];
    return generation == "2" ? slot2 : generation == "3" ? slot3 : generation;
}

ScopedSlot::ScopedSlot(int slot) : _saved(ippJumpIndexForMergedLibs) {
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
}

ScopedSlot::~ScopedSlot() {
    ippJumpIndexForMergedLibs = _saved;
}

}  // namespace nuv::test
