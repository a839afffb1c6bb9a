/// @file
/// An image handle with value semantics at the cost of a pointer copy.
///
/// Copies share the pixels and the attachments (the region of interest, the overlay lines,
/// the segment list) through one reference-counted implementation; the count is atomic, so
/// distinct handles may live on different threads. Writing is copy-on-write:
///  - data() makes the pixel buffer private to this handle first; constData() never copies.
///  - changing an attachment (setRoi, addLine, setSegmentList ...) affects this handle only:
///    copies taken before keep what they had, and copies taken after get the change.
///
/// Pixels are interleaved, rows top-down and step() bytes apart. Image(ImageInfo) packs the
/// rows; Image(ImageInfo, step) pads them. The buffer starts on a 64-byte boundary, and its
/// content is undefined until written.
#pragma once

#include <nuv/core/Line.h>
#include <nuv/core/List.h>
#include <nuv/core/Roi.h>
#include <nuv/core/image/ImageInfo.h>
#include <nuv/core/image/SegmentList.h>

#include <functional>

namespace nuv::core::image {

/// An image handle with value semantics at the cost of a pointer copy; pixels are copy-on-write.
class Image {
public:
    /// The null image: isNull() is true and info() is all zeros (no channels, FormatNone).
    Image();
    /// A new image with its own packed buffer. Throws std::bad_alloc when the memory cannot
    /// be had, also when the size cannot even be represented (a std::bad_array_new_length).
    explicit Image(ImageInfo const& info);
    /// The same with rows step bytes apart. A step shorter than a row throws
    /// std::invalid_argument.
    Image(ImageInfo const& info, unsigned int step);
    /// An image over pixels the host owns, used in place: rows step bytes apart from pixels,
    /// of which each row's first info.rowBytes() bytes are read. release runs once, on the
    /// thread that drops the last handle sharing these pixels, and not at all if this
    /// constructor throws. A sole handle writes straight into the host's memory through
    /// data(); with the pixels shared, data() first copies them into a buffer of the image's
    /// own, as for any shared buffer. Null pixels give the null image (release runs at once);
    /// a step shorter than a row throws std::invalid_argument.
    Image(unsigned char* pixels, unsigned int step, ImageInfo const& info,
          std::function<void()> release);
    /// Shares the other image's pixels and attachments.
    Image(Image const& other) noexcept;
    /// Takes the other image's pixels and attachments, leaving it null.
    Image(Image&& other) noexcept;
    /// Shares the other image's pixels and attachments.
    Image& operator=(Image const& other) noexcept;
    /// Takes the other image's pixels and attachments.
    Image& operator=(Image&& other) noexcept;
    /// Drops this handle; the last handle frees the pixels or gives them back to the host.
    ~Image();

    /// Valid as long as this handle lives and is not assigned.
    ImageInfo const& info() const;
    /// Distance between the starts of two rows in bytes; 0 for the null image.
    unsigned int step() const;

    /// The first byte of row 0, made private to this handle first. Null for a null image.
    unsigned char* data();
    /// The first byte of row 0 without any copying. Null for a null image.
    unsigned char const* constData() const;
    /// The same addresses as plain char, for IplImage::imageData.
    char* data_s();
    /// The same address as constData(), as plain char.
    char const* constData_s() const;

    /// An image without pixels: default-constructed (attachments do not change that).
    bool isNull() const;

private:
    class Impl;

    /// Makes the implementation private to this handle (sharing the pixels) and returns it;
    /// creates one for the null image.
    Impl& ownImpl();
    /// Drops one reference, the last one deletes.
    static void release(Impl* impl);

    friend Roi getRoi(Image const& image, char const** data);
    friend void setRoi(Image& image, Roi const& roi);
    friend void resetRoi(Image& image);
    friend bool hasRoi(Image const& image);
    friend void addLine(Image& image, Line const& line);
    friend void setLines(Image& image, List<Line> const& lines);
    friend List<Line> lines(Image const& image);
    friend void setSegmentList(Image& image, SegmentList const& segments);
    friend SegmentList segmentList(Image const& image);

    Impl* _impl;
};

/// The region of interest, and through data the address of its first pixel:
/// constData_s() + offset.y * step() + offset.x * numChannels * bytesPerChannel.
/// Without a region set: offset (0, 0) and the image's size, data the buffer's start.
/// A region set past the image's edge is cut to the image here, so that a caller never
/// walks outside the buffer: a region partly outside gives its inside part, one wholly
/// outside gives size 0 at the nearest corner. The null image gives offset (0, 0), size 0
/// and a null data.
Roi getRoi(Image const& image, char const** data);

/// Sets the region of interest as given; getRoi cuts it to the image when asked.
void setRoi(Image& image, Roi const& roi);
/// Back to the whole image.
void resetRoi(Image& image);
/// Whether a region of interest is set on the image.
bool hasRoi(Image const& image);

/// Appends one line to the overlay lines.
void addLine(Image& image, Line const& line);
/// Replaces the overlay lines.
void setLines(Image& image, List<Line> const& lines);
/// The overlay lines, shared with the image until either side writes.
List<Line> lines(Image const& image);

/// Replaces the segment list.
void setSegmentList(Image& image, SegmentList const& segments);
/// The segment list, shared with the image until either side writes.
SegmentList segmentList(Image const& image);

}  // namespace nuv::core::image
