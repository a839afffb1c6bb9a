// copyRoi: the cut of a region, the whole-image hand-back and the refused formats.
#include <nuv/core.h>
#include <nuv/cv/tools.h>

#include "support/log_capture.h"
#include "support/slots.h"

#include <gtest/gtest.h>

namespace {

using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

// Every byte of the image holds a value derived from its position, so a misplaced row or
// column shows.
Image numbered(ImageInfo const& info, unsigned step = 0) {
    Image image = step ? Image(info, step) : Image(info);
    unsigned char* p = image.data();
    const unsigned rowBytes = info.width * info.numChannels;
    for (unsigned y = 0; y < info.height; ++y)
        for (unsigned x = 0; x < rowBytes; ++x) p[y * image.step() + x] = (y * 31 + x * 7) & 0xFF;
    return image;
}

TEST(CopyRoi, SubRegionOfColourImageIsCutToItsSize) {
    nuv::test::forEachSlot([](int) {
        for (unsigned step : {0u, 64u, 100u}) {
            Image source = numbered(ImageInfo(21, 9, nuv::core::image::BGR), step);
            nuv::core::image::addLine(source, Line(0, 0, 5, 5));
            nuv::core::image::setRoi(source, Roi(Point(2, 1), Size(13, 6)));
            nuv::test::LogCapture log;

            Image cut = nuv::cv::copyRoi(source);

            ASSERT_FALSE(cut.isNull());
            EXPECT_EQ(cut.info().width, 13u);
            EXPECT_EQ(cut.info().height, 6u);
            EXPECT_EQ(cut.info().format, nuv::core::image::BGR);
            for (unsigned y = 0; y < 6; ++y)
                for (unsigned x = 0; x < 39; ++x)
                    ASSERT_EQ(cut.constData()[y * cut.step() + x],
                              source.constData()[(y + 1) * source.step() + 6 + x])
                        << "row " << y << " byte " << x;
            // The cut is a new image: its region is all of it, and it has no attachments.
            char const* first = nullptr;
            const Roi roi = nuv::core::image::getRoi(cut, &first);
            EXPECT_EQ(roi.size(), Size(13, 6));
            EXPECT_EQ(first, cut.constData_s());
            EXPECT_EQ(nuv::core::image::lines(cut).size(), 0);
            EXPECT_TRUE(log.lines().empty());
        }
    });
}

TEST(CopyRoi, WholeImageRegionReturnsTheSameImageWithAttachments) {
    Image source = numbered(ImageInfo(8, 4, nuv::core::image::RGB));
    nuv::core::image::addLine(source, Line(1, 2, 3, 4));
    nuv::core::image::setRoi(source, Roi(Point(0, 0), Size(8, 4)));

    Image same = nuv::cv::copyRoi(source);

    EXPECT_EQ(same.constData(), source.constData()) << "a whole-image region shares pixels";
    ASSERT_EQ(nuv::core::image::lines(same).size(), 1);
    EXPECT_EQ(nuv::core::image::lines(same).constBegin()->x1(), 3);
}

TEST(CopyRoi, OtherFormatsAreLoggedAndReturnedWhole) {
    for (auto format : {nuv::core::image::Gray, nuv::core::image::BGRA}) {
        Image source = numbered(ImageInfo(10, 5, format));
        nuv::core::image::setRoi(source, Roi(Point(1, 1), Size(3, 3)));
        nuv::test::LogCapture log;

        Image result = nuv::cv::copyRoi(source);

        EXPECT_EQ(result.constData(), source.constData());
        EXPECT_EQ(result.info().width, 10u);
        EXPECT_EQ(result.info().height, 5u);
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0], "nuv::cv::copyRoi: unsupported image format");
    }
}

TEST(CopyRoi, NullImageComesBackNullWithoutAMessage) {
    nuv::test::LogCapture log;
    Image result = nuv::cv::copyRoi(Image());
    EXPECT_TRUE(result.isNull());
    EXPECT_TRUE(log.lines().empty());
}

TEST(CopyRoi, SourceStaysUntouched) {
    Image source = numbered(ImageInfo(12, 6, nuv::core::image::BGR));
    const std::vector<unsigned char> before(source.constData(),
                                            source.constData() + source.step() * 6);
    nuv::core::image::setRoi(source, Roi(Point(3, 2), Size(5, 3)));
    Image cut = nuv::cv::copyRoi(source);
    cut.data()[0] ^= 0xFF;  // writing the cut must not reach the source
    EXPECT_TRUE(std::equal(before.begin(), before.end(), source.constData()));
}

}  // namespace
