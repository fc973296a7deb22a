#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

namespace zal {

/// The EXIF lens make of an encoded picture. Null when the bytes are no picture or it has none. Only the
/// structure of the file is read, so that asking is cheap.
ZALNullableString lensMakeOf(ZALDataView picture);

/// The picture with another lens make, or, for null, without one: its pixels and every other byte stay as
/// they are. Null when the picture cannot be read as a whole, when its format carries no mark (only PNG, JPEG
/// and WebP do), and when there is no room for it.
ZALNullableData pictureWithLensMake(ZALDataView picture, const ZALNullableString& make);

}  // namespace zal
