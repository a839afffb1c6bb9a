#include <nuv/cv/threshold.h>

#include <nuv/core/Log.h>
#include <nuv/primitives.h>

#include "cv/bands.h"
#include "cv/region.h"

#include <algorithm>

namespace nuv::cv {

using nuv::core::Log;
using nuv::core::Vector;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

namespace {

Ipp8u clamped(int x, int low) {
    return static_cast<Ipp8u>(std::max(low, std::min(x, 255)));
}

using ValueC1 = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, Ipp8u, Ipp8u);
using ValueC3 = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, Ipp8u const*, Ipp8u const*);

Image threshold(Image const& image, int threshold, int value, ValueC1 one, ValueC3 three) {
    const Region region(image);
    Image result(region.info);
    const Ipp8u t = clamped(threshold, 0), v = clamped(value, 0);
    const int resultStep = static_cast<int>(result.step());
    if (region.info.numChannels == 1) {
        one(region.data, region.step, result.data(), resultStep, region.size, t, v);
    } else if (region.info.numChannels == 3) {
        Ipp8u const ts[3] = {t, t, t}, vs[3] = {v, v, v};
        three(region.data, region.step, result.data(), resultStep, region.size, ts, vs);
    } else {
        Log::singleton() << "nuv::cv::threshold : unsupported image format" << nuv::core::endl;
        return Image();
    }
    return Image(result);
}

bool isHueFormat(nuv::core::image::Format format) {
    return format == nuv::core::image::HSV || format == nuv::core::image::HLS;
}

// Runs pass(source, mask, band) over the region's rows, `rows` at a time.
template <typename Pass>
void forEachBand(Region const& region, Image& result, int rows, Pass pass) {
    Ipp8u* mask = result.data();
    const std::ptrdiff_t maskStep = result.step();
    for (int y = 0; y < region.size.height; y += rows) {
        const IppiSize band{region.size.width, std::min(rows, region.size.height - y)};
        pass(region.data + static_cast<std::ptrdiff_t>(y) * region.step, mask + y * maskStep, band);
    }
}

// The three-channel mask of one band of rows, made in the working buffer: the copy, the hue
// shift when the range wraps, then the three passes.
void maskBand(Ipp8u const* source, int sourceStep, Ipp8u* buffer, int tmpStep, Ipp8u* mask,
              int maskStep, IppiSize band, bool wrapped, Ipp8u const* lo, Ipp8u const* hi) {
    ippiCopy_8u_C3R(source, sourceStep, buffer, tmpStep, band);
    if (wrapped) {
        for (int y = 0; y < band.height; ++y) {
            Ipp8u* row = buffer + static_cast<std::ptrdiff_t>(y) * tmpStep;
            for (int x = 0; x < band.width; ++x) row[3 * x] = static_cast<Ipp8u>(row[3 * x] + 127);
        }
    }
    Ipp8u const ones[3] = {1, 1, 1}, zeros[3] = {0, 0, 0};
    ippiThreshold_LT_8u_C3IR(buffer, tmpStep, band, ones);
    ippiThreshold_LTValGTVal_8u_C3IR(buffer, tmpStep, band, lo, zeros, hi, zeros);
    ippiCompareC_8u_C3R(buffer, tmpStep, zeros, mask, maskStep, band, ippCmpGreater);
}

}  // namespace

Image thresholdLT(Image const& image, int threshold, int value) {
    return nuv::cv::threshold(image, threshold, value, ippiThreshold_LTVal_8u_C1R,
                              ippiThreshold_LTVal_8u_C3R);
}

Image thresholdGT(Image const& image, int threshold, int value) {
    return nuv::cv::threshold(image, threshold, value, ippiThreshold_GTVal_8u_C1R,
                              ippiThreshold_GTVal_8u_C3R);
}

// Three passes make the mask: every 0 is raised to 1, everything outside the bounds becomes
// 0, and the mask is 255 where the bytes are above 0 (in all three channels). Crossed bounds
// make the middle pass refuse, and then every pixel passes.
Image inRange(Image const& image, Vector<int> const& lower, Vector<int> const& upper) {
    const int channels = static_cast<int>(image.info().numChannels);
    if (lower.size() != channels) {
        Log::singleton() << "nuv::cv::inRange : lower wrong size" << nuv::core::endl;
        return Image();
    }
    if (upper.size() != channels) {
        Log::singleton() << "nuv::cv::inRange : upper wrong size" << nuv::core::endl;
        return Image();
    }
    const Region region(image);
    Image result(ImageInfo(region.info.width, region.info.height, nuv::core::image::Gray));
    const int resultStep = static_cast<int>(result.step());
    const IppiSize size = region.size;

    if (channels == 1) {
        // The temporary holds one band of rows at a time.
        ImageInfo bandInfo = region.info;
        bandInfo.height = static_cast<unsigned int>(bandRows(size.width, size.height));
        Image temporary(bandInfo);
        Ipp8u* const tmp = temporary.data();
        const int tmpStep = static_cast<int>(temporary.step());
        const Ipp8u lo = clamped(lower[0], 0), hi = clamped(upper[0], 0);
        forEachBand(region, result, static_cast<int>(bandInfo.height),
                    [&](Ipp8u const* source, Ipp8u* mask, IppiSize band) {
                        ippiThreshold_LT_8u_C1R(source, region.step, tmp, tmpStep, band, 1);
                        ippiThreshold_LTValGTVal_8u_C1IR(tmp, tmpStep, band, lo, 0, hi, 0);
                        ippiCompareC_8u_C1R(tmp, tmpStep, 0, mask, resultStep, band, ippCmpGreater);
                    });
        return Image(result);
    }
    if (channels != 3) {
        Log::singleton() << "nuv::cv::inRange : unsupported image format" << nuv::core::endl;
        return Image();
    }

    Ipp8u lo[3], hi[3];
    for (int c = 0; c < 3; ++c) {
        lo[c] = clamped(lower[c], 1);
        hi[c] = clamped(upper[c], 1);
    }
    // A hue range round the wrap: every hue and both bounds move by 127 (not 128) on the
    // circle, and the bounds are taken as they come out, unclamped.
    const bool wrapped =
        isHueFormat(image.info().format) && (upper[0] > 255 || lower[0] < 0 || lower[0] > upper[0]);
    if (wrapped) {
        lo[0] = static_cast<Ipp8u>(lower[0] + 127);
        hi[0] = static_cast<Ipp8u>(upper[0] + 127);
    }
    const int rows = bandRows(3LL * size.width, size.height);
    int tmpStep = 0;
    Ipp8u* buffer = ippiMalloc_8u_C3(size.width, rows, &tmpStep);
    // Without a buffer the result keeps its constructor's pixels, as the refused passes would
    // leave it.
    if (buffer == nullptr) return Image(result);
    forEachBand(region, result, rows, [&](Ipp8u const* source, Ipp8u* mask, IppiSize band) {
        maskBand(source, region.step, buffer, tmpStep, mask, resultStep, band, wrapped, lo, hi);
    });
    ippiFree(buffer);
    return Image(result);
}

}  // namespace nuv::cv
