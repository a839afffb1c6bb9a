#include <nuv/cv/HoughTransform.h>

#include <nuv/core/Line.h>
#include <nuv/core/Log.h>
#include <nuv/primitives.h>

#include "cv/region.h"

#include <cmath>

namespace nuv::cv {

using nuv::core::Log;
using nuv::core::image::Image;

class HoughTransformImpl {
public:
    // The new buffer is had before the old one goes, so a failed allocation leaves the
    // instance and the shared buffer as they were.
    void setMaxLineCount(int count) {
        if (count > _lineBufferSize) {
            IppiRhoTheta* grown = new IppiRhoTheta[count];
            delete[] _lineBuffer;
            _lineBuffer = grown;
            _lineBufferSize = count;
        }
        _maxLineCount = count;
    }
    void setDelta(float rho, float theta) { _delta = {rho, theta}; }
    void setThreshold(int threshold) { _threshold = threshold; }
    Image transform(Image const& image);
    static void freeBuffer() {
        ippsFree(_buffer);
        _buffer = nullptr;
        _bufferSize = 0;
        delete[] _lineBuffer;
        _lineBuffer = nullptr;
        _lineBufferSize = 0;
    }

private:
    IppiRhoTheta _delta{0.0f, 0.0f};
    int _maxLineCount = 0;
    int _threshold = 0;

    // Shared by all instances: the primitive's scratch and its result lines.
    static Ipp8u* _buffer;
    static int _bufferSize;
    static IppiRhoTheta* _lineBuffer;
    static int _lineBufferSize;
};

Ipp8u* HoughTransformImpl::_buffer = nullptr;
int HoughTransformImpl::_bufferSize = 0;
IppiRhoTheta* HoughTransformImpl::_lineBuffer = nullptr;
int HoughTransformImpl::_lineBufferSize = 0;

namespace {

// The segment from 1000 pixels before the line's foot point to 1000 after it, in float as
// the primitive gives rho and theta, truncated to whole pixels.
nuv::core::Line lineOf(IppiRhoTheta line) {
    const float c = static_cast<float>(std::cos(static_cast<double>(line.theta)));
    const float s = static_cast<float>(std::sin(static_cast<double>(line.theta)));
    const float x0 = c * line.rho, y0 = s * line.rho;
    const float reach = 1000.0f;
    const float ax = -s * reach + x0, ay = c * reach + y0;
    const float bx = s * reach + x0, by = y0 - c * reach;
    return nuv::core::Line(static_cast<int>(ax), static_cast<int>(ay), static_cast<int>(bx),
                           static_cast<int>(by));
}

void logInvalidArguments() {
    Log::singleton() << "nuv::cv::HoughtTransform::transform: invalid arguments" << nuv::core::endl;
}

}  // namespace

Image HoughTransformImpl::transform(Image const& image) {
    if (image.info().numChannels != 1) {
        Log::singleton() << "nuv::cv::HoughtTransform::transform: only binary images accepted"
                         << nuv::core::endl;
        return image;
    }
    const Region region(image);
    int size = 0;
    if (ippiHoughLineGetSize_8u_C1R(region.size, _delta, _maxLineCount, &size) != ippStsNoErr) {
        logInvalidArguments();
        return image;
    }
    if (size > _bufferSize) {
        ippsFree(_buffer);
        _buffer = ippsMalloc_8u(size);
        if (_buffer == nullptr) {
            _bufferSize = 0;
            Log::singleton() << "nuv::cv::HoughtTransform::transform: not enough memory"
                             << nuv::core::endl;
            return image;
        }
        _bufferSize = size;
    }
    // A count above what the shared line buffer holds was kept from before freeBuffer, while
    // another instance grew the buffer less (or not at all): the primitive would write past
    // it. Such a call is refused as the primitive refuses a missing buffer.
    if (_maxLineCount > _lineBufferSize) {
        logInvalidArguments();
        return image;
    }
    Image result = image;
    int count = 0;
    if (ippiHoughLine_8u32f_C1R(region.data, region.step, region.size, _delta, _threshold,
                                _lineBuffer, _maxLineCount, &count, _buffer) != ippStsNoErr) {
        logInvalidArguments();
        return image;
    }
    for (int k = 0; k < count; ++k) addLine(result, lineOf(_lineBuffer[k]));
    return result;
}

HoughTransform::HoughTransform() : _impl(new HoughTransformImpl) {}
HoughTransform::~HoughTransform() {
    delete _impl;
}
void HoughTransform::setMaxLineCount(int count) {
    _impl->setMaxLineCount(count);
}
void HoughTransform::setDelta(float rho, float theta) {
    _impl->setDelta(rho, theta);
}
void HoughTransform::setThreshold(int threshold) {
    _impl->setThreshold(threshold);
}
Image HoughTransform::transform(Image const& image) {
    return _impl->transform(image);
}
void HoughTransform::freeBuffer() {
    HoughTransformImpl::freeBuffer();
}

}  // namespace nuv::cv
