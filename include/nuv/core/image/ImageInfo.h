/// @file
/// The description of an image: size, channel layout and format. The row distance is not
/// part of it; it belongs to the Image. All fields are public and the class is copied by
/// assignment: callers copy a description, change its size and build a new image from it.
#pragma once

#include <nuv/core/image/Format.h>

namespace nuv::core::image {

/// The description of an image: size, channel layout and format; the row distance belongs to the
/// Image.
class ImageInfo {
public:
    /// The description of the null image: everything 0.
    constexpr ImageInfo()
        : width(0), height(0), numChannels(0), bytesPerChannel(0), format(FormatNone) {}
    /// Channel count and bytes per channel follow from the format (see init()).
    ImageInfo(unsigned int width, unsigned int height, Format format);

    /// Sets numChannels and bytesPerChannel from the format: 3 and 1 for RGB, BGR, HSV,
    /// YCbCr, HLS and FormatOther; 4 and 1 for BGRA; 1 and 1 for Gray. FormatNone and
    /// unknown values change nothing, so the two fields keep what they held.
    void init();

    /// Bytes of one row without padding.
    unsigned long long rowBytes() const {
        return static_cast<unsigned long long>(width) * numChannels * bytesPerChannel;
    }

    /// True as soon as one of the five fields differs.
    bool operator!=(ImageInfo const& other) const;
    /// Whether all five fields are equal.
    bool operator==(ImageInfo const& other) const { return !(*this != other); }

    /// Pixels in a row.
    unsigned int width;
    /// Rows.
    unsigned int height;
    /// Channels of a pixel.
    unsigned int numChannels;
    /// Bytes of a channel.
    unsigned int bytesPerChannel;
    /// The pixel format.
    Format format;
};

}  // namespace nuv::core::image
