#include "platform/ExtendedAttributes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/xattr.h>

namespace zal {

namespace {

// These hold for the bytes they were made for, not for the file's name.
constexpr std::array<std::string_view, 3> contentAttributes = {"security.capability", "security.evm",
                                                               "security.ima"};

bool isAccessControlList(std::string_view name) {
    return name == "system.posix_acl_access" || name == "system.nfs4_acl";
}

bool mustBeKept(std::string_view name) {
    return name.starts_with("user.") || isAccessControlList(name);
}

// What a call of the getxattr family gives; asked for its length first, and again when that grew meanwhile.
// Null after an error, which is left in errno.
template <typename Call>
std::optional<std::string> valueOf(Call call) {
    for (int attempt = 0; attempt < 8; ++attempt) {
        const ssize_t length = call(nullptr, 0);
        if (length < 0) return std::nullopt;
        std::string value(static_cast<std::size_t>(length), '\0');
        if (length == 0) return value;
        const ssize_t got = call(value.data(), value.size());
        if (got < 0 && errno != ERANGE) return std::nullopt;
        if (got < 0) continue;
        value.resize(static_cast<std::size_t>(got));
        return value;
    }
    errno = ERANGE;
    return std::nullopt;
}

std::optional<std::string> attribute(int file, const std::string& name) {
    return valueOf(
        [&](char* buffer, std::size_t size) { return ::fgetxattr(file, name.c_str(), buffer, size); });
}

std::optional<std::vector<std::string>> namesOf(int file) {
    const auto list =
        valueOf([&](char* buffer, std::size_t size) { return ::flistxattr(file, buffer, size); });
    std::vector<std::string> names;
    if (!list) return errno == ENOTSUP ? std::optional(names) : std::nullopt;
    for (std::size_t start = 0; start < list->size();) {
        const std::size_t end = std::min(list->find('\0', start), list->size());
        names.push_back(list->substr(start, end - start));
        start = end + 1;
    }
    return names;
}

int copyOne(int source, int target, const std::string& name) {
    const auto wanted = attribute(source, name);
    if (!wanted) return errno == ENODATA ? 0 : errno;
    if (attribute(target, name) == wanted) return 0;
    return ::fsetxattr(target, name.c_str(), wanted->data(), wanted->size(), 0) == 0 ? 0 : errno;
}

}  // namespace

int copyExtendedAttributes(int source, int target) {
    const auto wanted = namesOf(source);
    if (!wanted) return errno;
    const auto present = namesOf(target);
    if (!present) return errno;
    for (const std::string& name : *present) {
        if (!isAccessControlList(name)) continue;
        if (std::find(wanted->begin(), wanted->end(), name) != wanted->end()) continue;
        if (::fremovexattr(target, name.c_str()) != 0) return errno;
    }
    for (const std::string& name : *wanted) {
        if (std::find(contentAttributes.begin(), contentAttributes.end(), name) != contentAttributes.end()) {
            continue;
        }
        const int number = copyOne(source, target, name);
        if (number != 0 && mustBeKept(name)) return number;
    }
    return 0;
}

}  // namespace zal
