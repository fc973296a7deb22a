#include "base/Numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace zal {

namespace {

// The text behind its leading white space and plus sign, as std::from_chars wants it.
std::string_view numberStart(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    if (first == std::string_view::npos) return {};
    text.remove_prefix(first);
    const bool plus = text.front() == '+' && text.size() > 1 && text[1] != '-';
    if (plus) text.remove_prefix(1);
    return text;
}

}  // namespace

std::int64_t integerValue(std::string_view text) {
    text = numberStart(text);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                   : std::numeric_limits<std::int64_t>::max();
    }
    return value;
}

std::uint64_t unsignedValue(std::string_view text) {
    text = numberStart(text);
    if (text.starts_with('-')) return static_cast<std::uint64_t>(integerValue(text));
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : value;
}

double doubleValue(std::string_view text) {
    text = numberStart(text);
    const std::size_t digit = text.find_first_not_of("-.");
    const bool number =
        digit != std::string_view::npos && digit <= 2 && text[digit] >= '0' && text[digit] <= '9';
    if (!number) return 0;  // from_chars would also take "inf" and "nan"
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc::result_out_of_range) return value;
    // Out of range is too large or too small to tell from zero; the exponent's sign says which.
    const std::string_view read(text.data(), static_cast<std::size_t>(end - text.data()));
    const std::size_t exponent = read.find_first_of("eE");
    const bool small =
        exponent != std::string_view::npos && exponent + 1 < read.size() && read[exponent + 1] == '-';
    const double magnitude = small ? 0.0 : std::numeric_limits<double>::max();
    return text.front() == '-' ? -magnitude : magnitude;
}

std::uint32_t millisecondsFromSeconds(double seconds) {
    const double milliseconds = std::round(seconds * 1000.0);
    if (!(milliseconds > 0)) return 0;
    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    return milliseconds >= static_cast<double>(most) ? most : static_cast<std::uint32_t>(milliseconds);
}

float singlePrecision(double value) {
    constexpr double most = std::numeric_limits<float>::max();
    if (value > most) return std::numeric_limits<float>::max();
    return value < -most ? std::numeric_limits<float>::lowest() : static_cast<float>(value);
}

std::string shortestDecimal(double value) {
    std::array<char, 400> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed);
    return error == std::errc{} ? std::string(buffer.data(), end) : std::string();
}

unsigned int clampedUnsigned(std::int64_t value) {
    if (value < 0) return 0;
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<unsigned int>(value > most ? most : value);
}

}  // namespace zal
