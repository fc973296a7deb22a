#pragma once

#include "stores/FrameReader.h"
#include "taglib/TagLibStream.h"

#include <id3v2tag.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

/// How a save changes an ID3v2 tag.
struct ID3v2Edit {
    std::string refusal;       ///< why the tag cannot be saved; empty when it can
    bool isChanged = false;    ///< the caller changed something
    TagLib::ByteVector bytes;  ///< the new tag, as long as the old one where it fits; empty when the tag goes

  private:
    friend class ID3v2Store;
    std::vector<TagLib::ID3v2::Frame*> frames_;  // of the new tag's raw frames, null where TagLib holds none
    RawTag raw_;                                 // the new tag, taken apart again
};

/// One ID3v2 tag of a file: TagLib's frames for who reads and sets them, and the way back, on which every
/// frame that nobody changed keeps its bytes. Who sets frames says of which id. What such a frame was when
/// the file was read is found out at the save, by reading it again.
class ID3v2Store {
  public:
    /// The tag of a file that has none.
    ID3v2Store() = default;

    /// Reads the tag whose header stands at a place in the stream and that ends at another one at the latest.
    /// Null when TagLib must not see it. Without a header it is a tag that is not there.
    static std::unique_ptr<ID3v2Store> read(TagLibStream& stream, std::uint64_t position, std::uint64_t end,
                                            GenreNumbers genres = GenreNumbers::kept);

    const TagLib::ID3v2::Tag& tag() const { return tag_; }
    /// The tag for who changes frames of an id now, and no others.
    TagLib::ID3v2::Tag& tagToEdit(std::string_view id);
    /// The tag for who changes any frames, now or later.
    TagLib::ID3v2::Tag& tagToEdit();
    /// How long the tag is in the file; 0 when there is none.
    std::uint64_t room() const { return room_; }
    /// Whether the file's tag had a frame with this id of version 2.4, understood or not.
    bool hadFrame(std::string_view id) const;
    /// Whether the tag, as it is now, has neither a frame nor anything that nobody understands.
    bool isEmpty() const;

    /// What a save is to write at the place where the tag stands. `fileLength` bounds the padding.
    ID3v2Edit edit(std::uint64_t fileLength) const;
    /// Takes the file as it is after such an edit was committed.
    void accept(const ID3v2Edit& edit);

    /// The raw frames of the tag, as the file has them; empty without one.
    const RawTag& raw() const { return raw_; }
    /// Adds a frame to the tag that is written with these bytes of version 2.4, unless it is changed.
    void addRaw(const TagLib::ByteVector& bytes);

  private:
    struct Entry {
        std::string id;
        TagLib::ID3v2::Frame* frame = nullptr;  // null when TagLib does not hold it; may be gone meanwhile
        bool isRenewed = false;                 // see ReadFrame
        bool isMerged = false;
    };
    class Merge;

    bool isEdited(const std::string& id) const { return isEditedWhole_ || edited_.contains(id); }

    TagLib::ID3v2::Tag tag_;
    GenreNumbers genres_ = GenreNumbers::kept;
    std::uint64_t room_ = 0;
    RawTag raw_;
    std::vector<Entry> entries_;  // one for each raw frame
    std::set<std::string, std::less<>> edited_;
    bool isEditedWhole_ = false;
    std::map<TagLib::ID3v2::Frame*, TagLib::ByteVector> added_;  // with these bytes
    std::vector<TagLib::ByteVector> addedUnread_;                // TagLib does not hold them
};

/// The tags of a file in its order: the one that is written, and those behind it.
std::vector<const TagLib::ID3v2::Tag*> tagsOf(const ID3v2Store& first,
                                              const std::vector<std::unique_ptr<ID3v2Store>>& further);

}  // namespace zal
