#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALFileSystem.h>
#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/platform/ZALHTTPClient.h>
#include <zaltag/platform/ZALTagCloudFileResolver.h>
#include <zaltag/platform/ZALUserDefaults.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Takes one event of the log: a text without its own line end, whole, as the library wrote it. Called from
/// any thread, possibly from several at once; must not throw.
using ZALLogSink = std::function<void(const std::string& line)>;

/// How a save of an audio file reaches the disk.
enum class ZALSaveMode {
    /// The file is the old one or the new one, whole: after a full disk, a failing write, a kill at any
    /// moment,
    /// and after a loss of power as far as the disk writes a block of 4 KiB whole. A result of the same
    /// length
    /// whose changed bytes lie in one such block is one write in place, every other a new file that is synced
    /// and renamed over the old one.
    safe,
    /// For hosts that keep their own copies: every result of the same length is one write in place, from the
    /// first to the last changed byte, without a sync. A write that fails is undone from a copy; but a kill,
    /// a
    /// crash or a loss of power during it leaves the beginning of that range new and the rest old, in tags
    /// and
    /// in audio that lies between two tags. A result of another length, a range over 64 MiB and a file with
    /// several hard links are written as in `safe`.
    inPlace,
};

/// Which tracks a save of a DJ program's collection writes.
enum class ZALCollectionSaveMode {
    /// Every track that has cues: its cues and its date are written anew, and Rekordbox's file in UTF-8. What
    /// the
    /// library does not know of a mark (Rekordbox's colours) is dropped then, and cues of Traktor that are on
    /// no
    /// pad are put on the first one.
    everyTrackWithCues,
    /// Those that requests changed, and of those what they changed: everything else in the file keeps every
    /// byte,
    /// but for the note of the maker and the playlist "ZAL Cue Points" of Rekordbox's. A save that changes
    /// nothing writes nothing.
    changedTracks,
};

/// The services of the machine that the library works with, each with a default that a host or a test can
/// replace. Replace them before the library is used for other things; every operation here may be called from
/// any thread.
class ZALTAG_EXPORT ZALHost {
  public:
    /// The one host of this process.
    static ZALHost& shared();

    /// Sets the sink of the log. The default writes one line to standard error, with control characters
    /// escaped and the middle of a line over 4 KB left out. An empty function restores it.
    void setLogSink(ZALLogSink sink);
    /// Writes one line to the log.
    void log(const std::string& line) const;

    /// Sets the file system; null restores the machine's own.
    void setFileSystem(std::shared_ptr<ZALFileSystem> fileSystem);
    /// The file system, never null.
    std::shared_ptr<ZALFileSystem> fileSystem() const;

    /// Sets the cloud storage that files may have to be fetched from; null, as at first, for none.
    void setCloudStorage(std::shared_ptr<ZALCloudStorage> storage);
    std::shared_ptr<ZALCloudStorage> cloudStorage() const;

    /// The user's settings, never null; null restores the machine's own.
    void setUserDefaults(std::shared_ptr<ZALUserDefaults> defaults);
    std::shared_ptr<ZALUserDefaults> userDefaults() const;

    /// The access to folders that the user opened, never null; null restores the machine's own.
    void setFolderBookmarks(std::shared_ptr<ZALFolderBookmarks> bookmarks);
    std::shared_ptr<ZALFolderBookmarks> folderBookmarks() const;

    /// Time and timers, never null; null restores the machine's own.
    void setClock(std::shared_ptr<ZALClock> clock);
    std::shared_ptr<ZALClock> clock() const;

    /// What fetches from web services, never null; null restores the machine's own.
    void setHTTPClient(std::shared_ptr<ZALHTTPClient> client);
    std::shared_ptr<ZALHTTPClient> httpClient() const;

    // The functions below are called from any thread, must not throw, and are restored by an empty one.

    /// Gives the value of an environment variable, or null. The default asks the process's environment.
    void setEnvironment(std::function<ZALNullableString(const std::string& name)> environment);
    ZALNullableString environmentVariable(const std::string& name) const;

    /// Gives the user's folders for documents as absolute paths, the most likely first, or none. The default
    /// gives the one that XDG's `user-dirs.dirs` names, else `$HOME/Documents`; it may not be there.
    void setDocumentsFolders(std::function<std::vector<std::string>()> folders);
    std::vector<std::string> documentsFolders() const;

    /// Gives the names of the executables that other processes run, without folders. The default gives each
    /// name once, as /proc tells them, and for a program of another system, run by a compatibility layer, its
    /// own name ("Traktor.exe") beside the layer's.
    void setRunningPrograms(std::function<std::vector<std::string>()> programs);
    std::vector<std::string> runningPrograms() const;

    /// Gives the text for the user in the user's language. The default gives the text itself, in English.
    void setLocalizer(std::function<std::string(const std::string& text)> localizer);
    std::string localized(const std::string& text) const;

    /// The name that collection files give the volume the system was started from; "Macintosh HD" until it is
    /// set.
    void setBootVolumeName(std::string name);
    std::string bootVolumeName() const;

    /// The host of the web service that knows the latest analysis algorithms, with its port if need be; null,
    /// as at first, for none.
    void setServiceHost(ZALNullableString host);
    ZALNullableString serviceHost() const;

    /// A file in PEM form with the certificates to trust instead of the system's; null, as at first, for
    /// those.
    void setCertificateAuthorityFile(ZALNullableString path);
    ZALNullableString certificateAuthorityFile() const;

    /// Whether a failure that an operation tells its caller, by a ZALError or a completion, is a line of the
    /// log as well; true until it is set. What nobody asked about is logged in any case.
    void setLogsFailures(bool logs);
    bool logsFailures() const;

    /// How saves of audio files are written from now on; `safe` until it is set.
    void setSaveMode(ZALSaveMode mode);
    ZALSaveMode saveMode() const;

    /// Which tracks a save of a collection writes from now on; `everyTrackWithCues` until it is set.
    void setCollectionSaveMode(ZALCollectionSaveMode mode);
    ZALCollectionSaveMode collectionSaveMode() const;

    /// The host program's name and version, as they are written into files that name their maker. Until they
    /// are set, the running program's name and this library's version.
    void setName(std::string name);
    std::string name() const;
    void setVersion(std::string version);
    std::string version() const;

    /// The version of this library.
    static std::string libraryVersion();

    ZALHost(const ZALHost&) = delete;
    ZALHost& operator=(const ZALHost&) = delete;

  private:
    ZALHost();
    ~ZALHost();

    struct Services;
    std::unique_ptr<Services> services_;
};
