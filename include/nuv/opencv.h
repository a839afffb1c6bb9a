/// @file
/// Frames held as cv::Mat and library images over the same pixels, both ways, without copying.
///
/// Header-only, so that only the hosts that include it need OpenCV's headers; it uses nothing
/// of OpenCV beyond opencv_core, which nuv::core already brings along.
///
///   toImage(mat)         an Image over the Mat's pixels; the Mat's count keeps them alive.
///   toMat(image)         a Mat over the Image's pixels, made private to the image first, so
///                        that writes through the Mat show in that image.
///   toConstMat(image)    a Mat over the Image's pixels as they are, shared or not: to read.
///   roiRect(image)       the image's region of interest as a cv::Rect, for toMat(image)(rect).
#pragma once

#include <nuv/core/image/Image.h>
#include <nuv/core/image/ImageInfo.h>

#include <opencv2/core/mat.hpp>

#include <climits>
#include <cstddef>

namespace nuv::opencv {

/// An Image over the pixels of an 8-bit Mat: no pixel is copied. The image holds a copy of the
/// Mat header, so the pixels live as long as the last handle of the image, whatever happens to
/// the caller's Mat. The format is the one given, or with FormatNone the one the channel count
/// implies: 1 Gray, 3 BGR, 4 BGRA.
///
/// Writing follows the image's copy-on-write rule: a sole handle's data() is the Mat's own
/// memory, so the library writes into the host's frame (and every Mat sharing it); once the
/// image is shared, data() first copies into a buffer of the image's own and the Mat keeps
/// its pixels. Clone the Mat first where the frame must stay untouched.
///
/// The null image comes back for what an Image cannot describe: an empty Mat, a depth other
/// than CV_8U, more than two dimensions, a channel count with no format (2, or more than 4),
/// a given format whose channel count differs from the Mat's, a row step above UINT_MAX.
/// Rows need not be contiguous (a Mat cut from a larger one is taken with its step).
inline nuv::core::image::Image toImage(
    ::cv::Mat const& mat, nuv::core::image::Format format = nuv::core::image::FormatNone) {
    using namespace nuv::core::image;
    if (mat.empty() || mat.dims != 2 || mat.depth() != CV_8U || mat.step[0] > UINT_MAX)
        return Image();
    if (format == FormatNone) {
        static Format const byChannels[] = {FormatNone, Gray, FormatNone, BGR, BGRA};
        format = mat.channels() <= 4 ? byChannels[mat.channels()] : FormatNone;
    }
    ImageInfo const info(static_cast<unsigned>(mat.cols), static_cast<unsigned>(mat.rows), format);
    if (format == FormatNone || info.numChannels != static_cast<unsigned>(mat.channels()))
        return Image();
    return Image(mat.data, static_cast<unsigned>(mat.step[0]), info,
                 [keep = mat]() mutable { keep.release(); });
}

namespace detail {

/// Gives the Mats over an image their reference count: each such Mat's UMatData carries a heap
/// copy of the image handle in userdata, and OpenCV calls deallocate when the last Mat sharing
/// that UMatData goes, which drops the handle. A Mat over an image that is later re-created
/// with another size (cv::Mat::create, as OpenCV functions do for their outputs) gets fresh
/// memory from OpenCV's own allocator.
class ImageAllocator : public ::cv::MatAllocator {
public:
    /// New memory from OpenCV's own allocator, for a Mat re-created with another size.
    ::cv::UMatData* allocate(int dims, int const* sizes, int type, void* data, std::size_t* step,
                             ::cv::AccessFlag flags, ::cv::UMatUsageFlags usage) const override {
        return ::cv::Mat::getStdAllocator()->allocate(dims, sizes, type, data, step, flags, usage);
    }
    /// Allocation of existing data, left to OpenCV's own allocator.
    bool allocate(::cv::UMatData* data, ::cv::AccessFlag flags,
                  ::cv::UMatUsageFlags usage) const override {
        return ::cv::Mat::getStdAllocator()->allocate(data, flags, usage);
    }
    /// Drops the image handle of the last Mat sharing the pixels.
    void deallocate(::cv::UMatData* data) const override {
        delete static_cast<nuv::core::image::Image*>(data->userdata);
        delete data;
    }

    /// Never destroyed, so that a Mat outliving static destruction still finds it.
    static ImageAllocator const* instance() {
        static ImageAllocator const* const allocator = new ImageAllocator;
        return allocator;
    }
};

/// A Mat header over pixels of the image, holding a copy of the handle; the empty Mat for an
/// image OpenCV cannot describe this way.
inline ::cv::Mat matOver(nuv::core::image::Image const& image, unsigned char* pixels) {
    nuv::core::image::ImageInfo const& info = image.info();
    if (!pixels || info.bytesPerChannel != 1 || info.numChannels < 1 || info.numChannels > 4 ||
        info.width > INT_MAX || info.height > INT_MAX)
        return ::cv::Mat();
    ::cv::Mat mat(static_cast<int>(info.height), static_cast<int>(info.width),
                  CV_8UC(static_cast<int>(info.numChannels)), pixels, image.step());
    ImageAllocator const* allocator = ImageAllocator::instance();
    ::cv::UMatData* u = new ::cv::UMatData(allocator);
    u->data = u->origdata = pixels;
    u->size = static_cast<std::size_t>(image.step()) * info.height;
    u->flags = ::cv::UMatData::USER_ALLOCATED;
    u->userdata = new nuv::core::image::Image(image);
    u->refcount = 1;
    mat.allocator = const_cast<ImageAllocator*>(allocator);
    mat.u = u;
    return mat;
}

}  // namespace detail

/// A CV_8UC<channels> Mat over the whole image (its width, height and step, whatever its region
/// of interest), for 8-bit images of 1 to 4 channels; the empty Mat otherwise. No pixel is
/// copied unless the image shares its buffer: toMat calls image.data() first, so the buffer is
/// the image's own and writes through the Mat show in `image`. The Mat keeps the pixels alive
/// after the image is gone. They stay one buffer until either side's copy-on-write parts them:
/// a later data() of `image` while the Mat lives (a second toMat among them) moves the image to
/// a copy of its own, and the Mat keeps the earlier buffer.
inline ::cv::Mat toMat(nuv::core::image::Image& image) {
    return detail::matOver(image, image.data());
}
/// The same for an image the caller no longer needs, such as a function's result.
inline ::cv::Mat toMat(nuv::core::image::Image&& image) {
    return detail::matOver(image, image.data());
}

/// A Mat over the image's pixels as constData() gives them: never a copy, but the buffer may be
/// shared with other handles, so the Mat is for reading only. Writing through it would change
/// every image sharing the buffer.
inline ::cv::Mat toConstMat(nuv::core::image::Image const& image) {
    return detail::matOver(image, const_cast<unsigned char*>(image.constData()));
}

/// The region of interest as getRoi cuts it to the image: toMat(image)(roiRect(image)) is the
/// region alone, still over the same pixels.
inline ::cv::Rect roiRect(nuv::core::image::Image const& image) {
    char const* first = nullptr;
    nuv::core::Roi const roi = nuv::core::image::getRoi(image, &first);
    return ::cv::Rect(roi.offset().x(), roi.offset().y(), static_cast<int>(roi.size().width()),
                      static_cast<int>(roi.size().height()));
}

}  // namespace nuv::opencv
