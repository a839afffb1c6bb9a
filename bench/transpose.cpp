// Transposition of one- and three-channel frames: ippiTranspose_8u_C1R and _C3R at slot 0 and
// at the slot that ippInit selects, beside cv::transpose into a destination of the right size.
#include "bench_support.h"

#include <tuple>

namespace {

using namespace nuv::bench;
using TransposeFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

const bool registered = [] {
    const std::tuple<TransposeFn, int, char const*> forms[] = {
        {ippiTranspose_8u_C1R, CV_8UC1, "ippiTranspose_8u_C1R"},
        {ippiTranspose_8u_C3R, CV_8UC3, "ippiTranspose_8u_C3R"}};
    for (auto [transpose, type, name] : forms)
        for (FrameSize size : {frame640, frame1080, frame4096})
            registerPrimitive(std::string(name) + "/" + size.name, size, {type, type, 1, true},
                              [transpose = transpose](Frames& f) {
                                  return transpose(f.src.data, f.srcStep(), f.dst.data, f.dstStep(),
                                                   f.roi);
                              },
                              {{"cv::transpose", [](Frames& f) { cv::transpose(f.src, f.dst); }}});
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::transpose")
