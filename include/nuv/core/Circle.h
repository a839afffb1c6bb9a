// A circle for overlays: centre, radius in pixels and colour.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Point.h>

namespace nuv::core {

class Circle {
public:
    Circle() : _center(), _radius(0.0f), _color(Color::red) {}
    Circle(Point const& center, float radius)
        : _center(center), _radius(radius), _color(Color::red) {}
    Circle(Point const& center, float radius, Color const& color)
        : _center(center), _radius(radius), _color(color) {}

    Point center() const { return _center; }
    float radius() const { return _radius; }
    Color color() const { return _color; }

private:
    Point _center;
    float _radius;
    Color _color;
};

}  // namespace nuv::core
