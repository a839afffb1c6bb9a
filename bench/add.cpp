// The rounded mean of two three-channel frames: ippiAdd_8u_C3RSfs with a scale factor of 1
// at slot 0 and at the slot that ippInit selects, beside cv::addWeighted with weights of one
// half, which is what an OpenCV user writes for the same job.
#include "bench_support.h"

namespace {

using namespace nuv::bench;

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080})
        registerPrimitive(
            std::string("ippiAdd_8u_C3RSfs/") + size.name, size, {CV_8UC3, CV_8UC3, 2},
            [](Frames& f) {
                return ippiAdd_8u_C3RSfs(f.src.data, f.srcStep(), f.src2.data, f.src2Step(),
                                         f.dst.data, f.dstStep(), f.roi, 1);
            },
            {{"cv::addWeighted",
              [](Frames& f) { cv::addWeighted(f.src, 0.5, f.src2, 0.5, 0, f.dst); }}});
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::addWeighted")
