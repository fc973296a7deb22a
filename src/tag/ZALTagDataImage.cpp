#include <zaltag/tag/ZALTagDataImage.h>

#include "pictures/LensMake.h"

const std::string& ZALTagDataImage::originalLensMakeString() {
    static const std::string text = "__zal_original_album_artwork__";
    return text;
}

const std::string& ZALTagDataImage::customizedLensMakeString() {
    static const std::string text = "__zal_customized_album_artwork__";
    return text;
}

ZALNullableString ZALTagDataImage::lensMake() const {
    return zal::lensMakeOf(imageData_);
}

void ZALTagDataImage::setLensMake(const ZALNullableString& make) {
    if (lensMake() == make) return;
    if (ZALNullableData marked = zal::pictureWithLensMake(imageData_, make)) imageData_ = std::move(*marked);
}

bool ZALTagDataImage::isOriginalImage() const {
    return lensMake() == originalLensMakeString();
}

void ZALTagDataImage::setIsOriginalImage(bool flag) {
    if (flag == isOriginalImage()) return;
    setLensMake(flag ? ZALNullableString(originalLensMakeString()) : std::nullopt);
}

bool ZALTagDataImage::isCustomImage() const {
    return lensMake() == customizedLensMakeString();
}

void ZALTagDataImage::setIsCustomImage(bool flag) {
    if (flag == isCustomImage()) return;
    setLensMake(flag ? ZALNullableString(customizedLensMakeString()) : std::nullopt);
}
