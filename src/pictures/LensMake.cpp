#include "pictures/LensMake.h"

#include "pictures/Exif.h"
#include "pictures/PictureFormats.h"

#include <zaltag/pictures/ZALImage.h>

namespace zal {

namespace {

const PictureFormat* markedFormatOf(ZALDataView picture) {
    const PictureFormat* format = pictureFormatOf(picture);
    return format != nullptr && format->exif != nullptr ? format : nullptr;
}

}  // namespace

ZALNullableString lensMakeOf(ZALDataView picture) {
    const PictureFormat* format = markedFormatOf(picture);
    return format != nullptr ? lensMakeOfExif(format->exif(picture)) : std::nullopt;
}

ZALNullableData pictureWithLensMake(ZALDataView picture, const ZALNullableString& make) {
    const PictureFormat* format = markedFormatOf(picture);
    if (format == nullptr || ZALImage::imageWithData(picture) == nullptr) return std::nullopt;
    ZALNullableData marked = format->withExif(picture, exifWithLensMake(format->exif(picture), make));
    // Parts of a block that overlap may not read back, and junk behind it may become the start of the file.
    const bool readsBack = marked && pictureFormatOf(*marked) == format && lensMakeOf(*marked) == make;
    return readsBack ? marked : std::nullopt;
}

}  // namespace zal
