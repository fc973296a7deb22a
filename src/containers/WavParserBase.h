#pragma once

#include "platform/BlockCache.h"

#include <zaltag/platform/ZALFileSystem.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace zal {

/// Four bytes as the walker keeps an id: the first one lowest.
constexpr std::uint32_t fourCC(std::string_view text) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value |= std::uint32_t{static_cast<std::uint8_t>(text[i])} << (8 * i);
    }
    return value;
}

/// Walks the chunks of a RIFF file header by header and never leaves the chunk it is in: `remaining` is what
/// that still holds. Sizes from the file are believed only within it. Object and file are used by one thread.
class WavParserBase {
  public:
    WavParserBase() = default;
    WavParserBase(const WavParserBase&) = delete;
    WavParserBase& operator=(const WavParserBase&) = delete;

    /// Back to the beginning of the file.
    virtual void Reset();
    virtual ~WavParserBase();
    /// Walks the file. True when it begins with a RIFF chunk.
    virtual bool ParseFile();

    /// Opens a regular file for reading. False, with error() set, when that is not possible.
    bool OpenFile(const std::string& path);

    /// The first error of opening or reading.
    const std::error_code& error() const { return error_; }

  protected:
    /// What stands in the RIFF chunk, whose header was read.
    virtual void ParseRIFF() = 0;
    /// Reads the next header of the chunk scope. False at its end or at a damaged header, and then the rest
    /// of the scope is skipped.
    virtual bool ReadChunkHeader(std::int64_t& size, std::uint32_t& id);

    virtual void OnRIFF(std::uint32_t formType) = 0;
    virtual void OnRIFFEnd() = 0;
    virtual void OnLIST(std::uint32_t listType) = 0;
    virtual void OnVCAS() = 0;
    virtual void OnOther() = 0;

    /// Fills a buffer from within the scope.
    bool Read(std::uint8_t* buffer, std::int32_t count);
    /// Goes forward within the scope.
    bool Skip(std::int64_t count);
    bool ReadID(std::uint32_t& id);
    /// Makes a chunk whose header was just read the scope of `parse`, and goes behind it.
    void EnterChunk(std::int64_t size, const std::function<void()>& parse);

    /// Reads from a position without touching the scope. False after an error and at the file's end.
    bool ReadAt(std::uint64_t position, std::span<std::uint8_t> buffer);

    std::unique_ptr<ZALFileHandle> input_;
    std::uint64_t position_ = 0;  // of the input
    std::int64_t remaining_ = 0;  // in the scope
    std::int64_t chunkSize_ = 0;  // of the header read last
    std::int64_t fileSize_ = 0;   // at opening
    bool readError_ = false;      // once set, every read and skip fails
    std::uint32_t chunkID_ = 0;   // of the header read last
    std::uint32_t depth_ = 0;     // 0 for the file, 1 within RIFF
    std::error_code error_;

  private:
    BlockCache cache_;
};

}  // namespace zal
