// The image front end: copyRoi, the mirrors, transpose and addition against plain models at
// every slot, their exact small examples, the refusals with their messages, and init.
#include <nuv/cv.h>

#include "support/images.h"
#include "support/log_capture.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace {

using nuv::test::packedPixels;

using namespace nuv::core::image;
using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::variant::Math;
using nuv::core::variant::Variant;
using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

// Every byte holds a value of its row and byte position, so a misplaced row, column or
// channel shows; random contents where the values matter.
Image numbered(ImageInfo const& info, unsigned step = 0, std::mt19937* rng = nullptr) {
    Image image = step ? Image(info, step) : Image(info);
    for (unsigned y = 0; y < info.height; ++y)
        for (unsigned x = 0; x < info.rowBytes(); ++x)
            image.data()[y * image.step() + x] =
                static_cast<unsigned char>(rng ? (*rng)() : y * 31 + x * 7 + 3);
    return image;
}

// Result pixel (x, y) of a region w x h comes from region pixel source(x, y, w, h).
struct Geometry {
    char const* name;
    std::function<Image(Image const&)> apply;
    std::function<Point(int, int, int, int)> source;
    bool swaps;
};
std::vector<Geometry> const geometries = {
    {"copyRoi", nuv::cv::copyRoi, [](int x, int y, int, int) { return Point(x, y); }, false},
    {"mirrorHorizontal", nuv::cv::mirrorHorizontal,
     [](int x, int y, int, int h) { return Point(x, h - 1 - y); }, false},
    {"mirrorVertical", nuv::cv::mirrorVertical,
     [](int x, int y, int w, int) { return Point(w - 1 - x, y); }, false},
    {"mirrorHorizontalAndVertical", nuv::cv::mirrorHorizontalAndVertical,
     [](int x, int y, int w, int h) { return Point(w - 1 - x, h - 1 - y); }, false},
    {"transpose", nuv::cv::transpose, [](int x, int y, int, int) { return Point(y, x); }, true}};

// The region (cut to the image) is read from its first pixel into a new image of its size, in
// the source's format, without the source's attachments; the source is not touched.
TEST(ImageGeometry, RegionsMatchThePlainModelAtEverySlot) {
    Roi const regions[] = {Roi(Point(2, 1), Size(13, 6)), Roi(Point(0, 0), Size(5, 3)),
                           Roi(Point(17, 6), Size(10, 10)), Roi(Point(-2, -1), Size(6, 4))};
    nuv::test::forEachSlot([&](int) {
        for (Format format : {Gray, BGR, HSV})
            for (unsigned step : {0u, 100u}) {
                Image source = numbered(ImageInfo(21, 9, format), step);
                Bytes const before = packedPixels(source);
                addLine(source, Line(0, 0, 5, 5));
                unsigned const n = source.info().numChannels;
                for (Roi const& region : regions) {
                    setRoi(source, region);
                    char const* first = nullptr;
                    Roi const roi = getRoi(source, &first);
                    int const w = roi.size().width(), h = roi.size().height();
                    for (Geometry const& g : geometries) {
                        if (n == 1 && g.name == std::string("copyRoi")) continue;
                        SCOPED_TRACE(std::string(g.name) + " " + std::to_string(step) + " " +
                                     std::to_string(roi.offset().x()) + " " + friendlyName(format));
                        nuv::test::LogCapture log;
                        Image const result = g.apply(source);
                        ASSERT_EQ(result.info(),
                                  ImageInfo(g.swaps ? h : w, g.swaps ? w : h, format));
                        for (int y = 0; y < int(result.info().height); ++y)
                            for (int x = 0; x < int(result.info().width); ++x) {
                                Point const s = g.source(x, y, w, h);
                                for (unsigned c = 0; c < n; ++c)
                                    ASSERT_EQ(
                                        result.constData()[y * result.step() + x * n + c],
                                        static_cast<unsigned char>(
                                            first[s.y() * int(source.step()) + s.x() * n + c]))
                                        << x << "," << y;
                            }
                        EXPECT_TRUE(lines(result).isEmpty() && !hasRoi(result) &&
                                    log.lines().empty());
                    }
                }
                EXPECT_EQ(packedPixels(source), before);
            }
    });
}

// What each operation does with images it does not cut: the message, and what comes back.
TEST(ImageGeometry, RefusalsAndPassThrough) {
    std::string const mirrorMessage = "nuv::cv::addition: unsupported image format";
    std::string const copyMessage = "nuv::cv::copyRoi: unsupported image format";
    Image bgra = numbered(ImageInfo(6, 4, BGRA)), gray = numbered(ImageInfo(6, 4, Gray));
    setRoi(bgra, Roi(Point(1, 1), Size(3, 3)));
    setRoi(gray, Roi(Point(1, 1), Size(3, 3)));
    Image whole = numbered(ImageInfo(8, 4, RGB));
    addLine(whole, Line(1, 2, 3, 4));
    setRoi(whole, Roi(Point(0, 0), Size(8, 4)));
    enum Outcome { Null, Same };
    struct Case {
        int op;
        Image image;
        Outcome outcome;
        std::string message;
    } const cases[] = {{1, bgra, Null, mirrorMessage},
                       {3, Image(), Null, mirrorMessage},
                       {4, bgra, Null, ""},
                       {4, Image(), Null, ""},
                       {0, gray, Same, copyMessage},
                       {0, bgra, Same, copyMessage},
                       {0, Image(), Null, ""},
                       {0, whole, Same, ""}};
    for (Case const& c : cases) {
        nuv::test::LogCapture log;
        Image const result = geometries[c.op].apply(c.image);
        EXPECT_EQ(result.constData(), c.outcome == Same ? c.image.constData() : nullptr);
        EXPECT_EQ(result.info(), c.outcome == Same ? c.image.info() : ImageInfo());
        EXPECT_EQ(lines(result).size(), lines(c.image).size());
        EXPECT_EQ(log.lines(), c.message.empty() ? Lines() : Lines{c.message})
            << geometries[c.op].name;
    }
    // A single row cannot be turned upside down nor a column left to right; the result still
    // has the region's size, and nothing is logged.
    nuv::test::LogCapture log;
    Image const row(ImageInfo(4, 1, Gray)), column(ImageInfo(1, 3, BGR));
    for (int axis : {0, 2}) EXPECT_EQ(mirror(row, axis).info(), row.info());
    for (int axis : {1, 2}) EXPECT_EQ(mirror(column, axis).info(), column.info());
    EXPECT_TRUE(log.lines().empty());
}

#ifndef NDEBUG
TEST(MirrorDeathTest, AnyOtherAxisFailsTheAssertion) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(mirror(numbered(ImageInfo(4, 4, Gray)), 3), "Image mirror.*Assertion `false'");
    EXPECT_DEATH(mirror(numbered(ImageInfo(4, 4, Gray)), -1), "Assertion `false' failed");
}
#endif

// Half the sum, a tie going to the even neighbour.
unsigned char roundedMean(unsigned a, unsigned b) {
    unsigned const half = (a + b) / 2;
    return static_cast<unsigned char>((a + b) % 2 == 1 && half % 2 == 1 ? half + 1 : half);
}

// The size comes from a's region; both are read from their first pixel (b's region plays no
// part), each by its own step.
void expectMean(Image const& result, Image const& a, Image const& b, unsigned w, unsigned h) {
    ASSERT_EQ(result.info(), ImageInfo(w, h, a.info().format));
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w * a.info().numChannels; ++x)
            ASSERT_EQ(result.constData()[y * result.step() + x],
                      roundedMean(a.constData()[y * a.step() + x], b.constData()[y * b.step() + x]))
                << "row " << y << " byte " << x;
}

// The rounding itself is the primitive's, checked at every slot by its own suite.
TEST(Addition, RoundedMeanOfTheRegions) {
    std::mt19937 rng(5);
    for (Format format : {Gray, RGB, BGR, HSV})
        for (unsigned width : {1u, 33u, 101u}) {
            ImageInfo const info(width, 5, format);
            Image a = numbered(info, 0, &rng);
            Image b = numbered(info, info.rowBytes() + 13, &rng);
            Bytes const before = packedPixels(a);
            nuv::test::LogCapture log;
            expectMean(nuv::cv::addition(a, b), a, b, width, 5);
            setRoi(a, Roi(Point(width / 2, 3), Size(2, 2)));
            setRoi(b, Roi(Point(1, 1), Size(1, 1)));
            expectMean(nuv::cv::addition(a, b), a, b, std::min(width, 2u), 2);
            EXPECT_EQ(packedPixels(a), before);
            EXPECT_TRUE(log.lines().empty());
        }
}

// Empty regions give empty results silently; other descriptions and channel counts are
// refused with their messages and the null image.
TEST(Addition, EmptyAndRefused) {
    std::string const differ = "uv::cv::addition: images differ in format or size";
    std::string const unsupported = "nuv::cv::addition: unsupported image format";
    Image outside = numbered(ImageInfo(8, 8, RGB));
    setRoi(outside, Roi(Point(20, 20), Size(3, 3)));
    Image const rgb = numbered(ImageInfo(6, 4, RGB)), noColumns(ImageInfo(0, 4, Gray));
    struct Case {
        Image a, b;
        std::string message;
    } const cases[] = {
        {outside, numbered(ImageInfo(8, 8, RGB)), ""},
        {noColumns, noColumns, ""},
        {rgb, numbered(ImageInfo(6, 4, BGR)), differ},
        {rgb, numbered(ImageInfo(7, 4, RGB)), differ},
        {rgb, numbered(ImageInfo(6, 3, RGB)), differ},
        {numbered(ImageInfo(6, 4, Gray)), rgb, differ},
        {Image(), rgb, differ},
        {rgb, Image(), differ},
        {numbered(ImageInfo(5, 3, BGRA)), numbered(ImageInfo(5, 3, BGRA)), unsupported},
        {Image(), Image(), unsupported}};
    for (Case const& c : cases) {
        nuv::test::LogCapture log;
        Image const result = nuv::cv::addition(c.a, c.b);
        EXPECT_EQ(log.lines(), c.message.empty() ? Lines() : Lines{c.message});
        EXPECT_EQ(result.isNull(), !c.message.empty());
        EXPECT_EQ(result.info(),
                  c.message.empty() ? ImageInfo(0, 0, c.a.info().format) : ImageInfo());
    }
    // The variant form: a variant without an image stands for the null image.
    Image const gray = numbered(ImageInfo(4, 4, Gray));
    expectMean(nuv::cv::imageAddition(Variant(gray), Variant(gray)).toImage(), gray, gray, 4, 4);
    for (auto const& [a, b, message] : {std::tuple(Variant(gray), Variant(42), differ),
                                        std::tuple(Variant(), Variant("x"), unsupported)}) {
        nuv::test::LogCapture log;
        EXPECT_TRUE(nuv::cv::imageAddition(a, b).get<Image>().isNull());
        EXPECT_EQ(log.lines(), Lines{message});
    }
}

// init teaches the variant machinery the segment list and image addition, once.
TEST(Init, RegistersOnceAndLeavesProcessorSelectionAlone) {
    using namespace nuv::core::variant;
    Ipp32u const slot = ippJumpIndexForMergedLibs;
    nuv::cv::init();
    EXPECT_EQ(ippJumpIndexForMergedLibs, slot);
    nuv::cv::SegmentList list, other;
    list << nuv::cv::Segment();
    list.begin()->setName("ball");
    Variant const text = Converter::singleton().convert(Variant(list), typeid(std::string));
    EXPECT_EQ(text.get<std::string>(), nuv::cv::toString(list));
    EXPECT_EQ(text.convertTo<nuv::cv::SegmentList>().first().name(), "ball");
    EXPECT_EQ(Variant(list).typeName(), "segmentlist");
    bool ok = false;
    EXPECT_TRUE(Math::singleton().compare(CompareEqual, Variant(list), Variant(list), &ok) && ok);
    EXPECT_FALSE(Math::singleton().compare(CompareEqual, Variant(list), Variant(other)));
    std::mt19937 rng(3);
    Image const a = numbered(ImageInfo(5, 3, BGR), 0, &rng), b = numbered(a.info(), 0, &rng);
    expectMean(Math::singleton().binaryOperator(OperatorAdd, Variant(a), Variant(b)).toImage(), a,
               b, 5, 3);
    Math::singleton().registerBinaryOperator<Image>(
        OperatorAdd, [](Variant const&, Variant const&) { return Variant(std::string("new")); });
    nuv::cv::init();  // a second call must leave the replacement alone
    EXPECT_EQ(Math::singleton().binaryOperator(OperatorAdd, Variant(a), Variant(b)).toString(),
              "new");
    Math::singleton().registerBinaryOperator<Image>(OperatorAdd, nuv::cv::imageAddition);
}

}  // namespace
