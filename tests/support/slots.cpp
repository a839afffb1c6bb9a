#include "support/slots.h"

namespace nuv::test {

std::vector<int> executableSlots() {
    __builtin_cpu_init();
    std::vector<int> slots;
    const bool sse3 = __builtin_cpu_supports("sse3");
    const bool ssse3 = sse3 && __builtin_cpu_supports("ssse3");
    const bool sse41 = ssse3 && __builtin_cpu_supports("sse4.1");
    // The compiler's query reports AVX only where the operating system saves the registers.
    const bool avx = sse41 && __builtin_cpu_supports("avx");
    const bool avx2 = avx && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    slots.push_back(0);  // m7 needs SSE3 as well, which every x86-64 processor of note has
    if (sse3) slots.push_back(1);
    if (ssse3) slots.push_back(2);
    if (ssse3 && __builtin_cpu_supports("movbe")) slots.push_back(3);
    if (sse41) slots.push_back(4);
    if (avx) slots.push_back(5);
    if (avx2) slots.push_back(6);
    return slots;
}

std::string variantOfSlot(int slot, char const* slot2, char const* slot3) {
    switch (slot) {
        case 0:
        case 1:
            return "m7";
        case 2:
            return slot2;
        case 3:
            return slot3;
        case 4:
            return "y8";
        case 5:
            return "e9";
        default:
            return "l9";
    }
}

ScopedSlot::ScopedSlot(int slot) : _saved(ippJumpIndexForMergedLibs) {
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
}

ScopedSlot::~ScopedSlot() {
    ippJumpIndexForMergedLibs = _saved;
}

}  // namespace nuv::test
