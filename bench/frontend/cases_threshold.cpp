// Thresholds, range masks (with and without a hue range that wraps around), mean and extremes.
#include "frontend/harness.h"

#include <nuv/core/Vector.h>
#include <nuv/cv/statistics.h>
#include <nuv/cv/threshold.h>

#include <opencv2/imgproc.hpp>

namespace nuv::bench::frontend {

namespace {

using Pointer = std::shared_ptr<Inputs const>;
// Bytes below 100 become 0 (::cv::THRESH_TOZERO keeps those above 99); bytes above 150 become
// 150 (::cv::THRESH_TRUNC).
Case thresholdCase(char const* name, Image Inputs::*source, ::cv::Mat Inputs::*sourceMat, bool lt) {
    return {name,
            [=](Pointer const& in) {
                return steady([=] {
                    return lt ? nuv::cv::thresholdLT((*in).*source, 100, 0)
                              : nuv::cv::thresholdGT((*in).*source, 150, 150);
                });
            },
            intoReused([=](Inputs const& in, ::cv::Mat& dst) {
                if (lt)
                    ::cv::threshold(in.*sourceMat, dst, 99, 0, ::cv::THRESH_TOZERO);
                else
                    ::cv::threshold(in.*sourceMat, dst, 150, 0, ::cv::THRESH_TRUNC);
            })};
}

Case rangeCase() {
    return {
        "inRange BGR",
        [](Pointer const& in) {
            return steady([in, lo = channelBounds(0, 0, 150), hi = channelBounds(90, 120, 255)] {
                return nuv::cv::inRange(in->bgrImage, lo, hi);
            });
        },
        intoReused([](Inputs const& in, ::cv::Mat& dst) {
            ::cv::inRange(in.bgr, ::cv::Scalar(0, 0, 150), ::cv::Scalar(90, 120, 255), dst);
        })};
}

// Reds: hues from 235 round to 12. OpenCV needs two masks and their union.
Case wrappedRangeCase() {
    return {
        "inRange HSV wrapped hue",
        [](Pointer const& in) {
            return steady([in, lo = channelBounds(235, 100, 80), hi = channelBounds(12, 255, 255)] {
                return nuv::cv::inRange(in->hsvImage, lo, hi);
            });
        },
        [](Pointer const& in) -> Call {
            auto upper = std::make_shared<::cv::Mat>(), dst = std::make_shared<::cv::Mat>();
            return [in, upper, dst] {
                ::cv::inRange(in->hsv, ::cv::Scalar(235, 100, 80), ::cv::Scalar(255, 255, 255),
                              *dst);
                ::cv::inRange(in->hsv, ::cv::Scalar(0, 100, 80), ::cv::Scalar(12, 255, 255),
                              *upper);
                ::cv::bitwise_or(*dst, *upper, *dst);
            };
        }};
}

Case meanCase() {
    return {"mean BGR",
            [](Pointer const& in) -> Call {
                auto result = std::make_shared<nuv::core::Vector<unsigned char>>();
                return [in, result] { *result = nuv::cv::mean(in->bgrImage); };
            },
            [](Pointer const& in) -> Call {
                auto result = std::make_shared<::cv::Scalar>();
                return [in, result] { *result = ::cv::mean(in->bgr); };
            }};
}

// OpenCV finds the extremes of one channel; the planes are split into reused matrices first.
Case minmaxCase() {
    return {"minmax BGR",
            [](Pointer const& in) -> Call {
                auto low = std::make_shared<nuv::core::Vector<int>>(),
                     high = std::make_shared<nuv::core::Vector<int>>();
                return [in, low, high] { nuv::cv::minmax(in->bgrImage, *low, *high); };
            },
            [](Pointer const& in) -> Call {
                auto planes = std::make_shared<std::vector<::cv::Mat>>();
                auto extremes = std::make_shared<std::vector<double>>(6);
                return [in, planes, extremes] {
                    ::cv::split(in->bgr, *planes);
                    for (int c = 0; c < 3; ++c)
                        ::cv::minMaxLoc((*planes)[c], &(*extremes)[2 * c], &(*extremes)[2 * c + 1]);
                };
            }};
}

}  // namespace

std::vector<Case> thresholdCases() {
    return {thresholdCase("thresholdLT BGR", &Inputs::bgrImage, &Inputs::bgr, true),
            thresholdCase("thresholdLT Gray", &Inputs::grayImage, &Inputs::gray, true),
            thresholdCase("thresholdGT BGR", &Inputs::bgrImage, &Inputs::bgr, false),
            thresholdCase("thresholdGT Gray", &Inputs::grayImage, &Inputs::gray, false),
            rangeCase(),
            wrappedRangeCase(),
            meanCase(),
            minmaxCase()};
}

}  // namespace nuv::bench::frontend
