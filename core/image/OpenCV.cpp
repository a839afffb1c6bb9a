#include <nuv/core/image/OpenCV.h>

namespace nuv::core::image {

OpenCV::OpenCV(Image const& image) : _image(nullptr) {
    ImageInfo const& info = image.info();
    // cvCreateImageHeader raises an OpenCV error for these; a null header is the honest
    // answer for an image that has no IplImage form.
    if (image.isNull() || info.numChannels < 1 || info.numChannels > 4) return;
    _image =
        cvCreateImageHeader(cvSize(static_cast<int>(info.width), static_cast<int>(info.height)),
                            IPL_DEPTH_8U, static_cast<int>(info.numChannels));
    _image->imageSize = static_cast<int>(info.height * image.step());
    _image->widthStep = static_cast<int>(image.step());
    // IplImage has no const pixels; the header is only as writable as the caller makes it.
    _image->imageData = const_cast<char*>(image.constData_s());
    _image->imageDataOrigin = _image->imageData;
}

OpenCV::~OpenCV() {
    if (_image != nullptr) cvReleaseImageHeader(&_image);
}

}  // namespace nuv::core::image
