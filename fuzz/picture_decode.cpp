// Any bytes as a picture of any format: what the structure tells agrees with what decoding gives, and a
// decoded picture survives being rendered as PNG.

#include <zaltag/platform/ZALImage.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ZALDataView bytes(data, size);
    const auto info = ZALImage::infoWithData(bytes);
    if (info && std::uint64_t{info->width} * info->height > 1U << 20) return 0;  // slow, and nothing new
    const ZALImagePtr image = ZALImage::imageWithData(bytes);
    if (image == nullptr) return 0;
    if (!info || info->width != image->width() || info->height != image->height()) std::abort();
    if (image->pixels().size() != std::size_t{4} * image->width() * image->height()) std::abort();
    const auto png = image->PNGData();
    const ZALImagePtr again = png ? ZALImage::imageWithData(*png) : image;
    if (again == nullptr || !(*again == *image)) std::abort();
    return 0;
}
