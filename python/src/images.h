// NumPy arrays as images and images as NumPy arrays, both over the same pixels.
#pragma once

#include <nuv/core/image/Image.h>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <initializer_list>

namespace nuvpy {

namespace py = pybind11;
using nuv::core::image::Format;
using nuv::core::image::Image;

// An image argument: a nuv.Image as it is, or an array with the format its channel count
// implies (1 Gray, 3 BGR, 4 BGRA).
Image image(py::handle object);

// The types of arguments and results as Python sees them, so that signatures and stubs name
// them: an image argument (an array or a nuv.Image), an array argument, and an image result
// (an array over its pixels, or None for the null image).
struct ImageArg {
    Image image;
    operator Image const&() const { return image; }
};
struct ArrayArg {
    py::handle object;
};
// A nuv.Image, or an array nuv returned, read for what is attached to it.
struct AttachedArg {
    py::handle object;
};
struct ImageResult {
    py::object value;
};
// An array in the layout an image's step can express is used in place; one whose strides the
// step cannot express is copied into packed rows first. Anything but uint8 of shape (h, w) or
// (h, w, 1|3|4) is a TypeError. FormatNone takes the format from the channel count.
Image imageOverArray(py::handle object, Format format);

// The pixels of `result` as an array that keeps a handle to them: no copy. None for the null
// image. Pixels shared with one of the `sources` come back read-only, since a write through
// the array would reach the source behind the library's copy-on-write.
ImageResult array(Image const& result, std::initializer_list<Image const*> sources = {});

// The image with its rows packed (step equal to the row's bytes) and the same region: the image
// itself when they are, otherwise a copy. For the segmenter, which reads packed rows.
Image packed(Image const& image);

void bindImage(py::module_& m);

}  // namespace nuvpy

namespace pybind11::detail {

template <>
struct type_caster<nuvpy::ImageArg> {
    PYBIND11_TYPE_CASTER(nuvpy::ImageArg, const_name("numpy.ndarray | nuv.Image"));
    bool load(handle source, bool) {
        value.image = nuvpy::image(source);
        return true;
    }
    static handle cast(nuvpy::ImageArg const& arg, return_value_policy, handle) {
        return pybind11::cast(arg.image).release();
    }
};

// Arguments taken as the objects themselves, named for signatures.
template <>
struct type_caster<nuvpy::ArrayArg> {
    PYBIND11_TYPE_CASTER(nuvpy::ArrayArg, const_name("numpy.ndarray"));
    bool load(handle source, bool) {
        value.object = source;
        return true;
    }
    static handle cast(nuvpy::ArrayArg const& arg, return_value_policy, handle) {
        return arg.object.inc_ref();
    }
};

template <>
struct type_caster<nuvpy::AttachedArg> {
    PYBIND11_TYPE_CASTER(nuvpy::AttachedArg, const_name("numpy.ndarray | nuv.Image"));
    bool load(handle source, bool) {
        value.object = source;
        return true;
    }
    static handle cast(nuvpy::AttachedArg const& arg, return_value_policy, handle) {
        return arg.object.inc_ref();
    }
};

template <>
struct type_caster<nuvpy::ImageResult> {
    PYBIND11_TYPE_CASTER(nuvpy::ImageResult, const_name("numpy.ndarray | None"));
    bool load(handle source, bool) {
        value.value = reinterpret_borrow<object>(source);
        return true;
    }
    static handle cast(nuvpy::ImageResult const& result, return_value_policy, handle) {
        return result.value.inc_ref();
    }
};

}  // namespace pybind11::detail
