// Region copy of three-channel frames: ippiCopy_8u_C3R at slot 0 and at the slot that ippInit
// selects, beside cv::Mat::copyTo and a plain std::memcpy of the same bytes.
#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>

#include <cstring>
#include <string>
#include <vector>

namespace {

using nuv::bench::FrameSize;

// A random source and a destination of the same size, both packed, as copyRoi gets them.
struct Frames {
    explicit Frames(FrameSize size)
        : src(size.height, size.width, CV_8UC3),
          dst(size.height, size.width, CV_8UC3, cv::Scalar::all(0)) {
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

void copyAtSlot(benchmark::State& state, FrameSize size, int slot) {
    Frames frames(size);
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    const IppiSize roi{size.width, size.height};
    for (auto _ : state) {
        const IppStatus status =
            ippiCopy_8u_C3R(frames.src.data, static_cast<int>(frames.src.step), frames.dst.data,
                            static_cast<int>(frames.dst.step), roi);
        if (status != ippStsNoErr) {
            state.SkipWithError("ippiCopy_8u_C3R refused the frame");
            break;
        }
        benchmark::ClobberMemory();
    }
    ippJumpIndexForMergedLibs = saved;
    recordBytes(state, frames);
}

void copyWithOpenCv(benchmark::State& state, FrameSize size) {
    Frames frames(size);
    for (auto _ : state) {
        // The destination has the source's size and type, so copyTo only moves the bytes.
        frames.src.copyTo(frames.dst);
        benchmark::ClobberMemory();
    }
    recordBytes(state, frames);
}

void copyWithMemcpy(benchmark::State& state, FrameSize size) {
    Frames frames(size);
    for (auto _ : state) {
        std::memcpy(frames.dst.data, frames.src.data, frames.bytes());
        benchmark::ClobberMemory();
    }
    recordBytes(state, frames);
}

const bool registered = [] {
    std::vector<int> slots = {0};
    if (nuv::bench::selectedSlot() != 0) slots.push_back(nuv::bench::selectedSlot());
    for (FrameSize size : {nuv::bench::frame640, nuv::bench::frame1080, nuv::bench::frame4096}) {
        const std::string group = std::string("ippiCopy_8u_C3R/") + size.name;
        for (int slot : slots)
            benchmark::RegisterBenchmark((group + "/slot " + std::to_string(slot)).c_str(),
                                         copyAtSlot, size, slot)
                ->UseRealTime();
        benchmark::RegisterBenchmark((group + "/cv::Mat::copyTo").c_str(), copyWithOpenCv, size)
            ->UseRealTime();
        benchmark::RegisterBenchmark((group + "/std::memcpy").c_str(), copyWithMemcpy, size)
            ->UseRealTime();
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::Mat::copyTo")
