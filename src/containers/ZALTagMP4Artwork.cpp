// The pictures of an MP4 file: the item "covr".

#include <zaltag/containers/ZALTagMP4.h>

#include "containers/MP4State.h"
#include "tag/TagContents.h"
#include "taglib/TagLibBytes.h"

#include <memory>

namespace {

using TagLib::MP4::CoverArt;
using TagLib::MP4::CoverArtList;

constexpr char coverItem[] = "covr";

class Covers final : public zal::ArtworkContainer {
  public:
    explicit Covers(TagLib::MP4::Tag& tag) : tag_(tag) {}

    std::vector<zal::StoredPicture> pictures(bool) const override {
        std::vector<zal::StoredPicture> out;
        if (!tag_.contains(coverItem)) return out;
        for (const CoverArt& cover : tag_.item(coverItem).toCoverArtList()) {
            out.push_back({.data = zal::viewOf(cover.data()), .mimeType = {}});
        }
        return out;
    }

    // Listing adds an empty item where there is none, as the files have it.
    void prepareListing() override {
        if (!tag_.contains(coverItem)) tag_.setItem(coverItem, CoverArtList());
    }

    bool canBackUp() const override { return true; }

    void clear() override { tag_.removeItem(coverItem); }

    void replace(std::size_t index, ZALData data, std::optional<std::uint32_t>) override {
        CoverArtList covers;
        for (const CoverArt& cover : tag_.item(coverItem).toCoverArtList()) {
            covers.append(index-- == 0 ? CoverArt(CoverArt::PNG, zal::TagLibBytes(data)) : cover);
        }
        tag_.setItem(coverItem, covers);
    }

    // Every cover that is made anew is called a PNG, whatever its bytes are, as the files have it.
    void setPictures(std::vector<zal::NewPicture> pictures) override {
        CoverArtList covers;
        for (const zal::NewPicture& picture : pictures) {
            covers.append(CoverArt(CoverArt::PNG, zal::TagLibBytes(picture.data)));
        }
        tag_.setItem(coverItem, covers);
    }

  private:
    TagLib::MP4::Tag& tag_;
};

}  // namespace

void ZALTagMP4::addPictures(zal::TagContents& contents) {
    contents.setArtwork(std::make_unique<Covers>(state_->file->tag()), zal::mp4Artwork);
}
