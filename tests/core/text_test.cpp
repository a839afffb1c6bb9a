// Text: StringList and its text form, split, fromString and the exception.
#include <nuv/core/Exception.h>
#include <nuv/core/StringList.h>
#include <nuv/core/fromString.h>

#include <gtest/gtest.h>

#include <ios>
#include <string>
#include <vector>

namespace {

using namespace nuv::core;

std::vector<std::string> items(StringList const& list) {
    return std::vector<std::string>(list.constBegin(), list.constEnd());
}

TEST(FromString, ReadsInTheGivenBase) {
    EXPECT_EQ(fromString<unsigned int>("ff", std::hex), 255u);
    EXPECT_EQ(fromString<unsigned int>("FF", std::hex), 255u);
    EXPECT_EQ(fromString<unsigned int>("12x", std::dec), 12u);
    EXPECT_EQ(fromString<unsigned int>("  42", std::dec), 42u);
    EXPECT_EQ(fromString<unsigned int>("17", std::oct), 15u);
    EXPECT_EQ(fromString<int>("-8"), -8);
    EXPECT_EQ(fromString<unsigned int>("4294901760", std::dec), 4294901760u);
}

TEST(FromString, NoValueThrowsBadConversion) {
    for (char const* text : {"zz", "", " ", "x12"}) {
        try {
            fromString<unsigned int>(text, std::dec);
            ADD_FAILURE() << "no exception for \"" << text << "\"";
        } catch (Exception const& e) {
            EXPECT_EQ(e.getMessage(), "Bad conversion");
            EXPECT_STREQ(e.what(), "Bad conversion");
        }
    }
    EXPECT_THROW(fromString<unsigned int>("zz", std::hex), Exception);
    // Out of range for the type is a failure of the stream too.
    EXPECT_THROW(fromString<unsigned int>("99999999999", std::dec), Exception);
}

TEST(Exception, IsAStdExceptionWithItsMessage) {
    Exception const e("something went wrong");
    std::exception const& base = e;
    EXPECT_STREQ(base.what(), "something went wrong");
    EXPECT_EQ(e.getMessage(), "something went wrong");
    Exception const copy(e);
    EXPECT_EQ(copy.getMessage(), "something went wrong");
}

TEST(Split, KeepsEmptyPiecesInPlace) {
    EXPECT_EQ(items(split("a;b;c", ";")), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(items(split("a;;b", ";")), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(items(split(";a;", ";")), (std::vector<std::string>{"", "a", ""}));
    EXPECT_EQ(items(split(";", ";")), (std::vector<std::string>{"", ""}));
    EXPECT_EQ(items(split("abc", ";")), (std::vector<std::string>{"abc"}));
    EXPECT_TRUE(split("", ";").isEmpty());
}

TEST(Split, AnySeparatorCharacterSplits) {
    EXPECT_EQ(items(split("a,b;c d", ",; ")), (std::vector<std::string>{"a", "b", "c", "d"}));
    EXPECT_EQ(items(split("a;b", nullptr)), (std::vector<std::string>{"a;b"}));
    EXPECT_EQ(items(split("a;b", "")), (std::vector<std::string>{"a;b"}));
}

TEST(StringList, TextFormQuotesAndEscapes) {
    EXPECT_EQ(toString(StringList()), "");
    EXPECT_EQ(toString(StringList{""}), "\"\"");
    EXPECT_EQ(toString(StringList{"a", "b"}), "\"a\",\"b\"");
    EXPECT_EQ(toString(StringList{"say \"hi\"", "back\\slash"}),
              "\"say \\\"hi\\\"\",\"back\\\\slash\"");
    StringList const list{"x"};
    EXPECT_EQ(list.toString(), toString(list));
}

TEST(StringList, RoundTrips) {
    std::vector<StringList> const lists = {
        StringList(),
        StringList{""},
        StringList{"", ""},
        StringList{"ball;4294901760;00000001;5", "goal;255;ff;7"},
        StringList{"a,b", "\"quoted\"", "\\", "trailing\\", " spaced ", "new\nline"},
    };
    for (StringList const& list : lists) {
        std::string const text = toString(list);
        EXPECT_EQ(items(stringListFromString(text)), items(list)) << text;
        EXPECT_EQ(items(StringList::fromString(text)), items(list)) << text;
    }
}

TEST(StringList, ReadsHandWrittenLists) {
    EXPECT_EQ(items(StringList::fromString("a,b,c")), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(items(StringList::fromString(" \"a\" , \"b\"")),
              (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(items(StringList::fromString("a,")), (std::vector<std::string>{"a", ""}));
    EXPECT_EQ(items(StringList::fromString("a\\,b")), (std::vector<std::string>{"a,b"}));
    EXPECT_EQ(items(StringList::fromString("\"open")), (std::vector<std::string>{"open"}));
    EXPECT_TRUE(StringList::fromString("").isEmpty());
}

TEST(StringList, CopiesShareLikeAnyList) {
    StringList a{"one", "two"};
    StringList b(a);
    EXPECT_EQ(&*a.constBegin(), &*b.constBegin());
    b.append("three");
    EXPECT_EQ(a.size(), 2);
    EXPECT_EQ(b.size(), 3);
}

}  // namespace
