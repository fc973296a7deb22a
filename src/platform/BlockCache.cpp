#include "platform/BlockCache.h"

#include <algorithm>

namespace zal {

std::error_code BlockCache::readAt(ZALFileHandle& file, std::uint64_t fileLength, std::uint64_t position,
                                   std::span<std::uint8_t> buffer, std::size_t& count) {
    count = 0;
    if (buffer.size() >= blockSize) return file.readAt(position, buffer, count);
    while (count < buffer.size()) {
        Block* block = nullptr;
        if (const auto error = load(file, fileLength, (position + count) / blockSize, block)) return error;
        const auto start = static_cast<std::size_t>((position + count) % blockSize);
        if (start >= block->length) break;
        const std::size_t n = std::min(block->length - start, buffer.size() - count);
        std::copy_n(block->bytes.get() + start, n, buffer.begin() + static_cast<std::ptrdiff_t>(count));
        count += n;
        if (block->length < blockSize) break;
    }
    return {};
}

std::error_code BlockCache::load(ZALFileHandle& file, std::uint64_t fileLength, std::uint64_t number,
                                 Block*& block) {
    block =
        &*std::min_element(blocks_.begin(), blocks_.end(), [number](const Block& one, const Block& other) {
            if ((one.number == number) != (other.number == number)) return one.number == number;
            return one.lastUse < other.lastUse;
        });
    block->lastUse = ++uses_;
    if (block->number == number) return {};
    block->number.reset();
    if (!block->bytes) block->bytes = std::make_unique_for_overwrite<std::uint8_t[]>(blockSize);
    // A read that ends where the file does is not tried again.
    const std::uint64_t position = number * blockSize;
    const auto size = static_cast<std::size_t>(
        std::min<std::uint64_t>(blockSize, std::max(fileLength, position) - position));
    block->length = 0;
    const auto error =
        size == 0 ? std::error_code() : file.readAt(position, {block->bytes.get(), size}, block->length);
    if (error) return error;
    block->number = number;
    return {};
}

}  // namespace zal
