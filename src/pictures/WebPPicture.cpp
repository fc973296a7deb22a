// WebP: the RIFF chunks of the file, and libwebp.

#include "base/Endian.h"
#include "base/Limits.h"
#include "pictures/PictureFormats.h"

#include <webp/decode.h>

#include <algorithm>
#include <vector>

namespace zal {

namespace {

constexpr std::size_t headerSize = 12;  // "RIFF", the length of what follows, "WEBP"
constexpr std::string_view exifStart{"Exif\0\0", 6};

// Flags of the extended header.
constexpr std::uint8_t hasProfile = 0x20;
constexpr std::uint8_t hasAlpha = 0x10;
constexpr std::uint8_t hasExif = 0x08;
constexpr std::uint8_t hasXMP = 0x04;
constexpr std::uint8_t hasAnimation = 0x02;

struct Chunk {
    std::string_view type;
    ZALDataView content;
    ZALDataView whole;  // with type, length and padding
};

bool begins(ZALDataView data) {
    return beginsWith(data, "RIFF") && data.size() >= headerSize && beginsWith(data.subspan(8), "WEBP");
}

// The end of the RIFF form; 0 when the file is cut off before it.
std::size_t endOfForm(ZALDataView data) {
    ByteReader reader(data.subspan(4));
    const std::size_t end = 8 + std::size_t{reader.u32le()};
    return end >= headerSize && end <= data.size() ? end : 0;
}

// All chunks of the form; empty when the structure is broken.
std::vector<Chunk> chunksOf(ZALDataView data) {
    const std::size_t end = endOfForm(data);
    std::vector<Chunk> chunks;
    for (std::size_t offset = headerSize; offset < end;) {
        const ZALDataView rest = data.subspan(offset, end - offset);
        ByteReader reader(rest);
        const ZALDataView type = reader.take(4);
        const std::size_t length = reader.u32le();
        const std::size_t padded = length + length % 2;
        if (reader.failed() || padded > reader.remaining() || chunks.size() == limits::webpChunks) return {};
        chunks.push_back({{reinterpret_cast<const char*>(type.data()), 4},
                          rest.subspan(8, length),
                          rest.first(8 + padded)});
        offset += 8 + padded;
    }
    return chunks;
}

std::optional<WebPBitstreamFeatures> featuresOf(ZALDataView data) {
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(data.data(), data.size(), &features) != VP8_STATUS_OK) return std::nullopt;
    return features;
}

std::optional<PictureSize> sizeOf(ZALDataView data) {
    const auto features = featuresOf(data);
    if (!features || features->has_animation != 0 || endOfForm(data) == 0) return std::nullopt;
    return PictureSize{static_cast<std::uint32_t>(features->width),
                       static_cast<std::uint32_t>(features->height)};
}

bool decode(ZALDataView data, PictureSize size, std::uint8_t* rgba) {
    const auto stride = static_cast<int>(size.width * 4);
    const auto bytes = static_cast<std::size_t>(size.pixels() * 4);
    return WebPDecodeRGBAInto(data.data(), data.size(), rgba, bytes, stride) != nullptr;
}

ZALDataView exifOf(ZALDataView data) {
    for (const Chunk& chunk : chunksOf(data)) {
        if (chunk.type != "EXIF") continue;
        // Some programs put the start of the JPEG segment here too.
        return beginsWith(chunk.content, exifStart) ? chunk.content.subspan(exifStart.size()) : chunk.content;
    }
    return {};
}

void appendChunk(ByteWriter& out, std::string_view type, ZALDataView content) {
    out.text(type);
    out.u32le(static_cast<std::uint32_t>(content.size()));
    out.bytes(content);
    if (content.size() % 2 != 0) out.u8(0);
}

// The header that a file with anything beside its pixels needs, with its flag for EXIF.
ZALData extendedHeader(const WebPBitstreamFeatures& features) {
    const auto width = static_cast<std::uint32_t>(features.width - 1);
    const auto height = static_cast<std::uint32_t>(features.height - 1);
    ByteWriter out;
    out.u32le(hasExif | (features.has_alpha != 0 ? hasAlpha : 0U));
    out.u32le(width | height << 24);
    out.u8(static_cast<std::uint8_t>(height >> 8));
    out.u8(static_cast<std::uint8_t>(height >> 16));
    return out.take();
}

// True for the extended header of a file that needs none.
bool isNeedless(const ZALData& header, const std::vector<Chunk>& chunks) {
    const bool simple = chunks.size() == 1 && (chunks[0].type == "VP8 " || chunks[0].type == "VP8L");
    return simple && (header[0] & (hasProfile | hasExif | hasXMP | hasAnimation)) == 0;
}

ZALNullableData withExif(ZALDataView data, ZALDataView exif) {
    std::vector<Chunk> chunks = chunksOf(data);
    const auto features = featuresOf(data);
    if (chunks.empty() || !features) return std::nullopt;

    ZALData header = extendedHeader(*features);
    if (chunks[0].type == "VP8X") {
        if (chunks[0].content.size() < header.size()) return std::nullopt;
        header.assign(chunks[0].content.begin(), chunks[0].content.end());
        chunks.erase(chunks.begin());
    }
    header[0] = static_cast<std::uint8_t>(exif.empty() ? header[0] & ~hasExif : header[0] | hasExif);

    ByteWriter chunk;
    if (!exif.empty()) appendChunk(chunk, "EXIF", exif);
    const auto isType = [](std::string_view type) {
        return [type](const Chunk& one) { return one.type == type; };
    };
    auto place = std::find_if(chunks.begin(), chunks.end(), isType("EXIF"));
    if (place != chunks.end()) {
        place = chunks.erase(place);
    } else {
        place = std::find_if(chunks.begin(), chunks.end(), isType("XMP "));
    }
    if (chunk.size() != 0) chunks.insert(place, {"EXIF", exif, chunk.data()});

    ByteWriter form;
    form.text("WEBP");
    if (!isNeedless(header, chunks)) appendChunk(form, "VP8X", header);
    for (const Chunk& one : chunks) {
        form.bytes(one.whole);
    }
    ByteWriter out;
    appendChunk(out, "RIFF", form.data());
    out.bytes(data.subspan(endOfForm(data)));
    return out.take();
}

}  // namespace

const PictureFormat webpFormat{"webp",  limits::picturePixels, begins, sizeOf, decode, nullptr, exifOf,
                               withExif};

}  // namespace zal
