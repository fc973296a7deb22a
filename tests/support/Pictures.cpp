#include "support/Pictures.h"

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"

#include <cstddef>
#include <cstdio>
//
#include <jpeglib.h>
#include <webp/encode.h>
#include <zlib.h>

#include <algorithm>

ZALImagePtr picture(std::uint32_t width, std::uint32_t height, std::uint8_t seed, bool alpha) {
    ZALData pixels;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            for (const std::uint32_t value :
                 {x * 4 + seed, y * 6, x + y + seed, alpha ? 99 + x + y : 0xFFU}) {
                pixels.push_back(static_cast<std::uint8_t>(value));
            }
        }
    }
    return ZALImage::imageWithPixels(width, height, pixels);
}

ZALData pngOf(const ZALImage& image) {
    return image.PNGData().value();
}
ZALData png(std::uint8_t seed) {
    return pngOf(*picture(16, 12, seed));
}

ZALData jpegOf(const ZALImage& image, JPEGKind kind) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = image.width();
    info.image_height = image.height();
    info.input_components = 4;
    info.in_color_space = kind == JPEGKind::cmyk ? JCS_CMYK : JCS_EXT_RGBX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    if (kind == JPEGKind::grey) jpeg_set_colorspace(&info, JCS_GRAYSCALE);
    if (kind == JPEGKind::progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    ZALData pixels = image.pixels();
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = pixels.data() + std::size_t{info.next_scanline} * image.width() * 4;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const ZALData out(bytes, bytes + size);
    std::free(bytes);
    return out;
}

ZALData webpOf(const ZALImage& image) {
    const auto width = static_cast<int>(image.width()), height = static_cast<int>(image.height());
    std::uint8_t* bytes = nullptr;
    const std::size_t size = WebPEncodeLosslessRGBA(image.pixels().data(), width, height, width * 4, &bytes);
    const ZALData out(bytes, bytes + size);
    WebPFree(bytes);
    return out;
}

ZALData pngChunk(std::string_view type, const ZALData& content) {
    const ZALData typed = joined({bytesOf(type), content});
    zal::ByteWriter out;
    out.u32be(static_cast<std::uint32_t>(content.size()));
    out.bytes(typed);
    out.u32be(static_cast<std::uint32_t>(::crc32(0, typed.data(), static_cast<uInt>(typed.size()))));
    return out.take();
}

ZALData withPNGChunk(const ZALData& png, std::string_view type, const ZALData& content) {
    const std::string_view text(reinterpret_cast<const char*>(png.data()), png.size());
    const auto pixels = static_cast<std::ptrdiff_t>(text.find("IDAT")) - 4;
    return joined(
        {{png.begin(), png.begin() + pixels}, pngChunk(type, content), {png.begin() + pixels, png.end()}});
}

ZALData withJPEGSegment(const ZALData& jpeg, std::uint8_t marker, const ZALData& content) {
    zal::ByteWriter segment;
    segment.u8(0xFF);
    segment.u8(marker);
    segment.u16be(static_cast<std::uint16_t>(content.size() + 2));
    segment.bytes(content);
    return joined({{jpeg.begin(), jpeg.begin() + 2}, segment.data(), {jpeg.begin() + 2, jpeg.end()}});
}
