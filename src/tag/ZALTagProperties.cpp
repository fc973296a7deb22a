// Any field of a tag object by its name.

#include <zaltag/tag/ZALTag.h>

#include "base/Failure.h"
#include "base/Unicode.h"
#include "tag/TagContents.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

std::string capitals(std::string name) {
    for (char& c : name) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return name;
}

// The characters of a name in a Xiph comment, where they are the fewest.
bool isPropertyName(const std::string& name) {
    return !name.empty() && std::ranges::all_of(name, [](char c) { return c >= ' ' && c < '~' && c != '='; });
}

bool isText(const std::string& value) {
    return zal::isValidUTF8(value) && value.find('\0') == value.npos;
}

zal::Failure setProperty(zal::TagContents& contents, const std::string& name,
                         const ZALArray<std::string>& values) {
    if (!isPropertyName(name)) return "no field can have this name";
    for (const std::string& value : values) {
        if (!isText(value)) return "it is no text in UTF-8";
        if (value.empty()) return "an empty text is no value";
    }
    return contents.setProperty(capitals(name), values.elements());
}

}  // namespace

std::map<std::string, ZALArray<std::string>> ZALTag::properties() const {
    std::map<std::string, ZALArray<std::string>> found;
    for (auto& [name, values] : contentsFor("properties").properties().values) {
        found.emplace(name, values);
    }
    return found;
}

ZALArray<std::string> ZALTag::property(const std::string& name) const {
    return contentsFor("property:").properties().of(capitals(name));
}

bool ZALTag::setProperty(const std::string& name, const ZALArray<std::string>& values, ZALError* error) {
    const zal::Failure failure = ::setProperty(contentsFor("setProperty:values:"), name, values);
    if (!failure) return true;
    return zal::fillError(error, ZALErrorCode::propertyRefused,
                          fmt::format("{}: {}", name, failure.reason()));
}

ZALArray<std::string> ZALTag::unsupportedProperties() const {
    return contentsFor("unsupportedProperties").properties().unsupported;
}
