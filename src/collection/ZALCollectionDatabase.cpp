#include <zaltag/collection/ZALCollectionDatabase.h>

#include "collection/CollectionProgram.h"
#include "platform/Log.h"
#include "platform/NFD.h"

#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALTagCloudFileResolver.h>

#include <exception>
#include <new>

namespace {

using TimePoint = std::chrono::system_clock::time_point;

void fill(ZALError* error, ZALErrorCode code, std::shared_ptr<const ZALError> underlying) {
    if (error == nullptr) return;
    *error = ZALError();
    error->domain = ZALTagErrorDomain;
    error->code = code;
    error->underlyingError = std::move(underlying);
}

// An error of the machine or of a library below, known by its text.
std::shared_ptr<const ZALError> errorOf(const char* domain, const std::string& text) {
    auto error = std::make_shared<ZALError>();
    error->domain = domain;
    error->localizedDescription = text;
    return error;
}

std::string keyOf(const std::string& path) {
    return zal::canonicalDecomposition(path);
}

}  // namespace

std::string zal::describeError(const ZALError& error) {
    std::string text = fmt::format("{} {}", error.domain, static_cast<std::int64_t>(error.code));
    if (!error.localizedDescription.empty()) text += ": " + error.localizedDescription;
    if (error.underlyingError) text += fmt::format(" ({})", describeError(*error.underlyingError));
    return text;
}

void zal::CollectionContents::setTracks(std::vector<std::unique_ptr<ZALCollectionTrack>> all) {
    tracks = std::move(all);
    byPath.clear();
    byPath.reserve(tracks.size());
    for (const auto& track : tracks) {
        if (!track->indexKey().empty()) byPath[track->indexKey()] = track.get();
    }
}

ZALCollectionDatabase::ZALCollectionDatabase(const zal::CollectionProgram& program) : program_(program) {}

ZALCollectionDatabase::~ZALCollectionDatabase() = default;

void ZALCollectionDatabase::updateXMLDocument(zal::CollectionContents&) {}

bool ZALCollectionDatabase::isLoaded() const {
    const std::shared_lock guard(lock_);
    return loaded_;
}

ZALNullableString ZALCollectionDatabase::openedURL() const {
    const std::shared_lock guard(lock_);
    return openedURL_;
}

std::optional<TimePoint> ZALCollectionDatabase::openedModificationDate() const {
    const std::shared_lock guard(lock_);
    return openedModificationDate_;
}

std::optional<TimePoint> ZALCollectionDatabase::fileModificationDate() const {
    const ZALNullableString url = zal::collectionFileURL(program_);
    if (!url) return std::nullopt;
    const auto bookmarks = ZALHost::shared().folderBookmarks();
    const ZALNullableString folder = zal::isSandboxed() ? zal::collectionBookmarkURL(program_) : std::nullopt;
    const bool isOpen = folder && bookmarks->startAccess(*folder);
    ZALFileAttributes attributes;
    const auto failure = ZALHost::shared().fileSystem()->attributes(*url, attributes);
    if (isOpen) bookmarks->stopAccess(*folder);
    if (!failure) return TimePoint(std::chrono::nanoseconds(attributes.modified));
    zal::logf("-[{} fileModificationDate] failed to get file attributes for '{}'", program_.databaseClass,
              *url);
    return std::nullopt;
}

bool ZALCollectionDatabase::needsReloading() const {
    const ZALNullableString opened = openedURL();
    const ZALNullableString current = zal::collectionFileURL(program_);
    if (!opened && !current) return false;
    if (opened != current) return true;
    const auto date = fileModificationDate();
    if (!date) return true;
    const auto openedDate = openedModificationDate();
    return openedDate && *openedDate != *date;
}

void ZALCollectionDatabase::openFileAtURL(const ZALNullableString& url) {
    if (!url) return;
    ZALTagCloudFileResolver::resolveCloudBeforeUsingFileAtUrl(*url, [this](const ZALNullableString& usable) {
        if (!usable) return;
        ZALError error;
        const bool done = loadFileAtURL(usable, &error);
        if (!done) {
            zal::logf("{} at {}: {}", program_.openFailure, *usable, zal::describeError(error));
        }
    });
}

bool ZALCollectionDatabase::reload(ZALError* error) {
    const ZALNullableString url = zal::collectionFileURL(program_);
    return url && loadFileAtURL(url, error);
}

std::unique_ptr<zal::CollectionContents> ZALCollectionDatabase::read(const std::string& url,
                                                                     zal::XMLReadError& fault) const {
    std::unique_ptr<zal::CollectionContents> contents;
    auto document = zal::XMLDocument::read(
        url, fault, [&](const zal::XMLDocument& unchecked) { contents = tracksOf(unchecked); });
    if (!document) return nullptr;
    contents->document = std::move(document);
    readPlaylists(*contents);
    return contents;
}

bool ZALCollectionDatabase::loadFileAtURL(const ZALNullableString& url, ZALError* error) {
    if (!url) return false;
    const std::lock_guard operation(operation_);
    zal::XMLReadError fault;
    std::shared_ptr<zal::CollectionContents> loaded;
    try {
        loaded = read(*url, fault);
    } catch (const std::exception& exception) {  // memory ran out
        fault = {zal::XMLReadError::Stage::document, exception.what()};
    }
    if (loaded) {
        const TimePoint date{std::chrono::nanoseconds(loaded->document->modified())};
        {
            const std::unique_lock guard(lock_);
            contents_.swap(loaded);
            loaded_ = true;
        }
        adoptFile(url, date);
        return true;
    }
    if (fault.stage == zal::XMLReadError::Stage::document) {
        if (error != nullptr) *error = *errorOf("XML", fault.text);
    } else {
        fill(error, program_.unreadable, errorOf("XML", fault.text));
    }
    const std::unique_lock guard(lock_);
    loaded_ = false;
    return false;
}

// Remembers which file the contents agree with.
void ZALCollectionDatabase::adoptFile(const ZALNullableString& url, std::optional<TimePoint> date) {
    const std::unique_lock guard(lock_);
    openedURL_ = url;
    openedModificationDate_ = date;
}

// Another program may have written the file while this one was at work.
std::string ZALCollectionDatabase::whyNotToReplace(const std::string& url) const {
    const auto date = openedModificationDate();
    ZALFileAttributes attributes;
    if (openedURL() != url || !date || ZALHost::shared().fileSystem()->attributes(url, attributes)) return {};
    const bool isSame = TimePoint(std::chrono::nanoseconds(attributes.modified)) == *date;
    return isSame ? "" : "another program has changed it since it was read";
}

bool ZALCollectionDatabase::save(ZALError* error) {
    const std::lock_guard operation(operation_);
    if (!isLoaded() || !canExport(error)) return false;
    try {
        {
            const std::unique_lock guard(lock_);
            for (const auto& track : contents_->tracks) {
                track->updateXMLElement();
            }
            updateXMLDocument(*contents_);
        }
        const ZALNullableString url = zal::collectionFileURL(program_);
        return write(url.value_or(""), error);
    } catch (const std::exception& exception) {  // memory ran out
        zal::logf("{} (): {}", program_.writeFailure, exception.what());
        fill(error, program_.unwritable, errorOf("memory", exception.what()));
        return false;
    }
}

bool ZALCollectionDatabase::write(const std::string& url, ZALError* error) {
    const auto writeDocument = [this](const zal::ChunkSink& sink) {
        const std::shared_lock guard(lock_);
        return contents_->document->write(sink, program_.style);
    };
    ZALFileAttributes written;
    const std::string reason = url.empty()
                                   ? "there is no collection file"
                                   : zal::whyNotReplaced(
                                         url, writeDocument, [&] { return whyNotToReplace(url); }, &written);
    if (reason.empty()) {
        adoptFile(url, TimePoint(std::chrono::nanoseconds(written.modified)));
        return true;
    }
    std::string text;
    writeDocument([&text](ZALDataView bytes) {
        text.append(bytes.begin(), bytes.end());
        return true;
    });
    zal::logf("{} ({}): {}", program_.writeFailure, text, reason);
    fill(error, program_.unwritable, errorOf("file system", reason));
    if (error != nullptr) error->localizedDescription = ZALHost::shared().localized(program_.saveErrorText);
    return false;
}

ZALCollectionTrack* ZALCollectionDatabase::liveTrackForSongFileAtURL(const ZALNullableString& path) const {
    if (!path || !contents_) return nullptr;
    const auto found = contents_->byPath.find(keyOf(*path));
    return found == contents_->byPath.end() ? nullptr : found->second;
}

bool ZALCollectionDatabase::hasTrackForSongFileAtURL(const ZALNullableString& path) const {
    const std::shared_lock guard(lock_);
    return liveTrackForSongFileAtURL(path) != nullptr;
}

std::size_t ZALCollectionDatabase::trackCount() const {
    const std::shared_lock guard(lock_);
    return contents_ ? contents_->tracks.size() : 0;
}

std::size_t ZALCollectionDatabase::cueCount() const {
    const std::shared_lock guard(lock_);
    std::size_t count = 0;
    if (!contents_) return 0;
    for (const auto& track : contents_->tracks) {
        count += track->cueCount();
    }
    return count;
}
