#pragma once

#include "stores/ID3v1Store.h"
#include "stores/ID3v2Store.h"
#include "stores/XiphStore.h"

#include <flacpicture.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zal {

using FLACPicture = std::shared_ptr<const TagLib::FLAC::Picture>;

/// The tags of a FLAC file: the first comment block, the picture blocks, and ID3 tags around the stream.
/// Further comment blocks and ID3v2 tags are read and stay as they are.
class FLACFile {
  public:
    /// Null when the stream's file is no FLAC file, and when TagLib must not see its tags.
    static std::unique_ptr<FLACFile> open(TagLibStream& stream);

    TagLib::Ogg::XiphComment& comment() { return comments_.front().comment(); }
    const TagLib::Ogg::XiphComment& comment() const { return comments_.front().comment(); }
    bool hasComment() const;
    /// All, the first one first.
    const std::vector<XiphStore>& comments() const { return comments_; }

    /// Makes the fields of the first comment those of another file, byte for byte.
    void replaceFields(const FLACFile& other) { comments_.front().replaceFields(other.comments_.front()); }

    /// A picture does not change; another one takes its place.
    const std::vector<FLACPicture>& pictures() const { return pictures_; }
    void setPictures(std::vector<FLACPicture> pictures) { pictures_ = std::move(pictures); }
    /// The same with the blocks that cannot be read.
    void removeAllPictures();

    ID3v2Store& v2() { return *v2_; }
    bool hasV2() const { return v2_->room() > 0; }
    std::vector<const TagLib::ID3v2::Tag*> v2Tags() const;
    const RawTag& rawV2() const { return v2_->raw(); }
    ID3v1Store* v1() const { return v1_.get(); }
    ID3v1Store& makeV1();

    /// Puts what changed into the stream; nothing when nothing did. Gives the reason why the file cannot be
    /// saved, or an empty text.
    std::string write();
    /// Takes the file as it is after that was committed.
    void accept();

  private:
    struct Block {
        unsigned type = 0;
        std::uint64_t place = 0;  // of its header
        std::uint32_t size = 0;   // of its content
        FLACPicture picture{};    // as which it was read
    };
    struct NewBlock {
        unsigned type = 0;
        TagLib::ByteVector content;
        FLACPicture picture{};
    };

    explicit FLACFile(TagLibStream& stream) : stream_(stream) {}

    bool readTags();
    bool readBlocks();
    bool readContents();
    TagLib::ByteVector contentOf(const Block& block) const;
    TagLib::ByteVector contentOf(const FLACPicture& picture) const;
    static bool isPadding(const Block& block);
    bool arePicturesChanged() const;
    std::vector<NewBlock> newBlocks(const TagLib::ByteVector& comment) const;
    std::string writeBlocks();
    bool isAsWritten(std::uint64_t behind) const;

    TagLibStream& stream_;
    std::uint64_t begin_ = 0;  // of the first block
    std::uint64_t audio_ = 0;
    std::vector<Block> blocks_;
    std::vector<XiphStore> comments_;  // never empty
    std::vector<FLACPicture> pictures_;
    bool removesUnread_ = false;
    std::unique_ptr<ID3v2Store> v2_;
    std::vector<std::unique_ptr<ID3v2Store>> further_;
    std::unique_ptr<ID3v1Store> v1_;
    bool isV1InFile_ = false;
    ID3v2Edit edit_;
    std::vector<NewBlock> made_;  // what a save is about to write
    bool areBlocksWritten_ = false;
    bool isV1Written_ = false;
};

}  // namespace zal
