#pragma once

#include <zaltag/platform/ZALFileSystem.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <system_error>

namespace zal {

/// Reads an open file by aligned blocks and keeps the last few, so that many little reads near each other
/// cost a handful of system calls. Reads of a block or more pass it by.
class BlockCache {
  public:
    static constexpr std::size_t blockSize = 16384;

    /// As ZALFileHandle::readAt; always with the same file until clear(). Nothing is read behind the length,
    /// which may be more than it is where nobody knows it.
    std::error_code readAt(ZALFileHandle& file, std::uint64_t fileLength, std::uint64_t position,
                           std::span<std::uint8_t> buffer, std::size_t& count);
    /// Forgets all blocks.
    void clear() { blocks_ = {}; }

  private:
    struct Block {
        std::optional<std::uint64_t> number;  ///< position / blockSize; null while the block holds nothing
        std::unique_ptr<std::uint8_t[]> bytes;
        std::size_t length = 0;  ///< less than a block at the file's end
        std::uint64_t lastUse = 0;
    };

    std::error_code load(ZALFileHandle& file, std::uint64_t fileLength, std::uint64_t number, Block*& block);

    std::array<Block, 4> blocks_;
    std::uint64_t uses_ = 0;
};

}  // namespace zal
