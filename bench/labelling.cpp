// Marker labelling at slot 0 and at the slot ippInit selects, beside cv::connectedComponents
// with 8-connectivity, on frames of blobs (blurred noise cut at its middle) and on the Canny
// edges of a photograph, thin curves of many short runs. The labelling
// works in place, so each run starts with a copy of the markers; OpenCV's run writes its own
// label image.
#include "bench_support.h"

#include <opencv2/imgproc.hpp>

#include <memory>

namespace {

using namespace nuv::bench;

struct Blobs {
    Blobs(FrameSize size, bool edges) : frames(size, Shape{CV_8UC1, CV_8UC1}) {
        if (edges) {
            cv::Canny(photograph(size, CV_8UC1), frames.src, 50, 150);
        } else {
            cv::GaussianBlur(frames.src, frames.src, {9, 9}, 3.0);
            cv::threshold(frames.src, frames.src, 127, 255, cv::THRESH_BINARY);
        }
        ippiLabelMarkersGetBufferSize_8u_C1R(frames.roi, &bufferSize);
        buffer = ippsMalloc_8u(bufferSize);
    }
    ~Blobs() { ippsFree(buffer); }
    Frames frames;
    int bufferSize = 0;
    Ipp8u* buffer = nullptr;
    cv::Mat labels;
};

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080})
        for (bool edges : {false, true}) {
            if (edges && photograph(size, CV_8UC1).empty()) continue;
            auto blobs = std::make_shared<Blobs>(size, edges);
            const std::string group = std::string("ippiLabelMarkers_8u_C1IR") +
                                      (edges ? " photo edges/" : "/") + size.name;
            registerAtSlots(group, [blobs](benchmark::State& state) {
                Frames& f = blobs->frames;
                int count = 0;
                for (auto _ : state) {
                    f.src.copyTo(f.dst);
                    ippiLabelMarkers_8u_C1IR(f.dst.data, f.dstStep(), f.roi, 1, 254, 0, &count,
                                             blobs->buffer);
                }
                state.counters["components"] = count;
            });
            registerContender(group, "opencv", [blobs](benchmark::State& state) {
                int count = 0;
                for (auto _ : state)
                    count = cv::connectedComponents(blobs->frames.src, blobs->labels, 8, CV_16U);
                state.counters["components"] = count - 1;
            });
        }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
