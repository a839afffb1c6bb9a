// The nuv demo: what the processor offers, which primitive generation the library picks for
// it and why, and a region cut out of a camera frame, timed at the baseline slot and at the
// selected one. Writes the cut as a picture.
//
//   nuv_demo [--image frame.png] [--roi x,y,w,h] [--out cut.png]
#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

struct Options {
    std::string image = NUV_DATA_DIR "/frame.png";
    std::string out = "nuv_demo_roi.png";
    int x = 160, y = 120, width = 320, height = 240;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--image" && hasValue) {
            options.image = argv[++i];
        } else if (arg == "--out" && hasValue) {
            options.out = argv[++i];
        } else if (arg == "--roi" && hasValue) {
            if (std::sscanf(argv[++i], "%d,%d,%d,%d", &options.x, &options.y, &options.width,
                            &options.height) != 4)
                return false;
        } else {
            return false;
        }
    }
    return true;
}

char const* const featureNames[] = {"MMX",  "SSE",    "SSE2",   "SSE3", "SSSE3",  "MOVBE",
                                    "SSE4.1", "SSE4.2", "AVX", "AVX(OS)", "AES", "PCLMULQDQ",
                                    "ABR",  "RDRAND", "F16C",   "AVX2+FMA+BMI"};
char const* const slotVariants[] = {"m7", "m7", "n8/u8", "n8/u8", "y8", "e9", "l9"};

std::string featureList(Ipp64u word) {
    std::string text;
    for (int bit = 0; bit < 16; ++bit)
        if (word & (1ULL << bit)) text += std::string(text.empty() ? "" : " ") + featureNames[bit];
    return text.empty() ? "(none)" : text;
}

char const* whySlot(int slot) {
    switch (slot) {
        case 6: return "AVX enabled by the system and the complete AVX2 set (AVX2, FMA, BMI1, BMI2)";
        case 5: return "AVX enabled by the system, without the complete AVX2 set";
        case 4: return "SSE4.1";
        case 3: return "SSSE3 with MOVBE";
        case 2: return "SSSE3 without MOVBE";
        case 1: return "SSE3";
        default: return "no SSE3: the baseline bodies";
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

// Median time of one cut, in microseconds, with the index word set to `slot`.
double timeCut(Image const& frame, int slot, int rounds) {
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        Image cut = nuv::cv::copyRoi(frame);
        const auto stop = std::chrono::steady_clock::now();
        if (cut.isNull()) break;
        times.push_back(std::chrono::duration<double, std::micro>(stop - start).count());
    }
    ippJumpIndexForMergedLibs = saved;
    if (times.empty()) return 0;
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--image frame.png] [--roi x,y,w,h] [--out cut.png]\n",
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

    cv::Mat picture = cv::imread(options.image, cv::IMREAD_COLOR);
    if (picture.empty()) {
        std::fprintf(stderr, "cannot read %s\n", options.image.c_str());
        return 1;
    }
    Image frame = toImage(picture);
    options.width = std::min(options.width, picture.cols - options.x);
    options.height = std::min(options.height, picture.rows - options.y);
    if (options.x < 0 || options.y < 0 || options.width < 1 || options.height < 1) {
        std::fprintf(stderr, "the region lies outside the %dx%d frame\n", picture.cols,
                     picture.rows);
        return 2;
    }
    nuv::core::image::setRoi(frame, Roi(Point(options.x, options.y),
                                        Size(options.width, options.height)));
    std::printf("\nFrame %s: %dx%d, region %dx%d at (%d, %d)\n", options.image.c_str(),
                picture.cols, picture.rows, options.width, options.height, options.x,
                options.y);

    const int rounds = 2000;
    const double baseline = timeCut(frame, 0, rounds);
    const double selected = timeCut(frame, slot, rounds);
    std::printf("copyRoi, median of %d: slot 0 %.2f us, slot %d %.2f us\n", rounds, baseline,
                slot, selected);

    Image cut = nuv::cv::copyRoi(frame);
    cv::Mat view(static_cast<int>(cut.info().height), static_cast<int>(cut.info().width), CV_8UC3,
                 const_cast<unsigned char*>(cut.constData()), cut.step());
    if (!cv::imwrite(options.out, view)) {
        std::fprintf(stderr, "cannot write %s\n", options.out.c_str());
        return 1;
    }
    std::printf("Wrote the region to %s\n", options.out.c_str());
    return 0;
}
