// Segmenter set-up: compiling the classes (the 32-class limit, unused channels, a new list
// replacing the old, an empty list, reset), the default result list, and the sizing of the
// run buffers with the minimum run it chooses.
#include <nuv/core.h>
#include <nuv/cv/Segmenter.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::core::Line;
using nuv::core::Point;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using nuv::cv::Segmenter;
using ImageSegment = nuv::core::image::Segment;

// A class that accepts the given channel-0 values and looks at no other channel.
nuv::cv::Segment valueClass(std::string const& name, std::vector<unsigned char> const& values) {
    nuv::cv::Segment segment;
    segment.setName(name);
    for (unsigned char value : values) segment.addColor(Color::fromRgba(value, 0, 0));
    segment.setChannelUsed(1, false);
    segment.setChannelUsed(2, false);
    return segment;
}

// A packed three-channel image whose channel 0 is value(x, y); channels 1 and 2 carry a
// pattern of their own.
Image channelZeroImage(unsigned width, unsigned height,
                       std::function<unsigned char(unsigned, unsigned)> const& value) {
    Image image(ImageInfo(width, height, nuv::core::image::BGR));
    unsigned char* p = image.data();
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            p[y * image.step() + 3 * x] = value(x, y);
            p[y * image.step() + 3 * x + 1] = static_cast<unsigned char>(x * 13 + y * 29);
            p[y * image.step() + 3 * x + 2] = static_cast<unsigned char>(x * 101 + y * 7);
        }
    return image;
}

// Channel 0 from strings: a letter is its value (A = 10, B = 20 ...), anything else 0.
Image picture(std::vector<std::string> const& rows) {
    return channelZeroImage(
        static_cast<unsigned>(rows[0].size()), static_cast<unsigned>(rows.size()),
        [&](unsigned x, unsigned y) -> unsigned char {
            const char c = rows[y][x];
            return c >= 'A' && c <= 'Y' ? static_cast<unsigned char>((c - 'A' + 1) * 10) : 0;
        });
}

std::vector<ImageSegment> entries(nuv::core::image::SegmentList const& list) {
    return std::vector<ImageSegment>(list.constBegin(), list.constEnd());
}

std::vector<ImageSegment> entries(Image const& result) {
    return entries(nuv::core::image::segmentList(result));
}

// The minimum run chosen for a size counts from the second frame of that size on.
Image secondFrame(Segmenter& segmenter, Image const& image) {
    segmenter.doSegmentation(image);
    return segmenter.doSegmentation(image);
}

TEST(SegmenterSetup, OnlyTheFirst32ClassesTakePart) {
    nuv::cv::SegmentList list;
    for (int i = 0; i < 33; ++i)
        list.append(valueClass("c" + std::to_string(i), {static_cast<unsigned char>(100 + i)}));
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    const std::vector<ImageSegment> defaults = entries(segmenter.createSegmentList());
    ASSERT_EQ(defaults.size(), 32u);
    EXPECT_EQ(defaults[31].name, "c31");

    // Class 31 has the top bit of the mask; class 32 has none, so its pixels belong to no
    // class, and in particular not to class 0.
    const Image image = channelZeroImage(8, 2, [](unsigned x, unsigned) -> unsigned char {
        return x < 3 ? 131 : (x >= 4 && x < 7 ? 132 : 0);
    });
    const std::vector<ImageSegment> result = entries(secondFrame(segmenter, image));
    ASSERT_EQ(result.size(), 32u);
    EXPECT_EQ(result[31].pixelCount, 3u);
    EXPECT_EQ(result[31].segmentIndex, 31);
    EXPECT_EQ(result[31].name, "c31");
    for (int i = 0; i < 31; ++i) EXPECT_EQ(result[i].pixelCount, 0u) << "class " << i;
}

TEST(SegmenterSetup, ANewListLeavesNoTraceOfTheOldOne) {
    nuv::cv::SegmentList first;
    first << valueClass("a", {10}) << valueClass("b", {20});
    nuv::cv::SegmentList second;
    second << valueClass("c", {30});
    Segmenter segmenter;
    segmenter.setColorSegments(first);
    segmenter.setColorSegments(second);

    const std::vector<ImageSegment> defaults = entries(segmenter.createSegmentList());
    ASSERT_EQ(defaults.size(), 1u);
    EXPECT_EQ(defaults[0].name, "c");

    // Had the A pixels kept the bit that is now class c's, c's largest region would be them.
    const std::vector<ImageSegment> result =
        entries(secondFrame(segmenter, picture({"AAAA.CC.", "........", "CCC....."})));
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].pixelCount, 2u);
    ASSERT_EQ(result[0].lines.size(), 1);
    EXPECT_EQ(result[0].lines.first(), Line(5, 0, 6, 0));
}

TEST(SegmenterSetup, AnEmptyListOrAResetLeavesNoClass) {
    nuv::cv::SegmentList list;
    list << valueClass("a", {10}) << valueClass("b", {20});
    const Image image = picture({"AAAA", "AAAA", "BBBB"});

    for (bool reset : {false, true}) {
        SCOPED_TRACE(reset ? "reset" : "empty list");
        Segmenter segmenter;
        segmenter.setColorSegments(list);
        if (reset)
            segmenter.resetColorSegments();
        else
            segmenter.setColorSegments(nuv::cv::SegmentList());

        EXPECT_EQ(segmenter.createSegmentList().size(), 0);
        const Image result = segmenter.doSegmentation(image);
        EXPECT_EQ(nuv::core::image::segmentList(result).size(), 0);
        EXPECT_EQ(result.constData(), image.constData()) << "the pixels come back";

        // Configuring again works as on a new object.
        segmenter.setColorSegments(list);
        const std::vector<ImageSegment> found = entries(segmenter.doSegmentation(image));
        ASSERT_EQ(found.size(), 2u);
        EXPECT_EQ(found[0].pixelCount, 8u);
        EXPECT_EQ(found[1].pixelCount, 0u) << "the B row is the last stored run";
    }
}

TEST(SegmenterSetup, DefaultListHasColourAndNameOfEachClassInOrder) {
    nuv::cv::SegmentList list;
    list << valueClass("ball", {10}) << valueClass("box", {20}) << valueClass("bar", {30});
    Segmenter segmenter;
    EXPECT_EQ(segmenter.createSegmentList().size(), 0);
    segmenter.setColorSegments(list);

    const std::vector<ImageSegment> defaults = entries(segmenter.createSegmentList());

    ASSERT_EQ(defaults.size(), 3u);
    const char* names[3] = {"ball", "box", "bar"};
    for (unsigned i = 0; i < 3; ++i) {
        ImageSegment expected;
        expected.color = Color::fromRgba(static_cast<unsigned char>(10 * (i + 1)), 0, 0, 0);
        expected.name = names[i];
        EXPECT_TRUE(defaults[i] == expected) << "entry " << i;
        EXPECT_EQ(defaults[i].color.argb(), expected.color.argb());
    }
    // Nothing found gives the same list.
    const Image nothing = channelZeroImage(6, 4, [](unsigned, unsigned) { return 0; });
    EXPECT_TRUE(nuv::core::image::segmentList(segmenter.doSegmentation(nothing)) ==
                segmenter.createSegmentList());
}

TEST(SegmenterSetup, AClassUsingNoChannelAcceptsEveryPixel) {
    nuv::cv::Segment all;
    all.setName("all");
    for (unsigned c = 0; c < 3; ++c) all.setChannelUsed(c, false);
    nuv::cv::SegmentList list;
    list << all;
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = channelZeroImage(
        5, 3, [](unsigned x, unsigned y) { return static_cast<unsigned char>(x * 61 + y * 17); });

    const std::vector<ImageSegment> result = entries(secondFrame(segmenter, image));

    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].pixelCount, 10u);
    EXPECT_EQ(result[0].center, Point(2, 0));
}

TEST(SegmenterSetup, AUsedChannelWithAnEmptyIndexRejectsEveryPixel) {
    nuv::cv::Segment none;
    none.setName("none");
    none.setMeanColor(Color(0xFF102030u));
    none.setChannelUsed(1, false);
    none.setChannelUsed(2, false);
    nuv::cv::SegmentList list;
    list << none;
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = channelZeroImage(
        5, 3, [](unsigned x, unsigned y) { return static_cast<unsigned char>(x * 61 + y * 17); });

    const std::vector<ImageSegment> result = entries(secondFrame(segmenter, image));

    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].pixelCount, 0u);
    EXPECT_EQ(result[0].color.argb(), 0xFF102030u);
}

TEST(SegmenterSetup, AnUnusedChannelIgnoresWhatItsIndexHolds) {
    // Trained on channel 1 = 5, then channel 1 switched off: its value no longer matters,
    // while channel 2, still in use, does.
    nuv::cv::Segment segment;
    segment.setName("s");
    segment.addColor(Color::fromRgba(10, 5, 7));
    segment.setChannelUsed(1, false);
    nuv::cv::SegmentList list;
    list << segment;
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    Image image(ImageInfo(4, 2, nuv::core::image::BGR));
    for (unsigned i = 0; i < 8; ++i) {
        image.data()[3 * i] = 10;
        image.data()[3 * i + 1] = static_cast<unsigned char>(40 + i);
        image.data()[3 * i + 2] = i == 3 ? 8 : 7;
    }

    const std::vector<ImageSegment> result = entries(secondFrame(segmenter, image));

    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].pixelCount, 3u) << "pixel 3 fails on channel 2";
}

TEST(SegmenterSetup, SizingChoosesTheMinimumRunForTheFramesThatFollow) {
    nuv::cv::SegmentList list;
    list << valueClass("a", {10}) << valueClass("t", {200});
    // A run of 3, and a tail run that is the last stored one.
    auto frame = [](unsigned width) {
        return channelZeroImage(width, 3, [](unsigned x, unsigned y) -> unsigned char {
            if (y == 0 && x < 3) return 10;
            if (y == 2 && x < 4) return 200;
            return 0;
        });
    };

    {
        Segmenter segmenter;
        segmenter.setupSegmentation(349, 3);
        segmenter.setColorSegments(list);
        EXPECT_EQ(entries(segmenter.doSegmentation(frame(349)))[0].pixelCount, 3u);
    }
    {
        Segmenter segmenter;
        segmenter.setupSegmentation(100, 3);
        segmenter.setupSegmentation(350, 3);
        segmenter.setColorSegments(list);
        EXPECT_EQ(entries(segmenter.doSegmentation(frame(350)))[0].pixelCount, 0u);
    }
    {
        // Without any sizing the first frame drops runs shorter than 4.
        Segmenter segmenter;
        segmenter.setColorSegments(list);
        EXPECT_EQ(entries(segmenter.doSegmentation(frame(20)))[0].pixelCount, 0u);
        EXPECT_EQ(entries(segmenter.doSegmentation(frame(20)))[0].pixelCount, 3u);
    }
}

TEST(SegmenterSetup, FramesWithoutClassesStillSizeTheBuffers) {
    const Image image = channelZeroImage(100, 3, [](unsigned x, unsigned y) -> unsigned char {
        if (y == 0 && x < 3) return 10;
        if (y == 2 && x < 4) return 20;
        return 0;
    });
    Segmenter segmenter;

    EXPECT_EQ(nuv::core::image::segmentList(segmenter.doSegmentation(image)).size(), 0);

    nuv::cv::SegmentList list;
    list << valueClass("a", {10}) << valueClass("b", {20});
    segmenter.setColorSegments(list);
    // The classless frame sized for a width of 100, so this first frame with classes already
    // keeps runs of 3.
    EXPECT_EQ(entries(segmenter.doSegmentation(image))[0].pixelCount, 3u);
}

TEST(SegmenterSetup, SizeWhoseCellCountOverflowsIsRefused) {
    Segmenter segmenter;
    EXPECT_THROW(segmenter.setupSegmentation(50000, 50000), std::bad_array_new_length);
    Segmenter other;
    EXPECT_THROW(other.setupSegmentation(-1, 7), std::bad_array_new_length);
}

}  // namespace
