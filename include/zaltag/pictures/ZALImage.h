#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class ZALImage;

/// A decoded picture; null stands for no picture.
using ZALImagePtr = std::shared_ptr<const ZALImage>;

/// What the head of an encoded picture tells.
struct ZALImageInfo {
    std::string format;  ///< "png", "jpeg", "webp", "tiff", "gif" or "bmp"
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// A decoded picture: rows from top to bottom, pixels from left to right, four bytes each in the order red,
/// green, blue, alpha; alpha is not multiplied in. Colour profiles and gamma are not applied: the bytes are
/// those of the file. Immutable; any thread. Nothing here is logged.
///
/// A picture has at most 64 mega pixels (16 for GIF and BMP, whose decoder needs more for each); a larger one
/// is no picture, and is refused before it is decoded.
class ZALTAG_EXPORT ZALImage {
  public:
    /// Decodes a PNG, JPEG, WebP, TIFF, GIF or BMP picture; of an animation that its format allows, GIF, the
    /// first frame. Null for anything else, for one that is damaged or cut off, and for one that is too
    /// large.
    static ZALImagePtr imageWithData(ZALDataView data);
    /// A picture from pixels. Null when there are not exactly four bytes for each of width x height pixels,
    /// at least one pixel, and no more than a picture may have.
    static ZALImagePtr imageWithPixels(std::uint32_t width, std::uint32_t height, ZALData pixels);
    /// Format and size of an encoded picture, from its structure: cheap, since the pixels are not decoded, so
    /// it may still turn out to be damaged. Null for an unknown format, a picture that is cut off (a JPEG
    /// without its end mark, too, though that may hold all pixels), and one that is too large.
    static std::optional<ZALImageInfo> infoWithData(ZALDataView data);

    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }
    const ZALData& pixels() const { return pixels_; }

    /// The picture as a PNG file, with an alpha channel only where a pixel is not opaque. Null when that
    /// cannot be made: too little memory, or a side over a million pixels.
    ZALNullableData PNGData() const;

    /// Equality of size and pixels.
    bool operator==(const ZALImage& other) const = default;

  private:
    ZALTAG_INSIDE ZALImage(std::uint32_t width, std::uint32_t height, ZALData pixels);

    std::uint32_t width_;
    std::uint32_t height_;
    ZALData pixels_;
};
