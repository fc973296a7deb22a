#include "stores/ID3v2Comments.h"

#include "stores/ID3Frames.h"
#include "taglib/TagLibText.h"

#include <id3v2framefactory.h>

#include <algorithm>
#include <array>

namespace zal {

using TagLib::ID3v2::CommentsFrame;
using TagLib::ID3v2::Frame;

namespace {

// Languages in which other programs keep notes of their own.
constexpr std::array<const char*, 5> foreignLanguages{"XXX", "xxx", "und", "Pur", "lZ2"};

bool isPrimaryCandidate(const CommentsFrame& frame) {
    const TagLib::ByteVector language = frame.language();
    return frame.description().isEmpty() &&
           std::none_of(foreignLanguages.begin(), foreignLanguages.end(),
                        [&language](const char* foreign) { return language == foreign; });
}

// Moves every comment that stands in front of the primary one behind it; all of them when there is none. True
// when one was moved.
bool movePrimaryToFront(ID3v2Store& store, const CommentsFrame* primary) {
    bool moved = false;
    for (Frame* frame : framesWithID(store.tag(), commentID)) {
        if (frame == primary) break;
        moveToEnd(store, frame);
        moved = true;
    }
    return moved;
}

}  // namespace

CommentsFrame* primaryCommentFrame(const TagLib::ID3v2::Tag& tag) {
    CommentsFrame* primary = nullptr;
    for (Frame* frame : framesWithID(tag, commentID)) {
        auto* comment = dynamic_cast<CommentsFrame*>(frame);
        if (comment != nullptr && isPrimaryCandidate(*comment)) primary = comment;
    }
    return primary;
}

bool isForeignComment(const CommentsFrame& frame) {
    return frame.description().find("iTun") >= 0;
}

ZALNullableString primaryComment(const TagLib::ID3v2::Tag& tag) {
    const CommentsFrame* primary = primaryCommentFrame(tag);
    if (primary == nullptr || primary->text().isEmpty()) return std::nullopt;
    return stringWithTagLibString(primary->text());
}

bool setPrimaryComment(ID3v2Store& store, const ZALNullableString& text) {
    TagLib::ID3v2::Tag& tag = store.tagToEdit(commentID);
    CommentsFrame* primary = primaryCommentFrame(tag);
    if (text.value_or("").empty()) {
        if (primary == nullptr) return false;
        tag.removeFrame(primary);
        return movePrimaryToFront(store, nullptr);
    }
    if (primary == nullptr) {
        primary = new CommentsFrame(TagLib::ID3v2::FrameFactory::instance()->defaultTextEncoding());
        primary->setLanguage("eng");
        tag.addFrame(primary);
    }
    primary->setText(TagLibString(text));
    return movePrimaryToFront(store, primary);
}

}  // namespace zal
