// The allocation-failure sweep: a call is run with its 1st, 2nd, ... allocation failing until
// it runs with none failing, and each run is held to the documented outcome.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>
#include <nuv/core/image/SegmentList.h>
#include <nuv/cv/SegmentList.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace nuv::test::faults {

// Whatever a call gives back, in fields that cost no allocation to fill.
struct Result {
    nuv::core::image::Image image, other;
    nuv::core::Vector<int> low, high;
    nuv::core::Vector<unsigned char> bytes;
    nuv::core::Vector<nuv::core::Point> points;
    int number = 0;
    nuv::core::Point point;
    float score = 0;
    std::string text;
    nuv::cv::SegmentList classes;
    nuv::core::image::SegmentList records;
};

// A run: its result, the lines it logged.
struct Outcome {
    Result result;
    std::vector<std::string> log;
};

// Everything of a run as text; `withPixels` false leaves the pixel bytes out.
std::string describe(Outcome const& run, bool withPixels = true);

struct Case {
    using Call = std::function<void(Result&)>;
    using Check = std::function<std::string(Outcome const& failed, Outcome const& reference)>;
    Case(std::string name, Call call, Check onHookFailure = {}, std::function<void()> recover = {},
         bool countsBlocks = true)
        : name(std::move(name)),
          call(std::move(call)),
          onHookFailure(std::move(onHookFailure)),
          recover(std::move(recover)),
          countsBlocks(countsBlocks) {}

    std::string name;
    std::function<void(Result&)> call;
    // Holds a run whose hook allocation failed to its documented outcome against the
    // reference; an empty answer means it does. Unset: the result's images have the
    // reference's shape, lines and log, their pixels unwritten (a primitive that found no
    // buffer refused, and its status was dropped).
    std::function<std::string(Outcome const& failed, Outcome const& reference)> onHookFailure;
    // Outcome after each failure, before the call must give the reference again.
    std::function<void()> recover;
    // False where a failure inside a dependency makes it keep blocks of its own that this
    // library cannot free (the sanitizer build still reports any that become unreachable).
    bool countsBlocks;
};

struct Report {
    int hookPoints = 0, heapPoints = 0;
    std::vector<std::string> problems;
};

Report sweep(Case const& c);

}  // namespace nuv::test::faults
