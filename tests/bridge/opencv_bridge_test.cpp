// The OpenCV bridge: both directions share the pixels (same addresses), the formats and the
// Mats refused, who keeps the pixels alive in which order of release, and what a write
// through either side reaches.
#include <nuv/core.h>
#include <nuv/opencv.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace nuv::core::image;
using nuv::opencv::roiRect;
using nuv::opencv::toConstMat;
using nuv::opencv::toImage;
using nuv::opencv::toMat;

// A Mat of the given type whose byte i holds i.
::cv::Mat counting(int rows, int cols, int type) {
    ::cv::Mat mat(rows, cols, type);
    for (std::size_t i = 0; i < mat.total() * mat.elemSize(); ++i) mat.data[i] = (unsigned char)i;
    return mat;
}

TEST(Bridge, MatBecomesImageOverTheSamePixels) {
    struct Row {
        int type;
        Format given, expected;
    };
    for (Row row :
         {Row{CV_8UC1, FormatNone, Gray}, Row{CV_8UC3, FormatNone, BGR},
          Row{CV_8UC4, FormatNone, BGRA}, Row{CV_8UC3, HSV, HSV}, Row{CV_8UC3, RGB, RGB}}) {
        ::cv::Mat const mat = counting(5, 7, row.type);
        Image const image = toImage(mat, row.given);
        EXPECT_EQ(image.constData(), mat.data);
        EXPECT_EQ(image.step(), mat.step[0]);
        EXPECT_EQ(image.info(), ImageInfo(7, 5, row.expected));
    }
    // A cut of a larger Mat keeps the larger one's step.
    ::cv::Mat const big = counting(6, 9, CV_8UC3);
    ::cv::Mat const cut = big(::cv::Rect(2, 1, 4, 3));
    Image const image = toImage(cut);
    EXPECT_EQ(image.constData(), cut.data);
    EXPECT_EQ(image.step(), 27u);
    EXPECT_EQ(image.info(), ImageInfo(4, 3, BGR));
}

TEST(Bridge, WhatAnImageCannotDescribeGivesTheNullImage) {
    int const cube[] = {2, 2, 2};
    for (::cv::Mat const& mat :
         {::cv::Mat(), ::cv::Mat(4, 4, CV_16UC1), ::cv::Mat(4, 4, CV_32FC3),
          ::cv::Mat(4, 4, CV_8UC2), ::cv::Mat(4, 4, CV_8UC(5)), ::cv::Mat(3, cube, CV_8UC1)})
        EXPECT_TRUE(toImage(mat).isNull()) << mat.type() << " dims " << mat.dims;
    EXPECT_TRUE(toImage(::cv::Mat(4, 4, CV_8UC3), Gray).isNull());
    EXPECT_TRUE(toImage(::cv::Mat(4, 4, CV_8UC1), BGRA).isNull());
}

TEST(Bridge, ImageKeepsTheMatsPixelsAndGivesThemBack) {
    ::cv::Mat mat = counting(4, 4, CV_8UC1);
    Image image = toImage(mat);
    EXPECT_EQ(mat.u->refcount, 2);
    {
        Image copy = image;
        EXPECT_EQ(mat.u->refcount, 2);  // one count for all handles of the image
    }
    image = Image();
    EXPECT_EQ(mat.u->refcount, 1);

    // The caller's Mat goes first: the image still reads the pixels.
    image = toImage(counting(4, 4, CV_8UC1));
    EXPECT_EQ(image.constData()[15], 15);
}

TEST(Bridge, SoleImageWritesIntoTheMatASharedOneDetaches) {
    ::cv::Mat const mat = counting(3, 4, CV_8UC3);
    Image image = toImage(mat);
    EXPECT_EQ(image.data(), mat.data);
    image.data()[0] = 200;
    EXPECT_EQ(mat.data[0], 200);

    Image const other = image;
    EXPECT_NE(image.data(), mat.data);
    image.data()[1] = 201;
    EXPECT_EQ(mat.data[1], 1);
    EXPECT_EQ(other.constData(), mat.data);
    EXPECT_EQ(image.constData()[0], 200);
}

// An image over a host buffer that records when its last handle goes.
struct Watched {
    std::vector<unsigned char> pixels = std::vector<unsigned char>(6 * 5, 7);
    bool released = false;
    Image image{pixels.data(), 6, ImageInfo(2, 5, BGR), [this] { released = true; }};
};

TEST(Bridge, ImageBecomesMatOverTheSamePixelsAndStaysAlive) {
    auto watched = std::make_unique<Watched>();
    ::cv::Mat mat = toMat(watched->image);
    EXPECT_EQ(mat.data, watched->pixels.data());
    EXPECT_EQ(mat.type(), CV_8UC3);
    EXPECT_EQ(mat.size(), ::cv::Size(2, 5));
    EXPECT_EQ(mat.step[0], 6u);
    mat.at<::cv::Vec3b>(4, 1)[2] = 99;
    EXPECT_EQ(watched->image.constData()[29], 99);

    // The image goes first; the Mat and its copies keep the pixels until the last of them.
    watched->image = Image();
    ::cv::Mat copy = mat;
    mat.release();
    EXPECT_FALSE(watched->released);
    EXPECT_EQ(copy.at<::cv::Vec3b>(4, 1)[2], 99);
    copy.release();
    EXPECT_TRUE(watched->released);

    // The Mat goes first; the image lives on.
    watched = std::make_unique<Watched>();
    toMat(watched->image).release();
    EXPECT_FALSE(watched->released);
    watched->image = Image();
    EXPECT_TRUE(watched->released);
}

TEST(Bridge, ReCreatedMatLetsTheImageGo) {
    Watched watched;
    ::cv::Mat mat = toMat(watched.image);
    ::cv::Mat const clone = mat.clone();
    watched.image = Image();
    mat.create(3, 3, CV_8UC1);  // another shape: OpenCV's own memory
    EXPECT_TRUE(watched.released);
    mat.setTo(1);
    EXPECT_EQ(clone.at<::cv::Vec3b>(0, 0), ::cv::Vec3b(7, 7, 7));
}

TEST(Bridge, WritableMatMakesTheBufferPrivateReadOnlyMatNever) {
    Image image(ImageInfo(3, 2, Gray), 8);
    Image const other = image;
    ::cv::Mat const view = toConstMat(image);
    EXPECT_EQ(view.data, other.constData());
    EXPECT_EQ(view.step[0], 8u);

    ::cv::Mat mat = toMat(image);
    EXPECT_NE(mat.data, other.constData());
    EXPECT_EQ(mat.data, image.constData());
    mat.setTo(5);
    EXPECT_EQ(image.constData()[8 + 2], 5);

    // A round trip through both directions stays on the first buffer.
    ::cv::Mat const frame = counting(2, 3, CV_8UC4);
    EXPECT_EQ(toMat(toImage(frame)).data, frame.data);
}

TEST(Bridge, RegionAndRefusedImages) {
    Image image(ImageInfo(8, 6, BGR));
    setRoi(image, nuv::core::Roi(nuv::core::Point(2, 1), nuv::core::Size(4, 9)));
    char const* first = nullptr;
    getRoi(image, &first);
    EXPECT_EQ(roiRect(image), ::cv::Rect(2, 1, 4, 5));
    EXPECT_EQ(toMat(image)(roiRect(image)).data, (unsigned char const*)first);

    ImageInfo wide(2, 2, Gray);
    wide.bytesPerChannel = 2;
    EXPECT_TRUE(toMat(Image()).empty());
    EXPECT_TRUE(toConstMat(Image(wide)).empty());
}

}  // namespace
