// The allocator of the primitive layer: 64-byte aligned blocks behind replaceable hooks. A block
// carries the hook's own pointer in the 8 bytes just below the address handed out, so ippFree needs
// no table of its own.
#include <nuv/primitives.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {

void* (*i_malloc)(size_t) = std::malloc;
void* (*i_calloc)(size_t, size_t) = std::calloc;
void* (*i_realloc)(void*, size_t) = std::realloc;
void (*i_free)(void*) = std::free;
int i_version = 1;
int i_min_version = 0;

void* ippMalloc(int length) {
    if (length <= 0) return nullptr;
    // 64 bytes of slack for the alignment and 8 for the pointer behind the block.
    void* raw = i_malloc(static_cast<size_t>(static_cast<std::int64_t>(length)) + 72);
    if (raw == nullptr) return nullptr;
    std::uintptr_t user = (reinterpret_cast<std::uintptr_t>(raw) + 71) & ~std::uintptr_t{63};
    std::memcpy(reinterpret_cast<void*>(user - 8), &raw, sizeof raw);
    return reinterpret_cast<void*>(user);
}

void ippFree(void* p) {
    if (p == nullptr) return;
    void* raw;
    std::memcpy(&raw, static_cast<unsigned char*>(p) - 8, sizeof raw);
    i_free(raw);
}

}  // extern "C"
