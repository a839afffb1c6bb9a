// Each capability of the library on the frame, beside the OpenCV calls a user would write for
// the same job.
#include "showcase.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdio>

namespace nuv::demo {

using nuv::core::Point;
using nuv::core::Size;
using nuv::core::Vector;
using nuv::core::image::Image;
namespace filter = nuv::cv::filter;

namespace {

const ::cv::Scalar kWhite(255, 255, 255), kYellow(0, 230, 255), kRed(40, 40, 255);

std::string text(char const* format, double a = 0, double b = 0, double c = 0) {
    char line[160];
    std::snprintf(line, sizeof line, format, a, b, c);
    return line;
}

// Times the library's call at slot 0 and at the selected slot, and OpenCV's.
template <class Ours, class Theirs>
void time(Shown& shown, int slot, int rounds, Ours ours, Theirs theirs) {
    shown.slot0 = medianMicroseconds(0, rounds, ours);
    shown.selected = medianMicroseconds(slot, rounds, ours);
    shown.opencv = medianMicroseconds(slot, rounds, theirs);
}

::cv::Mat dimmed(::cv::Mat const& picture) {
    return picture * 0.45;
}

void drawLines(::cv::Mat& canvas, Image const& image, ::cv::Scalar color, int thickness = 2) {
    for (nuv::core::Line const& line : nuv::core::image::lines(image))
        ::cv::line(canvas, {line.x0(), line.y0()}, {line.x1(), line.y1()}, color, thickness,
                   ::cv::LINE_AA);
}

// Each region's runs in its class's colour over the dimmed frame, its centre and name.
::cv::Mat regionsOver(::cv::Mat const& picture, nuv::core::image::SegmentList const& regions,
                      std::vector<std::string>& facts) {
    ::cv::Mat canvas = dimmed(picture);
    for (auto it = regions.constBegin(); it != regions.constEnd(); ++it) {
        if (it->pixelCount == 0) {
            facts.push_back(it->name + ": not found");
            continue;
        }
        const ::cv::Scalar color(it->color.r(), it->color.g(), it->color.b());
        for (auto line = it->lines.constBegin(); line != it->lines.constEnd(); ++line)
            ::cv::line(canvas, {line->x0(), line->y0()}, {line->x1(), line->y1()}, color);
        const ::cv::Point centre(it->center.x(), it->center.y());
        ::cv::drawMarker(canvas, centre, kWhite, ::cv::MARKER_CROSS, 18, 2);
        ::cv::putText(canvas, it->name, centre + ::cv::Point(12, -10), ::cv::FONT_HERSHEY_SIMPLEX,
                      0.6, kWhite, 2, ::cv::LINE_AA);
        facts.push_back(it->name + ": " + std::to_string(it->pixelCount) + " pixels, centre (" +
                        std::to_string(it->center.x()) + ", " + std::to_string(it->center.y()) +
                        "), " + std::to_string(it->lines.size()) + " runs");
    }
    return canvas;
}

// OpenCV's way to the same regions: per class a box of channel values, its mask, and the
// largest connected component.
struct ClassBoxes {
    explicit ClassBoxes(nuv::cv::SegmentList const& classes) {
        for (auto it = classes.constBegin(); it != classes.constEnd(); ++it) {
            ::cv::Scalar lo, hi;
            for (unsigned c = 0; c < 3; ++c) {
                int first = 255, last = 0;
                for (int v = 0; v < 256; ++v)
                    if (it->colorIndex(c).at(static_cast<unsigned char>(v)))
                        first = std::min(first, v), last = std::max(last, v);
                lo[c] = first, hi[c] = last;
            }
            boxes.push_back({lo, hi});
        }
    }
    void run(::cv::Mat const& picture) {
        for (auto const& [lo, hi] : boxes) {
            ::cv::inRange(picture, lo, hi, mask);
            ::cv::connectedComponentsWithStats(mask, labels, stats, centres, 8, CV_32S);
        }
    }
    std::vector<std::pair<::cv::Scalar, ::cv::Scalar>> boxes;
    ::cv::Mat mask, labels, stats, centres;
};

Shown segmentation(Frame const& f) {
    Shown s{"segments", "segmentation by trained classes"};
    nuv::cv::Segmenter segmenter;
    segmenter.setColorSegments(f.classes);
    const Image result = segmenter.doSegmentation(f.image);
    s.picture = regionsOver(f.picture, nuv::core::image::segmentList(result), s.facts);
    ClassBoxes boxes(f.classes);
    auto ours = [&] { segmenter.doSegmentation(f.image); };
    auto theirs = [&] { boxes.run(f.picture); };
    time(s, f.slot, 100, ours, theirs);
    s.opencvCall = "cv::inRange + cv::connectedComponentsWithStats per class";
    return s;
}

// Classes for the HSV frame, trained from the HSV pixels of the runs that the BGR classes
// found, so the segmenter takes the converted frame.
Shown hsvSegmentation(Frame const& f) {
    Shown s{"hsv", "convert to HSV, segmented"};
    const Image hsv = nuv::cv::convert(f.image, nuv::core::image::HSV);
    nuv::cv::Segmenter bgr;
    bgr.setColorSegments(f.classes);
    const auto found = nuv::core::image::segmentList(bgr.doSegmentation(f.image));
    nuv::cv::SegmentList hsvClasses;
    for (auto it = found.constBegin(); it != found.constEnd(); ++it) {
        if (it->pixelCount == 0) continue;
        nuv::cv::Segment segment;
        segment.setName(it->name);
        for (auto line = it->lines.constBegin(); line != it->lines.constEnd(); ++line)
            for (int x = line->x0(); x <= line->x1(); ++x) {
                unsigned char const* p = hsv.constData() + line->y0() * hsv.step() + 3 * x;
                nuv::core::Color color;
                color.setR(p[0]), color.setG(p[1]), color.setB(p[2]);
                segment.addColor(color);
            }
        for (unsigned c = 0; c < 3; ++c) segment.setDilate(c, 2);
        segment.applyDilation();
        segment.setMeanColor(it->color);  // drawn in the frame's colours
        hsvClasses.append(segment);
    }
    nuv::cv::Segmenter segmenter;
    segmenter.setColorSegments(hsvClasses);
    s.picture = regionsOver(f.picture, nuv::core::image::segmentList(segmenter.doSegmentation(hsv)),
                            s.facts);
    ::cv::Mat theirsHsv;
    auto ours = [&] { nuv::cv::convert(f.image, nuv::core::image::HSV); };
    auto theirs = [&] { ::cv::cvtColor(f.picture, theirsHsv, ::cv::COLOR_BGR2HSV_FULL); };
    time(s, f.slot, 200, ours, theirs);
    s.opencvCall = "cv::cvtColor(COLOR_BGR2HSV_FULL) (times are of the conversion)";
    return s;
}

// Saturated reds: hue 240..255 and 0..9 as one range that passes the wrap.
Shown wrappedHue(Frame const& f) {
    Shown s{"inrange", "inRange, hue wrapped round red"};
    const Image hsv = nuv::cv::convert(f.image, nuv::core::image::HSV);
    const Vector<int> lower = {240, 120, 60}, upper = {265, 255, 255};
    const Image mask = nuv::cv::inRange(hsv, lower, upper);
    const ::cv::Mat m = toPicture(mask);
    s.picture = dimmed(f.picture);
    s.picture.setTo(kRed, m);
    s.facts.push_back(text("%.0f pixels in the wrapped range", ::cv::countNonZero(m)));
    ::cv::Mat theirsHsv, a, b;
    ::cv::cvtColor(f.picture, theirsHsv, ::cv::COLOR_BGR2HSV_FULL);
    auto ours = [&] { nuv::cv::inRange(hsv, lower, upper); };
    auto theirs = [&] {
        ::cv::inRange(theirsHsv, ::cv::Scalar(240, 120, 60), ::cv::Scalar(255, 255, 255), a);
        ::cv::inRange(theirsHsv, ::cv::Scalar(0, 120, 60), ::cv::Scalar(9, 255, 255), b);
        ::cv::bitwise_or(a, b, a);
    };
    time(s, f.slot, 300, ours, theirs);
    s.opencvCall = "two cv::inRange and cv::bitwise_or";
    return s;
}

Shown sobel(Frame const& f, Image const& gray) {
    Shown s{"sobel", "Sobel, vertical edges"};
    const Image edges = filter::sobelVert3x3(gray, true);
    s.picture = toPicture(edges);
    s.facts.push_back(
        text("%.0f pixels with an edge of 100 or more", ::cv::countNonZero(s.picture >= 100)));
    const ::cv::Mat g = toPicture(gray);
    ::cv::Mat theirs;
    auto ours = [&] { filter::sobelVert3x3(gray, true); };
    auto opencv = [&] { ::cv::Sobel(g, theirs, CV_8U, 1, 0, 3, -1.0); };
    time(s, f.slot, 300, ours, opencv);
    s.opencvCall = "cv::Sobel(dx 1, scale -1, CV_8U)";
    return s;
}

Shown canny(Frame const& f, Image const& gray) {
    Shown s{"canny", "Canny edges"};
    s.picture = toPicture(nuv::cv::canny(gray, 50, 150));
    s.facts.push_back(text("%.0f edge pixels", ::cv::countNonZero(s.picture)));
    const ::cv::Mat g = toPicture(gray);
    ::cv::Mat theirs;
    auto ours = [&] { nuv::cv::canny(gray, 50, 150); };
    auto opencv = [&] { ::cv::Canny(g, theirs, 50, 150); };
    time(s, f.slot, 100, ours, opencv);
    s.opencvCall = "cv::Canny";
    return s;
}

// The morphological gradient: max minus min over 5x5, which outlines every object.
Shown rankFilters(Frame const& f) {
    Shown s{"minmax", "min and max 5x5 (max - min)"};
    const ::cv::Mat low = toPicture(filter::min(f.image, Size(5, 5)));
    const ::cv::Mat high = toPicture(filter::max(f.image, Size(5, 5)));
    ::cv::subtract(high, low, s.picture);
    s.facts.push_back(
        text("results %.0fx%.0f: the mask fits 2 pixels in from each side", low.cols, low.rows));
    const ::cv::Mat kernel = ::cv::getStructuringElement(::cv::MORPH_RECT, {5, 5});
    ::cv::Mat a, b;
    auto ours = [&] {
        filter::min(f.image, Size(5, 5));
        filter::max(f.image, Size(5, 5));
    };
    auto theirs = [&] {
        ::cv::erode(f.picture, a, kernel);
        ::cv::dilate(f.picture, b, kernel);
    };
    time(s, f.slot, 100, ours, theirs);
    s.opencvCall = "cv::erode + cv::dilate";
    return s;
}

// Components of the saturated pixels with their centres.
Shown labelling(Frame const& f) {
    Shown s{"labels", "labelmarkers, centres"};
    const Image hsv = nuv::cv::convert(f.image, nuv::core::image::HSV);
    const Image mask = nuv::cv::inRange(hsv, Vector<int>{0, 110, 60}, Vector<int>{255, 255, 255});
    int count = 0;
    const Image labels = nuv::cv::labelmarkers(mask, &count);
    Vector<Point> centres;
    Vector<int> sizes;
    nuv::cv::labelmarkersinfo(labels, 200, centres, sizes);
    const ::cv::Mat l = toPicture(labels);
    ::cv::Mat coloured;
    ::cv::applyColorMap(l * 37, coloured, ::cv::COLORMAP_HSV);
    s.picture = dimmed(f.picture);
    coloured.copyTo(s.picture, l > 0);
    s.facts.push_back(text("%.0f components, %.0f of 200 pixels or more", count, sizes.size()));
    for (int k = 0; k < sizes.size(); ++k) {
        const ::cv::Point centre(centres[k].x(), centres[k].y());
        ::cv::drawMarker(s.picture, centre, kWhite, ::cv::MARKER_CROSS, 18, 2);
        s.facts.push_back(text("  centre (%.0f, %.0f), %.0f pixels", centre.x, centre.y, sizes[k]));
    }
    const ::cv::Mat m = toPicture(mask);
    ::cv::Mat theirLabels, stats, theirCentres;
    auto ours = [&] { nuv::cv::labelmarkers(mask, &count); };
    auto theirs = [&] {
        ::cv::connectedComponentsWithStats(m, theirLabels, stats, theirCentres, 8, CV_16U);
    };
    time(s, f.slot, 200, ours, theirs);
    s.opencvCall = "cv::connectedComponentsWithStats (8-connected)";
    return s;
}

Shown hough(Frame const& f, Image const& gray) {
    Shown s{"hough", "Hough lines on Canny edges"};
    const Image edges = nuv::cv::canny(gray, 50, 150);
    nuv::cv::HoughTransform transform;
    transform.setMaxLineCount(8);
    transform.setDelta(1.0f, 3.14159265f / 180);
    transform.setThreshold(70);
    const Image found = transform.transform(edges);
    s.picture = dimmed(f.picture);
    drawLines(s.picture, found, kYellow);
    s.facts.push_back(
        text("%.0f lines (at most 8, above 70 votes)", nuv::core::image::lines(found).size()));
    const ::cv::Mat e = toPicture(edges);
    std::vector<::cv::Vec2f> theirs;
    auto ours = [&] { transform.transform(edges); };
    auto opencv = [&] { ::cv::HoughLines(e, theirs, 1.0, 3.14159265 / 180, 70); };
    time(s, f.slot, 50, ours, opencv);
    s.opencvCall = "cv::HoughLines";
    return s;
}

Shown lineDetector(Frame const& f) {
    Shown s{"line", "line detector: band and cross"};
    nuv::cv::LineDetector detector;
    detector.setThreshold(60);
    Point point;
    const Image e = detector.findLine(f.image, nuv::cv::LineDetector::Vertical, &point);
    s.picture = dimmed(f.picture);
    drawLines(s.picture, e, kYellow);
    s.facts.push_back(point.x() < 0 ? std::string("no line in the band")
                                    : text("line at column %.0f, row %.0f", point.x(), point.y()));
    ::cv::Mat gray, edges;
    auto ours = [&] { detector.findLine(f.image, nuv::cv::LineDetector::Vertical, &point); };
    auto theirs = [&] {
        ::cv::cvtColor(f.picture, gray, ::cv::COLOR_BGR2GRAY);
        ::cv::Sobel(gray, edges, CV_8U, 1, 0, 3, -1.0);
        ::cv::threshold(edges, edges, 59, 0, ::cv::THRESH_TOZERO);
        for (int y = edges.rows - 40; y < edges.rows - 20; ++y) {
            ::cv::Point best;
            ::cv::minMaxLoc(edges.row(y), nullptr, nullptr, nullptr, &best);
        }
    };
    time(s, f.slot, 200, ours, theirs);
    s.opencvCall = "cvtColor, Sobel, threshold, per-row argmax";
    return s;
}

// A patch cut from the frame found again: the bundled frame's marker, or on other pictures
// a patch at a third of the way in.
Shown templateMatch(Frame const& f) {
    Shown s{"template", "template matching"};
    const ::cv::Rect marker(34, 380, 48, 48), frame(0, 0, f.picture.cols, f.picture.rows);
    const ::cv::Rect cut = (marker & frame) == marker
                               ? marker
                               : ::cv::Rect(f.picture.cols / 3, f.picture.rows / 3,
                                            f.picture.cols / 8 + 1, f.picture.rows / 8 + 1);
    const Image patch = toImage(f.picture(cut).clone());
    nuv::cv::MatchTemplate matcher;
    matcher.setImage(f.image);
    Point best;
    float score = 0;
    matcher.match(patch, &best, &score);
    s.picture = dimmed(f.picture);
    f.picture(cut).copyTo(s.picture(cut));
    ::cv::rectangle(s.picture, ::cv::Rect(best.x(), best.y(), cut.width, cut.height), kYellow, 2);
    s.facts.push_back(text("patch cut at (%.0f, %.0f), found at (%.0f, ", cut.x, cut.y, best.x()) +
                      text("%.0f), score %.3f", best.y(), score));
    const ::cv::Mat p = f.picture(cut).clone();
    ::cv::Mat scores;
    auto ours = [&] { matcher.match(patch, &best, &score); };
    auto theirs = [&] {
        ::cv::matchTemplate(f.picture, p, scores, ::cv::TM_CCOEFF_NORMED);
        ::cv::minMaxLoc(scores, nullptr, nullptr, nullptr, nullptr);
    };
    time(s, f.slot, 15, ours, theirs);
    s.opencvCall = "cv::matchTemplate(TM_CCOEFF_NORMED) + cv::minMaxLoc";
    return s;
}

}  // namespace

std::vector<Shown> showEverything(Frame const& frame) {
    const Image gray = nuv::cv::convert(frame.image, nuv::core::image::Gray);
    return {segmentation(frame), hsvSegmentation(frame), wrappedHue(frame), sobel(frame, gray),
            canny(frame, gray),  rankFilters(frame),     labelling(frame),  hough(frame, gray),
            lineDetector(frame), templateMatch(frame)};
}

}  // namespace nuv::demo
