#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace nuv::bench {

int selectedSlot() {
    static const int slot = [] {
        const Ipp32u saved = ippJumpIndexForMergedLibs;
        ippInit();
        const int chosen = static_cast<int>(ippJumpIndexForMergedLibs);
        ippJumpIndexForMergedLibs = saved;
        return chosen;
    }();
    return slot;
}

std::vector<int> comparedSlots() {
    if (selectedSlot() == 0) return {0};
    return {0, selectedSlot()};
}

SlotScope::SlotScope(int slot) : _saved(ippJumpIndexForMergedLibs) {
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
}
SlotScope::~SlotScope() {
    ippJumpIndexForMergedLibs = _saved;
}

void registerAtSlots(std::string const& group, Body const& body) {
    for (int slot : comparedSlots())
        benchmark::RegisterBenchmark((group + "/slot " + std::to_string(slot)).c_str(),
                                     [body, slot](benchmark::State& state) {
                                         SlotScope scope(slot);
                                         body(state);
                                     })
            ->UseRealTime();
}

void registerContender(std::string const& group, std::string const& name, Body const& body) {
    benchmark::RegisterBenchmark((group + "/" + name).c_str(), body)->UseRealTime();
}

::cv::Mat photograph(FrameSize size, int type) {
    for (std::string const& path :
         {std::string(NUV_SOURCE_DIR "/data/astronaut.jpg"),
          std::string("/usr/lib/python3/dist-packages/skimage/data/coffee.png")}) {
        const ::cv::Mat image =
            ::cv::imread(path, type == CV_8UC1 ? ::cv::IMREAD_GRAYSCALE : ::cv::IMREAD_COLOR);
        if (image.empty()) continue;
        ::cv::Mat resized;
        ::cv::resize(image, resized, {size.width, size.height}, 0, 0, ::cv::INTER_LINEAR);
        return resized;
    }
    return {};
}

Frames::Frames(FrameSize size, Shape shape)
    : src(size.height, size.width, shape.srcType),
      dst(shape.turned ? size.width : size.height, shape.turned ? size.height : size.width,
          shape.dstType, ::cv::Scalar::all(0)),
      roi{size.width, size.height} {
    ::cv::randu(src, ::cv::Scalar::all(0), ::cv::Scalar::all(256));
    if (shape.photograph) {
        const ::cv::Mat photo = photograph(size, shape.srcType);
        if (!photo.empty()) photo.copyTo(src);
    }
    if (shape.sources > 1) {
        src2.create(size.height, size.width, shape.srcType);
        ::cv::randu(src2, ::cv::Scalar::all(0), ::cv::Scalar::all(256));
    }
    bytes = static_cast<std::int64_t>(src.total() * src.elemSize());
    if (shape.countDestination) bytes += static_cast<std::int64_t>(dst.total() * dst.elemSize());
}

void registerPrimitive(std::string const& group, FrameSize size, Shape shape,
                       PrimitiveCall const& primitive,
                       std::vector<std::pair<std::string, OtherCall>> const& contenders) {
    registerAtSlots(group, [=](benchmark::State& state) {
        Frames frames(size, shape);
        for (auto _ : state) {
            if (primitive(frames) != ippStsNoErr) {
                state.SkipWithError("the primitive refused the frame");
                break;
            }
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(state.iterations() * frames.bytes);
    });
    for (auto const& [name, call] : contenders)
        registerContender(group, name, [=, call = call](benchmark::State& state) {
            Frames frames(size, shape);
            for (auto _ : state) {
                call(frames);
                benchmark::ClobberMemory();
            }
            state.SetBytesProcessed(state.iterations() * frames.bytes);
        });
}

::cv::Mat const& bundledFrame() {
    static const ::cv::Mat frame = [] {
        ::cv::Mat image = ::cv::imread(NUV_SOURCE_DIR "/data/frame.png", ::cv::IMREAD_COLOR);
        if (image.empty())
            std::fprintf(stderr, "cannot read %s\n", NUV_SOURCE_DIR "/data/frame.png");
        return image;
    }();
    return frame;
}

::cv::Mat bundledFrameOfSize(FrameSize const& size) {
    ::cv::Mat const& frame = bundledFrame();
    if (frame.empty() || (frame.cols == size.width && frame.rows == size.height)) return frame;
    ::cv::Mat scaled;
    ::cv::resize(frame, scaled, ::cv::Size(size.width, size.height), 0, 0, ::cv::INTER_LINEAR);
    return scaled;
}

nuv::cv::SegmentList bundledClasses() {
    std::ifstream in(NUV_SOURCE_DIR "/data/classes.txt");
    std::stringstream text;
    text << in.rdbuf();
    try {
        if (in) return nuv::cv::segmentListfromString(text.str());
    } catch (std::exception const&) {
    }
    std::fprintf(stderr, "cannot read %s\n", NUV_SOURCE_DIR "/data/classes.txt");
    return {};
}

namespace {

// The bounds a range mask can express: the lowest and highest accepted value per channel.
void boundsOf(nuv::cv::Segment const& segment, ::cv::Scalar& lower, ::cv::Scalar& upper) {
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

}  // namespace

LargestRegions::LargestRegions(nuv::cv::SegmentList const& classes) {
    for (auto it = classes.constBegin(); it != classes.constEnd(); ++it) {
        _lower.emplace_back();
        _upper.emplace_back();
        boundsOf(*it, _lower.back(), _upper.back());
    }
    _area.assign(_lower.size(), 0);
    _centre.assign(_lower.size(), ::cv::Point2d());
}

void LargestRegions::run(::cv::Mat const& frame) {
    for (int c = 0; c < classCount(); ++c) {
        ::cv::inRange(frame, _lower[c], _upper[c], _mask);
        const int count =
            ::cv::connectedComponentsWithStats(_mask, _labels, _stats, _centroids, 4, CV_32S);
        int best = 0, bestArea = 0;
        for (int label = 1; label < count; ++label) {
            const int area = _stats.at<int>(label, ::cv::CC_STAT_AREA);
            if (area > bestArea) {
                bestArea = area;
                best = label;
            }
        }
        _area[c] = bestArea;
        _centre[c] =
            best ? ::cv::Point2d(_centroids.at<double>(best, 0), _centroids.at<double>(best, 1))
                 : ::cv::Point2d();
    }
}

namespace {

// Keeps the time of every run beside the ordinary console output.
class CollectingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                _times.emplace_back(run.benchmark_name(), run.GetAdjustedRealTime());
        ConsoleReporter::ReportRuns(runs);
    }
    std::vector<std::pair<std::string, double>> const& times() const { return _times; }

private:
    std::vector<std::pair<std::string, double>> _times;
};

}  // namespace

int runAndSummarise(int argc, char** argv, std::string const& reference) {
    ::cv::setNumThreads(1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    // group -> contender -> time; groups keep their first-seen order.
    std::vector<std::string> order;
    std::map<std::string, std::map<std::string, double>> groups;
    for (auto const& [name, time] : reporter.times()) {
        std::string base = name.substr(0, name.find("/real_time"));
        const auto cut = base.rfind('/');
        if (cut == std::string::npos) continue;
        const std::string group = base.substr(0, cut), contender = base.substr(cut + 1);
        if (!groups.count(group)) order.push_back(group);
        groups[group][contender] = time;
    }
    std::printf("\nTime relative to %s (below 1 is faster), selected slot %d:\n", reference.c_str(),
                selectedSlot());
    for (std::string const& group : order) {
        auto const& contenders = groups[group];
        auto const ref = contenders.find(reference);
        if (ref == contenders.end() || ref->second <= 0) continue;
        std::printf("  %-40s", group.c_str());
        for (auto const& [contender, time] : contenders)
            if (contender != reference)
                std::printf("  %s %.2f", contender.c_str(), time / ref->second);
        std::printf("\n");
    }
    return 0;
}

}  // namespace nuv::bench
