// Helpers for tests of the front end on whole images.
#pragma once

#include <nuv/core/Line.h>
#include <nuv/core/image/Image.h>

#include <vector>

namespace nuv::test {

// The image's rows without padding (of the whole image, not its region).
std::vector<unsigned char> packedPixels(nuv::core::image::Image const& image);

// The lines attached to the image, in order.
std::vector<nuv::core::Line> attachedLines(nuv::core::image::Image const& image);

}  // namespace nuv::test
