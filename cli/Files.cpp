#include "Files.h"

#include "Interrupts.h"
#include "Output.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return error ? path : absolute.string();
}

namespace {

// Why a file that does not open does not.
std::string reasonFor(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (error && status.type() != fs::file_type::not_found) return error.message();
    if (status.type() == fs::file_type::not_found) return "no such file";
    if (fs::is_directory(status)) return "is a folder";
    if (!fs::is_regular_file(status)) return "is not a regular file";
    if (!ZALTag::canInitWithPath(path)) {
        return fmt::format("unsupported file type (supported: {})",
                           fmt::join(ZALTag::supportedFileTypes().elements(), ", "));
    }
    if (::access(path.c_str(), R_OK) != 0) return "permission denied";
    return "not a readable audio file of its type: damaged, or misnamed";
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
        if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) {
            walkFolder(entry.path(), found);
        } else if (ZALTag::canInitWithPath(entry.path().string()) && !entry.is_directory(ignored)) {
            found.paths.push_back(entry.path().string());
        }
    }
}

}  // namespace

OpenedFile openFile(const std::string& path, bool readOnly) {
    const std::string absolute = absolutePath(path);
    OpenedFile opened{ZALTag::tagAtPath(absolute, readOnly), {}};
    if (opened.tag == nullptr) opened.failure = reasonFor(absolute);
    return opened;
}

std::string saveFile(ZALTag& tag) {
    // The log line of a failed save is the reason; it belongs into ours.
    std::string reason;
    ZALHost::shared().setLogSink([&reason](const std::string& line) {
        const std::size_t colon = line.find("': ");
        if (line.starts_with("could not save '") && colon != std::string::npos) {
            reason = ": " + printable(line.substr(colon + 3));
        } else {
            std::fputs((printable(line) + "\n").c_str(), stderr);
        }
    });
    const bool isSaved = tag.save();
    ZALHost::shared().setLogSink({});
    return isSaved ? "" : fmt::format("could not be saved{}; the file is as it was", reason);
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
