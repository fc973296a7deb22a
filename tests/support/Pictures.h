#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/pictures/ZALImage.h>

#include <cstdint>
#include <string_view>

/// A picture whose pixels differ from place to place and from seed to seed; opaque unless asked.
ZALImagePtr picture(std::uint32_t width = 16, std::uint32_t height = 12, std::uint8_t seed = 0,
                    bool alpha = false);

/// The picture as a PNG file.
ZALData pngOf(const ZALImage& image);
/// The same from a fresh picture.
ZALData png(std::uint8_t seed = 0);

enum class JPEGKind { baseline, progressive, grey, cmyk };
/// The picture as a JPEG file of some quality; the pixels come back nearly the same.
ZALData jpegOf(const ZALImage& image, JPEGKind kind = JPEGKind::baseline);
/// The picture as a lossless WebP file.
ZALData webpOf(const ZALImage& image);
/// A chunk of a PNG file, with its check sum.
ZALData pngChunk(std::string_view type, const ZALData& content);
/// The file with a chunk in front of the pixels.
ZALData withPNGChunk(const ZALData& png, std::string_view type, const ZALData& content);
/// The file with a segment in front of the pixels.
ZALData withJPEGSegment(const ZALData& jpeg, std::uint8_t marker, const ZALData& content);
