// The IplImage header over an image's pixels.
#include <nuv/core/image/OpenCV.h>

#include <gtest/gtest.h>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;

TEST(OpenCVAdapter, HeaderDescribesTheWholeImage) {
    Image image(ImageInfo(5, 4, BGR), 64);
    setRoi(image, Roi(Point(1, 1), Size(2, 2)));
    OpenCV adapter(image);
    IplImage* header = adapter;
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->width, 5);
    EXPECT_EQ(header->height, 4);
    EXPECT_EQ(header->nChannels, 3);
    EXPECT_EQ(header->depth, IPL_DEPTH_8U);
    EXPECT_EQ(header->widthStep, 64);
    EXPECT_EQ(header->imageSize, 4 * 64);
    EXPECT_EQ(header->imageData, image.constData_s());
    EXPECT_EQ(header->imageDataOrigin, image.constData_s());
    // The region of interest is the image's business, not the header's.
    EXPECT_EQ(header->roi, nullptr);
}

TEST(OpenCVAdapter, ChannelCounts) {
    for (Format format : {Gray, BGR, BGRA}) {
        Image image(ImageInfo(7, 3, format));
        OpenCV adapter(image);
        IplImage* header = adapter;
        ASSERT_NE(header, nullptr);
        EXPECT_EQ(static_cast<unsigned>(header->nChannels), image.info().numChannels);
        EXPECT_EQ(header->widthStep, static_cast<int>(image.step()));
        EXPECT_EQ(header->imageSize, static_cast<int>(3 * image.step()));
    }
}

TEST(OpenCVAdapter, BorrowsWithoutCopyingASharedBuffer) {
    Image image(ImageInfo(4, 4, Gray));
    Image const copy(image);
    OpenCV adapter(copy);
    IplImage* header = adapter;
    EXPECT_EQ(header->imageData, image.constData_s());
    EXPECT_EQ(copy.constData(), image.constData());
    // Pixels written through the image are seen through the header.
    unsigned char* pixels = image.data();
    pixels[5] = 77;
    OpenCV fresh(image);
    IplImage* freshHeader = fresh;
    EXPECT_EQ(static_cast<unsigned char>(freshHeader->imageData[5]), 77);
}

TEST(OpenCVAdapter, ImagesWithoutAnIplFormGiveNull) {
    OpenCV null{Image()};
    EXPECT_EQ(static_cast<IplImage*>(null), nullptr);
    OpenCV noChannels{Image(ImageInfo(4, 4, FormatNone))};
    EXPECT_EQ(static_cast<IplImage*>(noChannels), nullptr);
}

}  // namespace
