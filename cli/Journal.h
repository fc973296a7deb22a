#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/platform/ZALFileSystem.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// A collection or an import file that a run wrote.
struct WrittenFile {
    std::string path = {};
    std::string program = {};  ///< whose collection it is; empty for an import file
    std::string copy = {};     ///< of what stood there before; empty when nothing did
    std::string before = {};   ///< digest of that
    std::string after = {};  ///< digest of what the run wrote; empty when it was ended before that was known
};

/// The payloads with cue points of an audio file, as ZALTag::cuePayloads() has them.
struct WrittenTag {
    std::string path;
    std::vector<ZALNullableData> before;
    std::vector<ZALNullableData> after;
};

/// What a run writes, noted before it is written: a line each in a file of the user's state folder. What
/// fails gives the reason, else an empty text. Any thread.
class Journal {
  public:
    std::string note(const WrittenFile& file);
    std::string note(const WrittenTag& tag);
    /// Takes the journal away when the run wrote nothing after all.
    void end();

  private:
    std::string append(const std::string& line, bool isToLast, bool isWorthKeeping);
    std::string begin();

    std::mutex mutex_;
    std::string path_;
    std::unique_ptr<ZALFileHandle> file_;
    std::uint64_t size_ = 0;
    bool isWorthKeeping_ = false;
};

/// What a journal notes, the last of what it says of a file.
struct Journaled {
    std::vector<WrittenFile> files;
    std::vector<WrittenTag> tags;
};

/// The journals in the state folder, the oldest first.
std::vector<std::string> journals();
/// Reads one; a last line that was cut is left out.
Journaled readJournal(const std::string& path);
/// Notes what is left in the place of a journal's content; with nothing left, takes the journal away.
std::string rewriteJournal(const std::string& path, const Journaled& left);
