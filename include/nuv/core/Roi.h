/// @file
/// A rectangular region of an image: its top-left pixel in image coordinates and its size.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/Size.h>

namespace nuv::core {

/// A rectangular region of an image: its top-left pixel in image coordinates and its size.
class Roi {
public:
    /// The empty region at the origin.
    Roi() = default;
    /// The region of this size whose top-left pixel is offset.
    Roi(Point const& offset, Size const& size) : _offset(offset), _size(size) {}

    /// The top-left pixel.
    Point const& offset() const { return _offset; }
    /// The region's size.
    Size const& size() const { return _size; }

    /// Offsets compare by coordinates, like every Point.
    bool operator==(Roi const& other) const {
        return _offset == other._offset && _size == other._size;
    }
    /// Whether the offset or the size differs.
    bool operator!=(Roi const& other) const { return !(*this == other); }

private:
    Point _offset;
    Size _size;
};

}  // namespace nuv::core
