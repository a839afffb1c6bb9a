// Region copy of three-channel frames: ippiCopy_8u_C3R at slot 0 and at the slot that ippInit
// selects, beside cv::Mat::copyTo and a plain std::memcpy of the same bytes.
#include "bench_support.h"

#include <cstring>

namespace {

using namespace nuv::bench;

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080, frame4096})
        registerPrimitive(
            std::string("ippiCopy_8u_C3R/") + size.name, size, {CV_8UC3, CV_8UC3},
            [](Frames& f) {
                return ippiCopy_8u_C3R(f.src.data, f.srcStep(), f.dst.data, f.dstStep(), f.roi);
            },
            {{"cv::Mat::copyTo", [](Frames& f) { f.src.copyTo(f.dst); }},
             {"std::memcpy", [](Frames& f) { std::memcpy(f.dst.data, f.src.data, f.bytes); }}});
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::Mat::copyTo")
