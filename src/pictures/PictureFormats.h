#pragma once

#include <zaltag/base/ZALData.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace zal {

struct PictureSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    std::uint64_t pixels() const { return std::uint64_t{width} * height; }
    bool operator==(const PictureSize&) const = default;
};

/// An encoded picture's format: what the library can do with it. The functions take bytes that begins() took.
struct PictureFormat {
    const char* name;
    std::uint64_t pixelsMax;
    bool (*begins)(ZALDataView data);
    /// The size, from the structure. Null when that is broken.
    std::optional<PictureSize> (*size)(ZALDataView data);
    /// Decodes into four bytes for each pixel of the size that size() told. False for a damaged picture.
    bool (*decode)(ZALDataView data, PictureSize size, std::uint8_t* rgba);
    /// False when the file has no proper end although the size could be read. No function
    /// where size() finds that out.
    bool (*looksWhole)(ZALDataView data) = nullptr;
    /// The EXIF block; empty when there is none. No function where the format carries no marks.
    ZALDataView (*exif)(ZALDataView data) = nullptr;
    /// The same file with this EXIF block in place of the old one, or, when it is empty, without one; every
    /// other byte as it was. Null when there is no room for it or the structure is broken.
    ZALNullableData (*withExif)(ZALDataView data, ZALDataView exif) = nullptr;
};

// Each in the .cpp that includes its library.
extern const PictureFormat pngFormat;
extern const PictureFormat jpegFormat;
extern const PictureFormat webpFormat;
extern const PictureFormat tiffFormat;
extern const PictureFormat gifFormat;
extern const PictureFormat bmpFormat;

/// The format of encoded bytes by how they begin; null when it is none of these.
const PictureFormat* pictureFormatOf(ZALDataView data);

/// The size of an encoded picture that may be decoded: the one place where a claimed size is held against the
/// limits. Null for what is no picture, has no pixel or is too large. Cheap.
std::optional<PictureSize> permittedSize(ZALDataView data);

/// The pixels as a PNG file. Null when the encoder refuses them.
ZALNullableData pngFromPixels(PictureSize size, const ZALData& rgba);

/// The bytes with `removed` of them at `at` replaced by others.
ZALData spliced(ZALDataView data, std::size_t at, std::size_t removed, ZALDataView inserted);

/// True when the bytes begin with these.
bool beginsWith(ZALDataView data, std::string_view start);

}  // namespace zal
