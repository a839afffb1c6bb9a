// The three channel copies at slot 0 and at the slot ippInit selects, beside the OpenCV calls
// that do the same job: extractChannel for channel 0 out, cvtColor BGRA2BGR for dropping
// the fourth byte, insertChannel for gray into channel 0.
#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <functional>
#include <string>
#include <vector>

namespace {

using nuv::bench::FrameSize;

using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

struct ChannelCopy {
    char const* name;
    CopyFn fn;
    int srcType;
    int dstType;
    std::function<void(cv::Mat const&, cv::Mat&)> opencv;
};

std::vector<ChannelCopy> const& copies() {
    static const std::vector<ChannelCopy> list = {
        {"ippiCopy_8u_C1C3R", ippiCopy_8u_C1C3R, CV_8UC1, CV_8UC3,
         [](cv::Mat const& src, cv::Mat& dst) { cv::insertChannel(src, dst, 0); }},
        {"ippiCopy_8u_C3C1R", ippiCopy_8u_C3C1R, CV_8UC3, CV_8UC1,
         [](cv::Mat const& src, cv::Mat& dst) { cv::extractChannel(src, dst, 0); }},
        {"ippiCopy_8u_AC4C3R", ippiCopy_8u_AC4C3R, CV_8UC4, CV_8UC3,
         [](cv::Mat const& src, cv::Mat& dst) { cv::cvtColor(src, dst, cv::COLOR_BGRA2BGR); }},
    };
    return list;
}

// Source and destination of one frame, the source filled with noise.
struct Frame {
    cv::Mat src, dst;
    Frame(ChannelCopy const& copy, FrameSize size)
        : src(size.height, size.width, copy.srcType), dst(size.height, size.width, copy.dstType) {
        cv::randu(src, 0, 256);
        dst.setTo(0);
    }
};

void runSlot(benchmark::State& state, ChannelCopy const& copy, FrameSize size, int slot) {
    Frame frame(copy, size);
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    for (auto _ : state) {
        const IppStatus status =
            copy.fn(frame.src.data, static_cast<int>(frame.src.step), frame.dst.data,
                    static_cast<int>(frame.dst.step), {size.width, size.height});
        if (status != ippStsNoErr) state.SkipWithError("the copy was refused");
        benchmark::DoNotOptimize(frame.dst.data);
        benchmark::ClobberMemory();
    }
    ippJumpIndexForMergedLibs = saved;
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.src.total()) *
                            static_cast<std::int64_t>(frame.src.elemSize() + frame.dst.elemSize()));
}

void runOpenCv(benchmark::State& state, ChannelCopy const& copy, FrameSize size) {
    Frame frame(copy, size);
    for (auto _ : state) {
        copy.opencv(frame.src, frame.dst);
        benchmark::DoNotOptimize(frame.dst.data);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.src.total()) *
                            static_cast<std::int64_t>(frame.src.elemSize() + frame.dst.elemSize()));
}

const bool registered = [] {
    const int selected = nuv::bench::selectedSlot();
    for (ChannelCopy const& copy : copies())
        for (FrameSize size : {nuv::bench::frame640, nuv::bench::frame1080}) {
            const std::string group = std::string(copy.name) + "/" + size.name;
            benchmark::RegisterBenchmark((group + "/opencv").c_str(), runOpenCv, copy, size)
                ->UseRealTime();
            std::vector<int> slots{0};
            if (selected != 0) slots.push_back(selected);
            for (int slot : slots)
                benchmark::RegisterBenchmark((group + "/slot " + std::to_string(slot)).c_str(),
                                             runSlot, copy, size, slot)
                    ->UseRealTime();
        }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
