// The extension module nuv._nuv: the library's front end for NumPy arrays.
#include "images.h"
#include "module.h"

#include <nuv/core/image/Format.h>
#include <nuv/cv/init.h>
#include <nuv/primitives.h>

namespace nuvpy {

using namespace pybind11::literals;

void bindSelection(py::module_& m) {
    m.def("ippInit", &ippInit, "Selects the best slot for this processor; the status.");
    m.def("ippInitCpu", &ippInitCpu, "cpuCode"_a,
          "Forces the slot of a processor code, whatever the processor has; the status.");
    m.def("ippGetEnabledCpuFeatures", &ippGetEnabledCpuFeatures,
          "The feature bits the selection works with.");
    m.def(
        "ippGetCpuFeatures",
        [] {
            Ipp64u features = 0;
            const IppStatus status = ippGetCpuFeatures(&features, nullptr);
            if (status < 0)
                throw std::runtime_error("ippGetCpuFeatures: status " + std::to_string(status));
            return features;
        },
        "The processor's feature bits (ippCPUID_* of nuv/primitives.h).");
    m.def(
        "jumpIndex", [] { return ippJumpIndexForMergedLibs; },
        "The slot every primitive jumps through: 0 until ippInit.");
    m.def(
        "setJumpIndex",
        [](unsigned int slot) {
            // A slot past the table would send every call into unrelated memory.
            if (slot > 6) throw py::value_error("slots are 0..6");
            ippJumpIndexForMergedLibs = slot;
        },
        "slot"_a, "Sets the slot directly, as a host may (a slot the processor lacks crashes).");
    m.def("init", &nuv::cv::init, "Registers the library's variant conversions; leaves the slot.");
}

}  // namespace nuvpy

PYBIND11_MODULE(_nuv, m) {
    namespace py = pybind11;
    using namespace nuv::core::image;
    m.doc() = "nuv, a computer-vision library for frames one at a time, over NumPy arrays.";
    py::enum_<Format>(m, "Format", "Pixel formats; the numbers are stable.")
        .value("FormatNone", FormatNone)
        .value("RGB", RGB)
        .value("BGR", BGR)
        .value("BGRA", BGRA)
        .value("Gray", Gray)
        .value("FormatOther", FormatOther)
        .value("HSV", HSV)
        .value("YCbCr", YCbCr)
        .value("HLS", HLS)
        .export_values();
    nuvpy::bindLog(m);
    nuvpy::bindImage(m);
    nuvpy::bindOperations(m);
    py::module_ filter = m.def_submodule("filter", "Neighbourhood filters.");
    nuvpy::bindFilters(filter);
    nuvpy::bindSegments(m);
    nuvpy::bindClasses(m);
    nuvpy::bindSelection(m);
    nuvpy::bindFiles(m);
}
