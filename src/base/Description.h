#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <vector>

namespace zal {

/// How an object of a class without a text of its own is called: "<ClassName: 0x...>".
inline std::string defaultDescription(std::string_view className, const void* object) {
    return fmt::format("<{}: {}>", className, object);
}

/// The descriptions of the elements: "(a, b)".
template <typename Element>
std::string descriptionOfAll(const std::vector<Element>& elements) {
    std::string out = "(";
    for (const Element& element : elements) {
        if (out.size() > 1) out += ", ";
        out += element.description();
    }
    return out + ")";
}

}  // namespace zal
