/// @file
/// An IplImage header over the pixels of an Image, for the OpenCV functions that take one.
#pragma once

#include <nuv/core/image/Image.h>

#include <opencv2/core/core_c.h>

namespace nuv::core::image {

/// An IplImage header over the pixels of an Image, for the OpenCV functions that take one.
class OpenCV {
public:
    /// The header borrows the pixels: it spans the whole image, whatever its region of
    /// interest, with the image's step, 8-bit depth and its channel count, and the image must
    /// outlive the adapter. It points at constData(), so it never copies a shared buffer;
    /// whoever lets OpenCV write through it must have made the buffer private with data()
    /// first. An image OpenCV cannot describe (the null image, a channel count outside 1..4)
    /// gives a null header.
    explicit OpenCV(Image const& image);
    /// Frees the header, never the pixels.
    ~OpenCV();
    /// The header is owned once: no copies.
    OpenCV(OpenCV const&) = delete;
    /// The header is owned once: no assignment.
    OpenCV& operator=(OpenCV const&) = delete;

    /// The header, or null.
    operator IplImage*() { return _image; }

private:
    IplImage* _image;
};

}  // namespace nuv::core::image
