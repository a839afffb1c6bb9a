/// @file
/// Image tools of the front end.
#pragma once

#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// The region of interest of a three-channel image as a new image of the region's size. An
/// image whose region is the whole image comes back as a copy of its handle, attachments
/// included; another format is logged and comes back whole.
nuv::core::image::Image copyRoi(nuv::core::image::Image const& image);

}  // namespace nuv::cv
