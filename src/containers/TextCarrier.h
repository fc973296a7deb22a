#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALJSONValue.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/tag/ZALTagComment.h>

#include <tstring.h>
#include <tstringlist.h>

#include <optional>

// What MP4 items and Xiph fields do alike: both are lists of texts, and payloads travel in them as text.

namespace zal {

/// The texts of a carrier as one, a blank between two.
std::string joinedText(const TagLib::StringList& texts);

/// Bytes as the text of a carrier, one character per byte. Read again with payloadOf(), the bytes from 0x80
/// on come back as two, as the files have it; payloads are ASCII.
TagLib::String carrierText(ZALDataView payload);

/// The bytes of a carrier's text, in UTF-8; null for null.
ZALNullableData payloadOf(const ZALNullableString& text);

/// The dictionary of the record in a carrier's text; null for null and for what is no record (one log line).
std::optional<ZALJSONValue> recordDictionaryOf(const ZALNullableString& text);

/// The list of all comments of a file that has at most one; empty for null.
ZALArray<ZALTagComment> onlyComment(const ZALNullableString& text);

}  // namespace zal
