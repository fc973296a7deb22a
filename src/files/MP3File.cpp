#include "files/MP3File.h"

#include "base/Limits.h"
#include "walks/MP3Layout.h"
#include "walks/MPEGFrames.h"

#include <algorithm>

namespace zal {

std::unique_ptr<MP3File> MP3File::open(TagLibStream& stream) {
    std::unique_ptr<MP3File> file(new MP3File(stream));
    if (!file->readTags()) return nullptr;
    const bool hasTag = file->hasV2() || file->v1_ != nullptr || hasAPETag(stream);
    return hasTag || holdsMPEGFrame(stream) ? std::move(file) : nullptr;
}

bool MP3File::readTags() {
    v1_ = ID3v1Store::read(stream_);
    isV1InFile_ = v1_ != nullptr;
    std::vector<std::uint64_t> places;
    if (const auto first = positionOfID3v2(stream_)) places = positionsOfID3v2(stream_, *first);
    const bool isInFront = !places.empty();
    if (isInFront) position_ = places.front();
    const auto length = static_cast<std::uint64_t>(stream_.length());
    if (isInFront && std::min(endOfID3v2(stream_, position_), length) - position_ > limits::formTag)
        return false;
    if (const auto last = positionOfLastID3v2(stream_)) {
        if (std::ranges::find(places, *last) == places.end()) places.push_back(*last);
    }
    for (const std::uint64_t place : places) {
        const bool isFirst = isInFront && place == places.front();
        auto store =
            ID3v2Store::read(stream_, place, length, isFirst ? GenreNumbers::named : GenreNumbers::kept);
        if (store == nullptr && isFirst) return false;
        if (store == nullptr) continue;
        if (isFirst)
            v2_ = std::move(store);
        else
            further_.push_back(std::move(store));
    }
    if (v2_ == nullptr) v2_ = std::make_unique<ID3v2Store>();
    return true;
}

std::vector<const TagLib::ID3v2::Tag*> MP3File::v2Tags() const {
    return tagsOf(*v2_, further_);
}

ID3v1Store& MP3File::makeV1() {
    if (v1_ == nullptr) v1_ = std::make_unique<ID3v1Store>();
    return *v1_;
}

std::string MP3File::write(bool stripsV1, const std::function<bool()>& fill) {
    const auto length = static_cast<std::uint64_t>(stream_.length());
    edit_ = v2_->edit(length);
    isV1Written_ = isV1Stripped_ = false;
    const auto isV1Changed = [this] {
        return v1_ != nullptr && (!isV1InFile_ ? !v1_->tag().isEmpty() : v1_->isChanged());
    };
    const bool strips = stripsV1 && isV1InFile_;
    if (!edit_.isChanged && !strips && (stripsV1 || !isV1Changed())) return edit_.refusal;
    if (fill && fill()) edit_ = v2_->edit(length);
    if (!edit_.refusal.empty()) return edit_.refusal;
    if (const char* reason = whyNotWritableMP3(stream_); *reason != 0) return reason;
    isV1Written_ = !stripsV1 && isV1Changed();
    if (strips) stripV1();
    if (isV1Written_) {
        const std::uint64_t place = isV1InFile_ ? length - ID3v1Store::length : length;
        stream_.insert(v1_->merged(), place, isV1InFile_ ? ID3v1Store::length : 0);
    }
    if (edit_.isChanged) stream_.insert(edit_.bytes, position_, v2_->room());
    return {};
}

void MP3File::stripV1() {
    const auto length = static_cast<std::uint64_t>(stream_.length()) - ID3v1Store::length;
    stream_.truncate(static_cast<long>(length - lengthOfEnhancedTag(stream_, length)));
    isV1Stripped_ = true;
}

void MP3File::accept() {
    v2_->accept(edit_);
    if (isV1Written_) v1_->accept();
    isV1InFile_ = (isV1InFile_ && !isV1Stripped_) || isV1Written_;
    isV1Written_ = isV1Stripped_ = false;
}

}  // namespace zal
