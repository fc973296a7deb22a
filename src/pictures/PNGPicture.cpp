// PNG: the chunks of the file, and libpng over those that the pixels need.

#include "base/Endian.h"
#include "base/Limits.h"
#include "pictures/PictureFormats.h"

#include <png.h>
#include <zlib.h>

namespace zal {

namespace {

constexpr std::string_view signature{"\x89PNG\r\n\x1a\n", 8};

struct Chunk {
    std::string_view type;
    ZALDataView content;
    ZALDataView whole;  // with length, type and check sum
    std::size_t offset = 0;
};

// Walks the chunks up to the end chunk. Checks lengths, not check sums.
class ChunkReader {
  public:
    explicit ChunkReader(ZALDataView data) : data_(data), offset_(signature.size()) {}

    // Null behind the end chunk and where the structure breaks.
    std::optional<Chunk> next() {
        if (ended_ || offset_ + 12 > data_.size()) return std::nullopt;
        ByteReader reader(data_.subspan(offset_));
        const std::size_t length = reader.u32be();
        if (length > reader.remaining() - 8) return std::nullopt;
        const ZALDataView type = reader.take(4);
        Chunk chunk{{reinterpret_cast<const char*>(type.data()), 4},
                    reader.take(length),
                    data_.subspan(offset_, length + 12),
                    offset_};
        offset_ += chunk.whole.size();
        ended_ = chunk.type == "IEND";
        return chunk;
    }
    // True when the end chunk was met.
    bool ended() const { return ended_; }

  private:
    ZALDataView data_;
    std::size_t offset_;
    bool ended_ = false;
};

std::optional<Chunk> findChunk(ZALDataView data, std::string_view type) {
    ChunkReader reader(data);
    while (const auto chunk = reader.next()) {
        if (chunk->type == type) return chunk;
    }
    return std::nullopt;
}

bool begins(ZALDataView data) {
    return beginsWith(data, signature);
}

std::optional<PictureSize> sizeOf(ZALDataView data) {
    ChunkReader reader(data);
    const auto header = reader.next();
    if (!header || header->type != "IHDR") return std::nullopt;
    while (reader.next()) {
    }
    if (!reader.ended()) return std::nullopt;
    ByteReader fields(header->content);
    const std::uint32_t width = fields.u32be();
    return PictureSize{width, fields.u32be()};
}

// The file with nothing but what makes its pixels: a text or a profile can unpack to gigabytes.
ZALData barePicture(ZALDataView data) {
    ByteWriter out;
    out.text(signature);
    ChunkReader reader(data);
    while (const auto chunk = reader.next()) {
        for (const std::string_view needed : {"IHDR", "PLTE", "tRNS", "IDAT", "IEND"}) {
            if (chunk->type == needed) out.bytes(chunk->whole);
        }
    }
    return out.take();
}

bool decode(ZALDataView data, PictureSize size, std::uint8_t* rgba) {
    const ZALData bare = barePicture(data);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bare.data(), bare.size()) == 0) return false;
    if (PictureSize{image.width, image.height} != size) {
        png_image_free(&image);
        return false;
    }
    image.format = PNG_FORMAT_RGBA;
    image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // sixteen bits are taken as they are, like eight
    return png_image_finish_read(&image, nullptr, rgba, 0, nullptr) != 0;
}

ZALDataView exifOf(ZALDataView data) {
    const auto chunk = findChunk(data, "eXIf");
    return chunk ? chunk->content : ZALDataView();
}

ZALData exifChunk(ZALDataView exif) {
    ZALData typed{'e', 'X', 'I', 'f'};
    typed.insert(typed.end(), exif.begin(), exif.end());
    ByteWriter out;
    out.u32be(static_cast<std::uint32_t>(exif.size()));
    out.bytes(typed);
    out.u32be(static_cast<std::uint32_t>(::crc32(0, typed.data(), static_cast<uInt>(typed.size()))));
    return out.take();
}

ZALNullableData withExif(ZALDataView data, ZALDataView exif) {
    const ZALData chunk = exif.empty() ? ZALData() : exifChunk(exif);
    if (const auto old = findChunk(data, "eXIf")) return spliced(data, old->offset, old->whole.size(), chunk);
    const auto pixels = findChunk(data, "IDAT");
    if (!pixels) return std::nullopt;
    return spliced(data, pixels->offset, 0, chunk);
}

bool isOpaque(const ZALData& rgba) {
    for (std::size_t i = 3; i < rgba.size(); i += 4) {
        if (rgba[i] != 0xFF) return false;
    }
    return true;
}

ZALData withoutAlpha(const ZALData& rgba) {
    ZALData rgb(rgba.size() / 4 * 3);
    for (std::size_t from = 0, to = 0; from < rgba.size(); from += 4, to += 3) {
        rgb[to] = rgba[from];
        rgb[to + 1] = rgba[from + 1];
        rgb[to + 2] = rgba[from + 2];
    }
    return rgb;
}

}  // namespace

const PictureFormat pngFormat{"png",   limits::picturePixels, begins, sizeOf, decode, nullptr, exifOf,
                              withExif};

ZALNullableData pngFromPixels(PictureSize size, const ZALData& rgba) {
    const bool opaque = isOpaque(rgba);
    const ZALData rgb = opaque ? withoutAlpha(rgba) : ZALData();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = size.width;
    image.height = size.height;
    image.format = opaque ? PNG_FORMAT_RGB : PNG_FORMAT_RGBA;
    png_alloc_size_t length = PNG_IMAGE_PNG_SIZE_MAX(image);
    ZALData out(length);
    const void* pixels = opaque ? rgb.data() : rgba.data();
    if (png_image_write_to_memory(&image, out.data(), &length, 0, pixels, 0, nullptr) == 0)
        return std::nullopt;
    out.resize(length);
    out.shrink_to_fit();
    return out;
}

}  // namespace zal
