#pragma once

#include "id3/MP3File.h"
#include "id3/TagLibStream.h"

#include <zaltag/id3/ZALTagID3.h>

#include <id3v1tag.h>
#include <id3v2tag.h>

#include <memory>
#include <vector>

/// What an object of the ID3 family holds open. The members are destroyed from the last to the first: the
/// file before the stream below it. The tags belong to the file.
struct ZALTagID3::State {
    std::unique_ptr<zal::TagLibStream> stream;
    std::unique_ptr<zal::MP3File> file;   // MP3 only; the other containers hold their own
    TagLib::ID3v1::Tag* v1Tag = nullptr;  // null when the file had none (in an MP3, none that held anything)
    zal::ID3v2Store* v2 = nullptr;        // the tag that is written; null when a FLAC file had none
    /// That one, and those behind it, which are read where it has nothing and never change.
    std::vector<const TagLib::ID3v2::Tag*> v2Tags;
    bool requiresSaving = false;

    template <typename File>
    void setV2TagsOf(File& opened) {
        v2Tags = opened.v2Tags();
        v2 = v2Tags.empty() ? nullptr : &opened.v2();
    }
    /// The first of the tags that has a frame with this id; the first of all when none has.
    const TagLib::ID3v2::Tag* v2TagWith(const char* id) const {
        for (const TagLib::ID3v2::Tag* tag : v2Tags) {
            if (!tag->frameList(id).isEmpty()) return tag;
        }
        return v2 != nullptr ? &v2->tag() : nullptr;
    }
};
