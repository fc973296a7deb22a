#include "CueText.h"

#include "CuePlaces.h"
#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace {

// The same place and name; programs that store whole milliseconds have no more.
bool isSame(const ZALTagCuePoint& one, const ZALTagCuePoint& other) {
    constexpr double tolerance = 0.0005;
    const double shift = (other.end() ? *other.end() : 0) - (one.end() ? *one.end() : 0);
    return std::abs(one.time() - other.time()) <= tolerance && std::abs(shift) <= tolerance &&
           one.end().has_value() == other.end().has_value() &&
           one.name().value_or("") == other.name().value_or("");
}

// As far as the wanted one says something.
bool isHeld(const CuePoints& all, const ZALTagCuePoint& wanted) {
    return std::any_of(all.begin(), all.end(), [&](const ZALTagCuePoint& one) {
        return isSame(one, wanted) && one.kind() == wanted.kind() && one.pad() == wanted.pad() &&
               (!wanted.color() || one.color() == wanted.color());
    });
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
    std::string text = cue.pad().value_or(-1) >= 0 ? fmt::format("{:c} ", 'A' + *cue.pad()) : "";
    text += secondsText(cue.time());
    if (cue.end()) text += "-" + secondsText(*cue.end());
    text += fmt::format(" \"{}\"", printable(cue.name().value_or("")));
    if (cue.color()) text += fmt::format(" {:06X}", *cue.color());
    const bool isPlain = cue.kind() == ZALTagCuePoint::Kind::cue || cue.end();
    return isPlain ? text : text + " " + ZALTagCuePoint::nameOfKind(cue.kind());
}

bool areWhollyEqual(const CuePoints& one, const CuePoints& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const auto& cue, const auto& too) { return cue.isWhollyEqualTo(too); });
}

CuePoints leftOf(const ZALCuePlan& plan) {
    std::vector<ZALTagCuePoint> left;
    for (const ZALCueOutcome& outcome : plan.outcomes) {
        if (outcome.isLeftOut()) left.push_back(outcome.asked);
    }
    return left;
}

CueLosses::CueLosses(const ZALCuePlan& plan)
    : leftOut(plan.count(&ZALCueOutcome::isLeftOut)),
      kinds(plan.count(&ZALCueOutcome::hasOtherKind)),
      pads(plan.count(&ZALCueOutcome::hasOtherPad)),
      colors(plan.count(&ZALCueOutcome::hasOtherColor)),
      gridMarkers(plan.gridMarkersOffPads) {}

void CueLosses::add(const CueLosses& more) {
    leftOut += more.leftOut;
    kinds += more.kinds;
    pads += more.pads;
    colors += more.colors;
    gridMarkers += more.gridMarkers;
}

std::string CueLosses::text() const {
    const std::pair<std::size_t, const char*> losses[] = {{leftOut, "left out"},
                                                          {kinds, "of another kind"},
                                                          {pads, "on another pad or none"},
                                                          {colors, "in another colour or none"},
                                                          {gridMarkers, "grid markers off their pads"}};
    std::string text;
    for (const auto& [count, what] : losses) {
        if (count > 0) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, what);
    }
    return text;
}

CueChanges changesOf(const ZALCuePlan& plan, const CuePoints& before, const CuePoints& kept) {
    CueChanges changes;
    for (const ZALCueOutcome& outcome : plan.outcomes) {
        if (!outcome.held) continue;
        if (outcome.isMoved()) ++changes.moved;
        if (isHeld(before, *outcome.held) || isHeld(kept, *outcome.held)) continue;
        ZALTagCuePoint shown = *outcome.held;
        if (outcome.isMoved()) shown.moveTo(outcome.asked.time());
        const std::string target = outcome.isMoved() ? " -> " + secondsText(outcome.held->time()) : "";
        changes.lines.push_back(cueText(shown) + target);
    }
    for (const ZALTagCuePoint& cue : before) {
        const bool stays = std::any_of(plan.outcomes.begin(), plan.outcomes.end(), [&](const auto& outcome) {
            return outcome.held && isSame(*outcome.held, cue);
        });
        if (!stays) changes.lines.push_back("- " + cueText(cue));
    }
    return changes;
}
