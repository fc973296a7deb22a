#include "CueText.h"

#include "CuePlaces.h"
#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace {

bool isSame(const ZALTagCuePoint& one, const ZALTagCuePoint& other) {
    constexpr double microsecond = 1e-6;
    return std::abs(one.time() - other.time()) < microsecond &&
           one.name().value_or("") == other.name().value_or("");
}

bool isAmong(const CuePoints& all, const ZALTagCuePoint& wanted) {
    return std::any_of(all.begin(), all.end(), [&](const auto& one) { return isSame(one, wanted); });
}

}  // namespace

ZALJSONValue jsonOfCues(const CuePoints& cuePoints) {
    ZALJSONValue::Array out;
    for (const ZALTagCuePoint& cue : cuePoints) {
        const bool hasEnd = cue.end() && std::isfinite(*cue.end());  // JSON has no word for other numbers
        out.push_back(ZALJSONValue::Object{
            {"time", cue.time()},
            {"name", cue.name()},
            {"pad", cue.pad() ? ZALJSONValue(*cue.pad()) : ZALJSONValue()},
            {"color", cue.color() ? ZALJSONValue(fmt::format("{:06X}", *cue.color())) : ZALJSONValue()},
            {"end", hasEnd ? ZALJSONValue(*cue.end()) : ZALJSONValue()},
            {"kind", ZALTagCuePoint::nameOfKind(cue.kind())}});
    }
    return out;
}

std::string cueText(const ZALTagCuePoint& cue) {
    return fmt::format("{} \"{}\"", secondsText(cue.time()), printable(cue.name().value_or("")));
}

CueChanges changesOf(const CuePoints& asked, const CuePoints& before, const CuePoints& after) {
    CueChanges changes;
    for (std::size_t i = 0; i < after.size(); ++i) {
        const bool isMoved = i < asked.size() && !isSame(asked[i], after[i]);
        if (isMoved) ++changes.moved;
        if (isAmong(before, after[i])) continue;
        const std::string target = isMoved ? " -> " + secondsText(after[i].time()) : "";
        changes.lines.push_back(cueText(isMoved ? asked[i] : after[i]) + target);
    }
    for (const ZALTagCuePoint& cue : before) {
        if (!isAmong(after, cue)) changes.lines.push_back("- " + cueText(cue));
    }
    return changes;
}
