#include <zaltag/base/ZALJSONValue.h>

#include "base/Numbers.h"
#include "base/Unicode.h"

#include <limits>

namespace {

std::int64_t saturated(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (value >= limit) return std::numeric_limits<std::int64_t>::max();
    if (value < -limit) return std::numeric_limits<std::int64_t>::min();
    return value != value ? 0 : static_cast<std::int64_t>(value);
}

}  // namespace

std::int64_t ZALJSONValue::integerValue() const {
    if (const auto* integer = std::get_if<std::int64_t>(&value_)) return *integer;
    if (const auto* number = std::get_if<double>(&value_)) return saturated(*number);
    if (const auto* flag = std::get_if<bool>(&value_)) return *flag ? 1 : 0;
    if (const auto* text = std::get_if<std::string>(&value_)) return zal::integerValue(*text);
    return 0;
}

double ZALJSONValue::doubleValue() const {
    if (const auto* number = std::get_if<double>(&value_)) return *number;
    if (const auto* text = std::get_if<std::string>(&value_)) return zal::doubleValue(*text);
    return static_cast<double>(integerValue());
}

bool ZALJSONValue::boolValue() const {
    if (const auto* number = std::get_if<double>(&value_)) return *number != 0;
    if (const auto* text = std::get_if<std::string>(&value_)) {
        const std::string lower = zal::asciiLowercase(*text);
        return lower == "true" || lower == "yes" || zal::integerValue(lower) != 0;
    }
    return integerValue() != 0;
}

ZALNullableString ZALJSONValue::stringValue() const {
    const auto* text = std::get_if<std::string>(&value_);
    return text != nullptr ? ZALNullableString(*text) : std::nullopt;
}

const ZALJSONValue::Array& ZALJSONValue::arrayValue() const {
    static const Array none;
    const auto* array = std::get_if<Array>(&value_);
    return array != nullptr ? *array : none;
}

const ZALJSONValue::Object& ZALJSONValue::objectValue() const {
    static const Object none;
    const auto* object = std::get_if<Object>(&value_);
    return object != nullptr ? *object : none;
}

const ZALJSONValue& ZALJSONValue::operator[](const std::string& key) const {
    static const ZALJSONValue null;
    const Object& object = objectValue();
    const auto found = object.find(key);
    return found == object.end() ? null : found->second;
}
