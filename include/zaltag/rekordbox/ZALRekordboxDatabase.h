#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxPlaylistFolder.h>
#include <zaltag/rekordbox/ZALRekordboxTrack.h>

#include <memory>
#include <string>
#include <vector>

/// User-defaults key of the collection file that the user chose, an absolute path.
ZALTAG_EXPORT extern const std::string ZALRekordboxDatabaseFileUserSetLocationURL;
/// User-defaults key of the bookmark of the folder that the user opened to a sandboxed process.
ZALTAG_EXPORT extern const std::string ZALRekordboxFileFolderSandboxedBookmarkDataKey;

/// The collection that Rekordbox exports as XML ("rekordbox.xml"). URLs are absolute paths. What holds for
/// every collection stands in ZALCollectionDatabase.
///
/// A save stamps the root element with the host's name and version and the time. Of the tracks it writes the
/// marks and the DateModified, in the host's mode: of every track that has cues, or what requests changed;
/// everything else in the file stays. Errors: rekordboxCollectionUnreadable of a load,
/// rekordboxCollectionUnwritable of a save.
class ZALTAG_EXPORT ZALRekordboxDatabase final : public ZALCollectionDatabase {
  public:
    /// The one database of this process; the first call loads rekordboxDatabaseFileURL() before it returns.
    static std::shared_ptr<ZALRekordboxDatabase> sharedDatabase();
    /// Another database, for the same file rules; loads the file, if one is given. A failure is one log line.
    static std::shared_ptr<ZALRekordboxDatabase> initWithRekordboxDatabaseFileAtURL(
        const ZALNullableString& url);

    /// A database of that very file: it is loaded from there and saved there, whatever the user's settings
    /// say, and they stay as they are. A failure is one log line.
    static std::shared_ptr<ZALRekordboxDatabase> databaseOfFileAtURL(const std::string& url);

    /// True: nothing keeps Rekordbox's file from being written. The error stays as it is.
    static bool canExportToRekordbox(ZALError* error = nullptr);

    /// The file to use now: the user's, or the default one; in a sandbox (the environment variable
    /// APP_SANDBOX_CONTAINER_ID is set) the one in the folder that the user opened. Null when there is none.
    static ZALNullableString rekordboxDatabaseFileURL();
    /// The user's file, or the default one, wherever this process runs.
    static ZALNullableString rekordboxDatabaseURL();
    /// "rekordbox.xml" in the user's documents folder; null when it is not there.
    static ZALNullableString pathToMostLikelyActiveRekordboxCollectionFile();
    static void setUserRekordboxDatabaseFileURL(const std::string& url);
    /// The folder that the user opened; null without one and when it is gone.
    static ZALNullableString rekordboxBookmarkURL();
    static bool rekordboxDatabaseFileExists();
    static bool hasPermissionForRekordboxFolder();
    /// Remembers a folder that the user opened; null forgets it.
    static void setRekordboxDatabasePermissionsFolder(const ZALNullableString& folder);
    /// The collection file in a folder, by the name of the user's file or "rekordbox.xml"; null when it is
    /// not there.
    static ZALNullableString rekordboxDBPathInPermittedFolder(const std::string& folder);

    /// True after the last load succeeded.
    bool isRekordboxDBLoaded() const { return isLoaded(); }
    /// Loads a file. False without an error for null.
    bool loadRekordboxDatabaseFromFileAtURL(const ZALNullableString& url, ZALError* error = nullptr);

    /// Copies of all tracks, in the order of the file. forEachTrack() takes less memory.
    std::vector<std::shared_ptr<const ZALRekordboxTrack>> tracks() const;
    /// As in ZALCollectionDatabase.
    bool forEachTrack(
        const std::function<void(const std::shared_ptr<const ZALRekordboxTrack>& track)>& function) const;
    /// track().
    std::shared_ptr<const ZALRekordboxTrack> trackForSongFileAtURL(const ZALNullableString& path) const;
    /// A copy of the root of the playlists; null without one.
    std::shared_ptr<const ZALRekordboxPlaylistFolder> playlist() const;
    /// Copies of the tracks that a playlist names, in the order of the collection; what it does not hold is
    /// left out.
    std::vector<std::shared_ptr<const ZALRekordboxTrack>> tracksOfPlaylist(
        const ZALRekordboxPlaylist& playlist) const;

    bool canExport(ZALError* error = nullptr) const override;

  private:
    friend class ZALRekordboxQueue;
    ZALTAG_INSIDE ZALRekordboxDatabase();
};
