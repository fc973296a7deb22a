#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

#include <tstring.h>
#include <tstringlist.h>

#include <string>

// What MP4 items and Xiph fields do alike: both are lists of texts, and payloads travel in them as text.

namespace zal {

/// The texts of a carrier as one, a blank between two.
std::string joinedText(const TagLib::StringList& texts);

/// Bytes as the text of a carrier, one character per byte. Read again with payloadOf(), the bytes from 0x80
/// on come back as two, as the files have it; payloads are ASCII.
TagLib::String carrierText(ZALDataView payload);

/// The bytes of a carrier's text, in UTF-8; null for null.
ZALNullableData payloadOf(const ZALNullableString& text);

}  // namespace zal
