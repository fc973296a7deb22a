#pragma once

#include <zaltag/tag/ZALTag.h>

#include <memory>
#include <span>
#include <string>

namespace zal {

/// What the factory knows of a back-end class.
struct BackEnd {
    const ZALArray<std::string>& (*supportedFileTypes)();
    bool (*canInitWithPath)(const ZALNullableString& path);
    std::shared_ptr<ZALTag> (*initWithPath)(const ZALNullableString& path, bool readOnly, ZALError* error);
};

/// The back-ends in the order in which the factory asks them.
std::span<const BackEnd> backEnds();

/// True when the path's extension, in lower case, is among the types: how every class tells what it can open.
bool hasExtensionAmong(const ZALNullableString& path, const ZALArray<std::string>& types);

}  // namespace zal
