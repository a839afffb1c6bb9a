// Colour classes: SegmentColorIndex and its text, Segment (training, merge, dilation, channel
// mask), and SegmentList with its text form, its reader's skip rules and its variant forms.
#include <nuv/core/Color.h>
#include <nuv/core/Exception.h>
#include <nuv/core/StringList.h>
#include <nuv/core/variant/Variant.h>
#include <nuv/cv/Segment.h>
#include <nuv/cv/SegmentColorIndex.h>
#include <nuv/cv/SegmentList.h>

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::core::variant::Variant;
using nuv::cv::Segment;
using nuv::cv::SegmentColorIndex;
using nuv::cv::SegmentList;
using Values = std::vector<int>;

std::string const zeros64(64, '0'), zeros192(192, '0');

// "3 9-11" is {3, 9, 10, 11}.
Values values(std::string const& text) {
    Values result;
    std::istringstream stream(text);
    for (int first = 0, last = 0; stream >> first;) {
        last = first;
        if (stream.peek() == '-') stream.ignore() >> last;
        for (int v = first; v <= last; ++v) result.push_back(v);
    }
    return result;
}

SegmentColorIndex indexOf(std::string const& text) {
    SegmentColorIndex index;
    for (int v : values(text)) index.set(static_cast<unsigned char>(v), true);
    return index;
}

Values members(SegmentColorIndex const& index) {
    Values result;
    for (int v = 0; v < 256; ++v)
        if (index.at(static_cast<unsigned char>(v))) result.push_back(v);
    return result;
}

// A segment whose three channels accept exactly the given values, its mean colour untouched.
Segment segmentWith(std::string const& c0, std::string const& c1 = "", std::string const& c2 = "") {
    Segment segment;
    EXPECT_TRUE(segment.loadColorIndex(indexOf(c0).serialize() + indexOf(c1).serialize() +
                                       indexOf(c2).serialize()));
    return segment;
}

// Each value is one bit: word v / 32 is written as eight hex digits, high nibble first.
TEST(SegmentColorIndex, EveryValueIsOneBitOfTheText) {
    char const* const digits = "0123456789abcdef";
    for (int v = 0; v < 256; ++v) {
        SegmentColorIndex index = indexOf("0 255");
        index.set(static_cast<unsigned char>(v), true);
        index.set(static_cast<unsigned char>(v), true);
        index.set(0, false);
        index.set(255, false);
        std::string expected = zeros64;
        expected[8 * (v >> 5) + 7 - ((v & 31) >> 2)] = digits[1 << (v & 3)];
        if (v == 0 || v == 255) expected = zeros64;
        ASSERT_EQ(index.serialize(), expected) << v;
        ASSERT_EQ(members(index), v == 0 || v == 255 ? Values() : Values{v});
    }
    EXPECT_EQ(indexOf("0 1 31 32 255").serialize(),
              "8000000300000001" + std::string(40, '0') + "80000000");
    std::mt19937 rng(11);
    for (int round = 0; round < 20; ++round) {
        SegmentColorIndex original, loaded = indexOf("7");
        for (int v = 0; v < 256; ++v) original.set(static_cast<unsigned char>(v), rng() % 3 == 0);
        ASSERT_TRUE(loaded.load(original.serialize()));
        EXPECT_EQ(members(loaded), members(original));
    }
    SegmentColorIndex full;
    ASSERT_TRUE(full.load(std::string(64, 'f')));
    EXPECT_EQ(members(full), values("0-255"));
    ASSERT_TRUE(full.load(zeros64));
    EXPECT_TRUE(members(full).empty());
}

// Text of the wrong length changes nothing; a group stops at its first bad digit and the
// groups after it are still read; upper case reads and is written back in lower case.
TEST(SegmentColorIndex, LenientReader) {
    SegmentColorIndex index = indexOf("7 77 177");
    std::string const before = index.serialize();
    for (std::size_t length : {0u, 63u, 65u, 128u}) {
        EXPECT_FALSE(index.load(std::string(length, 'f'))) << length;
        EXPECT_EQ(index.serialize(), before) << length;
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
    for (unsigned v : {0u, 0xabcu, 0x80000000u, 0x0fedcba9u, 0xffffffffu}) {
        std::string const text = index.uint32toHex(v);
        EXPECT_EQ(text.size(), 8u);
        EXPECT_EQ(std::stoul(text, nullptr, 16), v);
        EXPECT_EQ(text.find_first_not_of("0123456789abcdef"), std::string::npos);
    }
    EXPECT_EQ(index.uint32toHex(0xabcu), "00000abc");
}

TEST(SegmentColorIndex, MergeIsUnionAndCopiesAreIndependent) {
    SegmentColorIndex a = indexOf("0 31 100");
    a.merge(indexOf("31 32 255"));
    EXPECT_EQ(members(a), values("0 31 32 100 255"));
    a.merge(a);
    a.merge(SegmentColorIndex());
    EXPECT_EQ(members(a), values("0 31 32 100 255"));
    SegmentColorIndex copied(a), assigned = indexOf("9"), cloned = indexOf("200");
    assigned = a;
    cloned.clone(a);
    a.set(0, false);
    a.set(2, true);
    for (SegmentColorIndex const* copy : {&copied, &assigned, &cloned})
        EXPECT_EQ(members(*copy), values("0 31 32 100 255"));
}

TEST(Segment, DefaultsAndIdentityByMeanColour) {
    Segment segment;
    EXPECT_EQ(segment.name(), "");
    EXPECT_EQ(segment.meanColor(), Color());
    EXPECT_EQ(segment.serializeChannelsUsed(), "7");
    EXPECT_EQ(segment.serializeColorIndex(), zeros192);
    for (unsigned c = 0; c < 3; ++c) EXPECT_EQ(segment.getDilate(c), 0);
    Segment a = segmentWith("1 2", "3"), b = segmentWith("", "", "200");
    a.setName("a");
    a.setChannelUsed(1, false);
    EXPECT_TRUE(a == b && !(a != b));
    a.setMeanColor(Color(0xff102030u));
    EXPECT_TRUE(a != b && !(a == b));
    b.setMeanColor(Color(0x00102030u));  // alpha is part of the colour
    EXPECT_TRUE(a != b);
    b.setName("odd; \"name\"");
    EXPECT_EQ(b.name(), "odd; \"name\"");
}

// Training marks each component in its channel and keeps a truncating running mean of the
// colours; alpha stays; setMeanColor leaves the count alone.
TEST(Segment, AddColorTrainsIndexesAndMean) {
    Segment segment;
    segment.addColor(Color::fromRgba(200, 1, 0, 255));
    EXPECT_EQ(segment.meanColor().argb(), 0x00C80100u);
    segment.addColor(Color::fromRgba(101, 2, 255));  // 301 / 2, 3 / 2, 255 / 2
    EXPECT_EQ(segment.meanColor().argb(), 0x0096017Fu);
    segment.addColor(Color::fromRgba(0, 3, 0));  // 300 / 3, 5 / 3, 254 / 3
    EXPECT_EQ(segment.meanColor().argb(), 0x00640154u);
    EXPECT_EQ(members(segment.colorIndex(0)), values("0 101 200"));
    EXPECT_EQ(members(segment.colorIndex(1)), values("1-3"));
    EXPECT_EQ(members(segment.colorIndex(2)), values("0 255"));
    segment.setMeanColor(Color(0x7f5a1e03u));
    segment.addColor(Color::fromRgba(2, 30, 1, 0));  // count 3: (90 * 3 + 2) / 4 ...
    EXPECT_EQ(segment.meanColor().argb(), 0x7f441e02u);
    Segment fresh;
    fresh.setMeanColor(Color::fromRgba(90, 30, 3));
    fresh.addColor(Color::fromRgba(5, 6, 7));  // count 0: the colour replaces the mean
    EXPECT_EQ(fresh.meanColor().argb(), 0xFF050607u);
}

TEST(Segment, CopiesCarryEveryFieldAndMergeUnitesOnlyTheIndexes) {
    Segment original = segmentWith("1", "2", "3");
    original.setName("n");
    original.addColor(Color::fromRgba(100, 100, 100));
    original.setChannelUsed(2, false);
    original.setDilate(1, -4);
    Segment copied(original), assigned, cloned;
    assigned = original;
    cloned.clone(original);
    for (Segment* copy : {&copied, &assigned, &cloned}) {
        EXPECT_EQ(copy->name(), "n");
        EXPECT_EQ(copy->serializeColorIndex(), original.serializeColorIndex());
        EXPECT_EQ(copy->serializeChannelsUsed(), "3");
        EXPECT_EQ(copy->getDilate(1), -4);
        copy->addColor(Color::fromRgba(0, 0, 0));  // the count came along: 100 / 2
        EXPECT_EQ(copy->meanColor().r(), 50);
    }
    EXPECT_EQ(original.meanColor().r(), 100);
    EXPECT_EQ(members(original.colorIndex(0)), values("1 100"));

    Segment a = segmentWith("1 2", "10");
    a.setMeanColor(Color(0xff000001u));
    a.setChannelUsed(0, false);
    a.setDilate(2, 3);
    a.merge(original);
    EXPECT_EQ(a.serializeColorIndex(),
              segmentWith("1 2 100", "2 10 100", "3 100").serializeColorIndex());
    EXPECT_EQ(a.name(), "");
    EXPECT_EQ(a.serializeChannelsUsed(), "6");
    EXPECT_EQ(a.getDilate(2), 3);
    a.addColor(Color::fromRgba(4, 5, 6, 0));  // a's count is still 0
    EXPECT_EQ(a.meanColor().argb(), 0xff040506u);
}

// Growing adds up to the amount on both sides of each stretch, but the forward pass stops
// at 254; shrinking takes values from both ends, and treats 0 as an edge but not 255.
TEST(Segment, Dilation) {
    struct Case {
        char const* members;
        int amount;
        char const* result;
    } const cases[] = {
        {"100-102", 2, "98-104"},
        {"10 14", 1, "9-11 13-15"},
        {"10 14", 2, "8-16"},
        {"0", 3, "0-3"},
        {"", 5, ""},
        {"0-255", 4, "0-255"},
        {"253", 5, "248-254"},
        {"250", 10, "240-254"},
        {"255", 2, "253-255"},
        {"10", 300, "0-254"},
        {"10", INT_MAX, "0-254"},
        {"100-105", -1, "101-104"},
        {"100-105", -2, "102-103"},
        {"100-105", -3, ""},
        {"77", -1, ""},
        {"10-15 20-30", -2, "12-13 22-28"},
        {"", -3, ""},
        {"0-10", -1, "1-9"},
        {"0-10", -3, "3-7"},
        {"245-255", -1, "246-255"},
        {"245-255", -4, "249-255"},
        {"255", -300, "255"},
        {"0-255", -5, "5-255"},
        {"0 100 250-255", INT_MIN, "255"},
    };
    for (Case const& c : cases) {
        Segment segment = segmentWith(c.members);
        segment.setDilate(0, c.amount);
        segment.applyDilation();
        EXPECT_EQ(members(segment.colorIndex(0)), values(c.result))
            << c.members << " by " << c.amount;
        EXPECT_EQ(segment.getDilate(0), 0);
    }
    // Per channel; only what is pending, the last amount set, and only once.
    Segment segment = segmentWith("100", "100", "100");
    segment.setDilate(0, 1);
    segment.setDilate(2, 5);
    segment.setDilate(2, -1);
    EXPECT_EQ(segment.serializeColorIndex(),
              segmentWith("100", "100", "100").serializeColorIndex());
    segment.applyDilation();
    segment.applyDilation();
    EXPECT_EQ(segment.serializeColorIndex(),
              segmentWith("99-101", "100", "").serializeColorIndex());
}

TEST(Segment, TextsOfTheIndexAndTheChannelMask) {
    Segment segment = segmentWith("0", "32", "255");
    EXPECT_EQ(segment.serializeColorIndex(), "00000001" + std::string(56, '0') + "00000000" +
                                                 "00000001" + std::string(104, '0') + "80000000");
    std::string const before = segment.serializeColorIndex();
    for (std::size_t length : {0u, 64u, 191u, 193u}) {
        EXPECT_FALSE(segment.loadColorIndex(std::string(length, 'f'))) << length;
        EXPECT_EQ(segment.serializeColorIndex(), before) << length;
    }
    std::string text = zeros192;
    text.replace(64, 8, "1zzzzzzz");
    EXPECT_TRUE(segment.loadColorIndex(text));
    EXPECT_EQ(segment.serializeColorIndex(), segmentWith("", "0", "").serializeColorIndex());

    segment.setChannelUsed(1, false);
    segment.setChannelUsed(1, false);
    EXPECT_EQ(segment.serializeChannelsUsed(), "5");
    EXPECT_TRUE(segment.channelUsed(0) && !segment.channelUsed(1) && segment.channelUsed(2));
    segment.setChannelUsed(0, false);
    EXPECT_EQ(segment.serializeChannelsUsed(), "4");
    segment.setChannelUsed(1, true);
    EXPECT_EQ(segment.serializeChannelsUsed(), "6");
    // The reader keeps the low three bits of the number in front.
    std::pair<char const*, char const*> const masks[] = {{"5", "5"},    {"15", "7"}, {"8", "0"},
                                                         {"x", "0"},    {"", "0"},   {" 3", "3"},
                                                         {"2abc", "2"}, {"-1", "7"}};
    for (auto [in, stored] : masks) {
        EXPECT_TRUE(segment.loadChannelsUsed(in)) << in;
        EXPECT_EQ(segment.serializeChannelsUsed(), stored) << in;
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

TEST(SegmentList, EqualityComparesMeanColoursInOrder) {
    SegmentList const ab = listOf({named("a", 1), named("b", 2)});
    Segment other = named("other", 1);
    ASSERT_TRUE(other.loadColorIndex(std::string(192, 'f')));
    other.setChannelUsed(0, false);
    EXPECT_TRUE(ab == listOf({other, named("", 2)}));
    EXPECT_FALSE(ab != listOf({other, named("", 2)}));
    for (SegmentList const& list :
         {listOf({named("b", 2), named("a", 1)}), listOf({named("a", 1), named("b", 3)}),
          listOf({named("a", 1)}), listOf({named("a", 1), named("b", 2), named("c", 3)})}) {
        EXPECT_FALSE(ab == list);
        EXPECT_FALSE(list == ab);
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
    for (char const* name : {"ball", "", "goal post", "say \"hi\", then \\leave", "ü-ß"}) {
        Segment segment = named(name, static_cast<unsigned>(rng()));
        std::string digits(192, '0');
        for (char& digit : digits) digit = "0123456789abcdef"[rng() % 16];
        ASSERT_TRUE(segment.loadColorIndex(digits));
        segment.loadChannelsUsed(std::to_string(rng() % 8));
        segment.setDilate(rng() % 3, 4);
        segment.addColor(Color::fromRgba(200, 100, 50, 0));
        segments.push_back(segment);
    }
    SegmentList const list = listOf(segments);
    SegmentList const back = nuv::cv::segmentListfromString(nuv::cv::toString(list));
    ASSERT_EQ(back.size(), list.size());
    auto it = back.constBegin();
    for (Segment const& segment : segments) {
        Segment read = *it++;
        EXPECT_EQ(read.name(), segment.name());
        EXPECT_EQ(read.meanColor().argb(), segment.meanColor().argb());
        EXPECT_EQ(read.serializeColorIndex(), segment.serializeColorIndex());
        EXPECT_EQ(read.serializeChannelsUsed(), segment.serializeChannelsUsed());
        for (unsigned c = 0; c < 3; ++c) EXPECT_EQ(read.getDilate(c), 0);
        read.addColor(Color::fromRgba(1, 2, 3, 0));  // no count travelled: the colour replaces
        EXPECT_EQ(read.meanColor().argb() & 0xFFFFFF, 0x010203u);
    }
}

// Damaged records are left out and their neighbours kept; fields after the fourth are
// ignored; lenient fields read as far as they go; a colour without a number ends the parse.
TEST(SegmentList, Reader) {
    std::string const idx = "12zz0000" + std::string(56, '0') + "ABCDEF00" + std::string(120, '0');
    std::string const readIdx =
        "00000012" + std::string(56, '0') + "abcdef00" + std::string(120, '0');
    SegmentList const list = nuv::cv::segmentListfromString(textOf({
        "first;1;" + zeros192 + ";7",
        "a;1;x;7",                           // index too short
        "a;1",                               // too few fields
        "a;1;" + zeros192,                   // three fields
        "a;1;" + zeros192 + "0;7",           // index too long
        "team;7;2;" + zeros192 + ";7",       // a name with ";" shifts the fields
        "odd;12abc;" + idx + ";x;lost;too",  // lenient fields, extra fields
        "wide; 42;" + zeros192 + ";15",
        "",
    }));
    struct Expected {
        char const* name;
        unsigned argb;
        std::string index;
        char const* mask;
    } const expected[] = {
        {"first", 1, zeros192, "7"}, {"odd", 12, readIdx, "0"}, {"wide", 42, zeros192, "7"}};
    ASSERT_EQ(list.size(), 3);
    auto it = list.constBegin();
    for (Expected const& e : expected) {
        EXPECT_EQ(it->name(), e.name);
        EXPECT_EQ(it->meanColor().argb(), e.argb);
        EXPECT_EQ(it->serializeColorIndex(), e.index);
        EXPECT_EQ((it++)->serializeChannelsUsed(), e.mask);
    }
    EXPECT_TRUE(nuv::cv::segmentListfromString("").isEmpty());
    EXPECT_TRUE(nuv::cv::segmentListfromString(textOf({"a;zz;x"})).isEmpty());  // never read
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
    Variant const asText = nuv::cv::segmentListToString(Variant(list));
    EXPECT_EQ(asText.get<std::string>(), text);
    Variant const asList = nuv::cv::stringToSegmentList(Variant(text));
    EXPECT_EQ(nuv::cv::toString(asList.get<SegmentList>()), text);
    EXPECT_TRUE(nuv::cv::segmentListIsEqual(Variant(list), asList));
    EXPECT_FALSE(nuv::cv::segmentListIsEqual(Variant(list), Variant(listOf({named("a", 10)}))));
    EXPECT_EQ(nuv::cv::segmentListToString(Variant(5)).get<std::string>(), "");
    EXPECT_THROW(nuv::cv::stringToSegmentList(Variant(textOf({"a;zz;" + zeros192 + ";7"}))),
                 nuv::core::Exception);
}

}  // namespace
