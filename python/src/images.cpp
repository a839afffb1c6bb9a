#include "images.h"

#include "values.h"

#include <nuv/core/image/ImageInfo.h>

#include <pybind11/stl.h>

#include <cstring>
#include <limits>
#include <string>

namespace nuvpy {

using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::ImageInfo;

namespace {

unsigned int channelsOf(Format format) {
    ImageInfo info;
    info.format = format;
    info.init();
    return info.numChannels;
}

Format formatOf(unsigned int channels) {
    switch (channels) {
        case 1:
            return nuv::core::image::Gray;
        case 4:
            return nuv::core::image::BGRA;
        default:
            return nuv::core::image::BGR;
    }
}

[[noreturn]] void refuse(std::string const& why) {
    throw py::type_error(
        "nuv images are uint8 arrays of shape (h, w) or (h, w, c) with c 1, 3 or 4: " + why);
}

// The row distance of an array whose pixels lie as an image's do (channels adjacent, pixels
// `channels` bytes apart, rows a positive distance apart), or 0 when they do not. A dimension
// of one element may carry any stride, as NumPy leaves those free.
py::ssize_t stepOf(py::array const& a, py::ssize_t channels) {
    const py::ssize_t h = a.shape(0), w = a.shape(1);
    if (a.ndim() == 3 && channels > 1 && a.strides(2) != 1) return 0;
    if (w > 1 && a.strides(1) != channels) return 0;
    const py::ssize_t row = w * channels;
    if (h <= 1) return row;
    if (a.strides(0) < row || a.strides(0) > std::numeric_limits<unsigned int>::max()) return 0;
    return a.strides(0);
}

}  // namespace

Image imageOverArray(py::handle object, Format format) {
    if (!py::isinstance<py::array>(object))
        refuse("got " + std::string(py::str(object.get_type())));
    py::array a = py::reinterpret_borrow<py::array>(object);
    if (!a.dtype().is(py::dtype::of<std::uint8_t>()))
        refuse("dtype " + std::string(py::str(a.dtype())));
    if (a.ndim() != 2 && a.ndim() != 3) refuse(std::to_string(a.ndim()) + " dimensions");
    const py::ssize_t channels = a.ndim() == 3 ? a.shape(2) : 1;
    if (channels != 1 && channels != 3 && channels != 4)
        refuse(std::to_string(channels) + " channels");
    if (format == nuv::core::image::FormatNone)
        format = formatOf(static_cast<unsigned int>(channels));
    if (channelsOf(format) != channels)
        refuse("format " + nuv::core::image::friendlyName(format) + " has " +
               std::to_string(channelsOf(format)) + " channels, the array " +
               std::to_string(channels));
    py::ssize_t step = stepOf(a, channels);
    if (step == 0) {
        // Negative, column or channel strides: rows the step cannot reach are packed first.
        a = py::array::ensure(a, py::array::c_style);
        step = a.shape(1) * channels;
    }
    const ImageInfo info(static_cast<unsigned int>(a.shape(1)),
                         static_cast<unsigned int>(a.shape(0)), format);
    // The image holds a reference to the array until its last handle goes, on whichever
    // thread that happens, so the reference is given back under the interpreter's lock.
    PyObject* owner = a.ptr();
    Py_INCREF(owner);
    try {
        return Image(static_cast<unsigned char*>(const_cast<void*>(a.data())),
                     static_cast<unsigned int>(step), info, [owner] {
                         py::gil_scoped_acquire hold;
                         Py_DECREF(owner);
                     });
    } catch (...) {
        Py_DECREF(owner);
        throw;
    }
}

Image image(py::handle object) {
    if (py::isinstance<Image>(object)) return object.cast<Image>();
    return imageOverArray(object, nuv::core::image::FormatNone);
}

ImageResult array(Image const& result, std::initializer_list<Image const*> sources) {
    if (result.isNull()) return {py::none()};
    ImageInfo const& info = result.info();
    std::vector<py::ssize_t> shape{info.height, info.width};
    std::vector<py::ssize_t> strides{result.step(), info.numChannels};
    if (info.numChannels != 1) {
        shape.push_back(info.numChannels);
        strides.push_back(1);
    }
    unsigned char const* first = result.constData();
    bool shared = false;
    for (Image const* source : sources) {
        unsigned char const* begin = source->constData();
        shared |= begin != nullptr && first >= begin &&
                  first < begin + std::size_t(source->step()) * source->info().height +
                              source->info().rowBytes();
    }
    py::object owner = py::cast(result);
    py::array view(py::dtype::of<std::uint8_t>(), shape, strides, first, owner);
    if (shared) view.attr("setflags")(py::arg("write") = false);
    return {std::move(view)};
}

Image packed(Image const& image) {
    if (image.isNull()) return image;
    ImageInfo const& info = image.info();
    char const* first;
    const Roi region = getRoi(image, &first);
    // A part of the image is cut into packed rows by the segmenter itself.
    const bool whole = region.offset() == Point() && region.size() == Size(info.width, info.height);
    if (!whole || image.step() == info.rowBytes()) return image;
    Image rows(info);
    for (unsigned int y = 0; y < info.height; ++y)
        std::memcpy(rows.data() + std::size_t(y) * rows.step(),
                    image.constData() + std::size_t(y) * image.step(), info.rowBytes());
    return rows;
}

namespace {

// The nuv.Image behind an array made by array(), or the object itself.
Image attachedTo(py::handle object) {
    if (py::isinstance<py::array>(object)) {
        py::object base = object.attr("base");
        if (py::isinstance<Image>(base)) return base.cast<Image>();
        throw py::type_error("the array was not made by nuv, so it carries no attachments");
    }
    return object.cast<Image>();
}

}  // namespace

void bindImage(py::module_& m) {
    py::class_<Image>(m, "Image", R"(A handle to an image's pixels and attachments.

Image(array, format=None, roi=None) lies over the array's memory without copying when the
strides fit a row step (rows a positive distance apart, pixels `channels` bytes apart);
other layouts are copied into packed rows. The array stays alive as long as the image.)")
        .def(py::init([](ArrayArg a, std::optional<Format> format, std::optional<Roi> roi) {
                 Image result =
                     imageOverArray(a.object, format.value_or(nuv::core::image::FormatNone));
                 if (roi) setRoi(result, *roi);
                 return result;
             }),
             py::arg("array"), py::arg("format") = py::none(), py::arg("roi") = py::none(),
             "An image over the array's pixels, in the format given or the one its channels "
             "imply.")
        .def_property_readonly(
            "address",
            [](Image const& i) { return reinterpret_cast<std::uintptr_t>(i.constData()); },
            "The address of the first pixel")
        .def_property_readonly("step", &Image::step, "The distance of rows in bytes")
        .def_property_readonly(
            "width", [](Image const& i) { return i.info().width; }, "Pixels in a row")
        .def_property_readonly(
            "height", [](Image const& i) { return i.info().height; }, "Rows")
        .def_property_readonly(
            "channels", [](Image const& i) { return i.info().numChannels; }, "Bytes a pixel")
        .def_property_readonly(
            "format", [](Image const& i) { return i.info().format; }, "The pixel format")
        .def_property_readonly("isNull", &Image::isNull, "Whether the image has no pixels")
        .def_property(
            "roi",
            [](Image const& i) {
                char const* first;
                return getRoi(i, &first);
            },
            [](Image& i, std::optional<Roi> roi) { roi ? setRoi(i, *roi) : resetRoi(i); },
            "(x, y, w, h), cut to the image; None resets to the whole image")
        .def(
            "hasRoi", [](Image const& i) { return hasRoi(i); },
            "Whether a region of interest is set")
        .def_property_readonly(
            "array", [](Image const& i) { return array(i, {&i}); },
            "The pixels as a read-only array, without copying")
        .def("__repr__", [](Image const& i) {
            return "<nuv.Image " + std::to_string(i.info().width) + "x" +
                   std::to_string(i.info().height) + " " +
                   nuv::core::image::friendlyName(i.info().format) + ">";
        });

    m.def(
        "lines", [](AttachedArg i) { return lines(attachedTo(i.object)); }, py::arg("image"),
        "The overlay lines of a nuv.Image or of an array nuv returned, as (x0, y0, x1, y1)");
    m.def(
        "segmentList", [](AttachedArg i) { return segmentList(attachedTo(i.object)); },
        py::arg("image"), "The segment records of a nuv.Image or of an array nuv returned");
}

}  // namespace nuvpy
