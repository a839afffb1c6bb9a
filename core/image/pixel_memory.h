// Pixel memory of images that allocate their own buffers: 64-byte aligned blocks, taken from
// the store of released buffers when one of the size class waits there.
#pragma once

#include <cstddef>

namespace nuv::core::image::pixels {

struct Block {
    unsigned char* bytes;
    std::size_t capacity;  // what releaseBlock needs back: the size class, or the size itself
};

// At least `bytes` bytes (one when 0), 64-byte aligned. Throws std::bad_alloc.
Block acquireBlock(std::size_t bytes);

// Keeps the block for the next image of its class, or frees it when the store will not.
void releaseBlock(Block block) noexcept;

}  // namespace nuv::core::image::pixels
