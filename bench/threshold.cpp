// Thresholds, constant compares and the range mask at slot 0 and at the slot ippInit selects,
// beside the OpenCV calls that do the same job.
#include "bench_support.h"

#include <nuv/core.h>
#include <nuv/cv/threshold.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace {

using namespace nuv::bench;

Ipp8u const bound3[3] = {100, 100, 100}, zero3[3] = {0, 0, 0}, top3[3] = {200, 200, 200};

struct Form {
    char const* name;
    int type;
    PrimitiveCall primitive;
    OtherCall opencv;
};

void registerForms() {
    const Form forms[] = {
        {"ippiThreshold_LT_8u_C1R", CV_8UC1,
         [](Frames& f) {
             return ippiThreshold_LT_8u_C1R(f.src.data, f.srcStep(), f.dst.data, f.dstStep(), f.roi,
                                            100);
         },
         [](Frames& f) { cv::max(f.src, cv::Scalar::all(100), f.dst); }},
        {"ippiThreshold_LT_8u_C3IR", CV_8UC3,
         [](Frames& f) { return ippiThreshold_LT_8u_C3IR(f.dst.data, f.dstStep(), f.roi, bound3); },
         [](Frames& f) { cv::max(f.dst, cv::Scalar::all(100), f.dst); }},
        {"ippiThreshold_LTVal_8u_C1R", CV_8UC1,
         [](Frames& f) {
             return ippiThreshold_LTVal_8u_C1R(f.src.data, f.srcStep(), f.dst.data, f.dstStep(),
                                               f.roi, 100, 0);
         },
         [](Frames& f) { cv::threshold(f.src, f.dst, 99, 255, cv::THRESH_TOZERO); }},
        {"ippiThreshold_LTVal_8u_C3R", CV_8UC3,
         [](Frames& f) {
             return ippiThreshold_LTVal_8u_C3R(f.src.data, f.srcStep(), f.dst.data, f.dstStep(),
                                               f.roi, bound3, zero3);
         },
         [](Frames& f) { cv::threshold(f.src, f.dst, 99, 255, cv::THRESH_TOZERO); }},
        {"ippiThreshold_GTVal_8u_C1R", CV_8UC1,
         [](Frames& f) {
             return ippiThreshold_GTVal_8u_C1R(f.src.data, f.srcStep(), f.dst.data, f.dstStep(),
                                               f.roi, 100, 0);
         },
         [](Frames& f) { cv::threshold(f.src, f.dst, 100, 255, cv::THRESH_TOZERO_INV); }},
        {"ippiThreshold_GTVal_8u_C3R", CV_8UC3,
         [](Frames& f) {
             return ippiThreshold_GTVal_8u_C3R(f.src.data, f.srcStep(), f.dst.data, f.dstStep(),
                                               f.roi, bound3, zero3);
         },
         [](Frames& f) { cv::threshold(f.src, f.dst, 100, 255, cv::THRESH_TOZERO_INV); }},
        // Two bounds in place: OpenCV needs two passes for it.
        {"ippiThreshold_LTValGTVal_8u_C3IR", CV_8UC3,
         [](Frames& f) {
             return ippiThreshold_LTValGTVal_8u_C3IR(f.dst.data, f.dstStep(), f.roi, bound3, zero3,
                                                     top3, zero3);
         },
         [](Frames& f) {
             cv::threshold(f.dst, f.dst, 99, 255, cv::THRESH_TOZERO);
             cv::threshold(f.dst, f.dst, 200, 255, cv::THRESH_TOZERO_INV);
         }},
        {"ippiCompareC_8u_C1R", CV_8UC1,
         [](Frames& f) {
             return ippiCompareC_8u_C1R(f.src.data, f.srcStep(), 100, f.dst.data, f.dstStep(),
                                        f.roi, ippCmpGreater);
         },
         [](Frames& f) { cv::compare(f.src, cv::Scalar::all(100), f.dst, cv::CMP_GT); }},
        // All three channels at least the value: a range mask up to 255 in OpenCV.
        {"ippiCompareC_8u_C3R", CV_8UC3,
         [](Frames& f) {
             return ippiCompareC_8u_C3R(f.src.data, f.srcStep(), bound3, f.dst.data, f.dstStep(),
                                        f.roi, ippCmpGreaterEq);
         },
         [](Frames& f) { cv::inRange(f.src, cv::Scalar::all(100), cv::Scalar::all(255), f.dst); }},
    };
    for (Form const& form : forms) {
        const bool masks = std::string(form.name).find("Compare") != std::string::npos;
        for (FrameSize size : {frame640, frame1080})
            registerPrimitive(std::string(form.name) + "/" + size.name, size,
                              {form.type, masks ? CV_8UC1 : form.type}, form.primitive,
                              {{"opencv", form.opencv}});
    }
}

// The front end's range mask on a three-channel frame: a copy and three passes by design.
void registerInRange() {
    for (FrameSize size : {frame640, frame1080}) {
        const std::string group = std::string("inRange C3/") + size.name;
        auto frames = std::make_shared<Frames>(size, Shape{CV_8UC3, CV_8UC1});
        nuv::core::image::Image image(
            nuv::core::image::ImageInfo(size.width, size.height, nuv::core::image::RGB));
        for (int y = 0; y < size.height; ++y)
            std::copy(frames->src.ptr(y), frames->src.ptr(y) + 3 * size.width,
                      image.data() + y * image.step());
        registerAtSlots(group, [image](benchmark::State& state) {
            for (auto _ : state)
                benchmark::DoNotOptimize(nuv::cv::inRange(image, {50, 60, 70}, {180, 190, 200}));
        });
        registerContender(group, "opencv", [frames](benchmark::State& state) {
            for (auto _ : state)
                cv::inRange(frames->src, cv::Scalar(50, 60, 70), cv::Scalar(180, 190, 200),
                            frames->dst);
        });
    }
}

const bool registered = [] {
    registerForms();
    registerInRange();
    return true;
}();

}  // namespace

NUV_BENCHMARK_MAIN("opencv")
