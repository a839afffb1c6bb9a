#include <nuv/cv/labelmarkers.h>

#include <nuv/core/Map.h>
#include <nuv/primitives.h>

#include "cv/region.h"

#include <utility>

namespace nuv::cv {

using nuv::core::Point;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

Image labelmarkers(Image const& image, int* numberOfMarkers) {
    // The fills' scratch, kept for the process: it grows with the largest region seen.
    static Ipp8u* buffer = nullptr;
    static int bufferSize = 0;

    *numberOfMarkers = 0;
    if (image.info().format != nuv::core::image::Gray) return Image();
    const Region region(image);
    Image result(ImageInfo(region.info.width, region.info.height, nuv::core::image::Gray));
    const int step = static_cast<int>(result.step());
    ippiCopy_8u_C1R(region.data, region.step, result.data(), step, region.size);
    int size = 0;
    ippiLabelMarkersGetBufferSize_8u_C1R(region.size, &size);
    if (size > bufferSize) {
        // A failed allocation leaves the buffer null, which the labelling refuses.
        ippsFree(buffer);
        buffer = ippsMalloc_8u(size);
        bufferSize = size;
    }
    ippiLabelMarkers_8u_C1IR(result.data(), step, region.size, 1, 254, 0, numberOfMarkers, buffer);
    return result;
}

void labelmarkersinfo(Image const& labelImage, int minSize, nuv::core::Vector<Point>& centers,
                      nuv::core::Vector<int>& sizes) {
    centers.clear();
    sizes.clear();
    if (labelImage.info().format != nuv::core::image::Gray) return;
    const Region region(labelImage);
    // Per label, the sum of its pixels' positions and their count.
    nuv::core::Map<int, std::pair<Point, int>> labels;
    for (int y = 0; y < region.size.height; ++y) {
        Ipp8u const* row = region.data + static_cast<std::ptrdiff_t>(y) * region.step;
        for (int x = 0; x < region.size.width; ++x) {
            if (row[x] == 0) continue;
            std::pair<Point, int>& entry = labels[row[x]];
            entry.first += Point(x, y);
            ++entry.second;
        }
    }
    for (auto const& [label, entry] : labels) {
        if (entry.second < minSize) continue;
        centers.append(entry.first / entry.second);
        sizes.append(entry.second);
    }
}

}  // namespace nuv::cv
