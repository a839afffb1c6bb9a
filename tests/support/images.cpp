#include "support/images.h"

namespace nuv::test {

std::vector<unsigned char> packedPixels(nuv::core::image::Image const& image) {
    std::vector<unsigned char> bytes;
    for (unsigned y = 0; y < image.info().height; ++y)
        bytes.insert(bytes.end(), image.constData() + y * image.step(),
                     image.constData() + y * image.step() + image.info().rowBytes());
    return bytes;
}

}  // namespace nuv::test
