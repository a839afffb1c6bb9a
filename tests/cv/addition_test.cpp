// addition and imageAddition: the rounded mean of one- and three-channel images, the size
// taken from a's region while both are read from their first pixel, and the refusals with
// their messages and null results.
#include <nuv/core.h>
#include <nuv/cv/addition.h>

#include "support/log_capture.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using nuv::core::variant::Variant;

char const* const differMessage = "uv::cv::addition: images differ in format or size";
char const* const unsupportedMessage = "nuv::cv::addition: unsupported image format";

Image randomImage(ImageInfo const& info, std::mt19937& rng, unsigned step = 0) {
    Image image = step ? Image(info, step) : Image(info);
    unsigned char* p = image.data();
    const unsigned rowBytes = info.width * info.numChannels;
    for (unsigned y = 0; y < info.height; ++y)
        for (unsigned x = 0; x < rowBytes; ++x) p[y * image.step() + x] = rng() & 0xFF;
    return image;
}

// Half the sum, a tie going to the even neighbour.
unsigned char roundedMean(unsigned a, unsigned b) {
    const unsigned t = a + b;
    const unsigned half = t / 2;
    return static_cast<unsigned char>(t % 2 == 1 && half % 2 == 1 ? half + 1 : half);
}

// The result must be the rounded mean of the top-left width x height pixels of a and b.
void expectMeanOfTopLeft(Image const& result, Image const& a, Image const& b, unsigned width,
                         unsigned height) {
    ASSERT_FALSE(result.isNull());
    ASSERT_EQ(result.info().width, width);
    ASSERT_EQ(result.info().height, height);
    const unsigned rowBytes = width * a.info().numChannels;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < rowBytes; ++x)
            ASSERT_EQ(result.constData()[y * result.step() + x],
                      roundedMean(a.constData()[y * a.step() + x], b.constData()[y * b.step() + x]))
                << "row " << y << " byte " << x;
}

TEST(Addition, RoundedMeanOfOneAndThreeChannelImages) {
    std::mt19937 rng(5);
    nuv::test::forEachSlot([&](int) {
        for (auto format : {nuv::core::image::Gray, nuv::core::image::RGB, nuv::core::image::BGR,
                            nuv::core::image::HSV}) {
            for (unsigned width : {1u, 7u, 33u, 64u, 101u}) {
                const ImageInfo info(width, 5, format);
                const Image a = randomImage(info, rng);
                // b with padded rows: each source is walked by its own step.
                const Image b = randomImage(info, rng, width * info.numChannels + 13);
                nuv::test::LogCapture log;

                const Image result = nuv::cv::addition(a, b);

                EXPECT_TRUE(result.info() == info);
                expectMeanOfTopLeft(result, a, b, width, 5);
                EXPECT_TRUE(log.lines().empty());
            }
        }
    });
}

TEST(Addition, TiesGoToTheEvenValue) {
    const ImageInfo info(4, 1, nuv::core::image::RGB);
    Image a(info);
    Image b(info);
    const unsigned char left[12] = {255, 1, 2, 0, 254, 3, 100, 0, 255, 7, 9, 128};
    const unsigned char right[12] = {255, 2, 3, 1, 255, 4, 101, 0, 0, 8, 10, 129};
    std::copy(left, left + 12, a.data());
    std::copy(right, right + 12, b.data());
    // 1.5 -> 2, 2.5 -> 2, 0.5 -> 0, 254.5 -> 254, 3.5 -> 4, 100.5 -> 100, 127.5 -> 128.
    const unsigned char expected[12] = {255, 2, 2, 0, 254, 4, 100, 0, 128, 8, 10, 128};
    nuv::test::forEachSlot([&](int) {
        const Image result = nuv::cv::addition(a, b);
        ASSERT_FALSE(result.isNull());
        for (int i = 0; i < 12; ++i) EXPECT_EQ(result.constData()[i], expected[i]) << "byte " << i;
    });
}

TEST(Addition, SourcesStayUntouchedAndTheResultIsNew) {
    std::mt19937 rng(6);
    const ImageInfo info(9, 4, nuv::core::image::BGR);
    const Image a = randomImage(info, rng);
    const Image b = randomImage(info, rng);
    const std::vector<unsigned char> beforeA(a.constData(), a.constData() + a.step() * 4);
    const std::vector<unsigned char> beforeB(b.constData(), b.constData() + b.step() * 4);

    Image result = nuv::cv::addition(a, b);

    EXPECT_NE(result.constData(), a.constData());
    EXPECT_NE(result.constData(), b.constData());
    EXPECT_TRUE(std::equal(beforeA.begin(), beforeA.end(), a.constData()));
    EXPECT_TRUE(std::equal(beforeB.begin(), beforeB.end(), b.constData()));
}

// ---- regions ------------------------------------------------------------------------------

TEST(Addition, ARegionGivesTheSizeButBothAreReadFromTheirFirstPixel) {
    std::mt19937 rng(7);
    for (auto format : {nuv::core::image::RGB, nuv::core::image::Gray}) {
        const ImageInfo info(12, 10, format);
        Image a = randomImage(info, rng);
        Image b = randomImage(info, rng, 12 * info.numChannels + 5);
        nuv::core::image::setRoi(a, Roi(Point(5, 5), Size(2, 2)));
        nuv::test::forEachSlot([&](int) {
            const Image result = nuv::cv::addition(a, b);
            expectMeanOfTopLeft(result, a, b, 2, 2);
            EXPECT_EQ(result.info().format, format);
        });
    }
}

TEST(Addition, BsRegionPlaysNoPart) {
    std::mt19937 rng(8);
    const ImageInfo info(11, 6, nuv::core::image::BGR);
    Image a = randomImage(info, rng);
    Image b = randomImage(info, rng);
    nuv::core::image::setRoi(a, Roi(Point(1, 2), Size(4, 3)));
    const Image plain = nuv::cv::addition(a, b);
    nuv::core::image::setRoi(b, Roi(Point(3, 1), Size(7, 2)));

    const Image withRegion = nuv::cv::addition(a, b);

    expectMeanOfTopLeft(withRegion, a, b, 4, 3);
    ASSERT_EQ(plain.step(), withRegion.step());
    EXPECT_TRUE(std::equal(plain.constData(), plain.constData() + plain.step() * 3,
                           withRegion.constData()));
}

TEST(Addition, AnEmptyRegionGivesAnEmptyResultWithoutAMessage) {
    std::mt19937 rng(9);
    const ImageInfo info(8, 8, nuv::core::image::RGB);
    Image a = randomImage(info, rng);
    const Image b = randomImage(info, rng);
    // Wholly outside the image: the region is cut to nothing.
    nuv::core::image::setRoi(a, Roi(Point(20, 20), Size(3, 3)));
    nuv::test::LogCapture log;

    const Image result = nuv::cv::addition(a, b);

    EXPECT_FALSE(result.isNull());
    EXPECT_EQ(result.info().width, 0u);
    EXPECT_EQ(result.info().height, 0u);
    EXPECT_EQ(result.info().format, nuv::core::image::RGB);
    EXPECT_TRUE(log.lines().empty());
}

TEST(Addition, ImagesWithoutColumnsGiveAnEmptyResult) {
    // The region of an image without columns is empty in both directions.
    const ImageInfo info(0, 4, nuv::core::image::Gray);
    nuv::test::LogCapture log;
    const Image result = nuv::cv::addition(Image(info), Image(info));
    EXPECT_FALSE(result.isNull());
    EXPECT_EQ(result.info().width, 0u);
    EXPECT_EQ(result.info().height, 0u);
    EXPECT_EQ(result.info().format, nuv::core::image::Gray);
    EXPECT_TRUE(log.lines().empty());
}

// ---- refusals -------------------------------------------------------------------------------

TEST(Addition, DifferentDescriptionsAreRefusedWithTheirMessage) {
    std::mt19937 rng(10);
    const Image rgb = randomImage(ImageInfo(6, 4, nuv::core::image::RGB), rng);
    const std::vector<Image> others = {
        randomImage(ImageInfo(6, 4, nuv::core::image::BGR), rng),   // format
        randomImage(ImageInfo(7, 4, nuv::core::image::RGB), rng),   // width
        randomImage(ImageInfo(6, 3, nuv::core::image::RGB), rng),   // height
        randomImage(ImageInfo(6, 4, nuv::core::image::Gray), rng),  // channels
        Image(),                                                    // null
    };
    for (Image const& other : others) {
        for (bool swapped : {false, true}) {
            nuv::test::LogCapture log;
            const Image result =
                swapped ? nuv::cv::addition(other, rgb) : nuv::cv::addition(rgb, other);
            EXPECT_TRUE(result.isNull());
            ASSERT_EQ(log.lines().size(), 1u);
            EXPECT_EQ(log.lines()[0], differMessage);
        }
    }
}

TEST(Addition, OtherChannelCountsAreRefusedWithTheirMessage) {
    std::mt19937 rng(11);
    const ImageInfo bgra(5, 3, nuv::core::image::BGRA);
    const Image a = randomImage(bgra, rng);
    const Image b = randomImage(bgra, rng);
    nuv::test::LogCapture log;

    const Image result = nuv::cv::addition(a, b);

    EXPECT_TRUE(result.isNull());
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0], unsupportedMessage);
}

TEST(Addition, TwoNullImagesAreAnUnsupportedFormat) {
    nuv::test::LogCapture log;
    const Image result = nuv::cv::addition(Image(), Image());
    EXPECT_TRUE(result.isNull());
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0], unsupportedMessage);
}

// ---- the variant form --------------------------------------------------------------------

TEST(ImageAddition, WrapsTheResultOfAdditionInAVariant) {
    std::mt19937 rng(12);
    const ImageInfo info(13, 3, nuv::core::image::RGB);
    const Image a = randomImage(info, rng);
    const Image b = randomImage(info, rng);

    const Variant result = nuv::cv::imageAddition(Variant(a), Variant(b));

    ASSERT_TRUE(result.is<Image>());
    expectMeanOfTopLeft(result.get<Image>(), a, b, 13, 3);
}

TEST(ImageAddition, AVariantWithoutAnImageGivesANullImage) {
    std::mt19937 rng(13);
    const Image a = randomImage(ImageInfo(4, 4, nuv::core::image::Gray), rng);
    {
        // One side without an image: the descriptions differ.
        nuv::test::LogCapture log;
        const Variant result = nuv::cv::imageAddition(Variant(a), Variant(42));
        ASSERT_TRUE(result.is<Image>());
        EXPECT_TRUE(result.get<Image>().isNull());
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0], differMessage);
    }
    {
        // Neither: two null images, which no channel count supports.
        nuv::test::LogCapture log;
        const Variant result = nuv::cv::imageAddition(Variant(), Variant(std::string("x")));
        ASSERT_TRUE(result.is<Image>());
        EXPECT_TRUE(result.get<Image>().isNull());
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0], unsupportedMessage);
    }
}

TEST(ImageAddition, ServesAsTheAdditionOperatorOfImageVariants) {
    // The function has the type of a binary operator of the variant arithmetic; once
    // registered for images, adding two image variants gives what addition gives.
    nuv::core::variant::Math& math = nuv::core::variant::Math::singleton();
    math.registerBinaryOperator<Image>(nuv::core::variant::OperatorAdd, nuv::cv::imageAddition);
    std::mt19937 rng(14);
    const ImageInfo info(10, 2, nuv::core::image::Gray);
    const Image a = randomImage(info, rng);
    const Image b = randomImage(info, rng);

    bool ok = false;
    const Variant sum =
        math.binaryOperator(nuv::core::variant::OperatorAdd, Variant(a), Variant(b), &ok);

    EXPECT_TRUE(ok);
    ASSERT_TRUE(sum.is<Image>());
    expectMeanOfTopLeft(sum.get<Image>(), a, b, 10, 2);
}

}  // namespace
