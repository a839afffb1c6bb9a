// Text: the log and its sink, the debug printers, StringList, split, fromString, Exception.
#include <nuv/core/Exception.h>
#include <nuv/core/Log.h>
#include <nuv/core/StringList.h>
#include <nuv/core/fromString.h>
#include <nuv/core/printers.h>

#include "support/log_capture.h"

#include <QString>
#include <gtest/gtest.h>

#include <ios>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace nuv::core;
using Texts = std::vector<std::string>;

Texts items(StringList const& list) {
    return Texts(list.constBegin(), list.constEnd());
}

Log& log() {
    return Log::singleton();
}

// Pieces gather until a newline; every newline ends one line for the sink.
TEST(Log, PiecesBecomeLinesAtNewlines) {
    nuv::test::LogCapture capture;
    char const* nothing = nullptr;
    log() << "from " << std::string("RGB") << nothing << " to " << 3 << ' ' << 4u;
    EXPECT_TRUE(capture.lines().empty());
    EXPECT_EQ(log().pending(), "from RGB to 3 4");
    log() << '\n'
          << -5 << " " << 4000000000u << " " << -9000000000LL << " " << 18000000000000000000ULL
          << " " << 12L << " " << 13UL << " " << 2.5 << nuv::core::endl;
    log() << "one\ntwo\n\nthree" << nuv::core::endl;
    EXPECT_EQ(capture.lines(),
              (Texts{"from RGB to 3 4", "-5 4000000000 -9000000000 18000000000000000000 12 13 2.5",
                     "one", "two", "", "three"}));
    EXPECT_EQ(log().pending(), "");
}

TEST(Log, Sinks) {
    Texts first, lines;
    log().setSink([&first](std::string const& line) { first.push_back(line); });
    log() << "to first" << nuv::core::endl;
    log().setSink([&lines](std::string const& line) {
        lines.push_back(line);
        if (line == "outer") log() << "inner" << nuv::core::endl;  // a sink may log itself
    });
    log() << "outer" << nuv::core::endl;
    EXPECT_EQ(first, Texts{"to first"});
    EXPECT_EQ(lines, (Texts{"outer", "inner"}));
    log().setSink([](std::string const&) { throw std::runtime_error("sink"); });
    EXPECT_THROW(log() << "lost" << nuv::core::endl, std::runtime_error);
    {
        nuv::test::LogCapture capture;  // the thrown line is gone, nothing else
        log() << "kept" << nuv::core::endl;
        EXPECT_EQ(capture.lines(), Texts{"kept"});
    }
    testing::internal::CaptureStderr();
    log() << "on stderr " << 1 << nuv::core::endl;
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
    EXPECT_EQ(fromString<unsigned int>("FF", std::hex), 255u);
    EXPECT_EQ(fromString<unsigned int>("12x", std::dec), 12u);
    EXPECT_EQ(fromString<unsigned int>("  42", std::dec), 42u);
    EXPECT_EQ(fromString<unsigned int>("17", std::oct), 15u);
    EXPECT_EQ(fromString<int>("-8"), -8);
    EXPECT_EQ(fromString<unsigned int>("4294901760", std::dec), 4294901760u);
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
