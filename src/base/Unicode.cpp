#include "base/Unicode.h"

#include <algorithm>
#include <cstdint>

namespace zal {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t malformed = 0xFFFFFFFF;

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void appendUTF8(std::string& out, char32_t c) {
    const auto put = [&out](char32_t byte) {
        out.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

// Reads the code point at `at` and moves past it; past one byte, with `malformed`, when the sequence is not
// whole.
char32_t nextUTF8(std::string_view text, std::size_t& at) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size() - at) {
        ++at;
        return malformed;
    }
    char32_t c = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            ++at;
            return malformed;
        }
        c = (c << 6) | (byte(at + i) & 0x3Fu);
    }
    const bool tooLong = (length == 3 && c < 0x800) || (length == 4 && c < 0x10000);
    if (tooLong || c > 0x10FFFF || isHighSurrogate(c) || isLowSurrogate(c)) {
        ++at;
        return malformed;
    }
    at += length;
    return c;
}

std::size_t unitsOf(char32_t c) {
    return c != malformed && c > 0xFFFF ? 2 : 1;
}

}  // namespace

std::string utf8FromLatin1(std::string_view latin1) {
    std::string out;
    out.reserve(latin1.size());
    for (const char c : latin1) {
        appendUTF8(out, static_cast<unsigned char>(c));
    }
    return out;
}

std::string utf8FromUTF16(std::u16string_view units, bool* wellFormed) {
    std::string out;
    out.reserve(units.size());
    bool whole = true;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t c = units[i];
        if (isHighSurrogate(c) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00u);
        } else if (isHighSurrogate(c) || isLowSurrogate(c)) {
            c = replacement;
            whole = false;
        }
        appendUTF8(out, c);
    }
    if (wellFormed != nullptr) *wellFormed = whole;
    return out;
}

std::u16string utf16FromUTF8(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        char32_t c = nextUTF8(utf8, at);
        if (c == malformed) c = replacement;
        if (c > 0xFFFF) {
            out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
    }
    return out;
}

bool isValidUTF8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const bool isASCII = (bytes[at] & 0x80) == 0;
        if (isASCII) {
            ++at;
        } else if (nextUTF8(bytes, at) == malformed) {
            return false;
        }
    }
    return true;
}

std::string prefixOfUTF16Length(std::string_view utf8, std::size_t count) {
    std::size_t at = 0;
    for (std::size_t units = 0; at < utf8.size();) {
        const std::size_t start = at;
        units += unitsOf(nextUTF8(utf8, at));
        if (units > count) return std::string(utf8.substr(0, start));
    }
    return std::string(utf8);
}

std::size_t utf16Length(std::string_view utf8) {
    std::size_t units = 0;
    for (std::size_t at = 0; at < utf8.size();) {
        units += unitsOf(nextUTF8(utf8, at));
    }
    return units;
}

ZALNullableString utf8FromUTF16Bytes(ZALDataView bytes) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    const bool hasMark = bytes.size() >= 2 &&
                         ((bytes[0] == 0xFF && bytes[1] == 0xFE) || (bytes[0] == 0xFE && bytes[1] == 0xFF));
    const bool littleEndian = hasMark && bytes[0] == 0xFF;
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = hasMark ? 2 : 0; i < bytes.size(); i += 2) {
        const unsigned high = bytes[littleEndian ? i + 1 : i];
        const unsigned low = bytes[littleEndian ? i : i + 1];
        units.push_back(static_cast<char16_t>(high << 8 | low));
    }
    bool wellFormed = false;
    std::string text = utf8FromUTF16(units, &wellFormed);
    if (!wellFormed) return std::nullopt;
    return text;
}

std::string_view trimmedOfBlanks(std::string_view text) {
    // The tab and the characters of Unicode's category Zs.
    static constexpr std::string_view blanks[] = {"\t",     " ",      "\u00A0", "\u1680", "\u2000", "\u2001",
                                                  "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007",
                                                  "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000"};
    const auto oneLess = [&text] {
        for (const std::string_view blank : blanks) {
            if (text.starts_with(blank)) {
                text.remove_prefix(blank.size());
                return true;
            }
            if (text.ends_with(blank)) {
                text.remove_suffix(blank.size());
                return true;
            }
        }
        return false;
    };
    while (oneLess()) {
    }
    return text;
}

std::string asciiLowercase(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return out;
}

}  // namespace zal

std::string ZALValidUTF8(std::string_view bytes) {
    if (zal::isValidUTF8(bytes)) return std::string(bytes);
    std::string out;
    for (std::size_t at = 0; at < bytes.size();) {
        const char32_t c = zal::nextUTF8(bytes, at);
        zal::appendUTF8(out, c == zal::malformed ? zal::replacement : c);
    }
    return out;
}
