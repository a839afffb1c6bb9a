// The small value classes, the formats and the image description.
#include <nuv/core/Circle.h>
#include <nuv/core/Color.h>
#include <nuv/core/Line.h>
#include <nuv/core/Point.h>
#include <nuv/core/Roi.h>
#include <nuv/core/Size.h>
#include <nuv/core/image/Format.h>
#include <nuv/core/image/ImageInfo.h>

#include <gtest/gtest.h>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;

TEST(Color, UnpacksAndSetsSingleBytes) {
    Color color(0x80123456u);
    EXPECT_EQ(color.a(), 0x80);
    EXPECT_EQ(color.r(), 0x12);
    EXPECT_EQ(color.g(), 0x34);
    EXPECT_EQ(color.b(), 0x56);
    color.setG(0xFF);
    EXPECT_EQ(color.argb(), 0x8012FF56u);
    color.setR(0x00);
    EXPECT_EQ(color.argb(), 0x8000FF56u);
    color.setB(0xAB);
    EXPECT_EQ(color.argb(), 0x8000FFABu);
    color.setA(0x01);
    EXPECT_EQ(color.argb(), 0x0100FFABu);
}

TEST(Color, DefaultIsTransparentBlackAndRedIsOpaque) {
    EXPECT_EQ(Color().argb(), 0u);
    EXPECT_EQ(Color::red.argb(), 0xFFFF0000u);
    EXPECT_EQ(Color::red.r(), 255);
    EXPECT_EQ(Color::red.a(), 255);
    EXPECT_NE(Color(), Color::red);
    EXPECT_EQ(Color::fromRgba(1, 2, 3), Color(0xFF010203u));
    EXPECT_EQ(Color::fromRgba(1, 2, 3, 4), Color(0x04010203u));
}

TEST(Color, ComparesTheWholeWordAlphaIncluded) {
    EXPECT_TRUE(Color(0x00FF0000u) != Color(0xFFFF0000u));
    EXPECT_FALSE(Color(0x00FF0000u) == Color(0xFFFF0000u));
    EXPECT_TRUE(Color(0x12345678u) == Color(0x12345678u));
    EXPECT_FALSE(Color(0x12345678u) != Color(0x12345678u));
}

TEST(Size, ComparesBothFields) {
    EXPECT_EQ(Size(3, 4), Size(3, 4));
    EXPECT_NE(Size(3, 4), Size(4, 3));
    EXPECT_NE(Size(3, 4), Size(3, 5));
    EXPECT_FALSE(Size(3, 4) != Size(3, 4));
    Size size;
    EXPECT_EQ(size, Size(0, 0));
    size.setWidth(7);
    size.setHeight(9);
    EXPECT_EQ(size.width(), 7u);
    EXPECT_EQ(size.height(), 9u);
}

TEST(Point, ConstructorsGiveRedAndCoordinates) {
    Point origin;
    EXPECT_EQ(origin.x(), 0);
    EXPECT_EQ(origin.y(), 0);
    EXPECT_EQ(origin.color(), Color::red);
    Point p(-5, 8);
    EXPECT_EQ(p.x(), -5);
    EXPECT_EQ(p.y(), 8);
    EXPECT_EQ(p.color(), Color::red);
    p.setX(1);
    p.setY(2);
    EXPECT_EQ(p, Point(1, 2));
}

TEST(Point, EqualityIgnoresColour) {
    Point const a(3, 4, Color(0x11223344u));
    Point const b(3, 4, Color(0x55667788u));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_TRUE(a != Point(4, 3));
    EXPECT_TRUE(a != Point(3, 5));
}

TEST(Point, AdditionKeepsOwnColour) {
    Point p(1, 2, Color(0x01020304u));
    Point const q(10, -20, Color(0xFFFFFFFFu));
    Point& same = (p += q);
    EXPECT_EQ(&same, &p);
    EXPECT_EQ(p, Point(11, -18));
    EXPECT_EQ(p.color(), Color(0x01020304u));
}

TEST(Point, DivisionTruncatesTowardZeroAndGivesRed) {
    Point const p(-7, 7, Color(0x12345678u));
    Point const half = p / 2;
    EXPECT_EQ(half.x(), -3);
    EXPECT_EQ(half.y(), 3);
    EXPECT_EQ(half.color(), Color::red);
    EXPECT_EQ(Point(9, -9) / 4, Point(2, -2));
}

TEST(Line, KeepsEndsWholeAndIsRed) {
    Point const a(1, 2, Color(0xAAu));
    Point const b(3, 4, Color(0xBBu));
    Line const line(a, b);
    EXPECT_EQ(line.x0(), 1);
    EXPECT_EQ(line.y0(), 2);
    EXPECT_EQ(line.x1(), 3);
    EXPECT_EQ(line.y1(), 4);
    EXPECT_EQ(line.p0().color(), Color(0xAAu));
    EXPECT_EQ(line.p1().color(), Color(0xBBu));
    EXPECT_EQ(line.color(), Color::red);

    Line const coords(5, 6, 7, 8);
    EXPECT_EQ(coords.x0(), 5);
    EXPECT_EQ(coords.y0(), 6);
    EXPECT_EQ(coords.x1(), 7);
    EXPECT_EQ(coords.y1(), 8);
    EXPECT_EQ(coords.p0().color(), Color::red);
    EXPECT_EQ(coords.color(), Color::red);
}

TEST(Line, EqualityIsGeometry) {
    Line a(1, 2, 3, 4);
    Line b(Point(1, 2, Color(1u)), Point(3, 4, Color(2u)));
    b.setColor(Color(3u));
    EXPECT_EQ(a, b);
    EXPECT_NE(a, Line(3, 4, 1, 2));
}

TEST(Circle, Accessors) {
    Circle const circle(Point(4, 5), 2.5f, Color(0x01020304u));
    EXPECT_EQ(circle.center(), Point(4, 5));
    EXPECT_FLOAT_EQ(circle.radius(), 2.5f);
    EXPECT_EQ(circle.color(), Color(0x01020304u));
    EXPECT_EQ(Circle(Point(1, 1), 1.0f).color(), Color::red);
}

TEST(Roi, HoldsOffsetAndSize) {
    Roi const roi(Point(2, 1), Size(3, 2));
    EXPECT_EQ(roi.offset(), Point(2, 1));
    EXPECT_EQ(roi.size(), Size(3, 2));
    EXPECT_EQ(Roi().offset(), Point());
    EXPECT_EQ(Roi().size(), Size(0, 0));
    EXPECT_EQ(roi, Roi(Point(2, 1, Color()), Size(3, 2)));
    EXPECT_NE(roi, Roi(Point(2, 1), Size(3, 3)));
}

TEST(Format, NumbersAreStable) {
    EXPECT_EQ(static_cast<int>(FormatNone), 0);
    EXPECT_EQ(static_cast<int>(RGB), 1);
    EXPECT_EQ(static_cast<int>(BGR), 2);
    EXPECT_EQ(static_cast<int>(BGRA), 3);
    EXPECT_EQ(static_cast<int>(Gray), 4);
    EXPECT_EQ(static_cast<int>(FormatOther), 5);
    EXPECT_EQ(static_cast<int>(HSV), 6);
    EXPECT_EQ(static_cast<int>(YCbCr), 7);
    EXPECT_EQ(static_cast<int>(HLS), 8);
    EXPECT_EQ(sizeof(Format), 4u);
}

TEST(Format, FriendlyNames) {
    EXPECT_EQ(friendlyName(RGB, -1), "RGB");
    EXPECT_EQ(friendlyName(BGR, -1), "BGR");
    EXPECT_EQ(friendlyName(BGRA, -1), "BGRA");
    EXPECT_EQ(friendlyName(Gray, -1), "Gray");
    EXPECT_EQ(friendlyName(HSV, -1), "HSV");
    EXPECT_EQ(friendlyName(YCbCr, -1), "YCbCr");
    EXPECT_EQ(friendlyName(HLS, -1), "HLS");
    EXPECT_EQ(friendlyName(FormatNone, -1), "none");
    EXPECT_EQ(friendlyName(FormatOther, -1), "other");
    EXPECT_EQ(friendlyName(Format(9), -1), "unknown format 9");
    EXPECT_EQ(friendlyName(Format(-3), -1), "unknown format -3");
    EXPECT_EQ(friendlyName(BGR), "BGR");
}

TEST(Format, ChannelNames) {
    EXPECT_EQ(friendlyName(RGB, 0), "R");
    EXPECT_EQ(friendlyName(BGR, 0), "B");
    EXPECT_EQ(friendlyName(BGRA, 3), "A");
    EXPECT_EQ(friendlyName(YCbCr, 1), "Cb");
    EXPECT_EQ(friendlyName(YCbCr, 2), "Cr");
    EXPECT_EQ(friendlyName(HLS, 1), "L");
    EXPECT_EQ(friendlyName(HSV, 2), "V");
    EXPECT_EQ(friendlyName(Gray, 0), "Gray");
    EXPECT_EQ(friendlyName(Gray, 1), "Gray channel 1");
    EXPECT_EQ(friendlyName(RGB, 3), "RGB channel 3");
    EXPECT_EQ(friendlyName(FormatOther, 0), "other channel 0");
    EXPECT_EQ(friendlyName(Format(12), 0), "unknown format 12 channel 0");
}

TEST(ImageInfo, InitSetsChannelsByFormat) {
    struct Case {
        Format format;
        unsigned channels;
        unsigned bytes;
    };
    Case const cases[] = {{RGB, 3, 1},         {BGR, 3, 1},       {BGRA, 4, 1},      {Gray, 1, 1},
                          {FormatOther, 3, 1}, {HSV, 3, 1},       {YCbCr, 3, 1},     {HLS, 3, 1},
                          {FormatNone, 0, 0},  {Format(9), 0, 0}, {Format(-1), 0, 0}};
    for (Case const& c : cases) {
        ImageInfo const info(4, 3, c.format);
        EXPECT_EQ(info.width, 4u);
        EXPECT_EQ(info.height, 3u);
        EXPECT_EQ(info.numChannels, c.channels) << friendlyName(c.format);
        EXPECT_EQ(info.bytesPerChannel, c.bytes) << friendlyName(c.format);
        EXPECT_EQ(info.format, c.format);
    }
}

TEST(ImageInfo, InitLeavesUnknownLayoutsAlone) {
    ImageInfo info(4, 3, FormatNone);
    info.numChannels = 2;
    info.bytesPerChannel = 2;
    info.init();
    EXPECT_EQ(info.numChannels, 2u);
    EXPECT_EQ(info.bytesPerChannel, 2u);
    info.format = Format(42);
    info.init();
    EXPECT_EQ(info.numChannels, 2u);
    info.format = Gray;
    info.init();
    EXPECT_EQ(info.numChannels, 1u);
    EXPECT_EQ(info.bytesPerChannel, 1u);
}

TEST(ImageInfo, InequalityLooksAtEveryField) {
    ImageInfo const base(4, 3, RGB);
    EXPECT_FALSE(base != ImageInfo(4, 3, RGB));
    EXPECT_TRUE(base == ImageInfo(4, 3, RGB));
    EXPECT_TRUE(base != ImageInfo(4, 3, BGR));
    EXPECT_TRUE(base != ImageInfo(5, 3, RGB));
    EXPECT_TRUE(base != ImageInfo(4, 2, RGB));
    ImageInfo other = base;
    other.numChannels = 4;
    EXPECT_TRUE(base != other);
    other = base;
    other.bytesPerChannel = 2;
    EXPECT_TRUE(base != other);
}

TEST(ImageInfo, DefaultIsAllZero) {
    ImageInfo const info;
    EXPECT_EQ(info.width, 0u);
    EXPECT_EQ(info.height, 0u);
    EXPECT_EQ(info.numChannels, 0u);
    EXPECT_EQ(info.bytesPerChannel, 0u);
    EXPECT_EQ(info.format, FormatNone);
    EXPECT_EQ(ImageInfo(7, 2, BGRA).rowBytes(), 28u);
}

}  // namespace
