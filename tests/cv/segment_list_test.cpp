// SegmentList: equality by mean colours, the text form and its reader's skip rules, and the
// functions that carry a list through Variant, Converter and Math.
#include <nuv/core/Color.h>
#include <nuv/core/Exception.h>
#include <nuv/core/StringList.h>
#include <nuv/core/variant/Converter.h>
#include <nuv/core/variant/Math.h>
#include <nuv/core/variant/Variant.h>
#include <nuv/cv/SegmentList.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::core::StringList;
using nuv::core::variant::Variant;
using nuv::cv::Segment;
using nuv::cv::SegmentList;

const std::string kZeros64(64, '0');
const std::string kZeros192(192, '0');

Segment segmentOf(std::string const& name, unsigned int argb) {
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

std::vector<Segment> elements(SegmentList const& list) {
    return std::vector<Segment>(list.constBegin(), list.constEnd());
}

// The text of a list whose records are given as they stand.
std::string textOf(std::vector<std::string> const& records) {
    StringList list;
    for (std::string const& record : records) list.append(record);
    return nuv::core::toString(list);
}

std::string record(std::string const& name, std::string const& color, std::string const& index,
                   std::string const& channels) {
    return name + ";" + color + ";" + index + ";" + channels;
}

void expectSameSegment(Segment const& actual, Segment const& expected) {
    EXPECT_EQ(actual.name(), expected.name());
    EXPECT_EQ(actual.meanColor().argb(), expected.meanColor().argb());
    EXPECT_EQ(actual.serializeColorIndex(), expected.serializeColorIndex());
    EXPECT_EQ(actual.serializeChannelsUsed(), expected.serializeChannelsUsed());
}

TEST(SegmentList, EqualityComparesMeanColoursInOrder) {
    const SegmentList ab = listOf({segmentOf("a", 1), segmentOf("b", 2)});
    // Same colour, everything else different.
    Segment otherA = segmentOf("other name", 1);
    ASSERT_TRUE(otherA.loadColorIndex(std::string(192, 'f')));
    otherA.setChannelUsed(0, false);
    const SegmentList renamed = listOf({otherA, segmentOf("", 2)});
    EXPECT_TRUE(ab == renamed);
    EXPECT_FALSE(ab != renamed);

    const SegmentList ba = listOf({segmentOf("b", 2), segmentOf("a", 1)});
    EXPECT_FALSE(ab == ba);
    EXPECT_TRUE(ab != ba);

    const SegmentList longer = listOf({segmentOf("a", 1), segmentOf("b", 2), segmentOf("c", 3)});
    EXPECT_FALSE(ab == longer);
    EXPECT_FALSE(longer == ab);
    const SegmentList differentLast = listOf({segmentOf("a", 1), segmentOf("b", 3)});
    EXPECT_TRUE(ab != differentLast);

    EXPECT_TRUE(SegmentList() == SegmentList());
    EXPECT_TRUE(ab != SegmentList());
    EXPECT_TRUE(ab == ab);
}

TEST(SegmentList, RecordHasFourFieldsJoinedBySemicolons) {
    Segment ball = segmentOf("ball", 4294901760u);
    ASSERT_TRUE(ball.loadColorIndex("00000001" + std::string(184, '0')));
    ball.setChannelUsed(1, false);

    const std::string expected = "ball;4294901760;00000001" + std::string(184, '0') + ";5";
    EXPECT_EQ(nuv::cv::toString(listOf({ball})), textOf({expected}));
    EXPECT_EQ(nuv::cv::segmentListfromString(nuv::cv::toString(listOf({ball}))).size(), 1);

    // Defaults: the colour 0 and all channels; pending dilation and training state are not
    // written.
    Segment plain;
    plain.setDilate(0, 3);
    EXPECT_EQ(nuv::cv::toString(listOf({plain})), textOf({";0;" + kZeros192 + ";7"}));
}

TEST(SegmentList, ListTextIsTheStringListOfItsRecords) {
    EXPECT_EQ(nuv::cv::toString(SegmentList()), nuv::core::toString(StringList()));
    const SegmentList list = listOf({segmentOf("x", 7), segmentOf("y", 0xffffffffu)});
    EXPECT_EQ(nuv::cv::toString(list), textOf({record("x", "7", kZeros192, "7"),
                                               record("y", "4294967295", kZeros192, "7")}));
}

TEST(SegmentList, TextRoundTripKeepsEverythingButTrainingState) {
    std::mt19937 rng(3);
    std::vector<Segment> segments;
    const char* const names[] = {"ball", "", "goal post", "say \"hi\", then \\leave", "ü-ß"};
    for (char const* name : names) {
        Segment segment = segmentOf(name, static_cast<unsigned int>(rng()));
        std::string digits(192, '0');
        for (char& digit : digits) digit = "0123456789abcdef"[rng() % 16];
        ASSERT_TRUE(segment.loadColorIndex(digits));
        segment.loadChannelsUsed(std::to_string(rng() % 8));
        segment.setDilate(rng() % 3, 4);
        segments.push_back(segment);
    }
    Segment trained = segmentOf("trained", 0);
    trained.addColor(Color::fromRgba(200, 100, 50));
    trained.addColor(Color::fromRgba(100, 50, 25));
    segments.push_back(trained);
    const SegmentList list = listOf(segments);

    const SegmentList back = nuv::cv::segmentListfromString(nuv::cv::toString(list));
    ASSERT_EQ(back.size(), list.size());
    const std::vector<Segment> read = elements(back);
    for (std::size_t i = 0; i < segments.size(); ++i) {
        SCOPED_TRACE(i);
        expectSameSegment(read[i], segments[i]);
        Segment copy = read[i];
        for (unsigned int c = 0; c < 3; ++c) EXPECT_EQ(copy.getDilate(c), 0);
    }
    EXPECT_TRUE(back == list);
    EXPECT_EQ(nuv::cv::toString(back), nuv::cv::toString(list));

    // The colour count did not travel: the next colour replaces the mean outright.
    Segment again = read.back();
    again.addColor(Color::fromRgba(1, 2, 3, 0));
    EXPECT_EQ(again.meanColor().r(), 1);
    EXPECT_EQ(again.meanColor().g(), 2);
    EXPECT_EQ(again.meanColor().b(), 3);
}

TEST(SegmentList, EmptyTextGivesEmptyList) {
    EXPECT_TRUE(nuv::cv::segmentListfromString("").isEmpty());
    EXPECT_TRUE(nuv::cv::segmentListfromString(nuv::cv::toString(SegmentList())).isEmpty());
    // A list of one empty record has no good record either.
    EXPECT_TRUE(nuv::cv::segmentListfromString(textOf({""})).isEmpty());
}

TEST(SegmentList, DamagedRecordsAreSkippedAndTheirNeighboursKept) {
    const std::string text = textOf({
        record("first", "1", kZeros192, "7"),
        "a;1;x;7",                               // colour index too short
        "a;1",                                   // too few fields
        "a;1;" + kZeros192,                      // three fields
        record("a", "1", kZeros192 + "0", "7"),  // colour index too long
        record("team;7", "2", kZeros192, "7"),   // the name's ";" shifts the fields
        record("last", "3", kZeros192, "7"),
    });
    const SegmentList list = nuv::cv::segmentListfromString(text);
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list.first().name(), "first");
    EXPECT_EQ(list.first().meanColor().argb(), 1u);
    EXPECT_EQ(list.last().name(), "last");
    EXPECT_EQ(list.last().meanColor().argb(), 3u);

    EXPECT_TRUE(nuv::cv::segmentListfromString(textOf({"a;1;x;7", "a;1"})).isEmpty());
    // The name with ";" gave five fields: "team", "7" as the colour, "2" as the index.
    EXPECT_EQ(nuv::core::split(record("team;7", "2", kZeros192, "7"), ";").size(), 5);
}

TEST(SegmentList, FieldsAfterTheFourthAreIgnored) {
    const std::string index = "0000000f" + std::string(184, '0');
    const SegmentList list =
        nuv::cv::segmentListfromString(textOf({record("five", "9", index, "3") + ";lost;too"}));
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list.first().name(), "five");
    EXPECT_EQ(list.first().meanColor().argb(), 9u);
    EXPECT_EQ(list.first().serializeColorIndex(), index);
    EXPECT_EQ(list.first().serializeChannelsUsed(), "3");
}

TEST(SegmentList, LenientFieldsStayIn) {
    // Bad digits of the right length read as far as they go; upper case is fine.
    std::string index = "12zz0000" + std::string(56, '0') + "ABCDEF00" + std::string(120, '0');
    // A channel mask that is no number uses no channel; digits before junk count in the
    // colour.
    const SegmentList list = nuv::cv::segmentListfromString(
        textOf({record("odd", "12abc", index, "x"), record("wide", " 42", kZeros192, "15")}));
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list.first().meanColor().argb(), 12u);
    EXPECT_EQ(list.first().serializeColorIndex(),
              "00000012" + std::string(56, '0') + "abcdef00" + std::string(120, '0'));
    EXPECT_EQ(list.first().serializeChannelsUsed(), "0");
    EXPECT_EQ(list.last().meanColor().argb(), 42u);
    EXPECT_EQ(list.last().serializeChannelsUsed(), "7");
}

TEST(SegmentList, ColourFieldWithoutNumberEndsTheParse) {
    for (std::string const& color : {std::string("zz"), std::string(""), std::string("x12")}) {
        const std::string text =
            textOf({record("good", "1", kZeros192, "7"), record("bad", color, kZeros192, "7"),
                    record("after", "2", kZeros192, "7")});
        try {
            nuv::cv::segmentListfromString(text);
            ADD_FAILURE() << "no exception for colour field \"" << color << "\"";
        } catch (nuv::core::Exception const& e) {
            EXPECT_EQ(e.getMessage(), "Bad conversion");
        }
    }
    // The colour is read before the index is checked, so even a record that would be
    // skipped for its index throws.
    EXPECT_THROW(nuv::cv::segmentListfromString(textOf({"a;zz;x;7"})), nuv::core::Exception);
    // A record skipped for too few fields is never read that far.
    EXPECT_TRUE(nuv::cv::segmentListfromString(textOf({"a;zz;x"})).isEmpty());
}

TEST(SegmentList, VariantFunctionsWrapTheTextForm) {
    const SegmentList list = listOf({segmentOf("a", 10), segmentOf("b", 20)});
    const std::string text = nuv::cv::toString(list);

    const Variant asText = nuv::cv::segmentListToString(Variant(list));
    ASSERT_TRUE(asText.is<std::string>());
    EXPECT_EQ(asText.get<std::string>(), text);

    const Variant asList = nuv::cv::stringToSegmentList(Variant(text));
    ASSERT_TRUE(asList.is<SegmentList>());
    EXPECT_EQ(nuv::cv::toString(asList.get<SegmentList>()), text);

    EXPECT_TRUE(nuv::cv::segmentListIsEqual(Variant(list), asList));
    EXPECT_FALSE(nuv::cv::segmentListIsEqual(Variant(list), Variant(listOf({segmentOf("a", 10)}))));

    // A variant of another type reads as the empty list.
    EXPECT_EQ(nuv::cv::segmentListToString(Variant(5)).get<std::string>(),
              nuv::cv::toString(SegmentList()));
    EXPECT_THROW(nuv::cv::stringToSegmentList(Variant(textOf({"a;zz;" + kZeros192 + ";7"}))),
                 nuv::core::Exception);
}

TEST(SegmentList, FunctionsFitTheConverterAndMathRegistries) {
    using nuv::core::variant::CompareEqual;
    using nuv::core::variant::Converter;
    using nuv::core::variant::Math;
    // The same registrations the library entry makes; registering twice replaces, so the
    // order of the tests does not matter.
    Converter::singleton().registerConvertFunction(typeid(std::string), typeid(SegmentList),
                                                   nuv::cv::segmentListToString);
    Converter::singleton().registerConvertFunction(typeid(SegmentList), typeid(std::string),
                                                   nuv::cv::stringToSegmentList);
    Math::singleton().registerCompare<SegmentList>(CompareEqual, nuv::cv::segmentListIsEqual);

    const SegmentList list = listOf({segmentOf("a", 10), segmentOf("b", 20)});
    bool ok = false;
    const std::string text = Variant(list).toString(&ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(text, nuv::cv::toString(list));
    const SegmentList back = Variant(text).convertTo<SegmentList>(&ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(back == list);

    EXPECT_TRUE(Math::singleton().compare(CompareEqual, Variant(list), Variant(back), &ok));
    EXPECT_TRUE(ok);
    EXPECT_FALSE(Math::singleton().compare(CompareEqual, Variant(list),
                                           Variant(listOf({segmentOf("b", 20)})), &ok));
}

}  // namespace
