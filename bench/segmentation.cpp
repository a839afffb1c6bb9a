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

#ifndef NUV_SOURCE_DIR
#define NUV_SOURCE_DIR "/work/main"
#endif

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

cv::Mat const& sourceFrame() {
    static const cv::Mat frame = [] {
        cv::Mat image = cv::imread(NUV_SOURCE_DIR "/data/frame.png", cv::IMREAD_COLOR);
        if (image.empty())
            std::fprintf(stderr, "cannot read %s\n", NUV_SOURCE_DIR "/data/frame.png");
        return image;
    }();
    return frame;
}

cv::Mat frameOfSize(FrameSize const& size) {
    cv::Mat scaled;
    if (sourceFrame().empty()) return scaled;
    if (sourceFrame().cols == size.width && sourceFrame().rows == size.height) return sourceFrame();
    cv::resize(sourceFrame(), scaled, cv::Size(size.width, size.height), 0, 0, cv::INTER_LINEAR);
    return scaled;
}

// Classes trained the way a host trains them: every pixel of each sample rectangle through
// addColor, then a dilation of the accepted values. Channels are the frame's bytes B, G, R.
nuv::cv::SegmentList trainedClasses() {
    nuv::cv::SegmentList list;
    cv::Mat const& frame = sourceFrame();
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

// The bounds the OpenCV pipeline uses: the lowest and highest accepted value per channel.
void boundsOf(nuv::cv::Segment const& segment, cv::Scalar& lower, cv::Scalar& upper) {
    for (unsigned c = 0; c < 3; ++c) {
        int low = 255, high = 0;
        for (int v = 0; v < 256; ++v)
            if (segment.colorIndex(c).at(static_cast<unsigned char>(v))) {
                if (v < low) low = v;
                if (v > high) high = v;
            }
        lower[c] = low;
        upper[c] = high;
    }
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
    const cv::Mat frame = frameOfSize(size);
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
    const cv::Mat frame = frameOfSize(size);
    if (frame.empty()) {
        state.SkipWithError("no frame");
        return;
    }
    const nuv::cv::SegmentList list = trainedClasses();
    std::vector<cv::Scalar> lower(4), upper(4);
    int k = 0;
    for (auto it = list.constBegin(); it != list.constEnd(); ++it, ++k)
        boundsOf(*it, lower[k], upper[k]);

    cv::Mat mask, labels, stats, centroids;
    int largest[4] = {};
    cv::Point2d centre[4];
    for (auto _ : state) {
        for (int c = 0; c < 4; ++c) {
            cv::inRange(frame, lower[c], upper[c], mask);
            const int count =
                cv::connectedComponentsWithStats(mask, labels, stats, centroids, 4, CV_32S);
            int best = 0, bestArea = 0;
            for (int label = 1; label < count; ++label) {
                const int area = stats.at<int>(label, cv::CC_STAT_AREA);
                if (area > bestArea) {
                    bestArea = area;
                    best = label;
                }
            }
            largest[c] = bestArea;
            centre[c] =
                best ? cv::Point2d(centroids.at<double>(best, 0), centroids.at<double>(best, 1))
                     : cv::Point2d();
        }
        benchmark::DoNotOptimize(largest);
        benchmark::DoNotOptimize(centre);
    }
    framesPerSecond(state);
    std::string report;
    k = 0;
    for (auto it = list.constBegin(); it != list.constEnd(); ++it, ++k)
        report += it->name() + " " + std::to_string(largest[k]) + " ";
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
