// Pictures: any bytes of any format, and the lens make of those that carry one.

#include "Fuzz.h"

#include "base/Endian.h"
#include "pictures/LensMake.h"
#include "pictures/PictureFormats.h"
#include "support/Pictures.h"

#include <zaltag/pictures/ZALImage.h>

#include <zlib.h>

#include <algorithm>

namespace {

ZALData withRightSums(ZALDataView data) {
    ZALData out(data.begin(), data.end());
    for (std::size_t at = 8; at + 12 <= out.size();) {
        zal::ByteReader reader(ZALDataView(out).subspan(at));
        const std::size_t length = reader.u32be();
        if (length > out.size() - at - 12) break;
        zal::ByteWriter sum;
        sum.u32be(static_cast<std::uint32_t>(::crc32(0, &out[at + 4], static_cast<uInt>(length + 4))));
        std::copy(sum.data().begin(), sum.data().end(), &out[at + 8 + length]);
        at += length + 12;
    }
    return out;
}

bool isOf(ZALDataView data, const ZALImage& image) {
    const ZALImagePtr decoded = ZALImage::imageWithData(data);
    return decoded != nullptr && *decoded == image;
}

// What the structure tells agrees with what decoding gives, and a decoded picture survives PNG.
void picture(ZALDataView bytes) {
    const auto size = zal::permittedSize(bytes);
    require(size || !ZALImage::infoWithData(bytes));
    if (!size || size->pixels() > 1U << 18) return;  // slow, and nothing new
    const ZALImagePtr image = ZALImage::imageWithData(bytes);
    if (image == nullptr) return;
    require(image->width() == size->width && image->height() == size->height);
    const auto png = image->PNGData();
    require(!png || isOf(*png, *image));
}

// The lens make is set, changed and removed; every mark reads back and no pixel is another one.
void mark(ZALDataView picture) {
    const auto size = zal::permittedSize(picture);
    if (size && size->pixels() > 1U << 14) return;
    const ZALImagePtr image = ZALImage::imageWithData(picture);
    ZALNullableData marked = zal::pictureWithLensMake(picture, "__zal_original_album_artwork__");
    if (!marked) return;
    require(image != nullptr && isOf(*marked, *image));
    for (const ZALNullableString& make :
         {ZALNullableString("abc"), ZALNullableString("another one"), ZALNullableString()}) {
        const auto changed = zal::pictureWithLensMake(*marked, make);
        if (!changed) continue;
        require(zal::lensMakeOf(*changed) == make && isOf(*changed, *image));
        marked = changed;
    }
}

// The input as a file (a PNG with right sums), and as the EXIF block of a small picture.
void lens(ZALDataView data) {
    static const ZALData plainPNG = png(), plainJPEG = jpegOf(*::picture(8, 8));
    mark(withRightSums(data));
    for (const auto& [format, plain] :
         {std::pair(&zal::pngFormat, &plainPNG), std::pair(&zal::jpegFormat, &plainJPEG)}) {
        if (const auto carrier = format->withExif(*plain, data)) mark(*carrier);
    }
}

}  // namespace

extern const FuzzTarget pictureTargets[] = {{"picture", picture}, {"lens", lens}, {}};
