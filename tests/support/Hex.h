#pragma once

#include <zaltag/base/ZALData.h>

#include <string>
#include <string_view>

/// Bytes from hexadecimal digits; blanks are skipped.
ZALData fromHex(std::string_view digits);

/// Bytes as upper-case hexadecimal pairs with a blank between them.
std::string toHex(ZALDataView bytes);

/// The bytes of a text.
ZALData bytesOf(std::string_view text);
