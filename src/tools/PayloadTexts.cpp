#include "tools/PayloadTexts.h"

#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/tag/ZALTagDataImage.h>

#include <fmt/format.h>

#include <iterator>
#include <utility>
#include <vector>

namespace zal {

namespace {

using Dictionary = std::optional<ZALJSONValue>;

// "1 cue point", "2 cue points".
std::string counted(std::size_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

// The library's own records. "{:g}" is how a C++ stream prints a number by default.

std::string keyText(const Dictionary& dictionary, std::string_view is) {
    const auto key = ZALTagKey::initWithJSONDict(dictionary);
    if (!key) return unreadable;
    return fmt::format("source{0}'{1}', key{0}'{2}', algorithm{0}{3}", is, key->source(),
                       key->key().value_or(""), key->algorithm());
}

std::string energyText(const Dictionary& dictionary, std::string_view is) {
    const auto energy = ZALTagEnergy::initWithJSONDict(dictionary);
    if (!energy) return unreadable;
    return fmt::format("source{0}'{1}', energy{0}{2}, algorithm{0}{3}", is, energy->source(),
                       energy->energy(), energy->algorithm());
}

std::string beatGridText(const Dictionary& dictionary, std::string_view is) {
    const auto grid = ZALTagBeatGrid::initWithJSONDict(dictionary);
    if (!grid) return unreadable;
    const std::size_t beats = grid->beats() ? grid->beats()->size() : 0;
    return fmt::format("source{0}'{1}', {2} beats, tempo{0}{3:g}, algorithm{0}{4}", is, grid->source(), beats,
                       grid->tempo(), grid->algorithm());
}

std::string cuePointsText(const Dictionary& dictionary, std::string_view is) {
    const auto record = ZALTagCuePoints::initWithJSONDict(dictionary);
    if (!record) return unreadable;
    std::string cues;
    for (const ZALTagCuePoint& cue : record->cuePoints()) {
        fmt::format_to(std::back_inserter(cues), " ['{}'] {:g}", cue.name().value_or(""), cue.time());
    }
    return fmt::format("source{0}'{1}', {2} {{{3}}}, algorithm{0}{4}", is, record->source(),
                       counted(record->cuePoints().size(), "cue point"), cues, record->algorithm());
}

// Serato's payloads

std::string markersText(const ZALNullableData& payload, SeratoForm form) {
    const auto marker = readOldSeratoMarker(payload, form);
    if (!marker) return unreadable;
    std::string cues;
    for (const ZALTagSeratoCuePointOld& cue : marker->cuePoints()) {
        fmt::format_to(std::back_inserter(cues), "{}{}", cues.empty() ? "" : " ", cue.position());
    }
    return fmt::format("{} v1 ({}.{}) {{{}}}", counted(marker->cuePoints().size(), "cue point"),
                       marker->major(), marker->minor(), cues);
}

std::string markers2Text(const ZALNullableData& payload, SeratoForm form) {
    const auto marker = readSeratoMarker(payload, form);
    if (!marker) return unreadable;
    std::string cues;
    for (const ZALTagSeratoCuePoint& cue : marker->cuePoints()) {
        fmt::format_to(std::back_inserter(cues), "{}['{}'] {}", cues.empty() ? "" : " ",
                       cue.label().value_or(""), cue.position());
    }
    return fmt::format("{} v2 ({}.{}) {{{}}}", counted(marker->cuePoints().size(), "cue point"),
                       marker->major(), marker->minor(), cues);
}

std::string seratoGridText(const ZALNullableData& payload, SeratoForm form) {
    const auto grid = readSeratoGrid(payload, form);
    if (!grid) return unreadable;
    const auto& points = grid->gridPoints();
    std::string markers;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        fmt::format_to(std::back_inserter(markers), "<{:g} {} beats> ", points[i].position(),
                       points[i].beatsToNext());
    }
    if (!points.empty()) {
        fmt::format_to(std::back_inserter(markers), "<{:g} {:g} bpm> ", points.back().position(),
                       points.back().tempo());
    }
    return fmt::format("{} ({}.{}) {{ {}}}", counted(points.size(), "beat grid point"), grid->major(),
                       grid->minor(), markers);
}

}  // namespace

std::span<const RecordText> recordTexts() {
    static constexpr RecordText texts[] = {
        {keyCarrier, "key", keyText},
        {energyCarrier, "energy", energyText},
        {beatGridCarrier, "beats", beatGridText},
        {cuePointsCarrier, "cues", cuePointsText},
    };
    return texts;
}

std::span<const SeratoText> seratoTexts() {
    static constexpr SeratoText texts[] = {
        {markersCarrier, markersText},
        {markers2Carrier, markers2Text},
        {seratoGridCarrier, seratoGridText},
    };
    return texts;
}

std::string markOfPicture(ZALDataView picture) {
    const ZALTagDataImage image(ZALData(picture.begin(), picture.end()));
    if (image.isOriginalImage()) return " (ZAL Original)";
    return image.isCustomImage() ? " (ZAL Customized)" : "";
}

}  // namespace zal
