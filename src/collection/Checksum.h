#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zal {

/// A quick checksum of 64 bits, the same for the same bytes in one process; no protection against who makes
/// bytes to fit it.
class Checksum {
  public:
    explicit Checksum(std::uint64_t seed = 0) : sum_(seed) {}

    /// Adds bytes. All pieces but the last are a multiple of 8 long.
    void add(std::string_view bytes) {
        for (; bytes.size() >= 8; bytes.remove_prefix(8)) {
            mix(wordAt(bytes, 8));
        }
        if (!bytes.empty()) mix(wordAt(bytes, bytes.size()) ^ std::uint64_t{bytes.size()} << 56);
    }
    std::uint64_t value() const { return sum_ ^ sum_ >> 29; }

    static std::uint64_t of(std::string_view bytes, std::uint64_t seed = 0) {
        Checksum sum(seed ^ bytes.size());
        sum.add(bytes);
        return sum.value();
    }

  private:
    static std::uint64_t wordAt(std::string_view bytes, std::size_t size) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), size);
        return word;
    }
    void mix(std::uint64_t word) {
        sum_ = std::rotl(sum_ ^ word, 27) * 0x9E3779B97F4A7C15U;
        sum_ ^= sum_ >> 32;
    }

    std::uint64_t sum_;
};

}  // namespace zal
