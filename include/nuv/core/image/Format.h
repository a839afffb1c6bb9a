/// @file
/// Pixel formats. The numbers are stable: code and stored settings compare them directly.
#pragma once

#include <cstdint>
#include <string>

namespace nuv::core::image {

/// Pixel formats. The numbers are stable: code and stored settings compare them directly.
enum Format : std::int32_t {
    FormatNone = 0,   ///< no format; as a conversion target it keeps the source's format
    RGB = 1,          ///< bytes R, G, B
    BGR = 2,          ///< bytes B, G, R
    BGRA = 3,         ///< bytes B, G, R, A
    Gray = 4,         ///< one byte of intensity
    FormatOther = 5,  ///< three channels the library has no conversion for
    HSV = 6,          ///< hue, saturation, value, as the HSV conversion writes them
    YCbCr = 7,        ///< luma and two chroma bytes, as the YCbCr conversion writes them
    HLS = 8,          ///< hue, lightness, saturation, as the HLS conversion writes them
};

/// The display name of a format for messages: "RGB", "BGR", "BGRA", "Gray", "HSV", "YCbCr",
/// "HLS", "none" for FormatNone, "other" for FormatOther and "unknown format <n>" for any
/// other value. With a channel index of 0 or more, the name of that channel instead ("R",
/// "Cb", "A", "Gray" ...); a channel the format does not have gives "<format> channel <n>".
/// -1 (or any negative index) asks for the format's name.
std::string friendlyName(Format format, int channel = -1);

}  // namespace nuv::core::image
