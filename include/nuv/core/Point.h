// A pixel position that carries a colour for drawing. Two points are the same point when
// their coordinates are: the colour is decoration and never takes part in a comparison.
#pragma once

#include <nuv/core/Color.h>

namespace nuv::core {

class Point {
public:
    Point() : _x(0), _y(0), _color(Color::red) {}
    Point(int x, int y) : _x(x), _y(y), _color(Color::red) {}
    Point(int x, int y, Color const& color) : _x(x), _y(y), _color(color) {}

    int x() const { return _x; }
    int y() const { return _y; }
    Color const& color() const { return _color; }
    void setX(int x) { _x = x; }
    void setY(int y) { _y = y; }
    void setColor(Color const& color) { _color = color; }

    bool operator==(Point const& other) const { return _x == other._x && _y == other._y; }
    bool operator!=(Point const& other) const { return !(*this == other); }

    // Moves the point; its own colour stays.
    Point& operator+=(Point const& other) {
        _x += other._x;
        _y += other._y;
        return *this;
    }

    // Quotients truncated toward zero. The result is a new point with the default colour,
    // not this one's: a centre computed from a sum is not the colour of the sum.
    Point operator/(int divisor) const { return Point(_x / divisor, _y / divisor); }

private:
    int _x;
    int _y;
    Color _color;
};

}  // namespace nuv::core
