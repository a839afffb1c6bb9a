#include <nuv/cv/canny.h>

#include <nuv/core/Log.h>

#include <opencv2/imgproc/imgproc_c.h>

namespace nuv::cv {

using nuv::core::image::Image;

namespace {

// A header over `rows` rows of one-byte pixels from `first`, `step` bytes apart. It spans
// the region only (the image adapter spans the whole image) and owns nothing.
IplImage headerOver(char* first, int width, int rows, int step) {
    IplImage header = cvIplImage();  // zeroed, with its own size
    header.nChannels = 1;
    header.depth = IPL_DEPTH_8U;
    header.dataOrder = 0;
    header.width = width;
    header.height = rows;
    header.imageSize = step * rows;
    header.imageData = header.imageDataOrigin = first;
    header.widthStep = step;
    return header;
}

}  // namespace

Image canny(Image const& source, unsigned int threshold1, unsigned int threshold2) {
    if (source.info().numChannels != 1) {
        nuv::core::Log::singleton()
            << "nuv::cv::canny works only on single channel images" << nuv::core::endl;
        return Image();
    }
    char const* first = nullptr;
    const nuv::core::Roi roi = nuv::core::image::getRoi(source, &first);
    nuv::core::image::ImageInfo info = source.info();
    info.width = roi.size().width();
    info.height = roi.size().height();
    Image result(info);
    const int width = static_cast<int>(info.width), height = static_cast<int>(info.height);
    // cvCanny only reads its source.
    IplImage in =
        headerOver(const_cast<char*>(first), width, height, static_cast<int>(source.step()));
    IplImage out = headerOver(result.data_s(), width, height, static_cast<int>(result.step()));
    cvCanny(&in, &out, threshold1, threshold2, 3);
    return result;
}

}  // namespace nuv::cv
