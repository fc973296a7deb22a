#include "taglib/TagLibStream.h"

#include "platform/SafeFile.h"
#include "taglib/TagLibBytes.h"

#include <algorithm>
#include <new>
#include <utility>

namespace zal {

namespace {

// What one block holds at most: TagLib's vectors count in 32 bits.
constexpr unsigned long blockMax = 0x7FFFFFFF;

}  // namespace

std::unique_ptr<TagLibStream> TagLibStream::open(const std::string& path, bool readOnly, Failure* failure) {
    auto file = SafeFile::open(path, readOnly, failure);
    return file ? std::unique_ptr<TagLibStream>(new TagLibStream(std::move(file))) : nullptr;
}

TagLibStream::TagLibStream(std::unique_ptr<SafeFile> file) : file_(std::move(file)) {}
TagLibStream::~TagLibStream() = default;

bool TagLibStream::commit(Failure* failure) {
    return file_->commit(failure);
}

void TagLibStream::revert() {
    file_->revert();
}

bool TagLibStream::isCurrent() {
    return file_->isCurrent();
}

bool TagLibStream::canCommit() const {
    return file_->canCommit();
}

void TagLibStream::giveUp(const std::string& reason) {
    file_->giveUp(reason);
}

std::size_t TagLibStream::readAt(unsigned long position, std::span<std::uint8_t> buffer) {
    return file_->readAt(position, buffer);
}

TagLib::FileName TagLibStream::name() const {
    return file_->path().c_str();
}

bool TagLibStream::readOnly() const {
    return file_->readOnly();
}

bool TagLibStream::isOpen() const {
    return true;
}

TagLib::ByteVector TagLibStream::bytesAt(std::uint64_t position, std::uint64_t length) {
    seek(static_cast<long>(position));
    return readBlock(length);
}

TagLib::ByteVector TagLibStream::readBlock(unsigned long length) {
    if (position_ >= file_->length()) return {};
    const auto n = std::min({length, file_->length() - position_, blockMax});
    try {
        TagLib::ByteVector block(static_cast<unsigned int>(n), '\0');
        const std::size_t count =
            file_->readAt(position_, {reinterpret_cast<std::uint8_t*>(block.data()), block.size()});
        block.resize(static_cast<unsigned int>(count));
        position_ += count;
        return block;
    } catch (const std::bad_alloc&) {
        // TagLib takes a short block for the file's end and would save without what it did not see.
        giveUp("there was no memory to read it");
        return {};
    }
}

void TagLibStream::writeBlock(const TagLib::ByteVector& data) {
    if (readOnly()) return;
    file_->write(position_, viewOf(data));
    position_ += data.size();
}

void TagLibStream::insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) {
    if (readOnly()) return;
    if (data.size() > replace) {
        file_->insert(start, viewOf(data), replace);
        position_ = file_->length();
        return;
    }
    position_ = start;
    writeBlock(data);
    if (data.size() < replace) removeBlock(position_, replace - data.size());
}

void TagLibStream::removeBlock(unsigned long start, unsigned long length) {
    if (readOnly()) return;
    file_->remove(start, length);
    // TagLib's own stream ends with cutting the file behind the last block it moved, which extends a file
    // that is shorter than `start`.
    if (start > file_->length()) file_->truncate(start);
    position_ = file_->length();
}

void TagLibStream::seek(long offset, Position from) {
    const long bases[] = {0, tell(), length()};
    long position = 0;
    if (__builtin_add_overflow(bases[from], offset, &position) || position < 0) return;
    position_ = static_cast<unsigned long>(position);
}

long TagLibStream::tell() const {
    return static_cast<long>(position_);
}

long TagLibStream::length() {
    return static_cast<long>(file_->length());
}

void TagLibStream::truncate(long length) {
    if (readOnly() || length < 0) return;
    file_->truncate(static_cast<std::uint64_t>(length));
}

}  // namespace zal
