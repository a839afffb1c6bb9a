// The line detector beside the OpenCV chain a user would write for it (cvtColor, Sobel,
// threshold to zero, a per-row argmax over the band), and template matching beside
// cv::matchTemplate, which it calls, so that the ratio shows the front end's overhead. Each
// at slot 0 and at the slot ippInit selects.
#include "bench_support.h"

#include <nuv/cv/LineDetector.h>
#include <nuv/cv/MatchTemplate.h>

#include <opencv2/imgproc.hpp>

#include <memory>

namespace {

using namespace nuv::bench;
using nuv::core::image::Image;

// A BGR frame of blurred noise with a bright bar ending at a third of its width, as an Image
// and as a Mat over the same pixels.
struct Scene {
    explicit Scene(FrameSize size) : frames(size, Shape{CV_8UC3, CV_8UC3}) {
        cv::GaussianBlur(frames.src, frames.src, {9, 9}, 3.0);
        cv::rectangle(frames.src, {0, 0}, {size.width / 3, size.height}, {220, 220, 220},
                      cv::FILLED);
        image = Image(nuv::core::image::ImageInfo(size.width, size.height, nuv::core::image::BGR));
        for (int y = 0; y < size.height; ++y)
            std::copy_n(frames.src.ptr(y), 3 * size.width, image.data() + y * image.step());
        const cv::Rect patch(size.width / 2, size.height / 2, 64, 48);
        patchMat = frames.src(patch).clone();
        patchImage = Image(nuv::core::image::ImageInfo(64, 48, nuv::core::image::BGR));
        for (int y = 0; y < 48; ++y)
            std::copy_n(patchMat.ptr(y), 3 * 64, patchImage.data() + y * patchImage.step());
    }
    Frames frames;
    Image image, patchImage;
    cv::Mat patchMat;
};

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080}) {
        auto scene = std::make_shared<Scene>(size);
        const std::string at = std::string("/") + size.name;
        registerAtSlots("findLine" + at, [scene](benchmark::State& state) {
            nuv::cv::LineDetector detector;
            detector.setThreshold(40);
            nuv::core::Point point;
            for (auto _ : state)
                benchmark::DoNotOptimize(
                    detector.findLine(scene->image, nuv::cv::LineDetector::Vertical, &point));
            state.counters["x"] = point.x();
        });
        registerContender("findLine" + at, "opencv", [scene](benchmark::State& state) {
            cv::Mat gray, edges;
            int x = -1;
            for (auto _ : state) {
                cv::cvtColor(scene->frames.src, gray, cv::COLOR_BGR2GRAY);
                cv::Sobel(gray, edges, CV_8U, 1, 0, 3, -1.0);  // left minus right
                cv::threshold(edges, edges, 39, 0, cv::THRESH_TOZERO);
                for (int y = edges.rows - 40; y < edges.rows - 20; ++y) {
                    cv::Point best;
                    cv::minMaxLoc(edges.row(y), nullptr, nullptr, nullptr, &best);
                    x = best.x;
                }
            }
            state.counters["x"] = x;
        });
        registerAtSlots("MatchTemplate 64x48" + at, [scene](benchmark::State& state) {
            nuv::cv::MatchTemplate matcher;
            matcher.setImage(scene->image);
            nuv::core::Point point;
            float value = 0;
            for (auto _ : state) matcher.match(scene->patchImage, &point, &value);
            state.counters["x"] = point.x();
        });
        registerContender("MatchTemplate 64x48" + at, "opencv", [scene](benchmark::State& state) {
            cv::Mat scores;
            cv::Point best;
            for (auto _ : state) {
                cv::matchTemplate(scene->frames.src, scene->patchMat, scores, cv::TM_CCOEFF_NORMED);
                cv::minMaxLoc(scores, nullptr, nullptr, nullptr, &best);
            }
            state.counters["x"] = best.x;
        });
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
