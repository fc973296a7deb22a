#pragma once

#include "base/Numbers.h"
#include "collection/XML.h"

#include <cstdint>
#include <optional>

namespace zal {

enum class NodeType : std::int64_t { folder = 0, playlist = 1 };

constexpr const char* playlistNodeName = "NODE";

/// The number in a node's attribute; null when the node lacks it.
inline std::optional<std::int64_t> numberOf(const XMLElement& element, const char* attribute) {
    const char* text = element.attribute(attribute);
    if (text == nullptr) return std::nullopt;
    return integerValue(text);
}

/// True for a node of that type with a name.
inline bool isNode(const XMLElement& element, NodeType type) {
    return element && element.attribute("Name") != nullptr &&
           numberOf(element, "Type") == static_cast<std::int64_t>(type);
}

}  // namespace zal
