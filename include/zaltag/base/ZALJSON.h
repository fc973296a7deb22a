#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALJSONValue.h>

#include <optional>
#include <string>
#include <string_view>

/// JSON text to values and back. No state; any thread; nothing is logged.
class ZALTAG_EXPORT ZALJSON {
  public:
    /// The deepest nesting that is read.
    static constexpr int depthMax = 512;
    /// The longest text that is read, in bytes: a value takes some thirty times the memory of its text.
    static constexpr std::size_t lengthMax = std::size_t{8} << 20;

    /// The value of a JSON text in UTF-8. Null when it is not well-formed, not UTF-8, longer than lengthMax
    /// or nested deeper than depthMax; `error`, when given, then says why and where.
    static std::optional<ZALJSONValue> parse(std::string_view text, std::string* error = nullptr);

    /// True when the value can be written as JSON: numbers are finite and texts are UTF-8.
    static bool isValid(const ZALJSONValue& value);

    /// The value as JSON text, keys sorted: compact, or indented by two blanks a level. Null when it is not
    /// valid or the memory cannot be had; `error`, when given, then says why.
    static std::optional<std::string> serialize(const ZALJSONValue& value, bool indented = false,
                                                std::string* error = nullptr);

    /// The value as text for the log, never null: compact JSON as far as it goes. A number that is not finite
    /// stands as the text "nan" or "inf", malformed UTF-8 as U+FFFD, what is deeper than depthMax as "...".
    static std::string description(const ZALJSONValue& value);
};
