// The rounded mean of two three-channel frames: ippiAdd_8u_C3RSfs with a scale factor of 1
// at slot 0 and at the slot that ippInit selects, beside cv::addWeighted with weights of
// one half, which is what an OpenCV user writes for the same job.
#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using nuv::bench::FrameSize;

// Two random sources and a destination of the same size, all packed.
struct Frames {
    explicit Frames(FrameSize size)
        : a(size.height, size.width, CV_8UC3),
          b(size.height, size.width, CV_8UC3),
          dst(size.height, size.width, CV_8UC3, cv::Scalar::all(0)) {
        cv::randu(a, cv::Scalar::all(0), cv::Scalar::all(256));
        cv::randu(b, cv::Scalar::all(0), cv::Scalar::all(256));
    }
    std::size_t bytes() const { return a.total() * a.elemSize(); }
    cv::Mat a;
    cv::Mat b;
    cv::Mat dst;
};

void recordBytes(benchmark::State& state, Frames const& frames) {
    // Bytes of one source: the size of a frame in, the size of a frame out.
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(frames.bytes()));
}

void addAtSlot(benchmark::State& state, FrameSize size, int slot) {
    Frames frames(size);
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    const IppiSize roi{size.width, size.height};
    for (auto _ : state) {
        const IppStatus status =
            ippiAdd_8u_C3RSfs(frames.a.data, static_cast<int>(frames.a.step), frames.b.data,
                              static_cast<int>(frames.b.step), frames.dst.data,
                              static_cast<int>(frames.dst.step), roi, 1);
        if (status != ippStsNoErr) {
            state.SkipWithError("ippiAdd_8u_C3RSfs refused the frame");
            break;
        }
        benchmark::ClobberMemory();
    }
    ippJumpIndexForMergedLibs = saved;
    recordBytes(state, frames);
}

void addWithOpenCv(benchmark::State& state, FrameSize size) {
    Frames frames(size);
    for (auto _ : state) {
        // The destination has the sources' size and type, so nothing is allocated.
        cv::addWeighted(frames.a, 0.5, frames.b, 0.5, 0, frames.dst);
        benchmark::ClobberMemory();
    }
    recordBytes(state, frames);
}

const bool registered = [] {
    for (FrameSize size : {nuv::bench::frame640, nuv::bench::frame1080}) {
        const std::string group = std::string("ippiAdd_8u_C3RSfs/") + size.name;
        for (int slot : nuv::bench::comparedSlots())
            benchmark::RegisterBenchmark((group + "/slot " + std::to_string(slot)).c_str(),
                                         addAtSlot, size, slot)
                ->UseRealTime();
        benchmark::RegisterBenchmark((group + "/cv::addWeighted").c_str(), addWithOpenCv, size)
            ->UseRealTime();
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("cv::addWeighted")
