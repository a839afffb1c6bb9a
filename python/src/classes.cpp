// The front end's stateful helpers: the line detector, Hough lines and template matching.
#include "images.h"
#include "module.h"
#include "values.h"

#include <nuv/cv.h>

namespace nuvpy {

using namespace pybind11::literals;

void bindClasses(py::module_& m) {
    using nuv::cv::LineDetector;
    py::class_<LineDetector> detector(m, "LineDetector",
                                      "One edge line in a band near the bottom of an image.");
    py::enum_<LineDetector::Dir>(detector, "Dir")
        .value("Vertical", LineDetector::Vertical)
        .value("Horizontal", LineDetector::Horizontal)
        .export_values();
    detector.def(py::init<>())
        .def("setThreshold", &LineDetector::setThreshold, "threshold"_a)
        .def("setSearchStart", &LineDetector::setSearchStart, "rows"_a)
        .def("setSearchHeight", &LineDetector::setSearchHeight, "rows"_a)
        .def(
            "findLine",
            [](LineDetector const& d, py::handle a, LineDetector::Dir dir) {
                const Image source = image(a);
                nuv::core::Point point;
                py::object edges = array(d.findLine(source, dir, &point), {&source});
                py::object found = point.x() < 0 ? py::none() : py::cast(point);
                return py::make_tuple(edges, found);
            },
            "image"_a, "dir"_a,
            "(edge image, (x, y) of the line or None); the band and the cross ride on the edge "
            "image as lines.");

    using nuv::cv::HoughTransform;
    py::class_<HoughTransform>(m, "HoughTransform",
                               "Straight lines of a one-channel edge image. The working buffers "
                               "are shared by all instances: one thread at a time.")
        .def(py::init<>())
        .def("setMaxLineCount", &HoughTransform::setMaxLineCount, "count"_a)
        .def("setDelta", &HoughTransform::setDelta, "rho"_a, "theta"_a)
        .def("setThreshold", &HoughTransform::setThreshold, "threshold"_a)
        .def(
            "transform",
            [](HoughTransform& h, py::handle a) {
                const Image source = image(a);
                return array(h.transform(source), {&source});
            },
            "image"_a, "The image with the strongest lines attached (nuv.lines reads them).")
        .def_static("freeBuffer", &HoughTransform::freeBuffer);

    using nuv::cv::MatchTemplate;
    py::class_<MatchTemplate>(m, "MatchTemplate", "Where a template fits best in an image.")
        .def(py::init<>())
        .def(
            "setImage", [](MatchTemplate& t, py::handle a) { t.setImage(image(a)); }, "image"_a)
        .def(
            "match",
            [](MatchTemplate& t, py::handle a) {
                nuv::core::Point point;
                float value = 0;
                t.match(image(a), &point, &value);
                return py::make_tuple(point, value);
            },
            "template"_a, "((x, y) of the best fit's top-left corner, score in -1..1)");
}

}  // namespace nuvpy
