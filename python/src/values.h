// The library's small value types as Python values: points (x, y), sizes (w, h), regions
// (x, y, w, h), lines (x0, y0, x1, y1), colours (r, g, b, a), and its containers as lists.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Line.h>
#include <nuv/core/List.h>
#include <nuv/core/Point.h>
#include <nuv/core/Roi.h>
#include <nuv/core/Size.h>
#include <nuv/core/Vector.h>
#include <nuv/core/image/SegmentList.h>
#include <nuv/cv/SegmentList.h>

#include <pybind11/pybind11.h>

#include <array>
#include <cstdint>
#include <string>

namespace nuvpy {

namespace py = pybind11;

// N integers from a sequence of exactly N, or false.
template <std::size_t N>
bool integers(py::handle source, std::array<long long, N>& out) {
    if (!py::isinstance<py::sequence>(source) || py::isinstance<py::str>(source)) return false;
    py::sequence values = py::reinterpret_borrow<py::sequence>(source);
    if (values.size() != N) return false;
    for (std::size_t i = 0; i < N; ++i) {
        py::handle value = values[i];
        if (!PyIndex_Check(value.ptr())) return false;
        out[i] = value.cast<long long>();
    }
    return true;
}

}  // namespace nuvpy

namespace pybind11::detail {

// A caster of a type built from and written as a tuple of N integers.
template <typename T, std::size_t N>
struct IntegerTupleCaster {
    PYBIND11_TYPE_CASTER(T, const_name<N == 2>("Tuple[int, int]", "Tuple[int, int, int, int]"));
    bool load(handle source, bool) {
        std::array<long long, N> v;
        if (!nuvpy::integers(source, v)) return false;
        value = make(v);
        return true;
    }
    static handle cast(T const& t, return_value_policy, handle) { return tupleOf(t).release(); }

private:
    static T make(std::array<long long, N> const& v);
    static tuple tupleOf(T const& t);
};

template <>
inline nuv::core::Point IntegerTupleCaster<nuv::core::Point, 2>::make(
    std::array<long long, 2> const& v) {
    return nuv::core::Point(static_cast<int>(v[0]), static_cast<int>(v[1]));
}
template <>
inline tuple IntegerTupleCaster<nuv::core::Point, 2>::tupleOf(nuv::core::Point const& p) {
    return make_tuple(p.x(), p.y());
}
template <>
inline nuv::core::Size IntegerTupleCaster<nuv::core::Size, 2>::make(
    std::array<long long, 2> const& v) {
    if (v[0] < 0 || v[1] < 0) throw value_error("a size is not negative");
    return nuv::core::Size(static_cast<unsigned int>(v[0]), static_cast<unsigned int>(v[1]));
}
template <>
inline tuple IntegerTupleCaster<nuv::core::Size, 2>::tupleOf(nuv::core::Size const& s) {
    return make_tuple(s.width(), s.height());
}
template <>
inline nuv::core::Roi IntegerTupleCaster<nuv::core::Roi, 4>::make(
    std::array<long long, 4> const& v) {
    if (v[2] < 0 || v[3] < 0) throw value_error("a region's size is not negative");
    return nuv::core::Roi(
        nuv::core::Point(static_cast<int>(v[0]), static_cast<int>(v[1])),
        nuv::core::Size(static_cast<unsigned int>(v[2]), static_cast<unsigned int>(v[3])));
}
template <>
inline tuple IntegerTupleCaster<nuv::core::Roi, 4>::tupleOf(nuv::core::Roi const& r) {
    return make_tuple(r.offset().x(), r.offset().y(), r.size().width(), r.size().height());
}
template <>
inline nuv::core::Line IntegerTupleCaster<nuv::core::Line, 4>::make(
    std::array<long long, 4> const& v) {
    return nuv::core::Line(static_cast<int>(v[0]), static_cast<int>(v[1]), static_cast<int>(v[2]),
                           static_cast<int>(v[3]));
}
template <>
inline tuple IntegerTupleCaster<nuv::core::Line, 4>::tupleOf(nuv::core::Line const& l) {
    return make_tuple(l.x0(), l.y0(), l.x1(), l.y1());
}

template <>
struct type_caster<nuv::core::Point> : IntegerTupleCaster<nuv::core::Point, 2> {};
template <>
struct type_caster<nuv::core::Size> : IntegerTupleCaster<nuv::core::Size, 2> {};
template <>
struct type_caster<nuv::core::Roi> : IntegerTupleCaster<nuv::core::Roi, 4> {};
template <>
struct type_caster<nuv::core::Line> : IntegerTupleCaster<nuv::core::Line, 4> {};

// Colours go out as (r, g, b, a) and come in as (r, g, b), (r, g, b, a) or the packed argb
// word.
template <>
struct type_caster<nuv::core::Color> {
    PYBIND11_TYPE_CASTER(nuv::core::Color, const_name("Tuple[int, int, int, int]"));
    bool load(handle source, bool) {
        if (PyLong_Check(source.ptr())) {
            value = nuv::core::Color(source.cast<unsigned int>());
            return true;
        }
        std::array<long long, 4> rgba;
        std::array<long long, 3> rgb;
        if (nuvpy::integers(source, rgb))
            rgba = {rgb[0], rgb[1], rgb[2], 255};
        else if (!nuvpy::integers(source, rgba))
            return false;
        for (long long c : rgba)
            if (c < 0 || c > 255) throw value_error("colour components lie in 0..255");
        value = nuv::core::Color::fromRgba(
            static_cast<unsigned char>(rgba[0]), static_cast<unsigned char>(rgba[1]),
            static_cast<unsigned char>(rgba[2]), static_cast<unsigned char>(rgba[3]));
        return true;
    }
    static handle cast(nuv::core::Color const& c, return_value_policy, handle) {
        return make_tuple(c.r(), c.g(), c.b(), c.a()).release();
    }
};

// The library's shared containers travel as Python lists, element by element.
template <typename Container, typename Element>
struct SequenceCaster {
    PYBIND11_TYPE_CASTER(Container,
                         const_name("List[") + make_caster<Element>::name + const_name("]"));
    bool load(handle source, bool convert) {
        if (!isinstance<sequence>(source) || isinstance<str>(source)) return false;
        value = Container();
        for (handle item : reinterpret_borrow<sequence>(source)) {
            make_caster<Element> element;
            if (!element.load(item, convert)) return false;
            value.append(cast_op<Element&&>(std::move(element)));
        }
        return true;
    }
    static handle cast(Container const& c, return_value_policy policy, handle parent) {
        list out;
        for (Element const& e : c)
            out.append(reinterpret_steal<object>(
                make_caster<Element>::cast(e, return_value_policy::copy, parent)));
        (void)policy;
        return out.release();
    }
};

template <typename T>
struct type_caster<nuv::core::Vector<T>> : SequenceCaster<nuv::core::Vector<T>, T> {};
template <typename T>
struct type_caster<nuv::core::List<T>> : SequenceCaster<nuv::core::List<T>, T> {};
template <>
struct type_caster<nuv::cv::SegmentList> : SequenceCaster<nuv::cv::SegmentList, nuv::cv::Segment> {
};
template <>
struct type_caster<nuv::core::image::SegmentList>
    : SequenceCaster<nuv::core::image::SegmentList, nuv::core::image::Segment> {};

}  // namespace pybind11::detail
