#pragma once

#include <cstddef>
#include <cstdint>

// What a picture may cost. A few kilobytes can claim any size, so these bounds, not the file, decide how much
// memory and time a decoder gets. The largest covers sold today have 9 mega pixels.
namespace zal::limits {

/// Pixels of a picture; at four bytes each, 256 MB.
inline constexpr std::uint64_t picturePixels = 64U << 20;

/// Pixels where the decoder keeps nine more bytes for each (GIF, BMP).
inline constexpr std::uint64_t heavyPicturePixels = 16U << 20;

/// What a decoder may hold beside the pixels: a progressive JPEG of the largest size needs three quarters of
/// it.
inline constexpr std::size_t decoderMemory = 512U << 20;

/// Passes over a progressive JPEG. Encoders make about ten; each one beyond costs a whole picture's work for
/// a few bytes.
inline constexpr int jpegScans = 64;

/// Chunks of a WebP file; the format knows seven kinds.
inline constexpr std::size_t webpChunks = 1000;

}  // namespace zal::limits
