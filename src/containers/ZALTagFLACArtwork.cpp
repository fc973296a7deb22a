// The pictures of a FLAC file: its picture blocks. What the ID3 family does with pictures, it does with
// these.

#include <zaltag/containers/ZALTagFLAC.h>

#include "containers/FLACState.h"
#include "id3/TagLibBytes.h"
#include "id3/TagLibText.h"
#include "tag/Artwork.h"

#include <flacpicture.h>

#include <memory>

namespace {

using TagLib::FLAC::Picture;

class Blocks final : public zal::ArtworkContainer {
  public:
    explicit Blocks(TagLib::FLAC::File& file) : file_(file) {}

    std::vector<zal::StoredPicture> pictures(bool) const override {
        std::vector<zal::StoredPicture> out;
        // Each is a picture: TagLib lists only the blocks that are, so none is left out, or logged.
        for (const Picture* picture : file_.pictureList()) {
            out.push_back({zal::viewOf(picture->data()), zal::stringWithTagLibString(picture->mimeType()),
                           static_cast<std::uint32_t>(picture->type())});
        }
        return out;
    }

    bool canBackUp() const override { return true; }

    void clear() override { file_.removePictures(); }

    // The MIME type stays what it was, whatever the new bytes are, as the files have it.
    void replaceFirst(ZALData data, std::optional<std::uint32_t> type) override {
        Picture* picture = file_.pictureList().front();
        picture->setData(zal::TagLibBytes(data));
        if (type) picture->setType(static_cast<Picture::Type>(*type));
    }

    void setPictures(std::vector<zal::NewPicture> pictures) override {
        file_.removePictures();
        for (const zal::NewPicture& picture : pictures) {
            auto* block = new Picture;
            block->setMimeType(zal::TagLibString(picture.mimeType));
            block->setData(zal::TagLibBytes(picture.data));
            block->setType(static_cast<Picture::Type>(picture.type));
            file_.addPicture(block);
        }
    }

  private:
    TagLib::FLAC::File& file_;
};

}  // namespace

zal::Artwork ZALTagFLAC::artwork() const {
    return {std::make_unique<Blocks>(*flacfile_->file), zal::flacArtwork};
}

bool ZALTagFLAC::hasImages() const {
    return !flacfile_->file->pictureList().isEmpty();
}
bool ZALTagFLAC::replaceOriginalImage(const ZALImagePtr& image) {
    return artwork().replaceOriginalImage(image);
}
bool ZALTagFLAC::replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) {
    return artwork().replacePrimaryImage(image, markAsCustom);
}
