#pragma once

#include "FuzzedFile.h"

#include <zaltag/platform/ZALHost.h>
#include <zaltag/tag/ZALTag.h>
#include <zaltag/tag/ZALTagComment.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
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

/// Opens the file, reads it, changes it and saves it twice over one object. A save that succeeds leaves a
/// file that opens, holds what was set, and can be saved again; one that fails leaves the file as it was.
inline void exerciseAudioFile(const std::uint8_t* data, std::size_t size, const std::string& extension) {
    ZALHost::shared().setLogSink([](const std::string&) {});
    const FuzzedFile file(data, size, extension);
    const auto tag = ZALTag::tagAtPath(file.path());
    if (tag == nullptr) return;
    readEverything(*tag);
    for (const std::size_t length : {20U, 3000U, 5U}) {
        const std::string text(length, 't');
        tag->setTitle(text);
        tag->setComment(text);
        tag->setGrouping(length < 10 ? ZALNullableString() : text);
        tag->setInitialKey("8A");
        tag->setTempo(static_cast<std::int64_t>(length));
        tag->setZalKey(ZALTagKey::keyWithKey(text, 1));
        tag->setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1.5, "cue")});
        tag->restoreOriginalImage();
        if (!tag->save()) {
            if (length == 20 && std::filesystem::file_size(file.path()) != size) std::abort();
            return;
        }
        const auto again = ZALTag::tagAtPath(file.path());
        if (again == nullptr || again->title() != text || again->seratoCuePoints().empty()) std::abort();
    }
    if (!ZALTag::tagAtPath(file.path())->save()) std::abort();
}
