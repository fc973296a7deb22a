#pragma once

#include <zaltag/base/ZALData.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zal {

/// Reads big- and little-endian numbers from bytes within their bounds. Reading past the end gives 0 and sets
/// failed(), which stays set; nothing outside the bytes is ever touched.
class ByteReader {
  public:
    explicit ByteReader(ZALDataView bytes) : bytes_(bytes) {}

    std::size_t offset() const { return offset_; }
    std::size_t remaining() const { return bytes_.size() - offset_; }
    bool failed() const { return failed_; }

    ZALDataView take(std::size_t count) {
        if (count > remaining()) {
            failed_ = true;
            offset_ = bytes_.size();
            return {};
        }
        const ZALDataView taken = bytes_.subspan(offset_, count);
        offset_ += count;
        return taken;
    }
    void skip(std::size_t count) { take(count); }

    std::uint8_t u8() { return static_cast<std::uint8_t>(big(1)); }
    std::uint16_t u16be() { return static_cast<std::uint16_t>(big(2)); }
    std::uint32_t u32be() { return static_cast<std::uint32_t>(big(4)); }
    float f32be() { return std::bit_cast<float>(u32be()); }
    std::uint32_t u32le() { return static_cast<std::uint32_t>(little(4)); }

  private:
    std::uint64_t big(std::size_t width) {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : take(width)) {
            value = value << 8 | byte;
        }
        return value;
    }
    std::uint64_t little(std::size_t width) {
        std::uint64_t value = 0;
        const ZALDataView bytes = take(width);
        for (std::size_t i = bytes.size(); i > 0; --i) {
            value = value << 8 | bytes[i - 1];
        }
        return value;
    }

    ZALDataView bytes_;
    std::size_t offset_ = 0;
    bool failed_ = false;
};

/// Appends numbers and bytes to a growing buffer.
class ByteWriter {
  public:
    void u8(std::uint8_t value) { data_.push_back(value); }
    void u16be(std::uint16_t value) { big(value, 2); }
    void u32be(std::uint32_t value) { big(value, 4); }
    void u32le(std::uint32_t value) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            u8(static_cast<std::uint8_t>(value >> shift));
        }
    }
    void bytes(ZALDataView more) { data_.insert(data_.end(), more.begin(), more.end()); }
    void text(std::string_view more) { data_.insert(data_.end(), more.begin(), more.end()); }

    std::size_t size() const { return data_.size(); }
    const ZALData& data() const { return data_; }
    ZALData take() { return std::move(data_); }

  private:
    void big(std::uint32_t value, unsigned width) {
        for (unsigned shift = 8 * width; shift > 0; shift -= 8) {
            u8(static_cast<std::uint8_t>(value >> (shift - 8)));
        }
    }

    ZALData data_;
};

}  // namespace zal
