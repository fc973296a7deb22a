#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

// Dates as the collection files write them, whatever the process's locale is.
namespace zal {

/// "2024-03-09 17:05:00+0100": local time and its offset.
std::string stampDate(std::chrono::system_clock::time_point time);

/// "2024/3/9": the day in UTC.
std::string slashDate(std::chrono::system_clock::time_point time);

/// The start of a day in UTC from the text that slashDate() gives; zeros may lead month and day. Null for
/// every other text and for a day that does not exist; what lies before 1678 or after 2261, which the clock
/// has not, is its first or last day.
std::optional<std::chrono::system_clock::time_point> parseSlashDate(std::string_view text);

/// The start of the day in UTC.
std::chrono::system_clock::time_point startOfDayUTC(std::chrono::system_clock::time_point time);

}  // namespace zal
