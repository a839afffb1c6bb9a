/// @file
/// Width and height in pixels.
#pragma once

namespace nuv::core {

/// Width and height in pixels.
class Size {
public:
    /// The empty size, 0 by 0.
    constexpr Size() : _width(0), _height(0) {}
    /// A size of width by height pixels.
    constexpr Size(unsigned int width, unsigned int height) : _width(width), _height(height) {}

    /// The width in pixels.
    constexpr unsigned int width() const { return _width; }
    /// The height in pixels.
    constexpr unsigned int height() const { return _height; }
    /// Sets the width.
    void setWidth(unsigned int width) { _width = width; }
    /// Sets the height.
    void setHeight(unsigned int height) { _height = height; }

    /// Whether the width or the height differs.
    constexpr bool operator!=(Size const& other) const {
        return _width != other._width || _height != other._height;
    }
    /// Same width and height.
    constexpr bool operator==(Size const& other) const { return !(*this != other); }

private:
    unsigned int _width;
    unsigned int _height;
};

}  // namespace nuv::core
