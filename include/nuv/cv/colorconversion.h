/// @file
/// Format conversion: `convert` turns an image's region of interest into another format where
/// a conversion exists, and the single conversions work on raw pixels whose layout the caller
/// vouches for. Each returns a new image of the region's size.
#pragma once

#include <nuv/core/Size.h>
#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// The region of `image` in `format`; FormatNone or the image's own format copies the
/// region. A pair without a conversion is logged and gives a null image.
nuv::core::image::Image convert(nuv::core::image::Image const& image,
                                nuv::core::image::Format format);

/// RGB pixels with red and blue swapped, as BGR. For this and the single conversions below,
/// `data` is the region's first pixel, `step` its row distance in bytes and `size` the
/// region's size. The primitives' statuses are not reported: a refused call leaves the
/// result's pixels as allocated.
nuv::core::image::Image RGBtoBGR(char const* data, unsigned int step, nuv::core::Size const& size);
/// BGR pixels with blue and red swapped, as RGB.
nuv::core::image::Image BGRtoRGB(char const* data, unsigned int step, nuv::core::Size const& size);
/// HSV pixels as RGB.
nuv::core::image::Image HSVtoRGB(char const* data, unsigned int step, nuv::core::Size const& size);
/// HSV pixels as BGR.
nuv::core::image::Image HSVtoBGR(char const* data, unsigned int step, nuv::core::Size const& size);
/// HLS pixels as RGB.
nuv::core::image::Image HLStoRGB(char const* data, unsigned int step, nuv::core::Size const& size);
/// HLS pixels as BGR.
nuv::core::image::Image HLStoBGR(char const* data, unsigned int step, nuv::core::Size const& size);
/// RGB pixels as HLS.
nuv::core::image::Image RGBtoHLS(char const* data, unsigned int step, nuv::core::Size const& size);
/// RGB pixels as HSV.
nuv::core::image::Image RGBtoHSV(char const* data, unsigned int step, nuv::core::Size const& size);
/// BGR pixels as HSV.
nuv::core::image::Image BGRtoHSV(char const* data, unsigned int step, nuv::core::Size const& size);
/// RGB pixels as YCbCr.
nuv::core::image::Image RGBtoYCbCr(char const* data, unsigned int step,
                                   nuv::core::Size const& size);
/// YCbCr pixels as RGB.
nuv::core::image::Image YCbCrToRGB(char const* data, unsigned int step,
                                   nuv::core::Size const& size);
/// YCbCr pixels as BGR.
nuv::core::image::Image YCbCrToBGR(char const* data, unsigned int step,
                                   nuv::core::Size const& size);
/// Gray pixels as RGB, the byte in all three channels.
nuv::core::image::Image GrayToRGB(char const* data, unsigned int step, nuv::core::Size const& size);
/// Stamps RGB on its result, not BGR: the three channels are equal either way.
nuv::core::image::Image GrayToBGR(char const* data, unsigned int step, nuv::core::Size const& size);
/// Reads three bytes a pixel as R, G, B, whatever the source's format.
nuv::core::image::Image toGray(char const* data, unsigned int step, nuv::core::Size const& size);
/// BGRA pixels as BGR: alpha is dropped.
nuv::core::image::Image BGRAtoBGR(char const* data, unsigned int step, nuv::core::Size const& size);
/// BGRA pixels as RGB: alpha is dropped, blue and red swapped.
nuv::core::image::Image BGRAtoRGB(char const* data, unsigned int step, nuv::core::Size const& size);

}  // namespace nuv::cv
