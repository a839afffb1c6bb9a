/// @file
/// Colour segmentation by trained classes: finds, per class, the largest connected region of
/// a three-channel image and attaches the result to the image as segment records.
///
/// The configured classes are compiled into a table of 32-bit masks, one per channel value and
/// channel, so that one pixel is classified by three look-ups and two ANDs however many classes
/// there are. Each row is then cut into runs of one class, runs that share a column with a run
/// of the same class in the row above are linked, and the chains of runs become regions.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Point.h>
#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>
#include <nuv/core/image/SegmentList.h>
#include <nuv/cv/SegmentList.h>

#include <cstdint>
#include <string>

namespace nuv::cv {

/// Colour segmentation by trained classes: per class the largest connected region of a
/// three-channel image.
class Segmenter {
public:
    /// One horizontal run of pixels of one class.
    struct rlCell {
        /// -1 while the cell is the root of its chain, otherwise the index of its parent, which
        /// is always lower than its own; after the region pass, the region number.
        std::int32_t label;
        /// Run length in pixels, so rows wider than 65535 pixels are not supported.
        std::uint16_t length;
        /// Bit position of the class in the table.
        std::uint8_t segment;
        /// Column and row of the run's first pixel.
        nuv::core::Point start;
    };

    Segmenter();
    ~Segmenter();
    /// The object owns its run arrays.
    Segmenter(Segmenter const&) = delete;
    Segmenter& operator=(Segmenter const&) = delete;

    /// Compiles the classes into the table. Only the first 32 take part; a channel a class does
    /// not use accepts every value. Pending dilation is not applied here: train first. Should
    /// an allocation fail (std::bad_alloc), the classes stay as they were.
    void setColorSegments(SegmentList const& list);
    /// No class is active any more; the names and colours stay but are not read.
    void resetColorSegments();
    /// One default record per active class, with its colour and name: the result for an image
    /// in which nothing was found.
    nuv::core::image::SegmentList createSegmentList() const;
    /// Sizes the run arrays for frames of this size and chooses the minimum run for the frames
    /// after the next one (4 for frames wider than 349 pixels, else 2). A product width * height
    /// that does not fit a signed 32-bit number throws std::bad_array_new_length, and a failed
    /// allocation std::bad_alloc; the old arrays are gone by then, and the next frame sizes
    /// them again.
    void setupSegmentation(int width, int height);

    /// Segments the region of interest of a three-channel image and returns it with one segment
    /// record per active class attached, in configured order; a class that was not found has
    /// pixelCount 0. Only the null image is refused (a null image comes back). The pixels are
    /// read as width * height packed three-byte pixels, whatever the image's step or channel
    /// count, so the caller hands in packed three-channel images or regions of them. An image
    /// too small for that walk is read as far as its buffer goes, the rest as zeros.
    nuv::core::image::Image doSegmentation(nuv::core::image::Image const& image);

    /// The steps of the run encoding, called by doSegmentation on a class change and at each
    /// row's end: stores or drops the current run and links it to the runs above it.
    void flushCurrentCell(unsigned int& cellIndex, rlCell** currentCell, unsigned int minRun,
                          int& linkCount);
    /// Links the run to the touching run of the same class at aboveIndex in the row above.
    void connectCells(rlCell* cell, int const& aboveIndex, int& linkCount);

private:
    // The raster pass in its steps: each row of packed three-byte pixels cut into runs that are
    // stored and linked, returning the number of cells that take part in regions.
    struct RunPass {
        unsigned int cellIndex;  // the next cell to store
        rlCell* current;         // the cell being filled
        int linkCount;
        unsigned int minRun;
    };
    unsigned int encodeRuns(unsigned char const* pixels, int width, int height,
                            unsigned int minRun);
    unsigned char const* encodeRow(unsigned char const* pixels, int row, int width, RunPass& pass);

    /// The regions of the first cellCount cells, the largest per class kept, as the result
    /// list in configured order.
    nuv::core::image::SegmentList collectRegions(unsigned int cellCount);

    rlCell* _cells;
    int* _rowCells;
    unsigned int _minRunLength;
    unsigned int _segmentCount;
    /// Entry [v][c] has bit s set when class s accepts value v in channel c.
    std::uint32_t _channelTable[256][3];
    nuv::core::Vector<nuv::core::Color> _meanColors;
    nuv::core::Vector<std::string> _names;
    int _width;
    int _height;
};

}  // namespace nuv::cv
