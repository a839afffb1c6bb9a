#include "frontend/harness.h"

#include <nuv/cv/labelmarkers.h>
#include <nuv/opencv.h>

#include <opencv2/imgproc.hpp>

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace nuv::bench::frontend {

namespace {

using nuv::opencv::toImage;
namespace image = nuv::core::image;

// Saturated objects on the gray-green background; the checkerboard's black and white drop out.
const ::cv::Scalar colouredLow(0, 110, 70), colouredHigh(255, 255, 255);

}  // namespace

Inputs::Inputs(FrameSize frameSize) : size(frameSize), bgr(bundledFrameOfSize(frameSize)) {
    ::cv::cvtColor(bgr, rgb, ::cv::COLOR_BGR2RGB);
    ::cv::cvtColor(bgr, bgra, ::cv::COLOR_BGR2BGRA);
    ::cv::cvtColor(bgr, gray, ::cv::COLOR_BGR2GRAY);
    ::cv::cvtColor(bgr, hsv, ::cv::COLOR_BGR2HSV_FULL);
    ::cv::cvtColor(bgr, ycc, ::cv::COLOR_BGR2YCrCb);
    ::cv::cvtColor(bgr, hls, ::cv::COLOR_BGR2HLS_FULL);
    ::cv::inRange(hsv, colouredLow, colouredHigh, mask);
    ::cv::Canny(gray, edges, 40, 120, 3);
    bgrImage = toImage(bgr, image::BGR);
    rgbImage = toImage(rgb, image::RGB);
    bgraImage = toImage(bgra, image::BGRA);
    grayImage = toImage(gray, image::Gray);
    hsvImage = toImage(hsv, image::HSV);
    yccImage = toImage(ycc, image::YCbCr);
    hlsImage = toImage(hls, image::HLS);
    maskImage = toImage(mask, image::Gray);
    edgesImage = toImage(edges, image::Gray);
    int markers = 0;
    labelImage = nuv::cv::labelmarkers(maskImage, &markers);
}

nuv::core::Vector<int> channelBounds(int first, int second, int third) {
    nuv::core::Vector<int> bounds;
    bounds.append(first);
    bounds.append(second);
    bounds.append(third);
    return bounds;
}

namespace {

double secondsOn(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

long minorFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// A few untimed calls first, so that every buffer the call keeps has reached its size. The
// budget is counted in elapsed time whatever clock times the calls.
Row timeCalls(Call const& call, Budget const& budget) {
    for (int i = 0; i < 2; ++i) call();
    const clockid_t clock = budget.threadTime ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC;
    std::vector<double> samples(static_cast<size_t>(budget.maximumCalls));  // touched here
    int n = 0;
    const long faultsBefore = minorFaults();
    const double start = secondsOn(CLOCK_MONOTONIC);
    while (n < budget.maximumCalls) {
        const double before = secondsOn(clock);
        call();
        samples[static_cast<size_t>(n++)] = secondsOn(clock) - before;
        const double elapsed = secondsOn(CLOCK_MONOTONIC) - start;
        if ((elapsed >= budget.seconds && n >= budget.minimumCalls) || elapsed >= budget.capSeconds)
            break;
    }
    const long faults = minorFaults() - faultsBefore;
    std::sort(samples.begin(), samples.begin() + n);
    Row row;
    row.calls = n;
    row.median = samples[static_cast<size_t>(n / 2)];
    const int p99 = std::max(0, static_cast<int>(std::ceil(0.99 * n)) - 1);
    row.p99 = samples[static_cast<size_t>(p99)];
    row.faultsPerCall = static_cast<double>(faults) / n;
    return row;
}

// The inputs of the size in use; the previous size's are released first, as the 4K frames
// in all layouts are large.
std::shared_ptr<Inputs const> inputsOf(FrameSize size) {
    static std::shared_ptr<Inputs const> current;
    if (!current || current->size.width != size.width || current->size.height != size.height) {
        current.reset();
        current = std::make_shared<Inputs const>(size);
    }
    return current;
}

std::vector<Row>& rows() {
    static std::vector<Row> all;
    return all;
}

void registerRow(Case const& c, FrameSize size, int slot, Budget const& budget) {
    const bool library = slot >= 0;
    const std::string contender = library ? "slot " + std::to_string(slot) : "opencv";
    const std::string name = c.operation + "/" + size.name + "/" + contender;
    const Setup setup = library ? c.library : c.opencv;
    benchmark::RegisterBenchmark(
        name.c_str(),
        [=](benchmark::State& state) {
            const std::shared_ptr<Inputs const> inputs = inputsOf(size);
            if (inputs->bgr.empty()) {
                state.SkipWithError("no frame");
                return;
            }
            SlotScope scope(library ? slot : static_cast<int>(ippJumpIndexForMergedLibs));
            const Call call = setup(inputs);
            for (auto _ : state) {
                Row row = timeCalls(call, budget);
                state.SetIterationTime(row.median);
                state.counters["p99_us"] = row.p99 * 1e6;
                state.counters["faults"] = row.faultsPerCall;
                state.counters["calls"] = row.calls;
                row.operation = c.operation;
                row.size = size.name;
                row.contender = contender;
                rows().push_back(row);
            }
        })
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace

void registerCases(std::vector<Case> const& cases, std::vector<FrameSize> const& sizes,
                   Budget const& budget) {
    for (FrameSize const& size : sizes)
        for (Case const& c : cases) {
            registerRow(c, size, -1, budget);
            for (int slot : comparedSlots()) registerRow(c, size, slot, budget);
        }
}

std::vector<Row> const& collectedRows() {
    return rows();
}

namespace {

// The goals a library row misses: its time beside OpenCV's (1.0x at the selected slot, 2.0x
// at slot 0), the 99th percentile within 1.5x the median at 1920x1080, no page fault.
std::string missedGoals(Row const& row, double ratio, int selectedSlot) {
    std::string missed;
    const double limit = row.contender == "slot " + std::to_string(selectedSlot) ? 1.0 : 2.0;
    if (ratio > limit) missed += " time";
    if (row.size == std::string(frame1080.name) && row.p99 > 1.5 * row.median) missed += " p99";
    if (row.faultsPerCall > 0) missed += " faults";
    return missed;
}

}  // namespace

void printSummary(std::vector<Row> const& all, int selectedSlot, bool threadTime) {
    std::map<std::string, Row const*> opencv;
    for (Row const& row : all)
        if (row.contender == "opencv") opencv[row.operation + "/" + row.size] = &row;
    std::map<std::string, int> missedCount;
    std::printf("\nFront end in steady state beside OpenCV (one thread), selected slot %d, %s\n",
                selectedSlot, threadTime ? "thread processor time" : "elapsed time");
    std::printf("%-34s %-10s %-7s %6s %11s %11s %11s  %s\n", "operation", "size", "slot", "ratio",
                "median us", "p99 us", "faults/call", "over goal");
    for (Row const& row : all) {
        auto const reference = opencv.find(row.operation + "/" + row.size);
        const bool library = row.contender != "opencv";
        const double ratio = library && reference != opencv.end() && reference->second->median > 0
                                 ? row.median / reference->second->median
                                 : 0;
        const std::string missed = library ? missedGoals(row, ratio, selectedSlot) : "";
        for (char const* goal : {"time", "p99", "faults"})
            if (missed.find(goal) != std::string::npos) ++missedCount[goal];
        const std::string slot = library ? row.contender.substr(5) : "opencv";
        std::printf("%-34s %-10s %-7s %6s %11.1f %11.1f %11.2f %s\n", row.operation.c_str(),
                    row.size.c_str(), slot.c_str(),
                    ratio > 0 ? ::cv::format("%.2f", ratio).c_str() : "-", row.median * 1e6,
                    row.p99 * 1e6, row.faultsPerCall, missed.c_str());
    }
    std::printf("Library rows over a goal: time %d, p99 (1920x1080) %d, faults %d\n",
                missedCount["time"], missedCount["p99"], missedCount["faults"]);
}

}  // namespace nuv::bench::frontend
