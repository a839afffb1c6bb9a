/// @file
/// The library's entry for the variant machinery of the foundation.
#pragma once

namespace nuv::cv {

/// Registers image addition as the addition operator of Math for images, and the colour
/// class list with Converter (the friendly name "segmentlist", conversions to and from text)
/// and with Math (equality). Call once, before other threads use variants; later calls do
/// nothing. It leaves processor selection alone.
void init();

}  // namespace nuv::cv
