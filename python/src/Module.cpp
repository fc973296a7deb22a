#include "Convert.h"

PYBIND11_MODULE(_core, module) {
    module.doc() = "The parts of zaltag that are written in C++; import zaltag instead.";
    py::register_exception_translator([](std::exception_ptr pointer) {
        try {
            if (pointer) std::rethrow_exception(pointer);
        } catch (const ZALProgrammingError& error) {
            const py::object type = py::module_::import("zaltag._errors").attr("UnsupportedOperation");
            PyErr_SetString(type.ptr(), error.what());
        }
    });
    addValues(module);
    addSerato(module);
    addTags(module);
    addCollections(module);
    addHost(module);
}
