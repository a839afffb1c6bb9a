/// @file
/// Reflections of an image's region of interest.
#pragma once

#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// The region turned upside down: its rows in the opposite order.
nuv::core::image::Image mirrorHorizontal(nuv::core::image::Image const& image);
/// The region reversed left to right: its columns in the opposite order.
nuv::core::image::Image mirrorVertical(nuv::core::image::Image const& image);
/// The region turned by half a turn: both of the above.
nuv::core::image::Image mirrorHorizontalAndVertical(nuv::core::image::Image const& image);

}  // namespace nuv::cv

/// The three reflections behind the functions above: axis 0 reverses the rows, 1 the columns,
/// 2 both. The result is a new image of the region's size and format; a pixel keeps the order
/// of its bytes. One- and three-channel images only: any other is logged and gives the null
/// image. Any other axis is a programming error, caught by an assertion.
nuv::core::image::Image mirror(nuv::core::image::Image const& image, int axis);
