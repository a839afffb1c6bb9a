// The front end timed the way a host calls it: each call's result is assigned over the
// previous one, as in a frame loop, so that what is measured is the steady state of a
// program that has run for a while. Every operation runs at slot 0 and at the slot that
// ippInit selects, beside the OpenCV code that does the same job into reused destinations.
// Each row records the median and the 99th percentile of single calls, timed one by one,
// and the minor page faults per call over the timed calls.
#pragma once

#include "bench_support.h"

#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>

#include <opencv2/core.hpp>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace nuv::bench::frontend {

using nuv::core::image::Image;

// The bundled frame at one size in every layout the cases read, as OpenCV matrices and as
// images over the same pixels (the host's buffers; the library never frees them).
struct Inputs {
    explicit Inputs(FrameSize size);
    FrameSize size;
    ::cv::Mat bgr, rgb, bgra, gray, hsv, ycc, hls;
    ::cv::Mat mask;   // the coloured objects of the frame, 255 on 0
    ::cv::Mat edges;  // Canny edges of the gray frame
    Image bgrImage, rgbImage, bgraImage, grayImage, hsvImage, yccImage, hlsImage;
    Image maskImage, edgesImage, labelImage;
};

// One timed call, with whatever state it keeps between calls (its result, reused buffers).
using Call = std::function<void()>;
// Builds the call for the inputs of one size; runs untimed.
using Setup = std::function<Call(std::shared_ptr<Inputs const> const&)>;

struct Case {
    std::string operation;
    Setup library;  // run at each compared slot
    Setup opencv;
};

// Library calls that return an image, assigned over the previous result. A null result
// means the library refused the input, so that the row would time nothing: it is said once.
template <class Produce>
Call steady(Produce produce) {
    auto result = std::make_shared<Image>();
    auto said = std::make_shared<bool>(false);
    return [result, said, produce] {
        *result = produce();
        if (result->isNull() && !*said) {
            *said = true;
            std::fprintf(stderr, "the library refused the input: a null image\n");
        }
    };
}

// OpenCV calls writing into one destination kept from call to call.
template <class Write>
Setup intoReused(Write write) {
    return [write](std::shared_ptr<Inputs const> const& in) -> Call {
        auto dst = std::make_shared<::cv::Mat>();
        return [in, dst, write] { write(*in, *dst); };
    };
}

// One degree, the angle step of the Hough cases.
inline constexpr float degree = 3.14159265f / 180;
// The votes a Hough line needs: the long edges of the frame's objects pass it at every size.
inline int houghThreshold(Inputs const& in) {
    return in.size.height / 16;
}
// Per-channel bounds of a range mask.
nuv::core::Vector<int> channelBounds(int first, int second, int third);

// The case lists, one per family of operations.
std::vector<Case> imageToolCases();
std::vector<Case> conversionCases();
std::vector<Case> thresholdCases();
std::vector<Case> filterCases();
std::vector<Case> analysisCases();
std::vector<Case> pipelineCases();

// How long one row runs: calls are timed until both the budget and the minimum count are
// reached, or the cap passes, or the sample store is full.
struct Budget {
    double seconds = 0.2;
    int minimumCalls = 100;
    double capSeconds = 2.0;
    int maximumCalls = 4000;
    // Times calls by the thread's processor time rather than elapsed time: on a machine
    // shared with other work, what the call itself costs, page faults included.
    bool threadTime = false;
};

struct Row {
    std::string operation;
    std::string size;
    std::string contender;  // "slot <k>" or "opencv"
    double median = 0;      // seconds per call
    double p99 = 0;
    double faultsPerCall = 0;
    int calls = 0;
};

// Registers each case at each size, with Google Benchmark, collecting a Row per run.
void registerCases(std::vector<Case> const& cases, std::vector<FrameSize> const& sizes,
                   Budget const& budget);
std::vector<Row> const& collectedRows();

// The compact table of all rows, with each library row's ratio to OpenCV and its goals.
void printSummary(std::vector<Row> const& rows, int selectedSlot, bool threadTime);

}  // namespace nuv::bench::frontend
