#include "base/Paths.h"

namespace zal {

namespace {

std::size_t extensionDot(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    const bool none = dot == std::string_view::npos || dot == 0 || dot + 1 == name.size();
    return none ? std::string_view::npos : dot;
}

}  // namespace

std::string_view lastPathComponent(std::string_view path) {
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos) return {};
    path = path.substr(0, last + 1);
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const std::size_t dot = extensionDot(name);
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

std::string_view baseName(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    return name.substr(0, extensionDot(name));
}

}  // namespace zal
