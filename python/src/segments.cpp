// Colour classes, their text form, the segmenter and the records it finds.
#include "images.h"
#include "module.h"
#include "values.h"

#include <nuv/cv.h>

#include <pybind11/operators.h>
#include <pybind11/stl.h>

namespace nuvpy {

using namespace pybind11::literals;
using nuv::cv::Segment;

namespace {

// Every pixel of a (h, w, 3) or (n, 3) uint8 array, or of those where mask is not zero, goes
// through addColor with channel 0 as r, as the training tool does. Returns the count.
using Bytes = py::array_t<std::uint8_t, py::array::c_style>;

int train(Segment& segment, Bytes const& pixels, std::optional<Bytes> const& mask) {
    if (pixels.ndim() < 2 || pixels.shape(pixels.ndim() - 1) != 3)
        throw py::type_error("pixels are a uint8 array whose last axis holds 3 channels");
    const py::ssize_t count = pixels.size() / 3;
    if (mask && mask->size() != count) throw py::value_error("the mask has one byte a pixel");
    std::uint8_t const* p = pixels.data();
    std::uint8_t const* selected = mask ? mask->data() : nullptr;
    int trained = 0;
    for (py::ssize_t i = 0; i < count; ++i, p += 3) {
        if (selected && selected[i] == 0) continue;
        nuv::core::Color color;
        color.setR(p[0]);
        color.setG(p[1]);
        color.setB(p[2]);
        segment.addColor(color);
        ++trained;
    }
    return trained;
}

void checkChannel(unsigned int channel) {
    // The library asserts on a channel past 2; here it is the caller's error.
    if (channel > 2) throw py::index_error("channels are 0, 1 and 2");
}

// A member taking a channel first, with the channel checked.
template <typename R, typename... A>
auto onChannel(R (Segment::*f)(unsigned int, A...)) {
    return [f](Segment& s, unsigned int c, A... a) {
        checkChannel(c);
        return (s.*f)(c, a...);
    };
}

template <typename R>
auto onChannel(R (Segment::*f)(unsigned int) const) {
    return [f](Segment const& s, unsigned int c) {
        checkChannel(c);
        return (s.*f)(c);
    };
}

}  // namespace

void bindSegments(py::module_& m) {
    py::class_<Segment>(m, "Segment", "A trained colour class of the segmenter.")
        .def(py::init<>())
        .def(py::init([](std::string const& name) {
                 Segment s;
                 s.setName(name);
                 return s;
             }),
             "name"_a)
        .def("name", &Segment::name)
        .def("setName", &Segment::setName, "name"_a)
        .def("meanColor", &Segment::meanColor)
        .def("setMeanColor", &Segment::setMeanColor, "color"_a)
        .def("channelUsed", onChannel(&Segment::channelUsed), "channel"_a)
        .def("setChannelUsed", onChannel(&Segment::setChannelUsed), "channel"_a, "used"_a)
        .def(
            "accepts",
            [](Segment const& s, unsigned int c, unsigned char value) {
                checkChannel(c);
                return s.colorIndex(c).at(value);
            },
            "channel"_a, "value"_a, "Whether the class accepts this byte in this channel.")
        .def("getDilate", onChannel(&Segment::getDilate), "channel"_a)
        .def("setDilate", onChannel(&Segment::setDilate), "channel"_a, "amount"_a)
        .def("applyDilation", &Segment::applyDilation)
        .def("addColor", &Segment::addColor, "color"_a,
             "Accepts the colour's r, g, b as channels 0, 1, 2 and folds it into the mean.")
        .def("addColors", &train, "pixels"_a, "mask"_a = py::none(),
             "addColor for every pixel of a (..., 3) array (where mask is not 0); the count.")
        .def("merge", &Segment::merge, "other"_a)
        .def("serializeColorIndex", &Segment::serializeColorIndex)
        .def("loadColorIndex", &Segment::loadColorIndex, "text"_a)
        .def("serializeChannelsUsed", &Segment::serializeChannelsUsed)
        .def("loadChannelsUsed", &Segment::loadChannelsUsed, "text"_a)
        .def(py::self == py::self)
        .def(py::self != py::self)
        .def("__repr__", [](Segment const& s) {
            return "<nuv.Segment " + s.name() + " " +
                   std::string(py::repr(py::cast(s.meanColor()))) + ">";
        });

    m.def(
        "toString", [](nuv::cv::SegmentList const& list) { return nuv::cv::toString(list); },
        "segments"_a, "The text form of a list of classes.");
    m.def("segmentListfromString", &nuv::cv::segmentListfromString, "text"_a,
          "The classes of a text form, as nuv_train writes it.");

    using Record = nuv::core::image::Segment;
    py::class_<Record>(m, "ImageSegment", "A region found by the segmenter.")
        .def_readonly("pixelCount", &Record::pixelCount)
        .def_readonly("color", &Record::color)
        .def_readonly("center", &Record::center)
        .def_readonly("lines", &Record::lines)
        .def_readonly("segmentIndex", &Record::segmentIndex)
        .def_readonly("name", &Record::name)
        .def("__repr__", [](Record const& r) {
            return "<nuv.ImageSegment " + r.name + ": " + std::to_string(r.pixelCount) +
                   " pixels, centre (" + std::to_string(r.center.x()) + ", " +
                   std::to_string(r.center.y()) + ")>";
        });

    using nuv::cv::Segmenter;
    py::class_<Segmenter>(m, "Segmenter", R"(Colour segmentation by trained classes.

doSegmentation reads the region as packed 3-byte pixels, whatever the row step: hand it
packed frames (C-contiguous arrays) or a region of one.)")
        .def(py::init<>())
        .def("setColorSegments", &Segmenter::setColorSegments, "segments"_a)
        .def("resetColorSegments", &Segmenter::resetColorSegments)
        .def("createSegmentList", &Segmenter::createSegmentList)
        .def("setupSegmentation", &Segmenter::setupSegmentation, "width"_a, "height"_a)
        .def(
            "doSegmentation",
            [](Segmenter& s, py::handle a) {
                const Image source = image(a);
                return array(s.doSegmentation(source), {&source});
            },
            "image"_a,
            "The image with one record per class attached (nuv.segmentList reads them); the "
            "whole image comes back over the frame's own pixels.")
        .def(
            "segment",
            [](Segmenter& s, py::handle a) { return segmentList(s.doSegmentation(image(a))); },
            "image"_a, "The records doSegmentation attaches, one per class in configured order.");
}

}  // namespace nuvpy
