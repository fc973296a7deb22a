// The pictures of a FLAC file: its picture blocks. What the ID3 family does with pictures, it does with
// these.

#include <zaltag/containers/ZALTagFLAC.h>

#include "files/FLACFile.h"
#include "tag/TagContents.h"
#include "taglib/TagLibBytes.h"
#include "taglib/TagLibText.h"

#include <flacpicture.h>

#include <memory>

namespace {

using TagLib::FLAC::Picture;

class Blocks final : public zal::ArtworkContainer {
  public:
    explicit Blocks(zal::FLACFile& file) : file_(file) {}

    std::vector<zal::StoredPicture> pictures(bool) const override {
        std::vector<zal::StoredPicture> out;
        // Each is a picture: only the blocks that are are listed, so none is left out, or logged.
        for (const auto& picture : file_.pictures()) {
            out.push_back({zal::viewOf(picture->data()), zal::stringWithTagLibString(picture->mimeType()),
                           static_cast<std::uint32_t>(picture->type())});
        }
        return out;
    }

    bool canBackUp() const override { return true; }

    void clear() override { file_.removeAllPictures(); }

    // The MIME type stays what it was, whatever the new bytes are, as the files have it.
    void replace(std::size_t index, ZALData data, std::optional<std::uint32_t> type) override {
        std::vector<zal::FLACPicture> pictures = file_.pictures();
        auto picture = std::make_shared<Picture>(pictures[index]->render());
        picture->setData(zal::TagLibBytes(data));
        if (type) picture->setType(static_cast<Picture::Type>(*type));
        pictures[index] = std::move(picture);
        file_.setPictures(std::move(pictures));
    }

    void setPictures(std::vector<zal::NewPicture> pictures) override {
        std::vector<zal::FLACPicture> made;
        for (const zal::NewPicture& picture : pictures) {
            auto block = std::make_shared<Picture>();
            block->setMimeType(zal::TagLibString(picture.mimeType));
            block->setData(zal::TagLibBytes(picture.data));
            block->setType(static_cast<Picture::Type>(picture.type));
            made.push_back(std::move(block));
        }
        file_.setPictures(std::move(made));
    }

  private:
    zal::FLACFile& file_;
};

}  // namespace

void ZALTagFLAC::addPictures(zal::TagContents& contents) {
    contents.setArtwork(std::make_unique<Blocks>(*flacfile_), zal::flacArtwork);
}
