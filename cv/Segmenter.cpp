// Segmenter set-up: compiling the classes into the mask table and sizing the run arrays.
#include <nuv/cv/Segmenter.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace nuv::cv {

using nuv::core::Color;

namespace {

// One bit per class in a 32-bit mask.
constexpr unsigned int maxSegments = 32;

}  // namespace

Segmenter::Segmenter()
    : _cells(nullptr),
      _rowCells(nullptr),
      // A new object has not been sized yet; the first frame runs with this value.
      _minRunLength(4),
      _segmentCount(0),
      _channelTable(),
      _width(0),
      _height(0) {}

Segmenter::~Segmenter() {
    delete[] _cells;
    delete[] _rowCells;
}

void Segmenter::setColorSegments(SegmentList const& list) {
    std::memset(_channelTable, 0, sizeof(_channelTable));
    const unsigned int size = static_cast<unsigned int>(list.size());
    _segmentCount = size > maxSegments ? maxSegments : size;
    if (_segmentCount == 0) return;

    _meanColors.clear();
    _meanColors.resize(static_cast<int>(_segmentCount));
    _names.resize(static_cast<int>(_segmentCount));

    unsigned int s = 0;
    for (auto it = list.constBegin(); it != list.constEnd() && s < _segmentCount; ++it, ++s) {
        const std::uint32_t bit = std::uint32_t(1) << s;
        for (unsigned int c = 0; c < 3; ++c) {
            // A channel the class does not look at accepts every value, whatever its index
            // holds.
            const bool used = it->channelUsed(c);
            auto const& index = it->colorIndex(c);
            for (unsigned int v = 0; v < 256; ++v)
                if (!used || index.at(static_cast<unsigned char>(v))) _channelTable[v][c] |= bit;
        }
        _meanColors[static_cast<int>(s)] = it->meanColor();
        _names[static_cast<int>(s)] = it->name();
    }
}

void Segmenter::resetColorSegments() {
    _segmentCount = 0;
    std::memset(_channelTable, 0, sizeof(_channelTable));
}

nuv::core::image::SegmentList Segmenter::createSegmentList() const {
    nuv::core::image::SegmentList result;
    for (unsigned int s = 0; s < _segmentCount; ++s) {
        nuv::core::image::Segment segment;
        segment.color = _meanColors.value(static_cast<int>(s));
        segment.name = _names.value(static_cast<int>(s));
        result.append(segment);
    }
    return result;
}

void Segmenter::setupSegmentation(int width, int height) {
    delete[] _cells;
    _cells = nullptr;
    delete[] _rowCells;
    _rowCells = nullptr;

    _width = width;
    _height = height;

    // The product wraps as a 32-bit signed number would; a size that does not fit is refused
    // rather than allocated short.
    const std::int32_t cellCount = static_cast<std::int32_t>(static_cast<std::uint32_t>(width) *
                                                             static_cast<std::uint32_t>(height));
    if (cellCount < 0 || width < 0) throw std::bad_array_new_length();
    // One cell per pixel: more runs than pixels cannot exist, so the pixel loop never checks.
    _cells = new rlCell[static_cast<std::size_t>(cellCount)];
    _rowCells = new int[static_cast<std::size_t>(width)];

    // Wide frames get a longer minimum run, so that noise does not split large objects into
    // many small runs. It counts from the frame after this one.
    _minRunLength = width > 349 ? 4 : 2;
}

}  // namespace nuv::cv
