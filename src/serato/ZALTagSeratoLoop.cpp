#include <zaltag/serato/ZALTagSeratoLoop.h>

#include "base/Description.h"
#include "base/Endian.h"
#include "serato/CueEntries.h"
#include "serato/PayloadLog.h"

namespace {

constexpr std::size_t headerSize = 9;        // "LOOP", its end, and the body length
constexpr std::uint32_t fixedBodySize = 20;  // up to the label

}  // namespace

std::optional<ZALTagSeratoLoop> ZALTagSeratoLoop::loopWithData(ZALDataView data) {
    zal::PayloadLog log;
    return parse(data, log);
}

std::optional<ZALTagSeratoLoop> ZALTagSeratoLoop::parse(ZALDataView entry, zal::PayloadLog& log) {
    if (entry.size() < headerSize + fixedBodySize) {
        log.logf("Serato loop data too short: {}", zal::describe(entry));
        return std::nullopt;
    }
    zal::ByteReader in(entry);
    in.skip(headerSize);
    ZALTagSeratoLoop loop;
    loop.setIndex(static_cast<std::int16_t>(in.u16be()), log);
    loop.position_ = in.u32be();
    loop.endPosition_ = in.u32be();
    loop.unknown_ = in.u32be();
    loop.color_ = in.u32be();
    loop.unknownFlag_ = in.u8();
    loop.locked_ = in.u8();
    loop.label_ = zal::labelFromBytes(in.take(in.remaining()));
    return loop;
}

ZALData ZALTagSeratoLoop::loopData() const {
    const std::string label = label_.value_or("");
    zal::ByteWriter out;
    out.text({"LOOP\0", 5});
    out.u32be(static_cast<std::uint32_t>(fixedBodySize + label.size() + 1));
    out.u16be(static_cast<std::uint16_t>(index_));
    out.u32be(position_);
    out.u32be(endPosition_);
    out.u32be(unknown_);
    out.u32be(color_);
    out.u8(unknownFlag_);
    out.u8(locked_);
    out.text(label);
    out.u8(0);
    return out.take();
}

void ZALTagSeratoLoop::setIndex(std::int16_t index) {
    zal::PayloadLog log;
    setIndex(index, log);
}

void ZALTagSeratoLoop::setIndex(std::int16_t index, zal::PayloadLog& log) {
    if (index < 0 || index >= maximumNumberOfLoops()) {
        log.logf("** setting invalid index {} for serato loop", index);
        return;
    }
    index_ = index;
}

std::string ZALTagSeratoLoop::description() const {
    return fmt::format("{} index: {}, position: {}, endPosition: {}, color: {:08X}, locked: {}, label: {}",
                       zal::defaultDescription("ZALTagSeratoLoop", this), index_, position_, endPosition_,
                       color_, locked_, zal::describe(label_));
}
