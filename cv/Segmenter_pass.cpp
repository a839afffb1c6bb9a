// The raster pass of the segmenter: classification of each pixel through the mask table,
// cutting rows into runs, and linking runs to the touching runs of the row above.
#include <nuv/cv/Segmenter.h>

#include <nuv/cv/tools.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace nuv::cv {

using nuv::core::image::Image;

namespace {

// The class of a pixel that no class accepts. It differs from every class number, so no run
// continues across such a pixel or across a row end.
constexpr unsigned int noClass = 255;

// Position of the lowest set bit: where several classes accept a pixel, the earliest in the
// configured list wins. The mask is never 0 here.
inline unsigned int lowestClass(std::uint32_t mask) {
    return static_cast<unsigned int>(__builtin_ctz(mask));
}

// Rows are taken as packed: the pass walks width * height pixels of three bytes and never
// looks at the step. An image of fewer channels holds fewer bytes than that walk reads. Its
// bytes are read as they stand and the missing tail as zeros, from a scratch copy, so that a
// wrong format gives a wrong answer and never a read past the buffer.
unsigned char const* packedPixels(Image const& work, int width, int height,
                                  std::vector<unsigned char>& padded) {
    unsigned char const* p = work.constData();
    const std::size_t wanted = std::size_t(3) * width * height;
    // The last row holds its pixels and no more: a host's buffer may end right there.
    const std::size_t held =
        std::size_t(work.step()) * (height - 1) + std::size_t(work.info().numChannels) * width;
    if (held >= wanted) return p;
    padded.assign(wanted, 0);
    std::copy(p, p + held, padded.begin());
    return padded.data();
}

}  // namespace

Image Segmenter::doSegmentation(Image const& image) {
    // Only the null image is turned away. Other channel counts are read as three-byte pixels
    // all the same: the caller hands in three-channel images.
    if (image.isNull() && image.info().numChannels != 3) return Image();

    Image work = copyRoi(image);
    // Read before any resizing: a frame of a new size still runs with the minimum run chosen
    // for the size before, and the new value counts from the next frame on.
    const unsigned int minRun = _minRunLength;
    const int width = static_cast<int>(work.info().width);
    const int height = static_cast<int>(work.info().height);
    if (width != _width || height != _height) setupSegmentation(width, height);

    if (_segmentCount == 0) {
        nuv::core::image::setSegmentList(work, nuv::core::image::SegmentList());
        return Image(work);
    }

    // A frame without pixels has no runs, and its cell array may have no element to build on.
    unsigned int cellCount = 0;
    if (width > 0 && height > 0) {
        std::vector<unsigned char> padded;
        cellCount = encodeRuns(packedPixels(work, width, height, padded), width, height, minRun);
    }
    nuv::core::image::setSegmentList(work, collectRegions(cellCount));
    return Image(work);
}

// Defined inline: the pass is its only caller, and its counters stay in registers.
inline unsigned int Segmenter::encodeRuns(unsigned char const* p, int width, int height,
                                          unsigned int minRun) {
    for (int x = 0; x < width; ++x) _rowCells[x] = -1;
    RunPass pass{0, _cells, 0, minRun};
    pass.current->start.setX(0);
    pass.current->start.setY(0);
    pass.current->length = 0;
    for (int row = 0; row < height; ++row) p = encodeRow(p, row, width, pass);

    // The current cell is empty after the last row's end, so the last stored run of the image
    // takes no part in any region.
    long long cellCount = pass.cellIndex;
    if (pass.current->length == 0) --cellCount;
    return cellCount < 0 ? 0u : static_cast<unsigned int>(cellCount);
}

inline unsigned char const* Segmenter::encodeRow(unsigned char const* p, int row, int width,
                                                 RunPass& pass) {
    std::uint32_t const(*const table)[3] = _channelTable;
    int* const rowCells = _rowCells;
    unsigned int previous = noClass;
    // The open run's length is kept here and written to the cell when it is flushed.
    unsigned int runLength = 0;

    auto pixel = [&](std::uint32_t mask, int column) {
        if (mask == 0) {
            // The open run is not flushed here: nothing can extend it any more, and the next
            // classified pixel or the row's end closes it.
            rowCells[column] = -1;
            previous = noClass;
            return;
        }
        const unsigned int segment = lowestClass(mask);
        if (segment == previous) {
            ++runLength;
            return;
        }
        pass.current->length = static_cast<std::uint16_t>(runLength);
        flushCurrentCell(pass.cellIndex, &pass.current, pass.minRun, pass.linkCount);
        pass.current->start.setX(column);
        pass.current->start.setY(row);
        pass.current->label = -1;
        pass.current->segment = static_cast<std::uint8_t>(segment);
        runLength = 1;
        previous = segment;
    };

    // Four pixels a turn: most of a frame is background or the inside of a run, and a block
    // of either needs one test instead of four.
    int column = 0;
    for (; column + 4 <= width; column += 4, p += 12) {
        const std::uint32_t m0 = table[p[0]][0] & table[p[1]][1] & table[p[2]][2];
        const std::uint32_t m1 = table[p[3]][0] & table[p[4]][1] & table[p[5]][2];
        const std::uint32_t m2 = table[p[6]][0] & table[p[7]][1] & table[p[8]][2];
        const std::uint32_t m3 = table[p[9]][0] & table[p[10]][1] & table[p[11]][2];
        if ((m0 | m1 | m2 | m3) == 0) {
            rowCells[column] = -1;
            rowCells[column + 1] = -1;
            rowCells[column + 2] = -1;
            rowCells[column + 3] = -1;
            previous = noClass;
            continue;
        }
        if (m0 == m1 && m0 == m2 && m0 == m3 && lowestClass(m0) == previous) {
            runLength += 4;
            continue;
        }
        pixel(m0, column);
        pixel(m1, column + 1);
        pixel(m2, column + 2);
        pixel(m3, column + 3);
    }
    for (; column < width; ++column, p += 3)
        pixel(table[p[0]][0] & table[p[1]][1] & table[p[2]][2], column);
    pass.current->length = static_cast<std::uint16_t>(runLength);
    flushCurrentCell(pass.cellIndex, &pass.current, pass.minRun, pass.linkCount);
    pass.current->start.setX(0);
    pass.current->start.setY(row + 1);
    pass.current->label = -1;
    pass.current->length = 0;
    return p;
}

void Segmenter::flushCurrentCell(unsigned int& cellIndex, rlCell** currentCell, unsigned int minRun,
                                 int& linkCount) {
    rlCell* const cell = *currentCell;
    const int x0 = cell->start.x();
    const int length = cell->length;

    if (minRun > cell->length) {
        // A run shorter than the minimum is dropped and connects nothing, in this row or the
        // next: a bridge thinner than the minimum run separates regions. The cell is reused.
        for (int i = 0; i < length; ++i) _rowCells[x0 + i] = -1;
        return;
    }

    // Each stored run of the row above that shares a column with this one is visited once,
    // from left to right; only runs of the same class are linked.
    for (int i = 0; i < length;) {
        const int above = _rowCells[x0 + i];
        if (above == -1) {
            ++i;
            continue;
        }
        rlCell const& aboveCell = _cells[above];
        if (aboveCell.segment == cell->segment) connectCells(cell, above, linkCount);
        i = aboveCell.start.x() + aboveCell.length - x0;
    }

    for (int i = 0; i < length; ++i) _rowCells[x0 + i] = static_cast<int>(cellIndex);
    ++*currentCell;
    ++cellIndex;
}

void Segmenter::connectCells(rlCell* cell, int const& aboveIndex, int& linkCount) {
    const std::int32_t r = cell->label;
    const std::int32_t p = _cells[aboveIndex].label;

    if (r == -1) {
        cell->label = p == -1 ? aboveIndex : p;
    } else if (p == -1) {
        _cells[aboveIndex].label = r;
    } else if (r > p) {
        // Only the node r is re-pointed; the root it hung from before stays a root. There is no
        // path compression and no second merge, so a shape of intricate outline may come out
        // as more than one region.
        std::int32_t q = p;
        while (_cells[q].label != -1) q = _cells[q].label;
        _cells[r].label = q;
        cell->label = q;
    } else if (r < p) {
        std::int32_t q = r;
        while (_cells[q].label != -1) q = _cells[q].label;
        _cells[p].label = q;
        _cells[aboveIndex].label = q;
    } else {
        return;
    }
    ++linkCount;
}

}  // namespace nuv::cv
