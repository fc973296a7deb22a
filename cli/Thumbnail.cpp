#include "Thumbnail.h"

#include <zaltag/serato/ZALBase64.h>

#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#include <stb/stb_image_resize.h>

#include <algorithm>
#include <utility>

namespace {

// Five bits of a colour, rounded: the file takes half the room, and no eye sees it at this size.
std::uint8_t coarse(std::uint64_t value) {
    return static_cast<std::uint8_t>((value * 31 + 127) / 255 * 255 / 31);
}

// One pixel on white, where it is not opaque.
void putOnWhite(std::uint8_t* pixel) {
    const std::uint64_t alpha = pixel[3];
    for (int i = 0; i < 3; ++i) {
        pixel[i] = coarse((pixel[i] * alpha + 255 * (255 - alpha)) / 255);
    }
    pixel[3] = 255;
}

ZALImagePtr madeSmall(const ZALImage& image) {
    const std::uint32_t longer = std::max({image.width(), image.height(), thumbnailSide});
    const auto scaled = [longer](std::uint32_t side) {
        return std::max(1, static_cast<int>(std::uint64_t{side} * thumbnailSide / longer));
    };
    const int width = scaled(image.width());
    const int height = scaled(image.height());
    ZALData pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    const int isDone =
        stbir_resize_uint8_generic(image.pixels().data(), static_cast<int>(image.width()),
                                   static_cast<int>(image.height()), 0, pixels.data(), width, height, 0, 4, 3,
                                   0, STBIR_EDGE_CLAMP, STBIR_FILTER_BOX, STBIR_COLORSPACE_LINEAR, nullptr);
    if (isDone == 0) return nullptr;
    for (std::size_t at = 0; at < pixels.size(); at += 4) {
        putOnWhite(&pixels[at]);
    }
    return ZALImage::imageWithPixels(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                                     std::move(pixels));
}

}  // namespace

std::string thumbnailURI(const ZALImagePtr& image) {
    const ZALImagePtr small = image ? madeSmall(*image) : nullptr;
    const ZALNullableData file = small ? small->PNGData() : std::nullopt;
    const ZALNullableData text = file ? ZALDataByEncodingBase64(*file) : std::nullopt;
    if (!text) return {};
    std::string uri = "data:image/png;base64,";
    std::copy_if(text->begin(), text->end(), std::back_inserter(uri),
                 [](std::uint8_t c) { return c != '\n'; });
    return uri;
}
