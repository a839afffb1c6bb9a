/// @file
/// A circle for overlays: centre, radius in pixels and colour.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Point.h>

namespace nuv::core {

/// A circle for overlays: centre, radius in pixels and colour.
class Circle {
public:
    /// A circle of radius 0 at the origin, in red.
    Circle() : _center(), _radius(0.0f), _color(Color::red) {}
    /// A circle in red.
    Circle(Point const& center, float radius)
        : _center(center), _radius(radius), _color(Color::red) {}
    /// A circle in the colour given.
    Circle(Point const& center, float radius, Color const& color)
        : _center(center), _radius(radius), _color(color) {}

    /// The centre.
    Point center() const { return _center; }
    /// The radius in pixels.
    float radius() const { return _radius; }
    /// The colour to draw the circle in.
    Color color() const { return _color; }

private:
    Point _center;
    float _radius;
    Color _color;
};

}  // namespace nuv::core
