#pragma once

#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

class ZALCollectionTrack;

namespace zal {
struct CollectionProgram;
struct CollectionContents;
class XMLDocument;
struct XMLReadError;
}  // namespace zal

/// The collection file of a DJ program, held in memory: what the databases of all programs do alike.
///
/// A load reads the file whole and replaces what was held before only when it succeeded. Every operation may
/// be called from any thread: lookups take a lock for a moment and copy values out, so nothing they give is
/// touched by a load; loads and saves wait for each other. The write queue makes all changes.
class ZALTAG_EXPORT ZALCollectionDatabase {
  public:
    virtual ~ZALCollectionDatabase();
    ZALCollectionDatabase(const ZALCollectionDatabase&) = delete;
    ZALCollectionDatabase& operator=(const ZALCollectionDatabase&) = delete;

    /// The file last read or written; null before.
    ZALNullableString openedURL() const;
    /// The modification date of that file right after it was read or written; null when it could not be had.
    std::optional<std::chrono::system_clock::time_point> openedModificationDate() const;
    /// The modification date of the file that is to be used now; null without one, and, with a log line, when
    /// its attributes cannot be read.
    std::optional<std::chrono::system_clock::time_point> fileModificationDate() const;
    /// True when the file to be used now is another one than the opened one, has another modification date,
    /// or cannot be looked at.
    bool needsReloading() const;

    /// Loads the file that is to be used now. False when there is none, then without an error, and when it
    /// could not be loaded: the database then is not loaded, and keeps what it held for lookups.
    bool reload(ZALError* error = nullptr);
    /// Writes what has changed into the file that is to be used now, whole or not at all. False without an
    /// error when nothing is loaded. The opened file is left alone, too, when another program has changed it
    /// since it was read: reload first. A failed write is logged with the whole document.
    bool save(ZALError* error = nullptr);

    /// True when the collection holds a track for an audio file.
    bool hasTrackForSongFileAtURL(const ZALNullableString& path) const;
    /// How many tracks and cues the collection holds.
    std::size_t trackCount() const;
    std::size_t cueCount() const;

  protected:
    explicit ZALCollectionDatabase(const zal::CollectionProgram& program);

    /// Makes the file present, then loads it; a failure is one log line. Null leaves the database unloaded.
    void openFileAtURL(const ZALNullableString& url);
    bool loadFileAtURL(const ZALNullableString& url, ZALError* error);
    bool isLoaded() const;

    /// False, with an error, when the collection must not be written now.
    virtual bool canExport(ZALError* error) const = 0;
    /// Makes the tracks of a document, which may turn out to be refused.
    virtual std::unique_ptr<zal::CollectionContents> tracksOf(const zal::XMLDocument& document) const = 0;
    /// Adds what else the database holds of its document.
    virtual void readPlaylists(zal::CollectionContents& contents) const = 0;
    /// Writes what has changed besides the tracks into the document.
    virtual void updateXMLDocument(zal::CollectionContents& contents);

    /// The track for an audio file, in the collection itself. Only under the lock.
    ZALCollectionTrack* liveTrackForSongFileAtURL(const ZALNullableString& path) const;
    /// What is loaded; it outlives a load while somebody holds it. Only under the lock.
    const std::shared_ptr<zal::CollectionContents>& contents() const { return contents_; }
    std::shared_mutex& lock() const { return lock_; }

  private:
    friend class ZALCollectionQueue;
    std::unique_ptr<zal::CollectionContents> read(const std::string& url, zal::XMLReadError& fault) const;
    bool write(const std::string& url, ZALError* error);
    void adoptFile(const ZALNullableString& url, std::optional<std::chrono::system_clock::time_point> date);
    std::string whyNotToReplace(const std::string& url) const;

    const zal::CollectionProgram& program_;
    mutable std::shared_mutex lock_;  // guards everything below
    std::shared_ptr<zal::CollectionContents> contents_;
    ZALNullableString openedURL_;
    std::optional<std::chrono::system_clock::time_point> openedModificationDate_;
    bool loaded_ = false;
    std::mutex operation_;  // one load or save at a time
};
