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

// The table, colours and names are made aside and replace the old ones only when all of them
// are had: a failed allocation leaves the object as it was, never with more classes than
// colours.
void Segmenter::setColorSegments(SegmentList const& list) {
    const unsigned int size = static_cast<unsigned int>(list.size());
    const unsigned int count = size > maxSegments ? maxSegments : size;
    // An empty list keeps the old colours and names, which nothing reads while no class is
    // active.
    if (count == 0) return resetColorSegments();

    std::uint32_t table[256][3] = {};
    nuv::core::Vector<Color> colors;
    colors.resize(static_cast<int>(count));
    nuv::core::Vector<std::string> names;
    names.resize(static_cast<int>(count));
    unsigned int s = 0;
    for (auto it = list.constBegin(); it != list.constEnd() && s < count; ++it, ++s) {
        const std::uint32_t bit = std::uint32_t(1) << s;
        for (unsigned int c = 0; c < 3; ++c) {
            // A channel the class does not look at accepts every value, whatever its index
            // holds.
            const bool used = it->channelUsed(c);
            auto const& index = it->colorIndex(c);
            for (unsigned int v = 0; v < 256; ++v)
                if (!used || index.at(static_cast<unsigned char>(v))) table[v][c] |= bit;
        }
        colors[static_cast<int>(s)] = it->meanColor();
        names[static_cast<int>(s)] = it->name();
    }
    std::memcpy(_channelTable, table, sizeof(_channelTable));
    _segmentCount = count;
    _meanColors = colors;
    _names = names;
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

    // Sized for no frame until both arrays are had, so that after a failed allocation the
    // next frame sizes them again instead of running over missing arrays.
    _width = 0;
    _height = 0;

    // The product wraps as a 32-bit signed number would; a size that does not fit is refused
    // rather than allocated short.
    const std::int32_t cellCount = static_cast<std::int32_t>(static_cast<std::uint32_t>(width) *
                                                             static_cast<std::uint32_t>(height));
    if (cellCount < 0 || width < 0) throw std::bad_array_new_length();
    // One cell per pixel: more runs than pixels cannot exist, so the pixel loop never checks.
    _cells = new rlCell[static_cast<std::size_t>(cellCount)];
    _rowCells = new int[static_cast<std::size_t>(width)];
    _width = width;
    _height = height;

    // Wide frames get a longer minimum run, so that noise does not split large objects into
    // many small runs. It counts from the frame after this one.
    _minRunLength = width > 349 ? 4 : 2;
}

}  // namespace nuv::cv
