#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

namespace zal {

/// The lens make in an EXIF block; null when it has none or is no EXIF block.
ZALNullableString lensMakeOfExif(ZALDataView exif);

/// The EXIF block with another lens make, or, for null, without one; empty when nothing else is in it. Bytes
/// that are no EXIF block give a new one.
///
/// Nothing in the block moves: maker notes hold offsets that only their makers know. The two directories on
/// the way to the lens make are written anew behind everything else, over their earlier copies where those
/// are the last thing in the block, and the header points there.
ZALData exifWithLensMake(ZALDataView exif, const ZALNullableString& make);

}  // namespace zal
