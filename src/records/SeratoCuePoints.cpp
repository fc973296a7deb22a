#include "records/SeratoCuePoints.h"

#include "base/Numbers.h"
#include "platform/Log.h"

#include <algorithm>
#include <stdexcept>

namespace zal {

namespace {

// Why a cue point is in the slot that it has: its place in the list, as a 16-bit number.
std::int16_t slotOf(std::size_t place) {
    return static_cast<std::int16_t>(place);
}

// One cue more than there is room for says so in the log; the others would only say it again.
std::size_t countOfMadeCues(const ZALArray<ZALTagCuePoint>& cuePoints) {
    return std::min<std::size_t>(cuePoints.size(), ZALTagSeratoCuePoint::maximumNumberOfCuePoints() + 1);
}

ZALNullableData orLog(ZALNullableData data, const std::string& marker) {
    if (!data) logf("Failed to render marker {} -- Serato cue points NOT SAVED", marker);
    return data;
}

}  // namespace

std::optional<ZALTagSeratoMarker> readSeratoMarker(const ZALNullableData& payload, SeratoForm form) {
    if (!payload) return std::nullopt;
    try {
        return form == SeratoForm::raw ? ZALTagSeratoMarker::markerWithData(*payload)
                                       : ZALTagSeratoMarker::markerWithEncodedData(*payload);
    } catch (const std::out_of_range& error) {
        logDamage(
            fmt::format("Serato marker data without payload: {} ({})", describe(*payload), error.what()));
        return std::nullopt;
    }
}

std::optional<ZALTagSeratoMarkerOld> readOldSeratoMarker(const ZALNullableData& payload, SeratoForm form) {
    if (!payload) return std::nullopt;
    return form == SeratoForm::raw ? ZALTagSeratoMarkerOld::markerWithData(*payload)
                                   : ZALTagSeratoMarkerOld::markerWithEncodedData(*payload);
}

std::optional<ZALTagSeratoGrid> readSeratoGrid(const ZALNullableData& payload, SeratoForm form) {
    if (!payload) return std::nullopt;
    return form == SeratoForm::raw ? ZALTagSeratoGrid::gridWithData(*payload)
                                   : ZALTagSeratoGrid::gridWithEncodedData(*payload);
}

ZALArray<ZALTagCuePoint> cuePointsOfSeratoMarker(const std::optional<ZALTagSeratoMarker>& marker) {
    std::vector<ZALTagCuePoint> cuePoints;
    if (!marker) return cuePoints;
    for (const ZALTagSeratoCuePoint& cue : marker->cuePoints()) {
        cuePoints.push_back(ZALTagCuePoint::cuePointWithTime(cue.position() / 1000.0, cue.label()));
    }
    return cuePoints;
}

ZALArray<ZALTagCuePoint> cuePointsOnSeratoGrid(const ZALArray<ZALTagCuePoint>& cuePoints,
                                               const std::optional<ZALTagSeratoGrid>& grid) {
    if (!grid) return cuePoints;
    std::vector<ZALTagCuePoint> moved;
    for (std::size_t i = 0; i < countOfMadeCues(cuePoints); ++i) {
        const ZALTagCuePoint& cue = cuePoints[i];
        moved.push_back(ZALTagCuePoint::cuePointWithTime(grid->gridTimeForTime(cue.time()), cue.name()));
    }
    return moved;
}

ZALTagSeratoMarker seratoMarkerWithCuePoints(std::optional<ZALTagSeratoMarker> marker,
                                             const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (!marker) {
        marker.emplace();
        marker->setMajor(1);
        marker->setMinor(1);
    }
    std::vector<ZALTagSeratoCuePoint> made;
    for (std::size_t i = 0; i < countOfMadeCues(cuePoints); ++i) {
        ZALNullableString label = cuePoints[i].name();
        if (label) label = ZALValidUTF8(*label);  // what is not UTF-8 would read back as null
        made.push_back(ZALTagSeratoCuePoint::cuePointWithIndex(
            slotOf(i), millisecondsFromSeconds(cuePoints[i].time()), std::move(label)));
    }
    marker->setCuePoints(std::move(made));
    return *std::move(marker);
}

ZALTagSeratoMarkerOld oldSeratoMarkerWithCuePoints(std::optional<ZALTagSeratoMarkerOld> marker,
                                                   const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (!marker) {
        marker.emplace();
        marker->setMajor(2);
        marker->setMinor(5);
    }
    std::vector<ZALTagSeratoCuePointOld> made;
    for (std::size_t i = 0; i < countOfMadeCues(cuePoints); ++i) {
        made.push_back(ZALTagSeratoCuePointOld::cuePointWithIndex(
            slotOf(i), millisecondsFromSeconds(cuePoints[i].time())));
    }
    marker->setCuePoints(std::move(made));
    return *std::move(marker);
}

ZALNullableData renderedSeratoMarker(const ZALTagSeratoMarker& marker, SeratoForm form) {
    return orLog(form == SeratoForm::raw ? marker.markerData() : marker.encodedMarkerData(),
                 marker.description());
}

ZALNullableData renderedOldSeratoMarker(const ZALTagSeratoMarkerOld& marker, SeratoForm form) {
    // The raw form is MP3's, whose sync-safe colours have 28 bits; a record from a file can bring wider ones.
    const bool raw = form == SeratoForm::raw;
    ZALNullableData data;
    if (!raw) {
        data = marker.encodedMarkerDataForFileType("m4a");
    } else if (marker.isRenderableForFileType("mp3")) {
        data = marker.markerDataForFileType("mp3");
    }
    return orLog(std::move(data), marker.description());
}

}  // namespace zal
