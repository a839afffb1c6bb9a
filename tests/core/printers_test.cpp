// The debug printers, written into a QString.
#include <nuv/core/printers.h>

#include <QString>
#include <gtest/gtest.h>

namespace {

using namespace nuv::core;

template <typename T>
std::string printed(T const& value) {
    QString text;
    QDebug(&text) << value;
    return text.toStdString();
}

TEST(Printers, PointPrintsCoordinatesOnlyThenASpace) {
    EXPECT_EQ(printed(Point(1, 2)), "(1, 2) ");
    EXPECT_EQ(printed(Point(-3, 40, Color(0x12345678u))), "(-3, 40) ");
}

TEST(Printers, ColorPrintsNumbersInRgbaOrder) {
    EXPECT_EQ(printed(Color(0x80123456u)), "(18, 52, 86, 128) ");
    EXPECT_EQ(printed(Color::red), "(255, 0, 0, 255) ");
    EXPECT_EQ(printed(Color()), "(0, 0, 0, 0) ");
}

TEST(Printers, CirclePrintsCentreRadiusAndColour) {
    EXPECT_EQ(printed(Circle(Point(1, 2), 1.5f, Color(0xFF000080u))),
              "((1, 2), 1.5, (0, 0, 128, 255)) ");
}

TEST(Printers, LineSizeAndRegion) {
    EXPECT_EQ(printed(Line(1, 2, 3, 4)), "((1, 2), (3, 4)) ");
    EXPECT_EQ(printed(Size(640, 480)), "(640 x 480) ");
    EXPECT_EQ(printed(Roi(Point(2, 1), Size(3, 2))), "((2, 1), (3 x 2)) ");
}

TEST(Printers, StreamGoesOnInSpaceMode) {
    QString text;
    QDebug(&text) << Point(1, 2) << "and" << Color(0x01020304u) << 7;
    EXPECT_EQ(text.toStdString(), "(1, 2) and (2, 3, 4, 1) 7 ");
}

TEST(Printers, LineAsStdString) {
    EXPECT_EQ(toStdString(Line(1, 2, 3, 4)), "1;2;3;4");
    EXPECT_EQ(toStdString(Line(-1, 0, 640, -480)), "-1;0;640;-480");
}

}  // namespace
