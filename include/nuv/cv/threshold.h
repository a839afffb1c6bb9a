/// @file
/// Thresholds and range masks over an image's region of interest.
#pragma once

#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// Every channel byte below (thresholdLT) or above (thresholdGT) `threshold` becomes `value`,
/// the others are copied; a byte equal to the bound stays. Both integers are clamped to
/// 0..255 and serve every channel. Images of one or three channels; others are logged and
/// give the null image.
nuv::core::image::Image thresholdLT(nuv::core::image::Image const& image, int threshold, int value);
/// As thresholdLT, for the bytes above the threshold.
nuv::core::image::Image thresholdGT(nuv::core::image::Image const& image, int threshold, int value);

/// A Gray mask of the region: 255 where every channel lies within its bounds, else 0. A byte
/// of 0 counts as 1, and three-channel bounds are clamped to 1..255 (one-channel ones to
/// 0..255). Crossed bounds leave every pixel in range. On HSV and HLS images a hue range that
/// passes the wrap (upper above 255, lower below 0, or lower above upper) is taken round the
/// circle. Bounds of another length than the channels are logged and give the null image.
nuv::core::image::Image inRange(nuv::core::image::Image const& image,
                                nuv::core::Vector<int> const& lower,
                                nuv::core::Vector<int> const& upper);

}  // namespace nuv::cv
