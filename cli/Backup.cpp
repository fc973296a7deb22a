#include "Backup.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALFileSystem.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr const char* mark = ".before-zaltag-";
constexpr std::size_t keptAtTheEnd = 5;

std::string stamp() {
    const auto now = std::chrono::system_clock::to_time_t(ZALHost::shared().clock()->now());
    return fmt::format("{:%Y%m%d-%H%M%S}", fmt::localtime(now));
}

std::string reasonOf(const std::string& path, const std::error_code& error) {
    return fmt::format("{}: {}", path, error.message());
}

std::string stateFolder() {
    const ZALHost& host = ZALHost::shared();
    const auto state = host.environmentVariable("XDG_STATE_HOME");
    if (state && state->starts_with('/')) return *state + "/zaltag";
    return host.environmentVariable("HOME").value_or("") + "/.local/state/zaltag";
}

std::string writeCopy(ZALFileSystem& files, const std::string& from, const std::string& to) {
    std::error_code error;
    const auto source = files.open(from, false, error);
    if (error) return reasonOf(from, error);
    const auto target = files.create(to, 0600, error);
    if (error) return reasonOf(to, error);
    ZALFileAttributes attributes;
    error = source->attributes(attributes);
    if (!error && attributes.size > 0) error = target->copyFrom(*source, 0, attributes.size, 0);
    if (!error) error = target->copyAttributesFrom(*source);
    if (!error) error = target->sync();
    return error ? reasonOf(to, error) : std::string();
}

std::vector<std::string> copiesOf(const fs::path& collection) {
    std::vector<std::string> copies;
    std::error_code ignored;
    const std::string begin = collection.filename().string() + mark;
    for (const auto& entry : fs::directory_iterator(collection.parent_path(), ignored)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(begin) && !name.ends_with(".tmp")) copies.push_back(entry.path().string());
    }
    std::sort(copies.begin(), copies.end());
    return copies;
}

}  // namespace

std::string copyFile(const std::string& from, const std::string& to) {
    const auto files = ZALHost::shared().fileSystem();
    const std::string beside = to + ".tmp";
    files->unlink(beside);
    std::string reason = writeCopy(*files, from, beside);
    if (reason.empty()) {
        if (const auto error = files->rename(beside, to)) reason = reasonOf(to, error);
    }
    if (!reason.empty()) files->unlink(beside);
    if (reason.empty()) files->syncFolder(fs::path(to).parent_path().string());
    return reason;
}

std::string backUp(const std::string& collection, std::string& copy) {
    const std::string name = collection + mark + stamp();
    copy = name;
    std::error_code ignored;
    for (int again = 2; fs::exists(copy, ignored); ++again) {
        copy = fmt::format("{}-{}", name, again);
    }
    const std::string reason = copyFile(collection, copy);
    if (!reason.empty()) return reason;
    const std::vector<std::string> copies = copiesOf(collection);
    for (std::size_t i = 1; i + keptAtTheEnd < copies.size(); ++i) {
        ZALHost::shared().fileSystem()->unlink(copies[i]);
    }
    return {};
}

std::string digestOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return {};
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a, of words
    std::uint64_t size = 0;
    std::vector<std::uint64_t> block(std::size_t{1} << 17);
    const std::size_t blockSize = block.size() * sizeof block[0];
    for (;;) {
        std::fill(block.begin(), block.end(), 0);
        file.read(reinterpret_cast<char*>(block.data()), static_cast<std::streamsize>(blockSize));
        const auto count = static_cast<std::size_t>(file.gcount());
        for (const std::uint64_t word : block) {
            hash = (hash ^ word) * 0x100000001B3;
            hash ^= hash >> 32;
        }
        size += count;
        if (count < blockSize) break;
    }
    return fmt::format("{:016x}-{}", hash, size);
}

std::string Journal::write() {
    if (files.empty()) {
        if (!path_.empty()) ZALHost::shared().fileSystem()->unlink(path_);
        return {};
    }
    ZALJSONValue::Array written;
    for (const Written& file : files) {
        written.push_back(
            ZALJSONValue::Object{{"path", file.path}, {"copy", file.copy}, {"digest", file.digest}});
    }
    const auto text = ZALJSON::serialize(ZALJSONValue::Object{{"files", written}});
    const std::string folder = stateFolder();
    if (const auto error = ZALHost::shared().fileSystem()->createFolders(folder, 0700))
        return reasonOf(folder, error);
    if (path_.empty()) path_ = fmt::format("{}/{}-{}.json", folder, stamp(), ::getpid());
    const std::string beside = path_ + ".tmp";
    {
        std::ofstream file(beside, std::ios::binary | std::ios::trunc);
        file << text.value_or("") << '\n';
        if (!file.flush()) return beside + ": it could not be written";
    }
    const auto error = ZALHost::shared().fileSystem()->rename(beside, path_);
    return error ? reasonOf(path_, error) : std::string();
}

std::vector<std::string> journals() {
    std::vector<std::string> all;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(stateFolder(), ignored)) {
        if (entry.path().extension() == ".json") all.push_back(entry.path().string());
    }
    std::sort(all.begin(), all.end());
    return all;
}

bool readJournal(const std::string& path, Journal& journal) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    const auto value = ZALJSON::parse(text.str());
    if (!value || !value->isObject()) return false;
    for (const ZALJSONValue& one : (*value)["files"].arrayValue()) {
        journal.files.push_back({one["path"].stringValue().value_or(""),
                                 one["copy"].stringValue().value_or(""),
                                 one["digest"].stringValue().value_or("")});
    }
    return true;
}
