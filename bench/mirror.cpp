// Mirroring of one- and three-channel frames about each axis: ippiMirror_8u_C1R and
// ippiMirror_8u_C3R at slot 0 and at the slot that ippInit selects, beside cv::flip with the
// matching flip code.
#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace {

using nuv::bench::FrameSize;
using MirrorFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, int);

// A random source and a destination of the same size, both packed.
struct Frames {
    Frames(FrameSize size, int type)
        : src(size.height, size.width, type),
          dst(size.height, size.width, type, cv::Scalar::all(0)) {
        cv::randu(src, cv::Scalar::all(0), cv::Scalar::all(256));
    }
    std::size_t bytes() const { return src.total() * src.elemSize(); }
    cv::Mat src;
    cv::Mat dst;
};

void recordBytes(benchmark::State& state, Frames const& frames) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(frames.bytes()));
}

struct Form {
    MirrorFn mirror;
    int type;
    char const* name;
};

void mirrorAtSlot(benchmark::State& state, Form form, FrameSize size, int flip, int slot) {
    Frames frames(size, form.type);
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    const IppiSize roi{size.width, size.height};
    for (auto _ : state) {
        const IppStatus status =
            form.mirror(frames.src.data, static_cast<int>(frames.src.step), frames.dst.data,
                        static_cast<int>(frames.dst.step), roi, flip);
        if (status != ippStsNoErr) {
            state.SkipWithError("the mirror refused the frame");
            break;
        }
        benchmark::ClobberMemory();
    }
    ippJumpIndexForMergedLibs = saved;
    recordBytes(state, frames);
}

// cv::flip codes: 0 turns the rows over, 1 the columns, -1 both.
int flipCode(int flip) {
    return flip == 0 ? 0 : flip == 1 ? 1 : -1;
}

void mirrorWithOpenCv(benchmark::State& state, Form form, FrameSize size, int flip) {
    Frames frames(size, form.type);
    const int code = flipCode(flip);
    for (auto _ : state) {
        // The destination has the source's size and type, so nothing is allocated.
        cv::flip(frames.src, frames.dst, code);
        benchmark::ClobberMemory();
    }
    recordBytes(state, frames);
}

const bool registered = [] {
    const Form forms[] = {{ippiMirror_8u_C1R, CV_8UC1, "ippiMirror_8u_C1R"},
                          {ippiMirror_8u_C3R, CV_8UC3, "ippiMirror_8u_C3R"}};
    for (Form const& form : forms) {
        for (int flip = 0; flip < 3; ++flip) {
            for (FrameSize size :
                 {nuv::bench::frame640, nuv::bench::frame1080, nuv::bench::frame4096}) {
                const std::string group =
                    std::string(form.name) + "/flip " + std::to_string(flip) + "/" + size.name;
                for (int slot : nuv::bench::comparedSlots())
                    benchmark::RegisterBenchmark((group + "/slot " + std::to_string(slot)).c_str(),
                                                 mirrorAtSlot, form, size, flip, slot)
                        ->UseRealTime();
                benchmark::RegisterBenchmark((group + "/cv::flip").c_str(), mirrorWithOpenCv, form,
                                             size, flip)
                    ->UseRealTime();
            }
        }
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::flip")
