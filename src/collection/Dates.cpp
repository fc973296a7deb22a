#include "collection/Dates.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <charconv>
#include <ctime>

namespace zal {

namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::system_clock;
using std::chrono::year_month_day;

// Takes a number of at most `digits` digits from the front of a text.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
    int number = 0;
    const char* const end = text.data() + std::min(digits, text.size());
    if (text.empty() || text.front() == '-') return std::nullopt;
    const auto [next, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    return number;
}

bool takeSlash(std::string_view& text) {
    if (!text.starts_with('/')) return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

std::string stampDate(system_clock::time_point time) {
    const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(time));
    std::tm local{};
    ::tzset();
    ::localtime_r(&seconds, &local);
    return fmt::format("{:%Y-%m-%d %H:%M:%S%z}", local);
}

std::string slashDate(system_clock::time_point time) {
    const year_month_day date{floor<days>(time)};
    return fmt::format("{:04}/{}/{}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                       static_cast<unsigned>(date.day()));
}

std::optional<system_clock::time_point> parseSlashDate(std::string_view text) {
    const auto year = takeNumber(text, 4);
    if (!year || *year < 1 || !takeSlash(text)) return std::nullopt;
    const auto month = takeNumber(text, 2);
    if (!month || !takeSlash(text)) return std::nullopt;
    const auto day = takeNumber(text, 2);
    if (!day || !text.empty()) return std::nullopt;
    const year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                              std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) return std::nullopt;
    // What the clock does not reach is its first or last full day.
    constexpr auto first = std::chrono::sys_days(std::chrono::year(1678) / 1 / 1);
    constexpr auto last = std::chrono::sys_days(std::chrono::year(2261) / 12 / 31);
    return std::clamp(std::chrono::sys_days(date), first, last);
}

system_clock::time_point startOfDayUTC(system_clock::time_point time) {
    return floor<days>(time);
}

}  // namespace zal
