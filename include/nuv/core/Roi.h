// A rectangular region of an image: its top-left pixel in image coordinates and its size.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/Size.h>

namespace nuv::core {

class Roi {
public:
    Roi() = default;
    Roi(Point const& offset, Size const& size) : _offset(offset), _size(size) {}

    Point const& offset() const { return _offset; }
    Size const& size() const { return _size; }

    // Offsets compare by coordinates, like every Point.
    bool operator==(Roi const& other) const {
        return _offset == other._offset && _size == other._size;
    }
    bool operator!=(Roi const& other) const { return !(*this == other); }

private:
    Point _offset;
    Size _size;
};

}  // namespace nuv::core
