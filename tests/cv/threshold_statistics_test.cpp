// Thresholds, range masks and statistics of the front end: regions of random images against
// per-pixel models of what the composed primitives make (0 counted as 1, the clamps, the hue
// wrap by 127, crossed bounds), the worked numbers, and the refusals with their messages.
#include <nuv/cv.h>

#include "support/images.h"
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::test::packedPixels;

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::Vector;
using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

// A 13x6 image with padded rows, its region (2,1) 9x4, filled with bytes of the palette or
// random ones.
Image framed(Format format, std::mt19937& rng, Bytes const& palette = {}) {
    Image image(ImageInfo(13, 6, format), 64);
    for (unsigned i = 0; i < 64 * 6; ++i)
        image.data()[i] = palette.empty() ? rng() : palette[rng() % palette.size()];
    setRoi(image, Roi(Point(2, 1), Size(9, 4)));
    return image;
}
// The region's bytes without padding.
Bytes regionOf(Image const& image) {
    const unsigned n = image.info().numChannels;
    Bytes bytes;
    for (unsigned y = 1; y < 5; ++y)
        bytes.insert(bytes.end(), image.constData() + y * 64 + 2 * n,
                     image.constData() + y * 64 + 11 * n);
    return bytes;
}
TEST(Threshold, RegionsAgainstTheBoundClampedToAByte) {
    std::mt19937 rng(1);
    for (Format format : {Gray, RGB, HSV})
        for (auto [t, v] : {std::pair{100, 7}, {300, -1}, {-5, 256}, {0, 9}, {255, 3}}) {
            const Image image = framed(format, rng);
            const Bytes before = packedPixels(image), in = regionOf(image);
            const int tc = std::clamp(t, 0, 255), vc = std::clamp(v, 0, 255);
            Bytes lt = in, gt = in;
            for (auto& x : lt) x = x < tc ? vc : x;
            for (auto& x : gt) x = x > tc ? vc : x;
            const Image a = nuv::cv::thresholdLT(image, t, v),
                        b = nuv::cv::thresholdGT(image, t, v);
            EXPECT_EQ(packedPixels(a), lt) << t << " " << v;
            EXPECT_EQ(packedPixels(b), gt) << t << " " << v;
            EXPECT_EQ(a.info().format, format);
            EXPECT_EQ(packedPixels(image), before);
        }
    nuv::test::LogCapture log;
    EXPECT_TRUE(nuv::cv::thresholdLT(framed(BGRA, rng), 1, 1).isNull());
    EXPECT_TRUE(nuv::cv::thresholdGT(framed(BGRA, rng), 1, 1).isNull());
    EXPECT_EQ(log.lines(), Lines(2, "nuv::cv::threshold : unsupported image format"));
}

// In range: for every channel lo <= max(x, 1) <= hi, after the hue shift where it applies;
// all pixels pass if any channel's bounds cross.
Bytes rangeModel(Bytes const& in, int channels, bool hue, Vector<int> const& lower,
                 Vector<int> const& upper) {
    const int floor = channels == 1 ? 0 : 1;
    int lo[3], hi[3], shift = 0;
    for (int c = 0; c < channels; ++c) {
        lo[c] = std::clamp(lower[c], floor, 255);
        hi[c] = std::clamp(upper[c], floor, 255);
    }
    if (hue && (upper[0] > 255 || lower[0] < 0 || lower[0] > upper[0])) {
        shift = 127;
        lo[0] = (lower[0] + 127) & 255;
        hi[0] = (upper[0] + 127) & 255;
    }
    bool crossed = false;
    for (int c = 0; c < channels; ++c) crossed = crossed || lo[c] > hi[c];
    Bytes mask;
    for (std::size_t i = 0; i < in.size(); i += channels) {
        bool inside = true;
        for (int c = 0; c < channels; ++c) {
            const int x = std::max((in[i + c] + (c == 0 ? shift : 0)) & 255, 1);
            inside = inside && lo[c] <= x && x <= hi[c];
        }
        mask.push_back(inside || crossed ? 255 : 0);
    }
    return mask;
}

TEST(InRange, RegionsAgainstTheModelOfItsThreePasses) {
    std::mt19937 rng(2);
    const Bytes edges = {0, 1, 2, 20, 21, 100, 128, 129, 200, 254, 255};
    const int bounds[] = {-20, 0, 1, 20, 100, 128, 200, 255, 300};
    for (Format format : {Gray, RGB, HSV, HLS})
        for (int round = 0; round < 40; ++round) {
            const Image image = framed(format, rng, round % 2 ? edges : Bytes{});
            const int n = int(image.info().numChannels);
            Vector<int> lower, upper;
            for (int c = 0; c < n; ++c) {
                lower.append(bounds[rng() % 9]);
                upper.append(bounds[rng() % 9]);
            }
            const Bytes before = packedPixels(image);
            const Image mask = nuv::cv::inRange(image, lower, upper);
            ASSERT_EQ(mask.info().format, Gray);
            EXPECT_EQ(packedPixels(mask),
                      rangeModel(regionOf(image), n, format == HSV || format == HLS, lower, upper))
                << friendlyName(format) << " lower " << lower[0] << " upper " << upper[0];
            EXPECT_EQ(packedPixels(image), before);
        }
}

// The worked hue ranges: 200..20 and -20..30 pass the wrap, 100..300 crosses after the
// shift.
TEST(InRange, WrappedHues) {
    Image hsv(ImageInfo(256, 1, HSV));
    for (int h = 0; h < 256; ++h)
        hsv.data()[3 * h] = h, hsv.data()[3 * h + 1] = hsv.data()[3 * h + 2] = 9;
    auto passing = [&](int lo, int hi) {
        const Bytes mask = packedPixels(nuv::cv::inRange(hsv, {lo, 0, 0}, {hi, 255, 255}));
        std::string runs;
        for (int h = 0; h < 256; ++h) {
            if (mask[h] && (h == 0 || !mask[h - 1]))
                runs += (runs.empty() ? "" : " ") + std::to_string(h);
            if (mask[h] && (h == 255 || !mask[h + 1])) runs += "-" + std::to_string(h);
        }
        return runs;
    };
    EXPECT_EQ(passing(200, 20), "0-20 200-255");
    EXPECT_EQ(passing(-20, 30), "0-30 236-255");
    EXPECT_EQ(passing(100, 300), "0-255");
    EXPECT_EQ(passing(20, 40), "20-40");
    EXPECT_EQ(passing(130, 20), "0-20 129-255");  // hue 129 shifts onto 0 and counts as 1
}

TEST(InRange, Refusals) {
    std::mt19937 rng(3);
    nuv::test::LogCapture log;
    EXPECT_TRUE(nuv::cv::inRange(framed(RGB, rng), {1, 2}, {1}).isNull());
    EXPECT_TRUE(nuv::cv::inRange(framed(RGB, rng), {1, 2, 3}, {1}).isNull());
    EXPECT_TRUE(nuv::cv::inRange(framed(BGRA, rng), {1, 2, 3, 4}, {1, 2, 3, 4}).isNull());
    EXPECT_EQ(log.lines(),
              (Lines{"nuv::cv::inRange : lower wrong size", "nuv::cv::inRange : upper wrong size",
                     "nuv::cv::inRange : unsupported image format"}));
}

Image filled(Format format, unsigned w, unsigned h, Bytes const& pixels) {
    Image image(ImageInfo(w, h, format));
    const unsigned n = image.info().numChannels;
    for (unsigned i = 0; i < w * h * n; ++i)
        image.data()[i / (w * n) * image.step() + i % (w * n)] = pixels[i % pixels.size()];
    return image;
}

// Means are truncated, and the three-channel one multiplies by the reciprocal.
TEST(Statistics, Means) {
    EXPECT_EQ(nuv::cv::mean(filled(Gray, 1, 1, {200})), (Vector<unsigned char>{200}));
    EXPECT_EQ(nuv::cv::mean(filled(Gray, 2, 2, {1, 2, 2, 2})), (Vector<unsigned char>{1}));
    EXPECT_EQ(nuv::cv::mean(filled(Gray, 7, 7, {1})), (Vector<unsigned char>{1}));
    EXPECT_EQ(nuv::cv::mean(filled(RGB, 7, 7, {1})), (Vector<unsigned char>{0, 0, 0}));
    // Four bytes a pixel are read three at a time: 12 bytes of 1 2 3 4 as pixels.
    EXPECT_EQ(nuv::cv::mean(filled(BGRA, 3, 1, {1, 2, 3, 4})), (Vector<unsigned char>{2, 2, 2}));
    Image region = filled(Gray, 4, 2, {9, 1, 3, 9});  // the region is its second row's middle
    setRoi(region, Roi(Point(1, 1), Size(2, 1)));
    EXPECT_EQ(nuv::cv::mean(region), (Vector<unsigned char>{2}));
}

// Hues spread over more than 128 are measured round the wrap; exactly 128 is not.
TEST(Statistics, Extremes) {
    auto extremes = [](Image const& image) {
        Vector<int> min, max;
        nuv::cv::minmax(image, min, max);
        return std::pair(min, max);
    };
    using V = Vector<int>;
    EXPECT_EQ(extremes(filled(Gray, 1, 1, {200})), std::pair(V{200}, V{200}));
    Image region = filled(Gray, 4, 2, {9, 1, 3, 9});
    setRoi(region, Roi(Point(1, 1), Size(2, 1)));
    EXPECT_EQ(extremes(region), std::pair(V{1}, V{3}));
    EXPECT_EQ(extremes(filled(HSV, 2, 1, {10, 5, 6, 200, 7, 8})),
              std::pair(V{200, 5, 6}, V{10, 7, 8}));
    EXPECT_EQ(extremes(filled(HLS, 2, 1, {250, 5, 6, 5, 7, 8})),
              std::pair(V{250, 5, 6}, V{5, 7, 8}));
    EXPECT_EQ(extremes(filled(HSV, 2, 1, {10, 5, 6, 138, 7, 8})),
              std::pair(V{10, 5, 6}, V{138, 7, 8}));
    EXPECT_EQ(extremes(filled(RGB, 2, 1, {10, 5, 6, 200, 7, 8})),
              std::pair(V{10, 5, 6}, V{200, 7, 8}));
}

}  // namespace
