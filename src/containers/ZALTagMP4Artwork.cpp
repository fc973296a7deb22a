// The pictures of an MP4 file: the item "covr".

#include <zaltag/containers/ZALTagMP4.h>

#include "containers/MP4State.h"
#include "id3/TagLibBytes.h"
#include "tag/Artwork.h"

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

zal::Artwork artwork(TagLib::MP4::Tag& tag) {
    return {std::make_unique<Covers>(tag), zal::mp4Artwork};
}

// Listing adds an empty item where there is none, which the next save writes, as the files have it.
TagLib::MP4::Tag& withCovers(TagLib::MP4::Tag& tag) {
    if (!tag.contains(coverItem)) tag.setItem(coverItem, CoverArtList());
    return tag;
}

}  // namespace

bool ZALTagMP4::hasImages() const {
    return !Covers(withCovers(*state_->tag)).pictures(false).empty();
}
bool ZALTagMP4::hasOriginalImage() const {
    return originalImage() != nullptr;
}
bool ZALTagMP4::hasCustomizedImage() const {
    return customizedImage() != nullptr;
}
ZALImagePtr ZALTagMP4::originalImage() const {
    return artwork(*state_->tag).originalImage();
}
ZALImagePtr ZALTagMP4::customizedImage() const {
    return artwork(*state_->tag).customizedImage();
}

ZALArray<ZALTagImageDictionary> ZALTagMP4::allImages() const {
    return artwork(withCovers(*state_->tag)).allImages();
}
void ZALTagMP4::setAllImages(const ZALArray<ZALTagImageDictionary>& images) {
    artwork(*state_->tag).setAllImages(images);
}
ZALArray<ZALData> ZALTagMP4::allImageData() const {
    return artwork(withCovers(*state_->tag)).allImageData();
}
ZALArray<ZALTagStoredImage> ZALTagMP4::allStoredImages() const {
    return artwork(*state_->tag).allStoredImages();
}

bool ZALTagMP4::replaceOriginalImage(const ZALImagePtr& image) {
    return artwork(*state_->tag).replaceOriginalImage(image);
}
bool ZALTagMP4::replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) {
    return artwork(*state_->tag).replacePrimaryImage(image, markAsCustom);
}
void ZALTagMP4::backupOriginalImageAndSetCustomImage(const ZALImagePtr& image) {
    artwork(*state_->tag).backupOriginalImageAndSetCustomImage(image);
}
void ZALTagMP4::restoreOriginalImage() {
    artwork(*state_->tag).restoreOriginalImage();
}
