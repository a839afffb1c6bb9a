// Segmenter::doSegmentation on pictures drawn in the test: the exact regions of small
// examples, the minimum run and when it takes effect, the last stored run, connectivity,
// the choice of the reported region, the region cap and the images it accepts.
#include <nuv/core.h>
#include <nuv/cv/Segmenter.h>

#include "support/slots.h"

#include <gtest/gtest.h>

#include <cctype>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using nuv::cv::Segmenter;
using ImageSegment = nuv::core::image::Segment;

// Letters A..Y stand for the channel-0 values 10..250; any other character is a pixel that
// no class of these tests accepts.
unsigned char valueOf(char letter) {
    return letter >= 'A' && letter <= 'Y' ? static_cast<unsigned char>((letter - 'A' + 1) * 10) : 0;
}

// A class that accepts the channel-0 values of the given letters and looks at no other
// channel; named after its first letter unless a name is given.
nuv::cv::Segment letterClass(std::string const& letters, std::string const& name = "") {
    nuv::cv::Segment segment;
    segment.setName(name.empty() ? std::string(1, char(std::tolower(letters[0]))) : name);
    for (char letter : letters) segment.addColor(Color::fromRgba(valueOf(letter), 0, 0));
    segment.setChannelUsed(1, false);
    segment.setChannelUsed(2, false);
    return segment;
}

nuv::cv::SegmentList classes(std::string const& letters) {
    nuv::cv::SegmentList list;
    for (char letter : letters) list.append(letterClass(std::string(1, letter)));
    return list;
}

nuv::cv::Segment classAt(nuv::cv::SegmentList const& list, int index) {
    auto it = list.constBegin();
    for (int i = 0; i < index; ++i) ++it;
    return *it;
}

// A packed three-channel picture, one string a row. Channels 1 and 2 hold a position
// pattern that the classes ignore.
Image picture(std::vector<std::string> const& rows) {
    const unsigned width = static_cast<unsigned>(rows[0].size());
    Image image(ImageInfo(width, static_cast<unsigned>(rows.size()), nuv::core::image::BGR));
    unsigned char* p = image.data();
    for (unsigned y = 0; y < rows.size(); ++y)
        for (unsigned x = 0; x < width; ++x) {
            unsigned char* pixel = p + y * image.step() + 3 * x;
            pixel[0] = valueOf(rows[y][x]);
            pixel[1] = static_cast<unsigned char>(x * 37 + y * 11);
            pixel[2] = static_cast<unsigned char>(x * 5 + y * 71);
        }
    return image;
}

std::vector<Line> runs(int x0, int x1, int yFirst, int yLast) {
    std::vector<Line> lines;
    for (int y = yFirst; y <= yLast; ++y) lines.emplace_back(x0, y, x1, y);
    return lines;
}

ImageSegment found(nuv::cv::Segment const& cls, int index, unsigned pixelCount, Point centre,
                   std::vector<Line> const& lines) {
    ImageSegment segment;
    segment.pixelCount = pixelCount;
    segment.color = cls.meanColor();
    segment.center = centre;
    for (Line const& line : lines) segment.lines.append(line);
    segment.segmentIndex = index;
    segment.name = cls.name();
    return segment;
}

ImageSegment notFound(nuv::cv::Segment const& cls) {
    ImageSegment segment;
    segment.color = cls.meanColor();
    segment.name = cls.name();
    return segment;
}

std::string describe(ImageSegment const& segment) {
    std::ostringstream text;
    text << segment.name << " #" << segment.segmentIndex << " colour " << std::hex
         << segment.color.argb() << std::dec << " pixels " << segment.pixelCount << " centre ("
         << segment.center.x() << "," << segment.center.y() << ") lines";
    for (auto it = segment.lines.constBegin(); it != segment.lines.constEnd(); ++it)
        text << " (" << it->x0() << "," << it->y0() << ")-(" << it->x1() << "," << it->y1() << ")";
    return text.str();
}

void expectResult(Image const& result, std::vector<ImageSegment> const& expected) {
    const nuv::core::image::SegmentList list = nuv::core::image::segmentList(result);
    ASSERT_EQ(list.size(), static_cast<int>(expected.size()));
    std::size_t i = 0;
    for (auto it = list.constBegin(); it != list.constEnd(); ++it, ++i) {
        EXPECT_EQ(describe(*it), describe(expected[i])) << "entry " << i;
        EXPECT_TRUE(*it == expected[i]) << "entry " << i;
    }
}

ImageSegment entry(Image const& result, int index) {
    const nuv::core::image::SegmentList list = nuv::core::image::segmentList(result);
    auto it = list.constBegin();
    for (int i = 0; i < index; ++i) ++it;
    return *it;
}

// The minimum run chosen for a size counts from the second frame of that size on.
Image secondFrame(Segmenter& segmenter, Image const& image) {
    segmenter.doSegmentation(image);
    return segmenter.doSegmentation(image);
}

// ---------------------------------------------------------------- worked examples

TEST(SegmenterExamples, FourRowsGiveOneRegionPerClassInListOrder) {
    const nuv::cv::SegmentList list = classes("AB");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"AAA..BB.",  //
                                 ".AAA.BB.",  //
                                 "........",  //
                                 "AA......"});

    const Image result = secondFrame(segmenter, image);

    // The run of row 3 is the last stored run and takes part in nothing.
    expectResult(result,
                 {found(classAt(list, 0), 0, 6, Point(1, 0), {Line(0, 0, 2, 0), Line(1, 1, 3, 1)}),
                  found(classAt(list, 1), 1, 4, Point(6, 0), runs(5, 6, 0, 1))});
}

TEST(SegmenterExamples, ConnectedShapeOfIntricateOutlineSplitsIntoTwoRegions) {
    const nuv::cv::SegmentList list = classes("A");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    //                           0123456789012345678901
    const Image image =
        picture({"....................AA", "....AA....AAAAAA....AA", "....AA....AA..AAAAAAAA",
                 "....AAAAAAAA..........", "......................", "AA...................."});

    const Image result = secondFrame(segmenter, image);

    // Cell 2 is re-pointed twice while cell 6 keeps the first root: {0, 3, 6} with 12 pixels
    // and {1, 2, 4, 5, 7} with 20; the second is the larger.
    expectResult(result, {found(classAt(list, 0), 0, 20, Point(9, 2),
                                {Line(4, 1, 5, 1), Line(10, 1, 15, 1), Line(4, 2, 5, 2),
                                 Line(10, 2, 11, 2), Line(4, 3, 11, 3)})});
}

// ---------------------------------------------------------------- minimum run

TEST(SegmenterMinimumRun, FirstFrameOfANewSizeUsesTheValueBeforeIt) {
    const nuv::cv::SegmentList list = classes("AT");
    std::vector<std::string> rows(4, std::string(100, '.'));
    rows[0].replace(0, 3, "AAA");
    rows[3].replace(0, 4, "TTTT");
    const Image image = picture(rows);
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    // A new object has not been sized: its first frame drops runs shorter than 4.
    expectResult(segmenter.doSegmentation(image),
                 {notFound(classAt(list, 0)), notFound(classAt(list, 1))});
    // Sizing for a width of 100 chose 2, which counts from now on.
    expectResult(segmenter.doSegmentation(image),
                 {found(classAt(list, 0), 0, 3, Point(1, 0), {Line(0, 0, 2, 0)}),
                  notFound(classAt(list, 1))});

    // A wider frame still runs with 2, the frame after it with 4.
    std::vector<std::string> wide(4, std::string(400, '.'));
    wide[0].replace(0, 3, "AAA");
    wide[3].replace(0, 4, "TTTT");
    const Image wideImage = picture(wide);
    EXPECT_EQ(entry(segmenter.doSegmentation(wideImage), 0).pixelCount, 3u);
    EXPECT_EQ(entry(segmenter.doSegmentation(wideImage), 0).pixelCount, 0u);
    // Back to 100: one more frame with 4, then 2 again.
    EXPECT_EQ(entry(segmenter.doSegmentation(image), 0).pixelCount, 0u);
    EXPECT_EQ(entry(segmenter.doSegmentation(image), 0).pixelCount, 3u);
}

TEST(SegmenterMinimumRun, FramesWiderThan349PixelsNeedRunsOfFour) {
    const nuv::cv::SegmentList list = classes("ABCDT");
    for (int width : {349, 350}) {
        SCOPED_TRACE("width " + std::to_string(width));
        std::vector<std::string> rows(3, std::string(static_cast<std::size_t>(width), '.'));
        rows[0].replace(0, 13, "A.BB.CCC.DDDD");
        rows[2].replace(0, 4, "TTTT");
        Segmenter segmenter;
        segmenter.setColorSegments(list);

        const Image result = secondFrame(segmenter, picture(rows));

        // Runs as long as the minimum are stored; only shorter ones are dropped.
        const bool narrow = width == 349;
        EXPECT_EQ(entry(result, 0).pixelCount, 0u);
        EXPECT_EQ(entry(result, 1).pixelCount, narrow ? 2u : 0u);
        EXPECT_EQ(entry(result, 2).pixelCount, narrow ? 3u : 0u);
        EXPECT_EQ(entry(result, 3).pixelCount, 4u);
        EXPECT_EQ(entry(result, 4).pixelCount, 0u) << "the last stored run counts nowhere";
    }
}

TEST(SegmenterMinimumRun, BridgeThinnerThanTheMinimumSeparatesRegions) {
    const nuv::cv::SegmentList list = classes("AT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    const Image thin = picture({"AAAAAA..",  //
                                "..A.....",  //
                                "AAAA....",  //
                                "........",  //
                                "......TT"});
    // The dropped bridge connects nothing, in its own row or the next.
    expectResult(secondFrame(segmenter, thin),
                 {found(classAt(list, 0), 0, 6, Point(3, 0), {Line(0, 0, 5, 0)}),
                  notFound(classAt(list, 1))});

    const Image wide = picture({"AAAAAA..",  //
                                "..AA....",  //
                                "AAAA....",  //
                                "........",  //
                                "......TT"});
    expectResult(segmenter.doSegmentation(wide),
                 {found(classAt(list, 0), 0, 12, Point(2, 0),
                        {Line(0, 0, 5, 0), Line(2, 1, 3, 1), Line(0, 2, 3, 2)}),
                  notFound(classAt(list, 1))});
}

// ---------------------------------------------------------------- the last stored run

TEST(SegmenterLastRun, IsLeftOutOfEveryRegion) {
    const nuv::cv::SegmentList list = classes("A");
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    // A single stored run is the last one: the class is not found.
    expectResult(secondFrame(segmenter, picture({"AAAA..", "......"})),
                 {notFound(classAt(list, 0))});

    // Of two full rows only the first counts.
    expectResult(secondFrame(segmenter, picture({"AAAAA", "AAAAA"})),
                 {found(classAt(list, 0), 0, 5, Point(2, 0), {Line(0, 0, 4, 0)})});
}

TEST(SegmenterLastRun, ItsLinksStillJoinTheArmsOfAU) {
    const nuv::cv::SegmentList list = classes("A");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"AA..AA",  //
                                 "AA..AA",  //
                                 "AAAAAA"});

    // The bottom joins the two arms into one region and adds no pixels of its own.
    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 8, Point(3, 0),
                        {Line(0, 0, 1, 0), Line(4, 0, 5, 0), Line(0, 1, 1, 1), Line(4, 1, 5, 1)})});
}

// ---------------------------------------------------------------- connectivity

TEST(SegmenterConnectivity, RunsMeetingAtACornerStayApart) {
    const nuv::cv::SegmentList list = classes("AT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"AAA.....",  //
                                 "...AAAA.",  //
                                 "........",  //
                                 "TT......"});

    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 4, Point(5, 1), {Line(3, 1, 6, 1)}),
                  notFound(classAt(list, 1))});
}

TEST(SegmenterConnectivity, RunsOfOtherClassesNeitherConnectNorContinue) {
    const nuv::cv::SegmentList list = classes("ABT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"AAAA..AABB",  //
                                 "BBBB......",  //
                                 "AAAA......",  //
                                 "..........",  //
                                 "TT........"});

    // The two A blocks are not joined through the B row, so they tie and the first wins; the
    // class change in row 0 ends a run without a gap.
    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 4, Point(2, 0), {Line(0, 0, 3, 0)}),
                  found(classAt(list, 1), 1, 4, Point(2, 1), {Line(0, 1, 3, 1)}),
                  notFound(classAt(list, 2))});
}

TEST(SegmenterConnectivity, RunsTouchingSeveralRunsAboveMergeThemAll) {
    const nuv::cv::SegmentList list = classes("AT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    // A comb: three teeth joined by the row under them, then a tail row below.
    const Image image = picture({"AA.AA.AA",  //
                                 "AAAAAAAA",  //
                                 "AA......",  //
                                 "........",  //
                                 "TT......"});

    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 16, Point(3, 0),
                        {Line(0, 0, 1, 0), Line(3, 0, 4, 0), Line(6, 0, 7, 0), Line(0, 1, 7, 1),
                         Line(0, 2, 1, 2)}),
                  notFound(classAt(list, 1))});
}

// ---------------------------------------------------------------- classification

TEST(SegmenterClassification, EarliestConfiguredClassWinsASharedValue) {
    const nuv::cv::Segment a = letterClass("A");
    const nuv::cv::Segment b = letterClass("BA");  // accepts 20 and 10
    const nuv::cv::Segment t = letterClass("T");
    const Image image = picture({"BBAABB", "......", "TTTT.."});

    nuv::cv::SegmentList aFirst;
    aFirst << a << b << t;
    Segmenter segmenter;
    segmenter.setColorSegments(aFirst);
    // b sees a gap where a takes the shared value: two b regions of 2, the first reported.
    expectResult(secondFrame(segmenter, image),
                 {found(a, 0, 2, Point(3, 0), {Line(2, 0, 3, 0)}),
                  found(b, 1, 2, Point(1, 0), {Line(0, 0, 1, 0)}), notFound(t)});

    nuv::cv::SegmentList bFirst;
    bFirst << b << a << t;
    segmenter.setColorSegments(bFirst);
    expectResult(segmenter.doSegmentation(image),
                 {found(b, 0, 6, Point(3, 0), {Line(0, 0, 5, 0)}), notFound(a), notFound(t)});
}

TEST(SegmenterClassification, EveryUsedChannelMustAcceptThePixel) {
    nuv::cv::Segment x;
    x.setName("x");
    x.addColor(Color::fromRgba(100, 50, 200));
    nuv::cv::SegmentList list;
    list << x << letterClass("T");

    Image image(ImageInfo(5, 3, nuv::core::image::BGR));
    const unsigned char pixels[3][5][3] = {
        {{100, 50, 200}, {100, 50, 200}, {100, 50, 201}, {100, 50, 200}, {99, 50, 200}},
        {{100, 51, 200}, {100, 50, 200}, {100, 50, 200}, {100, 50, 200}, {100, 50, 200}},
        {{200, 0, 0}, {200, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}};
    for (unsigned y = 0; y < 3; ++y)
        for (unsigned x = 0; x < 5; ++x)
            for (unsigned c = 0; c < 3; ++c)
                image.data()[y * image.step() + 3 * x + c] = pixels[y][x][c];
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    // Row 0: a run of 2, then a lone match that is too short; a wrong channel 0 at the end
    // keeps the last two pixels from forming a run.
    expectResult(secondFrame(segmenter, image),
                 {found(x, 0, 6, Point(2, 0), {Line(0, 0, 1, 0), Line(1, 1, 4, 1)}),
                  notFound(classAt(list, 1))});
}

// ---------------------------------------------------------------- regions and selection

TEST(SegmenterRegions, AnEvenRunIsCentredAtHalfItsLengthFromItsStart) {
    const nuv::cv::SegmentList list = classes("AT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"AAAAAAAAAA..", "............", "TT.........."});

    // Columns 0 to 9 give x = 5, not the 4 of their middle.
    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 10, Point(5, 0), {Line(0, 0, 9, 0)}),
                  notFound(classAt(list, 1))});
}

TEST(SegmenterRegions, OfTiedLargestRegionsTheFirstCreatedIsReported) {
    const nuv::cv::SegmentList list = classes("AT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    //                           01234567890123456789
    const Image image = picture({"AAAAAAAAAA..........",  // 10 pixels
                                 "............AAAAAAAA",  // 40 pixels from here ...
                                 "AAAAAAAAAA..AAAAAAAA",  // ... and 40 from here
                                 "AAAAAAAAAA..AAAAAAAA",  //
                                 "AAAAAAAAAA..AAAAAAAA",  //
                                 "AAAAAAAAAA..AAAAAAAA",  //
                                 "....................",  //
                                 "TT.................."});

    // The right block starts a row earlier, so its region was created first.
    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 40, Point(16, 3), runs(12, 19, 1, 5)),
                  notFound(classAt(list, 1))});
}

TEST(SegmenterRegions, ClassesOfEqualMeanColourReportTheSameRegion) {
    const nuv::cv::Segment a = letterClass("A");
    nuv::cv::Segment twin = letterClass("B", "twin");
    twin.setMeanColor(a.meanColor());
    const nuv::cv::Segment t = letterClass("T");
    nuv::cv::SegmentList list;
    list << a << twin << t;
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"..BB....",  //
                                 "........",  //
                                 "AAAAAA..",  //
                                 "........",  //
                                 "TT......"});

    // Each class keeps its largest region, and each entry takes the first of them by colour:
    // the twin's, which comes first in raster order, with the twin's name and index.
    const ImageSegment first = found(twin, 1, 2, Point(3, 0), {Line(2, 0, 3, 0)});
    expectResult(secondFrame(segmenter, image), {first, first, notFound(t)});
}

TEST(SegmenterRegions, AClassWithoutPixelsHasADefaultEntry) {
    const nuv::cv::SegmentList list = classes("ABT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    const Image image = picture({"AAA...", "......", "TT...."});

    const Image result = secondFrame(segmenter, image);

    expectResult(result, {found(classAt(list, 0), 0, 3, Point(1, 0), {Line(0, 0, 2, 0)}),
                          notFound(classAt(list, 1)), notFound(classAt(list, 2))});
    const ImageSegment missing = entry(result, 1);
    EXPECT_EQ(missing.segmentIndex, 0);
    EXPECT_EQ(missing.center, Point());
    EXPECT_TRUE(missing.lines.isEmpty());
    EXPECT_EQ(missing.name, "b");
}

// Runs of two pixels on every other row, 30 to a row, each its own region, and then one
// run of class B.
Image isolatedRuns(int count) {
    const int rows = 2 * (count / 30) + 5;
    std::vector<std::string> picture(static_cast<std::size_t>(rows), std::string(100, '.'));
    for (int i = 0; i < count; ++i)
        picture[static_cast<std::size_t>(2 * (i / 30))].replace(
            static_cast<std::size_t>(3 * (i % 30)), 2, "AA");
    picture[static_cast<std::size_t>(2 * (count / 30))].replace(
        static_cast<std::size_t>(3 * (count % 30)), 2, "BB");
    picture[static_cast<std::size_t>(rows - 1)].replace(0, 2, "TT");
    return ::picture(picture);
}

TEST(SegmenterRegions, TheTwoThousandthRegionStillCounts) {
    const nuv::cv::SegmentList list = classes("ABT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    const Image result = secondFrame(segmenter, isolatedRuns(1999));

    // All A regions tie at 2 pixels; the first is reported.
    expectResult(result, {found(classAt(list, 0), 0, 2, Point(1, 0), {Line(0, 0, 1, 0)}),
                          found(classAt(list, 1), 1, 2, Point(58, 132), {Line(57, 132, 58, 132)}),
                          notFound(classAt(list, 2))});
}

TEST(SegmenterRegions, RegionPassStopsAtTheTwoThousandAndFirstRegion) {
    const nuv::cv::SegmentList list = classes("ABT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    const Image result = secondFrame(segmenter, isolatedRuns(2000));

    EXPECT_EQ(entry(result, 0).pixelCount, 2u);
    expectResult(result, {found(classAt(list, 0), 0, 2, Point(1, 0), {Line(0, 0, 1, 0)}),
                          notFound(classAt(list, 1)), notFound(classAt(list, 2))});
}

TEST(SegmenterRegions, CellsAfterTheCapAreIgnoredAlsoForEarlierRegions) {
    const nuv::cv::SegmentList list = classes("AB");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    // A bar down the left edge is region 0; isolated runs on the even rows from row 2 on
    // make the other regions, 30 a row, and the 2001st begins in row 134. A B run below that
    // would be found without the cap.
    std::vector<std::string> rows(150, std::string(100, '.'));
    for (std::size_t y = 0; y < rows.size(); ++y) {
        rows[y].replace(0, 4, "AAAA");
        if (y >= 2 && y % 2 == 0)
            for (std::size_t k = 0; k < 30; ++k) rows[y].replace(10 + 3 * k, 2, "AA");
    }
    rows[141].replace(50, 10, "BBBBBBBBBB");

    const Image result = secondFrame(segmenter, picture(rows));

    // The bar counts rows 0 to 134 only.
    expectResult(result, {found(classAt(list, 0), 0, 540, Point(2, 67), runs(0, 3, 0, 134)),
                          notFound(classAt(list, 1))});
}

// ---------------------------------------------------------------- images

TEST(SegmenterImage, NullImageGivesANullImage) {
    Segmenter segmenter;
    EXPECT_TRUE(segmenter.doSegmentation(Image()).isNull());
    segmenter.setColorSegments(classes("A"));
    const Image result = segmenter.doSegmentation(Image());
    EXPECT_TRUE(result.isNull());
    EXPECT_EQ(nuv::core::image::segmentList(result).size(), 0);
}

TEST(SegmenterImage, FourChannelImageIsReadAsPackedThreeBytePixels) {
    const nuv::cv::SegmentList list = classes("A");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    // Every third byte holds the class value: read three bytes a pixel, all 12 pixels of the
    // first 36 bytes are A; read four bytes a pixel, only some would be.
    Image image(ImageInfo(4, 3, nuv::core::image::BGRA));
    for (unsigned i = 0; i < 48; ++i) image.data()[i] = i % 3 == 0 ? 10 : 0;

    const Image result = secondFrame(segmenter, image);

    EXPECT_EQ(result.info().numChannels, 4u);
    EXPECT_EQ(result.constData(), image.constData()) << "the whole image comes back";
    expectResult(result, {found(classAt(list, 0), 0, 8, Point(2, 0), runs(0, 3, 0, 1))});
}

TEST(SegmenterImage, PaddedRowsAreReadAsIfPacked) {
    const nuv::cv::SegmentList list = classes("AT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    // Four pixels a row and one pixel of padding. The padding of row 0 and the first pixel
    // of row 1 are A, the first two pixels of row 2 are T. Read as packed pixels, rows are
    // "....", "AA.." and "..TT".
    Image image(ImageInfo(4, 3, nuv::core::image::BGR), 15);
    for (unsigned i = 0; i < 45; ++i) image.data()[i] = 0;
    image.data()[12] = 10;
    image.data()[15] = 10;
    image.data()[30] = 200;
    image.data()[33] = 200;

    expectResult(secondFrame(segmenter, image),
                 {found(classAt(list, 0), 0, 2, Point(1, 1), {Line(0, 1, 1, 1)}),
                  notFound(classAt(list, 1))});
}

TEST(SegmenterImage, RegionOfInterestIsSegmentedInItsOwnCoordinates) {
    const nuv::cv::SegmentList list = classes("AB");
    // The four-row example inside a frame of A pixels that lie outside the region.
    std::vector<std::string> rows(10, std::string(20, 'A'));
    const char* inner[4] = {"AAA..BB.", ".AAA.BB.", "........", "AA......"};
    for (std::size_t y = 0; y < 4; ++y) rows[3 + y].replace(5, 8, inner[y]);
    Image image = picture(rows);
    nuv::core::image::setRoi(image, Roi(Point(5, 3), Size(8, 4)));

    nuv::test::forEachSlot([&](int) {
        Segmenter segmenter;
        segmenter.setColorSegments(list);
        const Image result = secondFrame(segmenter, image);

        ASSERT_EQ(result.info().width, 8u);
        ASSERT_EQ(result.info().height, 4u);
        for (unsigned y = 0; y < 4; ++y)
            for (unsigned x = 0; x < 24; ++x)
                ASSERT_EQ(result.constData()[y * result.step() + x],
                          image.constData()[(y + 3) * image.step() + 15 + x]);
        expectResult(result, {found(classAt(list, 0), 0, 6, Point(1, 0),
                                    {Line(0, 0, 2, 0), Line(1, 1, 3, 1)}),
                              found(classAt(list, 1), 1, 4, Point(6, 0), runs(5, 6, 0, 1))});
    });
}

TEST(SegmenterImage, RegionOutsideTheImageGivesEntriesForClassesNotFound) {
    const nuv::cv::SegmentList list = classes("AB");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    Image image = picture({"AAAA", "AAAA", "AAAA"});
    nuv::core::image::setRoi(image, Roi(Point(10, 10), Size(4, 4)));

    const Image result = segmenter.doSegmentation(image);

    expectResult(result, {notFound(classAt(list, 0)), notFound(classAt(list, 1))});
}

TEST(SegmenterImage, InputKeepsItsPixelsAndAttachments) {
    const nuv::cv::SegmentList list = classes("AB");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    Image image = picture({"AAA..BB.", ".AAA.BB.", "........", "AA......"});
    const std::vector<unsigned char> before(image.constData(), image.constData() + 8 * 4 * 3);

    const Image result = secondFrame(segmenter, image);

    EXPECT_EQ(nuv::core::image::segmentList(image).size(), 0);
    EXPECT_EQ(nuv::core::image::segmentList(result).size(), 2);
    EXPECT_EQ(std::vector<unsigned char>(image.constData(), image.constData() + 96), before);
    EXPECT_EQ(std::vector<unsigned char>(result.constData(), result.constData() + 96), before);
}

TEST(SegmenterImage, FramesOfChangingSizeAreEachSegmentedWhole) {
    const nuv::cv::SegmentList list = classes("AB");
    const Image small = picture({"AAA..BB.", ".AAA.BB.", "........", "AA......"});
    const Image large =
        picture({"....................AA", "....AA....AAAAAA....AA", "....AA....AA..AAAAAAAA",
                 "....AAAAAAAA..........", "......................", "AA...................."});
    const std::vector<ImageSegment> smallResult = {
        found(classAt(list, 0), 0, 6, Point(1, 0), {Line(0, 0, 2, 0), Line(1, 1, 3, 1)}),
        found(classAt(list, 1), 1, 4, Point(6, 0), runs(5, 6, 0, 1))};
    const std::vector<ImageSegment> largeResult = {
        found(classAt(list, 0), 0, 20, Point(9, 2),
              {Line(4, 1, 5, 1), Line(10, 1, 15, 1), Line(4, 2, 5, 2), Line(10, 2, 11, 2),
               Line(4, 3, 11, 3)}),
        notFound(classAt(list, 1))};
    Segmenter segmenter;
    segmenter.setColorSegments(list);

    // The first frame runs with the minimum of 4, which drops every run of the small picture.
    expectResult(segmenter.doSegmentation(small),
                 {notFound(classAt(list, 0)), notFound(classAt(list, 1))});
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        expectResult(segmenter.doSegmentation(large), largeResult);
        expectResult(segmenter.doSegmentation(small), smallResult);
    }
}

}  // namespace

namespace {

// A one-channel image passes the guard and is walked as three-byte pixels. Its 48 bytes give
// the first 16 pixels, rows 0 and 1 of an 8-wide picture; what lies past its buffer reads as
// nothing, never as memory beyond it.
TEST(SegmenterImage, OneChannelImageIsReadWithinItsBuffer) {
    Image gray(ImageInfo(8, 6, nuv::core::image::Gray));
    for (unsigned i = 0; i < 48; ++i) gray.data()[i] = valueOf('G');
    Segmenter segmenter;
    segmenter.setColorSegments(classes("G"));

    const Image result = segmenter.doSegmentation(gray);

    const auto regions = nuv::core::image::segmentList(result);
    ASSERT_EQ(regions.size(), 1);
    // Two full rows are stored; the second is the last stored run and is left out.
    EXPECT_EQ(regions.constBegin()->pixelCount, 8u);
    EXPECT_EQ(regions.constBegin()->center, Point(4, 0));
    EXPECT_EQ(regions.constBegin()->lines.size(), 1);
}

}  // namespace
