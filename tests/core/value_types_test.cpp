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

#include <sstream>
#include <string>
#include <tuple>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;

// A colour is one ARGB word: unpacked, set byte by byte, compared whole.
TEST(Color, OneArgbWord) {
    Color color(0x80123456u);
    EXPECT_EQ(std::tuple(color.a(), color.r(), color.g(), color.b()),
              std::tuple(0x80, 0x12, 0x34, 0x56));
    color.setG(0xFF);
    color.setR(0x00);
    color.setB(0xAB);
    EXPECT_EQ(color.argb(), 0x8000FFABu);
    color.setA(0x01);
    EXPECT_EQ(color.argb(), 0x0100FFABu);
    EXPECT_EQ(std::tuple(Color().argb(), Color::red.argb(), Color::fromRgba(1, 2, 3).argb(),
                         Color::fromRgba(1, 2, 3, 4).argb()),
              std::tuple(0u, 0xFFFF0000u, 0xFF010203u, 0x04010203u));
    EXPECT_TRUE(Color(0x00FF0000u) != Color(0xFFFF0000u) && Color(5u) == Color(5u));
    EXPECT_FALSE(Color(0x00FF0000u) == Color(0xFFFF0000u) || Color(5u) != Color(5u));
}

// Points are red unless given a colour, compare by coordinates, add keeping their own
// colour and divide toward zero; lines compare by their ends.
TEST(Geometry, PointsLinesSizesRegionsCircles) {
    Point p(1, 2, Color(0x01020304u));
    EXPECT_TRUE(p == Point(1, 2, Color(0x55667788u)) && p != Point(2, 1) && p != Point(1, 3));
    EXPECT_EQ(&(p += Point(10, -20, Color(0xFFFFFFFFu))), &p);
    EXPECT_EQ(std::tuple(p.x(), p.y(), p.color()), std::tuple(11, -18, Color(0x01020304u)));
    Point const half = Point(-7, 7, Color(1u)) / 2;
    EXPECT_EQ(std::tuple(half.x(), half.y(), half.color()), std::tuple(-3, 3, Color::red));
    Line line(Point(1, 2, Color(0xAAu)), Point(3, 4, Color(0xBBu)));
    EXPECT_EQ(std::tuple(line.x0(), line.y0(), line.x1(), line.y1()), std::tuple(1, 2, 3, 4));
    EXPECT_EQ(std::tuple(line.p1().color(), line.color()), std::tuple(Color(0xBBu), Color::red));
    line.setColor(Color(3u));
    EXPECT_TRUE(line == Line(1, 2, 3, 4) && line != Line(3, 4, 1, 2));
    Size size;
    size.setWidth(3);
    size.setHeight(4);
    EXPECT_TRUE(size == Size(3, 4) && size != Size(4, 4) && size != Size(3, 5));
    EXPECT_EQ(Roi(Point(2, 1), Size(3, 2)), Roi(Point(2, 1, Color()), Size(3, 2)));
    Circle const circle(Point(4, 5), 2.5f);
    EXPECT_EQ(std::tuple(circle.center(), circle.radius(), circle.color()),
              std::tuple(Point(4, 5), 2.5f, Color::red));
}

// Channels by format, the names of formats and channels; unknown layouts keep what was set.
TEST(ImageInfo, ChannelsAndNamesByFormat) {
    struct Case {
        Format format;
        unsigned channels, bytes;
        char const* name;
        char const* channelNames;
    } const cases[] = {
        {RGB, 3, 1, "RGB", "R G B"},
        {BGR, 3, 1, "BGR", "B G R"},
        {BGRA, 4, 1, "BGRA", "B G R A"},
        {Gray, 1, 1, "Gray", "Gray"},
        {HSV, 3, 1, "HSV", "H S V"},
        {YCbCr, 3, 1, "YCbCr", "Y Cb Cr"},
        {HLS, 3, 1, "HLS", "H L S"},
        {FormatOther, 3, 1, "other", ""},
        {FormatNone, 0, 0, "none", ""},
        {Format(9), 0, 0, "unknown format 9", ""},
        {Format(-3), 0, 0, "unknown format -3", ""},
    };
    for (Case const& c : cases) {
        ImageInfo const info(4, 3, c.format);
        EXPECT_EQ(info.numChannels, c.channels) << c.name;
        EXPECT_EQ(info.bytesPerChannel, c.bytes) << c.name;
        EXPECT_EQ(info.width * 10 + info.height, 43u);
        EXPECT_EQ(friendlyName(c.format, -1), c.name);
        std::istringstream names(c.channelNames);
        std::string name;
        for (int channel = 0; channel < 5; ++channel) {
            if (!(names >> name))
                name = std::string(c.name) + " channel " + std::to_string(channel);
            EXPECT_EQ(friendlyName(c.format, channel), name);
        }
    }
    EXPECT_EQ(friendlyName(BGR), "BGR");
    ImageInfo info(4, 3, Format(42));  // unknown layouts keep what the caller set
    info.numChannels = 2;
    info.bytesPerChannel = 2;
    info.init();
    EXPECT_EQ(info.numChannels * 10 + info.bytesPerChannel, 22u);
    EXPECT_EQ(ImageInfo(7, 2, BGRA).rowBytes(), 28u);
    EXPECT_EQ(ImageInfo(), ImageInfo(0, 0, FormatNone));
    ImageInfo const base(4, 3, RGB);
    EXPECT_TRUE(base == ImageInfo(4, 3, RGB));
    EXPECT_FALSE(base != ImageInfo(4, 3, RGB));
    ImageInfo others[] = {ImageInfo(4, 3, BGR), ImageInfo(5, 3, RGB), ImageInfo(4, 2, RGB), base,
                          base};
    others[3].numChannels = 4;
    others[4].bytesPerChannel = 2;
    for (ImageInfo const& other : others) EXPECT_TRUE(base != other && !(base == other));
}

}  // namespace
