// nuv::cv::transpose: the region of interest with rows and columns swapped, in the source's
// format, for one and three channels; anything else gives the null image without a word.
#include <nuv/core.h>
#include <nuv/cv/transpose.h>

#include "support/log_capture.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

// Every byte holds a value derived from its row and byte position, so a misplaced row,
// column or channel shows.
unsigned char valueAt(unsigned y, unsigned xByte) {
    return static_cast<unsigned char>(y * 31 + xByte * 7 + 3);
}

Image numbered(ImageInfo const& info, unsigned step = 0) {
    Image image = step ? Image(info, step) : Image(info);
    unsigned char* p = image.data();
    const unsigned rowBytes = info.width * info.numChannels;
    for (unsigned y = 0; y < info.height; ++y)
        for (unsigned x = 0; x < rowBytes; ++x) p[y * image.step() + x] = valueAt(y, x);
    return image;
}

// Result pixel (x, y) of every channel is source pixel (offset.x + y, offset.y + x).
void expectTransposeOf(Image const& result, Image const& source, Roi const& roi) {
    const unsigned channels = source.info().numChannels;
    ASSERT_EQ(result.info().width, roi.size().height());
    ASSERT_EQ(result.info().height, roi.size().width());
    for (unsigned y = 0; y < result.info().height; ++y)
        for (unsigned x = 0; x < result.info().width; ++x)
            for (unsigned c = 0; c < channels; ++c)
                ASSERT_EQ(result.constData()[y * result.step() + x * channels + c],
                          valueAt(roi.offset().y() + x, (roi.offset().x() + y) * channels + c))
                    << "row " << y << " pixel " << x << " channel " << c;
}

TEST(Transpose, TwoByThreeGray) {
    nuv::test::forEachSlot([](int) {
        Image source(ImageInfo(2, 3, nuv::core::image::Gray));
        const unsigned char pixels[3][2] = {{1, 2}, {3, 4}, {5, 6}};
        for (unsigned y = 0; y < 3; ++y)
            for (unsigned x = 0; x < 2; ++x) source.data()[y * source.step() + x] = pixels[y][x];
        nuv::test::LogCapture log;

        Image result = nuv::cv::transpose(source);

        ASSERT_FALSE(result.isNull());
        EXPECT_EQ(result.info().width, 3u);
        EXPECT_EQ(result.info().height, 2u);
        EXPECT_EQ(result.info().format, nuv::core::image::Gray);
        for (unsigned y = 0; y < 2; ++y)
            for (unsigned x = 0; x < 3; ++x)
                EXPECT_EQ(result.constData()[y * result.step() + x], pixels[x][y]);
        EXPECT_TRUE(log.lines().empty());
    });
}

// The format is kept: RGB stays RGB, HSV stays HSV, though the bytes are only moved.
TEST(Transpose, WholeImagesKeepTheirFormat) {
    nuv::test::forEachSlot([](int) {
        for (auto format : {nuv::core::image::Gray, nuv::core::image::RGB, nuv::core::image::BGR,
                            nuv::core::image::HSV}) {
            for (unsigned step : {0u, 208u}) {
                Image source = numbered(ImageInfo(67, 45, format), step);
                nuv::test::LogCapture log;

                Image result = nuv::cv::transpose(source);

                ASSERT_FALSE(result.isNull());
                EXPECT_EQ(result.info().format, format);
                EXPECT_EQ(result.info().numChannels, source.info().numChannels);
                EXPECT_EQ(result.info().bytesPerChannel, 1u);
                expectTransposeOf(result, source, Roi(Point(0, 0), Size(67, 45)));
                EXPECT_TRUE(log.lines().empty());
            }
        }
    });
}

TEST(Transpose, RegionOfInterestIsTransposedAlone) {
    nuv::test::forEachSlot([](int) {
        for (auto format : {nuv::core::image::Gray, nuv::core::image::BGR}) {
            Image source = numbered(ImageInfo(21, 9, format), 80);
            nuv::core::image::addLine(source, Line(0, 0, 4, 4));
            const Roi regions[] = {Roi(Point(4, 2), Size(3, 2)), Roi(Point(1, 1), Size(17, 8)),
                                   Roi(Point(20, 8), Size(1, 1))};
            for (Roi const& roi : regions) {
                nuv::core::image::setRoi(source, roi);
                Image result = nuv::cv::transpose(source);
                ASSERT_FALSE(result.isNull());
                expectTransposeOf(result, source, roi);
                // The result is a new image: whole-image region, no attachments.
                char const* first = nullptr;
                EXPECT_EQ(nuv::core::image::getRoi(result, &first).size(),
                          Size(roi.size().height(), roi.size().width()));
                EXPECT_EQ(first, result.constData_s());
                EXPECT_EQ(nuv::core::image::lines(result).size(), 0);
            }
        }
    });
}

// A sub-region 3 wide and 2 high gives an image 2 wide and 3 high.
TEST(Transpose, SubRegionThreeByTwo) {
    Image source = numbered(ImageInfo(10, 10, nuv::core::image::RGB));
    nuv::core::image::setRoi(source, Roi(Point(5, 6), Size(3, 2)));
    Image result = nuv::cv::transpose(source);
    EXPECT_EQ(result.info().width, 2u);
    EXPECT_EQ(result.info().height, 3u);
    expectTransposeOf(result, source, Roi(Point(5, 6), Size(3, 2)));
}

TEST(Transpose, OtherChannelCountsGiveTheNullImageWithoutAMessage) {
    nuv::test::LogCapture log;
    Image bgra = numbered(ImageInfo(6, 4, nuv::core::image::BGRA));
    EXPECT_TRUE(nuv::cv::transpose(bgra).isNull());
    EXPECT_TRUE(nuv::cv::transpose(Image()).isNull());
    EXPECT_TRUE(log.lines().empty());
}

TEST(Transpose, SourceStaysUntouched) {
    Image source = numbered(ImageInfo(33, 17, nuv::core::image::BGR));
    const std::vector<unsigned char> before(source.constData(),
                                            source.constData() + source.step() * 17);
    Image result = nuv::cv::transpose(source);
    result.data()[0] ^= 0xFF;
    EXPECT_TRUE(std::equal(before.begin(), before.end(), source.constData()));
}

}  // namespace
