/// @file
/// Debug printers of the value types for QDebug, and the text of a line for std::string.
///
/// Every function here has internal linkage: each source unit that includes the header gets
/// its own copy, so units built with different compilers or flags never share one.
#pragma once

#include <nuv/core/Circle.h>
#include <nuv/core/Color.h>
#include <nuv/core/Line.h>
#include <nuv/core/Point.h>
#include <nuv/core/Roi.h>
#include <nuv/core/Size.h>

#include <QDebug>

#include <sstream>
#include <string>

namespace nuv::core {

/// "(r, g, b, a)" as numbers.
static inline QDebug operator<<(QDebug dbg, Color const& color) {
    dbg.nospace() << "(" << unsigned(color.r()) << ", " << unsigned(color.g()) << ", "
                  << unsigned(color.b()) << ", " << unsigned(color.a()) << ")";
    return dbg.space();
}

/// "(x, y)"; the colour is not printed.
static inline QDebug operator<<(QDebug dbg, Point const& point) {
    dbg.nospace() << "(" << point.x() << ", " << point.y() << ")";
    return dbg.space();
}

/// "((x, y), radius, (r, g, b, a))". The parts are written here rather than through the
/// printers above, whose closing space would otherwise land inside the parentheses.
static inline QDebug operator<<(QDebug dbg, Circle const& circle) {
    Point const center = circle.center();
    Color const color = circle.color();
    dbg.nospace() << "((" << center.x() << ", " << center.y() << "), " << circle.radius() << ", ("
                  << unsigned(color.r()) << ", " << unsigned(color.g()) << ", "
                  << unsigned(color.b()) << ", " << unsigned(color.a()) << "))";
    return dbg.space();
}

/// "((x0, y0), (x1, y1))"; colours are not printed.
static inline QDebug operator<<(QDebug dbg, Line const& line) {
    dbg.nospace() << "((" << line.x0() << ", " << line.y0() << "), (" << line.x1() << ", "
                  << line.y1() << "))";
    return dbg.space();
}

/// "(width x height)".
static inline QDebug operator<<(QDebug dbg, Size const& size) {
    dbg.nospace() << "(" << size.width() << " x " << size.height() << ")";
    return dbg.space();
}

/// "((x, y), (width x height))".
static inline QDebug operator<<(QDebug dbg, Roi const& roi) {
    dbg.nospace() << "((" << roi.offset().x() << ", " << roi.offset().y() << "), ("
                  << roi.size().width() << " x " << roi.size().height() << "))";
    return dbg.space();
}

/// "x0;y0;x1;y1"; the colour is not printed.
static inline std::string toStdString(Line const& line) {
    std::ostringstream text;
    text << line.x0() << ";" << line.y0() << ";" << line.x1() << ";" << line.y1();
    return text.str();
}

}  // namespace nuv::core
