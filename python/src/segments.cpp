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

// The segmenter reads its work image as packed three-byte pixels: other channel counts are
// refused, and rows a step apart are packed into a copy first.
Image segmentable(Image const& source) {
    if (source.info().numChannels != 3)
        throw py::type_error("the segmenter reads 3-channel pixels, the image has " +
                             std::to_string(source.info().numChannels));
    return packed(source);
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
        .def(py::init<>(), "A class without name that accepts nothing.")
        .def(py::init([](std::string const& name) {
                 Segment s;
                 s.setName(name);
                 return s;
             }),
             "name"_a, "A class of this name that accepts nothing.")
        .def("name", &Segment::name, "The class's name.")
        .def("setName", &Segment::setName, "name"_a, "Names the class.")
        .def("meanColor", &Segment::meanColor, "The mean colour of the trained pixels.")
        .def("setMeanColor", &Segment::setMeanColor, "color"_a,
             "Leaves the colour count alone, so a later addColor still averages with the old "
             "count.")
        .def("channelUsed", onChannel(&Segment::channelUsed), "channel"_a,
             "Whether the channel takes part; a channel not used accepts every value.")
        .def("setChannelUsed", onChannel(&Segment::setChannelUsed), "channel"_a, "used"_a,
             "Makes the channel take part or not.")
        .def(
            "accepts",
            [](Segment const& s, unsigned int c, unsigned char value) {
                checkChannel(c);
                return s.colorIndex(c).at(value);
            },
            "channel"_a, "value"_a, "Whether the class accepts this byte in this channel.")
        .def("getDilate", onChannel(&Segment::getDilate), "channel"_a,
             "Pending dilation of a channel: positive grows the accepted set, negative shrinks "
             "it.")
        .def("setDilate", onChannel(&Segment::setDilate), "channel"_a, "amount"_a,
             "Only stores the amount; applyDilation does the work.")
        .def("applyDilation", &Segment::applyDilation,
             "Applies and clears the pending dilation of every channel.")
        .def("addColor", &Segment::addColor, "color"_a,
             "Accepts the colour's r, g, b as channels 0, 1, 2 and folds it into the mean.")
        .def("addColors", &train, "pixels"_a, "mask"_a = py::none(),
             "addColor for every pixel of a (..., 3) array (where mask is not 0); the count.")
        .def("merge", &Segment::merge, "other"_a,
             "Unions the accepted values channel by channel; nothing else of the other segment "
             "counts.")
        .def("serializeColorIndex", &Segment::serializeColorIndex,
             "192 hexadecimal digits: channel 0, 1 and 2, 256 bits each.")
        .def("loadColorIndex", &Segment::loadColorIndex, "text"_a,
             "False, and nothing changed, unless the text is exactly 192 characters.")
        .def("serializeChannelsUsed", &Segment::serializeChannelsUsed,
             "The channel mask in decimal.")
        .def("loadChannelsUsed", &Segment::loadChannelsUsed, "text"_a,
             "Keeps the low three bits of the number; text that is no number gives 0.")
        .def(py::self == py::self,
             "Segments are the same class when their mean colours are equal; nothing else "
             "counts.")
        .def(py::self != py::self, "Whether the mean colours differ.")
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
        .def_readonly("pixelCount", &Record::pixelCount, "The region's pixels; 0 if not found.")
        .def_readonly("color", &Record::color, "The class's mean colour.")
        .def_readonly("center", &Record::center, "The region's centre (x, y).")
        .def_readonly("lines", &Record::lines, "The region's outline lines.")
        .def_readonly("segmentIndex", &Record::segmentIndex, "The class's place in the list.")
        .def_readonly("name", &Record::name, "The class's name.")
        .def("__repr__", [](Record const& r) {
            return "<nuv.ImageSegment " + r.name + ": " + std::to_string(r.pixelCount) +
                   " pixels, centre (" + std::to_string(r.center.x()) + ", " +
                   std::to_string(r.center.y()) + ")>";
        });

    using nuv::cv::Segmenter;
    py::class_<Segmenter>(m, "Segmenter", R"(Colour segmentation by trained classes.

The segmenter reads packed rows of 3-byte pixels: an image whose rows lie further apart (a
slice of a wider array, say) is packed into a copy first, so any 3-channel array will do.)")
        .def(py::init<>(), "A segmenter without classes.")
        .def("setColorSegments", &Segmenter::setColorSegments, "segments"_a,
             "Compiles the classes into the table; only the first 32 take part.")
        .def("resetColorSegments", &Segmenter::resetColorSegments,
             "No class is active any more; the names and colours stay but are not read.")
        .def("createSegmentList", &Segmenter::createSegmentList,
             "One default record per active class: the result for an image in which nothing "
             "was found.")
        .def("setupSegmentation", &Segmenter::setupSegmentation, "width"_a, "height"_a,
             "Sizes the run arrays for frames of this size.")
        .def(
            "doSegmentation",
            [](Segmenter& s, ImageArg const& source) {
                const Image work = segmentable(source.image);
                return array(s.doSegmentation(work), {&work});
            },
            "image"_a,
            "The image with one record per class attached (nuv.segmentList reads them), over "
            "the frame's own pixels when its rows are packed.")
        .def(
            "segment",
            [](Segmenter& s, ImageArg const& source) {
                return segmentList(s.doSegmentation(segmentable(source.image)));
            },
            "image"_a, "The records doSegmentation attaches, one per class in configured order.");
}

}  // namespace nuvpy
