#pragma once

#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

class ZALCollectionTrack;
struct ZALTrackIdentity;

namespace zal {
struct CollectionChanges;
struct CollectionProgram;
class CollectionIndex;
class ElementReader;
}  // namespace zal

/// Goes through the tracks of a collection, for who asks for one after the other. They are those of the
/// moment when it was made, in the order of the file, whatever is loaded or saved meanwhile. One thread at a
/// time.
class ZALTAG_EXPORT ZALCollectionCursor {
  public:
    /// A copy of the next track. Null behind the last, and when the file turns out to have been changed: the
    /// rest is left out then.
    std::shared_ptr<const ZALCollectionTrack> next();
    /// True when tracks were left out.
    bool hasFailed() const { return hasFailed_; }

  private:
    friend class ZALCollectionDatabase;
    std::shared_ptr<zal::ElementReader> reader_;  // null when nothing is loaded
    std::uint32_t next_ = 0;
    bool hasFailed_ = false;
};

/// The collection file of a DJ program: what the databases of all programs do alike.
///
/// A load goes through the whole file once, keeps an index of what stands where (some 50 bytes a track) and
/// the file open; it replaces what was there before only when it succeeded. Tracks and playlists are made
/// from the file when they are asked for, also when its name is gone or another file's by then. When the file
/// itself was written over, so that a track does not stand where it stood, there is no such track, one line
/// is logged, and needsReloading() is true.
///
/// Every operation may be called from any thread, and nothing that one gives is touched by a load or a save,
/// which wait for each other. The write queue makes all changes.
class ZALTAG_EXPORT ZALCollectionDatabase {
  public:
    virtual ~ZALCollectionDatabase();
    ZALCollectionDatabase(const ZALCollectionDatabase&) = delete;
    ZALCollectionDatabase& operator=(const ZALCollectionDatabase&) = delete;

    /// True after the last load succeeded, or failed of another file than the one that is to be used.
    bool isLoaded() const;
    /// The file that is to be used now: found by the program's own rules, or the one that this database was
    /// made for. Null when there is none.
    ZALNullableString fileURL() const;
    /// False, with an error, when the collection must not be written now.
    virtual bool canExport(ZALError* error = nullptr) const = 0;

    /// The file last read or written; null before.
    ZALNullableString openedURL() const;
    /// The modification date of that file right after it was read or written; null when it could not be had.
    std::optional<std::chrono::system_clock::time_point> openedModificationDate() const;
    /// The modification date of the file that is to be used now; null without one, and, with a log line, when
    /// its attributes cannot be read.
    std::optional<std::chrono::system_clock::time_point> fileModificationDate() const;
    /// True when the file to be used now is another one than the opened one, has another modification date,
    /// or cannot be looked at; when it is there and nothing is loaded; and when a track was not found in it
    /// where it stood.
    bool needsReloading() const;

    /// Loads the file that is to be used now. False when there is none, then without an error, and when it
    /// could not be loaded: the database then is not loaded, and keeps what it held for lookups.
    bool reload(ZALError* error = nullptr);
    /// Writes the file that is to be used now, whole or not at all, in the host's mode
    /// (setCollectionSaveMode(); in `changedTracks`, without requests, there is nothing to write). False
    /// without an error when nothing is loaded. A file that is there is left alone when it is another one
    /// than the one that was read, or has been changed since: reload first. A failure is one log line, with
    /// the file and the reason.
    bool save(ZALError* error = nullptr);

    /// A copy of the track of an audio file, by its path in any Unicode normalization; null without one. Of
    /// several tracks with one path it is the last.
    std::shared_ptr<const ZALCollectionTrack> track(const ZALNullableString& path) const;
    /// False when no track has a path, in any Unicode normalization. True when one has, which the index says
    /// of one in some 10^19 others, too: nothing is read.
    bool mayHold(const std::string& path) const;
    /// For each path the paths of the tracks that it may mean on another system, as the collection has them:
    /// those of the same ZALLoosePath(). Many paths at once cost less than one after the other.
    std::vector<std::vector<std::string>> pathsLike(const std::vector<std::string>& paths) const;
    /// Calls a function with what every track says of its file, as forEachTrack() does.
    bool forEachIdentity(const std::function<void(const ZALTrackIdentity& identity)>& function) const;
    /// Calls a function with a copy of every track, one after the other, in the order of the file. They are
    /// those of the moment of the call, whatever is loaded or saved meanwhile, and no lock is held: the
    /// function may use the database. False when the file turns out to have been changed: the rest is left
    /// out.
    bool forEachTrack(
        const std::function<void(const std::shared_ptr<const ZALCollectionTrack>& track)>& function) const;

    /// The same for who asks for them. Nothing asks for a reload when the file turns out to have been
    /// changed.
    ZALCollectionCursor tracksInOrder() const;

    /// True when the collection holds a track for an audio file.
    bool hasTrackForSongFileAtURL(const ZALNullableString& path) const;
    /// How many tracks and cues the collection holds.
    std::size_t trackCount() const;
    std::size_t cueCount() const;

  protected:
    ZALTAG_INSIDE explicit ZALCollectionDatabase(const zal::CollectionProgram& program);

    /// Makes the file present, then loads it; a failure is one log line. Null leaves the database unloaded.
    void openFileAtURL(const ZALNullableString& url);
    bool loadFileAtURL(const ZALNullableString& url, ZALError* error);
    /// Makes this the database of one file, whatever the rules say, and loads it.
    void stayWithFileAtURL(const std::string& url);

    /// What is loaded; null before. It outlives a load while somebody holds it.
    ZALTAG_INSIDE std::shared_ptr<const zal::CollectionIndex> index() const;
    /// Has the next needsReloading() say so.
    void askForReload() const;

  private:
    friend class ZALCollectionQueue;
    ZALTAG_INSIDE bool saveChanges(const zal::CollectionChanges& changes, ZALError* error);
    ZALTAG_INSIDE bool failSave(const std::string& reason, ZALError* error) const;
    ZALTAG_INSIDE std::string write(const std::string& url, const zal::CollectionChanges& changes);
    ZALTAG_INSIDE void adopt(std::shared_ptr<const zal::CollectionIndex> index, const std::string& url);
    ZALTAG_INSIDE bool isFileThatWasRead(const std::string& url) const;
    ZALTAG_INSIDE std::string whyNotToReplace(const std::string& url) const;

    const zal::CollectionProgram& program_;
    mutable std::shared_mutex lock_;  // guards everything below, for a moment at a time
    std::shared_ptr<const zal::CollectionIndex> index_;
    ZALNullableString openedURL_;
    std::optional<std::chrono::system_clock::time_point> openedModificationDate_;
    ZALNullableString ownURL_;
    bool loaded_ = false;
    mutable bool asksForReload_ = false;
    std::mutex operation_;  // one load or save at a time
};
