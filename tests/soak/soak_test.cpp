// A long run of frames through the segmenter and the conversion and filter chain: the
// resident memory after a warm-up and at the end may differ by a small bound only, and the
// store of released buffers holds no more at the end than after the warm-up. Under the
// sanitizers the bound is left to the leak check at exit (their quarantine keeps freed
// memory resident on purpose). NUV_SOAK_FRAMES sets the length (`make soak` runs long).
#include <nuv/cv.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

namespace {

using namespace nuv::core::image;

long residentBytes() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * 4096;
}

// Frame k: moving blocks of colour on noise.
Image frameOf(int k, std::mt19937& rng) {
    Image image(ImageInfo(320, 240, BGR));
    for (unsigned y = 0; y < 240; ++y)
        for (unsigned x = 0; x < 320; ++x) {
            const unsigned block = ((x + 3 * k) / 40 + y / 40) % 3;
            for (unsigned c = 0; c < 3; ++c)
                image.data()[y * image.step() + 3 * x + c] =
                    static_cast<unsigned char>(block * 80 + c * 30 + rng() % 6);
        }
    return image;
}

void oneFrame(Image const& frame, nuv::cv::Segmenter& segmenter, nuv::cv::HoughTransform& hough) {
    const Image hsv = nuv::cv::convert(frame, HSV);
    segmenter.doSegmentation(hsv);
    const Image gray = nuv::cv::convert(frame, Gray);
    const Image edges = nuv::cv::thresholdLT(nuv::cv::filter::sobelVert3x3(gray, true), 30, 0);
    int count = 0;
    nuv::cv::labelmarkers(edges, &count);
    hough.transform(nuv::cv::canny(gray, 40, 120));
    nuv::cv::filter::max(frame, nuv::core::Size(5, 5));
    nuv::cv::inRange(hsv, nuv::core::Vector<int>{0, 50, 50}, nuv::core::Vector<int>{128, 255, 255});
}

TEST(Soak, ResidentMemoryStaysFlatOverManyFrames) {
    const char* env = std::getenv("NUV_SOAK_FRAMES");
    const int frames = env ? std::atoi(env) : 600;
    std::mt19937 rng(11);
    nuv::cv::Segmenter segmenter;
    nuv::cv::SegmentList classes;
    nuv::cv::Segment segment;
    segment.setName("warm");
    for (int v = 0; v < 256; v += 16) segment.addColor(nuv::core::Color::fromRgba(v, 200, 200));
    classes.append(segment);
    segmenter.setColorSegments(classes);
    nuv::cv::HoughTransform hough;
    hough.setMaxLineCount(8);
    hough.setDelta(1.0f, 0.05f);
    hough.setThreshold(30);

    for (int k = 0; k < 40; ++k) oneFrame(frameOf(k, rng), segmenter, hough);
    [[maybe_unused]] const long before = residentBytes();
    const std::size_t storedBefore = bufferStoreBytes();
    for (int k = 0; k < frames; ++k) oneFrame(frameOf(k, rng), segmenter, hough);
    [[maybe_unused]] const long after = residentBytes();
    nuv::cv::HoughTransform::freeBuffer();
    // Frames of one size find their buffers waiting: the store does not grow either.
    EXPECT_LE(bufferStoreBytes(), storedBefore);
    EXPECT_GT(storedBefore, 0u);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "resident memory is the sanitizer's; the leak check at exit judges";
#else
    EXPECT_LT(after - before, 2L << 20) << before << " -> " << after << " bytes";
#endif
}

}  // namespace
