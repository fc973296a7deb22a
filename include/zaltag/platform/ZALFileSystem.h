#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <system_error>

/// What stands under a path, after following symbolic links.
enum class ZALFileKind { missing, regular, folder, other };

/// What a file is known by, and who may do what with it.
struct ZALFileAttributes {
    ZALFileKind kind = ZALFileKind::missing;
    std::uint64_t device = 0;   ///< with inode: which file it is
    std::uint64_t inode = 0;    ///< with device: which file it is
    std::uint64_t size = 0;     ///< in bytes
    std::int64_t modified = 0;  ///< last change of the content, in nanoseconds since 1970 (UTC)
    std::uint64_t links = 0;    ///< number of hard links
    std::uint32_t mode = 0;     ///< permission bits, 07777
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
};

/// An open file; destroying it closes it. One thread at a time. Every operation gives the error that stopped
/// it, by the system's error number in the generic category; a default error_code is success. Interrupted
/// calls are tried again.
class ZALTAG_EXPORT ZALFileHandle {
  public:
    /// Closes the file and gives up its lock. Errors of closing say nothing that sync() has not said.
    virtual ~ZALFileHandle();

    /// Fills the buffer from a position of the file. `count` is the number of bytes read: fewer than asked
    /// for only at the file's end or after an error.
    virtual std::error_code readAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                                   std::size_t& count) = 0;
    /// Writes all bytes at a position. After an error some of them may have been written.
    virtual std::error_code writeAt(std::uint64_t position, ZALDataView bytes) = 0;
    /// Copies a range of another file to a position of this one, inside the kernel where it can. A source
    /// that is too short is an error (EIO).
    virtual std::error_code copyFrom(ZALFileHandle& source, std::uint64_t sourcePosition,
                                     std::uint64_t length, std::uint64_t position) = 0;
    /// Cuts the file to a length, or extends it with zeros.
    virtual std::error_code truncate(std::uint64_t length) = 0;
    /// Returns when content and attributes are on the disk.
    virtual std::error_code sync() = 0;

    virtual std::error_code attributes(ZALFileAttributes& attributes) = 0;
    /// Gives this file the owner, group, permission bits and extended attributes of another one, changing
    /// only what differs. Owner and group are kept as far as the system lets, which in a shared folder it
    /// may not; a group that is another one then may do no more than others. An error when the bits, the
    /// access control list or an attribute of the user cannot be kept; attributes of other name spaces are
    /// kept as far as the system lets. Those that
    /// vouch for the content (capabilities, checksums) are left out.
    virtual std::error_code copyAttributesFrom(ZALFileHandle& source) = 0;

    /// Takes the exclusive advisory lock (flock) without waiting; EWOULDBLOCK when another handle, of this
    /// process or another one, holds it. A volume that has no locks gives success.
    virtual std::error_code lock() = 0;
    virtual std::error_code unlock() = 0;

    /// The file's descriptor, owned by the handle; -1 when it has none. Only for what the kernel does between
    /// two files.
    virtual int descriptor() const = 0;
};

/// How a walk through a folder goes on.
enum class ZALFolderWalk {
    next,  ///< to what is in this folder, if it is one, then to the next name
    skip,  ///< to the next name
    stop,  ///< not at all
};

/// The file system as the library sees it: every file that is written goes over it. A host or a test replaces
/// it through ZALHost before first use; every operation may be called from any thread. Errors are given as by
/// ZALFileHandle.
class ZALTAG_EXPORT ZALFileSystem {
  public:
    virtual ~ZALFileSystem();

    /// What stands under the path. `missing` also when it cannot be looked at.
    virtual ZALFileKind kindOfFile(const std::string& path) const = 0;
    /// The attributes of what stands under the path, after following symbolic links.
    virtual std::error_code attributes(const std::string& path, ZALFileAttributes& attributes) = 0;
    /// The absolute path without symbolic links. Only the last component may be missing; a symbolic link that
    /// leads nowhere is an error (ENOENT).
    virtual std::error_code canonicalPath(const std::string& path, std::string& canonical) = 0;

    /// Opens an existing file for reading, or for reading and writing. Null after an error. Never waits for
    /// the other end of a pipe.
    virtual std::unique_ptr<ZALFileHandle> open(const std::string& path, bool forWriting,
                                                std::error_code& error) = 0;
    /// Makes a new, empty file, open for reading and writing, with permission bits that the process's mask
    /// applies to. Null after an error: EEXIST when the name is taken, by a symbolic link too.
    virtual std::unique_ptr<ZALFileHandle> create(const std::string& path, std::uint32_t mode,
                                                  std::error_code& error) = 0;

    /// Gives a file a new name in the same file system; what had that name before is gone, in one step.
    virtual std::error_code rename(const std::string& from, const std::string& to) = 0;
    /// Takes a name away; not a folder's.
    virtual std::error_code unlink(const std::string& path) = 0;
    /// Visits every name below a folder, by its path relative to it: a folder before what it holds, the names
    /// of one folder in the order of their bytes. Symbolic links are visited and not followed; a folder below
    /// that cannot be read is visited and left out. The error is that of the folder itself.
    virtual std::error_code enumerate(
        const std::string& folder,
        const std::function<ZALFolderWalk(const std::string& relativePath)>& visit) = 0;
    /// Makes a folder and those above it that are missing, with permission bits that the process's mask
    /// applies to. Success when it is there already.
    virtual std::error_code createFolders(const std::string& path, std::uint32_t mode) = 0;
    /// Returns when the names in a folder are on the disk.
    virtual std::error_code syncFolder(const std::string& path) = 0;

    /// The machine's own.
    static std::shared_ptr<ZALFileSystem> machine();
};
