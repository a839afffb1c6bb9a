// The Hough front end: lines of the region in region coordinates, the segment geometry, the
// shared buffers, and each refusal with its message and an unlined copy.
#include <nuv/cv.h>

#include "support/images.h"
#include "support/log_capture.h"

#include <gtest/gtest.h>

namespace {

using nuv::test::attachedLines;

using namespace nuv::core::image;
using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using Lines = std::vector<std::string>;

// A vertical edge at column 13 and a horizontal one at row 5 of a 30x20 Gray image.
Image edges() {
    Image image(ImageInfo(30, 20, Gray));
    for (unsigned y = 0; y < 20; ++y)
        for (unsigned x = 0; x < 30; ++x)
            image.data()[y * image.step() + x] = x == 13 || y == 5 ? 255 : 0;
    return image;
}

TEST(Hough, StrongestLinesOfTheRegionAsLongSegments) {
    nuv::cv::HoughTransform hough;
    hough.setMaxLineCount(2);
    hough.setDelta(1.0f, 3.14159265f / 2);  // angles 0 and pi/2
    hough.setThreshold(10);
    Image image = edges();
    const Image found = hough.transform(image);
    EXPECT_EQ(found.constData(), image.constData());  // a copy of the input
    // The edge at row 5 has 30 votes at pi/2, whose float cosine is a little below 0, so the
    // truncated ends differ by a row; the edge at column 13 has 20 votes at 0.
    const std::vector<Line> both = attachedLines(found);
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[0], Line(-1000, 4, 1000, 5));
    EXPECT_EQ(both[1], Line(13, 1000, 13, -1000));
    // In a region from (10, 2) both edges have 15 votes; the lower angle comes first, the
    // vertical edge at the region's column 3.
    setRoi(image, Roi(Point(10, 2), Size(15, 15)));
    hough.setMaxLineCount(1);
    hough.setThreshold(14);
    const std::vector<Line> region = attachedLines(hough.transform(image));
    ASSERT_EQ(region.size(), 1u);
    EXPECT_EQ(region[0], Line(3, 1000, 3, -1000));
    hough.setThreshold(100);
    EXPECT_TRUE(attachedLines(hough.transform(image)).empty());
}

TEST(Hough, RefusalsGiveTheInputWithoutLines) {
    nuv::test::LogCapture log;
    const Image image = edges();
    nuv::cv::HoughTransform fresh;
    EXPECT_TRUE(attachedLines(fresh.transform(image)).empty());  // zero steps
    fresh.setDelta(1.0f, 0.1f);
    EXPECT_TRUE(attachedLines(fresh.transform(image)).empty());  // no line count
    const Image colour = fresh.transform(Image(ImageInfo(8, 8, BGR)));
    EXPECT_EQ(colour.info().width, 8u);
    nuv::cv::HoughTransform other;
    other.setMaxLineCount(3);
    other.setDelta(1.0f, 0.1f);
    other.setThreshold(5);
    fresh.setMaxLineCount(1);  // the shared line buffer of three serves both
    fresh.setThreshold(5);
    EXPECT_EQ(attachedLines(fresh.transform(image)).size(), 1u);
    EXPECT_EQ(attachedLines(other.transform(image)).size(), 3u);
    nuv::cv::HoughTransform::freeBuffer();
    EXPECT_TRUE(attachedLines(other.transform(image)).empty());  // no line buffer any more
    const std::string invalid = "nuv::cv::HoughtTransform::transform: invalid arguments";
    EXPECT_EQ(log.lines(),
              Lines({invalid, invalid,
                     "nuv::cv::HoughtTransform::transform: only binary images accepted", invalid}));
    other.setMaxLineCount(3);
    EXPECT_EQ(attachedLines(other.transform(image)).size(), 3u);
}

}  // namespace
