#include <zaltag/base/zal_versionStringCompare.h>

#include "base/Numbers.h"
#include "base/Unicode.h"

#include <algorithm>
#include <compare>

namespace {

struct Part {
    ZALVersionPart type;
    std::u16string text;
};

ZALVersionPart typeOf(char16_t unit) {
    if (zal::isDecimalDigit(unit)) return ZALVersionPart::number;
    return zal::isBlankOrPunctuation(unit) ? ZALVersionPart::separator : ZALVersionPart::string;
}

std::vector<Part> partsOf(std::string_view version) {
    std::vector<Part> parts;
    for (const char16_t unit : zal::utf16FromUTF8(version)) {
        const ZALVersionPart type = typeOf(unit);
        const bool goesOn = !parts.empty() && parts.back().type == type && type != ZALVersionPart::separator;
        if (!goesOn) parts.push_back({type, {}});
        parts.back().text += unit;
    }
    return parts;
}

int sign(std::strong_ordering order) {
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

// The older kind of part first.
int rank(ZALVersionPart type) {
    if (type == ZALVersionPart::string) return 0;
    return type == ZALVersionPart::separator ? 1 : 2;
}

std::int64_t numberOf(const Part& part) {
    return zal::integerValue(zal::utf8FromUTF16(part.text));
}

// 1 when the argument's part is the newer one.
int compareParts(const Part& argument, const Part& receiver) {
    if (argument.type != receiver.type) return sign(rank(argument.type) <=> rank(receiver.type));
    switch (argument.type) {
        case ZALVersionPart::number:
            return sign(numberOf(argument) <=> numberOf(receiver));
        case ZALVersionPart::string:
            return sign(argument.text <=> receiver.text);
        case ZALVersionPart::separator:
            return 0;
    }
    return 0;
}

}  // namespace

int zal_versionStringCompare(std::string_view receiver, std::string_view argument) {
    const std::vector<Part> b = partsOf(receiver);
    const std::vector<Part> a = partsOf(argument);
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (const int order = compareParts(a[i], b[i])) return order;
    }
    if (a.size() == b.size()) return 0;
    const bool argumentIsLonger = a.size() > b.size();
    const bool goesOnWithString = (argumentIsLonger ? a : b)[common].type == ZALVersionPart::string;
    return argumentIsLonger != goesOnWithString ? 1 : -1;
}

std::vector<std::string> zal_splitVersionString(std::string_view version) {
    std::vector<std::string> texts;
    for (const Part& part : partsOf(version)) {
        texts.push_back(zal::utf8FromUTF16(part.text));
    }
    return texts;
}

ZALVersionPart zal_typeOfCharacter(std::string_view character) {
    const std::u16string units = zal::utf16FromUTF8(character.substr(0, 4));
    return units.empty() ? ZALVersionPart::string : typeOf(units.front());
}
