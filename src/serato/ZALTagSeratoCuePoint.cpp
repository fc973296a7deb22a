#include <zaltag/serato/ZALTagSeratoCuePoint.h>

#include "base/Description.h"
#include "base/Endian.h"
#include "serato/CueEntries.h"
#include "serato/PayloadLog.h"
#include "serato/SlotColor.h"

namespace {

constexpr std::size_t fixedEntrySize = 20;  // up to the label

}  // namespace

ZALTagSeratoCuePoint::ZALTagSeratoCuePoint(std::int16_t index, std::uint32_t position,
                                           ZALNullableString label)
    : position_(position), label_(std::move(label)) {
    setIndex(index);
}

std::optional<ZALTagSeratoCuePoint> ZALTagSeratoCuePoint::cuePointWithData(ZALDataView data) {
    zal::PayloadLog log;
    return parse(data, log);
}

std::optional<ZALTagSeratoCuePoint> ZALTagSeratoCuePoint::parse(ZALDataView entry, zal::PayloadLog& log) {
    if (entry.size() < fixedEntrySize) {
        log.logf("Serato cue point data too short: {}", zal::describe(entry));
        return std::nullopt;
    }
    zal::ByteReader in(entry);
    in.skip(4);  // "CUE"
    in.skip(4);  // the body length: the entry's own size is what counts
    ZALTagSeratoCuePoint cue;
    cue.setIndex(static_cast<std::int16_t>(in.u16be()), log);
    cue.position_ = in.u32be();
    cue.color_ = in.u32be();
    in.skip(2);
    cue.label_ = zal::labelFromBytes(in.take(in.remaining()));
    return cue;
}

ZALData ZALTagSeratoCuePoint::cuePointData() const {
    zal::ByteWriter out;
    out.text({"CUE\0", 4});
    out.u32be(size());
    out.u16be(static_cast<std::uint16_t>(index_));
    out.u32be(position_);
    out.u32be(zal::writtenColor(color_, index_, maximumNumberOfCuePoints()));
    out.u16be(0);
    out.text(label_.value_or(""));
    out.u8(0);
    return out.take();
}

void ZALTagSeratoCuePoint::setIndex(std::int16_t index) {
    zal::PayloadLog log;
    setIndex(index, log);
}

void ZALTagSeratoCuePoint::setIndex(std::int16_t index, zal::PayloadLog& log) {
    if (index < 0 || index >= maximumNumberOfCuePoints()) {
        log.logf("** setting invalid index {} for serato cue point", index);
        return;
    }
    index_ = index;
}

std::string ZALTagSeratoCuePoint::argbColor() const {
    return fmt::format("{:08X}", color_);
}

std::uint32_t ZALTagSeratoCuePoint::size() const {
    return static_cast<std::uint32_t>(13 + (label_ ? label_->size() : 0));
}

std::string ZALTagSeratoCuePoint::description() const {
    return fmt::format("{} size: {}, index: {}, position: {}, argbColor: {}, label: {}",
                       zal::defaultDescription("ZALTagSeratoCuePoint", this), size(), index_, position_,
                       argbColor(), zal::describe(label_));
}
