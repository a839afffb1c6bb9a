// What every benchmark program shares: single-threaded OpenCV, the slot that ippInit
// selects, and a summary of time ratios against a reference contender.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace nuv::bench {

struct FrameSize {
    int width;
    int height;
    char const* name;
};

inline constexpr FrameSize frame640{640, 480, "640x480"};
inline constexpr FrameSize frame1080{1920, 1080, "1920x1080"};
inline constexpr FrameSize frame4096{4096, 4096, "4096x4096"};

// The slot that ippInit chooses on this processor (it runs once; the index is then put back
// to 0 so that each benchmark sets the slot it wants).
int selectedSlot();

// Slot 0 and the selected slot, once each.
std::vector<int> comparedSlots();

// Runs the registered benchmarks and prints, per group, each contender's time relative to
// the reference contender. A benchmark is named "<group>/<contender>", where the group holds
// the operation and size ("ippiCopy_8u_C3R/640x480") and the contender says who ran it
// ("slot 6", "cv::Mat::copyTo").
int runAndSummarise(int argc, char** argv, std::string const& reference);

}  // namespace nuv::bench

#define NUV_BENCHMARK_MAIN(reference)                                  \
    int main(int argc, char** argv) {                                  \
        return nuv::bench::runAndSummarise(argc, argv, reference);     \
    }
