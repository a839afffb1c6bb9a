/// @file
/// Means and extremes of an image's region of interest, per channel.
#pragma once

#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// One byte per channel: the mean truncated. Gray images have one channel; every other
/// format is read as three bytes a pixel, BGRA included. The three-channel mean multiplies
/// by the reciprocal of the pixel count, so an exact mean can come out one below (a 7x7
/// region of 1 gives 0).
nuv::core::Vector<unsigned char> mean(nuv::core::image::Image const& image);

/// The smallest and largest byte per channel, one for Gray and three for every other format.
/// On HSV and HLS images a hue spread above 128 is taken to pass the wrap: then min[0] is the
/// first hue of the arc and max[0] the last, and min[0] > max[0] (hues 250 and 5 give 250
/// and 5).
void minmax(nuv::core::image::Image const& image, nuv::core::Vector<int>& min,
            nuv::core::Vector<int>& max);

}  // namespace nuv::cv
