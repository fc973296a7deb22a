#include "taglib/TagLibText.h"

#include "base/Unicode.h"

#include <algorithm>

namespace zal {

std::string stringWithTagLibString(const TagLib::String& string) {
    // Records are long texts of ASCII.
    if (std::all_of(string.begin(), string.end(), [](wchar_t unit) { return unit >= 0 && unit < 0x80; })) {
        std::string text(string.size(), '\0');
        std::transform(string.begin(), string.end(), text.begin(),
                       [](wchar_t unit) { return static_cast<char>(unit); });
        return text;
    }
    std::u16string units;
    units.reserve(string.size());
    for (const wchar_t unit : string) {
        units.push_back(static_cast<char16_t>(unit));
    }
    return utf8FromUTF16(units);
}

TagLib::String TagLibString(const ZALNullableString& text) {
    return text ? TagLib::String(ZALValidUTF8(*text), TagLib::String::UTF8) : TagLib::String();
}

TagLib::String latin1TagLibString(const std::string& bytes) {
    return {bytes, TagLib::String::Latin1};
}

std::vector<std::string> stringsWithTagLibStrings(const TagLib::StringList& strings) {
    std::vector<std::string> texts;
    for (const TagLib::String& string : strings) {
        texts.push_back(stringWithTagLibString(string));
    }
    return texts;
}

TagLib::StringList TagLibStrings(const std::vector<std::string>& texts) {
    TagLib::StringList strings;
    for (const std::string& text : texts) {
        strings.append(TagLibString(text));
    }
    return strings;
}

}  // namespace zal
