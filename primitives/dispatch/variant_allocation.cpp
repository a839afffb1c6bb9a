// The dispatched allocation bodies. They are alike in every generation: the work is the
// layer's allocator's, and only the row padding of the image forms is theirs.
#include "primitives/dispatch/variant.h"

#include <cstdint>

namespace nuv::prim::NUV_V {

Ipp8u* ippsMalloc_8u(int length) {
    if (length < 1) return nullptr;
    return static_cast<Ipp8u*>(ippMalloc(length));
}

void ippsFree(void* p) { ippFree(p); }

void ippiFree(void* p) { ippFree(p); }

// Rows are padded to a multiple of 64 bytes, so that on a 64-byte aligned block every row
// starts aligned. The size is a 32-bit product without an overflow check: an image above
// 2 GiB wraps, and a product that wraps to zero or below gives null with the step stored.
Ipp8u* ippiMalloc_8u_C1(int widthPixels, int heightPixels, int* pStepBytes) {
    if (pStepBytes == nullptr) return nullptr;
    if (widthPixels < 1 || heightPixels < 1) {
        *pStepBytes = 0;
        return nullptr;
    }
    const int step = static_cast<int>((static_cast<std::uint32_t>(widthPixels) + 63u) & ~63u);
    *pStepBytes = step;
    return static_cast<Ipp8u*>(
        ippMalloc(static_cast<int>(static_cast<std::uint32_t>(step) *
                                   static_cast<std::uint32_t>(heightPixels))));
}

Ipp8u* ippiMalloc_8u_C3(int widthPixels, int heightPixels, int* pStepBytes) {
    if (pStepBytes == nullptr) return nullptr;
    if (widthPixels < 1 || heightPixels < 1) {
        *pStepBytes = 0;
        return nullptr;
    }
    // The three-channel row is computed in 64 bits and stored as 32.
    const int step = static_cast<int>((3 * static_cast<std::int64_t>(widthPixels) + 63) & ~63LL);
    *pStepBytes = step;
    return static_cast<Ipp8u*>(
        ippMalloc(static_cast<int>(static_cast<std::uint32_t>(step) *
                                   static_cast<std::uint32_t>(heightPixels))));
}

}  // namespace nuv::prim::NUV_V
