#include "faults/frames.h"

namespace nuv::test::faults {

using namespace nuv::core::image;

Image frame(Format format, unsigned width, unsigned height) {
    Image image(ImageInfo(width, height, format));
    const unsigned channels = image.info().numChannels;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            for (unsigned c = 0; c < channels; ++c) {
                const bool block = x >= 12 && x < 20 && y >= 4 && y < 12;
                unsigned char v =
                    static_cast<unsigned char>(block ? 200 + 20 * c : 7 * x + 3 * y + c);
                if (channels == 1) v = x == 9 || y == 5 ? 255 : 0;
                image.data()[y * image.step() + x * channels + c] = v;
            }
    return image;
}

Image framedRegion(Format format) {
    Image image = frame(format);
    setRoi(image, nuv::core::Roi(nuv::core::Point(3, 2), nuv::core::Size(14, 9)));
    return image;
}

Image wrappedHues() {
    Image image = frame(HSV);
    for (unsigned y = 0; y < 16; ++y)
        for (unsigned x = 0; x < 24; ++x) image.data()[y * image.step() + 3 * x] = x < 12 ? 250 : 5;
    return image;
}

nuv::cv::SegmentList twoClasses() {
    nuv::cv::SegmentList list;
    nuv::cv::Segment block, dark;
    block.setName("block");
    block.addColor(nuv::core::Color::fromRgba(200, 220, 240));
    dark.setName("dark");
    for (unsigned v = 0; v < 40; ++v) dark.addColor(nuv::core::Color::fromRgba(v, v, v));
    dark.setChannelUsed(2, false);
    list.append(block);
    list.append(dark);
    return list;
}

}  // namespace nuv::test::faults
