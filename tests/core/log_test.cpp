// The process-wide log and its sink.
#include <nuv/core/Log.h>

#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using nuv::core::Log;

TEST(Log, PiecesBecomeOneLineAtTheNewline) {
    nuv::test::LogCapture capture;
    Log::singleton() << "conversion from " << std::string("RGB") << " to " << 3 << ' ' << 4u
                     << nuv::core::endl;
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], "conversion from RGB to 3 4");
}

TEST(Log, NothingReachesTheSinkBeforeTheNewline) {
    nuv::test::LogCapture capture;
    Log::singleton() << "half";
    EXPECT_TRUE(capture.lines().empty());
    EXPECT_EQ(Log::singleton().pending(), "half");
    Log::singleton() << " done" << '\n';
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], "half done");
    EXPECT_EQ(Log::singleton().pending(), "");
}

TEST(Log, NewlinesInsideTextSplitLines) {
    nuv::test::LogCapture capture;
    Log::singleton() << "one\ntwo\n\nthree" << nuv::core::endl;
    EXPECT_EQ(capture.lines(), (std::vector<std::string>{"one", "two", "", "three"}));
}

TEST(Log, Numbers) {
    nuv::test::LogCapture capture;
    Log::singleton() << -5 << " " << 4000000000u << " " << -9000000000LL << " "
                     << 18000000000000000000ULL << " " << 12L << " " << 13UL << " " << 2.5
                     << nuv::core::endl;
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], "-5 4000000000 -9000000000 18000000000000000000 12 13 2.5");
}

TEST(Log, NullTextIsNothing) {
    nuv::test::LogCapture capture;
    char const* nothing = nullptr;
    Log::singleton() << "a" << nothing << "b" << nuv::core::endl;
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], "ab");
}

TEST(Log, ReplacingTheSinkRedirects) {
    std::vector<std::string> first, second;
    Log::singleton().setSink([&first](std::string const& line) { first.push_back(line); });
    Log::singleton() << "to first" << nuv::core::endl;
    Log::singleton().setSink([&second](std::string const& line) { second.push_back(line); });
    Log::singleton() << "to second" << nuv::core::endl;
    Log::singleton().setSink({});
    EXPECT_EQ(first, std::vector<std::string>{"to first"});
    EXPECT_EQ(second, std::vector<std::string>{"to second"});
}

TEST(Log, DefaultSinkWritesToStandardError) {
    Log::singleton().setSink({});
    testing::internal::CaptureStderr();
    Log::singleton() << "on stderr " << 1 << nuv::core::endl;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "on stderr 1\n");
}

TEST(Log, ASinkThatThrowsLosesOnlyItsLine) {
    Log::singleton().setSink([](std::string const&) { throw std::runtime_error("sink"); });
    EXPECT_THROW(Log::singleton() << "lost" << nuv::core::endl, std::runtime_error);
    nuv::test::LogCapture capture;
    Log::singleton() << "kept" << nuv::core::endl;
    EXPECT_EQ(capture.lines(), std::vector<std::string>{"kept"});
}

TEST(Log, ASinkMayLogItself) {
    std::vector<std::string> lines;
    Log::singleton().setSink([&lines](std::string const& line) {
        lines.push_back(line);
        if (line == "outer") Log::singleton() << "inner" << nuv::core::endl;
    });
    Log::singleton() << "outer" << nuv::core::endl;
    Log::singleton().setSink({});
    EXPECT_EQ(lines, (std::vector<std::string>{"outer", "inner"}));
}

}  // namespace
