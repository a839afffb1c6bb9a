// Colour segmentation of the bundled frame: Segmenter::doSegmentation with four classes
// trained on the frame's objects, beside what an OpenCV user writes for the same result: per
// class a range mask with cv::inRange, its 4-connected components with statistics, and the
// largest component kept. Both sides get the same frame and give, per class, the largest
// region with its size and centre; both run single-threaded.
#include "bench_support.h"

#include <nuv/core.h>
#include <nuv/cv/Segmenter.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using nuv::bench::FrameSize;
using nuv::core::image::Image;

// A rectangle well inside each object of the 640x480 frame, in that frame's coordinates.
struct Training {
    char const* name;
    cv::Rect inside;
};

// The orange ball, the blue box, the yellow disc and the red bar; the green triangle is left
// untrained, as an object the host does not look for.
const Training objects[4] = {{"ball", cv::Rect(140, 270, 60, 60)},
                             {"box", cv::Rect(380, 110, 120, 80)},
                             {"disc", cv::Rect(450, 340, 40, 40)},
                             {"bar", cv::Rect(275, 397, 50, 6)}};

// Sensor noise reaches a little beyond the trained samples.
constexpr int dilation = 3;

// Classes trained the way a host trains them: every pixel of each sample rectangle through
// addColor, then a dilation of the accepted values. Channels are the frame's bytes B, G, R.
nuv::cv::SegmentList trainedClasses() {
    nuv::cv::SegmentList list;
    cv::Mat const& frame = nuv::bench::bundledFrame();
    for (Training const& object : objects) {
        nuv::cv::Segment segment;
        segment.setName(object.name);
        for (int y = object.inside.y; y < object.inside.y + object.inside.height; ++y)
            for (int x = object.inside.x; x < object.inside.x + object.inside.width; ++x) {
                const cv::Vec3b p = frame.at<cv::Vec3b>(y, x);
                segment.addColor(nuv::core::Color::fromRgba(p[0], p[1], p[2]));
            }
        for (unsigned c = 0; c < 3; ++c) segment.setDilate(c, dilation);
        segment.applyDilation();
        list.append(segment);
    }
    return list;
}

Image nuvImage(cv::Mat const& frame) {
    Image image(nuv::core::image::ImageInfo(static_cast<unsigned>(frame.cols),
                                            static_cast<unsigned>(frame.rows),
                                            nuv::core::image::BGR));
    for (int y = 0; y < frame.rows; ++y)
        std::memcpy(image.data() + static_cast<size_t>(y) * image.step(), frame.ptr(y),
                    static_cast<size_t>(frame.cols) * 3);
    return image;
}

void framesPerSecond(benchmark::State& state) {
    state.counters["fps"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void segmenter(benchmark::State& state, FrameSize size) {
    const cv::Mat frame = nuv::bench::bundledFrameOfSize(size);
    if (frame.empty()) {
        state.SkipWithError("no frame");
        return;
    }
    const Image image = nuvImage(frame);
    nuv::cv::Segmenter segmenter;
    segmenter.setColorSegments(trainedClasses());
    // Two frames first: the buffers are sized and the minimum run for this width is in force.
    segmenter.doSegmentation(image);
    const nuv::core::image::SegmentList found =
        nuv::core::image::segmentList(segmenter.doSegmentation(image));
    std::string report;
    for (auto it = found.constBegin(); it != found.constEnd(); ++it) {
        if (it->pixelCount == 0) {
            state.SkipWithError(("class not found: " + it->name).c_str());
            return;
        }
        report += it->name + " " + std::to_string(it->pixelCount) + " ";
    }

    for (auto _ : state) {
        Image result = segmenter.doSegmentation(image);
        benchmark::DoNotOptimize(result.constData());
    }
    framesPerSecond(state);
    state.SetLabel(report);
}

void openCv(benchmark::State& state, FrameSize size) {
    const cv::Mat frame = nuv::bench::bundledFrameOfSize(size);
    if (frame.empty()) {
        state.SkipWithError("no frame");
        return;
    }
    const nuv::cv::SegmentList list = trainedClasses();
    nuv::bench::LargestRegions regions(list);
    for (auto _ : state) {
        regions.run(frame);
        benchmark::ClobberMemory();
    }
    framesPerSecond(state);
    std::string report;
    int k = 0;
    for (auto it = list.constBegin(); it != list.constEnd(); ++it, ++k)
        report += it->name() + " " + std::to_string(regions.area(k)) + " ";
    state.SetLabel(report);
}

const bool registered = [] {
    for (FrameSize size : {nuv::bench::frame640, nuv::bench::frame1080}) {
        const std::string group = std::string("doSegmentation/") + size.name + "/";
        benchmark::RegisterBenchmark((group + "opencv").c_str(), openCv, size)->UseRealTime();
        benchmark::RegisterBenchmark((group + "nuv::cv::Segmenter").c_str(), segmenter, size)
            ->UseRealTime();
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
