// The pictures of the ID3 family: APIC frames.

#include <zaltag/id3/ZALTagID3.h>

#include "id3/ID3State.h"
#include "platform/Log.h"
#include "stores/ID3Frames.h"
#include "taglib/TagLibBytes.h"
#include "taglib/TagLibText.h"

#include <attachedpictureframe.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

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
    // Those of the first tag that has any; the store's is the one that is written.
    Pictures(zal::ID3v2Store& store, std::vector<const TagLib::ID3v2::Tag*> tags)
        : store_(store), tags_(std::move(tags)) {}

    bool isEmpty() const override { return frames(read()).empty(); }

    std::vector<zal::StoredPicture> pictures(bool logged) const override {
        std::vector<zal::StoredPicture> out;
        for (const Frame* frame : frames(read())) {
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
        const auto all = frames(read());
        if (!all.empty() && dynamic_cast<AttachedPictureFrame*>(all.front()) != nullptr) return true;
        logNoPicture();
        return false;
    }

    void clear() override { store_.tagToEdit(pictureID).removeFrames(pictureID); }

    void replace(std::size_t index, ZALData data, std::optional<std::uint32_t> type) override {
        if (&read() != &store_.tag()) return copyThenReplace(index, std::move(data), type);
        for (Frame* frame : frames(store_.tagToEdit(pictureID))) {
            auto* picture = dynamic_cast<AttachedPictureFrame*>(frame);
            if (picture == nullptr || index-- != 0) continue;
            picture->setPicture(zal::TagLibBytes(data));
            if (type) picture->setType(static_cast<AttachedPictureFrame::Type>(*type));
            return;
        }
    }

    void setPictures(std::vector<zal::NewPicture> pictures) override {
        TagLib::ID3v2::Tag& tag = store_.tagToEdit(pictureID);
        for (Frame* frame : frames(tag)) {
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

    const TagLib::ID3v2::Tag& read() const {
        const auto hasAny = [](const TagLib::ID3v2::Tag* tag) { return !frames(*tag).empty(); };
        const auto found = std::ranges::find_if(tags_, hasAny);
        return found != tags_.end() ? **found : store_.tag();
    }

    static std::vector<Frame*> frames(const TagLib::ID3v2::Tag& tag) {
        return zal::framesWithID(tag, pictureID);
    }

    zal::ID3v2Store& store_;
    std::vector<const TagLib::ID3v2::Tag*> tags_;
};

}  // namespace

void ZALTagID3::State::addPictures(zal::TagContents& contents, const zal::ArtworkRules& rules) {
    contents.setArtwork(std::make_unique<Pictures>(*v2, v2Tags), rules);
}
