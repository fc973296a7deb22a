#pragma once

#include "stores/ID3v2Store.h"
#include "stores/InfoList.h"
#include "walks/FormWalk.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zal {

/// The tags of a WAV or AIFF file: the ID3v2 tag in its first ID3 chunk and, in WAV, the first INFO list.
/// Further ones are read and stay as they are. Chunks are edited where they stand; new ones come last.
class FormFile {
  public:
    /// Null when the stream's file is none of its kind, and when TagLib must not see its tags.
    static std::unique_ptr<FormFile> openWAV(TagLibStream& stream);
    static std::unique_ptr<FormFile> openAIFF(TagLibStream& stream);

    ID3v2Store& v2() { return *v2_; }
    const ID3v2Store& v2() const { return *v2_; }
    bool hasV2() const { return v2_->room() > 0; }
    std::vector<const TagLib::ID3v2::Tag*> v2Tags() const;
    const RawTag& rawV2() const { return v2_->raw(); }

    /// The INFO list that is written; the ones behind it follow in infos().
    TagLib::RIFF::Info::Tag& info() { return infos_.front().tag(); }
    const std::vector<InfoList>& infos() const { return infos_; }
    bool hasInfo() const { return infoChunk_.has_value(); }

    /// The content of the first LIST chunk, whatever its type; empty without one.
    TagLib::ByteVector firstList() const;
    /// Has the next save replace the first LIST chunk of the same type, or add one. Nothing else is to be set
    /// in the INFO list then.
    void setList(const TagLib::ByteVector& content) { newList_ = content; }
    /// Has the next save write the sizes of a file that lacks them, also when nothing else changed.
    void setSizes() { setsSizes_ = true; }
    bool isUnsized() const { return walk_.isUnsized; }

    /// Puts what changed into the stream; nothing when nothing did. Gives the reason why the file cannot be
    /// saved, or an empty text.
    std::string write();
    /// Takes the file as it is after that was committed.
    void accept();
    /// Goes on with another stream over the same tags, whose other chunks may have changed. What was set
    /// stays set. False when that cannot be.
    bool moveTo(TagLibStream& stream);

  private:
    struct Edit {
        std::optional<std::size_t> chunk;  // null for a new one
        std::array<char, 4> id{};
        TagLib::ByteVector content;
        std::uint64_t replaced = 0;  // of the chunk's content, from its beginning
    };

    FormFile(TagLibStream& stream, FormKind kind) : stream_(&stream), kind_(kind) {}

    bool read();
    bool readTag(std::size_t chunk);
    void readInfo();
    void takeWalk(FormWalk walk);
    std::optional<std::size_t> listChunk(const TagLib::ByteVector& type) const;
    std::uint64_t paddingBehind(std::size_t chunk) const;

    std::vector<Edit> edits();
    std::uint64_t sizeAfter(const Edit& edit) const;
    std::uint64_t shiftBefore(const std::vector<Edit>& edits, const FormChunk& chunk) const;
    void change(const Edit& edit);
    void addPadding();
    void append(const Edit& edit, std::uint64_t place);
    std::uint32_t sizeAt(std::uint64_t place) const;
    void writeSize(std::uint64_t place, std::uint64_t size);
    std::string whyNotAsWritten(const std::vector<Edit>& edits);

    TagLibStream* stream_;
    const FormKind kind_;
    FormWalk walk_;
    std::unique_ptr<ID3v2Store> v2_;
    std::optional<std::size_t> tagChunk_;
    std::vector<std::unique_ptr<ID3v2Store>> further_;
    std::vector<InfoList> infos_;  // never empty
    std::optional<std::size_t> infoChunk_;
    std::optional<TagLib::ByteVector> newList_;
    bool setsSizes_ = false;
    ID3v2Edit edit_;
    bool isWritten_ = false;  // by a save that is not committed yet
    FormWalk walkAfter_;      // of what it wrote
};

}  // namespace zal
