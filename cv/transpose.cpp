#include <nuv/cv/transpose.h>

#include <nuv/core/image/Image.h>
#include <nuv/primitives.h>

namespace nuv::cv {

using nuv::core::Roi;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

Image transpose(Image const& image) {
    char const* first = nullptr;
    const Roi roi = nuv::core::image::getRoi(image, &first);
    ImageInfo description = image.info();
    description.width = roi.size().height();
    description.height = roi.size().width();
    // The primitives take the source's size; the result's is the swapped one.
    const IppiSize size = {static_cast<int>(roi.size().width()),
                           static_cast<int>(roi.size().height())};
    auto const* source = reinterpret_cast<Ipp8u const*>(first);
    const int sourceStep = static_cast<int>(image.step());

    // A refused call (an empty region) leaves the result's pixels as they were allocated.
    if (description.numChannels == 1) {
        Image result(description);
        ippiTranspose_8u_C1R(source, sourceStep, result.data(), static_cast<int>(result.step()),
                             size);
        return Image(result);
    }
    if (description.numChannels == 3) {
        Image result(description);
        ippiTranspose_8u_C3R(source, sourceStep, result.data(), static_cast<int>(result.step()),
                             size);
        return Image(result);
    }
    return Image();
}

}  // namespace nuv::cv
