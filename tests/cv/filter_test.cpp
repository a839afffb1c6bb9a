// The filter front end and Canny: how results are sized (border or not, odd masks, regions),
// which pixel the primitives are pointed at, the refusals with their messages, and edges of
// a synthetic image.
#include <nuv/cv.h>

#include "support/images.h"
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using nuv::test::packedPixels;

using namespace nuv::core::image;
using namespace nuv::cv::filter;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

// An image whose pixel (x, y) is f(x, y) in every channel.
template <class F>
Image drawn(unsigned width, unsigned height, Format format, F f) {
    Image image(ImageInfo(width, height, format));
    const unsigned n = image.info().numChannels;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width * n; ++x)
            image.data()[y * image.step() + x] = static_cast<unsigned char>(f(x / n, y));
    return image;
}
Size sizeOf(Image const& image) {
    return Size(image.info().width, image.info().height);
}

// Dark above bright: the horizontal operator marks the two rows at the step, from the image's
// pixel (1, 1) without a border and over the bordered region with one.
TEST(Sobel, SizesAndThePixelsTheOperatorsSee) {
    const Image step = drawn(6, 6, Gray, [](int, int y) { return y < 3 ? 10 : 74; });
    const Bytes rows = {0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255, 0, 0, 0, 0};
    EXPECT_EQ(packedPixels(sobelHoriz3x3(step, false)), rows);
    EXPECT_EQ(packedPixels(filter(step, PredefindedFilterSobelHoriz3x3, false)), rows);
    EXPECT_EQ(packedPixels(sobelVert3x3(step, false)), Bytes(16, 0));

    Image region = drawn(9, 8, BGR, [](int x, int) { return x < 4 ? 90 : 40; });
    setRoi(region, Roi(Point(2, 3), Size(4, 2)));
    const Image vertical = filter(region, PredefindedFilterSobelVert3x3, true);
    EXPECT_EQ(sizeOf(vertical), Size(4, 2));
    EXPECT_EQ(packedPixels(vertical), Bytes({0, 0, 0, 200, 200, 200, 200, 200, 200, 0, 0, 0,
                                             0, 0, 0, 200, 200, 200, 200, 200, 200, 0, 0, 0}));
    EXPECT_EQ(sizeOf(sobelHoriz3x3(region, false)), Size(7, 6));  // the whole image
    setRoi(region, Roi(Point(2, 3), Size(2, 2)));
    EXPECT_EQ(sizeOf(sobelHoriz3x3(region, true)), Size(2, 2));
}

TEST(Sobel, SmallSourcesUnknownTypesAndOtherChannelCounts) {
    nuv::test::LogCapture log;
    const Image small = drawn(3, 5, Gray, [](int, int) { return 1; });
    EXPECT_EQ(sizeOf(sobelHoriz3x3(small, false)), Size(3, 5));
    EXPECT_EQ(sizeOf(sobelVert3x3(small, true)), Size(3, 5));  // bordered to 5x7: accepted
    const Image copy = filter(small, PredefindedFilterNone, false);
    EXPECT_EQ(copy.constData(), small.constData());
    EXPECT_TRUE(filter(small, static_cast<PredefindedFilter_t>(3), true).isNull());
    EXPECT_TRUE(filter(small, static_cast<PredefindedFilter_t>(-1), true).isNull());
    EXPECT_TRUE(sobelHoriz3x3(drawn(5, 5, BGRA, [](int, int) { return 1; }), false).isNull());
    EXPECT_EQ(log.lines(), Lines({"sobelHoriz3x3: source image to small: 3x5",
                                  "nuv::cv::filter::filter: undefinded filter type 3",
                                  "nuv::cv::filter::filter: undefinded filter type -1"}));
    EXPECT_EQ(friendlyName(PredefindedFilterSobelVert3x3), "SobelVert3x3");
    EXPECT_EQ(friendlyName(PredefindedFilterNone), "Undefined filter");
    EXPECT_EQ(friendlyName(static_cast<PredefindedFilter_t>(3)), "Undefined filter");
}

// On f = x + 10 y the extremes of a window lie at its corners, which shows the anchor.
TEST(RankFilters, OddMasksCentredWhereTheyFit) {
    Image ramp = drawn(8, 7, RGB, [](int x, int y) { return x + 10 * y; });
    EXPECT_EQ(packedPixels(min(ramp, Size(4, 4))),
              Bytes({0,  0,  0,  1,  1,  1,  2,  2,  2,  3,  3,  3,  10, 10, 10, 11, 11, 11,
                     12, 12, 12, 13, 13, 13, 20, 20, 20, 21, 21, 21, 22, 22, 22, 23, 23, 23}));
    setRoi(ramp, Roi(Point(1, 2), Size(4, 3)));
    EXPECT_EQ(packedPixels(max(ramp, Size(2, 0))),
              Bytes({23, 23, 23, 24, 24, 24, 33, 33, 33, 34, 34, 34, 43, 43, 43, 44, 44, 44}));
    EXPECT_EQ(packedPixels(min(ramp, Size(0, 1))),
              Bytes({21, 21, 21, 22, 22, 22, 23, 23, 23, 24, 24, 24, 31, 31, 31, 32, 32, 32,
                     33, 33, 33, 34, 34, 34, 41, 41, 41, 42, 42, 42, 43, 43, 43, 44, 44, 44}));
    EXPECT_TRUE(min(ramp, Size(3, 3)).isNull());  // the region is only 3 high
    const Image gray = drawn(6, 5, Gray, [](int x, int y) { return x + 10 * y; });
    EXPECT_TRUE(max(gray, Size(5, 5)).isNull());
    EXPECT_EQ(packedPixels(max(gray, Size(5, 3))), Bytes({24, 25, 34, 35, 44, 45}));
    const Image bgra = drawn(6, 6, BGRA, [](int, int) { return 1; });
    EXPECT_EQ(sizeOf(min(bgra, Size(3, 3))), Size(4, 4));
}

TEST(RankFilters, ReplicatedBorderOfTheRegion) {
    Image ramp = drawn(10, 10, Gray, [](int x, int y) { return x + 10 * y; });
    const Image bordered = replicateBorder(ramp, Kernel(5, 3, 2, 1));
    ASSERT_EQ(sizeOf(bordered), Size(14, 12));
    const Bytes b = packedPixels(bordered);
    EXPECT_EQ(Bytes(b.begin(), b.begin() + 14), Bytes({0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9}));
    EXPECT_EQ(b[14 * 11 + 13], 99);
    setRoi(ramp, Roi(Point(3, 4), Size(2, 1)));
    EXPECT_EQ(packedPixels(replicateBorder(ramp, Kernel(3, 2, 0, 1))),
              Bytes({43, 44, 44, 44, 43, 44, 44, 44}));
    EXPECT_TRUE(replicateBorder(drawn(2, 2, BGRA, [](int, int) { return 1; }), Kernel(3, 3, 1, 1))
                    .isNull());
    // A mask side of 0 on an empty region leaves no size to make; nothing is thrown.
    setRoi(ramp, Roi(Point(3, 4), Size(0, 0)));
    EXPECT_TRUE(replicateBorder(ramp, Kernel(0, 0, 0, 0)).isNull());
    EXPECT_EQ(sizeOf(replicateBorder(ramp, Kernel(3, 3, 1, 1))), Size(2, 2));
}

// A bright square on dark: edges on its outline only, within the region.
TEST(Canny, EdgesOfASquareInARegion) {
    Image square = drawn(40, 30, Gray, [](int x, int y) {
        return x >= 10 && x < 30 && y >= 8 && y < 22 ? 200 : 20;
    });
    auto edges = [](Image const& e) {
        int count = 0;
        for (unsigned char v : packedPixels(e)) count += v == 255 ? 1 : v == 0 ? 0 : 1000;
        return count;
    };
    const Image whole = nuv::cv::canny(square, 50, 150);
    EXPECT_EQ(sizeOf(whole), Size(40, 30));
    const int outline = 2 * 20 + 2 * 14 - 4;  // one pixel thick
    EXPECT_GE(edges(whole), outline - 8);
    EXPECT_LE(edges(whole), outline + 8);
    for (unsigned y = 0; y < 30; ++y) {  // nothing far from the outline
        for (unsigned x = 0; x < 40; ++x) {
            const bool outside = x < 8 || x > 31 || y < 6 || y > 23;
            const bool inside = x > 12 && x < 27 && y > 10 && y < 19;
            if (outside || inside) {
                EXPECT_EQ(whole.constData()[y * whole.step() + x], 0);
            }
        }
    }
    setRoi(square, Roi(Point(0, 0), Size(9, 30)));  // left of the square: no edge
    const Image left = nuv::cv::canny(square, 50, 150);
    EXPECT_EQ(sizeOf(left), Size(9, 30));
    EXPECT_EQ(edges(left), 0);
    setRoi(square, Roi(Point(5, 2), Size(30, 26)));
    EXPECT_EQ(edges(nuv::cv::canny(square, 150, 50)), edges(whole));
    nuv::test::LogCapture log;
    EXPECT_TRUE(nuv::cv::canny(drawn(8, 8, BGR, [](int, int) { return 0; }), 1, 2).isNull());
    EXPECT_TRUE(nuv::cv::canny(Image(), 1, 2).isNull());
    EXPECT_EQ(log.lines(), Lines(2, "nuv::cv::canny works only on single channel images"));
}

}  // namespace
