#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// A JSON value: null, a boolean, an integer, a number, a text, an array or an object with its keys in order.
/// A value type without invariants beyond its own: it can hold what JSON text cannot (NaN, text that is not
/// UTF-8), and then does not serialise. Reading never fails: a value of another type reads as null or 0.
class ZALTAG_EXPORT ZALJSONValue {
  public:
    using Array = std::vector<ZALJSONValue>;
    using Object = std::map<std::string, ZALJSONValue>;

    ZALJSONValue() = default;
    ZALJSONValue(std::nullptr_t) {}  // every JSON type is a value
    ZALJSONValue(bool value) : value_(value) {}
    ZALJSONValue(int value) : value_(std::int64_t{value}) {}
    ZALJSONValue(std::int64_t value) : value_(value) {}
    ZALJSONValue(std::uint32_t value) : value_(std::int64_t{value}) {}
    ZALJSONValue(double value) : value_(value) {}
    ZALJSONValue(const char* value) : value_(std::string(value)) {}
    ZALJSONValue(std::string value) : value_(std::move(value)) {}
    ZALJSONValue(const ZALNullableString& value) {
        if (value) value_ = *value;
    }
    ZALJSONValue(Array value) : value_(std::move(value)) {}
    ZALJSONValue(Object value) : value_(std::move(value)) {}

    bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
    bool isBool() const { return std::holds_alternative<bool>(value_); }
    bool isInteger() const { return std::holds_alternative<std::int64_t>(value_); }
    bool isDouble() const { return std::holds_alternative<double>(value_); }
    bool isString() const { return std::holds_alternative<std::string>(value_); }
    bool isArray() const { return std::holds_alternative<Array>(value_); }
    bool isObject() const { return std::holds_alternative<Object>(value_); }

    /// The integer value: of a number (cut towards zero, saturated), a boolean (0 or 1) or a numeric text;
    /// else 0.
    std::int64_t integerValue() const;
    /// The number as a double: of a number, a boolean or a numeric text; else 0.
    double doubleValue() const;
    /// The truth of a boolean, of a number (not 0) or of a text ("true", "yes" or a number that is not 0).
    bool boolValue() const;
    /// The text, or null for every other type.
    ZALNullableString stringValue() const;
    /// The array, or an empty one for every other type. The reference lives as long as this value.
    const Array& arrayValue() const;
    /// The object, or an empty one for every other type. The reference lives as long as this value.
    const Object& objectValue() const;
    /// The value under a key of an object; the null value when there is none or this is no object.
    const ZALJSONValue& operator[](const std::string& key) const;

    bool operator==(const ZALJSONValue& other) const { return value_ == other.value_; }

  private:
    std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object> value_;
};
