// The parts of the extension module, each binding one group of the library.
#pragma once

#include <pybind11/pybind11.h>

namespace nuvpy {

namespace py = pybind11;

void bindLog(py::module_& m);
void bindOperations(py::module_& m);
void bindFilters(py::module_& filter);
void bindClasses(py::module_& m);
void bindSegments(py::module_& m);
void bindSelection(py::module_& m);
void bindFiles(py::module_& m);

}  // namespace nuvpy
