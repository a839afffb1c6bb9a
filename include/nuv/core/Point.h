/// @file
/// A pixel position that carries a colour for drawing. Two points are the same point when
/// their coordinates are: the colour is decoration and never takes part in a comparison.
#pragma once

#include <nuv/core/Color.h>

namespace nuv::core {

/// A pixel position that carries a colour for drawing; points compare by coordinates alone.
class Point {
public:
    /// The origin, in red.
    Point() : _x(0), _y(0), _color(Color::red) {}
    /// A point in red.
    Point(int x, int y) : _x(x), _y(y), _color(Color::red) {}
    /// A point in the colour given.
    Point(int x, int y, Color const& color) : _x(x), _y(y), _color(color) {}

    /// The column.
    int x() const { return _x; }
    /// The row.
    int y() const { return _y; }
    /// The colour to draw the point in.
    Color const& color() const { return _color; }
    /// Sets the column.
    void setX(int x) { _x = x; }
    /// Sets the row.
    void setY(int y) { _y = y; }
    /// Sets the colour.
    void setColor(Color const& color) { _color = color; }

    /// Same coordinates; the colours take no part.
    bool operator==(Point const& other) const { return _x == other._x && _y == other._y; }
    /// Whether the coordinates differ.
    bool operator!=(Point const& other) const { return !(*this == other); }

    /// Moves the point; its own colour stays.
    Point& operator+=(Point const& other) {
        _x += other._x;
        _y += other._y;
        return *this;
    }

    /// Quotients truncated toward zero. The result is a new point with the default colour,
    /// not this one's: a centre computed from a sum is not the colour of the sum.
    Point operator/(int divisor) const { return Point(_x / divisor, _y / divisor); }

private:
    int _x;
    int _y;
    Color _color;
};

}  // namespace nuv::core
