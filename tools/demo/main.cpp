// The nuv demo: what the processor offers and which primitive generation the library picks
// for it and why; then colour segmentation of a camera frame with trained classes: the
// largest region of each class, its size, centre and runs, the time per frame at the
// baseline slot and at the selected one, and an annotated picture of the result.
//
//   nuv_demo [--image frame.png] [--classes classes.txt] [--out segments.png]
#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

struct Options {
    std::string image = NUV_DATA_DIR "/frame.png";
    std::string classes = NUV_DATA_DIR "/classes.txt";
    std::string out = "nuv_demo_segments.png";
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--image" && hasValue) {
            options.image = argv[++i];
        } else if (arg == "--out" && hasValue) {
            options.out = argv[++i];
        } else if (arg == "--classes" && hasValue) {
            options.classes = argv[++i];
        } else {
            return false;
        }
    }
    return true;
}

char const* const featureNames[] = {"MMX",    "SSE",    "SSE2", "SSE3",        "SSSE3", "MOVBE",
                                    "SSE4.1", "SSE4.2", "AVX",  "AVX(OS)",     "AES",   "PCLMULQDQ",
                                    "ABR",    "RDRAND", "F16C", "AVX2+FMA+BMI"};
char const* const slotVariants[] = {"m7", "m7", "n8/u8", "n8/u8", "y8", "e9", "l9"};

std::string featureList(Ipp64u word) {
    std::string text;
    for (int bit = 0; bit < 16; ++bit)
        if (word & (1ULL << bit)) text += std::string(text.empty() ? "" : " ") + featureNames[bit];
    return text.empty() ? "(none)" : text;
}

char const* whySlot(int slot) {
    switch (slot) {
        case 6:
            return "AVX enabled by the system and the complete AVX2 set (AVX2, FMA, BMI1, BMI2)";
        case 5:
            return "AVX enabled by the system, without the complete AVX2 set";
        case 4:
            return "SSE4.1";
        case 3:
            return "SSSE3 with MOVBE";
        case 2:
            return "SSSE3 without MOVBE";
        case 1:
            return "SSE3";
        default:
            return "no SSE3: the baseline bodies";
    }
}

// Wraps a decoded BGR picture in a library image, row by row through the copy primitive.
Image toImage(cv::Mat const& mat) {
    Image image(ImageInfo(mat.cols, mat.rows, nuv::core::image::BGR));
    const IppiSize size = {mat.cols, mat.rows};
    ippiCopy_8u_C3R(mat.data, static_cast<int>(mat.step), image.data(),
                    static_cast<int>(image.step()), size);
    return image;
}

std::string readFile(std::string const& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return in ? text.str() : std::string();
}

// Median time of one call of `work`, in microseconds, with the index word set to `slot`.
template <class Work>
double medianMicroseconds(int slot, int rounds, Work work) {
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const auto stop = std::chrono::steady_clock::now();
        times.push_back(std::chrono::duration<double, std::micro>(stop - start).count());
    }
    ippJumpIndexForMergedLibs = saved;
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

// A class's mean colour holds channel 0 in r, 1 in g, 2 in b: the picture's own byte order.
cv::Scalar pictureColor(nuv::core::Color const& color) {
    return cv::Scalar(color.r(), color.g(), color.b());
}

// Each region's runs in its class's colour over a dimmed frame, its centre marked and its
// name written beside it.
cv::Mat annotate(cv::Mat const& picture, nuv::core::image::SegmentList const& regions) {
    cv::Mat canvas = picture * 0.45;
    for (auto it = regions.constBegin(); it != regions.constEnd(); ++it) {
        if (it->pixelCount == 0) continue;
        const cv::Scalar color = pictureColor(it->color);
        for (auto line = it->lines.constBegin(); line != it->lines.constEnd(); ++line)
            cv::line(canvas, {line->x0(), line->y0()}, {line->x1(), line->y1()}, color);
        const cv::Point center(it->center.x(), it->center.y());
        cv::drawMarker(canvas, center, cv::Scalar(255, 255, 255), cv::MARKER_CROSS, 18, 2);
        cv::putText(canvas, it->name, center + cv::Point(12, -10), cv::FONT_HERSHEY_SIMPLEX, 0.6,
                    cv::Scalar(255, 255, 255), 2, cv::LINE_AA);
    }
    return canvas;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr,
                     "usage: %s [--image frame.png] [--classes classes.txt] [--out out.png]\n",
                     argv[0]);
        return 2;
    }

    // What the processor offers, before any selection.
    Ipp64u detected = 0;
    Ipp32u regs[4] = {};
    ippGetCpuFeatures(&detected, regs);
    std::printf("Processor features: %s\n", featureList(detected).c_str());

    const IppStatus initStatus = ippInit();
    const int slot = static_cast<int>(ippJumpIndexForMergedLibs);
    std::printf("ippInit selects slot %d (%s): %s\n", slot, slotVariants[slot], whySlot(slot));
    std::printf("  status %d%s\n", initStatus,
                initStatus == ippStsNonGenuineCpuWrn
                    ? " (the vendor is not GenuineIntel; the selection stands)"
                    : "");
    std::printf("  enabled features: %s\n", featureList(ippGetEnabledCpuFeatures()).c_str());
    int cache = 0;
    const IppStatus cacheStatus = ippGetMaxCacheSizeB(&cache);
    if (cacheStatus == ippStsNoErr)
        std::printf("  largest cache: %d KiB\n", cache / 1024);
    else
        std::printf("  largest cache: unknown (status %d), so copies keep to cached stores\n",
                    cacheStatus);

    nuv::cv::init();
    cv::Mat picture = cv::imread(options.image, cv::IMREAD_COLOR);
    if (picture.empty()) {
        std::fprintf(stderr, "cannot read %s\n", options.image.c_str());
        return 1;
    }
    const std::string classText = readFile(options.classes);
    if (classText.empty()) {
        std::fprintf(stderr, "cannot read %s\n", options.classes.c_str());
        return 1;
    }
    nuv::cv::SegmentList classes;
    try {
        classes = nuv::cv::segmentListfromString(classText);
    } catch (nuv::core::Exception const& e) {
        std::fprintf(stderr, "%s: %s\n", options.classes.c_str(), e.what());
        return 1;
    }
    if (classes.size() == 0 || classes.size() > 32) {
        std::fprintf(stderr, "%s holds %d usable classes; 1 to 32 are needed\n",
                     options.classes.c_str(), classes.size());
        return 1;
    }

    const Image frame = toImage(picture);
    nuv::cv::Segmenter segmenter;
    segmenter.setColorSegments(classes);
    std::printf("\nFrame %s: %dx%d, %d classes from %s\n", options.image.c_str(), picture.cols,
                picture.rows, classes.size(), options.classes.c_str());

    const Image result = segmenter.doSegmentation(frame);
    const nuv::core::image::SegmentList regions = nuv::core::image::segmentList(result);
    std::printf("\n  %-10s %8s %12s %6s\n", "class", "pixels", "centre", "runs");
    for (auto it = regions.constBegin(); it != regions.constEnd(); ++it) {
        if (it->pixelCount == 0) {
            std::printf("  %-10s %8s\n", it->name.c_str(), "not found");
            continue;
        }
        const std::string centre =
            "(" + std::to_string(it->center.x()) + ", " + std::to_string(it->center.y()) + ")";
        std::printf("  %-10s %8u %12s %6d\n", it->name.c_str(), it->pixelCount, centre.c_str(),
                    it->lines.size());
    }

    const int rounds = 300;
    const auto segment = [&] { segmenter.doSegmentation(frame); };
    const double baseline = medianMicroseconds(0, rounds, segment);
    const double selected = medianMicroseconds(slot, rounds, segment);
    std::printf(
        "\nSegmentation, median of %d frames: slot 0 %.0f us (%.0f frames/s), slot %d "
        "%.0f us (%.0f frames/s)\n",
        rounds, baseline, 1e6 / baseline, slot, selected, 1e6 / selected);

    // The region copy that every frame starts with, on the central quarter of the frame.
    Image framed = frame;
    nuv::core::image::setRoi(framed,
                             nuv::core::Roi(nuv::core::Point(picture.cols / 4, picture.rows / 4),
                                            nuv::core::Size(picture.cols / 2, picture.rows / 2)));
    const auto cut = [&] { nuv::cv::copyRoi(framed); };
    std::printf("Region copy of %dx%d, median of %d: slot 0 %.2f us, slot %d %.2f us\n",
                picture.cols / 2, picture.rows / 2, 2000, medianMicroseconds(0, 2000, cut), slot,
                medianMicroseconds(slot, 2000, cut));

    if (!cv::imwrite(options.out, annotate(picture, regions))) {
        std::fprintf(stderr, "cannot write %s\n", options.out.c_str());
        return 1;
    }
    std::printf("Wrote the annotated frame to %s\n", options.out.c_str());
    return 0;
}
