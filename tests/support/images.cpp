#include "support/images.h"

namespace nuv::test {

std::vector<unsigned char> packedPixels(nuv::core::image::Image const& image) {
    std::vector<unsigned char> bytes;
    for (unsigned y = 0; y < image.info().height; ++y)
        bytes.insert(bytes.end(), image.constData() + y * image.step(),
                     image.constData() + y * image.step() + image.info().rowBytes());
    return bytes;
}

std::vector<nuv::core::Line> attachedLines(nuv::core::image::Image const& image) {
    std::vector<nuv::core::Line> all;
    for (nuv::core::Line const& line : nuv::core::image::lines(image)) all.push_back(line);
    return all;
}

}  // namespace nuv::test
