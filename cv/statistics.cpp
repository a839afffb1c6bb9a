#include <nuv/cv/statistics.h>

#include <nuv/primitives.h>

#include "cv/region.h"

namespace nuv::cv {

using nuv::core::Vector;
using nuv::core::image::Image;

namespace {

bool isGray(Image const& image) {
    return image.info().format == nuv::core::image::Gray;
}

}  // namespace

// A refused call (null or empty image) leaves its means at 0.
Vector<unsigned char> mean(Image const& image) {
    const Region region(image);
    double means[3] = {0, 0, 0};
    const int channels = isGray(image) ? 1 : 3;
    if (channels == 1) {
        ippiMean_8u_C1R(region.data, region.step, region.size, means);
    } else {
        ippiMean_8u_C3R(region.data, region.step, region.size, means);
    }
    Vector<unsigned char> result;
    // Truncated, not rounded: a mean just below a whole number gives the number below.
    for (int c = 0; c < channels; ++c)
        result.append(static_cast<unsigned char>(static_cast<int>(means[c])));
    return result;
}

// A refused call leaves its extremes at 0.
void minmax(Image const& image, Vector<int>& min, Vector<int>& max) {
    const Region region(image);
    const int channels = isGray(image) ? 1 : 3;
    min.resize(channels, 0);
    max.resize(channels, 0);
    Ipp8u lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    if (channels == 1) {
        ippiMinMax_8u_C1R(region.data, region.step, region.size, lo, hi);
    } else {
        ippiMinMax_8u_C3R(region.data, region.step, region.size, lo, hi);
    }
    const auto format = image.info().format;
    // Hues spread over more than half the circle are taken to pass the wrap: measured again
    // with every hue moved by 127, then moved back.
    if ((format == nuv::core::image::HSV || format == nuv::core::image::HLS) &&
        hi[0] - lo[0] > 128) {
        int bufStep = 0;
        Ipp8u* hues = ippiMalloc_8u_C1(region.size.width, region.size.height, &bufStep);
        ippiCopy_8u_C3C1R(region.data, region.step, hues, bufStep, region.size);
        for (int y = 0; y < region.size.height; ++y) {
            Ipp8u* row = hues + static_cast<std::ptrdiff_t>(y) * bufStep;
            for (int x = 0; x < region.size.width; ++x) row[x] = static_cast<Ipp8u>(row[x] + 127);
        }
        ippiMinMax_8u_C1R(hues, bufStep, region.size, &lo[0], &hi[0]);
        lo[0] = static_cast<Ipp8u>(lo[0] - 127);
        hi[0] = static_cast<Ipp8u>(hi[0] - 127);
        ippiFree(hues);
    }
    for (int c = 0; c < channels; ++c) {
        min[c] = lo[c];
        max[c] = hi[c];
    }
}

}  // namespace nuv::cv
