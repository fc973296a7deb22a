#include "containers/WavParserBase.h"

#include "base/Endian.h"

#include <zaltag/platform/ZALHost.h>

#include <array>

namespace zal {

namespace {

constexpr std::int64_t headerSize = 8;

bool isIDByte(std::uint8_t byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == ' ';
}

bool isID(std::uint32_t id) {
    return isIDByte(static_cast<std::uint8_t>(id)) && isIDByte(static_cast<std::uint8_t>(id >> 8)) &&
           isIDByte(static_cast<std::uint8_t>(id >> 16)) && isIDByte(static_cast<std::uint8_t>(id >> 24));
}

}  // namespace

WavParserBase::~WavParserBase() = default;

bool WavParserBase::OpenFile(const std::string& path) {
    input_ = ZALHost::shared().fileSystem()->open(path, false, error_);
    ZALFileAttributes attributes;
    if (input_) error_ = input_->attributes(attributes);
    if (!error_ && attributes.kind != ZALFileKind::regular) {
        error_ = std::make_error_code(std::errc::invalid_argument);
    }
    if (error_) {
        input_ = nullptr;
        return false;
    }
    fileSize_ = static_cast<std::int64_t>(attributes.size);
    Reset();
    return true;
}

void WavParserBase::Reset() {
    chunkID_ = 0;
    remaining_ = 0;
    chunkSize_ = 0;
    if (!input_) return;
    position_ = 0;
    remaining_ = fileSize_;
    readError_ = false;
}

bool WavParserBase::ReadAt(std::uint64_t position, std::span<std::uint8_t> buffer) {
    std::size_t count = 0;
    const auto error = input_ ? cache_.readAt(*input_, UINT64_MAX, position, buffer, count)
                              : std::make_error_code(std::errc::bad_file_descriptor);
    if (error && !error_) error_ = error;
    return !error && count == buffer.size();
}

bool WavParserBase::Read(std::uint8_t* buffer, std::int32_t count) {
    if (count < 0 || count > remaining_) {
        remaining_ = 0;
        return false;
    }
    if (!ReadAt(position_, {buffer, static_cast<std::size_t>(count)})) {
        readError_ = true;
        remaining_ = 0;
        return false;
    }
    position_ += static_cast<std::uint64_t>(count);
    remaining_ = readError_ ? 0 : remaining_ - count;
    return !readError_;
}

bool WavParserBase::Skip(std::int64_t count) {
    if (count > remaining_) {
        remaining_ = 0;
        return false;
    }
    position_ += static_cast<std::uint64_t>(count);
    remaining_ = readError_ ? 0 : remaining_ - count;
    return remaining_ >= 0;
}

bool WavParserBase::ReadID(std::uint32_t& id) {
    std::array<std::uint8_t, 4> bytes{};
    if (!Read(bytes.data(), 4)) return false;
    id = ByteReader(bytes).u32le();
    return true;
}

bool WavParserBase::ReadChunkHeader(std::int64_t& size, std::uint32_t& id) {
    size = 0;
    id = 0;
    if (remaining_ > 0 && position_ % 2 != 0) Skip(1);  // a pad byte
    std::uint32_t length = 0;
    if (remaining_ >= headerSize && ReadID(id) && ReadID(length)) {
        chunkID_ = id;
        chunkSize_ = length;
        if (isID(id) && length <= remaining_) {
            size = length;
            return true;
        }
    }
    Skip(remaining_);
    return false;
}

void WavParserBase::EnterChunk(std::int64_t size, const std::function<void()>& parse) {
    const std::int64_t outer = remaining_;
    remaining_ = size;
    ++depth_;
    parse();
    --depth_;
    Skip(remaining_);
    remaining_ = outer - size;
}

bool WavParserBase::ParseFile() {
    std::int64_t size = 0;
    std::uint32_t id = 0;
    if (!ReadChunkHeader(size, id) || id != fourCC("RIFF")) return false;
    EnterChunk(size, [this] { ParseRIFF(); });
    return true;
}

}  // namespace zal
