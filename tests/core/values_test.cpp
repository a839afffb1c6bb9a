// The small value classes and their debug text, formats and the image description,
// copy-on-write containers, the log and its sink, StringList, split, fromString, Exception.
#include <nuv/core.h>

#include "support/log_capture.h"

#include <QString>
#include <gtest/gtest.h>

#include <ios>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;
using Texts = std::vector<std::string>;

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
TEST(Geometry, PointsAndLines) {
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
        EXPECT_EQ(std::tuple(info.numChannels, info.bytesPerChannel),
                  std::tuple(c.channels, c.bytes))
            << c.name;
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
    EXPECT_EQ(std::tuple(info.numChannels, info.bytesPerChannel), std::tuple(2u, 2u));
    EXPECT_TRUE(ImageInfo(7, 2, BGRA).rowBytes() == 28 &&
                ImageInfo() == ImageInfo(0, 0, FormatNone));
    ImageInfo const base(4, 3, RGB);
    EXPECT_TRUE(base == ImageInfo(4, 3, RGB) && !(base != ImageInfo(4, 3, RGB)));
    ImageInfo others[] = {ImageInfo(4, 3, BGR), ImageInfo(5, 3, RGB), ImageInfo(4, 2, RGB), base,
                          base};
    others[3].numChannels = 4;
    others[4].bytesPerChannel = 2;
    for (ImageInfo const& other : others) EXPECT_TRUE(base != other && !(base == other));
}

// Const reads share; a non-const index, begin() or resize detaches; value() is the checked
// read and never inserts; on a unique list the iterators of other elements stay valid.
TEST(Containers, CopyOnWrite) {
    Vector<int> a{1, 2, 3}, c(a);
    Vector<int> const b(a);
    EXPECT_EQ(std::tuple(b[1], b.at(2), b.value(1), b.value(3, 7), b.value(-1)),
              std::tuple(2, 3, 2, 7, 0));
    c.resize(-1, 9);  // refused: still shared
    EXPECT_TRUE(b.constData() == a.constData() && c.constData() == a.constData());
    c[0] = 10;
    c.resize(5, 9);
    EXPECT_TRUE(a == (Vector<int>{1, 2, 3}) && c == (Vector<int>{10, 2, 3, 9, 9}) && a != c);
    List<int> l{1, 2, 3}, m(l);
    int sum = 0;
    for (int v : static_cast<List<int> const&>(m)) sum += v;
    EXPECT_TRUE(sum == 6 && &*l.constBegin() == &*m.constBegin());
    *m.begin() = 100;
    EXPECT_TRUE(l == (List<int>{1, 2, 3}) && m.first() == 100 && l != m);
    EXPECT_EQ(*m.erase(++m.begin()), 3);
    List<std::string> list;
    std::string const* address = &*list.append("first");
    for (int i = 0; i < 100; ++i) list << std::to_string(i);
    EXPECT_TRUE(*list.erase(++list.begin()) == "1" && &*list.begin() == address);
    EXPECT_TRUE(list.size() == 100 && list.last() == "99" && *list.append("x") == "x");
    Map<int, std::string> x;
    EXPECT_TRUE(x.value(7, "none") == "none" && x.isEmpty());
    x[1] = "one";
    x.insert(2, "two");
    Map<int, std::string> y(x);
    EXPECT_TRUE(y.value(2) == "two" && y.find(1)->second == "one" && y.remove(3) == 0);
    EXPECT_TRUE(y.contains(2) && !y.contains(3));
    EXPECT_EQ(&y.constBegin()->second, &x.constBegin()->second);
    y[1] = "uno";
    EXPECT_TRUE(x.value(1) == "one" && y.value(1) == "uno" && y.remove(1) == 1 && y.size() == 1);
}

// Segments copy memberwise; their lines and the lists holding them share until written.
TEST(SegmentRecords, CopiesShareUntilWritten) {
    Segment s;
    EXPECT_EQ(s, Segment(s));
    EXPECT_TRUE(s.pixelCount == 0 && s.color == Color() && s.center == Point() &&
                s.segmentIndex == 0 && s.lines.isEmpty() && s.name.empty());
    s.center = Point(3, 4);
    s.lines.append(Line(0, 0, 5, 0));
    s.name = "ball";
    SegmentList list;
    list.append(s);
    SegmentList copy(list);
    Segment& mine = *copy.begin();
    EXPECT_TRUE(mine == s && &*mine.lines.constBegin() == &*list.first().lines.constBegin());
    mine.lines.append(Line(0, 1, 5, 1));
    EXPECT_TRUE(mine != s && list.first().lines.size() == 1);
    List<Segment>* base = new SegmentList(copy);  // the destructor is virtual
    delete base;
    bool ok = false;
    EXPECT_TRUE(&variant::Variant(list).get<SegmentList>(&ok).first() == &list.first() && ok);
}

Texts items(StringList const& list) {
    return Texts(list.constBegin(), list.constEnd());
}

Log& logger = Log::singleton();

// Pieces gather until a newline; every newline ends one line for the sink.
TEST(Log, PiecesBecomeLinesAtNewlines) {
    nuv::test::LogCapture capture;
    char const* nothing = nullptr;
    logger << "from " << std::string("RGB") << nothing << " to " << 3 << ' ' << 4u;
    EXPECT_TRUE(capture.lines().empty() && logger.pending() == "from RGB to 3 4");
    logger << '\n'
           << -5 << " " << 4000000000u << " " << -9000000000LL << " " << 18000000000000000000ULL
           << " " << 12L << " " << 13UL << " " << 2.5 << nuv::core::endl;
    logger << "one\ntwo\n\nthree" << nuv::core::endl;
    EXPECT_EQ(capture.lines(),
              (Texts{"from RGB to 3 4", "-5 4000000000 -9000000000 18000000000000000000 12 13 2.5",
                     "one", "two", "", "three"}));
    EXPECT_EQ(logger.pending(), "");
}

TEST(Log, Sinks) {
    Texts lines;
    logger.setSink([&lines](std::string const& line) {
        lines.push_back(line);
        if (line == "outer") logger << "inner" << nuv::core::endl;  // a sink may log itself
    });
    logger << "outer" << nuv::core::endl;
    EXPECT_EQ(lines, (Texts{"outer", "inner"}));
    logger.setSink([](std::string const&) { throw std::runtime_error("sink"); });
    EXPECT_THROW(logger << "lost" << nuv::core::endl, std::runtime_error);
    {
        nuv::test::LogCapture capture;  // the thrown line is gone, nothing else
        logger << "kept" << nuv::core::endl;
        EXPECT_EQ(capture.lines(), Texts{"kept"});
    }
    testing::internal::CaptureStderr();
    logger << "on stderr " << 1 << nuv::core::endl;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "on stderr 1\n");
}

TEST(Printers, DebugTextOfTheValueTypes) {
    QString text;
    QDebug(&text) << Point(-3, 40, Color(0x12345678u)) << "and" << Color(0x80123456u) << 7
                  << Circle(Point(1, 2), 1.5f, Color(0xFF000080u)) << Line(1, 2, 3, 4)
                  << Size(640, 480) << Roi(Point(2, 1), Size(3, 2));
    EXPECT_EQ(text.toStdString(),
              "(-3, 40) and (18, 52, 86, 128) 7 ((1, 2), 1.5, (0, 0, 128, 255)) ((1, 2), (3, 4)) "
              "(640 x 480) ((2, 1), (3 x 2)) ");
    EXPECT_EQ(toStdString(Line(-1, 0, 640, -480)), "-1;0;640;-480");
}

TEST(FromString, ReadsInTheGivenBaseOrThrows) {
    EXPECT_EQ(
        std::tuple(fromString<unsigned>("FF", std::hex), fromString<unsigned>("17", std::oct)),
        std::tuple(255u, 15u));
    EXPECT_EQ(std::tuple(fromString<unsigned>("  12x", std::dec), fromString<int>("-8")),
              std::tuple(12u, -8));
    for (char const* text : {"zz", "", " ", "x12", "99999999999"}) {
        try {
            fromString<unsigned int>(text, std::dec);
            ADD_FAILURE() << "no exception for \"" << text << "\"";
        } catch (std::exception const& e) {
            EXPECT_STREQ(e.what(), "Bad conversion");
            EXPECT_EQ(dynamic_cast<Exception const&>(e).getMessage(), "Bad conversion");
        }
    }
}

TEST(Split, EveryCharacterOfTheSeparatorSplitsAndEmptyPiecesStay) {
    struct Case {
        char const* text;
        char const* separators;
        Texts pieces;
    } const cases[] = {{"a;b;c", ";", {"a", "b", "c"}},
                       {"a;;b", ";", {"a", "", "b"}},
                       {";a;", ";", {"", "a", ""}},
                       {";", ";", {"", ""}},
                       {"abc", ";", {"abc"}},
                       {"", ";", {}},
                       {"a,b;c d", ",; ", {"a", "b", "c", "d"}},
                       {"a;b", nullptr, {"a;b"}},
                       {"a;b", "", {"a;b"}}};
    for (Case const& c : cases) EXPECT_EQ(items(split(c.text, c.separators)), c.pieces) << c.text;
}

TEST(StringList, TextFormQuotesEscapesAndReadsBack) {
    EXPECT_EQ(toString(StringList()), "");
    EXPECT_EQ(toString(StringList{""}), "\"\"");
    EXPECT_EQ(StringList({"say \"hi\"", "back\\slash"}).toString(),
              "\"say \\\"hi\\\"\",\"back\\\\slash\"");
    for (StringList const& list :
         {StringList(), StringList{""}, StringList{"", ""},
          StringList{"ball;4294901760;00000001;5", "goal;255;ff;7"},
          StringList{"a,b", "\"quoted\"", "\\", "trailing\\", " spaced ", "new\nline"}}) {
        std::string const text = toString(list);
        EXPECT_EQ(items(stringListFromString(text)), items(list)) << text;
        EXPECT_EQ(items(StringList::fromString(text)), items(list)) << text;
    }
    struct Case {
        char const* text;
        Texts items;
    } const handWritten[] = {{"a,b,c", {"a", "b", "c"}}, {" \"a\" , \"b\"", {"a", "b"}},
                             {"a,", {"a", ""}},          {"a\\,b", {"a,b"}},
                             {"\"open", {"open"}},       {"", {}}};
    for (Case const& c : handWritten) EXPECT_EQ(items(StringList::fromString(c.text)), c.items);
    Exception const e("something went wrong");
    EXPECT_STREQ(Exception(e).what(), "something went wrong");
}

}  // namespace
