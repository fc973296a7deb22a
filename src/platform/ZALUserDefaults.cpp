#include <zaltag/platform/ZALUserDefaults.h>

#include "base/Paths.h"
#include "base/Unicode.h"
#include "platform/FileContents.h"
#include "platform/FileReplacement.h"
#include "platform/Log.h"
#include "platform/UserFolders.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>

#include <charconv>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

ZALUserDefaults::~ZALUserDefaults() = default;

namespace {

// What JSON text cannot hold stands in an object of one key, as hexadecimal digits.
constexpr const char* dataKey = "data";
constexpr const char* pathKey = "path";  // a text that is not UTF-8, which only paths are
constexpr std::uint32_t folderMode = 0700;

ZALJSONValue hexadecimal(const char* key, ZALDataView bytes) {
    return ZALJSONValue::Object{{key, fmt::format("{:02x}", fmt::join(bytes, ""))}};
}

ZALNullableData bytesOf(const ZALJSONValue& value, const char* key) {
    const ZALNullableString text = value[key].stringValue();
    if (!text || text->size() % 2 != 0) return std::nullopt;
    ZALData bytes(text->size() / 2);
    const char* digits = text->data();
    for (std::uint8_t& byte : bytes) {
        const char* const end = digits + 2;
        if (std::from_chars(digits, end, byte, 16).ptr != end) return std::nullopt;
        digits = end;
    }
    return bytes;
}

// The settings in a JSON file. What was set and not written yet is kept apart, so that it can go on top of
// what another process wrote meanwhile.
class FileDefaults final : public ZALUserDefaults {
  public:
    ZALNullableString stringForKey(const std::string& key) override {
        const auto value = valueForKey(key);
        if (!value) return std::nullopt;
        if (value->isString()) return value->stringValue();
        const auto bytes = bytesOf(*value, pathKey);
        return bytes ? ZALNullableString(std::string(bytes->begin(), bytes->end())) : std::nullopt;
    }

    ZALNullableData dataForKey(const std::string& key) override {
        const auto value = valueForKey(key);
        return value ? bytesOf(*value, dataKey) : std::nullopt;
    }

    bool hasValueForKey(const std::string& key) override { return valueForKey(key).has_value(); }

    void setString(const std::string& key, const std::string& value) override {
        const bool isText = zal::isValidUTF8(value);
        const ZALData bytes(value.begin(), value.end());
        change(key, isText ? ZALJSONValue(value) : hexadecimal(pathKey, bytes));
    }

    void setData(const std::string& key, const ZALNullableData& value) override {
        change(key, value ? hexadecimal(dataKey, *value) : ZALJSONValue());
    }

    void removeKey(const std::string& key) override { change(key, std::nullopt); }

    void synchronize() override {
        const std::lock_guard lock(mutex_);
        write();
    }

  private:
    std::optional<ZALJSONValue> valueForKey(const std::string& key) {
        const std::lock_guard lock(mutex_);
        if (const auto edit = edits_.find(key); edit != edits_.end()) return edit->second;
        read();
        const auto value = values_.find(key);
        return value == values_.end() ? std::nullopt : std::optional(value->second);
    }

    void change(const std::string& key, std::optional<ZALJSONValue> value) {
        const std::lock_guard lock(mutex_);
        edits_[key] = std::move(value);
        write();
    }

    // Reads the file when it is another one than the last time, by its path and attributes.
    void read() {
        const auto configuration = zal::configurationFolder();
        const std::string path = configuration ? *configuration + "/zaltag/defaults.json" : "";
        ZALFileAttributes found;
        if (ZALHost::shared().fileSystem()->attributes(path, found)) found = {};
        const bool same = path == path_ && found.device == file_.device && found.inode == file_.inode &&
                          found.size == file_.size && found.modified == file_.modified;
        if (same) return;
        path_ = path;
        file_ = {};  // until it is read whole
        values_.clear();
        broken_.reset();
        readable_ = found.kind == ZALFileKind::missing;
        if (!readable_) parse();
        file_ = found;
    }

    void parse() {
        std::error_code error;
        ZALData bytes = zal::fileContents(path_, ZALJSON::lengthMax, error);
        if (error) {
            zal::logf("ZALTag: could not read the settings in {}: {}", path_, error.message());
            return;
        }
        std::string reason = "it is no object";
        const auto value =
            ZALJSON::parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, &reason);
        if (value && value->isObject()) values_ = value->objectValue();
        readable_ = true;
        if (value && value->isObject()) return;
        zal::logf("ZALTag: the settings in {} are broken and read as empty: {}", path_, reason);
        broken_ = std::move(bytes);
    }

    // Writes the file with the edits; they stay when that fails.
    void write() {
        read();
        ZALJSONValue::Object values = values_;
        for (const auto& [key, value] : edits_) {
            value ? void(values[key] = *value) : void(values.erase(key));
        }
        if (values == values_) {
            edits_.clear();
            return;
        }
        const auto text = ZALJSON::serialize(values, true);
        if (!text || !store(*text + "\n")) {
            zal::logf("ZALTag: could not write the settings to {}",
                      path_.empty() ? "a folder that neither XDG_CONFIG_HOME nor HOME names" : path_);
            return;
        }
        edits_.clear();
        file_ = {};  // to be read again, with what others may have written since
    }

    bool store(const std::string& text) {
        if (path_.empty() || !readable_) return false;
        const std::string folder = zal::folderOf(path_);
        if (ZALHost::shared().fileSystem()->createFolders(folder, folderMode)) return false;
        if (broken_ && !zal::replaceFileContents(path_ + ".broken", *broken_)) return false;
        return zal::replaceFileContents(path_, ZALData(text.begin(), text.end()));
    }

    std::mutex mutex_;
    std::string path_;                                          // empty: not read yet, or no folder for it
    ZALFileAttributes file_;                                    // as it was read
    ZALJSONValue::Object values_;                               // what it holds
    std::optional<ZALData> broken_;                             // its bytes, when they are no settings
    bool readable_ = true;                                      // false: it must not be written over
    std::map<std::string, std::optional<ZALJSONValue>> edits_;  // null removes
};

}  // namespace

std::shared_ptr<ZALUserDefaults> ZALUserDefaults::machine() {
    static const auto* const defaults =
        new std::shared_ptr<ZALUserDefaults>(std::make_shared<FileDefaults>());
    return *defaults;
}
