#pragma once

#include "files/MP3File.h"
#include "stores/ID3v1Fields.h"
#include "stores/ID3v2Fields.h"
#include "tag/TagContents.h"
#include "taglib/TagLibStream.h"

#include <zaltag/id3/ZALTagID3.h>

#include <memory>
#include <vector>

/// What an object of the ID3 family holds open. The members are destroyed from the last to the first: the
/// file before the stream below it. The tags belong to the file.
struct ZALTagID3::State {
    std::unique_ptr<zal::TagLibStream> stream;
    std::unique_ptr<zal::MP3File> file;   // MP3 only; the other containers hold their own
    TagLib::ID3v1::Tag* v1Tag = nullptr;  // null when the file had none (in an MP3, none that held anything)
    zal::ID3v2Store* v2 = nullptr;        // the tag that is written; null when a FLAC file had none
    zal::ID3v2Fields* fields = nullptr;   // of that one; they belong to the contents
    /// That one, and those behind it, which are read where it has nothing and never change.
    std::vector<const TagLib::ID3v2::Tag*> v2Tags;

    /// The first of the tags that has a frame with this id; the first of all when none has.
    const TagLib::ID3v2::Tag* v2TagWith(const char* id) const {
        for (const TagLib::ID3v2::Tag* tag : v2Tags) {
            if (!tag->frameList(id).isEmpty()) return tag;
        }
        return v2 != nullptr ? &v2->tag() : nullptr;
    }

    /// Lists the ID3v2 tags of a file, and its ID3v1 tag. `wrap` makes another store of each.
    template <typename File, typename Wrap>
    void addV2(zal::TagContents& contents, File& opened, Wrap wrap) {
        v2Tags = opened.v2Tags();
        if (v2Tags.empty()) return;
        v2 = &opened.v2();
        auto written = std::make_unique<zal::ID3v2Fields>(*v2);
        fields = written.get();
        contents.add(wrap(std::move(written)));
        for (std::size_t i = 1; i < v2Tags.size(); ++i) {
            contents.add(wrap(std::make_unique<zal::ID3v2Fields>(*v2Tags[i])), zal::Access::readOnly);
        }
    }
    template <typename File>
    void addV2(zal::TagContents& contents, File& opened) {
        addV2(contents, opened, [](std::unique_ptr<zal::TagStore> store) { return store; });
    }
    void addV1(zal::TagContents& contents, TagLib::ID3v1::Tag& tag) {
        v1Tag = &tag;
        contents.add(std::make_unique<zal::ID3v1Fields>(tag));
    }
    /// The pictures of the ID3v2 tags.
    void addPictures(zal::TagContents& contents, const zal::ArtworkRules& rules);
};
