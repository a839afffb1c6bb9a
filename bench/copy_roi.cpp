// copyRoi, the front end's region cut, beside what an OpenCV user writes for the same
// result: a view of the region copied into a new matrix. Both allocate their result on
// every call. The region leaves a margin of 32 columns and 16 rows around it.
#include "bench_support.h"

#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>

#include <cstring>
#include <string>

namespace {

using namespace nuv::bench;
using nuv::core::image::Image;

constexpr int marginX = 32, marginY = 16;

Image sourceFor(FrameSize const& size) {
    Image image(nuv::core::image::ImageInfo(size.width + 2 * marginX, size.height + 2 * marginY,
                                            nuv::core::image::BGR));
    std::memset(image.data(), 0x5A, static_cast<size_t>(image.step()) * image.info().height);
    nuv::core::image::setRoi(image, nuv::core::Roi(nuv::core::Point(marginX, marginY),
                                                   nuv::core::Size(size.width, size.height)));
    return image;
}

void copyRoiCut(benchmark::State& state, FrameSize size) {
    const Image source = sourceFor(size);
    for (auto _ : state) {
        Image cut = nuv::cv::copyRoi(source);
        benchmark::DoNotOptimize(cut.constData());
    }
    state.SetBytesProcessed(state.iterations() * int64_t(size.width) * size.height * 3);
}

void openCvRegionCopy(benchmark::State& state, FrameSize size) {
    cv::Mat source(size.height + 2 * marginY, size.width + 2 * marginX, CV_8UC3,
                   cv::Scalar::all(0x5A));
    const cv::Mat region = source(cv::Rect(marginX, marginY, size.width, size.height));
    for (auto _ : state) {
        cv::Mat cut;
        region.copyTo(cut);
        benchmark::DoNotOptimize(cut.data);
    }
    state.SetBytesProcessed(state.iterations() * int64_t(size.width) * size.height * 3);
}

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080, frame4096}) {
        const std::string group = std::string("copyRoi/") + size.name;
        registerContender(group, "cv::Mat::copyTo",
                          [size](benchmark::State& state) { openCvRegionCopy(state, size); });
        registerAtSlots(group, [size](benchmark::State& state) { copyRoiCut(state, size); });
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::Mat::copyTo")
