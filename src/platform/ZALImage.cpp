#include <zaltag/platform/ZALImage.h>

#include "platform/PictureFormats.h"
#include "platform/PictureLimits.h"

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

}  // namespace zal

namespace {

// The size of a picture that may be decoded: the one place where a claimed size is held against the limits.
std::optional<zal::PictureSize> permittedSize(const zal::PictureFormat& format, ZALDataView data) {
    const auto size = format.size(data);
    if (!size || size->pixels() == 0 || size->pixels() > format.pixelsMax) return std::nullopt;
    return size;
}

}  // namespace

ZALImage::ZALImage(std::uint32_t width, std::uint32_t height, ZALData pixels)
    : width_(width), height_(height), pixels_(std::move(pixels)) {}

ZALImagePtr ZALImage::imageWithData(ZALDataView data) {
    const zal::PictureFormat* format = zal::pictureFormatOf(data);
    if (format == nullptr) return nullptr;
    try {
        const auto size = permittedSize(*format, data);
        if (!size) return nullptr;
        ZALData pixels(static_cast<std::size_t>(size->pixels()) * 4);
        if (!format->decode(data, *size, pixels.data())) return nullptr;
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
    const zal::PictureFormat* format = zal::pictureFormatOf(data);
    const auto size = format != nullptr ? permittedSize(*format, data) : std::nullopt;
    if (!size) return std::nullopt;
    const bool doubtful = format->looksWhole != nullptr && !format->looksWhole(data);
    if (doubtful && imageWithData(data) == nullptr) return std::nullopt;
    return ZALImageInfo{format->name, size->width, size->height};
}

ZALNullableData ZALImage::PNGData() const {
    try {
        return zal::pngFromPixels({width_, height_}, pixels_);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}
