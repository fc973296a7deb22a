#include "containers/WavVelvetCascadeTagInserter.h"

#include "base/Endian.h"

#include <zaltag/platform/ZALHost.h>

#include <algorithm>
#include <array>

namespace zal {

namespace {

constexpr std::size_t copyBufferSize = 8192;
constexpr std::uint64_t sizePosition = 4;
constexpr std::uint64_t sizeEnd = 8;

ZALData idAndSize(std::uint32_t id, std::uint32_t size) {
    ByteWriter out;
    out.u32le(id);
    out.u32le(size);
    return out.take();
}

ZALData littleEndian(std::uint32_t value) {
    ByteWriter out;
    out.u32le(value);
    return out.take();
}

}  // namespace

bool WavVelvetCascadeTagInserter::OpenOutput(const std::string& path) {
    const auto files = ZALHost::shared().fileSystem();
    files->unlink(path);  // mostly there is nothing
    std::error_code error;
    output_ = files->create(path, 0600, error);
    return Note(error) && Note(output_->copyAttributesFrom(*input_));
}

bool WavVelvetCascadeTagInserter::SyncOutput() {
    return Note(output_->sync());
}

bool WavVelvetCascadeTagInserter::Note(const std::error_code& error) {
    if (error && !error_) error_ = error;
    return !error;
}

void WavVelvetCascadeTagInserter::Write(ZALDataView bytes) {
    if (!IsGood()) return;
    if (Note(output_->writeAt(written_, bytes))) written_ += bytes.size();
}

void WavVelvetCascadeTagInserter::OnRIFF(std::uint32_t formType) {
    Write(idAndSize(chunkID_, static_cast<std::uint32_t>(chunkSize_)));
    Write(littleEndian(formType));
}

void WavVelvetCascadeTagInserter::OnLIST(std::uint32_t listType) {
    CopyChunk(littleEndian(listType));
}

void WavVelvetCascadeTagInserter::OnOther() {
    CopyChunk({});
}

void WavVelvetCascadeTagInserter::OnVCAS() {}  // the old one is left out

// `start` is what was read of the content already. The walker goes on as if the rest had not been read.
void WavVelvetCascadeTagInserter::CopyChunk(ZALDataView start) {
    if (!IsGood()) return;
    const std::uint64_t position = position_;
    Write(idAndSize(chunkID_, static_cast<std::uint32_t>(chunkSize_)));
    Write(start);
    Transfer(chunkSize_ - static_cast<std::int64_t>(start.size()));
    if (chunkSize_ % 2 != 0) Write(std::array<std::uint8_t, 1>{});
    position_ = position;
}

void WavVelvetCascadeTagInserter::Transfer(std::int64_t count) {
    if (IsGood() && count > static_cast<std::int64_t>(copyBufferSize) && input_->descriptor() >= 0) {
        const auto length = static_cast<std::uint64_t>(count);
        failed_ = !Note(output_->copyFrom(*input_, position_, length, written_)) || failed_;
        written_ += length;
        return;
    }
    std::array<std::uint8_t, copyBufferSize> buffer{};
    while (IsGood() && count > 0) {
        const auto n = static_cast<std::size_t>(std::min(count, static_cast<std::int64_t>(buffer.size())));
        const auto part = std::span(buffer).first(n);
        if (!ReadAt(position_, part)) {
            failed_ = true;
            return;
        }
        Write(part);
        position_ += n;
        count -= static_cast<std::int64_t>(n);
    }
}

void WavVelvetCascadeTagInserter::OnRIFFEnd() {
    const bool isOdd = newPayload_.size() % 2 != 0;
    // The size counts the pad byte, as the files have it.
    Write(idAndSize(fourCC("VCAS"), static_cast<std::uint32_t>(newPayload_.size() + (isOdd ? 1 : 0))));
    Write(newPayload_);
    if (isOdd) Write(std::array<std::uint8_t, 1>{});
    if (!IsGood() || readError_ || written_ < sizeEnd) {
        failed_ = true;
        return;
    }
    const auto riffSize = static_cast<std::uint32_t>(written_ - sizeEnd);
    done_ = Note(output_->writeAt(sizePosition, littleEndian(riffSize)));
    failed_ = failed_ || !done_;
}

}  // namespace zal
