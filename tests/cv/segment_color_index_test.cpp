// SegmentColorIndex: membership, the bit layout of the text form, the lenient reader.
#include <nuv/cv/SegmentColorIndex.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::cv::SegmentColorIndex;

const std::string kEmptyText(64, '0');

SegmentColorIndex indexOf(std::initializer_list<int> values) {
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

SegmentColorIndex randomIndex(std::mt19937& rng) {
    SegmentColorIndex index;
    std::bernoulli_distribution member(0.3);
    for (int v = 0; v < 256; ++v) index.set(static_cast<unsigned char>(v), member(rng));
    return index;
}

TEST(SegmentColorIndex, NewIndexIsEmptyAndWritesSixtyFourZeros) {
    SegmentColorIndex index;
    EXPECT_TRUE(members(index).empty());
    EXPECT_EQ(index.serialize(), kEmptyText);

    SegmentColorIndex loaded = indexOf({3, 200});
    ASSERT_TRUE(loaded.load(kEmptyText));
    EXPECT_TRUE(members(loaded).empty());
}

TEST(SegmentColorIndex, SetAndClearTouchOnlyTheirOwnValue) {
    for (int v = 0; v < 256; ++v) {
        SegmentColorIndex index;
        index.set(static_cast<unsigned char>(v), true);
        ASSERT_EQ(members(index), std::vector<int>{v});
        index.set(static_cast<unsigned char>(v), false);
        ASSERT_TRUE(members(index).empty()) << v;
    }

    SegmentColorIndex index = indexOf({0, 31, 32, 255});
    index.set(100, false);  // not a member: nothing changes
    EXPECT_EQ(members(index), (std::vector<int>{0, 31, 32, 255}));
    index.set(31, true);  // already a member
    EXPECT_EQ(members(index), (std::vector<int>{0, 31, 32, 255}));
    index.set(32, false);
    EXPECT_EQ(members(index), (std::vector<int>{0, 31, 255}));
}

TEST(SegmentColorIndex, TextReadsWordsFromLowValuesWithHighNibbleFirst) {
    EXPECT_EQ(indexOf({0, 1, 31, 32, 255}).serialize(),
              "80000003"
              "00000001"
              "00000000"
              "00000000"
              "00000000"
              "00000000"
              "00000000"
              "80000000");

    // Every single value lands in exactly one digit: the group of its word, counted from the
    // group's end, as the bit of that nibble.
    const char* const digits = "0123456789abcdef";
    for (int v = 0; v < 256; ++v) {
        std::string expected = kEmptyText;
        expected[8 * (v >> 5) + 7 - ((v & 31) >> 2)] = digits[1 << (v & 3)];
        ASSERT_EQ(indexOf({v}).serialize(), expected) << v;
    }
}

TEST(SegmentColorIndex, LoadAndSerializeRoundTrip) {
    std::mt19937 rng(11);
    for (int round = 0; round < 50; ++round) {
        SegmentColorIndex original = randomIndex(rng);
        const std::string text = original.serialize();
        ASSERT_EQ(text.size(), 64u);
        ASSERT_EQ(text.find_first_not_of("0123456789abcdef"), std::string::npos);

        SegmentColorIndex loaded;
        ASSERT_TRUE(loaded.load(text));
        EXPECT_EQ(members(loaded), members(original));
        EXPECT_EQ(loaded.serialize(), text);
    }

    const std::string all(64, 'f');
    SegmentColorIndex full;
    ASSERT_TRUE(full.load(all));
    EXPECT_EQ(members(full).size(), 256u);
    EXPECT_EQ(full.serialize(), all);
}

TEST(SegmentColorIndex, UpperCaseDigitsAreReadAndWrittenBackInLowerCase) {
    const std::string upper = "ABCDEF01" + std::string(48, '0') + "00C0FFEE";
    SegmentColorIndex index;
    ASSERT_TRUE(index.load(upper));
    EXPECT_EQ(index.serialize(), "abcdef01" + std::string(48, '0') + "00c0ffee");
}

TEST(SegmentColorIndex, TextOfWrongLengthIsRefusedAndChangesNothing) {
    SegmentColorIndex index = indexOf({7, 77, 177});
    const std::string before = index.serialize();
    for (std::size_t length : {0u, 8u, 63u, 65u, 128u}) {
        EXPECT_FALSE(index.load(std::string(length, 'f'))) << length;
        EXPECT_EQ(index.serialize(), before) << length;
    }
}

TEST(SegmentColorIndex, BadDigitsInAGroupKeepTheDigitsBeforeThem) {
    // Group 1 stops at the first bad digit, group 3 has none; the groups after them are
    // still read, and the load counts as a success.
    const std::string text =
        "00000001"
        "12zz0000"
        "00000010"
        "zzzzzzzz"
        "0000ffff"
        "  0000ab"
        "0x000012"
        "80000000";
    SegmentColorIndex index = indexOf({40, 100});
    ASSERT_TRUE(index.load(text));
    EXPECT_EQ(index.serialize(),
              "00000001"
              "00000012"
              "00000010"
              "00000000"
              "0000ffff"
              "000000ab"
              "00000012"
              "80000000");
    EXPECT_FALSE(index.at(100));  // the old word 3 is overwritten by the bad group's 0
}

TEST(SegmentColorIndex, HexReaderFollowsFormattedExtraction) {
    SegmentColorIndex index;
    EXPECT_EQ(index.hexToUint32("0"), 0u);
    EXPECT_EQ(index.hexToUint32("ffffffff"), 0xffffffffu);
    EXPECT_EQ(index.hexToUint32("DeadBeef"), 0xdeadbeefu);
    EXPECT_EQ(index.hexToUint32("   1f"), 0x1fu);
    EXPECT_EQ(index.hexToUint32("0x1F"), 0x1fu);
    EXPECT_EQ(index.hexToUint32("+ff"), 0xffu);
    EXPECT_EQ(index.hexToUint32("-0000001"), 0xffffffffu);
    EXPECT_EQ(index.hexToUint32("12zz"), 0x12u);
    EXPECT_EQ(index.hexToUint32("zz"), 0u);
    EXPECT_EQ(index.hexToUint32(""), 0u);
    EXPECT_EQ(index.hexToUint32("0x"), 0u);
}

TEST(SegmentColorIndex, HexWriterPadsToEightLowerCaseDigits) {
    SegmentColorIndex index;
    EXPECT_EQ(index.uint32toHex(0), "00000000");
    EXPECT_EQ(index.uint32toHex(0xabcu), "00000abc");
    EXPECT_EQ(index.uint32toHex(0x80000000u), "80000000");
    EXPECT_EQ(index.uint32toHex(0xffffffffu), "ffffffff");
    EXPECT_EQ(index.uint32toHex(0x0fedcba9u), "0fedcba9");
    std::mt19937 rng(5);
    for (int i = 0; i < 200; ++i) {
        const unsigned int value = rng() >> (rng() % 32);
        ASSERT_EQ(index.hexToUint32(index.uint32toHex(value)), value);
    }
}

TEST(SegmentColorIndex, MergeIsSetUnion) {
    SegmentColorIndex a = indexOf({0, 31, 100});
    a.merge(indexOf({31, 32, 255}));
    EXPECT_EQ(members(a), (std::vector<int>{0, 31, 32, 100, 255}));

    const std::string before = a.serialize();
    a.merge(a);
    EXPECT_EQ(a.serialize(), before);
    a.merge(SegmentColorIndex());
    EXPECT_EQ(a.serialize(), before);

    SegmentColorIndex empty;
    empty.merge(a);
    EXPECT_EQ(empty.serialize(), before);
}

TEST(SegmentColorIndex, CopiesAreIndependent) {
    SegmentColorIndex original = indexOf({1, 128, 254});

    SegmentColorIndex copied(original);
    SegmentColorIndex assigned = indexOf({9});
    assigned = original;
    SegmentColorIndex cloned = indexOf({200});
    cloned.clone(original);

    original.set(1, false);
    original.set(2, true);
    for (SegmentColorIndex const* copy : {&copied, &assigned, &cloned})
        EXPECT_EQ(members(*copy), (std::vector<int>{1, 128, 254}));

    SegmentColorIndex& self = copied;
    copied = self;
    EXPECT_EQ(members(copied), (std::vector<int>{1, 128, 254}));
}

}  // namespace
