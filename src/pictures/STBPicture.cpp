// GIF and BMP, through stb_image.

#include "base/Endian.h"
#include "base/Limits.h"
#include "pictures/PictureFormats.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_GIF
#define STBI_ONLY_BMP
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
#include <stb/stb_image.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace zal {

namespace {

struct Release {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

// The bytes as the library takes them; none at all when there are more than it can count.
int countOf(ZALDataView data) {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return data.size() <= most ? static_cast<int>(data.size()) : 0;
}

std::optional<PictureSize> sizeOf(ZALDataView data) {
    int width = 0;
    int height = 0;
    int components = 0;
    if (stbi_info_from_memory(data.data(), countOf(data), &width, &height, &components) == 0)
        return std::nullopt;
    return PictureSize{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
}

bool decode(ZALDataView data, PictureSize size, std::uint8_t* rgba) {
    int width = 0;
    int height = 0;
    const std::unique_ptr<stbi_uc, Release> pixels(
        stbi_load_from_memory(data.data(), countOf(data), &width, &height, nullptr, 4));
    const PictureSize decoded{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    if (pixels == nullptr || decoded != size) return false;
    std::copy_n(pixels.get(), size.pixels() * 4, rgba);
    return true;
}

bool beginsAsGIF(ZALDataView data) {
    return beginsWith(data, "GIF87a") || beginsWith(data, "GIF89a");
}

bool beginsAsBMP(ZALDataView data) {
    return beginsWith(data, "BM");
}

// The library reads zeros behind the end: a file that is too short for its rows is refused here.
std::optional<PictureSize> sizeOfBMP(ZALDataView data) {
    const auto size = sizeOf(data);
    if (!size) return std::nullopt;
    ByteReader reader(data);
    reader.skip(10);
    const std::uint64_t start = reader.u32le();
    const bool oldHeader = reader.u32le() == 12;
    reader.skip(oldHeader ? 6 : 10);
    const std::uint64_t bitsPerPixel = reader.u8();
    const std::uint64_t row = (size->width * bitsPerPixel + 31) / 32 * 4;
    return start + row * size->height <= data.size() ? size : std::nullopt;
}

}  // namespace

const PictureFormat gifFormat{"gif", limits::heavyPicturePixels, beginsAsGIF, sizeOf, decode};
const PictureFormat bmpFormat{"bmp", limits::heavyPicturePixels, beginsAsBMP, sizeOfBMP, decode};

}  // namespace zal
