// The comments of the ID3 family: several COMM frames, one of them the primary one, and the ID3v1 comment.

#include <zaltag/id3/ZALTagID3.h>

#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "id3/TagLibText.h"

#include <commentsframe.h>
#include <id3v2framefactory.h>

#include <algorithm>
#include <array>

namespace {

using TagLib::ID3v2::CommentsFrame;
using TagLib::ID3v2::Frame;

// Languages in which other programs keep notes of their own.
constexpr std::array<const char*, 5> foreignLanguages{"XXX", "xxx", "und", "Pur", "lZ2"};

bool isPrimaryCandidate(const CommentsFrame& frame) {
    const TagLib::ByteVector language = frame.language();
    return frame.description().isEmpty() &&
           std::none_of(foreignLanguages.begin(), foreignLanguages.end(),
                        [&language](const char* foreign) { return language == foreign; });
}

// The last match in tag order is the primary one.
CommentsFrame* primaryFrame(const TagLib::ID3v2::Tag& tag) {
    CommentsFrame* primary = nullptr;
    for (Frame* frame : zal::framesWithID(tag, "COMM")) {
        auto* comment = dynamic_cast<CommentsFrame*>(frame);
        if (comment != nullptr && isPrimaryCandidate(*comment)) primary = comment;
    }
    return primary;
}

// Moves every comment that stands in front of the primary one behind it; all of them when there is none. True
// when one was moved.
bool movePrimaryToFront(TagLib::ID3v2::Tag& tag, const CommentsFrame* primary) {
    bool moved = false;
    for (Frame* frame : zal::framesWithID(tag, "COMM")) {
        if (frame == primary) break;
        zal::moveToEnd(tag, frame);
        moved = true;
    }
    return moved;
}

// Sets the text of the primary comment in the ID3v2 tag. True when frames were moved.
bool setPrimaryComment(TagLib::ID3v2::Tag& tag, const TagLib::String& text) {
    CommentsFrame* primary = primaryFrame(tag);
    if (text.isEmpty()) {
        if (primary == nullptr) return false;
        tag.removeFrame(primary);
        return movePrimaryToFront(tag, nullptr);
    }
    if (primary == nullptr) {
        primary = new CommentsFrame(TagLib::ID3v2::FrameFactory::instance()->defaultTextEncoding());
        primary->setLanguage("eng");
        tag.addFrame(primary);
    }
    primary->setText(text);
    return movePrimaryToFront(tag, primary);
}

}  // namespace

ZALNullableString ZALTagID3::comment() const {
    const State& s = state();
    const CommentsFrame* primary = s.v2Tag != nullptr ? primaryFrame(*s.v2Tag) : nullptr;
    if (primary != nullptr && !primary->text().isEmpty()) return zal::stringWithTagLibString(primary->text());
    return s.v1Tag != nullptr ? zal::stringWithTagLibString(s.v1Tag->comment()) : std::string();
}

void ZALTagID3::setComment(const ZALNullableString& comment) {
    State& s = state();
    const TagLib::String text = zal::TagLibString(comment);
    if (s.v2Tag != nullptr && setPrimaryComment(*s.v2Tag, text)) s.requiresSaving = true;
    if (s.v1Tag != nullptr) s.v1Tag->setComment(text);
}
