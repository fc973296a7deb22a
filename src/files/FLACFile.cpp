#include "files/FLACFile.h"

#include "base/Limits.h"
#include "taglib/TagLibBytes.h"
#include "walks/MP3Layout.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::FLAC::Picture;

constexpr unsigned paddingType = 1;
constexpr unsigned commentType = 4;
constexpr unsigned pictureType = 6;
constexpr unsigned char lastFlag = 0x80;
constexpr std::uint64_t headerSize = 4;
constexpr std::uint64_t blockMax = 0xFFFFFF;  // that the length of a block can say
constexpr std::uint64_t paddingMin = 4096;
constexpr std::uint64_t paddingMax = 1 << 20;
constexpr std::uint64_t paddingShare = 100;  // of the file's length

void append(ByteVector& chain, unsigned type, const ByteVector& content) {
    chain.append(static_cast<char>(type)).append(ByteVector::fromUInt(content.size()).mid(1));
    chain.append(content);
}

}  // namespace

// Reading

std::unique_ptr<FLACFile> FLACFile::open(TagLibStream& stream) {
    std::unique_ptr<FLACFile> file(new FLACFile(stream));
    return file->readBlocks() && file->readContents() && file->readTags() ? std::move(file) : nullptr;
}

bool FLACFile::readBlocks() {
    blocks_.clear();
    std::uint64_t place = endOfID3v2(stream_, 0);
    if (place > limits::formTag || stream_.bytesAt(place, headerSize) != "fLaC") return false;
    begin_ = place += headerSize;
    const auto length = static_cast<std::uint64_t>(stream_.length());
    for (bool isLast = false; !isLast;) {
        std::array<std::uint8_t, headerSize> header{};
        if (blocks_.size() == limits::flacBlocks || stream_.readAt(place, header) < header.size())
            return false;
        const std::uint32_t size = std::uint32_t{header[1]} << 16 | std::uint32_t{header[2]} << 8 | header[3];
        if (size > length - place - headerSize) return false;
        isLast = (header[0] & lastFlag) != 0;
        blocks_.push_back({header[0] & 0x7FU, place, size});
        place += headerSize + size;
    }
    audio_ = place;
    return true;
}

bool FLACFile::readContents() {
    for (Block& block : blocks_) {
        if (block.type == commentType) comments_.emplace_back(contentOf(block));
        if (block.type != pictureType) continue;
        auto picture = std::make_shared<Picture>();
        if (!picture->parse(contentOf(block))) continue;
        block.picture = picture;
        pictures_.push_back(std::move(picture));
    }
    if (comments_.empty()) comments_.emplace_back();
    return true;
}

bool FLACFile::readTags() {
    v1_ = ID3v1Store::read(stream_);
    isV1InFile_ = v1_ != nullptr;
    for (const std::uint64_t place : positionsOfID3v2(stream_, 0)) {
        auto store = ID3v2Store::read(stream_, place, begin_ - headerSize);
        if (store == nullptr && v2_ == nullptr) return false;
        if (v2_ == nullptr) {
            v2_ = std::move(store);
        } else if (store != nullptr) {
            further_.push_back(std::move(store));
        }
    }
    if (v2_ == nullptr) v2_ = std::make_unique<ID3v2Store>();
    return true;
}

ByteVector FLACFile::contentOf(const Block& block) const {
    return stream_.bytesAt(block.place + headerSize, block.size);
}

bool FLACFile::hasComment() const {
    return std::ranges::any_of(blocks_, [](const Block& block) { return block.type == commentType; });
}

void FLACFile::removeAllPictures() {
    pictures_.clear();
    removesUnread_ = true;
}

std::vector<const TagLib::ID3v2::Tag*> FLACFile::v2Tags() const {
    return hasV2() ? tagsOf(*v2_, further_) : std::vector<const TagLib::ID3v2::Tag*>();
}

ID3v1Store& FLACFile::makeV1() {
    if (v1_ == nullptr) v1_ = std::make_unique<ID3v1Store>();
    return *v1_;
}

// Writing

bool FLACFile::isPadding(const Block& block) {
    return block.type == paddingType;
}

bool FLACFile::arePicturesChanged() const {
    std::vector<FLACPicture> old;
    for (const Block& block : blocks_) {
        if (block.type == pictureType && block.picture == nullptr && removesUnread_) return true;
        if (block.picture != nullptr) old.push_back(block.picture);
    }
    return pictures_ != old;
}

ByteVector FLACFile::contentOf(const FLACPicture& picture) const {
    const auto block = std::ranges::find(blocks_, picture, &Block::picture);
    return block != blocks_.end() ? contentOf(*block) : picture->render();
}

// All but padding, in their order: pictures take the places of pictures, what is new comes last.
std::vector<FLACFile::NewBlock> FLACFile::newBlocks(const ByteVector& comment) const {
    std::vector<NewBlock> made;
    const bool isWritten = arePicturesChanged();
    bool hasComment = false;
    std::size_t next = 0;
    const auto addPicture = [&] {
        const FLACPicture& picture = pictures_[next++];
        made.push_back({pictureType, contentOf(picture), picture});
    };
    for (const Block& block : blocks_) {
        if (isPadding(block)) continue;
        const bool isFirstComment = block.type == commentType && !hasComment;
        const bool isPicture = block.type == pictureType && (block.picture != nullptr || removesUnread_);
        if (isFirstComment) {
            made.push_back({commentType, comment});
            hasComment = true;
        } else if (!isPicture || !isWritten) {
            made.push_back({block.type, contentOf(block), block.picture});
        } else if (next < pictures_.size()) {
            addPicture();
        }
    }
    if (!hasComment && !comment.isEmpty()) made.push_back({commentType, comment});
    while (isWritten && next < pictures_.size()) {
        addPicture();
    }
    return made;
}

std::string FLACFile::writeBlocks() {
    std::uint64_t size = 0;
    for (const NewBlock& block : made_) {
        if (block.content.size() > blockMax)
            return fmt::format("a metadata block of {} bytes is too large", block.content.size());
        size += headerSize + block.content.size();
    }
    const std::uint64_t room = audio_ - begin_;
    const std::uint64_t most =
        std::clamp(static_cast<std::uint64_t>(stream_.length()) / paddingShare, paddingMin, paddingMax);
    const bool fits = size + headerSize <= room && room - size - headerSize <= most;
    const std::uint64_t padding = fits ? room - size - headerSize : paddingMin;
    ByteVector chain;
    for (const NewBlock& block : made_) {
        append(chain, block.type, block.content);
    }
    const unsigned last = chain.size();
    if (size != room) append(chain, paddingType, ByteVector(static_cast<unsigned>(padding), '\0'));
    if (size != room) {
        chain[static_cast<int>(last)] = static_cast<char>(paddingType | lastFlag);
    } else {
        const unsigned at = last - static_cast<unsigned>(headerSize) - made_.back().content.size();
        chain[static_cast<int>(at)] = static_cast<char>(made_.back().type | lastFlag);
    }
    stream_.insert(chain, begin_, room);
    return {};
}

std::string FLACFile::write() {
    const auto length = static_cast<std::uint64_t>(stream_.length());
    edit_ = v2_->edit(length);
    if (!edit_.refusal.empty()) return edit_.refusal;
    const ByteVector comment = comments_.front().merged();
    const bool isCommentChanged = comment != comments_.front().content();
    areBlocksWritten_ = isCommentChanged || arePicturesChanged();
    if (isCommentChanged && !comments_.front().isWhole()) return "its comment block is damaged";
    isV1Written_ = v1_ != nullptr && (isV1InFile_ ? v1_->isChanged() : !v1_->tag().isEmpty());
    made_ = areBlocksWritten_ ? newBlocks(comment) : std::vector<NewBlock>();
    // From the end, so that places stay what they are.
    if (isV1Written_) {
        const std::uint64_t place = isV1InFile_ ? length - ID3v1Store::length : length;
        stream_.insert(v1_->merged(), place, isV1InFile_ ? ID3v1Store::length : 0);
    }
    const std::uint64_t behind = static_cast<std::uint64_t>(stream_.length()) - audio_;
    if (areBlocksWritten_) {
        if (std::string refusal = writeBlocks(); !refusal.empty()) return refusal;
    }
    if (edit_.isChanged) stream_.insert(edit_.bytes, 0, v2_->room());
    const bool isRight = (!areBlocksWritten_ && !edit_.isChanged) || isAsWritten(behind);
    return isRight ? "" : "its metadata blocks would not stay as they are";
}

// The blocks must be found again, in front of as much audio.
bool FLACFile::isAsWritten(std::uint64_t behind) const {
    FLACFile now(stream_);
    if (!now.readBlocks() || static_cast<std::uint64_t>(stream_.length()) - now.audio_ != behind)
        return false;
    std::erase_if(now.blocks_, isPadding);
    const auto isSame = [&now](const NewBlock& expected, const Block& block) {
        return block.type == expected.type && now.contentOf(block) == expected.content;
    };
    return !areBlocksWritten_ || std::ranges::equal(made_, now.blocks_, isSame);
}

void FLACFile::accept() {
    v2_->accept(edit_);
    if (isV1Written_) v1_->accept();
    isV1InFile_ = isV1InFile_ || isV1Written_;
    if (!areBlocksWritten_ && !edit_.isChanged) return;
    std::vector<FLACPicture> pictures;
    for (const NewBlock& block : made_) {
        pictures.push_back(block.picture);
    }
    for (const Block& block : blocks_) {
        if (!areBlocksWritten_ && !isPadding(block)) pictures.push_back(block.picture);
    }
    const auto comment = std::ranges::find(made_, commentType, &NewBlock::type);
    if (comment != made_.end()) comments_.front().accept(comment->content);
    made_.clear();
    removesUnread_ = false;
    readBlocks();
    auto picture = pictures.begin();
    for (Block& block : blocks_) {
        if (!isPadding(block) && picture != pictures.end()) block.picture = *picture++;
    }
}

}  // namespace zal
