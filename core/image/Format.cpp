#include <nuv/core/image/Format.h>

namespace nuv::core::image {

namespace {

char const* formatName(Format format) {
    switch (format) {
        case FormatNone:
            return "none";
        case RGB:
            return "RGB";
        case BGR:
            return "BGR";
        case BGRA:
            return "BGRA";
        case Gray:
            return "Gray";
        case FormatOther:
            return "other";
        case HSV:
            return "HSV";
        case YCbCr:
            return "YCbCr";
        case HLS:
            return "HLS";
    }
    return nullptr;
}

// Channel names in byte order, null-terminated; null for formats whose channels have none.
char const* const* channelNames(Format format) {
    static char const* const rgb[] = {"R", "G", "B", nullptr};
    static char const* const bgr[] = {"B", "G", "R", nullptr};
    static char const* const bgra[] = {"B", "G", "R", "A", nullptr};
    static char const* const gray[] = {"Gray", nullptr};
    static char const* const hsv[] = {"H", "S", "V", nullptr};
    static char const* const ycbcr[] = {"Y", "Cb", "Cr", nullptr};
    static char const* const hls[] = {"H", "L", "S", nullptr};
    switch (format) {
        case RGB:
            return rgb;
        case BGR:
            return bgr;
        case BGRA:
            return bgra;
        case Gray:
            return gray;
        case HSV:
            return hsv;
        case YCbCr:
            return ycbcr;
        case HLS:
            return hls;
        default:
            return nullptr;
    }
}

}  // namespace

std::string friendlyName(Format format, int channel) {
    char const* name = formatName(format);
    std::string const formatText =
        name != nullptr ? std::string(name)
                        : "unknown format " + std::to_string(static_cast<int>(format));
    if (channel < 0) return formatText;
    if (char const* const* names = channelNames(format)) {
        for (int i = 0; names[i] != nullptr; ++i)
            if (i == channel) return names[i];
    }
    return formatText + " channel " + std::to_string(channel);
}

}  // namespace nuv::core::image
