#pragma once

#include <zaltag/base/ZALData.h>

#include <cstdint>
#include <memory>

namespace zal {

/// Counts what a zlib stream becomes, without keeping any of it. One thread at a time.
class InflationCount {
  public:
    InflationCount();
    ~InflationCount();

    /// Takes the next bytes of the stream. False once it ended, is damaged, or made more than `most` bytes.
    bool take(ZALDataView bytes, std::uint64_t most);
    /// The bytes made so far.
    std::uint64_t made() const { return made_; }

  private:
    struct Stream;

    std::unique_ptr<Stream> stream_;
    std::uint64_t made_ = 0;
};

/// What a zlib stream becomes; null when it is damaged or cut off, and when it makes more than `most` bytes.
ZALNullableData inflated(ZALDataView stream, std::uint64_t most);

}  // namespace zal
