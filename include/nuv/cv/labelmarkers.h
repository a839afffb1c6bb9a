/// @file
/// Connected components of a Gray image's region of interest.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// A Gray image of the region's size: 0 for background (zero pixels), and labels 1..254 for
/// the 8-connected components of non-zero pixels, given in raster order of each component's
/// first pixel and starting again at 1 after 254. *numberOfMarkers receives the true number
/// of components. Any other format gives the null image and a count of 0. The scratch memory
/// is kept for the process and only grows: calls must not run in two threads at once.
nuv::core::image::Image labelmarkers(nuv::core::image::Image const& image, int* numberOfMarkers);

/// For each label of a label image's region that covers at least minSize pixels, in ascending
/// label order: the centre (the mean position, truncated, in region coordinates) and the
/// pixel count. Both vectors are cleared first and stay parallel; a format other than Gray
/// leaves them empty.
void labelmarkersinfo(nuv::core::image::Image const& labelImage, int minSize,
                      nuv::core::Vector<nuv::core::Point>& centers, nuv::core::Vector<int>& sizes);

}  // namespace nuv::cv
