#include <zaltag/collection/ZALCollectionDatabase.h>

#include "collection/CollectionWriter.h"
#include "collection/NFD.h"
#include "platform/Log.h"

#include <zaltag/collection/ZALCollectionPath.h>
#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALTagCloudFileResolver.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace {

constexpr std::uint64_t readAhead = 65536;

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

ZALCollectionDatabase::ZALCollectionDatabase(const zal::CollectionProgram& program) : program_(program) {}

ZALCollectionDatabase::~ZALCollectionDatabase() = default;

bool ZALCollectionDatabase::isLoaded() const {
    const std::shared_lock guard(lock_);
    return loaded_;
}

ZALNullableString ZALCollectionDatabase::fileURL() const {
    {
        const std::shared_lock guard(lock_);
        if (ownURL_) return ownURL_;
    }
    return zal::collectionFileURL(program_);
}

std::shared_ptr<const zal::CollectionIndex> ZALCollectionDatabase::index() const {
    const std::shared_lock guard(lock_);
    return index_;
}

void ZALCollectionDatabase::askForReload() const {
    const std::unique_lock guard(lock_);
    asksForReload_ = true;
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
    const ZALNullableString url = fileURL();
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
    const ZALNullableString current = fileURL();
    {
        const std::shared_lock guard(lock_);
        if (asksForReload_) return true;
    }
    if (!isLoaded() && current && zal::existingFile(*current)) return true;
    if (!opened && !current) return false;
    if (opened != current) return true;
    const auto date = fileModificationDate();
    if (!date) return true;
    const auto openedDate = openedModificationDate();
    return openedDate && (*openedDate != *date || !isFileThatWasRead(*current));
}

void ZALCollectionDatabase::openFileAtURL(const ZALNullableString& url) {
    if (!url) return;
    ZALTagCloudFileResolver::resolveCloudBeforeUsingFileAtUrl(*url, [this](const ZALNullableString& usable) {
        if (!usable) return;
        ZALError error;
        const bool done = loadFileAtURL(usable, &error);
        if (!done) {
            zal::logFailure(
                fmt::format("{} at {}: {}", program_.openFailure, *usable, zal::describeError(error)));
        }
    });
}

void ZALCollectionDatabase::stayWithFileAtURL(const std::string& url) {
    {
        const std::unique_lock guard(lock_);
        ownURL_ = url;
    }
    openFileAtURL(url);
}

bool ZALCollectionDatabase::reload(ZALError* error) {
    const ZALNullableString url = fileURL();
    if (!url) return false;
    if (loadFileAtURL(url, error)) return true;
    const std::unique_lock guard(lock_);
    loaded_ = false;
    return false;
}

bool ZALCollectionDatabase::loadFileAtURL(const ZALNullableString& url, ZALError* error) {
    if (!url) return false;
    const std::lock_guard operation(operation_);
    std::string reason;
    try {
        if (auto read = zal::CollectionIndex::read(program_, *url, reason)) {
            adopt(std::move(read), *url);
            return true;
        }
        fill(error, program_.unreadable, errorOf("XML", reason));
    } catch (const std::exception& exception) {  // memory ran out
        if (error != nullptr) *error = *errorOf("XML", exception.what());
    }
    return false;
}

// Remembers what is loaded, and which file it agrees with.
void ZALCollectionDatabase::adopt(std::shared_ptr<const zal::CollectionIndex> index, const std::string& url) {
    const TimePoint date{std::chrono::nanoseconds(index->attributes().modified)};
    const std::unique_lock guard(lock_);
    index_.swap(index);
    openedURL_ = url;
    openedModificationDate_ = date;
    loaded_ = true;
    asksForReload_ = false;
}

// Whether the path names the very file that is open, as it was read.
bool ZALCollectionDatabase::isFileThatWasRead(const std::string& url) const {
    const auto read = index();
    ZALFileAttributes now;
    if (read == nullptr || ZALHost::shared().fileSystem()->attributes(url, now)) return false;
    const ZALFileAttributes& then = read->attributes();
    return now.device == then.device && now.inode == then.inode && now.size == then.size &&
           now.modified == then.modified;
}

// Another program may have written the file while this one was at work, or the user chosen another one.
std::string ZALCollectionDatabase::whyNotToReplace(const std::string& url) const {
    if (!zal::existingFile(url) || isFileThatWasRead(url)) return {};
    return openedURL() == url ? "another program has changed it since it was read"
                              : "it is another collection than the one that was read";
}

bool ZALCollectionDatabase::save(ZALError* error) {
    zal::CollectionChanges changes;
    changes.mode = ZALHost::shared().collectionSaveMode();
    return saveChanges(changes, error);
}

bool ZALCollectionDatabase::saveChanges(const zal::CollectionChanges& changes, ZALError* error) {
    const std::lock_guard operation(operation_);
    if (!isLoaded() || !canExport(error)) return false;
    const std::string url = fileURL().value_or("");
    const std::string reason = url.empty() ? "there is no collection file" : write(url, changes);
    return reason.empty() || failSave(reason, error);
}

bool ZALCollectionDatabase::failSave(const std::string& reason, ZALError* error) const {
    zal::logFailure(fmt::format("{} ({}): {}", program_.writeFailure, fileURL().value_or(""), reason));
    fill(error, program_.unwritable, errorOf("file system", reason));
    if (error != nullptr) error->localizedDescription = ZALHost::shared().localized(program_.saveErrorText);
    return false;
}

// Why it was not written, or an empty text.
std::string ZALCollectionDatabase::write(const std::string& url, const zal::CollectionChanges& changes) {
    const auto mayReplace = [&] { return whyNotToReplace(url); };
    std::string refusal = mayReplace();
    const bool isChange = changes.mode == ZALCollectionSaveMode::everyTrackWithCues ||
                          !changes.tracks.empty() || changes.playlists;
    if (!refusal.empty() || (!isChange && zal::existingFile(url))) return refusal;
    const auto read = index();
    if (changes.index && changes.index != read) return "it was loaded anew meanwhile";
    try {
        zal::CollectionWriter writer(read, changes);
        std::shared_ptr<const zal::CollectionIndex> written;
        const std::string reason = zal::whyNotReplacedBy(
            url, [&writer](zal::FileReplacement& out) { return writer.write(out); }, mayReplace,
            [&](std::unique_ptr<ZALFileHandle> file, const ZALFileAttributes& attributes) {
                written = writer.index(std::move(file), attributes);
            });
        if (!reason.empty()) {
            if (!writer.reason().empty()) askForReload();
            return writer.reason().empty() ? reason : writer.reason();
        }
        std::string unread;
        if (!written) written = zal::CollectionIndex::read(program_, url, unread, true);
        written ? adopt(std::move(written), url) : askForReload();
        return {};
    } catch (const std::exception& exception) {  // memory ran out
        return exception.what();
    }
}

std::shared_ptr<const ZALCollectionTrack> ZALCollectionDatabase::track(const ZALNullableString& path) const {
    const auto held = index();
    if (!path || !held) return nullptr;
    zal::ElementReader reader(held);
    std::uint32_t number = 0;
    const auto found = reader.find(keyOf(*path), number);
    if (reader.hasFailed()) askForReload();
    return found ? program_.copyOf(*found) : nullptr;
}

bool ZALCollectionDatabase::mayHold(const std::string& path) const {
    const auto held = index();
    return held && !held->withPath(keyOf(path)).empty();
}

std::vector<std::vector<std::string>> ZALCollectionDatabase::pathsLike(
    const std::vector<std::string>& paths) const {
    std::vector<std::vector<std::string>> found(paths.size());
    const auto held = index();
    if (!held) return found;
    std::vector<std::string> loose;
    std::vector<std::pair<std::uint32_t, std::size_t>> candidates;  // tracks, and which path they may have
    for (std::size_t i = 0; i < paths.size(); ++i) {
        loose.push_back(ZALLoosePath(paths[i]));
        for (const std::uint32_t number : held->withLoosePath(loose.back())) {
            candidates.emplace_back(number, i);
        }
    }
    // In the order of the file, so that each track is read once.
    std::sort(candidates.begin(), candidates.end());
    const bool areMany = candidates.size() > held->tracks().size() / 8;
    zal::ElementReader reader(held, areMany ? readAhead : 0);
    ZALNullableString path;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const auto [number, wanted] = candidates[i];
        if (i == 0 || candidates[i - 1].first != number) path = reader.path(number);
        if (path && ZALLoosePath(*path) == loose[wanted]) found[wanted].push_back(*path);
    }
    if (reader.hasFailed()) askForReload();
    return found;
}

bool ZALCollectionDatabase::hasTrackForSongFileAtURL(const ZALNullableString& path) const {
    return track(path) != nullptr;
}

bool ZALCollectionDatabase::forEachTrack(
    const std::function<void(const std::shared_ptr<const ZALCollectionTrack>& track)>& function) const {
    ZALCollectionCursor cursor = tracksInOrder();
    while (const auto track = cursor.next()) {
        function(track);
    }
    if (cursor.hasFailed()) askForReload();
    return !cursor.hasFailed();
}

bool ZALCollectionDatabase::forEachIdentity(
    const std::function<void(const ZALTrackIdentity& identity)>& function) const {
    const auto held = index();
    if (!held) return true;
    zal::ElementReader reader(held, readAhead);
    for (std::uint32_t number = 0; number < held->tracks().size(); ++number) {
        const ZALTrackIdentity identity = reader.identity(number);
        if (reader.hasFailed()) break;
        function(identity);
    }
    if (reader.hasFailed()) askForReload();
    return !reader.hasFailed();
}

ZALCollectionCursor ZALCollectionDatabase::tracksInOrder() const {
    ZALCollectionCursor cursor;
    if (const auto held = index()) cursor.reader_ = std::make_shared<zal::ElementReader>(held, readAhead);
    return cursor;
}

std::shared_ptr<const ZALCollectionTrack> ZALCollectionCursor::next() {
    if (!reader_ || next_ == reader_->index().tracks().size()) return nullptr;
    if (hasFailed_) return nullptr;
    const auto track = reader_->track(next_++);
    hasFailed_ = track == nullptr;
    return track ? reader_->index().program().copyOf(*track) : nullptr;
}

std::size_t ZALCollectionDatabase::trackCount() const {
    const auto held = index();
    return held ? held->tracks().size() : 0;
}

std::size_t ZALCollectionDatabase::cueCount() const {
    const auto held = index();
    return held ? held->cueCount() : 0;
}
