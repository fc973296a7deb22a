#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zal {
class PayloadLog;
}

/// A slot of Serato's legacy marker record: a cue point, a loop or an empty one. A value; copy it freely, use
/// one copy from one thread at a time.
class ZALTAG_EXPORT ZALTagSeratoCuePointOld {
  public:
    /// What a slot holds.
    static constexpr std::uint8_t typeEmpty = 0, typeCuePoint = 1, typeLoop = 3;
    /// The colour of a slot for which none is set.
    static constexpr std::uint32_t colorNotSet = 0x7FFFFFFF;

    /// The number of cue slots: 5.
    static constexpr int maximumNumberOfCuePoints() { return 5; }
    /// The number of loop slots: 9.
    static constexpr int maximumNumberOfLoopPoints() { return 9; }

    /// A cue point in slot 0 at 0 ms, no colour set.
    ZALTagSeratoCuePointOld() = default;

    /// A cue point in a slot, at a position in milliseconds. Every slot number is kept; those outside 0 to 4
    /// are not written.
    ZALTagSeratoCuePointOld(std::int16_t index, std::uint32_t position)
        : index_(index), position_(position) {}
    static ZALTagSeratoCuePointOld cuePointWithIndex(std::int16_t index, std::uint32_t position) {
        return {index, position};
    }
    static ZALTagSeratoCuePointOld initWithIndex(std::int16_t index, std::uint32_t position) {
        return cuePointWithIndex(index, position);
    }

    /// Reads one entry: the sync-safe form when it has 22 bytes, the big-endian form when it has 19. A colour
    /// above 0x0FFFFFFF in the sync-safe form is logged and stays not set. Null, with one log line, for any
    /// other length. The index is not in the bytes and stays 0.
    static std::optional<ZALTagSeratoCuePointOld> cuePointWithData(ZALDataView data);
    static std::optional<ZALTagSeratoCuePointOld> initWithData(ZALDataView data) {
        return cuePointWithData(data);
    }

    /// What is written for an unused cue slot: every number 0xFFFFFFFF, type 0. It has no colour set and
    /// index 0, so that it is written with the default colour of slot 0.
    static ZALTagSeratoCuePointOld placeholderCuePoint();
    /// What is written for an unused loop slot: the same with type 3, so that it reads back as a loop.
    static ZALTagSeratoCuePointOld placeholderLoop();

    /// The entry as it is written: 19 bytes for the file type "m4a" in any case, else 22 in the sync-safe
    /// form. A colour that is not set is written as the default of the slot. A colour above 0x0FFFFFFF in the
    /// sync-safe form is a programming error and aborts: ask isRenderableForFileType() first.
    ZALData cuePointDataForFileType(std::string_view fileType) const;

    /// True when cuePointDataForFileType() has room for the colour.
    bool isRenderableForFileType(std::string_view fileType) const;

    /// The cue slot, 0 to 4.
    std::int16_t index() const { return index_; }
    void setIndex(std::int16_t index) { index_ = index; }

    /// Milliseconds from the start of the track.
    std::uint32_t position() const { return position_; }
    void setPosition(std::uint32_t milliseconds) { position_ = milliseconds; }

    /// The end of a loop in milliseconds; 0xFFFFFFFF by default.
    std::uint32_t loopPosition() const { return loopPosition_; }
    void setLoopPosition(std::uint32_t milliseconds) { loopPosition_ = milliseconds; }

    std::uint32_t loopIterations() const { return loopIterations_; }
    void setLoopIterations(std::uint32_t count) { loopIterations_ = count; }

    /// The flag bytes, as the file has them.
    std::uint8_t loopEnabled() const { return loopEnabled_; }
    void setLoopEnabled(std::uint8_t flag) { loopEnabled_ = flag; }
    std::uint8_t loopLocked() const { return loopLocked_; }
    void setLoopLocked(std::uint8_t flag) { loopLocked_ = flag; }

    /// One of the types above; a cue point by default.
    std::uint8_t type() const { return type_; }
    void setType(std::uint8_t type) { type_ = type; }
    bool isCuePoint() const { return type_ == typeCuePoint; }
    bool isLoop() const { return type_ == typeLoop; }

    /// The colour word, 0x00RRGGBB, or colorNotSet.
    std::uint32_t color() const { return color_; }
    void setColor(std::uint32_t color) { color_ = color; }
    /// The colour word as eight upper-case hexadecimal digits.
    std::string argbColor() const;

    /// "<ZALTagSeratoCuePointOld: 0x...> index: 0, position: 250, loopPosition: 4294967295, ...".
    std::string description() const;

    bool operator==(const ZALTagSeratoCuePointOld& other) const = default;

  private:
    friend class ZALTagSeratoMarkerOld;
    ZALTAG_INSIDE static std::optional<ZALTagSeratoCuePointOld> parse(ZALDataView entry,
                                                                      zal::PayloadLog& log);

    std::uint8_t loopEnabled_ = 0;
    std::uint8_t type_ = typeCuePoint;
    std::uint8_t loopLocked_ = 0;
    std::int16_t index_ = 0;
    std::uint32_t position_ = 0;
    std::uint32_t loopPosition_ = 0xFFFFFFFF;
    std::uint32_t loopIterations_ = 0;
    std::uint32_t color_ = colorNotSet;
};
