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
    // The first tag is the one that is written; both can be null: then there are no pictures, and none can be
    // added.
    Pictures(zal::ID3v2Store* store, const TagLib::ID3v2::Tag* read)
        : store_(store), tag_(store != nullptr ? &store->tag() : nullptr), read_(read) {}

    std::vector<zal::StoredPicture> pictures(bool logged) const override {
        std::vector<zal::StoredPicture> out;
        for (const Frame* frame : frames(read_)) {
            const auto* picture = dynamic_cast<const AttachedPictureFrame*>(frame);
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
        const auto all = frames(read_);
        if (!all.empty() && dynamic_cast<AttachedPictureFrame*>(all.front()) != nullptr) return true;
        logNoPicture();
        return false;
    }

    void clear() override {
        if (store_ != nullptr) store_->tagToEdit(pictureID).removeFrames(pictureID);
    }

    void replace(std::size_t index, ZALData data, std::optional<std::uint32_t> type) override {
        if (read_ != tag_) return copyThenReplace(index, std::move(data), type);
        for (Frame* frame : frames(&store_->tagToEdit(pictureID))) {
            auto* picture = dynamic_cast<AttachedPictureFrame*>(frame);
            if (picture == nullptr || index-- != 0) continue;
            picture->setPicture(zal::TagLibBytes(data));
            if (type) picture->setType(static_cast<AttachedPictureFrame::Type>(*type));
            return;
        }
    }

    void setPictures(std::vector<zal::NewPicture> pictures) override {
        if (store_ == nullptr) return;
        TagLib::ID3v2::Tag& tag = store_->tagToEdit(pictureID);
        for (Frame* frame : frames(&tag)) {
            if (dynamic_cast<AttachedPictureFrame*>(frame) != nullptr) tag.removeFrame(frame);
        }
        for (const zal::NewPicture& picture : pictures) {
            auto* frame = new AttachedPictureFrame;
            frame->setMimeType(zal::TagLibString(picture.mimeType));
            frame->setPicture(zal::TagLibBytes(picture.data));
            frame->setType(static_cast<AttachedPictureFrame::Type>(picture.type));
            tag.addFrame(frame);
        }
    }

  private:
    // The pictures of a tag that stays as it is come into the one that is written.
    void copyThenReplace(std::size_t index, ZALData data, std::optional<std::uint32_t> type) {
        std::vector<zal::NewPicture> all;
        for (const zal::StoredPicture& picture : pictures(false)) {
            all.push_back({{picture.data.begin(), picture.data.end()}, picture.mimeType, picture.type});
        }
        all[index].data = std::move(data);
        all[index].type = type.value_or(all[index].type);
        setPictures(std::move(all));
    }

    static std::vector<Frame*> frames(const TagLib::ID3v2::Tag* tag) {
        return tag != nullptr ? zal::framesWithID(*tag, pictureID) : std::vector<Frame*>();
    }

    zal::ID3v2Store* store_;
    const TagLib::ID3v2::Tag* tag_;
    const TagLib::ID3v2::Tag* read_;
};

}  // namespace

zal::Artwork ZALTagID3::artwork() const {
    return {std::make_unique<Pictures>(state().v2, state().v2TagWith(pictureID)), zal::id3Artwork};
}

bool ZALTagID3::hasImages() const {
    const auto* tag = state().v2TagWith(pictureID);
    return tag != nullptr && zal::firstFrame(*tag, pictureID) != nullptr;
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
    return state().v2 != nullptr && artwork().replaceOriginalImage(image);
}
bool ZALTagID3::replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) {
    return state().v2 != nullptr && artwork().replacePrimaryImage(image, markAsCustom);
}
void ZALTagID3::backupOriginalImageAndSetCustomImage(const ZALImagePtr& image) {
    artwork().backupOriginalImageAndSetCustomImage(image);
}
void ZALTagID3::restoreOriginalImage() {
    artwork().restoreOriginalImage();
}
