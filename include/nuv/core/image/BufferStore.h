/// @file
/// The store of released pixel buffers.
///
/// A host keeps each frame's result until the next frame's replaces it, so the buffer that
/// an image lets go of is needed again a moment later, at the same size. Buffers that images
/// allocate themselves (Image(ImageInfo), Image(ImageInfo, step) and the private copy that
/// data() makes of a shared buffer) go back to this store when their last handle lets go,
/// and the next image of that size class takes one from there: no system call, no page
/// fault. A host's own pixels never enter the store.
///
/// The store is bounded in bytes; when a released buffer would pass the bound, the buffers
/// released longest ago are freed first. It serves any number of threads.
#pragma once

#include <cstddef>

namespace nuv::core::image {

/// The bound of the store in bytes; 0 turns it off (every released buffer is freed at once).
/// Lowering the bound frees the oldest buffers until the store fits.
void setBufferStoreLimit(std::size_t bytes);
/// The bound of the store in bytes (256 MiB unless the host sets another).
std::size_t bufferStoreLimit();

/// Frees every buffer the store holds; images alive keep theirs.
void emptyBufferStore();

/// The bytes the store holds now, waiting for the next image.
std::size_t bufferStoreBytes();

}  // namespace nuv::core::image
