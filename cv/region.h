// The region of interest of an image as the primitives take it: its first pixel, the
// image's row distance, its size, and the image's description at the region's size.
#pragma once

#include <nuv/core/image/Image.h>
#include <nuv/primitives.h>

namespace nuv::cv {

struct Region {
    explicit Region(nuv::core::image::Image const& image) {
        char const* first = nullptr;
        const nuv::core::Roi roi = nuv::core::image::getRoi(image, &first);
        data = reinterpret_cast<Ipp8u const*>(first);
        step = static_cast<int>(image.step());
        size = {static_cast<int>(roi.size().width()), static_cast<int>(roi.size().height())};
        info = image.info();
        info.width = roi.size().width();
        info.height = roi.size().height();
    }
    Ipp8u const* data;
    int step;
    IppiSize size;
    nuv::core::image::ImageInfo info;
};

}  // namespace nuv::cv
