#include "base/Paths.h"

#include <filesystem>

#include <algorithm>

namespace zal {

namespace {

std::size_t extensionDot(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    const bool none = dot == std::string_view::npos || dot == 0 || dot + 1 == name.size();
    return none ? std::string_view::npos : dot;
}

}  // namespace

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error || path.empty() ? path : absolute.string();
}

std::string_view lastPathComponent(std::string_view path) {
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos) return {};
    return fileNameOf(path.substr(0, last + 1));
}

std::string_view fileNameOf(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string folderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return ".";
    return std::string(path.substr(0, std::max<std::size_t>(slash, 1)));
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
