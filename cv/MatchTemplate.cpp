#include <nuv/cv/MatchTemplate.h>

#include <nuv/core/image/OpenCV.h>
#include <nuv/cv/colorconversion.h>

#include <opencv2/core/core_c.h>
#include <opencv2/imgproc/imgproc_c.h>

#include <cstring>

namespace {

// A template larger than the image has no map. OpenCV's own assertion says so, raised before
// cvCreateImage, whose failure would leave its header allocated.
void requireMapSize(CvSize size) {
    CV_Assert(size.width > 0 && size.height > 0);
}

}  // namespace

namespace nuv::cv {

using nuv::core::Point;
using nuv::core::image::Image;

class MatchTemplateImpl {
public:
    ~MatchTemplateImpl() {
        if (_result != nullptr) cvReleaseImage(&_result);
    }
    void setImage(Image const& image) { _image = image; }
    void match(Image const& templateImage, Point* point, float* value);

private:
    // The score map of the last call, one 32-bit float per position of the template.
    IplImage* _result = nullptr;
    Image _image;
};

void MatchTemplateImpl::match(Image const& templateImage, Point* point, float* value) {
    if (_image.isNull() || templateImage.isNull()) {
        *point = Point(0, 0);
        *value = 0.0f;
        return;
    }
    const Image a = convert(_image, nuv::core::image::RGB);
    const Image t = convert(templateImage, nuv::core::image::RGB);
    nuv::core::image::OpenCV image(a), pattern(t);
    IplImage* in = image;
    IplImage* tp = pattern;
    const CvSize size = cvSize(in->width - tp->width + 1, in->height - tp->height + 1);
    requireMapSize(size);
    if (_result != nullptr && _result->width == size.width && _result->height == size.height) {
        std::memset(_result->imageData, 0, static_cast<std::size_t>(_result->imageSize));
    } else {
        if (_result != nullptr) cvReleaseImage(&_result);
        _result = cvCreateImage(size, IPL_DEPTH_32F, 1);
    }
    cvMatchTemplate(in, tp, _result, CV_TM_CCOEFF_NORMED);
    double minimum = 0, maximum = 0;
    CvPoint minAt, maxAt;
    cvMinMaxLoc(_result, &minimum, &maximum, &minAt, &maxAt, nullptr);
    *value = static_cast<float>(maximum);
    *point = Point(maxAt.x, maxAt.y);
}

MatchTemplate::MatchTemplate() : _impl(new MatchTemplateImpl) {}
MatchTemplate::~MatchTemplate() {
    delete _impl;
}
void MatchTemplate::setImage(Image const& image) {
    _impl->setImage(image);
}
void MatchTemplate::match(Image const& templateImage, Point* point, float* value) {
    _impl->match(templateImage, point, value);
}

}  // namespace nuv::cv
