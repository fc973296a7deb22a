#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>

#include "base/Description.h"
#include "base/Endian.h"
#include "serato/CueEntries.h"
#include "serato/EncodedForm.h"
#include "serato/PayloadLog.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr std::size_t shortestRecord = 7;
constexpr std::size_t versionSize = 2;
constexpr auto mostCues = static_cast<std::size_t>(ZALTagSeratoCuePoint::maximumNumberOfCuePoints());
constexpr auto mostLoops = static_cast<std::size_t>(ZALTagSeratoLoop::maximumNumberOfLoops());

}  // namespace

std::optional<ZALTagSeratoMarker> ZALTagSeratoMarker::markerWithData(ZALDataView data) {
    if (data.size() < shortestRecord) {
        zal::logDamage(fmt::format("Serato marker data too short: {}", zal::describe(data)));
        return std::nullopt;
    }
    ZALNullableData payload = ZALDataByDecodingBase64(data.subspan(versionSize));
    if (!payload) {
        zal::logDamage(
            fmt::format("Failed to decode marker data {} ({} bytes)", zal::describe(data), data.size()));
        return std::nullopt;
    }
    if (payload->size() < versionSize) {
        throw std::out_of_range("the payload of Serato marker data has fewer than two bytes");
    }
    payload->erase(payload->begin(), payload->begin() + versionSize);
    ZALTagSeratoMarker marker;
    marker.major_ = data[0];
    marker.minor_ = data[1];
    marker.sourceMarkerData_ = std::move(payload);
    marker.readCuePoints();
    marker.readLoops();
    return marker;
}

void ZALTagSeratoMarker::readCuePoints() {
    const ZALDataView payload = *sourceMarkerData_;
    const std::vector<zal::LoopEntry> loops = zal::loopEntries(payload);
    zal::PayloadLog log;
    std::size_t at = 0;
    while (const auto entry = zal::nextCueEntry(payload, at, loops)) {
        if (!entry->fits(payload)) {
            log.logf("invalid cue point size: {} at offset {} (length: {})", entry->size, entry->offset,
                     payload.size());
            return;
        }
        at = entry->end();
        auto cue = ZALTagSeratoCuePoint::parse(payload.subspan(entry->offset, at - entry->offset), log);
        if (cue) cuePoints_.push_back(std::move(*cue));
    }
}

void ZALTagSeratoMarker::readLoops() {
    const ZALDataView payload = *sourceMarkerData_;
    zal::PayloadLog log;
    for (const zal::LoopEntry& entry : zal::loopEntries(payload)) {
        auto loop = ZALTagSeratoLoop::parse(payload.subspan(entry.offset, entry.end - entry.offset), log);
        if (loop) loops_.push_back(std::move(*loop));
    }
}

void ZALTagSeratoMarker::setLoops(std::vector<ZALTagSeratoLoop> loops) {
    if (loops == loops_) return;  // their entries keep their bytes and places
    loops_ = std::move(loops);
    areLoopsSet_ = true;
}

std::optional<ZALTagSeratoMarker> ZALTagSeratoMarker::markerWithEncodedData(ZALDataView data) {
    const ZALNullableData record = zal::recordFromEncodedForm(data, "marker");
    if (!record) return std::nullopt;
    return markerWithData(*record);
}

ZALNullableData ZALTagSeratoMarker::markerData() const {
    zal::ByteWriter inner;
    inner.u8(major_);
    inner.u8(minor_);
    for (std::size_t i = 0; i < std::min(cuePoints_.size(), mostCues); ++i) {
        inner.bytes(cuePoints_[i].cuePointData());
    }
    for (std::size_t i = 0; areLoopsSet_ && i < std::min(loops_.size(), mostLoops); ++i) {
        inner.bytes(loops_[i].loopData());
    }
    if (sourceMarkerData_) inner.bytes(zal::carriedEntries(*sourceMarkerData_, !areLoopsSet_));
    const ZALNullableData text = ZALDataByEncodingBase64(inner.data());
    if (!text) {
        zal::logf("Failed to encode data {} ({} bytes)", zal::describe(inner.data()), inner.size());
        return std::nullopt;
    }
    zal::ByteWriter outer;
    outer.u8(major_);
    outer.u8(minor_);
    outer.bytes(*text);
    return outer.take();
}

ZALNullableData ZALTagSeratoMarker::encodedMarkerData() const {
    const ZALNullableData record = markerData();
    if (!record) return std::nullopt;
    return zal::encodedFormOfMarkers(*record);
}

std::string ZALTagSeratoMarker::description() const {
    return fmt::format("{} major: {}, minor: {}, cuePoints: {}",
                       zal::defaultDescription("ZALTagSeratoMarker", this), major_, minor_,
                       zal::descriptionOfAll(cuePoints_));
}
