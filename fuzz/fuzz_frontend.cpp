// The front end on arbitrary images: format, size, padded step, region of interest and the
// pixels come from the fuzzer's bytes, and so do the operation and its arguments. A result
// is the null image or one of the documented size; anything else stops the run.
#include "fuzz_images.h"

#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::Vector;
using nuv::fuzz::classesOf;
using nuv::fuzz::formats;
using nuv::fuzz::imageOf;
using nuv::fuzz::Input;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    nuv::cv::init();
    nuv::core::Log::singleton().setSink([](std::string const&) {});
    cv::setNumThreads(0);
    ippInit();
    return 0;
}

namespace {

void require(bool holds, int line) {
    if (holds) return;
    std::fprintf(stderr, "expectation at fuzz_frontend.cpp:%d does not hold\n", line);
    std::abort();
}
#define require(holds) require((holds), __LINE__)
bool sized(Image const& image, unsigned width, unsigned height) {
    return image.info().width == width && image.info().height == height;
}
bool nullOr(Image const& image, unsigned width, unsigned height) {
    return image.isNull() || sized(image, width, height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input in(data, size);
    const int op = in.in(0, 19);
    const Image image = imageOf(in);
    char const* first = nullptr;
    const Roi roi = getRoi(image, &first);
    const unsigned w = roi.size().width(), h = roi.size().height();
    switch (op) {
        case 0: {
            // To its own format (or none) an image is its copyRoi, whole unless three-channel.
            const Image c = nuv::cv::convert(image, formats[in.in(0, 7)]);
            require(nullOr(c, w, h) || sized(c, image.info().width, image.info().height));
            break;
        }
        case 1:
            require(nullOr(nuv::cv::thresholdLT(image, in.in(-300, 300), in.in(-300, 300)), w, h));
            break;
        case 2:
            require(nullOr(nuv::cv::thresholdGT(image, in.in(-300, 300), in.in(-300, 300)), w, h));
            break;
        case 3: {
            Vector<int> lower, upper;
            for (int k = in.in(0, 4); k > 0; --k) lower.append(in.in(-300, 300));
            for (int k = in.in(0, 4); k > 0; --k) upper.append(in.in(-300, 300));
            require(nullOr(nuv::cv::inRange(image, lower, upper), w, h));
            break;
        }
        case 4:
            nuv::cv::mean(image);
            break;
        case 5: {
            Vector<int> low, high;
            nuv::cv::minmax(image, low, high);
            break;
        }
        case 6:
        case 7: {
            const bool border = in.flag();
            const Image e = op == 6 ? nuv::cv::filter::sobelHoriz3x3(image, border)
                                    : nuv::cv::filter::sobelVert3x3(image, border);
            const unsigned sw = border ? w + 2 : image.info().width;
            const unsigned sh = border ? h + 2 : image.info().height;
            // Too small for the mask: the unwritten image of the (bordered) source's size, 0x0
            // where no border could be made (channel counts other than 1 and 3).
            require(e.isNull() || sized(e, sw - 2, sh - 2) || sized(e, sw, sh) || sized(e, 0, 0));
            break;
        }
        case 8:
            nuv::cv::filter::filter(
                image, static_cast<nuv::cv::filter::PredefindedFilter_t>(in.in(-1, 3)), in.flag());
            break;
        case 9: {
            const unsigned kw = in.in(0, 9), kh = in.in(0, 9);
            const nuv::cv::filter::Kernel kernel(kw, kh, in.in(0, 9), in.in(0, 9));
            require(
                nullOr(nuv::cv::filter::replicateBorder(image, kernel), w + kw - 1, h + kh - 1));
            break;
        }
        case 10:
        case 11: {
            const Size mask(in.in(0, 12), in.in(0, 12));
            const Image r =
                op == 10 ? nuv::cv::filter::min(image, mask) : nuv::cv::filter::max(image, mask);
            require(nullOr(r, w - (mask.width() | 1u) + 1, h - (mask.height() | 1u) + 1));
            break;
        }
        case 12:
            require(nullOr(nuv::cv::canny(image, in.in(0, 400), in.in(0, 400)), w, h));
            break;
        case 13: {
            int count = -1;
            const Image labels = nuv::cv::labelmarkers(image, &count);
            require(nullOr(labels, w, h) && count >= 0);
            Vector<Point> centres;
            Vector<int> sizes;
            nuv::cv::labelmarkersinfo(labels, in.in(0, 5), centres, sizes);
            require(centres.size() == sizes.size());
            break;
        }
        case 14: {
            nuv::cv::HoughTransform hough;
            hough.setMaxLineCount(in.in(0, 12));
            hough.setDelta(static_cast<float>(in.in(0, 80)) / 8,
                           static_cast<float>(in.in(0, 40)) / 12);
            hough.setThreshold(in.in(0, 20));
            require(sized(hough.transform(image), image.info().width, image.info().height) ||
                    image.isNull());
            if (in.flag()) nuv::cv::HoughTransform::freeBuffer();
            break;
        }
        case 15: {
            nuv::cv::LineDetector detector;
            detector.setThreshold(in.in(0, 300));
            detector.setSearchStart(in.in(0, 50));
            detector.setSearchHeight(in.in(0, 50));
            Point point;
            detector.findLine(
                image,
                in.flag() ? nuv::cv::LineDetector::Vertical : nuv::cv::LineDetector::Horizontal,
                &point);
            require(point.x() == -1 || (point.x() >= 0 && point.y() >= 0));
            break;
        }
        case 16: {
            // Misfits (a larger or an empty template) are refused by OpenCV, whose exception
            // leaves match as it came, by design.
            nuv::cv::MatchTemplate matcher;
            matcher.setImage(image);
            Image part = image;
            setRoi(part, Roi(Point(in.in(0, 10), in.in(0, 10)), Size(in.in(1, 8), in.in(1, 8))));
            Point point;
            float score = 0;
            try {
                matcher.match(nuv::cv::copyRoi(part), &point, &score);
                require(score >= -1.001f && score <= 1.001f);
            } catch (cv::Exception const&) {
            }
            break;
        }
        case 17: {
            nuv::cv::Segmenter segmenter;
            segmenter.setColorSegments(classesOf(in));
            segmenter.doSegmentation(image);
            break;
        }
        case 18: {
            // Only three-channel images are cut; others come back whole.
            const Image cut = nuv::cv::copyRoi(image);
            require(nullOr(cut, w, h) || sized(cut, image.info().width, image.info().height));
            break;
        }
        default: {
            const Image other = imageOf(in);
            nuv::cv::addition(image, other);
            ::mirror(image, in.in(0, 2));  // other axes are programming errors
            nuv::cv::transpose(image);
            break;
        }
    }
    return 0;
}
