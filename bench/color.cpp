// The colour conversions at slot 0 and at the slot ippInit selects, beside cv::cvtColor doing
// the same job. HSV and HLS are the full-range forms (hue over 0..255) of both libraries.
// Gray to RGB is timed through the front end's convert, which builds its result image each
// call, beside cvtColor into a reused Mat.
#include "bench_support.h"

#include <nuv/cv/colorconversion.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>

namespace {

using namespace nuv::bench;
using ConvertFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

int const reversed[3] = {2, 1, 0};

IppStatus swapReversed(Ipp8u const* s, int ss, Ipp8u* d, int ds, IppiSize roi) {
    return ippiSwapChannels_8u_C3R(s, ss, d, ds, roi, reversed);
}
IppStatus bgraToRgb(Ipp8u const* s, int ss, Ipp8u* d, int ds, IppiSize roi) {
    return ippiSwapChannels_8u_C4C3R(s, ss, d, ds, roi, reversed);
}

void registerGrayToRgb(FrameSize size) {
    auto frame = std::make_shared<Frames>(size, Shape{CV_8UC1, CV_8UC3});
    auto gray = std::make_shared<nuv::core::image::Image>(
        nuv::core::image::ImageInfo(size.width, size.height, nuv::core::image::Gray));
    for (int y = 0; y < size.height; ++y)
        std::copy_n(frame->src.ptr(y), size.width, gray->data() + y * gray->step());
    const std::string group = std::string("convert Gray to RGB/") + size.name;
    registerAtSlots(group, [gray](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(nuv::cv::convert(*gray, nuv::core::image::RGB));
    });
    registerContender(group, "opencv", [frame](benchmark::State& state) {
        for (auto _ : state) cv::cvtColor(frame->src, frame->dst, cv::COLOR_GRAY2BGR);
    });
}

struct Conversion {
    char const* name;
    ConvertFn fn;
    int srcType, dstType, code;
};

const bool registered = [] {
    const Conversion conversions[] = {
        {"ippiRGBToHSV_8u_C3R", ippiRGBToHSV_8u_C3R, CV_8UC3, CV_8UC3, cv::COLOR_RGB2HSV_FULL},
        {"ippiHSVToRGB_8u_C3R", ippiHSVToRGB_8u_C3R, CV_8UC3, CV_8UC3, cv::COLOR_HSV2RGB_FULL},
        {"ippiRGBToHLS_8u_C3R", ippiRGBToHLS_8u_C3R, CV_8UC3, CV_8UC3, cv::COLOR_RGB2HLS_FULL},
        {"ippiHLSToRGB_8u_C3R", ippiHLSToRGB_8u_C3R, CV_8UC3, CV_8UC3, cv::COLOR_HLS2RGB_FULL},
        {"ippiRGBToYCbCr_8u_C3R", ippiRGBToYCbCr_8u_C3R, CV_8UC3, CV_8UC3, cv::COLOR_RGB2YCrCb},
        {"ippiYCbCrToRGB_8u_C3R", ippiYCbCrToRGB_8u_C3R, CV_8UC3, CV_8UC3, cv::COLOR_YCrCb2RGB},
        {"ippiRGBToGray_8u_C3C1R", ippiRGBToGray_8u_C3C1R, CV_8UC3, CV_8UC1, cv::COLOR_RGB2GRAY},
        {"ippiSwapChannels_8u_C3R", swapReversed, CV_8UC3, CV_8UC3, cv::COLOR_RGB2BGR},
        {"ippiSwapChannels_8u_C4C3R", bgraToRgb, CV_8UC4, CV_8UC3, cv::COLOR_BGRA2RGB},
    };
    for (Conversion const& c : conversions)
        for (FrameSize size : {frame640, frame1080})
            registerPrimitive(
                std::string(c.name) + "/" + size.name, size, {c.srcType, c.dstType, 1, false, true},
                [fn = c.fn](Frames& f) {
                    return fn(f.src.data, f.srcStep(), f.dst.data, f.dstStep(), f.roi);
                },
                {{"opencv", [code = c.code](Frames& f) { cv::cvtColor(f.src, f.dst, code); }}});
    for (FrameSize size : {frame640, frame1080}) registerGrayToRgb(size);
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
