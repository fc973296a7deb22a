#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zal {

/// The integer a text begins with: leading white space, a sign, then digits; the rest is ignored. 0 without
/// digits, saturated at 64 bits. Independent of the locale.
std::int64_t integerValue(std::string_view text);

/// The same as an unsigned number: a negative one as 2^64 less.
std::uint64_t unsignedValue(std::string_view text);

/// The number a text begins with, by the same rule, with fraction and exponent. 0 without digits.
double doubleValue(std::string_view text);

/// A number of seconds as whole milliseconds, halves away from zero. NaN and below zero give 0, too large
/// saturates.
std::uint32_t millisecondsFromSeconds(double seconds);

/// The nearest number of single precision; too large saturates.
float singlePrecision(double value);

/// The shortest decimal text that reads back as the same double, never with an exponent.
std::string shortestDecimal(double value);

/// An integer in the range that TagLib takes for years and numbers: below 0 gives 0, too large saturates.
unsigned int clampedUnsigned(std::int64_t value);

}  // namespace zal
