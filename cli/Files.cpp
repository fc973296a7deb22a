#include "Files.h"

#include "Interrupts.h"
#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return error ? path : absolute.string();
}

namespace {

// Notes that other systems leave beside the files they belong to.
bool isNote(const fs::path& path) {
    return path.filename().string().starts_with("._");
}

bool isHidden(const fs::path& path) {
    return path.filename().string().starts_with('.');
}

void walkFolder(const fs::path& folder, FoundFiles& found) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        entries.push_back(*entry);
    }
    if (error) found.failures.emplace_back(folder.string(), error.message());
    std::sort(entries.begin(), entries.end());
    for (const fs::directory_entry& entry : entries) {
        if (isInterrupted()) return;
        std::error_code ignored;
        if (entry.is_directory(ignored)) {
            if (!entry.is_symlink(ignored) && !isHidden(entry.path())) walkFolder(entry.path(), found);
        } else if (!isNote(entry.path()) && ZALTag::canInitWithPath(entry.path().string())) {
            found.paths.push_back(entry.path().string());
        }
    }
}

}  // namespace

OpenedFile openFile(const std::string& path, bool readOnly) {
    ZALError error;
    OpenedFile opened{ZALTag::tagAtPath(absolutePath(path), readOnly, &error), {}};
    if (opened.tag == nullptr) opened.failure = printable(error.localizedDescription);
    return opened;
}

std::string saveFile(ZALTag& tag) {
    ZALError error;
    if (tag.save(&error)) return {};
    return fmt::format("could not be saved: {}; the file is as it was",
                       printable(error.localizedDescription));
}

std::string changeFile(const std::string& path, const std::function<void(ZALTag&)>& change,
                       const std::function<std::string(const ZALTag&)>& missing) {
    const OpenedFile opened = openFile(path, false);
    if (opened.tag == nullptr) return opened.failure;
    if (opened.tag->readOnly()) return readOnlyReason;
    try {
        change(*opened.tag);
    } catch (const ChangeRefused& refused) {
        return refused.what();
    }
    const std::string failure = saveFile(*opened.tag);
    return failure.empty() && missing ? missing(*opened.tag) : failure;
}

int changeFiles(const std::vector<std::string>& paths, const std::function<void(ZALTag&)>& change,
                const std::function<std::string(const ZALTag&)>& missing) {
    Output output(false);
    holdInterrupts();
    for (const std::string& path : paths) {
        if (isInterrupted()) break;
        const std::string failure = changeFile(path, change, missing);
        if (!failure.empty()) output.failure(path, failure);
    }
    return output.finish();
}

FoundFiles findFiles(const std::vector<std::string>& paths) {
    FoundFiles found;
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (fs::is_directory(path, ignored)) {
            walkFolder(path, found);
        } else {
            found.paths.push_back(path);
        }
    }
    return found;
}
