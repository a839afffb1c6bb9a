// Transposition of one- and three-channel frames: ippiTranspose_8u_C1R and _C3R at slot 0 and
// at the slot that ippInit selects, beside cv::transpose into a destination of the right size.
#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace {

using nuv::bench::FrameSize;

using TransposeFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

struct Form {
    TransposeFn transpose;
    int type;
    char const* name;
};

// A random packed source and a packed destination of the swapped size, as transpose builds it.
struct Frames {
    Frames(FrameSize size, int type)
        : src(size.height, size.width, type),
          dst(size.width, size.height, type, cv::Scalar::all(0)) {
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

void transposeAtSlot(benchmark::State& state, Form form, FrameSize size, int slot) {
    Frames frames(size, form.type);
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    const IppiSize roi{size.width, size.height};
    for (auto _ : state) {
        const IppStatus status =
            form.transpose(frames.src.data, static_cast<int>(frames.src.step), frames.dst.data,
                           static_cast<int>(frames.dst.step), roi);
        if (status != ippStsNoErr) {
            state.SkipWithError("the primitive refused the frame");
            break;
        }
        benchmark::ClobberMemory();
    }
    ippJumpIndexForMergedLibs = saved;
    recordBytes(state, frames);
}

void transposeWithOpenCv(benchmark::State& state, Form form, FrameSize size) {
    Frames frames(size, form.type);
    for (auto _ : state) {
        // The destination already has the transposed size and type, so nothing is allocated.
        cv::transpose(frames.src, frames.dst);
        benchmark::ClobberMemory();
    }
    recordBytes(state, frames);
}

const bool registered = [] {
    const Form forms[] = {{ippiTranspose_8u_C1R, CV_8UC1, "ippiTranspose_8u_C1R"},
                          {ippiTranspose_8u_C3R, CV_8UC3, "ippiTranspose_8u_C3R"}};
    const std::vector<int> slots = nuv::bench::comparedSlots();
    for (Form const& form : forms) {
        for (FrameSize size :
             {nuv::bench::frame640, nuv::bench::frame1080, nuv::bench::frame4096}) {
            const std::string group = std::string(form.name) + "/" + size.name;
            for (int slot : slots)
                benchmark::RegisterBenchmark((group + "/slot " + std::to_string(slot)).c_str(),
                                             transposeAtSlot, form, size, slot)
                    ->UseRealTime();
            benchmark::RegisterBenchmark((group + "/cv::transpose").c_str(), transposeWithOpenCv,
                                         form, size)
                ->UseRealTime();
        }
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::transpose")
