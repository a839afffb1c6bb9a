#include <nuv/core/image/ImageInfo.h>

namespace nuv::core::image {

ImageInfo::ImageInfo(unsigned int width, unsigned int height, Format format)
    : width(width), height(height), numChannels(0), bytesPerChannel(0), format(format) {
    init();
}

void ImageInfo::init() {
    switch (format) {
        case RGB:
        case BGR:
        case FormatOther:
        case HSV:
        case YCbCr:
        case HLS:
            numChannels = 3;
            bytesPerChannel = 1;
            break;
        case BGRA:
            numChannels = 4;
            bytesPerChannel = 1;
            break;
        case Gray:
            numChannels = 1;
            bytesPerChannel = 1;
            break;
        case FormatNone:
        default:
            // Unknown layouts keep whatever the caller put in the two fields.
            break;
    }
}

bool ImageInfo::operator!=(ImageInfo const& other) const {
    return width != other.width || height != other.height || numChannels != other.numChannels ||
           bytesPerChannel != other.bytesPerChannel || format != other.format;
}

}  // namespace nuv::core::image
