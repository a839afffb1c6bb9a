// The library's log lines become Python warnings of the category nuv.NuvWarning.
#include "module.h"

#include <nuv/core/Log.h>

namespace nuvpy {

void bindLog(py::module_& m) {
    // Kept for the life of the process: the sink may run until the interpreter leaves.
    PyObject* category = PyErr_NewExceptionWithDoc(
        "nuv.NuvWarning", "A line of nuv's log: a refused argument or an unsupported format.",
        PyExc_UserWarning, nullptr);
    if (category == nullptr) throw py::error_already_set();
    m.add_object("NuvWarning", py::reinterpret_borrow<py::object>(category));

    // A line may come from any thread, so the sink takes the interpreter's lock itself. A
    // warning filter that turns the warning into an error makes warn fail; the error then
    // leaves the sink as an exception, which the library passes up to the call that logged,
    // and from there to Python.
    nuv::core::Log::singleton().setSink([category](std::string const& line) {
        py::gil_scoped_acquire hold;
        if (PyErr_WarnEx(category, line.c_str(), 1) < 0) throw py::error_already_set();
    });
    // After the interpreter is gone no lock can be taken: lines go to standard error again.
    py::module_::import("atexit").attr("register")(
        py::cpp_function([] { nuv::core::Log::singleton().setSink({}); }));
}

}  // namespace nuvpy
