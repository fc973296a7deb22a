#include "stores/ID3v1Store.h"

namespace zal {

using TagLib::ByteVector;

// Reading the bytes is TagLib's, but closed to others.
struct ID3v1Store::Tag final : TagLib::ID3v1::Tag {
    void take(const ByteVector& bytes) { parse(bytes); }
};

ID3v1Store::ID3v1Store() : tag_(std::make_shared<Tag>()), original_(std::make_shared<Tag>()) {}

std::unique_ptr<ID3v1Store> ID3v1Store::read(TagLibStream& stream) {
    if (stream.length() < static_cast<long>(length)) return nullptr;
    stream.seek(-static_cast<long>(length), TagLib::IOStream::End);
    const ByteVector bytes = stream.readBlock(length);
    if (bytes.size() != length || !bytes.startsWith("TAG")) return nullptr;
    auto store = std::make_unique<ID3v1Store>();
    store->bytes_ = bytes;
    store->tag_->take(bytes);
    store->original_->take(bytes);
    return store;
}

TagLib::ID3v1::Tag& ID3v1Store::tag() {
    return *tag_;
}
const TagLib::ID3v1::Tag& ID3v1Store::tag() const {
    return *tag_;
}
const TagLib::ID3v1::Tag& ID3v1Store::original() const {
    return *original_;
}

ByteVector ID3v1Store::merged() const {
    const Tag& now = *tag_;
    const Tag& before = *original_;
    ByteVector out = now.render();
    if (bytes_.isEmpty()) return out;
    const auto keep = [&](bool isSame, int first, int last) {
        for (int at = first; isSame && at < last; ++at) {
            out[at] = bytes_[at];
        }
    };
    const bool hasTrack = now.track() != 0;
    keep(now.title() == before.title(), 3, 33);
    keep(now.artist() == before.artist(), 33, 63);
    keep(now.album() == before.album(), 63, 93);
    keep(now.year() == before.year(), 93, 97);
    // The number of the track takes the last two bytes of the comment.
    keep(now.comment() == before.comment(), 97, now.track() == before.track() && !hasTrack ? 127 : 125);
    keep(now.track() == before.track(), 125, hasTrack ? 127 : 125);
    keep(now.genreNumber() == before.genreNumber() || now.genre() == before.genre(), 127, 128);
    return out;
}

void ID3v1Store::accept() {
    bytes_ = merged();
    original_ = std::make_shared<Tag>();
    original_->take(bytes_);
}

}  // namespace zal
