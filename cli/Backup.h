#pragma once

#include <string>
#include <vector>

// The way back from a run that wrote collections: copies of them, and a journal of what was written.

/// Copies a file whole or not at all, in the place of what stands there; the reason why not, or an empty
/// text.
std::string copyFile(const std::string& from, const std::string& to);

/// Copies a collection beside itself, as NAME.before-zaltag-YYYYMMDD-HHMMSS, and takes away old copies but
/// for the first one and the last five. The reason why not, or an empty text.
std::string backUp(const std::string& collection, std::string& copy);

/// What a run wrote, by which it can be taken back.
struct Journal {
    struct Written {
        std::string path;
        std::string copy;    ///< of what stood there before; empty when nothing did, or no copy was made
        std::string digest;  ///< of what the run wrote; empty until it is known
    };
    std::vector<Written> files;

    /// Notes it in the user's state folder; later calls write the same file anew. The reason why not, or an
    /// empty text.
    std::string write();

  private:
    std::string path_;
};

/// The digest of a file's content; empty when it cannot be read.
std::string digestOf(const std::string& path);

/// The journals in the state folder, the oldest first.
std::vector<std::string> journals();
/// Reads one; false when it is none.
bool readJournal(const std::string& path, Journal& journal);
