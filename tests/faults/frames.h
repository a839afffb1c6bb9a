// Small images for the fault tests, made once before any allocation is failed.
#pragma once

#include <nuv/core/image/Image.h>
#include <nuv/cv/SegmentList.h>

namespace nuv::test::faults {

// A 24x16 image of the format with a gradient and a bright block, so that every operation
// has something to find; Gray frames have a vertical edge at column 9 and a horizontal one
// at row 5.
nuv::core::image::Image frame(nuv::core::image::Format format, unsigned width = 24,
                              unsigned height = 16);
// The same with a region of interest from (3, 2), 14x9.
nuv::core::image::Image framedRegion(nuv::core::image::Format format);
// An HSV frame whose hues lie on both sides of the wrap (250 and 5).
nuv::core::image::Image wrappedHues();
// Two classes that the RGB frame's block and background fall in.
nuv::cv::SegmentList twoClasses();

}  // namespace nuv::test::faults
