/// @file
/// Straight lines of a one-channel edge image, attached to a copy of it as Line values.
#pragma once

#include <nuv/core/image/Image.h>

namespace nuv::cv {

class HoughTransformImpl;

/// Set the line count, the steps and the threshold, then transform as often as needed. The
/// working buffers are shared by all instances, grow on demand and stay until freeBuffer(),
/// so one thread at a time may use the class as a whole.
class HoughTransform {
public:
    HoughTransform();
    ~HoughTransform();
    HoughTransform(HoughTransform const&) = delete;
    HoughTransform& operator=(HoughTransform const&) = delete;

    /// The most lines one transform may report.
    void setMaxLineCount(int count);
    /// The steps of the rho axis (pixels) and of the theta axis (radians).
    void setDelta(float rho, float theta);
    /// A line needs more votes than this.
    void setThreshold(int threshold);

    /// A copy of the image with the strongest lines of its region attached, strongest first,
    /// each as the segment reaching 1000 pixels either side of its foot point, in region
    /// coordinates and not clipped. Images of another channel count, refused arguments and
    /// a failed allocation are logged and give a copy without lines.
    nuv::core::image::Image transform(nuv::core::image::Image const& image);

    /// Releases the shared buffers; setMaxLineCount must be called again before transform.
    static void freeBuffer();

private:
    HoughTransformImpl* _impl;
};

}  // namespace nuv::cv
