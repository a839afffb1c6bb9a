/// @file
/// Addition of two images of one description, and its form for variants.
#pragma once

#include <nuv/core/image/Image.h>
#include <nuv/core/variant/Variant.h>

namespace nuv::cv {

/// The rounded mean of two images of the same description (a tie goes to the even value),
/// as large as a's region of interest. Both images are read from their first pixel, not
/// from their regions' first pixels, and b's region plays no part. Images that differ in
/// description, or have other than one or three channels, are logged and give the null
/// image.
nuv::core::image::Image addition(nuv::core::image::Image const& a,
                                 nuv::core::image::Image const& b);

/// addition() for two variants that hold images, as registered with the variant arithmetic
/// for the addition operator. A variant without an image counts as the null image, and the
/// result is a variant holding the resulting image, null on failure.
nuv::core::variant::Variant imageAddition(nuv::core::variant::Variant const& a,
                                          nuv::core::variant::Variant const& b);

}  // namespace nuv::cv
