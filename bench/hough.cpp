// Hough lines at slot 0 and at the slot ippInit selects, beside cv::HoughLines with the same
// steps and threshold, on the Canny edges of a frame of blurred noise with straight bars, and
// on those of a photograph: many edge pixels, few lines.
#include "bench_support.h"

#include <opencv2/imgproc.hpp>

#include <memory>
#include <vector>

namespace {

using namespace nuv::bench;

constexpr float kThetaStep = 3.14159265f / 180;
constexpr int kThreshold = 120, kMaxLines = 64;

struct EdgeFrame {
    EdgeFrame(FrameSize size, bool photo) : frames(size, Shape{CV_8UC1, CV_8UC1}) {
        if (photo) {
            cv::Canny(photograph(size, CV_8UC1), frames.src, 50, 150);
        } else {
            cv::GaussianBlur(frames.src, frames.src, {15, 15}, 5.0);
            for (int k = 1; k < 6; ++k)
                cv::line(frames.src, {k * size.width / 6, 0},
                         {size.width - k * 40, size.height - 1}, 255, 3);
            cv::Canny(frames.src, frames.src, 40, 120);
        }
        ippiHoughLineGetSize_8u_C1R(frames.roi, {1.0f, kThetaStep}, kMaxLines, &bufferSize);
        buffer = ippsMalloc_8u(bufferSize);
    }
    ~EdgeFrame() { ippsFree(buffer); }
    Frames frames;
    int bufferSize = 0;
    Ipp8u* buffer = nullptr;
};

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080})
        for (bool photo : {false, true}) {
            if (photo && photograph(size, CV_8UC1).empty()) continue;
            auto edges = std::make_shared<EdgeFrame>(size, photo);
            const std::string group =
                std::string("ippiHoughLine_8u32f_C1R") + (photo ? " photo/" : "/") + size.name;
            registerAtSlots(group, [edges](benchmark::State& state) {
                IppiRhoTheta lines[kMaxLines];
                int count = 0;
                for (auto _ : state)
                    ippiHoughLine_8u32f_C1R(edges->frames.src.data, edges->frames.srcStep(),
                                            edges->frames.roi, {1.0f, kThetaStep}, kThreshold,
                                            lines, kMaxLines, &count, edges->buffer);
                state.counters["lines"] = count;
            });
            registerContender(group, "opencv", [edges](benchmark::State& state) {
                std::vector<cv::Vec2f> lines;
                for (auto _ : state)
                    cv::HoughLines(edges->frames.src, lines, 1.0, kThetaStep, kThreshold);
                state.counters["lines"] = static_cast<double>(lines.size());
            });
        }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
