#include "Thumbnail.h"

#include <zaltag/serato/ZALBase64.h>

#include <algorithm>
#include <array>

namespace {

// The pixels of the source that one row or column of the thumbnail covers.
struct Span {
    std::uint32_t begin;
    std::uint32_t end;
};

Span spanOf(std::uint32_t index, std::uint32_t count, std::uint32_t source) {
    const auto edge = [&](std::uint32_t i) {
        return static_cast<std::uint32_t>(std::uint64_t{i} * source / count);
    };
    return {edge(index), std::max(edge(index) + 1, edge(index + 1))};
}

// Five bits of a colour, rounded: the file takes half the room, and no eye sees it at this size.
std::uint8_t coarse(std::uint64_t value) {
    return static_cast<std::uint8_t>((value * 31 + 127) / 255 * 255 / 31);
}

// The mean of a rectangle, on white where it is not opaque.
void appendMean(ZALData& out, const ZALImage& image, Span columns, Span rows) {
    std::array<std::uint64_t, 3> sum{};
    for (std::uint32_t y = rows.begin; y < rows.end; ++y) {
        for (std::uint32_t x = columns.begin; x < columns.end; ++x) {
            const std::size_t at = (std::size_t{y} * image.width() + x) * 4;
            const std::uint64_t alpha = image.pixels()[at + 3];
            for (std::size_t i = 0; i < sum.size(); ++i) {
                sum[i] += (image.pixels()[at + i] * alpha + 255 * (255 - alpha)) / 255;
            }
        }
    }
    const std::uint64_t count = std::uint64_t{rows.end - rows.begin} * (columns.end - columns.begin);
    for (const std::uint64_t one : sum) {
        out.push_back(coarse(one / count));
    }
    out.push_back(255);
}

ZALImagePtr madeSmall(const ZALImage& image) {
    const std::uint32_t longer = std::max(image.width(), image.height());
    const auto scaled = [&](std::uint32_t side) {
        if (longer <= thumbnailSide) return side;
        return std::max(1U, static_cast<std::uint32_t>(std::uint64_t{side} * thumbnailSide / longer));
    };
    const std::uint32_t width = scaled(image.width());
    const std::uint32_t height = scaled(image.height());
    ZALData pixels;
    pixels.reserve(std::size_t{width} * height * 4);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            appendMean(pixels, image, spanOf(x, width, image.width()), spanOf(y, height, image.height()));
        }
    }
    return ZALImage::imageWithPixels(width, height, std::move(pixels));
}

}  // namespace

std::string thumbnailURI(const ZALImagePtr& image) {
    const ZALImagePtr small = image ? madeSmall(*image) : nullptr;
    const ZALNullableData file = small ? small->PNGData() : std::nullopt;
    const ZALNullableData text = file ? dataByEncodingBase64(*file) : std::nullopt;
    if (!text) return {};
    std::string uri = "data:image/png;base64,";
    std::copy_if(text->begin(), text->end(), std::back_inserter(uri),
                 [](std::uint8_t c) { return c != '\n'; });
    return uri;
}
