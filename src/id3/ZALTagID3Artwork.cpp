// The pictures of the ID3 family: APIC frames.

#include <zaltag/id3/ZALTagID3.h>

#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "id3/TagLibBytes.h"
#include "id3/TagLibText.h"
#include "platform/Log.h"
#include "tag/Artwork.h"

#include <attachedpictureframe.h>

#include <memory>

namespace {

using TagLib::ID3v2::AttachedPictureFrame;
using TagLib::ID3v2::Frame;

constexpr char pictureID[] = "APIC";

void logNoPicture() {
    zal::log("ZALTag: APIC frame ignored after failed cast");
}

// An APIC entry that TagLib does not hold as a picture (an encrypted one, say) stays where it is, unless all
// go.
class Pictures final : public zal::ArtworkContainer {
  public:
    // The tag can be null: then there are no pictures, and none can be added.
    explicit Pictures(TagLib::ID3v2::Tag* tag) : tag_(tag) {}

    std::vector<zal::StoredPicture> pictures(bool logged) const override {
        std::vector<zal::StoredPicture> out;
        for (Frame* frame : frames()) {
            const auto* picture = dynamic_cast<AttachedPictureFrame*>(frame);
            if (picture != nullptr) {
                out.push_back({zal::viewOf(picture->picture()),
                               zal::stringWithTagLibString(picture->mimeType()),
                               static_cast<std::uint32_t>(picture->type())});
            } else if (logged) {
                logNoPicture();
            }
        }
        return out;
    }

    bool canBackUp() const override {
        const auto all = frames();
        if (!all.empty() && dynamic_cast<AttachedPictureFrame*>(all.front()) != nullptr) return true;
        logNoPicture();
        return false;
    }

    void clear() override {
        if (tag_ != nullptr) tag_->removeFrames(pictureID);
    }

    void replaceFirst(ZALData data, std::optional<std::uint32_t> type) override {
        for (Frame* frame : frames()) {
            auto* picture = dynamic_cast<AttachedPictureFrame*>(frame);
            if (picture == nullptr) continue;
            picture->setPicture(zal::TagLibBytes(data));
            if (type) picture->setType(static_cast<AttachedPictureFrame::Type>(*type));
            return;
        }
    }

    void setPictures(std::vector<zal::NewPicture> pictures) override {
        if (tag_ == nullptr) return;
        for (Frame* frame : frames()) {
            if (dynamic_cast<AttachedPictureFrame*>(frame) != nullptr) tag_->removeFrame(frame);
        }
        for (const zal::NewPicture& picture : pictures) {
            auto* frame = new AttachedPictureFrame;
            frame->setMimeType(zal::TagLibString(picture.mimeType));
            frame->setPicture(zal::TagLibBytes(picture.data));
            frame->setType(static_cast<AttachedPictureFrame::Type>(picture.type));
            tag_->addFrame(frame);
        }
    }

  private:
    std::vector<Frame*> frames() const {
        return tag_ != nullptr ? zal::framesWithID(*tag_, pictureID) : std::vector<Frame*>();
    }

    TagLib::ID3v2::Tag* tag_;
};

}  // namespace

zal::Artwork ZALTagID3::artwork() const {
    return {std::make_unique<Pictures>(state().v2Tag), zal::id3Artwork};
}

bool ZALTagID3::hasImages() const {
    return state().v2Tag != nullptr && zal::firstFrame(*state().v2Tag, pictureID) != nullptr;
}
bool ZALTagID3::hasOriginalImage() const {
    return originalImage() != nullptr;
}
bool ZALTagID3::hasCustomizedImage() const {
    return customizedImage() != nullptr;
}
ZALImagePtr ZALTagID3::originalImage() const {
    return artwork().originalImage();
}
ZALImagePtr ZALTagID3::customizedImage() const {
    return artwork().customizedImage();
}

ZALArray<ZALTagImageDictionary> ZALTagID3::allImages() const {
    return artwork().allImages();
}
void ZALTagID3::setAllImages(const ZALArray<ZALTagImageDictionary>& images) {
    artwork().setAllImages(images);
}
ZALArray<ZALData> ZALTagID3::allImageData() const {
    return artwork().allImageData();
}
ZALArray<ZALTagStoredImage> ZALTagID3::allStoredImages() const {
    return artwork().allStoredImages();
}

bool ZALTagID3::replaceOriginalImage(const ZALImagePtr& image) {
    return state().v2Tag != nullptr && artwork().replaceOriginalImage(image);
}
bool ZALTagID3::replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) {
    return state().v2Tag != nullptr && artwork().replacePrimaryImage(image, markAsCustom);
}
void ZALTagID3::backupOriginalImageAndSetCustomImage(const ZALImagePtr& image) {
    artwork().backupOriginalImageAndSetCustomImage(image);
}
void ZALTagID3::restoreOriginalImage() {
    artwork().restoreOriginalImage();
}
