#include <zaltag/pictures/ZALImage.h>

#include "base/Limits.h"
#include "pictures/PictureFormats.h"

#include <algorithm>
#include <new>

namespace zal {

const PictureFormat* pictureFormatOf(ZALDataView data) {
    for (const PictureFormat* format :
         {&jpegFormat, &pngFormat, &webpFormat, &gifFormat, &bmpFormat, &tiffFormat}) {
        if (format->begins(data)) return format;
    }
    return nullptr;
}

ZALData spliced(ZALDataView data, std::size_t at, std::size_t removed, ZALDataView inserted) {
    ZALData out;
    out.reserve(data.size() - removed + inserted.size());
    const ZALDataView front = data.first(at);
    const ZALDataView back = data.subspan(at + removed);
    out.insert(out.end(), front.begin(), front.end());
    out.insert(out.end(), inserted.begin(), inserted.end());
    out.insert(out.end(), back.begin(), back.end());
    return out;
}

bool beginsWith(ZALDataView data, std::string_view start) {
    return data.size() >= start.size() &&
           std::equal(start.begin(), start.end(), data.begin(),
                      [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
}

std::optional<PictureSize> permittedSize(ZALDataView data) {
    const PictureFormat* format = pictureFormatOf(data);
    const auto size = format != nullptr ? format->size(data) : std::nullopt;
    if (!size || size->pixels() == 0 || size->pixels() > format->pixelsMax) return std::nullopt;
    return size;
}

}  // namespace zal

ZALImage::ZALImage(std::uint32_t width, std::uint32_t height, ZALData pixels)
    : width_(width), height_(height), pixels_(std::move(pixels)) {}

ZALImagePtr ZALImage::imageWithData(ZALDataView data) {
    const auto size = zal::permittedSize(data);
    if (!size) return nullptr;
    try {
        ZALData pixels(static_cast<std::size_t>(size->pixels()) * 4);
        if (!zal::pictureFormatOf(data)->decode(data, *size, pixels.data())) return nullptr;
        return ZALImagePtr(new ZALImage(size->width, size->height, std::move(pixels)));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

ZALImagePtr ZALImage::imageWithPixels(std::uint32_t width, std::uint32_t height, ZALData pixels) {
    const std::uint64_t count = zal::PictureSize{width, height}.pixels();
    if (count == 0 || count > zal::limits::picturePixels || pixels.size() != count * 4) return nullptr;
    return ZALImagePtr(new ZALImage(width, height, std::move(pixels)));
}

std::optional<ZALImageInfo> ZALImage::infoWithData(ZALDataView data) {
    const auto size = zal::permittedSize(data);
    if (!size) return std::nullopt;
    const zal::PictureFormat& format = *zal::pictureFormatOf(data);
    if (format.looksWhole != nullptr && !format.looksWhole(data)) return std::nullopt;
    return ZALImageInfo{format.name, size->width, size->height};
}

ZALNullableData ZALImage::PNGData() const {
    try {
        return zal::pngFromPixels({width_, height_}, pixels_);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}
