// Images and colour classes made from a fuzzer's bytes, shared by the front-end targets.
#pragma once

#include "fuzz_input.h"

#include <nuv/core.h>
#include <nuv/cv.h>

#include <cstdint>

namespace nuv::fuzz {

using namespace nuv::core::image;

inline Format const formats[] = {FormatNone, RGB, BGR, BGRA, Gray, HSV, HLS, YCbCr};

inline Image imageOf(Input& in) {
    const Format format = formats[in.in(1, 7)];
    const unsigned width = in.in(1, 40), height = in.in(1, 40);
    const unsigned channels = format == Gray ? 1 : format == BGRA ? 4 : 3;
    Image image = in.flag() ? Image(ImageInfo(width, height, format))
                            : Image(ImageInfo(width, height, format),
                                    width * channels + static_cast<unsigned>(in.in(0, 17)));
    const std::uint8_t seed = in.byte();
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width * channels; ++x)
            image.data()[y * image.step() + x] =
                in.left() ? in.byte() : static_cast<std::uint8_t>(seed * (x + 7 * y));
    if (in.flag()) {
        const int x = in.in(-3, 45), y = in.in(-3, 45);
        setRoi(image,
               nuv::core::Roi(nuv::core::Point(x, y), nuv::core::Size(in.in(0, 45), in.in(0, 45))));
    }
    return image;
}

inline nuv::cv::SegmentList classesOf(Input& in) {
    nuv::cv::SegmentList list;
    for (int k = in.in(0, 4); k > 0; --k) {
        nuv::cv::Segment segment;
        segment.setName("c");
        for (int n = in.in(1, 6); n > 0; --n)
            segment.addColor(nuv::core::Color::fromRgba(in.byte(), in.byte(), in.byte()));
        for (unsigned c = 0; c < 3; ++c) {
            segment.setDilate(c, in.in(-3, 8));
            segment.setChannelUsed(c, !in.flag() || c == 0);
        }
        segment.applyDilation();
        list.append(segment);
    }
    return list;
}

}  // namespace nuv::fuzz
