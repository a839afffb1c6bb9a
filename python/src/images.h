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
// An array in the layout an image's step can express is used in place; one whose strides the
// step cannot express is copied into packed rows first. Anything but uint8 of shape (h, w) or
// (h, w, 1|3|4) is a TypeError. FormatNone takes the format from the channel count.
Image imageOverArray(py::handle object, Format format);

// The pixels of `result` as an array that keeps a handle to them: no copy. None for the null
// image. Pixels shared with one of the `sources` come back read-only, since a write through
// the array would reach the source behind the library's copy-on-write.
py::object array(Image const& result, std::initializer_list<Image const*> sources = {});

void bindImage(py::module_& m);

}  // namespace nuvpy
