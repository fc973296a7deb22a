#pragma once

#include "collection/CollectionIndex.h"
#include "collection/PackedRequest.h"
#include "platform/FileReplacement.h"

#include <zaltag/collection/ZALCollectionQueue.h>
#include <zaltag/platform/ZALHost.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zal {

/// A track that a save writes, and what is asked of it; null when it is only brought up to date.
struct TrackChange {
    std::uint32_t number = 0;
    const PackedRequests::value_type* request = nullptr;
};

/// Writes a track into its element as it is to be.
void bringUpToDate(ZALCollectionTrack& track, const TrackChange& change);

/// A range around the tracks that is replaced by markup, in the three parts that it consists of.
struct FrameEdit {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::string before;
    std::string part;  ///< what the new file's frame knows as `names`
    std::string after;
    enum class Part { none, rootTag, firstNode } names = Part::none;
};

/// What one save changes.
struct CollectionChanges {
    ZALCollectionSaveMode mode = ZALCollectionSaveMode::everyTrackWithCues;
    std::shared_ptr<const CollectionIndex> index;  ///< of what; null for what is loaded, without any tracks
    std::vector<TrackChange> tracks;               ///< in the order of the file
    std::optional<FrameEdit> playlists;
};

/// Makes a track anew, or only what a request means; the reader's thread.
class TrackRenderer {
  public:
    TrackRenderer(std::shared_ptr<const CollectionIndex> index, ZALCollectionSaveMode mode,
                  XMLEncoding encoding)
        : reader_(std::move(index), ahead), mode_(mode), encoding_(encoding) {}

    struct Result {
        std::string gap = {};  ///< as ElementReader::gapBefore() gives it
        std::string bytes;
        std::uint64_t checksum = 0;
        std::string fileWithoutDate = {};
        std::size_t cues = 0;
        bool hasMarks = false;
        bool isDone = false;
    };
    Result render(const TrackChange& change);

  private:
    Result renderAnew(const TrackChange& change, const XMLElement& element);
    Result splice(const TrackChange& change, const XMLElement& element);

    static constexpr std::uint64_t ahead = 65536;
    ElementReader reader_;
    const ZALCollectionSaveMode mode_;
    const XMLEncoding encoding_;
    XMLDocument scratch_;
};

/// One pass over the file that was read, into a new one.
class CollectionWriter {
  public:
    CollectionWriter(std::shared_ptr<const CollectionIndex> index, const CollectionChanges& changes);

    /// False when it could not be done: the replacement has a reason, or reason() has.
    bool write(FileReplacement& out);
    const std::string& reason() const { return reason_; }

    /// The index of the new file; null when it must be read for that.
    std::shared_ptr<const CollectionIndex> index(std::unique_ptr<ZALFileHandle> file,
                                                 const ZALFileAttributes& attributes);

  private:
    // Tracks that are made at once.
    struct Window {
        std::vector<TrackChange> changes;
        std::vector<TrackRenderer::Result> results;
    };

    void addHeaderEdit();
    bool addStampEdit();
    bool writeAll(FileReplacement& out);
    void gatherMarks();
    bool nextTrack(TrackChange& change);
    bool writeBefore(FileReplacement& out, std::uint64_t end);
    bool writeTracks(FileReplacement& out, std::uint64_t end);
    bool renderBeside(Window& next, FileReplacement& out, const Window& made);
    bool writeWindow(FileReplacement& out, const Window& window);
    bool writeEdit(FileReplacement& out, const FrameEdit& edit);
    bool copyUpTo(FileReplacement& out, std::uint64_t end);
    bool copyDecoded(FileReplacement& out, std::uint64_t end);
    bool append(FileReplacement& out, const std::string& markup);
    bool fail(const char* reason);

    const std::shared_ptr<const CollectionIndex> source_;
    const CollectionChanges& changes_;
    const bool isEvery_;
    XMLEncoding encoding_;  // of the new file
    std::vector<FrameEdit> edits_;
    TrackRenderer renderers_[2];
    std::string reason_;
    std::size_t withoutDate_ = 0;
    std::string firstWithoutDate_;

    std::uint64_t position_ = 0;  // in the source
    std::uint64_t written_ = 0;
    std::uint32_t next_ = 0;         // the first track that is not in made_ yet
    std::uint32_t nextWritten_ = 0;  // where the search for tracks to write goes on
    std::size_t nextChange_ = 0;
    std::vector<IndexedTrack> made_;
    CollectionFrame frame_;
    XMLForm form_;
    // Places of frame_, in the order of the source, that are still to be moved.
    std::vector<std::uint64_t*> marks_;
    std::size_t nextMark_ = 0;
};

}  // namespace zal
