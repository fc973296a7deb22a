#include "platform/LimitedWriter.h"

#include <fmt/format.h>

namespace zal {

bool LimitedWriter::write(ZALDataView bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (const std::uint8_t byte : bytes) {
        append(byte, out);
    }
    done_ = done_ && sink_({reinterpret_cast<const std::uint8_t*>(out.data()), out.size()});
    return done_;
}

void LimitedWriter::append(std::uint8_t byte, std::string& out) {
    if (byte < 0x80) {
        out += static_cast<char>(byte);
        return;
    }
    if ((byte & 0xC0) == 0x80) {
        character_ = (character_ << 6) | (byte & 0x3F);
        --missing_;
    } else {
        missing_ = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
        character_ = byte & (0x3F >> missing_);
    }
    if (missing_ != 0) return;
    if (character_ <= last_) {
        out += static_cast<char>(character_);
    } else {
        out += fmt::format("&#{};", static_cast<std::uint32_t>(character_));
    }
}

}  // namespace zal
