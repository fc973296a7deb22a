#include "platform/UserFolders.h"

#include "platform/FileContents.h"

#include <zaltag/platform/ZALHost.h>

#include <string_view>

namespace zal {

namespace {

constexpr std::size_t userDirsMax = std::size_t{1} << 20;

ZALNullableString absoluteVariable(const std::string& name) {
    ZALNullableString value = ZALHost::shared().environmentVariable(name);
    if (value && !value->starts_with('/')) value.reset();
    return value;
}

// The text of `"..."` as a shell reads it, where $HOME may stand at the start. Null for anything else.
ZALNullableString quotedPath(std::string_view text, const std::string& home) {
    if (!text.starts_with('"')) return std::nullopt;
    text.remove_prefix(1);
    std::string path;
    if (text.starts_with("$HOME/") || text.starts_with("$HOME\"")) {
        path = home;
        text.remove_prefix(5);
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') return path.starts_with('/') ? ZALNullableString(path) : std::nullopt;
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        path += text[i];
    }
    return std::nullopt;
}

// The last setting of the name counts, as in a shell.
ZALNullableString userFolder(std::string_view settings, std::string_view name, const std::string& home) {
    ZALNullableString folder;
    while (!settings.empty()) {
        const std::size_t end = std::min(settings.find('\n'), settings.size());
        std::string_view line = settings.substr(0, end);
        settings.remove_prefix(std::min(end + 1, settings.size()));
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(name)) continue;
        line.remove_prefix(name.size());
        if (!line.starts_with('=')) continue;
        line.remove_prefix(1);
        if (auto path = quotedPath(line, home)) folder = std::move(path);
    }
    return folder;
}

}  // namespace

ZALNullableString homeFolder() {
    return absoluteVariable("HOME");
}

ZALNullableString configurationFolder() {
    if (auto folder = absoluteVariable("XDG_CONFIG_HOME")) return folder;
    const auto home = homeFolder();
    return home ? ZALNullableString(*home + "/.config") : std::nullopt;
}

std::vector<std::string> documentsFolders() {
    const auto home = homeFolder();
    const auto configuration = configurationFolder();
    if (configuration) {
        std::error_code error;
        const ZALData bytes = fileContents(*configuration + "/user-dirs.dirs", userDirsMax, error);
        const std::string settings(bytes.begin(), bytes.end());
        if (auto folder = userFolder(settings, "XDG_DOCUMENTS_DIR", home.value_or(""))) return {*folder};
    }
    if (home) return {*home + "/Documents"};
    return {};
}

}  // namespace zal
