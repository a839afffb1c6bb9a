// What every benchmark program shares: the frame sizes, random frames, slot switching, the
// registration of an operation at slot 0 and at the slot that ippInit selects beside the
// OpenCV calls that do the same job, and the summary of time ratios printed after the run.
// Everything runs on one thread.
#pragma once

#include <nuv/primitives.h>

#include <benchmark/benchmark.h>
#include <nuv/cv/SegmentList.h>

#include <opencv2/core.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace nuv::bench {

struct FrameSize {
    int width;
    int height;
    char const* name;
};

inline constexpr FrameSize frame640{640, 480, "640x480"};
inline constexpr FrameSize frame720{1280, 720, "1280x720"};
inline constexpr FrameSize frame1080{1920, 1080, "1920x1080"};
inline constexpr FrameSize frame2160{3840, 2160, "3840x2160"};
inline constexpr FrameSize frame4096{4096, 4096, "4096x4096"};

// The slot that ippInit chooses on this processor (it runs once; the index is then put back
// to 0 so that each benchmark sets the slot it wants).
int selectedSlot();

// Slot 0 and the selected slot, once each.
std::vector<int> comparedSlots();

// Sets the dispatch index for its lifetime and restores the previous one.
class SlotScope {
public:
    explicit SlotScope(int slot);
    ~SlotScope();
    SlotScope(SlotScope const&) = delete;
    SlotScope& operator=(SlotScope const&) = delete;

private:
    Ipp32u _saved;
};

using Body = std::function<void(benchmark::State&)>;

// Registers "<group>/slot <k>" for each compared slot, running `body` with the index at k.
void registerAtSlots(std::string const& group, Body const& body);
// Registers "<group>/<name>", a contender run as it is.
void registerContender(std::string const& group, std::string const& name, Body const& body);

// A real photograph, resized to the frame and of the type (CV_8UC1 or CV_8UC3): the bundled
// data/astronaut.jpg (NASA, public domain), or scikit-image's coffee cup (CC0) from the Debian
// package python3-skimage when that is installed. Rank filters, labelling and Hough behave on
// the edges and flat areas of a photograph as they never do on random bytes.
::cv::Mat photograph(FrameSize size, int type);

// Random packed frames for one primitive call: one or two sources of srcType, a destination
// of dstType (zeroed), turned for a transposition. `bytes` is what one call processes.
struct Shape {
    int srcType;
    int dstType;
    int sources = 1;
    bool turned = false;
    bool countDestination = false;  // bytes count the destination's as well as one source's
    bool photograph = false;        // the source is photograph(), not random bytes
};
struct Frames {
    Frames(FrameSize size, Shape shape);
    int srcStep() const { return static_cast<int>(src.step); }
    int src2Step() const { return static_cast<int>(src2.step); }
    int dstStep() const { return static_cast<int>(dst.step); }
    ::cv::Mat src, src2, dst;
    IppiSize roi;
    std::int64_t bytes;
};

using PrimitiveCall = std::function<IppStatus(Frames&)>;
using OtherCall = std::function<void(Frames&)>;

// One primitive on frames of `size` at the compared slots (a refused call stops the run with
// an error), beside each named contender on frames of the same shape.
void registerPrimitive(std::string const& group, FrameSize size, Shape shape,
                       PrimitiveCall const& primitive,
                       std::vector<std::pair<std::string, OtherCall>> const& contenders);

// The bundled camera frame (BGR, 640x480), read once; empty with a message when it is missing.
::cv::Mat const& bundledFrame();
// The bundled frame scaled to `size` (bilinear); the frame itself at its own size.
::cv::Mat bundledFrameOfSize(FrameSize const& size);
// The classes trained on the bundled frame (channels are the frame's bytes B, G, R); empty
// with a message when the file is missing or unreadable.
nuv::cv::SegmentList bundledClasses();

// What an OpenCV user writes for colour segmentation: per class a range mask between the
// lowest and highest accepted value of each channel, its 4-connected components with
// statistics, and the largest component kept. The masks and label images are reused.
class LargestRegions {
public:
    explicit LargestRegions(nuv::cv::SegmentList const& classes);
    void run(::cv::Mat const& frame);
    int classCount() const { return static_cast<int>(_lower.size()); }
    int area(int k) const { return _area[k]; }
    ::cv::Point2d centre(int k) const { return _centre[k]; }

private:
    std::vector<::cv::Scalar> _lower, _upper;
    std::vector<int> _area;
    std::vector<::cv::Point2d> _centre;
    ::cv::Mat _mask, _labels, _stats, _centroids;
};

// Runs the registered benchmarks and prints, per group, each contender's time relative to
// the reference contender. A benchmark is named "<group>/<contender>", where the group holds
// the operation and size ("ippiCopy_8u_C3R/640x480") and the contender says who ran it
// ("slot 6", "::cv::Mat::copyTo").
int runAndSummarise(int argc, char** argv, std::string const& reference);

}  // namespace nuv::bench

#define NUV_BENCHMARK_MAIN(reference)                              \
    int main(int argc, char** argv) {                              \
        return nuv::bench::runAndSummarise(argc, argv, reference); \
    }
