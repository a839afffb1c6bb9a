/// @file
/// Transposition of the region of interest.
#pragma once

#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// The region of interest with rows and columns swapped: a region w wide and h high gives an
/// image h wide and w high, of the source's format. One- and three-channel images only; any
/// other gives the null image, without a message.
nuv::core::image::Image transpose(nuv::core::image::Image const& image);

}  // namespace nuv::cv
