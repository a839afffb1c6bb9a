#include <nuv/cv/LineDetector.h>

#include <nuv/core/Line.h>
#include <nuv/cv/colorconversion.h>
#include <nuv/cv/filter.h>
#include <nuv/cv/threshold.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace nuv::cv {

using nuv::core::Line;
using nuv::core::Point;
using nuv::core::image::Image;

void LineDetector::setThreshold(unsigned int threshold) {
    _threshold = std::min(threshold, 255u);
}
void LineDetector::setSearchStart(unsigned int rows) {
    _searchStart = rows;
}
void LineDetector::setSearchHeight(unsigned int rows) {
    _searchHeight = rows;
}

namespace {

// The column of the row's largest value, the leftmost of equals, or -1 for a row of zeros.
int strongestColumn(unsigned char const* row, unsigned int width) {
    unsigned char best = 0;
    int column = -1;
    for (unsigned int x = 0; x < width; ++x)
        if (row[x] > best) best = row[x], column = static_cast<int>(x);
    return column;
}

}  // namespace

Image LineDetector::findLine(Image const& image, Dir dir, Point* point) const {
    assert(point);
    if (point == nullptr) return Image();  // builds without assertions
    *point = Point(-1, -1);
    if (image.isNull()) return image;
    Image e = convert(image, nuv::core::image::Gray);
    e = dir == Vertical ? filter::sobelVert3x3(e, true) : filter::sobelHoriz3x3(e, true);
    e = thresholdLT(e, static_cast<int>(_threshold), 0);

    // The band in unsigned arithmetic: a start or height that does not fit wraps round and
    // fails one of the tests below.
    const std::uint32_t h = e.info().height, width = e.info().width;
    const std::uint32_t bottom = h - _searchStart, top = bottom - _searchHeight;
    if (bottom <= top || top >= h || bottom == 0 || bottom > h) return e;
    addLine(e, Line(0, static_cast<int>(top), static_cast<int>(width), static_cast<int>(top)));
    addLine(e,
            Line(0, static_cast<int>(bottom), static_cast<int>(width), static_cast<int>(bottom)));

    std::vector<int> columns;
    for (std::uint32_t y = top; y < bottom; ++y) {
        const int column = strongestColumn(e.constData() + y * e.step(), width);
        if (column >= 0) columns.push_back(column);
    }
    const std::uint32_t n = static_cast<std::uint32_t>(columns.size());
    if (n <= 1) return e;
    std::sort(columns.begin(), columns.end());
    if (n <= _searchHeight / 2) return e;  // fewer than half the rows had an edge
    const int median = columns[n / 2];
    std::uint32_t deviation = 0;
    for (int column : columns) deviation += static_cast<std::uint32_t>(std::abs(column - median));
    if (deviation / n > 50) return e;  // too scattered

    const int y = static_cast<int>((top + bottom) / 2);
    *point = Point(median, y);
    addLine(e, Line(median - 10, y, median + 10, y));
    addLine(e, Line(median, y - 10, median, y + 10));
    return e;
}

}  // namespace nuv::cv
