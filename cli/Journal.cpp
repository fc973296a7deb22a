#include "Journal.h"

#include "Backup.h"
#include "Output.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/serato/ZALBase64.h>

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace {

constexpr std::size_t keptJournals = 20;
constexpr std::string_view extension = ".journal";

std::string stateFolder() {
    const ZALHost& host = ZALHost::shared();
    const auto state = host.environmentVariable("XDG_STATE_HOME");
    if (state && state->starts_with('/')) return *state + "/zaltag";
    return host.environmentVariable("HOME").value_or("") + "/.local/state/zaltag";
}

ZALDataView viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string textOf(ZALDataView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Bytes as JSON can hold them; names of files are bytes, too.
ZALJSONValue encoded(const ZALNullableData& bytes) {
    const auto text = bytes ? ZALDataByEncodingBase64(*bytes) : std::nullopt;
    return text ? ZALJSONValue(textOf(*text)) : ZALJSONValue();
}

ZALNullableData decoded(const ZALJSONValue& value) {
    const ZALNullableString text = value.stringValue();
    return text ? ZALDataByDecodingBase64(viewOf(*text)) : std::nullopt;
}

ZALJSONValue encodedText(const std::string& text) {
    return encoded(ZALData(text.begin(), text.end()));
}

std::string decodedText(const ZALJSONValue& value) {
    return textOf(decoded(value).value_or(ZALData()));
}

ZALJSONValue encodedAll(const std::vector<ZALNullableData>& payloads) {
    ZALJSONValue::Array all;
    for (const ZALNullableData& payload : payloads) {
        all.push_back(encoded(payload));
    }
    return all;
}

std::vector<ZALNullableData> decodedAll(const ZALJSONValue& value) {
    std::vector<ZALNullableData> all;
    for (const ZALJSONValue& one : value.arrayValue()) {
        all.push_back(decoded(one));
    }
    return all;
}

std::string lineOf(const ZALJSONValue::Object& object) {
    return ZALJSON::serialize(object).value_or("") + "\n";
}

std::string lineOf(const WrittenFile& file) {
    return lineOf({{"file", encodedText(file.path)},
                   {"program", file.program},
                   {"copy", encodedText(file.copy)},
                   {"before", file.before},
                   {"after", file.after}});
}

std::string lineOf(const WrittenTag& tag) {
    return lineOf({{"audio", encodedText(tag.path)},
                   {"before", encodedAll(tag.before)},
                   {"after", encodedAll(tag.after)}});
}

template <typename Written>
void replaceOrAdd(std::vector<Written>& all, Written&& written) {
    const auto known =
        std::find_if(all.begin(), all.end(), [&](const Written& one) { return one.path == written.path; });
    known == all.end() ? all.push_back(std::move(written)) : void(*known = std::move(written));
}

void readLine(std::string_view line, Journaled& journal) {
    const auto value = ZALJSON::parse(line);
    if (!value || !value->isObject()) return;
    const ZALJSONValue& object = *value;
    if (object["audio"].isString()) {
        journal.tags.push_back(
            {decodedText(object["audio"]), decodedAll(object["before"]), decodedAll(object["after"])});
    } else if (object["file"].isString()) {
        replaceOrAdd(journal.files,
                     {decodedText(object["file"]), object["program"].stringValue().value_or(""),
                      decodedText(object["copy"]), object["before"].stringValue().value_or(""),
                      object["after"].stringValue().value_or("")});
    }
}

std::string contentOf(const std::string& path) {
    std::error_code error;
    const auto file = ZALHost::shared().fileSystem()->open(path, false, error);
    ZALFileAttributes attributes;
    if (!file || file->attributes(attributes)) return {};
    std::string content(attributes.size, '\0');
    std::size_t count = 0;
    if (file->readAt(0, {reinterpret_cast<std::uint8_t*>(content.data()), content.size()}, count)) return {};
    content.resize(count);
    return content;
}

}  // namespace

std::string Journal::note(const WrittenFile& file) {
    return append(lineOf(file), true, !file.after.empty());
}

std::string Journal::note(const WrittenTag& tag) {
    return append(lineOf(tag), false, true);
}

void Journal::end() {
    if (file_ && !isWorthKeeping_) ZALHost::shared().fileSystem()->unlink(path_);
}

std::string Journal::begin() {
    const auto files = ZALHost::shared().fileSystem();
    const std::string folder = stateFolder();
    if (const auto error = files->createFolders(folder, 0700)) return reasonOf(folder, error);
    const std::vector<std::string> old = journals();
    for (std::size_t i = 0; i + keptJournals <= old.size(); ++i) {
        files->unlink(old[i]);
    }
    path_ = fmt::format("{}/{}-{}{}", folder, timeStamp(), ::getpid(), extension);
    std::error_code error;
    file_ = files->create(path_, 0600, error);
    return file_ ? std::string() : reasonOf(path_, error);
}

// What is to last is on the disk before the run goes on.
std::string Journal::append(const std::string& line, bool isToLast, bool isWorthKeeping) {
    const std::lock_guard guard(mutex_);
    if (!file_) {
        std::string reason = begin();
        if (!reason.empty()) return reason;
    }
    std::error_code error = file_->writeAt(size_, viewOf(line));
    if (!error && isToLast) error = file_->sync();
    if (error) {
        file_->truncate(size_);
        return reasonOf(path_, error);
    }
    size_ += line.size();
    isWorthKeeping_ = isWorthKeeping_ || isWorthKeeping;
    return {};
}

std::vector<std::string> journals() {
    std::vector<std::string> all;
    const std::string folder = stateFolder();
    ZALHost::shared().fileSystem()->enumerate(folder, [&](const std::string& name) {
        if (name.ends_with(extension)) all.push_back(folder + "/" + name);
        return ZALFolderWalk::skip;
    });
    return all;
}

Journaled readJournal(const std::string& path) {
    Journaled journal;
    const std::string content = contentOf(path);
    std::string_view rest = content;
    for (auto end = rest.find('\n'); end != rest.npos; end = rest.find('\n')) {
        readLine(rest.substr(0, end), journal);
        rest.remove_prefix(end + 1);
    }
    return journal;
}

std::string rewriteJournal(const std::string& path, const Journaled& left) {
    if (left.files.empty() && left.tags.empty()) {
        const auto error = ZALHost::shared().fileSystem()->unlink(path);
        return error ? reasonOf(path, error) : std::string();
    }
    std::string text;
    for (const WrittenTag& tag : left.tags) {
        text += lineOf(tag);
    }
    for (const WrittenFile& file : left.files) {
        text += lineOf(file);
    }
    return writeWhole(path, 0600, [&](ZALFileHandle& file) { return file.writeAt(0, viewOf(text)); });
}
