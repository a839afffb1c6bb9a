// Filters at slot 0 and at the slot ippInit selects, beside OpenCV on the same frames: Sobel
// beside cv::Sobel with 8-bit output, min and max beside cv::erode and cv::dilate with a
// rectangle, the replicated border beside cv::copyMakeBorder, and canny beside cv::Canny. The
// primitives filter the part of the frame where their mask fits; OpenCV fills its border.
#include "bench_support.h"

#include <nuv/cv/canny.h>

#include <opencv2/imgproc.hpp>

#include <memory>
#include <vector>

namespace {

using namespace nuv::bench;
using Rank = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize, IppiSize, IppiPoint);

// The region where a k x k mask fits, and the source pixel under its centre.
IppiSize inner(Frames const& f, int k) {
    return {f.roi.width - k + 1, f.roi.height - k + 1};
}
Ipp8u const* centre(Frames const& f, int k) {
    return f.src.ptr(k / 2) + k / 2 * f.src.channels();
}

void registerRank(std::string const& name, FrameSize size, int type, int k, Rank rank,
                  int morphology, bool photo = false) {
    Shape shape{type, type};
    shape.photograph = photo;
    registerPrimitive(name + " " + std::to_string(k) + "x" + std::to_string(k) +
                          (photo ? " photo/" : "/") + size.name,
                      size, shape,
                      [rank, k](Frames& f) {
                          return rank(centre(f, k), f.srcStep(), f.dst.data, f.dstStep(),
                                      inner(f, k), {k, k}, {k / 2, k / 2});
                      },
                      {{"opencv", [k, morphology](Frames& f) {
                            cv::morphologyEx(f.src, f.dst, morphology,
                                             cv::getStructuringElement(cv::MORPH_RECT, {k, k}));
                        }}});
}

using Sobel = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

void registerSobel(std::string const& name, FrameSize size, int type, Sobel sobel, int dx, int dy) {
    registerPrimitive(
        name + "/" + size.name, size, {type, type},
        [sobel](Frames& f) {
            return sobel(centre(f, 3), f.srcStep(), f.dst.data, f.dstStep(), inner(f, 3));
        },
        {{"opencv", [dx, dy](Frames& f) { cv::Sobel(f.src, f.dst, CV_8U, dx, dy, 3); }}});
}

void registerBorder(std::string const& name, FrameSize size, int type,
                    decltype(&ippiCopyReplicateBorder_8u_C1R) border) {
    registerPrimitive(name + "/" + size.name, size, {type, type},
                      [border](Frames& f) {
                          return border(f.src.data, f.srcStep(), inner(f, 3), f.dst.data,
                                        f.dstStep(), f.roi, 1, 1);
                      },
                      {{"opencv", [](Frames& f) {
                            cv::copyMakeBorder(
                                f.src(cv::Rect(0, 0, f.roi.width - 2, f.roi.height - 2)), f.dst, 1,
                                1, 1, 1, cv::BORDER_REPLICATE);
                        }}});
}

const bool registered = [] {
    for (FrameSize size : {frame640, frame1080}) {
        registerSobel("ippiFilterSobelHoriz_8u_C1R", size, CV_8UC1, ippiFilterSobelHoriz_8u_C1R, 0,
                      1);
        registerSobel("ippiFilterSobelHoriz_8u_C3R", size, CV_8UC3, ippiFilterSobelHoriz_8u_C3R, 0,
                      1);
        registerSobel("ippiFilterSobelVert_8u_C1R", size, CV_8UC1, ippiFilterSobelVert_8u_C1R, 1,
                      0);
        registerSobel("ippiFilterSobelVert_8u_C3R", size, CV_8UC3, ippiFilterSobelVert_8u_C3R, 1,
                      0);
        for (int k : {3, 5, 15}) {
            registerRank("ippiFilterMin_8u_C1R", size, CV_8UC1, k, ippiFilterMin_8u_C1R,
                         cv::MORPH_ERODE);
            registerRank("ippiFilterMax_8u_C1R", size, CV_8UC1, k, ippiFilterMax_8u_C1R,
                         cv::MORPH_DILATE);
            registerRank("ippiFilterMin_8u_C3R", size, CV_8UC3, k, ippiFilterMin_8u_C3R,
                         cv::MORPH_ERODE);
            registerRank("ippiFilterMax_8u_C3R", size, CV_8UC3, k, ippiFilterMax_8u_C3R,
                         cv::MORPH_DILATE);
        }
        // The same on a photograph, where flat areas and edges replace noise.
        for (int k : photograph(size, CV_8UC1).empty() ? std::vector<int>{} : std::vector{3, 15}) {
            registerRank("ippiFilterMin_8u_C1R", size, CV_8UC1, k, ippiFilterMin_8u_C1R,
                         cv::MORPH_ERODE, true);
            registerRank("ippiFilterMax_8u_C3R", size, CV_8UC3, k, ippiFilterMax_8u_C3R,
                         cv::MORPH_DILATE, true);
        }
        registerBorder("ippiCopyReplicateBorder_8u_C1R", size, CV_8UC1,
                       ippiCopyReplicateBorder_8u_C1R);
        registerBorder("ippiCopyReplicateBorder_8u_C3R", size, CV_8UC3,
                       ippiCopyReplicateBorder_8u_C3R);

        // Canny on a frame with edges to follow: blurred noise.
        auto frame = std::make_shared<Frames>(size, Shape{CV_8UC1, CV_8UC1});
        cv::GaussianBlur(frame->src, frame->src, {7, 7}, 2.0);
        auto image = std::make_shared<nuv::core::image::Image>(
            nuv::core::image::ImageInfo(size.width, size.height, nuv::core::image::Gray));
        for (int y = 0; y < size.height; ++y)
            std::copy(frame->src.ptr(y), frame->src.ptr(y) + size.width,
                      image->data() + y * image->step());
        const std::string group = std::string("canny/") + size.name;
        registerAtSlots(group, [image](benchmark::State& state) {
            for (auto _ : state) benchmark::DoNotOptimize(nuv::cv::canny(*image, 50, 150));
        });
        registerContender(group, "opencv", [frame](benchmark::State& state) {
            for (auto _ : state) cv::Canny(frame->src, frame->dst, 50, 150, 3);
        });
    }
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
