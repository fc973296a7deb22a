#pragma once

#include <zaltag/tag/ZALTag.h>
#include <zaltag/tag/ZALTagComment.h>

/// Reads all that a tag can be asked for.
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
    tag.planSeratoCuePoints(tag.seratoCuePoints());
    tag.planSeratoCuePoints(tag.seratoLoops());
    tag.hasSeratoMetadata();
    tag.hasTraktorMetadata();
    tag.hasImages();
    tag.originalImage();
    tag.customizedImage();
}
