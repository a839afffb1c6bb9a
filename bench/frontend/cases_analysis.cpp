// Labelling and its statistics, Hough lines, the line detector, template matching and colour
// segmentation, on the bundled frame: its coloured objects as the mask, its Canny edges for
// Hough, its dark post for the line detector, its yellow disc as the template.
#include "frontend/harness.h"

#include <nuv/core/Point.h>
#include <nuv/core/Vector.h>
#include <nuv/cv/HoughTransform.h>
#include <nuv/cv/LineDetector.h>
#include <nuv/cv/MatchTemplate.h>
#include <nuv/cv/Segmenter.h>
#include <nuv/cv/labelmarkers.h>
#include <nuv/opencv.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace nuv::bench::frontend {

namespace {

using Pointer = std::shared_ptr<Inputs const>;

Case labelCase() {
    return {"labelmarkers mask",
            [](Pointer const& in) {
                return steady([in] {
                    int markers = 0;
                    return nuv::cv::labelmarkers(in->maskImage, &markers);
                });
            },
            intoReused([](Inputs const& in, ::cv::Mat& dst) {
                ::cv::connectedComponents(in.mask, dst, 8, CV_16U);
            })};
}

// OpenCV has no statistics of a given label image; its nearest call labels the mask as well,
// so this row's OpenCV time is an upper bound of the same job.
Case labelInfoCase() {
    return {"labelmarkersinfo (cv labels too)",
            [](Pointer const& in) -> Call {
                auto centers = std::make_shared<nuv::core::Vector<nuv::core::Point>>();
                auto sizes = std::make_shared<nuv::core::Vector<int>>();
                return [in, centers, sizes] {
                    nuv::cv::labelmarkersinfo(in->labelImage, 1, *centers, *sizes);
                };
            },
            [](Pointer const& in) -> Call {
                auto m = std::make_shared<std::vector<::cv::Mat>>(3);
                return [in, m] {
                    ::cv::connectedComponentsWithStats(in->mask, (*m)[0], (*m)[1], (*m)[2], 8,
                                                       CV_32S);
                };
            }};
}

Case houghCase() {
    return {"HoughTransform::transform edges",
            [](Pointer const& in) {
                auto hough = std::make_shared<nuv::cv::HoughTransform>();
                hough->setMaxLineCount(64);
                hough->setDelta(1.0f, degree);
                hough->setThreshold(houghThreshold(*in));
                return steady([in, hough] { return hough->transform(in->edgesImage); });
            },
            [](Pointer const& in) -> Call {
                auto lines = std::make_shared<std::vector<::cv::Vec2f>>();
                return [in, lines] {
                    ::cv::HoughLines(in->edges, *lines, 1.0, degree, houghThreshold(*in));
                };
            }};
}

// The band scanned above the bottom edge, in the frame's rows: 20 of 480, scaled.
unsigned bandRows(Inputs const& in) {
    return static_cast<unsigned>(in.size.height / 24);
}

// The OpenCV side of the line detector: gray, vertical edges, weak ones zeroed, then the
// strongest column per band row and their median.
struct OpenCvLineDetector {
    ::cv::Mat gray, edges;
    std::vector<int> columns;
    int find(Inputs const& in) {
        ::cv::cvtColor(in.bgr, gray, ::cv::COLOR_BGR2GRAY);
        ::cv::Sobel(gray, edges, CV_8U, 1, 0, 3, 1, 0, ::cv::BORDER_REPLICATE);
        ::cv::threshold(edges, edges, 59, 0, ::cv::THRESH_TOZERO);
        const int bottom = in.size.height - static_cast<int>(bandRows(in));
        columns.clear();
        for (int y = bottom - static_cast<int>(bandRows(in)); y < bottom; ++y) {
            double best = 0;
            ::cv::Point at;
            ::cv::minMaxLoc(edges.row(y), nullptr, &best, nullptr, &at);
            if (best > 0) columns.push_back(at.x);
        }
        if (columns.size() < 2) return -1;
        std::nth_element(columns.begin(), columns.begin() + columns.size() / 2, columns.end());
        return columns[columns.size() / 2];
    }
};

Case lineCase() {
    return {"LineDetector::findLine BGR",
            [](Pointer const& in) {
                auto detector = std::make_shared<nuv::cv::LineDetector>();
                detector->setThreshold(60);
                detector->setSearchStart(bandRows(*in));
                detector->setSearchHeight(bandRows(*in));
                return steady([in, detector] {
                    nuv::core::Point found;
                    return detector->findLine(in->bgrImage, nuv::cv::LineDetector::Vertical,
                                              &found);
                });
            },
            [](Pointer const& in) -> Call {
                auto detector = std::make_shared<OpenCvLineDetector>();
                return [in, detector] { benchmark::DoNotOptimize(detector->find(*in)); };
            }};
}

// 48 by 48 pixels on the yellow disc, wherever the frame's size puts it.
::cv::Mat templateOf(Inputs const& in) {
    const int x = in.size.width * 470 / 640 - 24, y = in.size.height * 360 / 480 - 24;
    return in.bgr(::cv::Rect(x, y, 48, 48)).clone();
}

Case matchCase() {
    return {"MatchTemplate::match 48x48",
            [](Pointer const& in) -> Call {
                auto matcher = std::make_shared<nuv::cv::MatchTemplate>();
                matcher->setImage(in->bgrImage);
                const Image pattern = nuv::opencv::toImage(templateOf(*in), nuv::core::image::BGR);
                return [matcher, pattern] {
                    nuv::core::Point at;
                    float value = 0;
                    matcher->match(pattern, &at, &value);
                };
            },
            [](Pointer const& in) -> Call {
                auto scores = std::make_shared<::cv::Mat>();
                const ::cv::Mat pattern = templateOf(*in);
                return [in, scores, pattern] {
                    ::cv::matchTemplate(in->bgr, pattern, *scores, ::cv::TM_CCOEFF_NORMED);
                    double best = 0;
                    ::cv::Point at;
                    ::cv::minMaxLoc(*scores, nullptr, &best, nullptr, &at);
                };
            }};
}

Case segmentationCase() {
    return {"Segmenter::doSegmentation BGR",
            [](Pointer const& in) {
                auto segmenter = std::make_shared<nuv::cv::Segmenter>();
                segmenter->setColorSegments(bundledClasses());
                return steady([in, segmenter] { return segmenter->doSegmentation(in->bgrImage); });
            },
            [](Pointer const& in) -> Call {
                auto regions = std::make_shared<LargestRegions>(bundledClasses());
                return [in, regions] { regions->run(in->bgr); };
            }};
}

}  // namespace

std::vector<Case> analysisCases() {
    return {labelCase(), labelInfoCase(), houghCase(), lineCase(), matchCase(), segmentationCase()};
}

}  // namespace nuv::bench::frontend
