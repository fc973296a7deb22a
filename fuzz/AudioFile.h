#pragma once

#include "FuzzSupport.h"
#include "FuzzedFile.h"

#include <zaltag/tag/ZALTag.h>
#include <zaltag/tag/ZALTagComment.h>

#include <cstdint>
#include <memory>
#include <string>

// What every target does that opens, changes and saves an audio file.

/// Reads all there is to read.
inline void readEverything(const ZALTag& tag) {
    for (const std::string& key : tag.propertyKeys()) {
        tag.valueForKey(key);
    }
    tag.allComments();
    tag.zalKey();
    tag.zalEnergy();
    tag.zalBeatGrid();
    tag.zalCuePoints();
    tag.zalVelvetCascade();
    tag.seratoCuePoints();
    tag.hasSeratoMetadata();
    tag.hasTraktorMetadata();
    tag.hasImages();
    tag.originalImage();
    tag.customizedImage();
}

/// Opens the file, reads it, changes and saves it over one object; opens it anew, clears it and saves again.
/// A save that succeeds leaves a file that opens and holds what was set; one that fails leaves every byte.
class AudioFileExercise {
  public:
    AudioFileExercise(const std::uint8_t* data, std::size_t size, const std::string& extension)
        : file_(data, size, extension) {}

    void run() const {
        const auto tag = ZALTag::tagAtPath(file_.path());
        if (tag == nullptr) return;
        readEverything(*tag);
        for (const std::size_t length : {20U, 3000U, 5U}) {
            const std::string text(length, 't');
            set(*tag, text);
            if (!saved(*tag)) return;
            const auto again = opened();
            require(again->title() == text && !again->seratoCuePoints().empty());
            require(again->zalKey() == ZALTagKey::keyWithKey(text, 1));
        }
        const auto again = opened();
        clear(*again);
        if (saved(*again)) readEverything(*opened());
    }

  private:
    static void set(ZALTag& tag, const std::string& text) {
        tag.setTitle(text);
        tag.setComment(text);
        tag.setGrouping(text.size() < 10 ? ZALNullableString() : text);
        tag.setInitialKey("8A");
        tag.setTempo(static_cast<std::int64_t>(text.size()));
        tag.setZalKey(ZALTagKey::keyWithKey(text, 1));
        tag.setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1.5, "cue")});
        tag.restoreOriginalImage();
    }
    static void clear(ZALTag& tag) {
        for (const std::string& key : tag.propertyKeys()) {
            tag.setValue(nullptr, key);
        }
        tag.setZalKey(std::nullopt);
        tag.setSeratoCuePoints({});
        tag.replacePrimaryImage(nullptr, false);
        tag.setShouldStripID3v1Tag(true);
    }

    std::shared_ptr<ZALTag> opened() const {
        auto tag = ZALTag::tagAtPath(file_.path());
        require(tag != nullptr);
        return tag;
    }
    bool saved(ZALTag& tag) const {
        const ZALData before = contentsOf(file_.path());
        const bool saved = tag.save();
        require(file_.isAlone() && (saved || contentsOf(file_.path()) == before));
        return saved;
    }

    const FuzzedFile file_;
};
