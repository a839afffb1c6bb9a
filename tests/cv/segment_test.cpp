// Segment: defaults, identity by mean colour, training by addColor, merge and dilation,
// the text of the index and of the channel mask, and the channel assertions.
#include <nuv/core/Color.h>
#include <nuv/cv/Segment.h>

#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <string>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::cv::Segment;
using nuv::cv::SegmentColorIndex;

std::vector<int> range(int first, int last) {
    std::vector<int> values;
    for (int v = first; v <= last; ++v) values.push_back(v);
    return values;
}

SegmentColorIndex indexOf(std::vector<int> const& values) {
    SegmentColorIndex index;
    for (int v : values) index.set(static_cast<unsigned char>(v), true);
    return index;
}

std::vector<int> members(SegmentColorIndex const& index) {
    std::vector<int> result;
    for (int v = 0; v < 256; ++v)
        if (index.at(static_cast<unsigned char>(v))) result.push_back(v);
    return result;
}

// A segment whose three channels accept exactly the given values; only the text form can
// set a whole index without touching the mean colour.
Segment segmentWith(std::vector<int> const& c0, std::vector<int> const& c1 = {},
                    std::vector<int> const& c2 = {}) {
    Segment segment;
    EXPECT_TRUE(segment.loadColorIndex(indexOf(c0).serialize() + indexOf(c1).serialize() +
                                       indexOf(c2).serialize()));
    return segment;
}

// Channel 0 of {values} after a dilation by amount.
std::vector<int> dilated(std::vector<int> const& values, int amount) {
    Segment segment = segmentWith(values);
    segment.setDilate(0, amount);
    segment.applyDilation();
    EXPECT_EQ(segment.getDilate(0), 0);
    return members(segment.colorIndex(0));
}

std::vector<int> join(std::initializer_list<std::vector<int>> parts) {
    std::vector<int> all;
    for (auto const& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(Segment, DefaultSegment) {
    Segment segment;
    EXPECT_EQ(segment.name(), "");
    EXPECT_EQ(segment.meanColor(), Color());
    EXPECT_EQ(segment.serializeChannelsUsed(), "7");
    EXPECT_EQ(segment.serializeColorIndex(), std::string(192, '0'));
    for (unsigned int c = 0; c < 3; ++c) {
        EXPECT_TRUE(segment.channelUsed(c));
        EXPECT_EQ(segment.getDilate(c), 0);
        EXPECT_TRUE(members(segment.colorIndex(c)).empty());
    }
}

TEST(Segment, IdentityIsTheMeanColourAlone) {
    Segment a = segmentWith({1, 2}, {3}, {});
    a.setName("a");
    a.setChannelUsed(1, false);
    Segment b = segmentWith({}, {}, {200});
    b.setName("b");
    // Both still have the default mean colour.
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_TRUE(a == Segment());

    a.setMeanColor(Color(0xff102030u));
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    b.setMeanColor(Color(0xff102030u));
    EXPECT_TRUE(a == b);
    // Alpha is part of the colour.
    b.setMeanColor(Color(0x00102030u));
    EXPECT_TRUE(a != b);
}

TEST(Segment, NameAndMeanColourAreStoredAsGiven) {
    Segment segment;
    segment.setName("ball; with \"odd\" text");
    segment.setMeanColor(Color(0x80fedcbau));
    EXPECT_EQ(segment.name(), "ball; with \"odd\" text");
    EXPECT_EQ(segment.meanColor().argb(), 0x80fedcbau);
}

TEST(Segment, AddColorAcceptsComponentsPerChannel) {
    Segment segment;
    segment.addColor(Color::fromRgba(10, 20, 30));
    segment.addColor(Color::fromRgba(40, 20, 255));
    EXPECT_EQ(members(segment.colorIndex(0)), (std::vector<int>{10, 40}));
    EXPECT_EQ(members(segment.colorIndex(1)), (std::vector<int>{20}));
    EXPECT_EQ(members(segment.colorIndex(2)), (std::vector<int>{30, 255}));
}

TEST(Segment, AddColorKeepsATruncatingRunningMean) {
    Segment segment;
    segment.addColor(Color::fromRgba(200, 1, 0));
    EXPECT_EQ(segment.meanColor().r(), 200);
    EXPECT_EQ(segment.meanColor().g(), 1);
    segment.addColor(Color::fromRgba(101, 2, 255));
    // (200 * 1 + 101) / 2 = 150; (1 + 2) / 2 = 1, the half is lost; (0 + 255) / 2 = 127.
    EXPECT_EQ(segment.meanColor().r(), 150);
    EXPECT_EQ(segment.meanColor().g(), 1);
    EXPECT_EQ(segment.meanColor().b(), 127);
    segment.addColor(Color::fromRgba(0, 3, 0));
    // (150 * 2 + 0) / 3 = 100; (1 * 2 + 3) / 3 = 1; (127 * 2 + 0) / 3 = 84.
    EXPECT_EQ(segment.meanColor().r(), 100);
    EXPECT_EQ(segment.meanColor().g(), 1);
    EXPECT_EQ(segment.meanColor().b(), 84);
}

TEST(Segment, AddColorLeavesAlphaAlone) {
    Segment segment;
    // The default mean is transparent black, and training does not make it opaque.
    segment.addColor(Color::fromRgba(1, 2, 3, 255));
    EXPECT_EQ(segment.meanColor().argb(), 0x00010203u);

    Segment tinted;
    tinted.setMeanColor(Color(0x7f000000u));
    tinted.addColor(Color::fromRgba(9, 8, 7, 0));
    EXPECT_EQ(tinted.meanColor().argb(), 0x7f090807u);
}

TEST(Segment, SetMeanColorKeepsTheColourCount) {
    Segment segment;
    segment.addColor(Color::fromRgba(0, 0, 0));
    segment.addColor(Color::fromRgba(0, 0, 0));
    segment.setMeanColor(Color::fromRgba(90, 30, 3));
    // The count is still 2: (90 * 2 + 0) / 3 = 60, (30 * 2 + 30) / 3 = 30, (3 * 2 + 0) / 3 = 2.
    segment.addColor(Color::fromRgba(0, 30, 0));
    EXPECT_EQ(segment.meanColor().r(), 60);
    EXPECT_EQ(segment.meanColor().g(), 30);
    EXPECT_EQ(segment.meanColor().b(), 2);

    // A fresh segment with a set colour has count 0: the next colour replaces the mean.
    Segment fresh;
    fresh.setMeanColor(Color::fromRgba(90, 30, 3));
    fresh.addColor(Color::fromRgba(5, 6, 7));
    EXPECT_EQ(fresh.meanColor().r(), 5);
    EXPECT_EQ(fresh.meanColor().g(), 6);
    EXPECT_EQ(fresh.meanColor().b(), 7);
}

TEST(Segment, CopiesCarryEveryField) {
    Segment original = segmentWith({1}, {2}, {3});
    original.setName("n");
    original.addColor(Color::fromRgba(100, 100, 100));  // count 1, mean 100
    original.setChannelUsed(2, false);
    original.setDilate(1, -4);

    Segment copied(original);
    Segment assigned;
    assigned = original;
    Segment cloned;
    cloned.clone(original);

    for (Segment* copy : {&copied, &assigned, &cloned}) {
        EXPECT_EQ(copy->name(), "n");
        EXPECT_EQ(copy->serializeColorIndex(), original.serializeColorIndex());
        EXPECT_EQ(copy->serializeChannelsUsed(), "3");
        EXPECT_EQ(copy->getDilate(1), -4);
        // The colour count came along: (100 * 1 + 0) / 2 = 50, not 0.
        copy->addColor(Color::fromRgba(0, 0, 0));
        EXPECT_EQ(copy->meanColor().r(), 50);
    }
    // The copies are independent of the original.
    EXPECT_EQ(original.meanColor().r(), 100);
    EXPECT_EQ(members(original.colorIndex(0)), (std::vector<int>{1, 100}));
}

TEST(Segment, MergeUnitesTheIndexesAndNothingElse) {
    Segment a = segmentWith({1, 2}, {10}, {});
    a.setName("a");
    a.setMeanColor(Color(0xff000001u));
    a.setChannelUsed(0, false);
    a.setDilate(2, 3);
    Segment b = segmentWith({2, 3}, {}, {255});
    b.setName("b");
    b.addColor(Color::fromRgba(50, 60, 70));
    b.setDilate(2, -1);

    a.merge(b);
    EXPECT_EQ(members(a.colorIndex(0)), (std::vector<int>{1, 2, 3, 50}));
    EXPECT_EQ(members(a.colorIndex(1)), (std::vector<int>{10, 60}));
    EXPECT_EQ(members(a.colorIndex(2)), (std::vector<int>{70, 255}));
    EXPECT_EQ(a.name(), "a");
    EXPECT_EQ(a.meanColor().argb(), 0xff000001u);
    EXPECT_EQ(a.serializeChannelsUsed(), "6");
    EXPECT_EQ(a.getDilate(2), 3);
    // a's colour count is still 0: the next colour replaces its mean.
    a.addColor(Color::fromRgba(4, 5, 6, 0));
    EXPECT_EQ(a.meanColor().argb(), 0xff040506u);

    const std::string before = b.serializeColorIndex();
    b.merge(b);
    EXPECT_EQ(b.serializeColorIndex(), before);
    b.merge(Segment());
    EXPECT_EQ(b.serializeColorIndex(), before);
}

TEST(Segment, GrowingAddsValuesOnBothSidesOfEachStretch) {
    EXPECT_EQ(dilated({100, 101, 102}, 2), range(98, 104));
    EXPECT_EQ(dilated({10, 14}, 1), (std::vector<int>{9, 10, 11, 13, 14, 15}));
    // Two stretches whose growth meets become one.
    EXPECT_EQ(dilated({10, 14}, 2), range(8, 16));
    EXPECT_EQ(dilated({0}, 3), range(0, 3));
    EXPECT_TRUE(dilated({}, 5).empty());
    EXPECT_EQ(dilated(range(0, 255), 4), range(0, 255));
}

TEST(Segment, GrowingNeverReachesTheTopValueFromBelow) {
    // The forward pass stops at 254, so growth upwards ends there.
    EXPECT_EQ(dilated({253}, 5), range(248, 254));
    EXPECT_EQ(dilated({250}, 10), range(240, 254));
    // Growth downwards from 255 works.
    EXPECT_EQ(dilated({255}, 2), range(253, 255));
    // An amount beyond the axis is accepted.
    EXPECT_EQ(dilated({10}, 300), range(0, 254));
    EXPECT_EQ(dilated({10}, INT_MAX), range(0, 254));
}

TEST(Segment, ShrinkingRemovesValuesAtBothEndsOfEachStretch) {
    EXPECT_EQ(dilated(range(100, 105), -1), range(101, 104));
    EXPECT_EQ(dilated(range(100, 105), -2), range(102, 103));
    EXPECT_TRUE(dilated(range(100, 105), -3).empty());
    EXPECT_TRUE(dilated({50, 51, 52}, -2).empty());
    EXPECT_TRUE(dilated({77}, -1).empty());
    EXPECT_EQ(dilated(join({range(10, 15), range(20, 30)}), -2),
              join({range(12, 13), range(22, 28)}));
    EXPECT_TRUE(dilated({}, -3).empty());
}

TEST(Segment, ShrinkingErodesTheBottomOfTheAxisButNotTheTop) {
    // Value 0 counts as an edge.
    EXPECT_EQ(dilated(range(0, 10), -1), range(1, 9));
    EXPECT_EQ(dilated(range(0, 10), -3), range(3, 7));
    // Value 255 does not.
    EXPECT_EQ(dilated(range(245, 255), -1), range(246, 255));
    EXPECT_EQ(dilated(range(245, 255), -4), range(249, 255));
    EXPECT_EQ(dilated({255}, -1), std::vector<int>{255});
    EXPECT_EQ(dilated({255}, -300), std::vector<int>{255});
    // A full axis loses only its low end.
    EXPECT_EQ(dilated(range(0, 255), -1), range(1, 255));
    EXPECT_EQ(dilated(range(0, 255), -5), range(5, 255));
    // The most negative amount has a magnitude too: the forward pass never runs out of
    // spread and takes every member it visits, and only 255, which it never visits, stays.
    EXPECT_EQ(dilated(join({{0, 100}, range(250, 255)}), INT_MIN), std::vector<int>{255});
}

TEST(Segment, DilationRunsPerChannelAndClearsWhatItApplied) {
    Segment segment = segmentWith({100}, {100}, {100});
    segment.setDilate(0, 1);
    segment.setDilate(2, -1);
    EXPECT_EQ(segment.getDilate(0), 1);
    EXPECT_EQ(segment.getDilate(1), 0);
    EXPECT_EQ(segment.getDilate(2), -1);
    segment.applyDilation();
    EXPECT_EQ(members(segment.colorIndex(0)), range(99, 101));
    EXPECT_EQ(members(segment.colorIndex(1)), std::vector<int>{100});  // nothing pending
    EXPECT_TRUE(members(segment.colorIndex(2)).empty());
    for (unsigned int c = 0; c < 3; ++c) EXPECT_EQ(segment.getDilate(c), 0);

    // Nothing pending any more: a second call changes nothing.
    const std::string before = segment.serializeColorIndex();
    segment.applyDilation();
    EXPECT_EQ(segment.serializeColorIndex(), before);

    // setDilate only stores, and the last amount set is the one applied.
    segment.setDilate(1, 5);
    EXPECT_EQ(segment.serializeColorIndex(), before);
    segment.setDilate(1, 2);
    segment.applyDilation();
    EXPECT_EQ(members(segment.colorIndex(1)), range(98, 102));
}

TEST(Segment, ColourIndexTextIsTheThreeChannelsInOrder) {
    Segment segment = segmentWith({0}, {32}, {255});
    const std::string zeros(56, '0');
    const std::string expected =
        "00000001" + zeros + "00000000" + "00000001" + std::string(48, '0') + zeros + "80000000";
    EXPECT_EQ(segment.serializeColorIndex(), expected);
    EXPECT_EQ(members(segment.colorIndex(0)), std::vector<int>{0});
    EXPECT_EQ(members(segment.colorIndex(1)), std::vector<int>{32});
    EXPECT_EQ(members(segment.colorIndex(2)), std::vector<int>{255});
}

TEST(Segment, ColourIndexOfWrongLengthIsRefusedAndChangesNothing) {
    Segment segment = segmentWith({1}, {2}, {3});
    const std::string before = segment.serializeColorIndex();
    for (std::size_t length : {0u, 64u, 191u, 193u}) {
        EXPECT_FALSE(segment.loadColorIndex(std::string(length, 'f'))) << length;
        EXPECT_EQ(segment.serializeColorIndex(), before) << length;
    }
    // Bad digits of the right length are read as far as they go.
    std::string text(192, '0');
    text.replace(64, 8, "1zzzzzzz");
    EXPECT_TRUE(segment.loadColorIndex(text));
    EXPECT_TRUE(members(segment.colorIndex(0)).empty());
    EXPECT_EQ(members(segment.colorIndex(1)), std::vector<int>{0});
    EXPECT_TRUE(members(segment.colorIndex(2)).empty());
}

TEST(Segment, ChannelMaskTextAndFlags) {
    Segment segment;
    segment.setChannelUsed(1, false);
    EXPECT_EQ(segment.serializeChannelsUsed(), "5");
    EXPECT_TRUE(segment.channelUsed(0));
    EXPECT_FALSE(segment.channelUsed(1));
    EXPECT_TRUE(segment.channelUsed(2));
    segment.setChannelUsed(1, false);  // already clear
    EXPECT_EQ(segment.serializeChannelsUsed(), "5");
    segment.setChannelUsed(0, false);
    segment.setChannelUsed(2, false);
    EXPECT_EQ(segment.serializeChannelsUsed(), "0");
    segment.setChannelUsed(2, true);
    EXPECT_EQ(segment.serializeChannelsUsed(), "4");
}

TEST(Segment, ChannelMaskReaderKeepsTheLowThreeBitsOfANumber) {
    struct Case {
        char const* text;
        char const* stored;
    };
    for (Case const& c : {Case{"5", "5"}, Case{"15", "7"}, Case{"8", "0"}, Case{"x", "0"},
                          Case{"", "0"}, Case{" 3", "3"}, Case{"2abc", "2"}, Case{"-1", "7"}}) {
        Segment segment;
        EXPECT_TRUE(segment.loadChannelsUsed(c.text)) << c.text;
        EXPECT_EQ(segment.serializeChannelsUsed(), c.stored) << c.text;
    }
    Segment none;
    none.loadChannelsUsed("x");
    for (unsigned int c = 0; c < 3; ++c) EXPECT_FALSE(none.channelUsed(c));
}

#ifndef NDEBUG
TEST(SegmentDeathTest, ChannelNumbersAboveTwoStopTheProcess) {
    Segment segment;
    EXPECT_DEATH(segment.channelUsed(3), "channel >= 0 && channel <= 2");
    EXPECT_DEATH(segment.setChannelUsed(3, true), "channel >= 0 && channel <= 2");
    EXPECT_DEATH(segment.colorIndex(3), "channel >= 0 && channel <= 2");
    EXPECT_DEATH(segment.getDilate(3), "channel < 3");
    EXPECT_DEATH(segment.setDilate(7, 1), "channel < 3");
    // Channel 2 is the last one that passes.
    EXPECT_TRUE(segment.channelUsed(2));
    EXPECT_EQ(segment.getDilate(2), 0);
}
#else
TEST(SegmentDeathTest, ChannelNumbersAboveTwoStopTheProcess) {
    // With NDEBUG the standard assertions compile to nothing: there is no stop to observe,
    // and a call with channel 3 would read past the arrays. The Debug build runs this check.
    GTEST_SKIP() << "assertions are compiled out in this build (NDEBUG)";
}
#endif

}  // namespace
