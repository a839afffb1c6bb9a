// One frame through the ordinary steps of a host: HSV conversion, a range mask of the reds
// (a hue range that wraps), colour segmentation, gray conversion, Sobel, Canny, labelling of
// the mask and Hough lines on the edges; beside the same steps written with OpenCV.
#include "frontend/harness.h"

#include <nuv/cv/HoughTransform.h>
#include <nuv/cv/Segmenter.h>
#include <nuv/cv/canny.h>
#include <nuv/cv/colorconversion.h>
#include <nuv/cv/filter.h>
#include <nuv/cv/labelmarkers.h>
#include <nuv/cv/threshold.h>

#include <opencv2/imgproc.hpp>

namespace nuv::bench::frontend {

namespace {

using Pointer = std::shared_ptr<Inputs const>;
namespace image = nuv::core::image;

// Every step's result lives on to the next frame, as in a host's loop.
struct LibraryPipeline {
    explicit LibraryPipeline(Inputs const& in)
        : lower(channelBounds(235, 100, 80)), upper(channelBounds(12, 255, 255)) {
        segmenter.setColorSegments(bundledClasses());
        hough.setMaxLineCount(64);
        hough.setDelta(1.0f, degree);
        hough.setThreshold(houghThreshold(in));
    }
    void run(Image const& frame) {
        hsv = nuv::cv::convert(frame, image::HSV);
        mask = nuv::cv::inRange(hsv, lower, upper);
        segments = segmenter.doSegmentation(frame);
        gray = nuv::cv::convert(frame, image::Gray);
        gradient = nuv::cv::filter::sobelVert3x3(gray, true);
        edges = nuv::cv::canny(gray, 40, 120);
        int markers = 0;
        labels = nuv::cv::labelmarkers(mask, &markers);
        lines = hough.transform(edges);
    }
    nuv::core::Vector<int> lower, upper;
    nuv::cv::Segmenter segmenter;
    nuv::cv::HoughTransform hough;
    Image hsv, mask, segments, gray, gradient, edges, labels, lines;
};

struct OpenCvPipeline {
    explicit OpenCvPipeline(Inputs const& in)
        : regions(bundledClasses()), threshold(houghThreshold(in)) {}
    void run(::cv::Mat const& frame) {
        ::cv::cvtColor(frame, hsv, ::cv::COLOR_BGR2HSV_FULL);
        ::cv::inRange(hsv, ::cv::Scalar(235, 100, 80), ::cv::Scalar(255, 255, 255), mask);
        ::cv::inRange(hsv, ::cv::Scalar(0, 100, 80), ::cv::Scalar(12, 255, 255), upper);
        ::cv::bitwise_or(mask, upper, mask);
        regions.run(frame);
        ::cv::cvtColor(frame, gray, ::cv::COLOR_BGR2GRAY);
        ::cv::Sobel(gray, gradient, CV_8U, 1, 0, 3, 1, 0, ::cv::BORDER_REPLICATE);
        ::cv::Canny(gray, edges, 40, 120, 3);
        ::cv::connectedComponents(mask, labels, 8, CV_16U);
        ::cv::HoughLines(edges, lines, 1.0, degree, threshold);
    }
    LargestRegions regions;
    int threshold;
    ::cv::Mat hsv, mask, upper, gray, gradient, edges, labels;
    std::vector<::cv::Vec2f> lines;
};

}  // namespace

std::vector<Case> pipelineCases() {
    return {{"frame pipeline",
             [](Pointer const& in) -> Call {
                 auto pipeline = std::make_shared<LibraryPipeline>(*in);
                 return [in, pipeline] { pipeline->run(in->bgrImage); };
             },
             [](Pointer const& in) -> Call {
                 auto pipeline = std::make_shared<OpenCvPipeline>(*in);
                 return [in, pipeline] { pipeline->run(in->bgr); };
             }}};
}

}  // namespace nuv::bench::frontend
