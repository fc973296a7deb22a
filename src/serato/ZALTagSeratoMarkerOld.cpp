#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include "base/Description.h"
#include "serato/EncodedForm.h"
#include "serato/OldForm.h"
#include "serato/PayloadLog.h"

#include <algorithm>
#include <limits>

namespace {

constexpr auto cueSlots = static_cast<std::size_t>(ZALTagSeratoCuePointOld::maximumNumberOfCuePoints());
constexpr auto loopSlots = static_cast<std::size_t>(ZALTagSeratoCuePointOld::maximumNumberOfLoopPoints());
constexpr std::size_t headerSize = 6;
constexpr std::size_t colorSize = 4;
constexpr std::size_t shortestRecord = headerSize + colorSize;

// A record can hold more entries than an index counts; the last index is as far from a cue slot as they are.
std::int16_t indexOfEntry(std::size_t i) {
    return static_cast<std::int16_t>(std::min<std::size_t>(i, std::numeric_limits<std::int16_t>::max()));
}

}  // namespace

std::optional<ZALTagSeratoMarkerOld> ZALTagSeratoMarkerOld::initWithData(ZALDataView data,
                                                                         std::string_view fileType) {
    if (data.size() < shortestRecord) {
        zal::logDamage(fmt::format("Serato marker data too short: {}", zal::describe(data)));
        return std::nullopt;
    }
    zal::OldReader in(data, zal::isSyncSafeFileType(fileType));
    ZALTagSeratoMarkerOld marker;
    marker.major_ = in.u8();
    marker.minor_ = in.u8();
    const std::size_t count = in.word();
    if (count == 0) {
        zal::logDamage("Serato marker point count parsed as 0");
        return std::nullopt;
    }
    const std::size_t entriesSize = data.size() - shortestRecord;
    if (entriesSize % count != 0) {
        zal::logDamage(fmt::format("Serato marker data size invalid: {}", data.size()));
        return std::nullopt;
    }
    zal::PayloadLog log;
    marker.readSlots(data.subspan(headerSize, entriesSize), count, log);
    // The size of the entries decides how the colour is written, not the file type.
    const bool syncSafe = entriesSize / count != zal::oldEntrySize(false);
    marker.readColor(data.last(colorSize), syncSafe, log);
    return marker;
}

void ZALTagSeratoMarkerOld::readSlots(ZALDataView entries, std::size_t count, zal::PayloadLog& log) {
    const std::size_t size = entries.size() / count;
    for (std::size_t i = 0; i < count; ++i) {
        auto slot = ZALTagSeratoCuePointOld::parse(entries.subspan(i * size, size), log);
        if (!slot) return;  // its size is the size of all, 0 with any count among them
        if (slot->isCuePoint()) {
            slot->setIndex(indexOfEntry(i));
            cuePoints_.push_back(*slot);
        } else if (slot->isLoop()) {
            loopPoints_.push_back(*slot);
        }
    }
}

void ZALTagSeratoMarkerOld::readColor(ZALDataView bytes, bool syncSafe, zal::PayloadLog& log) {
    const std::uint32_t color = zal::OldReader(bytes, syncSafe).word();
    if (syncSafe && color > ZALTagSyncSafe4ValueMax) {
        // The letter behind the number belongs to the text, as logs have it.
        log.logf("** Parsed invalid color value from v1 Serato marker: {}l **", color);
        return;
    }
    color_ = color;
}

std::optional<ZALTagSeratoMarkerOld> ZALTagSeratoMarkerOld::markerWithEncodedData(ZALDataView data) {
    const ZALNullableData record = zal::recordFromEncodedForm(data, "marker");
    if (!record) return std::nullopt;
    return initWithData(*record, "m4a");
}

std::vector<ZALTagSeratoCuePointOld> ZALTagSeratoMarkerOld::writtenSlots() const {
    std::vector<ZALTagSeratoCuePointOld> written(cueSlots, ZALTagSeratoCuePointOld::placeholderCuePoint());
    written.resize(cueSlots + loopSlots, ZALTagSeratoCuePointOld::placeholderLoop());
    for (const ZALTagSeratoCuePointOld& cue : cuePoints_) {
        if (cue.index() < 0 || cue.index() >= static_cast<int>(cueSlots)) continue;
        written[static_cast<std::size_t>(cue.index())] = cue;
    }
    for (std::size_t i = 0; i < std::min(loopPoints_.size(), loopSlots); ++i) {
        written[cueSlots + i] = loopPoints_[i];
    }
    return written;
}

bool ZALTagSeratoMarkerOld::isRenderableForFileType(std::string_view fileType) const {
    if (!zal::isSyncSafeFileType(fileType)) return true;
    if (color_ > ZALTagSyncSafe4ValueMax) return false;
    const auto slots = writtenSlots();
    return std::all_of(slots.begin(), slots.end(), [fileType](const ZALTagSeratoCuePointOld& slot) {
        return slot.isRenderableForFileType(fileType);
    });
}

ZALData ZALTagSeratoMarkerOld::markerDataForFileType(std::string_view fileType) const {
    zal::OldWriter out(zal::isSyncSafeFileType(fileType));
    const auto slots = writtenSlots();
    out.u8(major_);
    out.u8(minor_);
    out.word(static_cast<std::uint32_t>(slots.size()));
    for (const ZALTagSeratoCuePointOld& slot : slots) {
        out.bytes(slot.cuePointDataForFileType(fileType));
    }
    out.word(color_);
    return out.take();
}

ZALNullableData ZALTagSeratoMarkerOld::encodedMarkerDataForFileType(std::string_view fileType) const {
    return zal::encodedFormOfMarkers(markerDataForFileType(fileType));
}

std::string ZALTagSeratoMarkerOld::description() const {
    return fmt::format("{} major: {}, minor: {}, cuePoints: {}",
                       zal::defaultDescription("ZALTagSeratoMarkerOld", this), major_, minor_,
                       zal::descriptionOfAll(cuePoints_));
}
