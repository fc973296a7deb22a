#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include <optional>

// Serato's payloads as the containers carry them: what every back-end does alike.

namespace zal {

/// How a container carries a payload: as it is (a GEOB frame), or as base64 text behind a header (MP4, FLAC).
enum class SeratoForm { raw, encoded };

// What a payload holds; null for null, and, with a log line, for one that cannot be read. They never throw.
std::optional<ZALTagSeratoMarker> readSeratoMarker(const ZALNullableData& payload, SeratoForm form);
std::optional<ZALTagSeratoMarkerOld> readOldSeratoMarker(const ZALNullableData& payload, SeratoForm form);
std::optional<ZALTagSeratoGrid> readSeratoGrid(const ZALNullableData& payload, SeratoForm form);

/// The payload to write. Null, with a log line, when the marker cannot be rendered: a record from a file can
/// hold colours that the form has no room for.
ZALNullableData renderedSeratoMarker(const ZALTagSeratoMarker& marker, SeratoForm form);
ZALNullableData renderedOldSeratoMarker(const ZALTagSeratoMarkerOld& marker, SeratoForm form);

}  // namespace zal
