#pragma once

#include <zaltag/zaltag.h>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace py = pybind11;

// Between the values of the library and those of Python. All of it with the interpreter's lock held.

/// A text as str, what is not UTF-8 replaced; None for null.
py::object textOf(const ZALNullableString& text);
/// The text of a str; null for None.
ZALNullableString textFrom(const std::optional<py::str>& text);

/// The absolute path that a str, bytes or os.PathLike names.
std::string pathFrom(const py::object& path);
/// The same as collections know it: lexically normalised as well.
std::string collectionPathFrom(const py::object& path);
/// A pathlib.Path; None for null.
py::object pathOf(const ZALNullableString& path);

py::object bytesOf(const ZALNullableData& data);
ZALDataView viewOf(const py::bytes& bytes);

/// A JSON value as dict, list, str, int, float, bool or None.
py::object objectOf(const ZALJSONValue& value);
/// Throws TypeError for what JSON has not.
ZALJSONValue jsonFrom(const py::handle& object);

/// The text of a str, null for None; TypeError with the argument's name for anything else.
ZALNullableString textFrom(const py::object& text, const char* argument);
/// The value of an int or so, 0 for None; the same.
std::int64_t integerFrom(const py::object& number, const char* argument);

/// An array or a vector as a tuple.
template <typename Elements>
py::tuple tupleOf(const Elements& elements) {
    py::tuple tuple(elements.size());
    std::size_t i = 0;
    for (const auto& element : elements) {
        if constexpr (std::is_same_v<std::decay_t<decltype(element)>, std::string>)
            tuple[i++] = textOf(element);
        else
            tuple[i++] = py::cast(element);
    }
    return tuple;
}

/// The elements of any iterable but a text; TypeError with the argument's name for one of another type.
template <typename T>
std::vector<T> vectorFrom(const py::object& elements, const char* argument) {
    const std::string kind = py::str(py::type::of<T>().attr("__name__"));
    std::vector<T> vector;
    try {
        for (const py::handle& element : elements) {
            vector.push_back(element.cast<T>());
        }
    } catch (const py::cast_error&) {
        throw py::type_error(std::string(argument) + " holds " + kind + " alone");
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_TypeError)) throw;
        throw py::type_error(std::string(argument) + " has to be an iterable of " + kind);
    }
    return vector;
}

/// A Python object that C++ code of any thread may let go of.
std::shared_ptr<py::object> keep(py::object object);

/// Calls into Python from any thread of the library; nothing of it may throw there.
template <typename Call>
void callPython(const Call& call) {
    if (Py_IsInitialized() == 0) return;
    const py::gil_scoped_acquire lock;
    try {
        call();
    } catch (py::error_already_set& raised) {
        raised.discard_as_unraisable("zaltag");
    }
}

/// Raises an exception of zaltag._errors, made with these arguments.
template <typename... Arguments>
[[noreturn]] void raise(const char* name, Arguments&&... arguments) {
    const py::object type = py::module_::import("zaltag._errors").attr(name);
    const py::object error = type(std::forward<Arguments>(arguments)...);
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

// Each adds its part to the module.
void addValues(py::module_& module);
void addSerato(py::module_& module);
void addTags(py::module_& module);
void addCollections(py::module_& module);
void addHost(py::module_& module);
