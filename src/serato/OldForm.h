#pragma once

#include <zaltag/base/ZALTagSyncSafeInteger.h>

#include "base/Endian.h"
#include "base/Unicode.h"

#include <array>
#include <string_view>

namespace zal {

/// The legacy record stores its numbers in one of two ways: sync-safe, or big-endian as MP4 files do.
inline bool isSyncSafeFileType(std::string_view fileType) {
    return asciiLowercase(fileType) != "m4a";
}

/// The size of an entry in either form.
constexpr std::size_t oldEntrySize(bool syncSafe) {
    return syncSafe ? 22 : 19;
}

/// Reads the numbers of a legacy record. The bytes must hold what is read.
class OldReader {
  public:
    OldReader(ZALDataView bytes, bool syncSafe) : in_(bytes), syncSafe_(syncSafe) {}

    std::uint8_t u8() { return in_.u8(); }
    /// Positions and loop numbers: five sync-safe bytes or four.
    std::uint32_t number() { return syncSafe_ ? ZALTagUnSyncSafe5(in_.take(5).data()) : in_.u32be(); }
    /// Colours and the entry count: four bytes in either form.
    std::uint32_t word() { return syncSafe_ ? ZALTagUnSyncSafe4(in_.take(4).data()) : in_.u32be(); }

  private:
    ByteReader in_;
    bool syncSafe_;
};

/// Writes the numbers of a legacy record, as OldReader reads them.
class OldWriter {
  public:
    explicit OldWriter(bool syncSafe) : syncSafe_(syncSafe) {}

    void u8(std::uint8_t value) { out_.u8(value); }
    void bytes(ZALDataView more) { out_.bytes(more); }
    void number(std::uint32_t value) {
        if (!syncSafe_) return out_.u32be(value);
        std::array<std::uint8_t, 5> packed{};
        ZALTagSyncSafe5(value, packed.data());
        out_.bytes(packed);
    }
    /// Aborts for a value above ZALTagSyncSafe4ValueMax in the sync-safe form.
    void word(std::uint32_t value) {
        if (!syncSafe_) return out_.u32be(value);
        std::array<std::uint8_t, 4> packed{};
        ZALTagSyncSafe4(value, packed.data());
        out_.bytes(packed);
    }
    ZALData take() { return out_.take(); }

  private:
    ByteWriter out_;
    bool syncSafe_;
};

}  // namespace zal
