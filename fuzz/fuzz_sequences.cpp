// Sequences of calls on a few objects of each stateful class, read from the fuzzer's bytes:
// segmenters whose classes are set, changed and cleared between frames of changing size,
// Hough instances sharing their buffers through setMaxLineCount, freeBuffer and transform
// (a count kept past freeBuffer included), a matcher whose image and template change, a line
// detector's settings, and labelling on regions that grow and shrink. Nothing may write out
// of bounds, and a Hough result never has more lines than its instance asked for.
#include "fuzz_images.h"

#include <opencv2/core.hpp>

#include <cstdio>
#include <cstdlib>

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::fuzz::Input;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    nuv::cv::init();
    nuv::core::Log::singleton().setSink([](std::string const&) {});
    cv::setNumThreads(0);
    return 0;
}

namespace {

void require(bool holds, int line) {
    if (holds) return;
    std::fprintf(stderr, "expectation at fuzz_sequences.cpp:%d does not hold\n", line);
    std::abort();
}
#define require(holds) require((holds), __LINE__)

// A small image whose pixels follow from two bytes, so that a sequence spends its input on
// calls rather than on pixels.
Image frameOf(Input& in, bool gray) {
    const Format format = gray ? Gray : nuv::fuzz::formats[in.in(1, 7)];
    const unsigned width = in.in(1, 48), height = in.in(1, 48);
    Image image(ImageInfo(width, height, format));
    const std::uint8_t a = in.byte(), b = in.byte();
    const unsigned bytes = image.info().rowBytes();
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < bytes; ++x)
            image.data()[y * image.step() + x] =
                static_cast<std::uint8_t>((x * a + y * b) % 7 == 0 ? 255 : (x ^ y) * a);
    if (in.flag()) {
        const int x = in.in(0, 20), y = in.in(0, 20);
        setRoi(image, nuv::core::Roi(Point(x, y), nuv::core::Size(in.in(0, 40), in.in(0, 40))));
    }
    return image;
}

struct Objects {
    nuv::cv::Segmenter segmenters[2];
    nuv::cv::HoughTransform hough[3];
    int lineCounts[3] = {0, 0, 0};
    nuv::cv::MatchTemplate matcher;
    nuv::cv::LineDetector detector;
};

void houghStep(Objects& o, Input& in, int op) {
    const int k = in.in(0, 2);
    nuv::cv::HoughTransform& h = o.hough[k];
    switch (op) {
        case 0:
            o.lineCounts[k] = in.in(-2, 70);
            h.setMaxLineCount(o.lineCounts[k]);
            break;
        case 1:
            h.setDelta(static_cast<float>(in.in(0, 40)) / 8, static_cast<float>(in.in(0, 40)) / 12);
            break;
        case 2:
            h.setThreshold(in.in(-2, 30));
            break;
        case 3:
            nuv::cv::HoughTransform::freeBuffer();
            break;
        default: {
            const Image lined = h.transform(frameOf(in, in.in(0, 3) != 0));
            require(static_cast<int>(lines(lined).size()) <= std::max(o.lineCounts[k], 0));
        }
    }
}

void segmenterStep(Objects& o, Input& in, int op) {
    nuv::cv::Segmenter& s = o.segmenters[in.in(0, 1)];
    switch (op) {
        case 0:
            s.setColorSegments(nuv::fuzz::classesOf(in));
            break;
        case 1:
            s.resetColorSegments();
            break;
        case 2:
            s.setupSegmentation(in.in(0, 48), in.in(0, 48));
            break;
        case 3:
            require(s.createSegmentList().size() <= 32);
            break;
        default: {
            // Three-channel frames only: other channel counts are the caller's error.
            Image frame = frameOf(in, false);
            if (frame.info().numChannels == 3) s.doSegmentation(frame);
        }
    }
}

void otherStep(Objects& o, Input& in, int op) {
    switch (op) {
        case 0:
            o.matcher.setImage(in.flag() ? Image() : frameOf(in, false));
            break;
        case 1: {
            Point point;
            float score = 0;
            try {
                o.matcher.match(frameOf(in, in.flag()), &point, &score);
                require(score >= -1.001f && score <= 1.001f);
            } catch (cv::Exception const&) {
                // A template larger than the image is refused by OpenCV, by design.
            }
            break;
        }
        case 2:
            o.detector.setThreshold(in.in(0, 300));
            o.detector.setSearchStart(in.in(0, 60));
            o.detector.setSearchHeight(in.in(0, 60));
            break;
        case 3: {
            Point point;
            o.detector.findLine(
                frameOf(in, in.flag()),
                in.flag() ? nuv::cv::LineDetector::Vertical : nuv::cv::LineDetector::Horizontal,
                &point);
            break;
        }
        default: {
            int count = -1;
            const Image labels = nuv::cv::labelmarkers(frameOf(in, in.in(0, 3) != 0), &count);
            require(count >= 0);
            nuv::core::Vector<Point> centres;
            nuv::core::Vector<int> sizes;
            nuv::cv::labelmarkersinfo(labels, in.in(0, 4), centres, sizes);
            require(centres.size() == sizes.size());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input in(data, size);
    Objects objects;
    for (int calls = 0; calls < 64 && in.left() > 0; ++calls) {
        const int op = in.in(0, 14);
        if (op < 5)
            houghStep(objects, in, op);
        else if (op < 10)
            segmenterStep(objects, in, op - 5);
        else
            otherStep(objects, in, op - 10);
    }
    // The shared buffers start afresh for the next input, as a new process would have them.
    nuv::cv::HoughTransform::freeBuffer();
    return 0;
}
