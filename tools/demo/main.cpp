// The nuv demo: what the processor offers and which primitive generation the library picks
// for it and why; then every capability of the library on a camera frame (segmentation by
// trained classes, HSV conversion feeding the segmenter, a range mask with a wrapped hue,
// Sobel and Canny edges, min and max filters, labelled components, Hough lines, the line
// detector, template matching): what each finds, its time per frame at slot 0 and at the
// selected slot beside the OpenCV call that does the same job, an annotated picture each and
// a contact sheet of them all.
//
//   nuv_demo [--image frame.png] [--classes classes.txt] [--out-dir DIR]
#include "showcase.h"

#include "primitives/dispatch/generations.def"

#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

// The bundled frame and classes: installed beside the program's prefix, else in the source
// tree the program was built from.
std::string dataDir() {
    std::error_code error;
    const std::filesystem::path installed =
        std::filesystem::read_symlink("/proc/self/exe", error).parent_path() /
        NUV_INSTALLED_DATA_DIR;
    if (!error && std::filesystem::exists(installed / "frame.png", error))
        return installed.string();
    return NUV_DATA_DIR;
}

struct Options {
    std::string image = dataDir() + "/frame.png";
    std::string classes = dataDir() + "/classes.txt";
    std::string outDir = ".";
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--image" && hasValue) {
            options.image = argv[++i];
        } else if (arg == "--out-dir" && hasValue) {
            options.outDir = argv[++i];
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
#define NUV_SLOT_NAME(generation, features, ...) #generation,
// Spaces around the slash would show in the names.
// clang-format off
char const* const slotVariants[] = {NUV_SLOTS(NUV_SLOT_NAME, n8/u8, n8/u8)};
// clang-format on
#undef NUV_SLOT_NAME

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

std::string readFile(std::string const& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return in ? text.str() : std::string();
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr,
                     "usage: %s [--image frame.png] [--classes classes.txt] [--out-dir DIR]\n",
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

    nuv::demo::Frame frame{picture, nuv::demo::toImage(picture), classes, slot};
    std::printf("\nFrame %s: %dx%d, %d classes from %s\n", options.image.c_str(), picture.cols,
                picture.rows, classes.size(), options.classes.c_str());
    std::printf("Times are medians per frame: slot 0, slot %d, and OpenCV on one thread.\n", slot);
    cv::setNumThreads(1);

    const std::vector<nuv::demo::Shown> shown = nuv::demo::showEverything(frame);
    for (nuv::demo::Shown const& s : shown) {
        std::printf("\n%s\n", s.title.c_str());
        for (std::string const& fact : s.facts) std::printf("  %s\n", fact.c_str());
        std::printf("  %.0f us, %.0f us; OpenCV %.0f us (%s)\n", s.slot0, s.selected, s.opencv,
                    s.opencvCall.c_str());
        const std::string file = options.outDir + "/nuv_demo_" + s.key + ".png";
        if (!cv::imwrite(file, s.picture)) {
            std::fprintf(stderr, "cannot write %s\n", file.c_str());
            return 1;
        }
    }
    const std::string sheet = options.outDir + "/nuv_demo_sheet.png";
    if (!cv::imwrite(sheet, nuv::demo::contactSheet(shown, slot))) {
        std::fprintf(stderr, "cannot write %s\n", sheet.c_str());
        return 1;
    }
    std::printf("\nWrote nuv_demo_<capability>.png for each and the contact sheet %s\n",
                sheet.c_str());
    return 0;
}
