#include "CuePlaces.h"

#include <zaltag/zaltag.h>

#include <array>
#include <charconv>

namespace {

ZALArray<ZALTagCuePoint> readOwn(const ZALTag& tag) {
    const auto record = tag.zalCuePoints();
    return record ? record->cuePoints() : ZALArray<ZALTagCuePoint>();
}

void writeOwn(ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints, bool) {
    if (cuePoints.empty()) return tag.setZalCuePoints(std::nullopt);
    const auto record = tag.zalCuePoints();
    tag.setZalCuePoints(
        ZALTagCuePoints::cuePointsWithCuePointArray(cuePoints, record ? record->algorithm() : 0));
}

// The record holds times and names.
ZALCuePlan planOwn(const ZALTag&, const ZALArray<ZALTagCuePoint>& cuePoints, bool) {
    ZALCuePlan plan;
    for (const ZALTagCuePoint& cue : cuePoints) {
        plan.outcomes.push_back({cue, ZALTagCuePoint(cue.time(), cue.name())});
    }
    return plan;
}

// Other data of Serato may stand in a file without cue points; only a list that can be read, of a version
// that is known, says that they are none.
bool hasNoneOfSerato(const ZALTag& tag) {
    if (!tag.hasSeratoMetadata()) return true;
    const auto marker = tag.seratoMarker();
    return marker && marker->major() <= 2;
}

// Serato has eight slots, and, but for FLAC, two records.
std::string missingInSerato(const ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints) {
    std::string missing;
    for (const ZALCueOutcome& outcome : tag.planSeratoCuePoints(cuePoints, true).outcomes) {
        if (!outcome.isLeftOut()) continue;
        missing += (missing.empty() ? "there is no slot for " : ", ") + secondsText(outcome.asked.time()) +
                   "=" + outcome.asked.name().value_or("");
    }
    if (tag.supportsOldSeratoMarker() && !cuePoints.empty() && !tag.oldSeratoMarker())
        missing += (missing.empty() ? "" : "; ") + std::string("Serato's older record could not be written");
    return missing;
}

constexpr CuePlace places[] = {
    {"serato", [](const ZALTag& tag) { return tag.seratoCuePoints(); },
     [](const ZALTag& tag) { return tag.seratoLoops(); },
     [](ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints, bool keepsTimes) {
         keepsTimes ? tag.setRawSeratoCuePoints(cuePoints) : tag.setSeratoCuePoints(cuePoints);
     },
     hasNoneOfSerato, missingInSerato,
     [](const ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints, bool keepsTimes) {
         return tag.planSeratoCuePoints(cuePoints, keepsTimes);
     }},
    {"zal", readOwn, [](const ZALTag&) { return ZALArray<ZALTagCuePoint>(); }, writeOwn,
     [](const ZALTag&) { return true; },
     [](const ZALTag&, const ZALArray<ZALTagCuePoint>&) { return std::string(); }, planOwn},
};

}  // namespace

ZALArray<ZALTagCuePoint> CuePlace::readAll(const ZALTag& tag) const {
    std::vector<ZALTagCuePoint> all = read(tag).elements();
    const auto loops = readLoops(tag);
    all.insert(all.end(), loops.begin(), loops.end());
    return all;
}

// Each by itself: a place has room for any one.
ZALArray<ZALTagCuePoint> CuePlace::asWritten(const ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints,
                                             bool keepsTimes) const {
    std::vector<ZALTagCuePoint> written = cuePoints.elements();
    for (ZALTagCuePoint& cue : written) {
        const ZALCuePlan planned = plan(tag, {cue}, keepsTimes);
        const auto& held = planned.outcomes.front().held;
        if (!held) continue;
        cue.moveTo(held->time());
        if (!held->isLoop()) cue.setEnd(std::nullopt);
    }
    return written;
}

const CuePlace* cuePlace(const std::string& name) {
    for (const CuePlace& place : places) {
        if (name == place.name) return &place;
    }
    return nullptr;
}

std::vector<std::string> cuePlaceNames() {
    std::vector<std::string> names;
    for (const CuePlace& place : places) {
        names.emplace_back(place.name);
    }
    return names;
}

std::string secondsText(double seconds) {
    std::array<char, 400> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), seconds, std::chars_format::fixed);
    return error == std::errc{} ? std::string(buffer.data(), end) : "0";
}
