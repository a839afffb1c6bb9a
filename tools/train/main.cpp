// Trains colour classes for the segmenter from a picture: the pixels of a rectangle (or of
// the non-zero pixels of a mask picture) go through Segment::addColor, a chosen dilation
// widens each channel's accepted values over the noise that training did not see, and the
// class list is written in its text form.
//
//   nuv_train --image frame.png --class ball:140,270,60,60 [--class NAME:mask.png ...]
//             [--dilate 6] [--out classes.txt]
//
// Channels are the picture's bytes in order (B, G, R for a decoded PNG), so a class trained
// here matches frames in the same byte order.
#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct ClassSource {
    std::string name;
    cv::Rect rect;
    std::string maskFile;  // used instead of the rectangle when not empty
};

bool parseClass(std::string const& text, ClassSource& source) {
    const auto colon = text.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    source.name = text.substr(0, colon);
    const std::string where = text.substr(colon + 1);
    int x, y, w, h;
    char end;
    if (std::sscanf(where.c_str(), "%d,%d,%d,%d%c", &x, &y, &w, &h, &end) == 4) {
        source.rect = cv::Rect(x, y, w, h);
        return w > 0 && h > 0;
    }
    source.maskFile = where;
    return !where.empty();
}

// Every selected pixel of the picture, channel 0 as the colour's r and so on.
int train(nuv::cv::Segment& segment, cv::Mat const& picture, cv::Mat const& selected) {
    int count = 0;
    for (int y = 0; y < picture.rows; ++y)
        for (int x = 0; x < picture.cols; ++x) {
            if (!selected.at<uchar>(y, x)) continue;
            const cv::Vec3b p = picture.at<cv::Vec3b>(y, x);
            nuv::core::Color color;
            color.setR(p[0]);
            color.setG(p[1]);
            color.setB(p[2]);
            segment.addColor(color);
            ++count;
        }
    return count;
}

int usage(char const* program) {
    std::fprintf(stderr,
                 "usage: %s --image PICTURE --class NAME:x,y,w,h|NAME:MASK.png [--class ...]\n"
                 "          [--dilate N] [--out FILE]\n",
                 program);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string imageFile, outFile = "classes.txt";
    std::vector<ClassSource> sources;
    int dilate = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 >= argc) return usage(argv[0]);
        const std::string value = argv[++i];
        if (arg == "--image") {
            imageFile = value;
        } else if (arg == "--out") {
            outFile = value;
        } else if (arg == "--dilate") {
            dilate = std::atoi(value.c_str());
        } else if (arg == "--class") {
            ClassSource source;
            if (!parseClass(value, source)) return usage(argv[0]);
            sources.push_back(source);
        } else {
            return usage(argv[0]);
        }
    }
    if (imageFile.empty() || sources.empty()) return usage(argv[0]);
    if (sources.size() > 32) {
        std::fprintf(stderr, "the segmenter takes at most 32 classes\n");
        return 2;
    }

    const cv::Mat picture = cv::imread(imageFile, cv::IMREAD_COLOR);
    if (picture.empty()) {
        std::fprintf(stderr, "cannot read %s\n", imageFile.c_str());
        return 1;
    }

    nuv::cv::SegmentList list;
    for (ClassSource const& source : sources) {
        cv::Mat selected;
        if (source.maskFile.empty()) {
            selected = cv::Mat::zeros(picture.size(), CV_8U);
            const cv::Rect inside = source.rect & cv::Rect(0, 0, picture.cols, picture.rows);
            selected(inside).setTo(255);
        } else {
            selected = cv::imread(source.maskFile, cv::IMREAD_GRAYSCALE);
            if (selected.size() != picture.size()) {
                std::fprintf(stderr, "mask %s must be a grey picture of the image's size\n",
                             source.maskFile.c_str());
                return 1;
            }
        }
        nuv::cv::Segment segment;
        segment.setName(source.name);
        const int pixels = train(segment, picture, selected);
        if (pixels == 0) {
            std::fprintf(stderr, "class %s selects no pixel\n", source.name.c_str());
            return 1;
        }
        for (unsigned channel = 0; channel < 3; ++channel) segment.setDilate(channel, dilate);
        segment.applyDilation();
        const nuv::core::Color mean = segment.meanColor();
        std::printf("%-10s %7d pixels, mean (%d, %d, %d)\n", source.name.c_str(), pixels, mean.r(),
                    mean.g(), mean.b());
        list.append(segment);
    }

    std::ofstream out(outFile);
    out << nuv::cv::toString(list) << '\n';
    if (!out) {
        std::fprintf(stderr, "cannot write %s\n", outFile.c_str());
        return 1;
    }
    std::printf("wrote %d classes to %s\n", list.size(), outFile.c_str());
    return 0;
}
