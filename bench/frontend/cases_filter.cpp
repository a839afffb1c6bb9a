// Sobel with and without a border, border replication, minimum and maximum filters, Canny.
// Where the library filters only the pixels whose mask fits, OpenCV gets the same inner
// region as a view, so that it reads the same neighbours rather than making a border.
#include "frontend/harness.h"

#include <nuv/cv/canny.h>
#include <nuv/cv/filter.h>

#include <opencv2/imgproc.hpp>

namespace nuv::bench::frontend {

namespace {

using Pointer = std::shared_ptr<Inputs const>;

::cv::Rect inner(Inputs const& in, int k) {
    return ::cv::Rect(k / 2, k / 2, in.size.width - k + 1, in.size.height - k + 1);
}

Case sobelCase(bool border) {
    return {border ? "sobelVert3x3 Gray border" : "sobelVert3x3 Gray",
            [border](Pointer const& in) {
                return steady(
                    [in, border] { return nuv::cv::filter::sobelVert3x3(in->grayImage, border); });
            },
            intoReused([border](Inputs const& in, ::cv::Mat& dst) {
                if (border)
                    ::cv::Sobel(in.gray, dst, CV_8U, 1, 0, 3, 1, 0, ::cv::BORDER_REPLICATE);
                else
                    ::cv::Sobel(in.gray(inner(in, 3)), dst, CV_8U, 1, 0, 3);
            })};
}

Case borderCase() {
    return {"replicateBorder BGR 3x3",
            [](Pointer const& in) {
                return steady([in] {
                    return nuv::cv::filter::replicateBorder(in->bgrImage,
                                                            nuv::cv::filter::Kernel(3, 3, 1, 1));
                });
            },
            intoReused([](Inputs const& in, ::cv::Mat& dst) {
                ::cv::copyMakeBorder(in.bgr, dst, 1, 1, 1, 1, ::cv::BORDER_REPLICATE);
            })};
}

Case rankCase(bool minimum, int k) {
    const std::string name = std::string(minimum ? "min" : "max") + " Gray " + std::to_string(k) +
                             "x" + std::to_string(k);
    return {name,
            [minimum, k](Pointer const& in) {
                const nuv::core::Size mask(k, k);
                return steady([in, minimum, mask] {
                    return minimum ? nuv::cv::filter::min(in->grayImage, mask)
                                   : nuv::cv::filter::max(in->grayImage, mask);
                });
            },
            [minimum, k](Pointer const& in) -> Call {
                auto dst = std::make_shared<::cv::Mat>();
                const ::cv::Mat kernel = ::cv::getStructuringElement(::cv::MORPH_RECT, {k, k});
                return [in, dst, minimum, k, kernel] {
                    ::cv::morphologyEx(in->gray(inner(*in, k)), *dst,
                                       minimum ? ::cv::MORPH_ERODE : ::cv::MORPH_DILATE, kernel);
                };
            }};
}

Case cannyCase() {
    return {"canny Gray",
            [](Pointer const& in) {
                return steady([in] { return nuv::cv::canny(in->grayImage, 40, 120); });
            },
            intoReused(
                [](Inputs const& in, ::cv::Mat& dst) { ::cv::Canny(in.gray, dst, 40, 120, 3); })};
}

}  // namespace

std::vector<Case> filterCases() {
    std::vector<Case> cases{sobelCase(true), sobelCase(false), borderCase()};
    for (int k : {3, 5, 15}) {
        cases.push_back(rankCase(true, k));
        cases.push_back(rankCase(false, k));
    }
    cases.push_back(cannyCase());
    return cases;
}

}  // namespace nuv::bench::frontend
