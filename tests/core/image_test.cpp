// The image handle: allocation, copy-on-write of pixels and attachments, regions, the IplImage
// header.
#include <nuv/core.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;

bool aligned(void const* p) {
    return reinterpret_cast<std::uintptr_t>(p) % 64 == 0;
}

// Packed rows by default, padded rows on request; the whole span is ours, padding included.
TEST(Image, RowsAndSteps) {
    Image null;
    EXPECT_TRUE(null.isNull() && null.info() == ImageInfo() && !null.step() && !null.data_s());
    EXPECT_TRUE(!Image(ImageInfo(0, 0, Gray)).isNull() && Image(ImageInfo(0, 0, Gray)).constData());
    for (Format format : {Gray, BGR, BGRA}) {
        Image image(ImageInfo(23, 5, format));
        EXPECT_TRUE(image.step() == 23 * image.info().numChannels && aligned(image.constData()));
        std::fill(image.data(), image.data() + image.step() * 5, 0x5A);
    }
    Image padded(ImageInfo(5, 4, BGR), 64);
    EXPECT_TRUE(padded.step() == 64 && padded.info() == ImageInfo(5, 4, BGR));
    std::fill(padded.data(), padded.data() + 64 * 4, 0x5A);
    EXPECT_EQ(Image(ImageInfo(5, 4, BGR), 15).step(), 15u);
    EXPECT_THROW(Image(ImageInfo(5, 4, BGR), 14), std::invalid_argument);
    EXPECT_THROW(Image(ImageInfo(0x80000000u, 1, BGRA)), std::bad_alloc);  // step over 32 bits
    EXPECT_THROW(Image(ImageInfo(1, 0xFFFFFFFFu, Gray), 0xFFFFFFFFu), std::bad_alloc);
}

TEST(Image, CopiesShareUntilWrittenAndCopyEveryByte) {
    Image a(ImageInfo(3, 3, BGR), 16);
    for (unsigned i = 0; i < 48; ++i) a.data()[i] = static_cast<unsigned char>(i + 1);
    Image b(a);
    Image const c(a);
    EXPECT_EQ(c.constData_s(), a.constData_s());
    unsigned char* written = b.data();
    EXPECT_TRUE(written != a.constData() && aligned(written));
    EXPECT_TRUE(b.step() == 16 && b.info() == a.info());
    for (unsigned i = 0; i < 48; ++i) ASSERT_EQ(written[i], i + 1);
    written[0] = 99;
    EXPECT_EQ(a.constData()[0], 1);
    // A unique image writes in place.
    unsigned char const* before = b.constData();
    { Image const transient(b); }
    EXPECT_EQ(b.data(), before);
    b = a;
    b = b;
    Image moved(std::move(b)), target;
    EXPECT_TRUE(moved.constData() == a.constData() && c.constData() == a.constData());
    target = std::move(moved);
    EXPECT_TRUE(target.constData() == a.constData() && moved.isNull());
}

// A host's buffer is used in place, copied only when a shared handle writes, and given back
// once, when the last handle goes; the copy takes no byte past the last row's pixels.
TEST(Image, OverHostPixels) {
    int released = 0;
    {
        // The buffer ends right after the last row's pixels, so ASan sees any read past them.
        std::vector<unsigned char> host(2 * 16 + 5 * 3);
        for (std::size_t i = 0; i < host.size(); ++i) host[i] = static_cast<unsigned char>(i);
        Image image(host.data(), 16, ImageInfo(5, 3, BGR), [&released] { ++released; });
        EXPECT_TRUE(image.constData() == host.data() && image.step() == 16u);
        EXPECT_EQ(image.data(), host.data());  // sole handle: in place
        Image copy(image);
        image = Image();
        EXPECT_EQ(released, 0);
        Image writer(copy);
        unsigned char* own = writer.data();
        ASSERT_NE(own, host.data());
        EXPECT_TRUE(std::equal(host.begin() + 32, host.end(), own + 32) && own[17] == 17);
        copy = writer;
        EXPECT_EQ(released, 1);
    }
    Image null(nullptr, 3, ImageInfo(1, 1, BGR), [&released] { ++released; });
    EXPECT_TRUE(null.isNull() && released == 2);
    unsigned char pixel = 0;
    EXPECT_THROW(Image(&pixel, 2, ImageInfo(1, 1, BGR), [&released] { ++released; }),
                 std::invalid_argument);
    EXPECT_EQ(released, 2);
}

// The count stays exact under copies on several threads (the sanitizer build checks it).
TEST(Image, HandlesOnManyThreads) {
    Image shared(ImageInfo(16, 16, Gray));
    std::fill(shared.data(), shared.data() + 256, 0x42);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&shared, t] {
            for (int i = 0; i < 2000; ++i) {
                Image copy(shared), other;
                other = copy;
                if (i % 100 == 0) other.data()[0] = static_cast<unsigned char>(t);
                ASSERT_EQ(copy.constData()[255], 0x42);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.constData()[0], 0x42);
}

// Regions are cut to the image; the first pixel is addressed by the step.
TEST(ImageRegion, CutToTheImage) {
    struct Case {
        Roi set;
        Point offset;
        Size size;
    } const cases[] = {{Roi(Point(2, 1), Size(3, 2)), Point(2, 1), Size(3, 2)},
                       {Roi(Point(0, 0), Size(10, 8)), Point(0, 0), Size(10, 8)},
                       {Roi(Point(9, 7), Size(1, 1)), Point(9, 7), Size(1, 1)},
                       {Roi(Point(7, 5), Size(10, 10)), Point(7, 5), Size(3, 3)},
                       {Roi(Point(-2, -3), Size(5, 5)), Point(0, 0), Size(3, 2)},
                       {Roi(Point(20, 2), Size(4, 4)), Point(0, 0), Size(0, 0)},
                       {Roi(Point(2, 8), Size(4, 4)), Point(0, 0), Size(0, 0)},
                       {Roi(Point(2, 1), Size(0, 3)), Point(0, 0), Size(0, 0)},
                       {Roi(Point(-50, -50), Size(10, 10)), Point(0, 0), Size(0, 0)},
                       {Roi(Point(3, 3), Size(0xFFFFFFFFu, 0xFFFFFFFFu)), Point(3, 3), Size(7, 5)}};
    Image image(ImageInfo(10, 8, BGR), 40);
    char const* first = nullptr;
    Roi roi = getRoi(image, &first);
    EXPECT_EQ(roi, Roi(Point(), Size(10, 8)));
    EXPECT_EQ(first, image.constData_s());
    EXPECT_FALSE(hasRoi(image));
    for (Case const& c : cases) {
        setRoi(image, c.set);
        EXPECT_TRUE(hasRoi(image));
        roi = getRoi(image, &first);
        EXPECT_EQ(roi, Roi(c.offset, c.size)) << c.set.offset().x() << "," << c.set.offset().y();
        EXPECT_EQ(first, image.constData_s() + c.offset.y() * 40 + c.offset.x() * 3);
    }
    resetRoi(image);
    EXPECT_FALSE(hasRoi(image));
    EXPECT_EQ(getRoi(image, &first).size(), Size(10, 8));
    Image null;
    setRoi(null, Roi(Point(1, 1), Size(2, 2)));
    EXPECT_TRUE(null.isNull() && getRoi(null, &first).size() == Size(0, 0) && first == nullptr);
}

// Region, lines and segments travel with copies; additions stay with the handle made them.
TEST(ImageAttachments, BelongToTheHandle) {
    Image source(ImageInfo(8, 8, Gray));
    addLine(source, Line(0, 0, 1, 1));
    setRoi(source, Roi(Point(1, 2), Size(3, 4)));
    SegmentList segments;
    Segment segment;
    segment.name = "ball";
    segments.append(segment);
    setSegmentList(source, segments);
    segments.append(Segment());  // the image keeps the list as it was given
    Image copy(source);
    char const* first = nullptr;
    EXPECT_TRUE(lines(copy) == List<Line>{Line(0, 0, 1, 1)} && segmentList(copy).size() == 1 &&
                getRoi(copy, &first).offset() == Point(1, 2));
    EXPECT_EQ(segmentList(copy).first().name, "ball");
    addLine(copy, Line(2, 2, 3, 3));
    resetRoi(copy);
    setSegmentList(copy, SegmentList());
    copy.data()[0] = 3;
    EXPECT_EQ(std::tuple(lines(source).size(), segmentList(source).size(), hasRoi(source)),
              std::tuple(1, 1, true));
    EXPECT_EQ(std::tuple(lines(copy).size(), segmentList(copy).size()), std::tuple(2, 0));
    List<Line> taken = lines(source);
    taken.append(Line(9, 9, 9, 9));
    setLines(copy, taken);
    EXPECT_TRUE(lines(source).size() == 1 && lines(copy) == taken);
    Image null;
    addLine(null, Line(1, 2, 3, 4));
    EXPECT_TRUE(null.isNull() && lines(null).size() == 1 && segmentList(Image()).isEmpty());
}

// The header describes the whole buffer without copying it; the region is not the header's.
TEST(OpenCVAdapter, HeaderOverThePixels) {
    for (Format format : {Gray, BGR, BGRA}) {
        Image image(ImageInfo(5, 4, format), 64);
        setRoi(image, Roi(Point(1, 1), Size(2, 2)));
        Image const copy(image);
        OpenCV adapter(copy);
        IplImage* header = adapter;
        ASSERT_NE(header, nullptr);
        EXPECT_EQ(std::tuple(header->width, header->height, header->widthStep, header->imageSize),
                  std::tuple(5, 4, 64, 4 * 64));
        EXPECT_EQ(std::tuple(header->nChannels, header->depth, header->roi),
                  std::tuple(int(image.info().numChannels), IPL_DEPTH_8U, nullptr));
        EXPECT_TRUE(header->imageData == image.constData_s() &&
                    header->imageDataOrigin == image.constData_s());
    }
    EXPECT_EQ(static_cast<IplImage*>(OpenCV(Image())), nullptr);
    EXPECT_EQ(static_cast<IplImage*>(OpenCV(Image(ImageInfo(4, 4, FormatNone)))), nullptr);
}

}  // namespace
