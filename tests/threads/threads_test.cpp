// Several threads at once, each with its own objects, over source images that they share as
// copies of one handle: the segmenter, conversions, thresholds and range masks, statistics,
// filters, Canny, the line detector and template matching. The process-wide buffers of
// labelling and of the Hough transform belong to one thread, as the library asks. Every
// thread's results must equal those of a run on one thread; under ThreadSanitizer (the tsan
// preset) the run must also report no race.
#include <nuv/cv.h>

#include "support/images.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::core::Size;
using nuv::core::Vector;
using nuv::test::packedPixels;
using Bytes = std::vector<unsigned char>;

// Blocks of a few colours on noise, so that every operation has something to find.
Image scene(unsigned width, unsigned height) {
    std::mt19937 rng(3);
    Image image(ImageInfo(width, height, BGR));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const unsigned block = (x / 24 + y / 24) % 4;
            for (unsigned c = 0; c < 3; ++c)
                image.data()[y * image.step() + 3 * x + c] =
                    static_cast<unsigned char>((block * 60 + c * 50) % 256 + rng() % 8);
        }
    return image;
}

nuv::cv::SegmentList someClasses(Image const& image) {
    nuv::cv::SegmentList list;
    for (unsigned k = 0; k < 3; ++k) {
        nuv::cv::Segment segment;
        segment.setName("class" + std::to_string(k));
        unsigned char const* p = image.constData() + (24 * k + 5) * image.step() + 3 * 5;
        for (int i = 0; i < 8; ++i)
            segment.addColor(nuv::core::Color::fromRgba(p[3 * i], p[3 * i + 1], p[3 * i + 2]));
        for (unsigned c = 0; c < 3; ++c) segment.setDilate(c, 6);
        segment.applyDilation();
        list.append(segment);
    }
    return list;
}

// Everything one thread does; the bytes of each result, in order.
std::vector<Bytes> work(Image const& frame, nuv::cv::SegmentList const& classes) {
    std::vector<Bytes> out;
    nuv::cv::Segmenter segmenter;
    segmenter.setColorSegments(classes);
    const Image segmented = segmenter.doSegmentation(frame);
    Bytes regions;
    for (auto const& region : segmentList(segmented)) {
        regions.push_back(static_cast<unsigned char>(region.pixelCount & 0xFF));
        regions.push_back(static_cast<unsigned char>(region.center.x()));
    }
    out.push_back(regions);
    const Image hsv = nuv::cv::convert(frame, HSV);
    const Image gray = nuv::cv::convert(frame, Gray);
    out.push_back(packedPixels(hsv));
    out.push_back(packedPixels(nuv::cv::convert(frame, YCbCr)));
    out.push_back(packedPixels(nuv::cv::thresholdLT(frame, 100, 7)));
    out.push_back(
        packedPixels(nuv::cv::inRange(hsv, Vector<int>{200, 40, 40}, Vector<int>{300, 255, 255})));
    const Vector<unsigned char> mean = nuv::cv::mean(frame);
    out.push_back(Bytes(mean.constBegin(), mean.constEnd()));
    out.push_back(packedPixels(nuv::cv::filter::sobelVert3x3(gray, true)));
    out.push_back(packedPixels(nuv::cv::filter::min(frame, Size(5, 3))));
    out.push_back(packedPixels(nuv::cv::filter::max(gray, Size(3, 3))));
    out.push_back(packedPixels(nuv::cv::canny(gray, 40, 120)));
    nuv::cv::LineDetector detector;
    Point point;
    out.push_back(packedPixels(detector.findLine(frame, nuv::cv::LineDetector::Vertical, &point)));
    nuv::cv::MatchTemplate matcher;
    matcher.setImage(gray);
    Image patch(ImageInfo(16, 16, Gray));
    for (unsigned y = 0; y < 16; ++y)
        std::copy_n(gray.constData() + (40 + y) * gray.step() + 50, 16,
                    patch.data() + y * patch.step());
    float score = 0;
    matcher.match(patch, &point, &score);
    out.push_back({static_cast<unsigned char>(point.x()), static_cast<unsigned char>(point.y())});
    return out;
}

// The owner of the process-wide buffers: labels and lines.
std::vector<Bytes> ownerWork(Image const& frame) {
    std::vector<Bytes> out;
    int count = 0;
    const Image mask = nuv::cv::thresholdGT(nuv::cv::convert(frame, Gray), 120, 0);
    out.push_back(packedPixels(nuv::cv::labelmarkers(mask, &count)));
    nuv::cv::HoughTransform hough;
    hough.setMaxLineCount(6);
    hough.setDelta(1.0f, 0.05f);
    hough.setThreshold(20);
    Bytes ends;
    for (nuv::core::Line const& line :
         lines(hough.transform(nuv::cv::canny(nuv::cv::convert(frame, Gray), 40, 120))))
        ends.push_back(static_cast<unsigned char>(line.x0()));
    out.push_back(ends);
    return out;
}

TEST(Threads, SharedSourcesOwnObjectsSameResults) {
    cv::setNumThreads(0);  // OpenCV's own pool stays out of the picture
    ippInit();
    const Image frame = scene(160, 120);
    const nuv::cv::SegmentList classes = someClasses(frame);
    const std::vector<Bytes> expected = work(frame, classes);
    const std::vector<Bytes> expectedOwner = ownerWork(frame);

    constexpr int kThreads = 4, kRounds = 3;
    std::vector<std::vector<Bytes>> results(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t, shared = frame] {
            for (int round = 0; round < kRounds; ++round)
                results[t] = t == 0 ? ownerWork(shared) : work(shared, classes);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(results[0], expectedOwner);
    for (int t = 1; t < kThreads; ++t) EXPECT_EQ(results[t], expected) << "thread " << t;
    EXPECT_EQ(expected.size(), 12u);
}

// Lines logged by several threads at once reach the sink whole, one at a time.
TEST(Threads, LogLinesStayWhole) {
    std::vector<std::string> lines;
    nuv::core::Log::singleton().setSink([&](std::string const& line) { lines.push_back(line); });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int k = 0; k < 300; ++k)
                nuv::core::Log::singleton() << "thread " << t << " line " << k << nuv::core::endl;
        });
    for (std::thread& thread : threads) thread.join();
    nuv::core::Log::singleton().setSink({});
    ASSERT_EQ(lines.size(), 1200u);
    std::vector<int> next(4, 0);
    for (std::string const& line : lines) {
        const int t = line[7] - '0';
        ASSERT_EQ(line, "thread " + std::to_string(t) + " line " + std::to_string(next[t]++));
    }
}

// Threads that make and drop images of a few sizes while another bounds and empties the
// store: no buffer is ever handed to two live images, and the bound holds.
TEST(Threads, BufferStoreGivesEachBufferToOneImage) {
    setBufferStoreLimit(std::size_t(8) << 20);
    std::vector<std::thread> threads;
    std::vector<int> damaged(4, 0);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &damaged] {
            std::vector<std::pair<Image, unsigned char>> alive;
            for (int k = 0; k < 400; ++k) {
                Image image(ImageInfo(100 + 60 * (k % 3), 80, BGR));
                const unsigned char mark = static_cast<unsigned char>(16 * t + k % 16);
                std::fill_n(image.data(), image.step() * 80, mark);
                alive.emplace_back(image, mark);
                if (alive.size() > 3) alive.erase(alive.begin());
                for (auto const& [kept, its] : alive) {
                    const std::ptrdiff_t bytes = kept.step() * 80;
                    damaged[t] +=
                        std::count(kept.constData(), kept.constData() + bytes, its) != bytes;
                }
            }
        });
    for (int k = 0; k < 50; ++k) {
        setBufferStoreLimit(std::size_t(k % 5) << 18);
        if (k % 7 == 0) emptyBufferStore();
        EXPECT_LE(bufferStoreBytes(), bufferStoreLimit());
        std::this_thread::yield();
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(damaged, std::vector<int>(4, 0));
    setBufferStoreLimit(std::size_t(256) << 20);
}

}  // namespace
