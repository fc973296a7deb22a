#pragma once

#include <zaltag/base/ZALText.h>

#include <tstring.h>
#include <tstringlist.h>

#include <string>
#include <vector>

namespace zal {

/// A TagLib string as UTF-8; lone surrogates become U+FFFD.
std::string stringWithTagLibString(const TagLib::String& string);

/// A text as a TagLib string; null is TagLib's empty string. What is not UTF-8 is replaced rather than lost.
TagLib::String TagLibString(const ZALNullableString& text);

/// The bytes of a text frame or item, read as Latin-1: one character per byte.
TagLib::String latin1TagLibString(const std::string& bytes);

/// Several of them.
std::vector<std::string> stringsWithTagLibStrings(const TagLib::StringList& strings);
TagLib::StringList TagLibStrings(const std::vector<std::string>& texts);

}  // namespace zal
