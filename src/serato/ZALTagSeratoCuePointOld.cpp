#include <zaltag/serato/ZALTagSeratoCuePointOld.h>

#include "base/Description.h"
#include "serato/OldForm.h"
#include "serato/PayloadLog.h"
#include "serato/SlotColor.h"

ZALTagSeratoCuePointOld ZALTagSeratoCuePointOld::placeholderCuePoint() {
    ZALTagSeratoCuePointOld made = cuePointWithIndex(0, 0xFFFFFFFF);
    made.setLoopPosition(0xFFFFFFFF);
    made.setLoopIterations(0xFFFFFFFF);
    made.setType(typeEmpty);
    return made;
}

ZALTagSeratoCuePointOld ZALTagSeratoCuePointOld::placeholderLoop() {
    ZALTagSeratoCuePointOld made = placeholderCuePoint();
    made.setType(typeLoop);
    return made;
}

std::optional<ZALTagSeratoCuePointOld> ZALTagSeratoCuePointOld::cuePointWithData(ZALDataView data) {
    zal::PayloadLog log;
    return parse(data, log);
}

std::optional<ZALTagSeratoCuePointOld> ZALTagSeratoCuePointOld::parse(ZALDataView entry,
                                                                      zal::PayloadLog& log) {
    // The size alone decides the form: records of either file type hold entries of either form.
    const bool syncSafe = entry.size() == zal::oldEntrySize(true);
    if (!syncSafe && entry.size() != zal::oldEntrySize(false)) {
        log.logf("Invalid serato old cue point data size {}", entry.size());
        return std::nullopt;
    }
    zal::OldReader in(entry, syncSafe);
    ZALTagSeratoCuePointOld slot;
    slot.position_ = in.number();
    slot.loopPosition_ = in.number();
    slot.loopEnabled_ = in.u8();
    slot.loopIterations_ = in.number();
    const std::uint32_t color = in.word();
    slot.type_ = in.u8();
    slot.loopLocked_ = in.u8();
    if (syncSafe && color > ZALTagSyncSafe4ValueMax) {
        // The letter behind the number belongs to the text, as logs have it.
        log.logf("** Parsed invalid color value from v1 Serato cue point: {}l **", color);
    } else {
        slot.color_ = color;
    }
    return slot;
}

ZALData ZALTagSeratoCuePointOld::cuePointDataForFileType(std::string_view fileType) const {
    zal::OldWriter out(zal::isSyncSafeFileType(fileType));
    out.number(position_);
    out.number(loopPosition_);
    out.u8(loopEnabled_);
    out.number(loopIterations_);
    out.word(zal::writtenColor(color_, index_, maximumNumberOfCuePoints()));
    out.u8(type_);
    out.u8(loopLocked_);
    return out.take();
}

bool ZALTagSeratoCuePointOld::isRenderableForFileType(std::string_view fileType) const {
    return !zal::isSyncSafeFileType(fileType) ||
           zal::writtenColor(color_, index_, maximumNumberOfCuePoints()) <= ZALTagSyncSafe4ValueMax;
}

std::string ZALTagSeratoCuePointOld::argbColor() const {
    return fmt::format("{:08X}", color_);
}

std::string ZALTagSeratoCuePointOld::description() const {
    return fmt::format(
        "{} index: {}, position: {}, loopPosition: {}, loopEnabled: {}, loopIterations: {}, "
        "argbColor: {}, type: {}, loopLocked: {}",
        zal::defaultDescription("ZALTagSeratoCuePointOld", this), index_, position_, loopPosition_,
        loopEnabled_, loopIterations_, argbColor(), type_, loopLocked_);
}
