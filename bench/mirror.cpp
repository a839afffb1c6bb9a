// Mirroring of one- and three-channel frames about each axis: ippiMirror_8u_C1R and
// ippiMirror_8u_C3R at slot 0 and at the slot that ippInit selects, beside cv::flip with the
// matching flip code (0 turns the rows over, 1 the columns, -1 both).
#include "bench_support.h"

#include <tuple>

namespace {

using namespace nuv::bench;
using MirrorFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, int);

const bool registered = [] {
    const std::tuple<MirrorFn, int, char const*> forms[] = {
        {ippiMirror_8u_C1R, CV_8UC1, "ippiMirror_8u_C1R"},
        {ippiMirror_8u_C3R, CV_8UC3, "ippiMirror_8u_C3R"}};
    for (auto [mirror, type, name] : forms)
        for (int flip = 0; flip < 3; ++flip)
            for (FrameSize size : {frame640, frame1080, frame4096}) {
                const int code = flip == 0 ? 0 : flip == 1 ? 1 : -1;
                registerPrimitive(
                    std::string(name) + "/flip " + std::to_string(flip) + "/" + size.name, size,
                    {type, type},
                    [mirror = mirror, flip](Frames& f) {
                        return mirror(f.src.data, f.srcStep(), f.dst.data, f.dstStep(), f.roi,
                                      flip);
                    },
                    {{"cv::flip", [code](Frames& f) { cv::flip(f.src, f.dst, code); }}});
            }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::flip")
