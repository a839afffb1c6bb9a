// Every front-end operation timed the way a host calls it, at four frame sizes, at slot 0 and
// at the selected slot, beside OpenCV; ends with a table of ratios, medians, 99th percentiles
// and page faults per call. Runs on one thread.
//
//   nuv_bench_frontend [--sizes=640x480,1920x1080] [--ops=REGEX] [--budget=SECONDS]
//                      [--clock=thread] [--benchmark_* options]
//
// --sizes keeps the named sizes (of 640x480, 1280x720, 1920x1080, 3840x2160); --ops keeps the
// operations whose name the regular expression finds; --budget is the time per row (0.2 s,
// with at least 100 calls, 20 at 3840x2160, unless a row passes 2 s); --clock=thread times
// each call by the thread's processor time instead of elapsed time, for a busy machine.
#include "frontend/harness.h"

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

namespace {

using namespace nuv::bench;
using namespace nuv::bench::frontend;

struct Options {
    std::vector<FrameSize> sizes{frame640, frame720, frame1080, frame2160};
    std::string operations = ".";
    double budget = 0.2;
    bool threadTime = false;
};

bool startsWith(std::string const& text, char const* prefix) {
    return text.rfind(prefix, 0) == 0;
}

// Takes this program's options out of argv, leaving Google Benchmark's.
bool parse(int& argc, char** argv, Options& options) {
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (startsWith(arg, "--sizes=")) {
            const std::string wanted = "," + arg.substr(8) + ",";
            std::vector<FrameSize> sizes;
            for (FrameSize const& size : options.sizes)
                if (wanted.find("," + std::string(size.name) + ",") != std::string::npos)
                    sizes.push_back(size);
            if (sizes.empty()) return false;
            options.sizes = sizes;
        } else if (startsWith(arg, "--ops=")) {
            options.operations = arg.substr(6);
        } else if (arg == "--clock=thread") {
            options.threadTime = true;
        } else if (startsWith(arg, "--budget=")) {
            options.budget = std::atof(arg.c_str() + 9);
            if (options.budget <= 0) return false;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    return true;
}

std::vector<Case> selectedCases(std::string const& pattern) {
    std::vector<Case> all;
    for (auto family : {imageToolCases, conversionCases, thresholdCases, filterCases, analysisCases,
                        pipelineCases})
        for (Case& c : family()) all.push_back(std::move(c));
    const std::regex wanted(pattern);
    std::vector<Case> kept;
    for (Case& c : all)
        if (std::regex_search(c.operation, wanted)) kept.push_back(std::move(c));
    return kept;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr,
                     "usage: %s [--sizes=640x480,1280x720,1920x1080,3840x2160] [--ops=REGEX] "
                     "[--budget=SECONDS] [--clock=thread] [--benchmark_* options]\n",
                     argv[0]);
        return 2;
    }
    ::cv::setNumThreads(1);
    const std::vector<Case> cases = selectedCases(options.operations);
    for (FrameSize const& size : options.sizes) {
        Budget budget;
        budget.seconds = options.budget;
        budget.threadTime = options.threadTime;
        if (size.width > 2000) budget.minimumCalls = 20;
        registerCases(cases, {size}, budget);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    printSummary(collectedRows(), selectedSlot(), options.threadTime);
    return 0;
}
