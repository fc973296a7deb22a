#include "CueWords.h"

#include "Assignments.h"
#include "Output.h"

#include <zaltag/base/ZALText.h>

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace {

// A number of seconds, with minutes and a colon in front or not, and nothing else.
std::optional<double> secondsOf(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon != text.npos) {
        const std::string_view minutes = text.substr(0, colon);
        const bool isNumber =
            !minutes.empty() && minutes.size() < 7 && minutes.find_first_not_of("0123456789") == minutes.npos;
        const auto seconds = secondsOf(text.substr(colon + 1));
        if (!isNumber || !seconds || *seconds < 0 || *seconds >= 60) return std::nullopt;
        return 60 * std::stod(std::string(minutes)) + *seconds;
    }
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isWhole = error == std::errc{} && end == text.data() + text.size() && !text.empty();
    return isWhole && std::isfinite(seconds) ? std::optional(seconds) : std::nullopt;
}

struct Words {
    std::optional<int> pad;
    double time = 0;
    std::optional<double> end;
};

// The dash in front of an end; no sign of a number or of its exponent.
std::size_t dashOf(std::string_view text) {
    std::size_t dash = text.find('-', 1);
    while (dash != text.npos && (text[dash - 1] == 'e' || text[dash - 1] == 'E')) {
        dash = text.find('-', dash + 1);
    }
    return dash;
}

std::optional<Words> wordsOf(std::string_view text) {
    Words words;
    if (text.size() > 2 && text[1] == ':' && text[0] >= 'A' && text[0] <= 'H') {
        words.pad = text[0] - 'A';
        text.remove_prefix(2);
    }
    const std::size_t dash = dashOf(text);
    const auto time = secondsOf(text.substr(0, dash));
    if (!time) return std::nullopt;
    words.time = *time;
    if (dash == text.npos) return words;
    words.end = secondsOf(text.substr(dash + 1));
    return words.end ? std::optional(words) : std::nullopt;
}

// The colour that a name ends with.
std::optional<std::uint32_t> colorOf(std::string_view text) {
    std::uint32_t color = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), color, 16);
    const bool isColor = error == std::errc{} && end == text.data() + text.size() && text.size() == 6;
    return isColor ? std::optional(color) : std::nullopt;
}

void setNameAndColor(ZALTagCuePoint& cue, std::string_view text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDoubled = text.substr(i, 2) == "##";
        if (text[i] == '#' && !isDoubled && colorOf(text.substr(i + 1))) {
            cue.setColor(colorOf(text.substr(i + 1)));
            break;
        }
        name += text[i];
        if (isDoubled) ++i;
    }
    cue.setName(name);
}

}  // namespace

bool isCueTime(const std::string& text) {
    return wordsOf(text).has_value();
}

ZALTagCuePoint cuePointOfWords(const std::string& time, const std::string& name) {
    const Words words = wordsOf(time).value_or(Words());
    if (words.time < 0) throw UsageError(fmt::format("{} lies before the start of the track", time));
    if (words.end && *words.end <= words.time)
        throw UsageError(fmt::format("{} ends before it begins", time));
    if (ZALValidUTF8(name) != name) throw UsageError("a name is not UTF-8");
    ZALTagCuePoint cue(words.time, name);
    cue.setPad(words.pad);
    cue.setEnd(words.end);
    if (words.pad || words.end) setNameAndColor(cue, name);
    return cue;
}
