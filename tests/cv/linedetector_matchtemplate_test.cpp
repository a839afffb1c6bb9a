// The line detector's band arithmetic, its tests of agreement and the lines it attaches; and
// template matching: a cut-out found at its place, sizes, null images and refusals.
#include <nuv/cv.h>

#include "support/images.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using nuv::test::attachedLines;

using namespace nuv::core::image;
using nuv::core::Line;
using nuv::core::Point;
using nuv::cv::LineDetector;

// A Gray image, dark, with rows y in `rows` bright left of column `edge(y)`.
template <class Edge>
Image steps(unsigned width, unsigned height, Edge edge, unsigned first = 0, unsigned last = ~0u,
            int level = 200) {
    Image image(ImageInfo(width, height, Gray));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            image.data()[y * image.step() + x] =
                y >= first && y <= last && int(x) < edge(y) ? level : 0;
    return image;
}
// Defaults on 100 rows: rows 60..79 searched, the finding in row 70 at the leftmost strongest
// column (29 for the edge between columns 29 and 30).
TEST(LineDetector, FindsTheEdgeInTheBandAndDrawsIt) {
    const LineDetector detector;
    Point point;
    const Image e =
        detector.findLine(steps(60, 100, [](int) { return 30; }), LineDetector::Vertical, &point);
    EXPECT_EQ(point, Point(29, 70));
    EXPECT_EQ(attachedLines(e), std::vector<Line>({Line(0, 60, 60, 60), Line(0, 80, 60, 80),
                                                   Line(19, 70, 39, 70), Line(29, 60, 29, 80)}));
    EXPECT_EQ(e.info().format, Gray);
    EXPECT_EQ(e.constData()[70 * e.step() + 29], 255);
    // Horizontal edges only: the same image has none.
    detector.findLine(steps(60, 100, [](int) { return 30; }), LineDetector::Horizontal, &point);
    EXPECT_EQ(point, Point(-1, -1));
}

// Bands that do not fit give no lines at all; a band without agreement gives its two limits.
TEST(LineDetector, BandsThatDoNotFitAndFindingsRefused) {
    const Image image = steps(60, 100, [](int) { return 30; });
    Point point;
    for (auto [start, height] : {std::pair{100u, 20u}, {101u, 20u}, {20u, 81u}, {20u, 0u}}) {
        LineDetector detector;
        detector.setSearchStart(start);
        detector.setSearchHeight(height);
        EXPECT_TRUE(
            attachedLines(detector.findLine(image, LineDetector::Vertical, &point)).empty());
        EXPECT_EQ(point, Point(-1, -1));
    }
    LineDetector single;  // one band row: a single column is never enough
    single.setSearchHeight(1);
    EXPECT_EQ(attachedLines(single.findLine(image, LineDetector::Vertical, &point)).size(), 2u);
    EXPECT_EQ(point, Point(-1, -1));
    LineDetector strict;
    strict.setThreshold(300);  // 255: a step of 50 (strength 200) is gone
    EXPECT_EQ(attachedLines(strict.findLine(steps(
                                                60, 100, [](int) { return 30; }, 0, ~0u, 50),
                                            LineDetector::Vertical, &point))
                  .size(),
              2u);
    EXPECT_EQ(point, Point(-1, -1));
    // Bright rows 61..68 give edges in rows 60..69: ten of twenty, not more than half.
    LineDetector half;
    half.findLine(steps(
                      60, 100, [](int) { return 30; }, 61, 68),
                  LineDetector::Vertical, &point);
    EXPECT_EQ(point, Point(-1, -1));
    half.findLine(steps(
                      60, 100, [](int) { return 30; }, 61, 69),
                  LineDetector::Vertical, &point);
    EXPECT_EQ(point, Point(29, 70));
    Point none;
    EXPECT_TRUE(half.findLine(Image(), LineDetector::Vertical, &none).isNull());
    EXPECT_EQ(none, Point(-1, -1));
}

// Two band rows with edges d columns apart: the median is the upper column, the mean
// deviation d / 2 truncated; 50 passes, 51 does not.
TEST(LineDetector, MeanDeviationOfFiftyPasses) {
    LineDetector detector;
    detector.setSearchStart(10);
    detector.setSearchHeight(2);  // rows 28 and 29
    for (auto [d, found] : {std::pair{101, true}, {102, false}}) {
        Point point;
        const Image image = steps(
            140, 40, [d = d](int y) { return y == 28 ? 20 : 20 + d; }, 28, 29, 30);
        detector.findLine(image, LineDetector::Vertical, &point);
        EXPECT_EQ(point, found ? Point(19 + d, 29) : Point(-1, -1)) << d;
    }
}

Image textured(unsigned width, unsigned height, std::mt19937& rng) {
    Image image(ImageInfo(width, height, BGR));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < 3 * width; ++x) image.data()[y * image.step() + x] = rng();
    return image;
}
Image cut(Image const& image, unsigned x0, unsigned y0, unsigned width, unsigned height) {
    Image part(ImageInfo(width, height, image.info().format));
    for (unsigned y = 0; y < height; ++y)
        std::copy_n(image.constData() + (y0 + y) * image.step() + 3 * x0, 3 * width,
                    part.data() + y * part.step());
    return part;
}

TEST(MatchTemplate, FindsACutOutAtItsPlace) {
    std::mt19937 rng(5);
    const Image image = textured(40, 30, rng);
    nuv::cv::MatchTemplate matcher;
    Point point(9, 9);
    float value = 9;
    matcher.match(cut(image, 7, 5, 10, 8), &point, &value);  // no image yet
    EXPECT_EQ(point, Point(0, 0));
    EXPECT_EQ(value, 0.0f);
    matcher.setImage(image);
    for (auto [x, y, w, h] :
         {std::tuple{7u, 5u, 10u, 8u}, {21u, 13u, 10u, 8u}, {3u, 2u, 6u, 9u}, {0u, 0u, 40u, 30u}}) {
        matcher.match(cut(image, x, y, w, h), &point, &value);
        EXPECT_EQ(point, Point(x, y));
        EXPECT_NEAR(value, 1.0f, 1e-4);
    }
    matcher.match(Image(), &point, &value);
    EXPECT_EQ(point, Point(0, 0));
    EXPECT_ANY_THROW(matcher.match(textured(41, 5, rng), &point, &value));
}

}  // namespace
