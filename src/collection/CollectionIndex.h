#pragma once

#include "collection/CollectionProgram.h"
#include "collection/SharedFile.h"
#include "collection/XMLStream.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

/// A range of the file and the checksum of its bytes.
struct Span {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t checksum = 0;
    std::uint64_t size() const { return end - begin; }
};

/// A track in the file. A collection has a hundred thousand of them.
struct IndexedTrack {
    std::uint64_t begin = 0;
    std::uint64_t checksum = 0;
    std::uint64_t pathHash = 0;
    std::uint64_t looseHash = 0;  ///< of what ZALLoosePath() makes of the path
    std::uint64_t nameHash = 0;
    std::uint32_t length = 0;
    std::uint32_t cues = 0;
    std::int32_t id = 0;
    bool hasPath = false;
    bool hasMarks = false;
    bool isMarked = false;      ///< a save of every track with cues writes it anew
    bool isImportable = false;  ///< but for its marks
    Span span() const { return {begin, begin + length, checksum}; }
};

/// What the file has around its tracks, as far as a save touches it.
struct CollectionFrame {
    bool hasRoot = false;  ///< the root has the program's name; without it nothing else is here
    Span rootTag;
    bool rootIsEmpty = false;
    std::uint64_t rootEnd = 0;      ///< where the root's end tag begins
    std::vector<Span> playlists;    ///< the elements PLAYLISTS of the root
    std::optional<Span> firstNode;  ///< the first NODE in them
};

/// Where everything in a collection file stands. It never changes, and it keeps the file open: what it says
/// holds for the bytes that were read, also when their name is gone or another file's.
class CollectionIndex {
  public:
    /// Reads the file. Null when it cannot be read or is not well-formed, with the reason. The tracks of a
    /// file that was just saved need no other save.
    static std::shared_ptr<const CollectionIndex> read(const CollectionProgram& program,
                                                       const std::string& path, std::string& reason,
                                                       bool isSaved = false);
    /// The index of a file that was written, which is open.
    CollectionIndex(const CollectionProgram& program, std::shared_ptr<SharedFile> file);

    const CollectionProgram& program() const { return program_; }
    SharedFile& file() const { return *file_; }
    const ZALFileAttributes& attributes() const { return attributes_; }
    const XMLForm& form() const { return form_; }
    const CollectionFrame& frame() const { return frame_; }
    const std::vector<IndexedTrack>& tracks() const { return tracks_; }
    std::size_t cueCount() const;
    /// True when marks of tracks have colours that the program cares for.
    bool hasColors() const { return hasColors_; }

    /// The tracks that may have this path, in canonical decomposition: those with its hash, the last one
    /// first.
    std::vector<std::uint32_t> withPath(std::string_view path) const;
    /// The tracks that may have this loose path, in any order.
    std::vector<std::uint32_t> withLoosePath(std::string_view loose) const;
    /// The hash that a track with this name in playlists has.
    std::uint64_t hashOf(std::string_view key) const;

    /// True while the open file has the size and the date it was read with.
    bool isUnchanged() const;

  private:
    friend class CollectionReader;
    friend class CollectionWriter;
    void sortByPath();
    void tabulateLoosePaths() const;

    const CollectionProgram& program_;
    std::shared_ptr<SharedFile> file_;
    ZALFileAttributes attributes_;
    XMLForm form_;
    CollectionFrame frame_;
    std::uint64_t seed_ = 0;
    bool hasColors_ = false;
    std::vector<IndexedTrack> tracks_;   // in the order of the file
    std::vector<std::uint32_t> byPath_;  // by hash, tracks of one hash in the order of the file
    // An open hash table of track numbers, one higher, made when it is first asked for: every file that is
    // matched looks here for each of the paths that it may have.
    mutable std::once_flag isTabulated_;
    mutable std::vector<std::uint32_t> byLoosePath_;
};

/// Reads elements of a collection, one at a time; one thread at a time.
class ElementReader {
  public:
    /// Who goes through the file in its order has it read on, by that many bytes at a time.
    explicit ElementReader(std::shared_ptr<const CollectionIndex> index, std::uint64_t ahead = 0)
        : index_(std::move(index)), ahead_(ahead) {}
    const CollectionIndex& index() const { return *index_; }

    /// The bytes of a span as UTF-8, valid until the next call. None, with a log line, when the file no
    /// longer holds what the index says; hasFailed() then.
    std::optional<std::string_view> text(const Span& span);
    /// The element in it, valid until the next call; none without a text.
    XMLElement element(const Span& span);
    /// The text that was read last, and the bytes that it was made of.
    std::string_view lastText() const { return isDecoded_ ? text_ : bytes_; }
    std::string_view lastBytes() const { return bytes_; }
    /// The path of a track, and what it says of its file; null and nothing without a text.
    ZALNullableString path(std::uint32_t number);
    ZALTrackIdentity identity(std::uint32_t number);
    /// The track, valid until the next call; null without a text.
    std::unique_ptr<ZALCollectionTrack> track(std::uint32_t number);
    /// The track of an element that was read.
    std::unique_ptr<ZALCollectionTrack> trackOf(const XMLElement& element) const;
    /// The last track with this path, which is in canonical decomposition, and its number; null without one.
    std::unique_ptr<ZALCollectionTrack> find(std::string_view path, std::uint32_t& number);
    /// The white space in front of a place, as far as it is looked at.
    std::string blankInFrontOf(std::uint64_t place) const;
    /// What stands between a track and the one in front of it, when that is a little white space of one byte
    /// a character; else empty.
    std::string gapBefore(std::uint32_t number);
    bool hasFailed() const { return hasFailed_; }

  private:
    std::optional<std::string_view> bytesOf(std::uint64_t begin, std::uint64_t end);

    const std::shared_ptr<const CollectionIndex> index_;
    const std::uint64_t ahead_;
    std::uint64_t windowBegin_ = 0;
    std::string window_;  // what was read last, from there on
    std::string_view bytes_;
    std::string text_;
    bool isDecoded_ = false;
    XMLDocument document_;
    bool hasFailed_ = false;
};

}  // namespace zal
