// Picture files for scripts and examples: the library itself reads no file format, so these
// go through OpenCV's codecs.
#include "images.h"
#include "module.h"

#include <cstring>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

namespace nuvpy {

using namespace pybind11::literals;

void bindFiles(py::module_& m) {
    m.def(
        "imread",
        [](std::string const& path, bool color) {
            cv::Mat picture = cv::imread(path, color ? cv::IMREAD_COLOR : cv::IMREAD_GRAYSCALE);
            if (picture.empty()) throw py::value_error("cannot read " + path);
            // The decoded rows are copied once into an image of the library's own.
            const nuv::core::image::ImageInfo info(
                static_cast<unsigned int>(picture.cols), static_cast<unsigned int>(picture.rows),
                color ? nuv::core::image::BGR : nuv::core::image::Gray);
            Image result(info);
            const std::size_t row = info.rowBytes();
            for (int y = 0; y < picture.rows; ++y)
                std::memcpy(result.data() + std::size_t(y) * result.step(), picture.ptr(y), row);
            return py::reinterpret_borrow<py::array>(array(result).value);
        },
        "path"_a, "color"_a = true, "A picture file as a BGR (or Gray) array.");
    m.def(
        "imwrite",
        [](std::string const& path, ImageArg const& arg) {
            Image const& source = arg.image;
            char const* first;
            const nuv::core::Size size = getRoi(source, &first).size();
            const int type = CV_8UC(static_cast<int>(source.info().numChannels));
            const cv::Mat view(static_cast<int>(size.height()), static_cast<int>(size.width()),
                               type, const_cast<char*>(first), source.step());
            if (!cv::imwrite(path, view)) throw py::value_error("cannot write " + path);
        },
        "path"_a, "image"_a, "Writes the image's region to a picture file.");
}

}  // namespace nuvpy
