#include "base/Unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
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
    std::array<utf8proc_uint8_t, 4> bytes{};
    const utf8proc_ssize_t count = utf8proc_encode_char(static_cast<utf8proc_int32_t>(c), bytes.data());
    out.append(bytes.begin(), bytes.begin() + count);
}

// Reads the code point at `at` and moves past it; past one byte, with `malformed`, when the sequence is not
// whole.
char32_t nextUTF8(std::string_view text, std::size_t& at) {
    const auto* const bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + at;
    utf8proc_int32_t c = 0;
    const utf8proc_ssize_t length =
        utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size() - at), &c);
    at += length > 0 ? static_cast<std::size_t>(length) : 1;
    return length > 0 ? static_cast<char32_t>(c) : malformed;
}

utf8proc_category_t categoryOf(char32_t c) {
    return utf8proc_category(static_cast<utf8proc_int32_t>(c));
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
    const auto isBlank = [](char32_t c) { return c == '\t' || categoryOf(c) == UTF8PROC_CATEGORY_ZS; };
    for (std::size_t end = 0; end < text.size() && isBlank(nextUTF8(text, end)); end = 0) {
        text.remove_prefix(end);
    }
    while (!text.empty()) {
        std::size_t last = text.size() - 1;
        while (last > 0 && (text[last] & 0xC0) == 0x80) {
            --last;
        }
        std::size_t end = last;
        if (!isBlank(nextUTF8(text, end)) || end != text.size()) break;
        text = text.substr(0, last);
    }
    return text;
}

bool isDecimalDigit(char32_t c) {
    return categoryOf(c) == UTF8PROC_CATEGORY_ND;
}

bool isBlankOrPunctuation(char32_t c) {
    const utf8proc_category_t category = categoryOf(c);
    const bool isPunctuation = category >= UTF8PROC_CATEGORY_PC && category <= UTF8PROC_CATEGORY_PO;
    const bool isSeparator = category >= UTF8PROC_CATEGORY_ZS && category <= UTF8PROC_CATEGORY_ZP;
    return isPunctuation || isSeparator || (c >= 0x09 && c <= 0x0D) || c == 0x85;
}

bool isASCII(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return (c & 0x80) == 0; });
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
