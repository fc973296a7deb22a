#include "Convert.h"

#include <filesystem>

namespace {

constexpr int depthMax = 512;

ZALJSONValue jsonFrom(const py::handle& object, int depth) {
    if (depth > depthMax) throw py::value_error("nested too deep");
    if (object.is_none()) return nullptr;
    if (py::isinstance<py::bool_>(object)) return object.cast<bool>();
    if (py::isinstance<py::int_>(object)) return object.cast<std::int64_t>();
    if (py::isinstance<py::float_>(object)) return object.cast<double>();
    if (py::isinstance<py::str>(object)) return object.cast<std::string>();
    if (py::isinstance<py::dict>(object)) {
        ZALJSONValue::Object members;
        for (const auto& [key, value] : py::reinterpret_borrow<py::dict>(object)) {
            if (!py::isinstance<py::str>(key)) throw py::type_error("the keys of a record are texts");
            members.emplace(key.cast<std::string>(), jsonFrom(value, depth + 1));
        }
        return members;
    }
    if (py::isinstance<py::list>(object) || py::isinstance<py::tuple>(object)) {
        ZALJSONValue::Array elements;
        for (const py::handle& one : object) {
            elements.push_back(jsonFrom(one, depth + 1));
        }
        return elements;
    }
    throw py::type_error("a record holds what JSON has: dict, list, str, int, float, bool, None");
}

}  // namespace

py::object textOf(const ZALNullableString& text) {
    if (!text) return py::none();
    PyObject* decoded = PyUnicode_DecodeUTF8(text->data(), static_cast<Py_ssize_t>(text->size()), "replace");
    if (decoded == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(decoded);
}

ZALNullableString textFrom(const std::optional<py::str>& text) {
    if (!text) return std::nullopt;
    return static_cast<std::string>(*text);
}

namespace {

[[noreturn]] void refuse(const py::object& value, const char* argument, const char* kind) {
    throw py::type_error(std::string(argument) + " has to be " + kind + " or None, not " +
                         std::string(py::repr(value)));
}

}  // namespace

ZALNullableString textFrom(const py::object& text, const char* argument) {
    if (text.is_none()) return std::nullopt;
    if (!py::isinstance<py::str>(text)) refuse(text, argument, "a str");
    return static_cast<std::string>(py::str(text));
}

std::int64_t integerFrom(const py::object& number, const char* argument) {
    if (number.is_none()) return 0;
    if (PyIndex_Check(number.ptr()) == 0) refuse(number, argument, "an int");
    return number.cast<std::int64_t>();
}

std::string pathFrom(const py::object& path) {
    const auto bytes = py::module_::import("os").attr("fsencode")(path).cast<std::string>();
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(bytes, error);
    return error ? bytes : absolute.string();
}

std::string collectionPathFrom(const py::object& path) {
    return std::filesystem::path(pathFrom(path)).lexically_normal().string();
}

py::object pathOf(const ZALNullableString& path) {
    if (!path) return py::none();
    const py::object decoded = py::module_::import("os").attr("fsdecode")(py::bytes(*path));
    return py::module_::import("pathlib").attr("Path")(decoded);
}

py::object bytesOf(const ZALNullableData& data) {
    if (!data) return py::none();
    return py::bytes(reinterpret_cast<const char*>(data->data()), data->size());
}

ZALDataView viewOf(const py::bytes& bytes) {
    const std::string_view view = bytes;
    return {reinterpret_cast<const std::uint8_t*>(view.data()), view.size()};
}

py::object objectOf(const ZALJSONValue& value) {
    if (value.isBool()) return py::bool_(value.boolValue());
    if (value.isInteger()) return py::int_(value.integerValue());
    if (value.isDouble()) return py::float_(value.doubleValue());
    if (value.isString()) return textOf(value.stringValue());
    if (value.isArray()) {
        py::list list;
        for (const ZALJSONValue& one : value.arrayValue()) {
            list.append(objectOf(one));
        }
        return list;
    }
    if (value.isObject()) {
        py::dict dict;
        for (const auto& [key, member] : value.objectValue()) {
            dict[textOf(key)] = objectOf(member);
        }
        return dict;
    }
    return py::none();
}

ZALJSONValue jsonFrom(const py::handle& object) {
    return jsonFrom(object, 0);
}

std::shared_ptr<py::object> keep(py::object object) {
    return {new py::object(std::move(object)), [](py::object* kept) {
                if (Py_IsInitialized() != 0) {
                    const py::gil_scoped_acquire lock;
                    delete kept;
                } else {
                    kept->release();  // the interpreter and all its objects are gone
                    delete kept;
                }
            }};
}
