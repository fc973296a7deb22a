#pragma once

#include <zaltag/base/ZALExport.h>

#include <string>
#include <string_view>
#include <vector>

// Comparing dotted version texts such as "1.10b3". No state; any thread.

/// What a part of a version text is.
enum class ZALVersionPart {
    number = 0,     ///< decimal digits
    string = 1,     ///< anything that is neither of the others
    separator = 2,  ///< one white space, line break or punctuation character
};

/// How the argument stands to the receiver: 1 when it is the newer version, -1 when it is older, 0 when they
/// are equal. (The other way round than comparisons usually go.)
///
/// The parts are compared in order: numbers as integers of 64 bits, which saturate, strings by their UTF-16
/// units; separators are all alike. Where the kinds differ, a string is older than a separator and that older
/// than a number. A version that goes on after the other one's end is newer, unless it goes on with a string.
ZALTAG_EXPORT int zal_versionStringCompare(std::string_view receiver, std::string_view argument);

/// The parts of a version text: runs of digits, runs of other characters, and every separator on its own.
ZALTAG_EXPORT std::vector<std::string> zal_splitVersionString(std::string_view version);

/// The kind of the text's first character. A character beyond U+FFFF is always `string`, as is the empty
/// text.
ZALTAG_EXPORT ZALVersionPart zal_typeOfCharacter(std::string_view character);
