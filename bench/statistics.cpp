// Means and extremes at slot 0 and at the slot ippInit selects, beside cv::mean and
// cv::minMaxLoc (per plane after cv::split for three channels).
#include "bench_support.h"

#include <opencv2/core.hpp>

#include <memory>

namespace {

using namespace nuv::bench;

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080}) {
        const std::string at = std::string("/") + size.name;
        registerPrimitive(
            "ippiMean_8u_C1R" + at, size, {CV_8UC1, CV_8UC1},
            [](Frames& f) {
                double mean = 0;
                return ippiMean_8u_C1R(f.src.data, f.srcStep(), f.roi, &mean);
            },
            {{"opencv", [](Frames& f) { benchmark::DoNotOptimize(cv::mean(f.src)); }}});
        registerPrimitive(
            "ippiMean_8u_C3R" + at, size, {CV_8UC3, CV_8UC1},
            [](Frames& f) {
                double mean[3];
                return ippiMean_8u_C3R(f.src.data, f.srcStep(), f.roi, mean);
            },
            {{"opencv", [](Frames& f) { benchmark::DoNotOptimize(cv::mean(f.src)); }}});
        // Random frames hold 0 and 255 at once, and the early exit stops at once; a frame
        // narrowed to 10..240 makes every byte count.
        registerPrimitive("ippiMinMax_8u_C1R" + at, size, {CV_8UC1, CV_8UC1},
                          [](Frames& f) {
                              Ipp8u lo, hi;
                              return ippiMinMax_8u_C1R(f.src.data, f.srcStep(), f.roi, &lo, &hi);
                          },
                          {{"opencv", [](Frames& f) {
                                double lo, hi;
                                cv::minMaxLoc(f.src, &lo, &hi);
                            }}});
        auto narrowed = std::make_shared<Frames>(size, Shape{CV_8UC1, CV_8UC1});
        cv::min(cv::max(narrowed->src, 10), 240, narrowed->src);
        const std::string group = "ippiMinMax_8u_C1R 10..240" + at;
        registerAtSlots(group, [narrowed](benchmark::State& state) {
            Ipp8u lo, hi;
            for (auto _ : state)
                ippiMinMax_8u_C1R(narrowed->src.data, narrowed->srcStep(), narrowed->roi, &lo, &hi);
        });
        registerContender(group, "opencv", [narrowed](benchmark::State& state) {
            double lo, hi;
            for (auto _ : state) cv::minMaxLoc(narrowed->src, &lo, &hi);
        });
        registerPrimitive("ippiMinMax_8u_C3R" + at, size, {CV_8UC3, CV_8UC1},
                          [](Frames& f) {
                              Ipp8u lo[3], hi[3];
                              return ippiMinMax_8u_C3R(f.src.data, f.srcStep(), f.roi, lo, hi);
                          },
                          {{"opencv", [](Frames& f) {
                                cv::Mat planes[3];
                                cv::split(f.src, planes);
                                for (cv::Mat const& p : planes) {
                                    double lo, hi;
                                    cv::minMaxLoc(p, &lo, &hi);
                                }
                            }}});
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
