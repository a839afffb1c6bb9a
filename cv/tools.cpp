#include <nuv/cv/tools.h>

#include <nuv/core/Log.h>
#include <nuv/core/image/Image.h>
#include <nuv/primitives.h>

namespace nuv::cv {

using nuv::core::Log;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

Image copyRoi(Image const& image) {
    char const* first = nullptr;
    const Roi roi = nuv::core::image::getRoi(image, &first);
    ImageInfo const& info = image.info();
    // A whole-image region needs no cut: the copy shares pixels and attachments.
    if (Point() == roi.offset() && Size(info.width, info.height) == roi.size()) return Image(image);

    ImageInfo description = info;
    description.width = roi.size().width();
    description.height = roi.size().height();
    Image result(description);
    const IppiSize size = {static_cast<int>(description.width),
                           static_cast<int>(description.height)};

    if (description.numChannels == 3 && description.bytesPerChannel == 1) {
        ippiCopy_8u_C3R(reinterpret_cast<Ipp8u const*>(first), static_cast<int>(image.step()),
                        result.data(), static_cast<int>(result.step()), size);
        return Image(result);
    }
    // Only three-channel images are cut: any other comes back whole, its region ignored.
    Log::singleton() << "nuv::cv::copyRoi: unsupported image format" << nuv::core::endl;
    return Image(image);
}

}  // namespace nuv::cv
