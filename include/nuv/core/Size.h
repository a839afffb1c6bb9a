// Width and height in pixels.
#pragma once

namespace nuv::core {

class Size {
public:
    constexpr Size() : _width(0), _height(0) {}
    constexpr Size(unsigned int width, unsigned int height) : _width(width), _height(height) {}

    constexpr unsigned int width() const { return _width; }
    constexpr unsigned int height() const { return _height; }
    void setWidth(unsigned int width) { _width = width; }
    void setHeight(unsigned int height) { _height = height; }

    constexpr bool operator!=(Size const& other) const {
        return _width != other._width || _height != other._height;
    }
    constexpr bool operator==(Size const& other) const { return !(*this != other); }

private:
    unsigned int _width;
    unsigned int _height;
};

}  // namespace nuv::core
