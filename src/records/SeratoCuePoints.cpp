#include "records/SeratoCuePoints.h"

#include "platform/Log.h"

#include <stdexcept>

namespace zal {

namespace {

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
