// The three channel copies at slot 0 and at the slot ippInit selects, beside the OpenCV calls
// that do the same job: insertChannel for gray into channel 0, extractChannel for channel 0
// out, cvtColor BGRA2BGR for dropping the fourth byte.
#include "bench_support.h"

#include <opencv2/imgproc.hpp>

namespace {

using namespace nuv::bench;
using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

struct ChannelCopy {
    char const* name;
    CopyFn fn;
    int srcType, dstType;
    OtherCall opencv;
};

const bool registered = [] {
    const ChannelCopy copies[] = {
        {"ippiCopy_8u_C1C3R", ippiCopy_8u_C1C3R, CV_8UC1, CV_8UC3,
         [](Frames& f) { cv::insertChannel(f.src, f.dst, 0); }},
        {"ippiCopy_8u_C3C1R", ippiCopy_8u_C3C1R, CV_8UC3, CV_8UC1,
         [](Frames& f) { cv::extractChannel(f.src, f.dst, 0); }},
        {"ippiCopy_8u_AC4C3R", ippiCopy_8u_AC4C3R, CV_8UC4, CV_8UC3,
         [](Frames& f) { cv::cvtColor(f.src, f.dst, cv::COLOR_BGRA2BGR); }},
    };
    for (ChannelCopy const& copy : copies)
        for (FrameSize size : {frame640, frame1080})
            registerPrimitive(std::string(copy.name) + "/" + size.name, size,
                              {copy.srcType, copy.dstType, 1, false, true},
                              [fn = copy.fn](Frames& f) {
                                  return fn(f.src.data, f.srcStep(), f.dst.data, f.dstStep(),
                                            f.roi);
                              },
                              {{"opencv", copy.opencv}});
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
