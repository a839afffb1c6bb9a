// The image handle: allocation, copy-on-write of pixels and attachments, regions.
#include <nuv/core/image/Image.h>

#include <boost/any.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;

std::uintptr_t address(void const* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}

TEST(Image, NullImageShowsAnEmptyDescription) {
    Image const null;
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(null.info().numChannels, 0u);
    EXPECT_EQ(null.info().format, FormatNone);
    EXPECT_EQ(null.info().width, 0u);
    EXPECT_EQ(null.step(), 0u);
    EXPECT_EQ(null.constData(), nullptr);
    EXPECT_EQ(null.constData_s(), nullptr);
    Image copy(null);
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(copy.data(), nullptr);
    EXPECT_EQ(copy.data_s(), nullptr);
}

TEST(Image, PackedRowsOnAlignedBuffer) {
    for (unsigned width = 1; width <= 70; width += 3) {
        for (Format format : {Gray, BGR, BGRA}) {
            ImageInfo const info(width, 5, format);
            Image image(info);
            EXPECT_FALSE(image.isNull());
            EXPECT_EQ(image.info(), info);
            EXPECT_EQ(image.step(), width * info.numChannels);
            EXPECT_EQ(address(image.constData()) % 64, 0u);
            // Every byte of every row is ours to write and read back.
            unsigned char* data = image.data();
            for (unsigned i = 0; i < image.step() * 5; ++i) data[i] = static_cast<unsigned char>(i);
            for (unsigned i = 0; i < image.step() * 5; ++i)
                ASSERT_EQ(image.constData()[i], static_cast<unsigned char>(i));
        }
    }
}

TEST(Image, PaddedRows) {
    Image image(ImageInfo(5, 4, BGR), 64);
    EXPECT_EQ(image.step(), 64u);
    EXPECT_EQ(image.info(), ImageInfo(5, 4, BGR));
    EXPECT_EQ(address(image.constData()) % 64, 0u);
    // The whole span height * step belongs to the image, padding included.
    std::fill(image.data(), image.data() + 64 * 4, 0x5A);
    EXPECT_EQ(image.constData()[64 * 4 - 1], 0x5A);
    Image exact(ImageInfo(5, 4, BGR), 15);
    EXPECT_EQ(exact.step(), 15u);
    EXPECT_THROW(Image(ImageInfo(5, 4, BGR), 14), std::invalid_argument);
}

TEST(Image, ZeroSizedImageIsNotNull) {
    Image const image(ImageInfo(0, 0, Gray));
    EXPECT_FALSE(image.isNull());
    EXPECT_NE(image.constData(), nullptr);
    EXPECT_EQ(image.step(), 0u);
}

TEST(Image, UnrepresentableSizesThrowBadAlloc) {
    // A row of 2^31 * 4 bytes does not fit the 32-bit step.
    EXPECT_THROW(Image(ImageInfo(0x80000000u, 1, BGRA)), std::bad_alloc);
    // 2^32 - 1 rows of 2^32 - 1 bytes cannot be addressed at all.
    EXPECT_THROW(Image(ImageInfo(1, 0xFFFFFFFFu, Gray), 0xFFFFFFFFu), std::bad_alloc);
}

TEST(Image, CopiesShareThePixelsUntilWritten) {
    Image a(ImageInfo(4, 3, Gray));
    a.data()[0] = 7;
    Image b(a);
    EXPECT_EQ(b.constData(), a.constData());
    b.data()[0] = 1;
    EXPECT_NE(b.constData(), a.constData());
    EXPECT_EQ(a.constData()[0], 7);
    EXPECT_EQ(b.constData()[0], 1);
    EXPECT_EQ(b.info(), a.info());
    EXPECT_EQ(b.step(), a.step());
    EXPECT_EQ(address(b.constData()) % 64, 0u);
}

TEST(Image, CopyTakesEveryByteIncludingPadding) {
    Image a(ImageInfo(3, 3, BGR), 16);
    for (unsigned i = 0; i < 48; ++i) a.data()[i] = static_cast<unsigned char>(i + 1);
    Image b = a;
    unsigned char* written = b.data();
    EXPECT_NE(written, a.constData());
    EXPECT_EQ(b.step(), 16u);
    for (unsigned i = 0; i < 48; ++i) ASSERT_EQ(written[i], i + 1);
}

TEST(Image, WritingAUniqueImageNeverCopies) {
    Image a(ImageInfo(4, 3, Gray));
    unsigned char const* before = a.constData();
    EXPECT_EQ(a.data(), before);
    {
        Image b(a);
        b = Image();  // the copy goes away before the write
    }
    EXPECT_EQ(a.data(), before);
    EXPECT_EQ(a.data_s(), reinterpret_cast<char const*>(before));
}

TEST(Image, ConstDataNeverDetaches) {
    Image a(ImageInfo(4, 3, Gray));
    Image const b(a);
    EXPECT_EQ(b.constData(), a.constData());
    EXPECT_EQ(b.constData_s(), a.constData_s());
    EXPECT_EQ(b.constData(), a.constData());
}

TEST(Image, AssignmentShares) {
    Image a(ImageInfo(4, 3, Gray));
    Image b(ImageInfo(8, 8, BGR));
    b = a;
    EXPECT_EQ(b.constData(), a.constData());
    EXPECT_EQ(b.info(), a.info());
    b = b;  // self-assignment keeps the image
    EXPECT_EQ(b.constData(), a.constData());
    Image c(std::move(b));
    EXPECT_EQ(c.constData(), a.constData());
}

TEST(Image, StorableInBoostAny) {
    Image a(ImageInfo(2, 2, Gray));
    a.data()[3] = 9;
    boost::any held(a);
    Image const back = boost::any_cast<Image>(held);
    EXPECT_EQ(back.constData(), a.constData());
    EXPECT_EQ(back.constData()[3], 9);
    EXPECT_EQ(sizeof(Image), sizeof(void*));
}

TEST(ImageRegion, WholeImageWithoutRegion) {
    Image image(ImageInfo(5, 4, BGR), 64);
    char const* first = nullptr;
    Roi const roi = getRoi(image, &first);
    EXPECT_EQ(roi.offset(), Point());
    EXPECT_EQ(roi.size(), Size(5, 4));
    EXPECT_EQ(first, image.constData_s());
    EXPECT_FALSE(hasRoi(image));
}

TEST(ImageRegion, AddressOfFirstPixelWithPaddedStep) {
    Image image(ImageInfo(8, 6, BGR), 64);
    setRoi(image, Roi(Point(2, 1), Size(3, 2)));
    char const* first = nullptr;
    Roi const roi = getRoi(image, &first);
    EXPECT_EQ(roi.offset(), Point(2, 1));
    EXPECT_EQ(roi.size(), Size(3, 2));
    EXPECT_EQ(first, image.constData_s() + 64 + 6);
    EXPECT_TRUE(hasRoi(image));

    Image gray(ImageInfo(10, 10, Gray), 32);
    setRoi(gray, Roi(Point(9, 9), Size(1, 1)));
    getRoi(gray, &first);
    EXPECT_EQ(first, gray.constData_s() + 9 * 32 + 9);
}

TEST(ImageRegion, RegionEqualToTheImage) {
    Image image(ImageInfo(5, 4, Gray));
    setRoi(image, Roi(Point(0, 0, Color(0x12u)), Size(5, 4)));
    char const* first = nullptr;
    Roi const roi = getRoi(image, &first);
    EXPECT_EQ(roi.offset(), Point());
    EXPECT_EQ(roi.size(), Size(5, 4));
    EXPECT_EQ(first, image.constData_s());
}

TEST(ImageRegion, ResetGoesBackToTheWholeImage) {
    Image image(ImageInfo(5, 4, Gray));
    setRoi(image, Roi(Point(1, 1), Size(2, 2)));
    resetRoi(image);
    char const* first = nullptr;
    EXPECT_EQ(getRoi(image, &first).size(), Size(5, 4));
    EXPECT_EQ(first, image.constData_s());
    EXPECT_FALSE(hasRoi(image));
}

TEST(ImageRegion, RegionsPastTheEdgeAreCutToTheImage) {
    Image image(ImageInfo(10, 8, BGR), 40);
    char const* first = nullptr;

    setRoi(image, Roi(Point(7, 5), Size(10, 10)));
    Roi roi = getRoi(image, &first);
    EXPECT_EQ(roi.offset(), Point(7, 5));
    EXPECT_EQ(roi.size(), Size(3, 3));
    EXPECT_EQ(first, image.constData_s() + 5 * 40 + 7 * 3);

    setRoi(image, Roi(Point(-2, -3), Size(5, 5)));
    roi = getRoi(image, &first);
    EXPECT_EQ(roi.offset(), Point(0, 0));
    EXPECT_EQ(roi.size(), Size(3, 2));
    EXPECT_EQ(first, image.constData_s());

    // Wholly outside: nothing to walk, and no address past the buffer.
    setRoi(image, Roi(Point(20, 2), Size(4, 4)));
    roi = getRoi(image, &first);
    EXPECT_EQ(roi.size(), Size(0, 0));
    EXPECT_EQ(roi.offset(), Point(0, 0));
    EXPECT_EQ(first, image.constData_s());

    setRoi(image, Roi(Point(-50, -50), Size(10, 10)));
    EXPECT_EQ(getRoi(image, &first).size(), Size(0, 0));

    // Huge sizes do not wrap around.
    setRoi(image, Roi(Point(3, 3), Size(0xFFFFFFFFu, 0xFFFFFFFFu)));
    roi = getRoi(image, &first);
    EXPECT_EQ(roi.size(), Size(7, 5));
}

TEST(ImageRegion, NullImage) {
    Image null;
    char const* first = reinterpret_cast<char const*>(&null);
    Roi const roi = getRoi(null, &first);
    EXPECT_EQ(roi.size(), Size(0, 0));
    EXPECT_EQ(first, nullptr);
    setRoi(null, Roi(Point(1, 1), Size(2, 2)));
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(getRoi(null, &first).size(), Size(0, 0));
}

TEST(ImageAttachments, CopiesKeepWhatTheSourceHad) {
    Image source(ImageInfo(8, 8, Gray));
    addLine(source, Line(0, 0, 1, 1));
    setRoi(source, Roi(Point(1, 2), Size(3, 4)));
    image::SegmentList segments;
    Segment segment;
    segment.name = "ball";
    segment.pixelCount = 12;
    segments.append(segment);
    setSegmentList(source, segments);

    Image const copy(source);
    EXPECT_EQ(lines(copy).size(), 1);
    EXPECT_EQ(lines(copy).first(), Line(0, 0, 1, 1));
    EXPECT_EQ(segmentList(copy).size(), 1);
    EXPECT_EQ(segmentList(copy).first().name, "ball");
    EXPECT_EQ(segmentList(copy).first().pixelCount, 12u);
    char const* first = nullptr;
    EXPECT_EQ(getRoi(copy, &first).offset(), Point(1, 2));
}

TEST(ImageAttachments, AdditionsToACopyStayInTheCopy) {
    Image source(ImageInfo(8, 8, Gray));
    addLine(source, Line(0, 0, 1, 1));
    Image copy(source);
    addLine(copy, Line(2, 2, 3, 3));
    setRoi(copy, Roi(Point(1, 1), Size(2, 2)));
    image::SegmentList segments;
    segments.append(Segment());
    setSegmentList(copy, segments);

    EXPECT_EQ(lines(source).size(), 1);
    EXPECT_EQ(lines(copy).size(), 2);
    EXPECT_FALSE(hasRoi(source));
    EXPECT_TRUE(hasRoi(copy));
    EXPECT_EQ(segmentList(source).size(), 0);
    EXPECT_EQ(segmentList(copy).size(), 1);
    // Attachments are not pixels: the two still share the buffer.
    EXPECT_EQ(copy.constData(), source.constData());
}

TEST(ImageAttachments, AdditionsToTheSourceStayInTheSource) {
    Image source(ImageInfo(8, 8, Gray));
    Image const copy(source);
    addLine(source, Line(4, 4, 5, 5));
    resetRoi(source);
    EXPECT_EQ(lines(source).size(), 1);
    EXPECT_EQ(lines(copy).size(), 0);
}

TEST(ImageAttachments, ListsTakenOutDoNotWriteBack) {
    Image image(ImageInfo(8, 8, Gray));
    addLine(image, Line(0, 0, 1, 1));
    List<Line> taken = lines(image);
    taken.append(Line(9, 9, 9, 9));
    EXPECT_EQ(lines(image).size(), 1);
    setLines(image, taken);
    EXPECT_EQ(lines(image).size(), 2);
}

TEST(ImageAttachments, WritingPixelsKeepsAttachments) {
    Image source(ImageInfo(8, 8, Gray));
    addLine(source, Line(0, 0, 1, 1));
    Image copy(source);
    copy.data()[0] = 3;
    EXPECT_EQ(lines(copy).size(), 1);
    EXPECT_EQ(lines(source).size(), 1);
}

TEST(ImageAttachments, NullImageCarriesAttachmentsAndStaysNull) {
    Image null;
    addLine(null, Line(1, 2, 3, 4));
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(lines(null).size(), 1);
    EXPECT_EQ(null.info().numChannels, 0u);
    EXPECT_EQ(lines(Image()).size(), 0);
    EXPECT_EQ(segmentList(Image()).size(), 0);
}

TEST(Image, HandlesOnManyThreads) {
    // Copies made and dropped on several threads at once: the count must stay exact, which
    // the sanitizer build checks by the buffer neither leaking nor being freed early.
    Image shared(ImageInfo(16, 16, Gray));
    std::fill(shared.data(), shared.data() + 256, 0x42);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared, t] {
            for (int i = 0; i < 2000; ++i) {
                Image copy(shared);
                Image other;
                other = copy;
                if (i % 100 == 0) other.data()[0] = static_cast<unsigned char>(t);
                ASSERT_EQ(copy.constData()[255], 0x42);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.constData()[0], 0x42);
}

}  // namespace
