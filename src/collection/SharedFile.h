#pragma once

#include <zaltag/platform/ZALFileSystem.h>

#include <memory>
#include <mutex>
#include <string>

namespace zal {

/// An open file that several threads read, taking turns. It is not written.
class SharedFile final : public ZALFileHandle {
  public:
    explicit SharedFile(std::unique_ptr<ZALFileHandle> handle) : handle_(std::move(handle)) {}

    std::error_code readAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                           std::size_t& count) override;
    std::error_code attributes(ZALFileAttributes& attributes) override;
    int descriptor() const override;

    /// Reads a range; false when it cannot be had whole.
    bool read(std::uint64_t begin, std::uint64_t end, std::string& bytes);

    // None of these is done here.
    std::error_code writeAt(std::uint64_t position, ZALDataView bytes) override;
    std::error_code copyFrom(ZALFileHandle& source, std::uint64_t sourcePosition, std::uint64_t length,
                             std::uint64_t position) override;
    std::error_code truncate(std::uint64_t length) override;
    std::error_code sync() override;
    std::error_code copyAttributesFrom(ZALFileHandle& source) override;
    std::error_code lock() override;
    std::error_code unlock() override;

  private:
    std::mutex mutex_;
    const std::unique_ptr<ZALFileHandle> handle_;
};

}  // namespace zal
