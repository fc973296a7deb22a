#include <zaltag/serato/ZALTagSeratoGrid.h>

#include "base/Description.h"
#include "base/Endian.h"
#include "platform/Log.h"
#include "serato/EncodedForm.h"

#include <cmath>

namespace {

constexpr std::size_t headerSize = 6;
constexpr std::size_t pointSize = 8;

// The beat nearest to a time, of beats of one length from a position on, in both directions.
double nearestBeat(double time, float position, float beatLength) {
    const double beats = std::round((time - position) / beatLength);
    const double snapped = beats * beatLength + position;
    return std::isfinite(snapped) ? snapped : time;
}

}  // namespace

std::optional<ZALTagSeratoGrid> ZALTagSeratoGrid::gridWithData(ZALDataView data) {
    if (data.size() < headerSize) {
        zal::logDamage(fmt::format("Serato grid data too short: {}", zal::describe(data)));
        return std::nullopt;
    }
    zal::ByteReader in(data);
    ZALTagSeratoGrid grid;
    grid.major_ = in.u8();
    grid.minor_ = in.u8();
    const std::uint64_t count = in.u32be();
    if (in.remaining() < pointSize * count) {
        zal::logDamage("Serato grid data too short");
        return std::nullopt;
    }
    for (std::uint64_t i = 0; i < count; ++i) {
        const auto point = ZALTagSeratoGridPoint::gridPointWithData(in.take(pointSize));
        if (point) grid.gridPoints_.push_back(*point);
    }
    return grid;
}

std::optional<ZALTagSeratoGrid> ZALTagSeratoGrid::gridWithEncodedData(ZALDataView data) {
    const ZALNullableData record = zal::recordFromEncodedForm(data, "grid");
    if (!record) return std::nullopt;
    return gridWithData(*record);
}

double ZALTagSeratoGrid::gridTimeForTime(double time) const {
    if (gridPoints_.empty()) return time;
    for (std::size_t i = 0; i + 1 < gridPoints_.size(); ++i) {
        const ZALTagSeratoGridPoint& point = gridPoints_[i];
        const ZALTagSeratoGridPoint& next = gridPoints_[i + 1];
        if (time > next.position() || point.beatsToNext() == 0) continue;
        // Single precision, as the positions are.
        const float beatLength =
            (next.position() - point.position()) / static_cast<float>(point.beatsToNext());
        return nearestBeat(time, point.position(), beatLength);
    }
    const ZALTagSeratoGridPoint& last = gridPoints_.back();
    if (!(last.tempo() > 0)) {
        zal::logf("Invalid grid marker tempo value: {:.2f}", last.tempo());
        return time;
    }
    return nearestBeat(time, last.position(), 60.0F / last.tempo());
}

std::string ZALTagSeratoGrid::description() const {
    return fmt::format("{} major: {}, minor: {}, gridPoints: {}",
                       zal::defaultDescription("ZALTagSeratoGrid", this), major_, minor_,
                       zal::descriptionOfAll(gridPoints_));
}
