#include "collection/XMLEncoding.h"

#include "base/Unicode.h"

#include <fmt/format.h>

#include <algorithm>

namespace zal {

namespace {

bool isBig(XMLEncoding encoding) {
    return encoding == XMLEncoding::utf16BigEndian;
}

bool isWide(XMLEncoding encoding) {
    return encoding == XMLEncoding::utf16LittleEndian || isBig(encoding);
}

char16_t unitAt(std::string_view bytes, std::size_t at, bool big) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char16_t>(big ? first << 8 | second : second << 8 | first);
}

bool isLeading(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

// Markup with references for all characters beyond the last one that single bytes hold.
std::string inSingleBytes(std::string_view markup, char32_t last) {
    std::string out;
    const std::u16string units = utf16FromUTF8(markup);
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (isLeading(units[i]) && i + 1 < units.size()) {
            character = 0x10000 + ((character & 0x3FF) << 10) + (units[++i] & 0x3FFU);
        }
        if (character <= last) {
            out += static_cast<char>(character);
        } else {
            out += fmt::format("&#{};", static_cast<std::uint32_t>(character));
        }
    }
    return out;
}

}  // namespace

std::string decodedXML(std::string_view bytes, XMLEncoding encoding) {
    if (encoding == XMLEncoding::latin1) return utf8FromLatin1(bytes);
    if (!isWide(encoding)) return std::string(bytes);
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        units += unitAt(bytes, at, isBig(encoding));
    }
    return utf8FromUTF16(units);
}

std::string encodedXML(std::string_view markup, XMLEncoding encoding) {
    if (encoding == XMLEncoding::utf8) return std::string(markup);
    if (!isWide(encoding)) {
        if (isASCII(markup)) return std::string(markup);
        return inSingleBytes(markup, encoding == XMLEncoding::latin1 ? 0xFF : 0x7F);
    }
    std::string out;
    out.reserve(2 * markup.size());
    for (const char16_t unit : utf16FromUTF8(markup)) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        out += isBig(encoding) ? high : low;
        out += isBig(encoding) ? low : high;
    }
    return out;
}

std::size_t wholeCharacters(std::string_view bytes, XMLEncoding encoding) {
    if (isWide(encoding)) {
        const std::size_t even = bytes.size() & ~std::size_t{1};
        return even >= 2 && isLeading(unitAt(bytes, even - 2, isBig(encoding))) ? even - 2 : even;
    }
    if (encoding != XMLEncoding::utf8) return bytes.size();
    std::size_t end = bytes.size();
    while (end > 0 && bytes.size() - end < 3 && (bytes[end - 1] & 0xC0) == 0x80) {
        --end;
    }
    return end > 0 && (bytes[end - 1] & 0xC0) == 0xC0 ? end - 1 : bytes.size();
}

}  // namespace zal
