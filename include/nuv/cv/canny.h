/// @file
/// Canny edges of a one-channel image's region of interest.
#pragma once

#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// OpenCV's Canny detector with a 3x3 aperture on the region, giving an edge image of the
/// region's size (255 on edges, else 0). The thresholds are passed on in their order, not
/// sorted. Any image that has not exactly one channel is logged and gives the null image.
nuv::core::image::Image canny(nuv::core::image::Image const& source, unsigned int threshold1,
                              unsigned int threshold2);

}  // namespace nuv::cv
