// Any bytes as a picture of any format: what the structure tells agrees with what decoding gives, and a
// decoded picture survives being rendered as PNG.

#include "platform/PictureFormats.h"

#include <zaltag/platform/ZALImage.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t count) {
    const ZALDataView bytes(data, count);
    const auto size = zal::permittedSize(bytes);
    const auto info = ZALImage::infoWithData(bytes);
    if (info && !size) std::abort();
    if (!size || size->pixels() > 1U << 18) return 0;  // slow, and nothing new
    const ZALImagePtr image = ZALImage::imageWithData(bytes);
    if (image == nullptr) return 0;
    if (image->width() != size->width || image->height() != size->height) std::abort();
    if (image->pixels().size() != std::size_t{4} * image->width() * image->height()) std::abort();
    const auto png = image->PNGData();
    const ZALImagePtr again = png ? ZALImage::imageWithData(*png) : image;
    if (again == nullptr || !(*again == *image)) std::abort();
    return 0;
}
