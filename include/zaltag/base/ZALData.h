#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Bytes that are owned.
using ZALData = std::vector<std::uint8_t>;

/// Bytes that are absent or owned.
using ZALNullableData = std::optional<ZALData>;

/// Bytes that somebody else owns; valid as long as the owner leaves them alone.
using ZALDataView = std::span<const std::uint8_t>;
