#include <zaltag/base/ZALJSON.h>

#include "base/Unicode.h"

#include <fmt/format.h>
#include <simdjson.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Builds the value from the parser's events, so that nesting is bounded before anything deep exists.
class Builder final : public nlohmann::json_sax<nlohmann::json> {
  public:
    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(ZALJSONValue(std::int64_t{value})); }
    bool number_unsigned(number_unsigned_t value) override {
        constexpr auto most = static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max());
        return add(value > most ? ZALJSONValue(static_cast<double>(value))
                                : ZALJSONValue(static_cast<std::int64_t>(value)));
    }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(Frame{.isObject = true}); }
    bool key(string_t& value) override {
        frames_.back().key = std::move(value);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Frame{.isObject = false}); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& exception) override {
        error = exception.what();
        return false;
    }

    ZALJSONValue result;
    std::string error;

  private:
    struct Frame {
        bool isObject = false;
        ZALJSONValue::Array array{};
        ZALJSONValue::Object object{};
        std::string key{};
    };

    bool open(Frame frame) {
        if (frames_.size() >= ZALJSON::depthMax) {
            error = "nested deeper than " + std::to_string(ZALJSON::depthMax) + " levels";
            return false;
        }
        frames_.push_back(std::move(frame));
        return true;
    }
    bool close() {
        Frame frame = std::move(frames_.back());
        frames_.pop_back();
        return frame.isObject ? add(std::move(frame.object)) : add(std::move(frame.array));
    }
    bool add(ZALJSONValue value) {
        if (frames_.empty()) {
            result = std::move(value);
        } else if (frames_.back().isObject) {
            frames_.back().object.insert_or_assign(std::move(frames_.back().key), std::move(value));
        } else {
            frames_.back().array.push_back(std::move(value));
        }
        return true;
    }

    std::vector<Frame> frames_;
};

// What every record of this library is can be read in a fraction of the time: a text that is well-formed,
// short and shallow, without escapes of code points. The parser above judges the rest, and says what is
// wrong.
class QuickParser {
  public:
    std::optional<ZALJSONValue> parse(std::string_view text) {
        constexpr std::size_t longest = std::size_t{1} << 20;
        if (text.size() > longest || text.find("\\u") != text.npos) return std::nullopt;
        simdjson::dom::element root;
        if (parser_.parse(text.data(), text.size()).get(root) != simdjson::SUCCESS) return std::nullopt;
        return valueOf(root, 0);
    }

  private:
    static std::optional<ZALJSONValue> valueOf(const simdjson::dom::element& element, int depth) {
        using Type = simdjson::dom::element_type;
        constexpr int deepest = 64;
        switch (element.type()) {
            case Type::ARRAY:
                return depth < deepest ? arrayOf(element, depth + 1) : std::nullopt;
            case Type::OBJECT:
                return depth < deepest ? objectOf(element, depth + 1) : std::nullopt;
            case Type::INT64:
                return std::int64_t{element};
            case Type::UINT64:
                return static_cast<double>(std::uint64_t{element});
            case Type::DOUBLE:
                return double{element};
            case Type::STRING:
                return std::string(std::string_view(element));
            case Type::BOOL:
                return bool{element};
            default:
                return nullptr;
        }
    }
    static std::optional<ZALJSONValue> arrayOf(const simdjson::dom::array& elements, int depth) {
        ZALJSONValue::Array array;
        array.reserve(elements.size());
        for (const simdjson::dom::element element : elements) {
            auto value = valueOf(element, depth);
            if (!value) return std::nullopt;
            array.push_back(std::move(*value));
        }
        return array;
    }
    static std::optional<ZALJSONValue> objectOf(const simdjson::dom::object& members, int depth) {
        ZALJSONValue::Object object;
        for (const auto [key, element] : members) {
            auto value = valueOf(element, depth);
            if (!value) return std::nullopt;
            object.insert_or_assign(std::string(key), std::move(*value));
        }
        return object;
    }

    simdjson::dom::parser parser_;
};

// The library's own value. What JSON cannot hold becomes a text that says so, for descriptions; a valid value
// has none of it.
nlohmann::json libraryValue(const ZALJSONValue& value, int depth = ZALJSON::depthMax) {
    if (depth < 0) return "...";
    if (value.isArray()) {
        nlohmann::json out = nlohmann::json::array();
        for (const ZALJSONValue& element : value.arrayValue()) {
            out.push_back(libraryValue(element, depth - 1));
        }
        return out;
    }
    if (value.isObject()) {
        nlohmann::json out = nlohmann::json::object();
        for (const auto& [key, element] : value.objectValue()) {
            out[key] = libraryValue(element, depth - 1);
        }
        return out;
    }
    if (value.isString()) return *value.stringValue();
    if (value.isBool()) return value.boolValue();
    if (value.isInteger()) return value.integerValue();
    if (!value.isDouble()) return nullptr;
    const double number = value.doubleValue();
    return std::isfinite(number) ? nlohmann::json(number) : nlohmann::json(fmt::format("{}", number));
}

bool isValidWithin(const ZALJSONValue& value, int depth) {
    if (depth < 0) return false;
    if (value.isDouble()) return std::isfinite(value.doubleValue());
    if (value.isString()) return zal::isValidUTF8(*value.stringValue());
    const auto& array = value.arrayValue();
    const auto& object = value.objectValue();
    return std::all_of(array.begin(), array.end(),
                       [depth](const ZALJSONValue& element) { return isValidWithin(element, depth - 1); }) &&
           std::all_of(object.begin(), object.end(), [depth](const auto& member) {
               return zal::isValidUTF8(member.first) && isValidWithin(member.second, depth - 1);
           });
}

}  // namespace

std::optional<ZALJSONValue> ZALJSON::parse(std::string_view text, std::string* error) {
    Builder builder;
    std::string reason;
    try {
        thread_local QuickParser quick;
        if (auto value = quick.parse(text)) return value;
        if (text.size() > lengthMax)
            throw std::length_error("longer than " + std::to_string(lengthMax) + " bytes");
        if (nlohmann::json::sax_parse(text, &builder)) return std::move(builder.result);
        reason = builder.error;
    } catch (const std::exception& exception) {  // what the parser throws by itself, bad_alloc included
        reason = exception.what();
    }
    // The parser quotes the bytes that are at fault.
    if (error != nullptr) *error = ZALValidUTF8(reason);
    return std::nullopt;
}

bool ZALJSON::isValid(const ZALJSONValue& value) {
    return isValidWithin(value, depthMax);
}

std::optional<std::string> ZALJSON::serialize(const ZALJSONValue& value, bool indented, std::string* error) {
    std::string reason = "not a valid JSON value";
    try {
        if (isValid(value)) return libraryValue(value).dump(indented ? 2 : -1);
    } catch (const std::exception& exception) {  // bad_alloc for a value as large as the memory
        reason = exception.what();
    }
    if (error != nullptr) *error = reason;
    return std::nullopt;
}

std::string ZALJSON::description(const ZALJSONValue& value) {
    return libraryValue(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}
