// A segment between two points, drawn in its own colour.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Point.h>

namespace nuv::core {

class Line {
public:
    Line() : _p0(), _p1(), _color(Color::red) {}
    // The ends are copied whole, their colours included; the line's own colour is red.
    Line(Point const& p0, Point const& p1) : _p0(p0), _p1(p1), _color(Color::red) {}
    Line(int x0, int y0, int x1, int y1) : _p0(x0, y0), _p1(x1, y1), _color(Color::red) {}

    Point const& p0() const { return _p0; }
    Point const& p1() const { return _p1; }
    int x0() const { return _p0.x(); }
    int y0() const { return _p0.y(); }
    int x1() const { return _p1.x(); }
    int y1() const { return _p1.y(); }
    Color const& color() const { return _color; }
    void setColor(Color const& color) { _color = color; }

    // Same geometry: both ends equal in order. Colours take no part, as for Point.
    bool operator==(Line const& other) const { return _p0 == other._p0 && _p1 == other._p1; }
    bool operator!=(Line const& other) const { return !(*this == other); }

private:
    Point _p0;
    Point _p1;
    Color _color;
};

}  // namespace nuv::core
