// The front end's functions over images: each takes arrays or nuv.Image objects and gives
// back arrays over the result's pixels.
#include "images.h"
#include "module.h"
#include "values.h"

#include <nuv/cv.h>

#include <pybind11/stl.h>

namespace nuvpy {

using nuv::core::Size;
using namespace pybind11::literals;

namespace {

using Raw = Image (*)(char const*, unsigned int, Size const&);

// A function of one image and further plain arguments, giving an image.
template <typename... Args, typename... Extra>
void defImage(py::module_& m, char const* name, Image (*f)(Image const&, Args...),
              Extra const&... extra) {
    m.def(
        name,
        [f](ImageArg const& source, Args... args) {
            return array(f(source.image, args...), {&source.image});
        },
        "image"_a, extra...);
}

// A single conversion: the region's first pixel, the step and the region's size go to the
// conversion, which trusts them, so the channel count it reads is checked here.
void defRaw(py::module_& m, char const* name, Raw f, unsigned int channels, char const* doc) {
    m.def(
        name,
        [f, channels, name](ImageArg const& arg) {
            Image const& source = arg.image;
            if (source.info().numChannels != channels)
                throw py::type_error(std::string(name) + " reads " + std::to_string(channels) +
                                     "-channel pixels, the image has " +
                                     std::to_string(source.info().numChannels));
            char const* first;
            const Size size = getRoi(source, &first).size();
            return array(f(first, source.step(), size), {&source});
        },
        "image"_a, doc);
}

}  // namespace

void bindOperations(py::module_& m) {
    defImage(m, "copyRoi", nuv::cv::copyRoi, "The region of interest of a 3-channel image.");
    defImage(m, "mirrorHorizontal", nuv::cv::mirrorHorizontal, "The region upside down.");
    defImage(m, "mirrorVertical", nuv::cv::mirrorVertical, "The region reversed left to right.");
    defImage(m, "mirrorHorizontalAndVertical", nuv::cv::mirrorHorizontalAndVertical,
             "The region turned by half a turn.");
    defImage(m, "transpose", nuv::cv::transpose, "The region with rows and columns swapped.");
    m.def(
        "mirror",
        [](ImageArg const& source, int axis) {
            // The library asserts on another axis; here it is the caller's error.
            if (axis < 0 || axis > 2) throw py::value_error("axis is 0 (rows), 1 (columns) or 2");
            return array(::mirror(source.image, axis), {&source.image});
        },
        "image"_a, "axis"_a, "The region mirrored about axis 0 (upside down), 1 or 2 (both).");
    m.def(
        "addition",
        [](ImageArg const& a, ImageArg const& b) {
            return array(nuv::cv::addition(a.image, b.image), {&a.image, &b.image});
        },
        "a"_a, "b"_a, "The rounded mean of two images of one description.");
    defImage(m, "convert", nuv::cv::convert, "format"_a,
             "The region in another format; None where no conversion exists.");
    const struct {
        char const* name;
        Raw f;
        unsigned int channels;
        char const* doc;
    } conversions[] = {
        {"RGBtoBGR", nuv::cv::RGBtoBGR, 3, "RGB pixels with red and blue swapped, as BGR."},
        {"BGRtoRGB", nuv::cv::BGRtoRGB, 3, "BGR pixels with blue and red swapped, as RGB."},
        {"HSVtoRGB", nuv::cv::HSVtoRGB, 3, "HSV pixels as RGB."},
        {"HSVtoBGR", nuv::cv::HSVtoBGR, 3, "HSV pixels as BGR."},
        {"HLStoRGB", nuv::cv::HLStoRGB, 3, "HLS pixels as RGB."},
        {"HLStoBGR", nuv::cv::HLStoBGR, 3, "HLS pixels as BGR."},
        {"RGBtoHLS", nuv::cv::RGBtoHLS, 3, "RGB pixels as HLS."},
        {"RGBtoHSV", nuv::cv::RGBtoHSV, 3, "RGB pixels as HSV."},
        {"BGRtoHSV", nuv::cv::BGRtoHSV, 3, "BGR pixels as HSV."},
        {"RGBtoYCbCr", nuv::cv::RGBtoYCbCr, 3, "RGB pixels as YCbCr."},
        {"YCbCrToRGB", nuv::cv::YCbCrToRGB, 3, "YCbCr pixels as RGB."},
        {"YCbCrToBGR", nuv::cv::YCbCrToBGR, 3, "YCbCr pixels as BGR."},
        {"GrayToRGB", nuv::cv::GrayToRGB, 1, "Gray pixels as RGB, the byte in all three channels."},
        {"GrayToBGR", nuv::cv::GrayToBGR, 1,
         "Gray pixels as BGR (stamped RGB: the channels are equal)."},
        {"toGray", nuv::cv::toGray, 3, "Three bytes a pixel read as R, G, B, as Gray."},
        {"BGRAtoBGR", nuv::cv::BGRAtoBGR, 4, "BGRA pixels as BGR: alpha is dropped."},
        {"BGRAtoRGB", nuv::cv::BGRAtoRGB, 4,
         "BGRA pixels as RGB: alpha is dropped, blue and red swapped."},
    };
    for (auto const& c : conversions) defRaw(m, c.name, c.f, c.channels, c.doc);

    defImage(m, "thresholdLT", nuv::cv::thresholdLT, "threshold"_a, "value"_a,
             "Bytes below the threshold become value.");
    defImage(m, "thresholdGT", nuv::cv::thresholdGT, "threshold"_a, "value"_a,
             "Bytes above the threshold become value.");
    defImage(m, "inRange", nuv::cv::inRange, "lower"_a, "upper"_a,
             "A Gray mask: 255 where every channel is in its bounds.");
    m.def(
        "mean", [](ImageArg const& a) { return nuv::cv::mean(a.image); }, "image"_a,
        "The truncated mean of each channel of the region.");
    m.def(
        "minmax",
        [](ImageArg const& a) {
            nuv::core::Vector<int> low, high;
            nuv::cv::minmax(a.image, low, high);
            return std::make_tuple(low, high);
        },
        "image"_a, "(min, max) per channel of the region.");
    defImage(m, "canny", nuv::cv::canny, "threshold1"_a, "threshold2"_a,
             "Canny edges of a one-channel region.");
    m.def(
        "labelmarkers",
        [](ImageArg const& source) {
            int count = 0;
            ImageResult labels =
                array(nuv::cv::labelmarkers(source.image, &count), {&source.image});
            return std::make_tuple(labels, count);
        },
        "image"_a, "(labels, number of components) of a Gray region.");
    m.def(
        "labelmarkersinfo",
        [](ImageArg const& labels, int minSize) {
            nuv::core::Vector<nuv::core::Point> centers;
            nuv::core::Vector<int> sizes;
            nuv::cv::labelmarkersinfo(labels.image, minSize, centers, sizes);
            return std::make_tuple(centers, sizes);
        },
        "labels"_a, "minSize"_a, "(centres, pixel counts) of the labels of at least minSize.");
    m.def("friendlyName", &nuv::core::image::friendlyName, "format"_a, "channel"_a = -1,
          "The format's name, or with a channel number that channel's name.");
}

void bindFilters(py::module_& filter) {
    namespace f = nuv::cv::filter;
    py::enum_<f::PredefindedFilter_t>(filter, "PredefindedFilter_t", "The predefined filters.")
        .value("PredefindedFilterNone", f::PredefindedFilterNone)
        .value("PredefindedFilterSobelHoriz3x3", f::PredefindedFilterSobelHoriz3x3)
        .value("PredefindedFilterSobelVert3x3", f::PredefindedFilterSobelVert3x3)
        .export_values();
    filter.def("friendlyName", &f::friendlyName, "type"_a, "The name of a predefined filter.");
    defImage(filter, "filter", f::filter, "type"_a, "border"_a,
             "The predefined filter over the region, with replicated borders if border is true.");
    defImage(filter, "sobelHoriz3x3", f::sobelHoriz3x3, "border"_a,
             "The horizontal 3x3 Sobel operator saturated to a byte: bright below dark.");
    defImage(filter, "sobelVert3x3", f::sobelVert3x3, "border"_a,
             "The vertical 3x3 Sobel operator saturated to a byte: bright left of dark.");
    filter.def(
        "replicateBorder",
        [](ImageArg const& source, std::array<unsigned int, 4> kernel) {
            return array(f::replicateBorder(source.image,
                                            f::Kernel(kernel[0], kernel[1], kernel[2], kernel[3])),
                         {&source.image});
        },
        "image"_a, "kernel"_a,
        "The region grown by the kernel's reach, (width, height, anchor x, anchor y), with "
        "its edge pixels repeated.");
    defImage(filter, "min", f::min, "mask"_a,
             "The minimum over a (w, h) mask where it fits in the region.");
    defImage(filter, "max", f::max, "mask"_a,
             "The maximum over a (w, h) mask where it fits in the region.");
}

}  // namespace nuvpy
