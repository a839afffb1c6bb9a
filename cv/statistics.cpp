#include <nuv/cv/statistics.h>

#include <nuv/primitives.h>

#include "cv/bands.h"
#include "cv/region.h"

#include <algorithm>

namespace nuv::cv {

using nuv::core::Vector;
using nuv::core::image::Image;

namespace {

bool isGray(Image const& image) {
    return image.info().format == nuv::core::image::Gray;
}

// The extremes of the hues moved by 127 on the circle, moved back: a band of rows at a time
// through one small buffer, the bands' extremes combined. Without a buffer the extremes
// keep their first values, which the refused measurement would leave, and are moved back
// all the same.
void wrappedHueExtremes(Region const& region, Ipp8u& lo, Ipp8u& hi) {
    const int rows = bandRows(region.size.width, region.size.height);
    int bufStep = 0;
    Ipp8u* hues = ippiMalloc_8u_C1(region.size.width, rows, &bufStep);
    if (hues != nullptr) {
        Ipp8u bandLo = 255, bandHi = 0;
        lo = 255;
        hi = 0;
        for (int y = 0; y < region.size.height; y += rows) {
            const IppiSize band{region.size.width, std::min(rows, region.size.height - y)};
            ippiCopy_8u_C3C1R(region.data + static_cast<std::ptrdiff_t>(y) * region.step,
                              region.step, hues, bufStep, band);
            for (int r = 0; r < band.height; ++r) {
                Ipp8u* row = hues + static_cast<std::ptrdiff_t>(r) * bufStep;
                for (int x = 0; x < band.width; ++x) row[x] = static_cast<Ipp8u>(row[x] + 127);
            }
            ippiMinMax_8u_C1R(hues, bufStep, band, &bandLo, &bandHi);
            lo = std::min(lo, bandLo);
            hi = std::max(hi, bandHi);
        }
        ippiFree(hues);
    }
    lo = static_cast<Ipp8u>(lo - 127);
    hi = static_cast<Ipp8u>(hi - 127);
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
        wrappedHueExtremes(region, lo[0], hi[0]);
    }
    for (int c = 0; c < channels; ++c) {
        min[c] = lo[c];
        max[c] = hi[c];
    }
}

}  // namespace nuv::cv
