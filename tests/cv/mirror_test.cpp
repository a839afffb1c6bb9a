// mirrorHorizontal, mirrorVertical, mirrorHorizontalAndVertical and the shared mirror: the
// exact examples, the region of interest, the formats refused with their message, and the
// refused flips whose results keep their size.
#include <nuv/core.h>
#include <nuv/cv/mirror.h>

#include "support/log_capture.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using Bytes = std::vector<unsigned char>;

struct Reflection {
    std::function<Image(Image const&)> apply;
    int axis;
    char const* name;
};

std::vector<Reflection> const reflections = {
    {nuv::cv::mirrorHorizontal, 0, "mirrorHorizontal"},
    {nuv::cv::mirrorVertical, 1, "mirrorVertical"},
    {nuv::cv::mirrorHorizontalAndVertical, 2, "mirrorHorizontalAndVertical"},
};

Image withBytes(ImageInfo const& info, Bytes const& packed, unsigned step = 0) {
    Image image = step ? Image(info, step) : Image(info);
    const unsigned rowBytes = info.width * info.numChannels;
    for (unsigned y = 0; y < info.height; ++y)
        std::copy(packed.begin() + y * rowBytes, packed.begin() + (y + 1) * rowBytes,
                  image.data() + y * image.step());
    return image;
}

// The image's rows without padding.
Bytes packedOf(Image const& image) {
    Bytes bytes;
    const unsigned rowBytes = image.info().width * image.info().numChannels;
    for (unsigned y = 0; y < image.info().height; ++y)
        bytes.insert(bytes.end(), image.constData() + y * image.step(),
                     image.constData() + y * image.step() + rowBytes);
    return bytes;
}

// Every byte holds a value derived from its position, so a misplaced row or column shows.
Image numbered(ImageInfo const& info, unsigned step = 0) {
    Image image = step ? Image(info, step) : Image(info);
    const unsigned rowBytes = info.width * info.numChannels;
    for (unsigned y = 0; y < info.height; ++y)
        for (unsigned x = 0; x < rowBytes; ++x)
            image.data()[y * image.step() + x] = static_cast<unsigned char>(y * 31 + x * 7);
    return image;
}

TEST(Mirror, TwoByTwoGrayExamples) {
    nuv::test::forEachSlot([](int) {
        for (unsigned step : {0u, 5u}) {
            const Image image =
                withBytes(ImageInfo(2, 2, nuv::core::image::Gray), {1, 2, 3, 4}, step);
            const Bytes expected[3] = {{3, 4, 1, 2}, {2, 1, 4, 3}, {4, 3, 2, 1}};
            nuv::test::LogCapture log;
            for (Reflection const& r : reflections) {
                SCOPED_TRACE(r.name);
                const Image result = r.apply(image);
                ASSERT_FALSE(result.isNull());
                EXPECT_EQ(result.info(), image.info());
                EXPECT_EQ(packedOf(result), expected[r.axis]);
                EXPECT_EQ(packedOf(mirror(image, r.axis)), expected[r.axis]) << "shared function";
            }
            EXPECT_TRUE(log.lines().empty());
        }
    });
}

TEST(Mirror, ColourPixelsKeepTheirByteOrder) {
    nuv::test::forEachSlot([](int) {
        for (auto format : {nuv::core::image::BGR, nuv::core::image::RGB, nuv::core::image::HSV}) {
            const Image image =
                withBytes(ImageInfo(2, 2, format), {10, 20, 30, 40, 50, 60, 1, 2, 3, 4, 5, 6});
            const Bytes expected[3] = {{1, 2, 3, 4, 5, 6, 10, 20, 30, 40, 50, 60},
                                       {40, 50, 60, 10, 20, 30, 4, 5, 6, 1, 2, 3},
                                       {4, 5, 6, 1, 2, 3, 40, 50, 60, 10, 20, 30}};
            for (Reflection const& r : reflections) {
                SCOPED_TRACE(r.name);
                const Image result = r.apply(image);
                EXPECT_EQ(result.info().format, format);
                EXPECT_EQ(packedOf(result), expected[r.axis]);
            }
        }
    });
}

// The region is read from its first pixel and the result has the region's size; it is a new
// image without the source's attachments, and the source is not touched.
TEST(Mirror, RegionOfInterestIsMirroredIntoAnImageOfItsSize) {
    nuv::test::forEachSlot([](int) {
        for (auto format : {nuv::core::image::Gray, nuv::core::image::BGR}) {
            for (unsigned step : {0u, 100u}) {
                Image source = numbered(ImageInfo(21, 9, format), step);
                const Bytes before = packedOf(source);
                nuv::core::image::addLine(source, Line(0, 0, 5, 5));
                nuv::core::image::setRoi(source, Roi(Point(2, 1), Size(13, 6)));
                const unsigned channels = source.info().numChannels;
                for (Reflection const& r : reflections) {
                    SCOPED_TRACE(std::string(r.name) + " step " + std::to_string(step) + " " +
                                 std::to_string(channels) + " channels");
                    const Image result = r.apply(source);
                    ASSERT_EQ(result.info().width, 13u);
                    ASSERT_EQ(result.info().height, 6u);
                    EXPECT_EQ(result.info().format, format);
                    for (int y = 0; y < 6; ++y) {
                        const int sy = r.axis == 1 ? y : 5 - y;
                        for (int x = 0; x < 13; ++x) {
                            const int sx = r.axis == 0 ? x : 12 - x;
                            for (unsigned c = 0; c < channels; ++c)
                                ASSERT_EQ(result.constData()[y * result.step() + x * channels + c],
                                          source.constData()[(sy + 1) * source.step() +
                                                             (sx + 2) * channels + c])
                                    << "pixel " << x << "," << y;
                        }
                    }
                    EXPECT_EQ(nuv::core::image::lines(result).size(), 0);
                    EXPECT_FALSE(nuv::core::image::hasRoi(result));
                    EXPECT_NE(result.constData(), source.constData());
                }
                EXPECT_EQ(packedOf(source), before);
            }
        }
    });
}

// A region reaching past the image is cut to it before the mirror.
TEST(Mirror, RegionPartlyOutsideIsCutFirst) {
    Image source = numbered(ImageInfo(10, 6, nuv::core::image::Gray));
    nuv::core::image::setRoi(source, Roi(Point(7, 4), Size(10, 10)));
    const Image result = nuv::cv::mirrorHorizontalAndVertical(source);
    ASSERT_EQ(result.info().width, 3u);
    ASSERT_EQ(result.info().height, 2u);
    EXPECT_EQ(packedOf(result),
              (Bytes{source.constData()[5 * 10 + 9], source.constData()[5 * 10 + 8],
                     source.constData()[5 * 10 + 7], source.constData()[4 * 10 + 9],
                     source.constData()[4 * 10 + 8], source.constData()[4 * 10 + 7]}));
}

// The primitive refuses to turn a single row upside down or a single column left to right;
// its status is not looked at, so the result has the region's size, and no line is logged.
// The other axis of such an image is mirrored as usual.
TEST(Mirror, RefusedFlipsStillGiveAResultOfTheRegionsSize) {
    nuv::test::LogCapture log;
    const Image row = withBytes(ImageInfo(4, 1, nuv::core::image::Gray), {1, 2, 3, 4});
    const Image up = nuv::cv::mirrorHorizontal(row);
    EXPECT_EQ(up.info(), row.info());
    EXPECT_EQ(packedOf(nuv::cv::mirrorVertical(row)), (Bytes{4, 3, 2, 1}));
    const Image both = nuv::cv::mirrorHorizontalAndVertical(row);
    EXPECT_EQ(both.info(), row.info());

    const Image column =
        withBytes(ImageInfo(1, 3, nuv::core::image::BGR), {1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(nuv::cv::mirrorVertical(column).info(), column.info());
    EXPECT_EQ(packedOf(nuv::cv::mirrorHorizontal(column)), (Bytes{7, 8, 9, 4, 5, 6, 1, 2, 3}));
    EXPECT_TRUE(log.lines().empty());
}

// Four-channel images are refused with a message that names addition, and give the null
// image; so does the null image, which has no channels.
TEST(Mirror, OtherFormatsAreLoggedAndGiveTheNullImage) {
    const Image bgra = numbered(ImageInfo(6, 4, nuv::core::image::BGRA));
    for (Image const& image : {bgra, Image()}) {
        for (Reflection const& r : reflections) {
            SCOPED_TRACE(r.name);
            nuv::test::LogCapture log;
            const Image result = r.apply(image);
            EXPECT_TRUE(result.isNull());
            ASSERT_EQ(log.lines().size(), 1u);
            EXPECT_EQ(log.lines()[0], "nuv::cv::addition: unsupported image format");
        }
    }
}

// Only 0, 1 and 2 are axes; anything else is a programming error.
TEST(MirrorDeathTest, AnyOtherAxisFailsTheAssertion) {
    const Image image = numbered(ImageInfo(4, 4, nuv::core::image::Gray));
#ifdef NDEBUG
    // Without assertions the primitive refuses the axis: a result of the region's size.
    nuv::test::LogCapture log;
    EXPECT_EQ(mirror(image, 3).info(), image.info());
    EXPECT_TRUE(log.lines().empty());
#else
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(mirror(image, 3), "Image mirror.*Assertion `false' failed");
    EXPECT_DEATH(mirror(image, -1), "Assertion `false' failed");
#endif
}

}  // namespace
