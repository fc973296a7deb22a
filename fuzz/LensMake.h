#pragma once

#include "platform/LensMake.h"
#include "platform/PictureFormats.h"

#include <zaltag/platform/ZALImage.h>

#include <cstdlib>

/// Ends the process unless the bytes decode to this very picture.
inline void expectPixels(ZALDataView data, const ZALImage& image) {
    const ZALImagePtr decoded = ZALImage::imageWithData(data);
    if (decoded == nullptr || !(*decoded == image)) std::abort();
}

/// Sets, changes and removes the lens make of a picture; ends the process when a mark does not read back or a
/// pixel is another one.
inline void markPicture(ZALDataView picture) {
    const auto size = zal::permittedSize(picture);
    if (size && size->pixels() > 1U << 14) return;  // slow, and nothing new
    const ZALImagePtr image = ZALImage::imageWithData(picture);
    ZALNullableData marked = zal::pictureWithLensMake(picture, "__zal_original_album_artwork__");
    if (!marked) return;
    if (image == nullptr) std::abort();
    for (const ZALNullableString& make :
         {ZALNullableString("abc"), ZALNullableString("another one"), ZALNullableString()}) {
        expectPixels(*marked, *image);
        const auto changed = zal::pictureWithLensMake(*marked, make);
        if (!changed) continue;
        if (zal::lensMakeOf(*changed) != make) std::abort();
        expectPixels(*changed, *image);
        marked = changed;
    }
}
