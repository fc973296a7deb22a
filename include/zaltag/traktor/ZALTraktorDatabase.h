#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionDatabase.h>
#include <zaltag/traktor/ZALTraktorPlaylist.h>
#include <zaltag/traktor/ZALTraktorTrack.h>

#include <memory>
#include <string>
#include <vector>

/// User-defaults key of the collection file that the user chose, an absolute path.
ZALTAG_EXPORT extern const std::string ZALTraktorDatabaseFileUserSetLocationURL;
/// User-defaults key of the bookmark of the folder that the user opened to a sandboxed process.
ZALTAG_EXPORT extern const std::string ZALTraktorFileFolderSandboxedBookmarkDataKey;

/// Traktor's own collection ("collection.nml"). URLs are absolute paths. What holds for every collection
/// stands in ZALCollectionDatabase.
///
/// A save writes the cues of tracks and the dates of their entries, in the host's mode: of every track that
/// has cues, or what requests changed; everything else in the file stays, its encoding too. Nothing is saved
/// while Traktor runs. Errors: traktorCollectionUnreadable of a load, traktorRunning and
/// traktorCollectionUnwritable of a save.
class ZALTAG_EXPORT ZALTraktorDatabase final : public ZALCollectionDatabase {
  public:
    /// The one database of this process; the first call loads traktorDatabaseFileURL() before it returns.
    static std::shared_ptr<ZALTraktorDatabase> sharedDatabase();
    /// Another database, for the same file rules; loads the file, if one is given. A failure is one log line.
    static std::shared_ptr<ZALTraktorDatabase> initWithTraktorDatabaseFileAtURL(const ZALNullableString& url);

    /// A database of that very file: it is loaded from there and saved there, whatever the user's settings
    /// say, and they stay as they are. A failure is one log line.
    static std::shared_ptr<ZALTraktorDatabase> databaseOfFileAtURL(const std::string& url);

    /// False, with an error and a recovery suggestion in it, while Traktor runs: when another process runs an
    /// executable whose name is "Traktor" or "Traktor Pro", in any case, alone or with a version number or
    /// ".exe" behind it ("Traktor Pro 4.exe"). The host knows the running programs.
    static bool canExportToTraktor(ZALError* error = nullptr);

    /// The file to use now: the user's, or the default one; in a sandbox (the environment variable
    /// APP_SANDBOX_CONTAINER_ID is set) the one in the folder that the user opened. Null when there is none.
    static ZALNullableString traktorDatabaseFileURL();
    /// The user's file, or the default one, wherever this process runs.
    static ZALNullableString traktorDatabaseURL();
    /// "collection.nml" in a version folder ("Traktor 3.4.0") of "Native Instruments" in the user's documents
    /// folder: in the one of the oldest version, by zal_versionStringCompare(). Null when it is not there,
    /// even if a newer version has one.
    static ZALNullableString pathToMostLikelyActiveTraktorCollectionFile();
    static void setUserTraktorDatabaseFileURL(const std::string& url);
    /// The folder that the user opened; null without one and when it is gone.
    static ZALNullableString traktorBookmarkURL();
    static bool traktorDatabaseFileExists();
    static bool hasPermissionForTraktorFolder();
    /// Remembers a folder that the user opened; null forgets it.
    static void setTraktorDatabasePermissionsFolder(const ZALNullableString& folder);
    /// "collection.nml" in a folder that is itself a version folder, else in the oldest version folder in it;
    /// null when it is not there.
    static ZALNullableString traktorDBPathInPermittedFolder(const std::string& folder);

    /// True after the last load succeeded.
    bool isTraktorDBLoaded() const { return isLoaded(); }
    /// Loads a file. False without an error for null.
    bool loadTraktorDatabaseFromFileAtURL(const ZALNullableString& url, ZALError* error = nullptr);

    /// Copies of all tracks, in the order of the file. forEachTrack() takes less memory.
    std::vector<std::shared_ptr<const ZALTraktorTrack>> tracks() const;
    /// As in ZALCollectionDatabase.
    bool forEachTrack(
        const std::function<void(const std::shared_ptr<const ZALTraktorTrack>& track)>& function) const;
    /// track().
    std::shared_ptr<const ZALTraktorTrack> trackForSongFileAtURL(const ZALNullableString& path) const;
    /// Copies of the playlists, in the order of the file: those directly below a top folder, not those in
    /// folders below it. A track that several entries name is one object; an entry whose track the collection
    /// does not hold is left out, with a log line.
    std::vector<std::shared_ptr<const ZALTraktorPlaylist>> playlists() const;

    bool canExport(ZALError* error = nullptr) const override;

  private:
    ZALTAG_INSIDE ZALTraktorDatabase();
};
