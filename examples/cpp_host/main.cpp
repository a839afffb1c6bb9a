// Segments the frames of a video file or a camera by trained colour classes and prints, per
// frame, each class found with its size and centre.
//
//   segment_frames <video file | camera number> <classes.txt> [frame count]
//
// OpenCV decodes the frames; nuv::opencv::toImage hands each one to the segmenter over the
// decoded pixels themselves, which the program checks and says for every frame.
#include <nuv/cv.h>
#include <nuv/opencv.h>

#include <opencv2/videoio.hpp>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

bool isNumber(std::string const& text) {
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    return !text.empty();
}

nuv::cv::SegmentList readClasses(char const* path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return nuv::cv::segmentListfromString(text.str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s <video file | camera number> <classes.txt> [frames]\n",
                     argv[0]);
        return 2;
    }
    std::string const source = argv[1];
    long const frameCount = argc > 3 ? std::atol(argv[3]) : -1;

    ::cv::VideoCapture capture;
    if (isNumber(source) ? !capture.open(std::atoi(source.c_str())) : !capture.open(source)) {
        std::fprintf(stderr, "cannot open %s\n", source.c_str());
        return 1;
    }
    nuv::cv::SegmentList const classes = readClasses(argv[2]);
    if (classes.size() == 0 || classes.size() > 32) {
        std::fprintf(stderr, "%s holds %d usable classes; 1 to 32 are needed\n", argv[2],
                     classes.size());
        return 1;
    }

    ippInit();  // the fastest bodies this processor runs
    nuv::cv::Segmenter segmenter;
    segmenter.setColorSegments(classes);

    ::cv::Mat frame;
    long n = 0;
    for (; n != frameCount && capture.read(frame); ++n) {
        // The segmenter walks packed rows; decoded frames are, a cut of one would not be.
        if (frame.type() != CV_8UC3 || !frame.isContinuous()) {
            std::fprintf(stderr, "frame %ld is not packed 8-bit BGR\n", n);
            return 1;
        }
        nuv::core::image::Image const image = nuv::opencv::toImage(frame);
        bool const shared = image.constData() == frame.data;
        std::printf("frame %ld: %dx%d, %s\n", n, frame.cols, frame.rows,
                    shared ? "segmented in place (no pixel copied)" : "COPIED");
        if (!shared) return 1;

        // The result shares the frame's pixels too: only the segment list is new.
        nuv::core::image::Image const result = segmenter.doSegmentation(image);
        std::printf("  pixels at %p: frame, image and result alike (%s)\n",
                    static_cast<void const*>(frame.data),
                    result.constData() == frame.data ? "yes" : "no");
        nuv::core::image::SegmentList const found = nuv::core::image::segmentList(result);
        for (auto it = found.constBegin(); it != found.constEnd(); ++it)
            if (it->pixelCount > 0)
                std::printf("  %-8s %7u pixels, centre (%d, %d)\n", it->name.c_str(),
                            it->pixelCount, it->center.x(), it->center.y());
    }
    if (n == 0) {
        std::fprintf(stderr, "no frame could be read from %s\n", source.c_str());
        return 1;
    }
    return 0;
}
