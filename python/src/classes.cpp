// The front end's stateful helpers: the line detector, Hough lines and template matching.
#include "images.h"
#include "module.h"
#include "values.h"

#include <nuv/cv.h>

#include <pybind11/stl.h>

#include <optional>

namespace nuvpy {

using namespace pybind11::literals;

void bindClasses(py::module_& m) {
    using nuv::cv::LineDetector;
    py::class_<LineDetector> detector(m, "LineDetector",
                                      "One edge line in a band near the bottom of an image.");
    py::enum_<LineDetector::Dir>(detector, "Dir", "The edges looked for.")
        .value("Vertical", LineDetector::Vertical)
        .value("Horizontal", LineDetector::Horizontal)
        .export_values();
    detector.def(py::init<>())
        .def("setThreshold", &LineDetector::setThreshold, "threshold"_a,
             "Edge strengths below the threshold are ignored; above 255 counts as 255.")
        .def("setSearchStart", &LineDetector::setSearchStart, "rows"_a,
             "Rows between the image's bottom and the band's lower end.")
        .def("setSearchHeight", &LineDetector::setSearchHeight, "rows"_a,
             "The band's height in rows.")
        .def(
            "findLine",
            [](LineDetector const& d, ImageArg const& source, LineDetector::Dir dir) {
                nuv::core::Point point;
                ImageResult edges = array(d.findLine(source.image, dir, &point), {&source.image});
                std::optional<nuv::core::Point> found;
                if (point.x() >= 0) found = point;
                return std::make_tuple(edges, found);
            },
            "image"_a, "dir"_a,
            "(edge image, (x, y) of the line or None); the band and the cross ride on the edge "
            "image as lines.");

    using nuv::cv::HoughTransform;
    py::class_<HoughTransform>(m, "HoughTransform",
                               "Straight lines of a one-channel edge image. The working buffers "
                               "are shared by all instances: one thread at a time.")
        .def(py::init<>())
        .def("setMaxLineCount", &HoughTransform::setMaxLineCount, "count"_a,
             "The most lines one transform may report.")
        .def("setDelta", &HoughTransform::setDelta, "rho"_a, "theta"_a,
             "The steps of the rho axis (pixels) and of the theta axis (radians).")
        .def("setThreshold", &HoughTransform::setThreshold, "threshold"_a,
             "A line needs more votes than this.")
        .def(
            "transform",
            [](HoughTransform& h, ImageArg const& source) {
                return array(h.transform(source.image), {&source.image});
            },
            "image"_a, "The image with the strongest lines attached (nuv.lines reads them).")
        .def_static(
            "freeBuffer", &HoughTransform::freeBuffer,
            "Releases the shared buffers; setMaxLineCount must be called again before transform.");

    using nuv::cv::MatchTemplate;
    py::class_<MatchTemplate>(m, "MatchTemplate", "Where a template fits best in an image.")
        .def(py::init<>())
        .def(
            "setImage", [](MatchTemplate& t, ImageArg const& a) { t.setImage(a.image); }, "image"_a,
            "The image the templates are searched in.")
        .def(
            "match",
            [](MatchTemplate& t, ImageArg const& a) {
                nuv::core::Point point;
                float value = 0;
                t.match(a.image, &point, &value);
                return std::make_tuple(point, value);
            },
            "template"_a, "((x, y) of the best fit's top-left corner, score in -1..1)");
}

}  // namespace nuvpy
