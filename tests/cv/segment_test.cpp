// Colour classes: SegmentColorIndex and its text, Segment (training, merge, dilation, channel
// mask), and SegmentList with its text form, its reader's skip rules and its variant forms.
#include <nuv/cv.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::core::variant::Variant;
using nuv::cv::Segment;
using nuv::cv::SegmentColorIndex;
using nuv::cv::SegmentList;

std::string const zeros64(64, '0'), zeros192(192, '0');

// Sets of values as text: "3 9-11" is {3, 9, 10, 11}.
SegmentColorIndex indexOf(std::string const& text) {
    SegmentColorIndex index;
    std::istringstream stream(text);
    for (int first = 0, last = 0; stream >> first;) {
        last = first;
        if (stream.peek() == '-') stream.ignore() >> last;
        for (int v = first; v <= last; ++v) index.set(static_cast<unsigned char>(v), true);
    }
    return index;
}

std::string members(SegmentColorIndex const& index) {
    std::string text;
    for (int v = 0; v < 256; ++v) {
        if (!index.at(static_cast<unsigned char>(v))) continue;
        int last = v;
        while (last < 255 && index.at(static_cast<unsigned char>(last + 1))) ++last;
        text += (text.empty() ? "" : " ") + std::to_string(v);
        if (last > v) text += "-" + std::to_string(last);
        v = last;
    }
    return text;
}

// A segment whose three channels accept exactly the given values, its mean colour untouched.
Segment segmentWith(std::string const& c0, std::string const& c1 = "", std::string const& c2 = "") {
    Segment segment;
    EXPECT_TRUE(segment.loadColorIndex(indexOf(c0).serialize() + indexOf(c1).serialize() +
                                       indexOf(c2).serialize()));
    return segment;
}

// "name|ARGB|channel 0|channel 1|channel 2|mask|pending dilations".
std::string state(Segment segment) {
    char colour[9];
    std::snprintf(colour, sizeof colour, "%08x", segment.meanColor().argb());
    std::string text = segment.name() + "|" + colour;
    for (unsigned c = 0; c < 3; ++c) text += "|" + members(segment.colorIndex(c));
    text += "|" + segment.serializeChannelsUsed() + "|";
    for (unsigned c = 0; c < 3; ++c) text += std::to_string(segment.getDilate(c)) + " ";
    return text;
}

// Each value is one bit: word v / 32 is written as eight hex digits, high nibble first.
TEST(SegmentColorIndex, EveryValueIsOneBitOfTheText) {
    for (int v = 0; v < 256; ++v) {
        SegmentColorIndex index;
        index.set(static_cast<unsigned char>(v), true);
        index.set(static_cast<unsigned char>(v), true);
        std::string expected = zeros64;
        expected[8 * (v >> 5) + 7 - ((v & 31) >> 2)] = "1248"[v & 3];
        ASSERT_EQ(index.serialize(), expected) << v;
        ASSERT_EQ(members(index), std::to_string(v));
        index.set(static_cast<unsigned char>(v), false);
        ASSERT_EQ(index.serialize(), zeros64) << v;
    }
    EXPECT_EQ(indexOf("0 1 31 32 255").serialize(),
              "8000000300000001" + std::string(40, '0') + "80000000");
    SegmentColorIndex full = indexOf("7");
    EXPECT_TRUE(full.load(std::string(64, 'f')) && members(full) == "0-255");
    EXPECT_TRUE(full.load(zeros64) && members(full).empty());
}

// Text of the wrong length changes nothing; a group stops at its first bad digit and the
// groups after it are still read; upper case reads and is written back in lower case.
TEST(SegmentColorIndex, LenientReaderAndHexWriter) {
    SegmentColorIndex index = indexOf("7 77 177");
    for (std::size_t length : {0u, 63u, 65u, 128u}) {
        EXPECT_FALSE(index.load(std::string(length, 'f'))) << length;
        EXPECT_EQ(members(index), "7 77 177") << length;
    }
    ASSERT_TRUE(index.load("0000000112zz000000000010zzzzzzzz0000ffff  0000ab0x00001280C0FFEE"));
    EXPECT_EQ(index.serialize(),
              "000000010000001200000010000000000000ffff000000ab0000001280c0ffee");
    struct Case {
        char const* text;
        unsigned value;
    } const cases[] = {{"0", 0},        {"DeadBeef", 0xdeadbeef},
                       {"   1f", 0x1f}, {"0x1F", 0x1f},
                       {"+ff", 0xff},   {"-0000001", 0xffffffff},
                       {"12zz", 0x12},  {"zz", 0},
                       {"", 0},         {"0x", 0}};
    for (Case const& c : cases) EXPECT_EQ(index.hexToUint32(c.text), c.value) << c.text;
    EXPECT_EQ(index.uint32toHex(0) + index.uint32toHex(0xabc) + index.uint32toHex(0x80000000u) +
                  index.uint32toHex(0x0fedcba9) + index.uint32toHex(0xffffffffu),
              "0000000000000abc800000000fedcba9ffffffff");
}

TEST(SegmentColorIndex, MergeIsUnionAndCopiesAreIndependent) {
    SegmentColorIndex a = indexOf("0 31 100");
    a.merge(indexOf("31 32 255"));
    a.merge(a);
    a.merge(SegmentColorIndex());
    EXPECT_EQ(members(a), "0 31-32 100 255");
    SegmentColorIndex copied(a), assigned = indexOf("9"), cloned = indexOf("200");
    assigned = a;
    cloned.clone(a);
    a.set(0, false);
    a.set(2, true);
    for (auto copy : {copied, assigned, cloned}) EXPECT_EQ(members(copy), "0 31-32 100 255");
}

// A class is identified by its mean colour alone, alpha included. Training marks each
// component in its channel and keeps a truncating running mean; alpha stays; setMeanColor
// leaves the count alone.
TEST(Segment, IdentityAndTraining) {
    EXPECT_EQ(state(Segment()), "|00000000||||7|0 0 0 ");
    Segment a = segmentWith("1 2", "3"), b = segmentWith("", "", "200");
    a.setName("a; \"odd\"");
    a.setChannelUsed(1, false);
    EXPECT_TRUE(a == b && !(a != b));
    a.setMeanColor(Color(0xff102030u));
    b.setMeanColor(Color(0x00102030u));
    EXPECT_TRUE(a != b && !(a == b));
    EXPECT_EQ(state(a), "a; \"odd\"|ff102030|1-2|3||5|0 0 0 ");

    Segment segment;
    segment.addColor(Color::fromRgba(200, 1, 0, 255));
    EXPECT_EQ(segment.meanColor().argb(), 0x00C80100u);
    segment.addColor(Color::fromRgba(101, 2, 255));  // 301 / 2, 3 / 2, 255 / 2
    EXPECT_EQ(segment.meanColor().argb(), 0x0096017Fu);
    segment.addColor(Color::fromRgba(0, 3, 0));  // 300 / 3, 5 / 3, 254 / 3
    EXPECT_EQ(state(segment), "|00640154|0 101 200|1-3|0 255|7|0 0 0 ");
    segment.setMeanColor(Color(0x7f5a1e03u));
    segment.addColor(Color::fromRgba(2, 30, 1, 0));  // count 3: (90 * 3 + 2) / 4 ...
    EXPECT_EQ(segment.meanColor().argb(), 0x7f441e02u);
    Segment fresh;
    fresh.setMeanColor(Color::fromRgba(90, 30, 3));
    fresh.addColor(Color::fromRgba(5, 6, 7));  // count 0: the colour replaces the mean
    EXPECT_EQ(fresh.meanColor().argb(), 0xFF050607u);
}

// Copies carry every field, the colour count included; merge unites the indexes only.
TEST(Segment, CopiesAndMerge) {
    Segment original = segmentWith("1", "2", "3");
    original.setName("n");
    original.addColor(Color::fromRgba(100, 100, 100));
    original.setChannelUsed(2, false);
    original.setDilate(1, -4);
    Segment copied(original), assigned, cloned;
    assigned = original;
    cloned.clone(original);
    for (Segment* copy : {&copied, &assigned, &cloned}) {
        EXPECT_EQ(state(*copy), "n|00646464|1 100|2 100|3 100|3|0 -4 0 ");
        copy->addColor(Color::fromRgba(0, 0, 0));  // (100 * 1 + 0) / 2
        EXPECT_EQ(copy->meanColor().r(), 50);
    }
    EXPECT_EQ(state(original), "n|00646464|1 100|2 100|3 100|3|0 -4 0 ");
    Segment a = segmentWith("1 2", "10");
    a.setMeanColor(Color(0xff000001u));
    a.setChannelUsed(0, false);
    a.setDilate(2, 3);
    a.merge(original);
    EXPECT_EQ(state(a), "|ff000001|1-2 100|2 10 100|3 100|6|0 0 3 ");
    a.addColor(Color::fromRgba(4, 5, 6, 0));  // a's count is still 0
    EXPECT_EQ(a.meanColor().argb(), 0xff040506u);
}

// Growing adds up to the amount on both sides of each stretch, but the forward pass stops
// at 254; shrinking takes values from both ends, and treats 0 as an edge but not 255. Rows
// are "members | amount | result".
TEST(Segment, Dilation) {
    char const* const cases[] = {"100-102|2|98-104",
                                 "10 14|1|9-11 13-15",
                                 "10 14|2|8-16",
                                 "0|3|0-3",
                                 "|5|",
                                 "0-255|4|0-255",
                                 "253|5|248-254",
                                 "255|2|253-255",
                                 "10|2147483647|0-254",
                                 "100-105|-3|",
                                 "10-15 20-30|-2|12-13 22-28",
                                 "0-10|-3|3-7",
                                 "245-255|-4|249-255",
                                 "255|-300|255",
                                 "0-255|-5|5-255",
                                 "0 100 250-255|-2147483648|255"};
    for (std::string const row : cases) {
        std::size_t const bar = row.find('|'), last = row.rfind('|');
        Segment segment = segmentWith(row.substr(0, bar));
        segment.setDilate(0, static_cast<int>(std::stoll(row.substr(bar + 1, last - bar - 1))));
        segment.applyDilation();
        EXPECT_EQ(members(segment.colorIndex(0)), row.substr(last + 1)) << row;
        EXPECT_EQ(segment.getDilate(0), 0);
    }
    // Per channel; only what is pending, the last amount set, and only once.
    Segment segment = segmentWith("100", "100", "100");
    segment.setDilate(0, 1);
    segment.setDilate(2, 5);
    segment.setDilate(2, -1);
    EXPECT_EQ(state(segment), "|00000000|100|100|100|7|1 0 -1 ");
    segment.applyDilation();
    segment.applyDilation();
    EXPECT_EQ(state(segment), "|00000000|99-101|100||7|0 0 0 ");
}

// The index text is the three channels in order; a text of the wrong length changes
// nothing; the mask reader keeps the low three bits of the number in front.
TEST(Segment, TextsOfTheIndexAndTheChannelMask) {
    Segment segment = segmentWith("0", "32", "255");
    EXPECT_EQ(segment.serializeColorIndex(), "00000001" + std::string(56, '0') + "00000000" +
                                                 "00000001" + std::string(104, '0') + "80000000");
    for (std::size_t length : {0u, 64u, 191u, 193u}) {
        EXPECT_FALSE(segment.loadColorIndex(std::string(length, 'f'))) << length;
        EXPECT_EQ(state(segment), "|00000000|0|32|255|7|0 0 0 ") << length;
    }
    EXPECT_TRUE(segment.loadColorIndex(zeros64 + "1zzzzzzz" + std::string(120, '0')));
    segment.setChannelUsed(1, false);
    segment.setChannelUsed(1, false);
    EXPECT_EQ(state(segment), "|00000000||0||5|0 0 0 ");
    EXPECT_TRUE(segment.channelUsed(0) && !segment.channelUsed(1) && segment.channelUsed(2));
    segment.setChannelUsed(0, false);
    EXPECT_EQ(segment.serializeChannelsUsed(), "4");
    segment.setChannelUsed(1, true);
    EXPECT_EQ(segment.serializeChannelsUsed(), "6");
    for (std::string const row : {"5=5", "15=7", "8=0", "x=0", "=0", " 3=3", "2abc=2", "-1=7"}) {
        EXPECT_TRUE(segment.loadChannelsUsed(row.substr(0, row.find('=')))) << row;
        EXPECT_EQ(segment.serializeChannelsUsed(), row.substr(row.find('=') + 1)) << row;
    }
}

#ifndef NDEBUG
TEST(SegmentDeathTest, ChannelNumbersAboveTwoStopTheProcess) {
    Segment segment;
    EXPECT_DEATH(segment.channelUsed(3), "channel >= 0 && channel <= 2");
    EXPECT_DEATH(segment.setChannelUsed(3, true), "channel >= 0 && channel <= 2");
    EXPECT_DEATH(segment.colorIndex(3), "channel >= 0 && channel <= 2");
    EXPECT_DEATH(segment.getDilate(3), "channel < 3");
    EXPECT_DEATH(segment.setDilate(7, 1), "channel < 3");
}
#endif

Segment named(std::string const& name, unsigned argb) {
    Segment segment;
    segment.setName(name);
    segment.setMeanColor(Color(argb));
    return segment;
}

SegmentList listOf(std::vector<Segment> const& segments) {
    SegmentList list;
    for (Segment const& segment : segments) list.append(segment);
    return list;
}

// The text of a list whose records are given as they stand.
std::string textOf(std::vector<std::string> const& records) {
    nuv::core::StringList list;
    for (std::string const& record : records) list.append(record);
    return nuv::core::toString(list);
}

std::vector<std::string> states(SegmentList const& list) {
    std::vector<std::string> result;
    for (auto it = list.constBegin(); it != list.constEnd(); ++it) result.push_back(state(*it));
    return result;
}

TEST(SegmentList, EqualityComparesMeanColoursInOrder) {
    SegmentList const ab = listOf({named("a", 1), named("b", 2)});
    Segment other = named("other", 1);
    other.setChannelUsed(0, false);
    EXPECT_TRUE(ab == listOf({other, named("", 2)}) && !(ab != listOf({other, named("", 2)})));
    for (SegmentList const& list :
         {listOf({named("b", 2), named("a", 1)}), listOf({named("a", 1), named("b", 3)}),
          listOf({named("a", 1)}), listOf({named("a", 1), named("b", 2), named("c", 3)})}) {
        EXPECT_FALSE(ab == list || list == ab);
        EXPECT_TRUE(ab != list);
    }
    EXPECT_TRUE(SegmentList() == SegmentList());
}

// One record a class: name;ARGB as a decimal number;colour index;channel mask. Pending
// dilation and the colour count are not written.
TEST(SegmentList, TextRoundTrip) {
    Segment ball = named("ball", 4294901760u);
    ASSERT_TRUE(ball.loadColorIndex("00000001" + std::string(184, '0')));
    ball.setChannelUsed(1, false);
    Segment plain;
    plain.setDilate(0, 3);
    EXPECT_EQ(nuv::cv::toString(listOf({ball, plain})),
              textOf({"ball;4294901760;00000001" + std::string(184, '0') + ";5",
                      ";0;" + zeros192 + ";7"}));
    EXPECT_EQ(nuv::cv::toString(SegmentList()), "");
    std::mt19937 rng(3);
    std::vector<Segment> segments;
    std::vector<std::string> expected;
    for (char const* name : {"ball", "", "goal post", "say \"hi\", then \\leave", "ü-ß"}) {
        Segment segment = named(name, static_cast<unsigned>(rng()));
        std::string digits(192, '0');
        for (char& digit : digits) digit = "0123456789abcdef"[rng() % 16];
        ASSERT_TRUE(segment.loadColorIndex(digits));
        segment.loadChannelsUsed(std::to_string(rng() % 8));
        segment.addColor(Color::fromRgba(200, 100, 50, 0));
        expected.push_back(state(segment));
        segment.setDilate(rng() % 3, 4);
        segments.push_back(segment);
    }
    SegmentList const back = nuv::cv::segmentListfromString(nuv::cv::toString(listOf(segments)));
    EXPECT_EQ(states(back), expected);
    Segment read = back.first();
    read.addColor(Color::fromRgba(1, 2, 3, 0));  // no count travelled: the colour replaces
    EXPECT_EQ(read.meanColor().argb() & 0xFFFFFF, 0x010203u);
}

// Damaged records are left out and their neighbours kept; fields after the fourth are
// ignored; lenient fields read as far as they go; a colour without a number ends the parse.
TEST(SegmentList, Reader) {
    std::string const index =
        "12zz0000" + std::string(56, '0') + "ABCDEF00" + std::string(120, '0');
    SegmentList const list = nuv::cv::segmentListfromString(
        textOf({"first;1;" + zeros192 + ";7",
                "a;1;x;7",                             // index too short
                "a;1",                                 // too few fields
                "a;1;" + zeros192,                     // three fields
                "a;1;" + zeros192 + "0;7",             // index too long
                "team;7;2;" + zeros192 + ";7",         // a name with ";" shifts the fields
                "odd;12abc;" + index + ";x;lost;too",  // lenient fields, extra fields
                "wide; 42;" + zeros192 + ";15", ""}));
    EXPECT_EQ(states(list), (std::vector<std::string>{
                                "first|00000001||||7|0 0 0 ",
                                "odd|0000000c|1 4|8-11 13-16 18-19 22-25 27 29 31||0|0 0 0 ",
                                "wide|0000002a||||7|0 0 0 "}));
    EXPECT_TRUE(nuv::cv::segmentListfromString("").isEmpty() &&
                nuv::cv::segmentListfromString(textOf({"a;zz;x"})).isEmpty());  // never read
    for (std::string const color : {"zz", "", "x12"}) {
        try {
            nuv::cv::segmentListfromString(
                textOf({"good;1;" + zeros192 + ";7", "bad;" + color + ";x;7"}));
            ADD_FAILURE() << "no exception for colour field \"" << color << "\"";
        } catch (nuv::core::Exception const& e) {
            EXPECT_EQ(e.getMessage(), "Bad conversion");
        }
    }
}

TEST(SegmentList, VariantFunctionsWrapTheTextForm) {
    SegmentList const list = listOf({named("a", 10), named("b", 20)});
    std::string const text = nuv::cv::toString(list);
    Variant const asList = nuv::cv::stringToSegmentList(Variant(text));
    EXPECT_EQ(nuv::cv::segmentListToString(Variant(list)).get<std::string>(), text);
    EXPECT_EQ(nuv::cv::toString(asList.get<SegmentList>()), text);
    EXPECT_TRUE(nuv::cv::segmentListIsEqual(Variant(list), asList));
    EXPECT_FALSE(nuv::cv::segmentListIsEqual(Variant(list), Variant(listOf({named("a", 10)}))));
    EXPECT_EQ(nuv::cv::segmentListToString(Variant(5)).get<std::string>(), "");
    EXPECT_THROW(nuv::cv::stringToSegmentList(Variant(textOf({"a;zz;" + zeros192 + ";7"}))),
                 nuv::core::Exception);
}

}  // namespace
