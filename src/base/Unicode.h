#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

#include <string>
#include <string_view>

namespace zal {

/// Latin-1 bytes as UTF-8.
std::string utf8FromLatin1(std::string_view latin1);

/// UTF-16 code units as UTF-8; a lone surrogate becomes U+FFFD, and `wellFormed`, when given, false.
std::string utf8FromUTF16(std::u16string_view units, bool* wellFormed = nullptr);

/// UTF-8 as UTF-16 code units; every malformed sequence becomes U+FFFD.
std::u16string utf16FromUTF8(std::string_view utf8);

/// True when the bytes are well-formed UTF-8 (shortest forms, no surrogates, at most U+10FFFF).
bool isValidUTF8(std::string_view bytes);

/// Whether all bytes are below 0x80.
bool isASCII(std::string_view bytes);

/// The first `count` UTF-16 code units of a text, one less where the cut would split a surrogate pair.
std::string prefixOfUTF16Length(std::string_view utf8, std::size_t count);

/// How many UTF-16 code units a text has.
std::size_t utf16Length(std::string_view utf8);

/// UTF-16 bytes with a byte-order mark, or else big-endian, as UTF-8. Null for an odd count or a lone
/// surrogate.
ZALNullableString utf8FromUTF16Bytes(ZALDataView bytes);

/// The text in lower case, ASCII letters only: extensions and file types.
std::string asciiLowercase(std::string_view text);

/// Decimal digits of any script (Nd).
bool isDecimalDigit(char32_t c);
/// White space and line breaks (Z, and the controls among them) and punctuation (P).
bool isBlankOrPunctuation(char32_t c);

/// The text without the tabs and Unicode space separators at its ends; line breaks stay.
std::string_view trimmedOfBlanks(std::string_view text);

}  // namespace zal
