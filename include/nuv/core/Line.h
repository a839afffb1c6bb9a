/// @file
/// A segment between two points, drawn in its own colour.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Point.h>

namespace nuv::core {

/// A segment between two points, drawn in its own colour.
class Line {
public:
    /// A line from the origin to the origin, in red.
    Line() : _p0(), _p1(), _color(Color::red) {}
    /// The ends are copied whole, their colours included; the line's own colour is red.
    Line(Point const& p0, Point const& p1) : _p0(p0), _p1(p1), _color(Color::red) {}
    /// A line between two points given by their coordinates, in red.
    Line(int x0, int y0, int x1, int y1) : _p0(x0, y0), _p1(x1, y1), _color(Color::red) {}

    /// The first end.
    Point const& p0() const { return _p0; }
    /// The second end.
    Point const& p1() const { return _p1; }
    /// The first end's column.
    int x0() const { return _p0.x(); }
    /// The first end's row.
    int y0() const { return _p0.y(); }
    /// The second end's column.
    int x1() const { return _p1.x(); }
    /// The second end's row.
    int y1() const { return _p1.y(); }
    /// The colour to draw the line in.
    Color const& color() const { return _color; }
    /// Sets the colour.
    void setColor(Color const& color) { _color = color; }

    /// Same geometry: both ends equal in order. Colours take no part, as for Point.
    bool operator==(Line const& other) const { return _p0 == other._p0 && _p1 == other._p1; }
    /// Whether either end differs.
    bool operator!=(Line const& other) const { return !(*this == other); }

private:
    Point _p0;
    Point _p1;
    Color _color;
};

}  // namespace nuv::core
