#include "collection/SharedFile.h"

namespace zal {

namespace {

std::error_code notWritable() {
    return std::make_error_code(std::errc::bad_file_descriptor);
}

}  // namespace

std::error_code SharedFile::readAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                                   std::size_t& count) {
    const std::lock_guard guard(mutex_);
    return handle_->readAt(position, buffer, count);
}

std::error_code SharedFile::attributes(ZALFileAttributes& attributes) {
    const std::lock_guard guard(mutex_);
    return handle_->attributes(attributes);
}

int SharedFile::descriptor() const {
    return handle_->descriptor();
}

bool SharedFile::read(std::uint64_t begin, std::uint64_t end, std::string& bytes) {
    bytes.resize(static_cast<std::size_t>(end - begin));
    std::size_t count = 0;
    const std::span<std::uint8_t> buffer(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size());
    return !readAt(begin, buffer, count) && count == bytes.size();
}

std::error_code SharedFile::writeAt(std::uint64_t, ZALDataView) {
    return notWritable();
}

std::error_code SharedFile::copyFrom(ZALFileHandle&, std::uint64_t, std::uint64_t, std::uint64_t) {
    return notWritable();
}

std::error_code SharedFile::truncate(std::uint64_t) {
    return notWritable();
}

std::error_code SharedFile::sync() {
    return notWritable();
}

std::error_code SharedFile::copyAttributesFrom(ZALFileHandle&) {
    return notWritable();
}

std::error_code SharedFile::lock() {
    return notWritable();
}

std::error_code SharedFile::unlock() {
    return notWritable();
}

}  // namespace zal
