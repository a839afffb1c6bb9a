// Region copy, addition, mirrors, transposition and every conversion that convert offers.
#include "frontend/harness.h"

#include <nuv/cv/addition.h>
#include <nuv/cv/colorconversion.h>
#include <nuv/cv/mirror.h>
#include <nuv/cv/tools.h>
#include <nuv/cv/transpose.h>

#include <opencv2/imgproc.hpp>

namespace nuv::bench::frontend {

namespace {

namespace image = nuv::core::image;
using Pointer = std::shared_ptr<Inputs const>;

// The region that copyRoi cuts: the frame less 8 pixels on every side.
::cv::Rect inset(Inputs const& in) {
    return ::cv::Rect(8, 8, in.size.width - 16, in.size.height - 16);
}

Case mirrorCase(char const* name, Image (*mirror)(Image const&), int flipCode) {
    return {name,
            [mirror](Pointer const& in) {
                return steady([in, mirror] { return mirror(in->bgrImage); });
            },
            intoReused([flipCode](Inputs const& in, ::cv::Mat& dst) {
                ::cv::flip(in.bgr, dst, flipCode);
            })};
}

struct Conversion {
    char const* name;
    Image Inputs::*source;
    ::cv::Mat Inputs::*sourceMat;
    image::Format target;
    int code;  // the ::cv::cvtColor code doing the same job
};

const Conversion conversions[] = {
    {"convert RGB to BGR", &Inputs::rgbImage, &Inputs::rgb, image::BGR, ::cv::COLOR_RGB2BGR},
    {"convert RGB to HSV", &Inputs::rgbImage, &Inputs::rgb, image::HSV, ::cv::COLOR_RGB2HSV_FULL},
    {"convert RGB to YCbCr", &Inputs::rgbImage, &Inputs::rgb, image::YCbCr, ::cv::COLOR_RGB2YCrCb},
    {"convert RGB to HLS", &Inputs::rgbImage, &Inputs::rgb, image::HLS, ::cv::COLOR_RGB2HLS_FULL},
    {"convert RGB to Gray", &Inputs::rgbImage, &Inputs::rgb, image::Gray, ::cv::COLOR_RGB2GRAY},
    {"convert BGR to RGB", &Inputs::bgrImage, &Inputs::bgr, image::RGB, ::cv::COLOR_BGR2RGB},
    {"convert BGR to HSV", &Inputs::bgrImage, &Inputs::bgr, image::HSV, ::cv::COLOR_BGR2HSV_FULL},
    {"convert BGR to Gray", &Inputs::bgrImage, &Inputs::bgr, image::Gray, ::cv::COLOR_BGR2GRAY},
    {"convert BGRA to RGB", &Inputs::bgraImage, &Inputs::bgra, image::RGB, ::cv::COLOR_BGRA2RGB},
    {"convert BGRA to BGR", &Inputs::bgraImage, &Inputs::bgra, image::BGR, ::cv::COLOR_BGRA2BGR},
    {"convert BGRA to Gray", &Inputs::bgraImage, &Inputs::bgra, image::Gray, ::cv::COLOR_BGRA2GRAY},
    {"convert Gray to RGB", &Inputs::grayImage, &Inputs::gray, image::RGB, ::cv::COLOR_GRAY2RGB},
    {"convert Gray to BGR", &Inputs::grayImage, &Inputs::gray, image::BGR, ::cv::COLOR_GRAY2BGR},
    {"convert HSV to RGB", &Inputs::hsvImage, &Inputs::hsv, image::RGB, ::cv::COLOR_HSV2RGB_FULL},
    {"convert HSV to BGR", &Inputs::hsvImage, &Inputs::hsv, image::BGR, ::cv::COLOR_HSV2BGR_FULL},
    {"convert HSV to Gray", &Inputs::hsvImage, &Inputs::hsv, image::Gray, ::cv::COLOR_RGB2GRAY},
    {"convert YCbCr to RGB", &Inputs::yccImage, &Inputs::ycc, image::RGB, ::cv::COLOR_YCrCb2RGB},
    {"convert YCbCr to BGR", &Inputs::yccImage, &Inputs::ycc, image::BGR, ::cv::COLOR_YCrCb2BGR},
    {"convert HLS to RGB", &Inputs::hlsImage, &Inputs::hls, image::RGB, ::cv::COLOR_HLS2RGB_FULL},
    {"convert HLS to BGR", &Inputs::hlsImage, &Inputs::hls, image::BGR, ::cv::COLOR_HLS2BGR_FULL},
};

}  // namespace

std::vector<Case> imageToolCases() {
    std::vector<Case> cases;
    cases.push_back(
        {"copyRoi BGR",
         [](Pointer const& in) {
             auto source = std::make_shared<Image>(in->bgrImage);
             const ::cv::Rect r = inset(*in);
             image::setRoi(*source,
                           core::Roi(core::Point(r.x, r.y), core::Size(r.width, r.height)));
             return steady([source] { return nuv::cv::copyRoi(*source); });
         },
         intoReused([](Inputs const& in, ::cv::Mat& dst) { in.bgr(inset(in)).copyTo(dst); })});
    cases.push_back(
        {"addition BGR",
         [](Pointer const& in) {
             auto other = std::make_shared<Image>(nuv::cv::mirrorVertical(in->bgrImage));
             return steady([in, other] { return nuv::cv::addition(in->bgrImage, *other); });
         },
         [](Pointer const& in) -> Call {
             auto other = std::make_shared<::cv::Mat>();
             ::cv::flip(in->bgr, *other, 1);
             auto dst = std::make_shared<::cv::Mat>();
             return [in, other, dst] { ::cv::addWeighted(in->bgr, 0.5, *other, 0.5, 0, *dst); };
         }});
    cases.push_back(mirrorCase("mirrorHorizontal BGR", nuv::cv::mirrorHorizontal, 0));
    cases.push_back(mirrorCase("mirrorVertical BGR", nuv::cv::mirrorVertical, 1));
    cases.push_back(
        mirrorCase("mirrorHorizontalAndVertical BGR", nuv::cv::mirrorHorizontalAndVertical, -1));
    cases.push_back(
        {"transpose BGR",
         [](Pointer const& in) {
             return steady([in] { return nuv::cv::transpose(in->bgrImage); });
         },
         intoReused([](Inputs const& in, ::cv::Mat& dst) { ::cv::transpose(in.bgr, dst); })});
    return cases;
}

std::vector<Case> conversionCases() {
    std::vector<Case> cases;
    for (Conversion const& c : conversions)
        cases.push_back({c.name,
                         [c](Pointer const& in) {
                             return steady(
                                 [in, c] { return nuv::cv::convert((*in).*c.source, c.target); });
                         },
                         intoReused([c](Inputs const& in, ::cv::Mat& dst) {
                             ::cv::cvtColor(in.*c.sourceMat, dst, c.code);
                         })});
    return cases;
}

}  // namespace nuv::bench::frontend
