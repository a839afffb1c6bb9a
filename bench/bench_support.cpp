#include "bench_support.h"

#include <nuv/primitives.h>

#include <opencv2/core.hpp>

#include <cstdio>
#include <map>
#include <vector>

namespace nuv::bench {

int selectedSlot() {
    static const int slot = [] {
        const Ipp32u saved = ippJumpIndexForMergedLibs;
        ippInit();
        const int chosen = static_cast<int>(ippJumpIndexForMergedLibs);
        ippJumpIndexForMergedLibs = saved;
        return chosen;
    }();
    return slot;
}

std::vector<int> comparedSlots() {
    if (selectedSlot() == 0) return {0};
    return {0, selectedSlot()};
}

namespace {

// Keeps the time of every run beside the ordinary console output.
class CollectingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                _times.emplace_back(run.benchmark_name(), run.GetAdjustedRealTime());
        ConsoleReporter::ReportRuns(runs);
    }
    std::vector<std::pair<std::string, double>> const& times() const { return _times; }

private:
    std::vector<std::pair<std::string, double>> _times;
};

}  // namespace

int runAndSummarise(int argc, char** argv, std::string const& reference) {
    cv::setNumThreads(1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    // group -> contender -> time; groups keep their first-seen order.
    std::vector<std::string> order;
    std::map<std::string, std::map<std::string, double>> groups;
    for (auto const& [name, time] : reporter.times()) {
        std::string base = name.substr(0, name.find("/real_time"));
        const auto cut = base.rfind('/');
        if (cut == std::string::npos) continue;
        const std::string group = base.substr(0, cut), contender = base.substr(cut + 1);
        if (!groups.count(group)) order.push_back(group);
        groups[group][contender] = time;
    }
    std::printf("\nTime relative to %s (below 1 is faster), selected slot %d:\n", reference.c_str(),
                selectedSlot());
    for (std::string const& group : order) {
        auto const& contenders = groups[group];
        auto const ref = contenders.find(reference);
        if (ref == contenders.end() || ref->second <= 0) continue;
        std::printf("  %-40s", group.c_str());
        for (auto const& [contender, time] : contenders)
            if (contender != reference)
                std::printf("  %s %.2f", contender.c_str(), time / ref->second);
        std::printf("\n");
    }
    return 0;
}

}  // namespace nuv::bench
