// Marker labelling in the front end: the region is labelled in a copy with 8-connected
// components and raster-ordered labels, other formats give nothing, and labelmarkersinfo
// gives truncated centres and counts in label order above a minimum size.
#include <nuv/cv.h>

#include "support/images.h"

#include <gtest/gtest.h>

namespace {

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::Vector;
using nuv::test::packedPixels;
using Bytes = std::vector<unsigned char>;

Image gray(int width, Bytes const& pixels) {
    Image image(ImageInfo(width, pixels.size() / width, Gray));
    for (std::size_t i = 0; i < pixels.size(); ++i)
        image.data()[i / width * image.step() + i % width] = pixels[i];
    return image;
}

TEST(LabelMarkers, RegionsOfGrayImagesInRasterOrder) {
    const Bytes pixels = {0, 0, 0, 0, 0, 0,  //
                          0, 7, 0, 0, 3, 3,  //
                          0, 0, 9, 0, 0, 0,  //
                          4, 0, 0, 0, 8, 0};
    Image image = gray(6, pixels);
    int count = -1;
    const Image labels = nuv::cv::labelmarkers(image, &count);
    EXPECT_EQ(count, 4);  // the diagonal pair is one component
    EXPECT_EQ(packedPixels(labels), Bytes({0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 2, 2,  //
                                           0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 4, 0}));
    EXPECT_EQ(packedPixels(image), pixels);

    setRoi(image, Roi(Point(2, 1), Size(4, 3)));
    const Image region = nuv::cv::labelmarkers(image, &count);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(packedPixels(region), Bytes({0, 0, 1, 1, 2, 0, 0, 0, 0, 0, 3, 0}));

    Vector<Point> centres;
    Vector<int> sizes;
    nuv::cv::labelmarkersinfo(labels, 2, centres, sizes);
    ASSERT_EQ(sizes.size(), 2);
    EXPECT_EQ(sizes[0], 2);  // label 1: (1, 1) and (2, 2), centre (1, 1)
    EXPECT_EQ(centres[0].x(), 1);
    EXPECT_EQ(centres[0].y(), 1);
    EXPECT_EQ(sizes[1], 2);  // label 2: (4, 1) and (5, 1), centre (4, 1)
    EXPECT_EQ(centres[1].x(), 4);
    nuv::cv::labelmarkersinfo(labels, 0, centres, sizes);
    EXPECT_EQ(sizes.size(), 4);
    EXPECT_EQ(centres[2].x(), 0);
    EXPECT_EQ(centres[2].y(), 3);
    nuv::cv::labelmarkersinfo(labels, 3, centres, sizes);
    EXPECT_EQ(sizes.size(), 0);
}

TEST(LabelMarkers, OtherFormatsAndEmptyImages) {
    int count = -1;
    EXPECT_TRUE(nuv::cv::labelmarkers(Image(ImageInfo(4, 4, BGR)), &count).isNull());
    EXPECT_EQ(count, 0);
    count = -1;
    const Image none = nuv::cv::labelmarkers(gray(4, Bytes(16, 0)), &count);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(packedPixels(none), Bytes(16, 0));
    Vector<Point> centres;
    Vector<int> sizes;
    centres.append(Point(1, 1));
    sizes.append(1);
    nuv::cv::labelmarkersinfo(none, 0, centres, sizes);
    EXPECT_EQ(sizes.size() + centres.size(), 0);
    sizes.append(1);
    nuv::cv::labelmarkersinfo(Image(ImageInfo(4, 4, RGB)), 0, centres, sizes);
    EXPECT_EQ(sizes.size(), 0);
    // A larger image after smaller ones grows the kept scratch.
    Bytes big(300 * 200, 0);
    for (int y = 0; y < 200; y += 2)
        for (int x = 0; x < 300; ++x) big[y * 300 + x] = 1;
    nuv::cv::labelmarkers(gray(300, big), &count);
    EXPECT_EQ(count, 100);
}

}  // namespace
