// The comments of the ID3 family: several COMM frames, one of them the primary one, and the ID3v1 comment.

#include <zaltag/id3/ZALTagID3.h>

#include "base/Unicode.h"
#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "id3/TagLibText.h"
#include "platform/Log.h"

#include <zaltag/tag/ZALTagComment.h>

#include <commentsframe.h>
#include <id3v2framefactory.h>

#include <algorithm>
#include <array>

namespace {

using TagLib::ID3v2::CommentsFrame;
using TagLib::ID3v2::Frame;

constexpr char commentID[] = "COMM";

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
    for (Frame* frame : zal::framesWithID(tag, commentID)) {
        auto* comment = dynamic_cast<CommentsFrame*>(frame);
        if (comment != nullptr && isPrimaryCandidate(*comment)) primary = comment;
    }
    return primary;
}

// Moves every comment that stands in front of the primary one behind it; all of them when there is none. True
// when one was moved.
bool movePrimaryToFront(zal::ID3v2Store& store, const CommentsFrame* primary) {
    bool moved = false;
    for (Frame* frame : zal::framesWithID(store.tag(), commentID)) {
        if (frame == primary) break;
        zal::moveToEnd(store, frame);
        moved = true;
    }
    return moved;
}

// Sets the text of the primary comment in the ID3v2 tag. True when frames were moved.
bool putPrimaryComment(zal::ID3v2Store& store, const TagLib::String& text) {
    TagLib::ID3v2::Tag& tag = store.tagToEdit(commentID);
    CommentsFrame* primary = primaryFrame(tag);
    if (text.isEmpty()) {
        if (primary == nullptr) return false;
        tag.removeFrame(primary);
        return movePrimaryToFront(store, nullptr);
    }
    if (primary == nullptr) {
        primary = new CommentsFrame(TagLib::ID3v2::FrameFactory::instance()->defaultTextEncoding());
        primary->setLanguage("eng");
        tag.addFrame(primary);
    }
    primary->setText(text);
    return movePrimaryToFront(store, primary);
}

// Other programs keep such comments for themselves: they are never listed, changed or deleted.
bool isForeign(const CommentsFrame& frame) {
    return frame.description().find("iTun") >= 0;
}

// The text as an ID3v1 comment is compared: 25 characters of what has 26 or more.
std::string comparable(const std::string& text) {
    return zal::utf16Length(text) >= 26 ? zal::prefixOfUTF16Length(text, 25) : text;
}

ZALTagComment madeComment(const std::string& text, ZALNullableString language, int tagVersion) {
    ZALTagComment comment;
    comment.setComment(text);
    comment.setOriginalComment(text);
    comment.setLang(std::move(language));
    comment.setTagVersion(tagVersion);
    return comment;
}

std::vector<ZALTagComment> frameComments(const TagLib::ID3v2::Tag& tag) {
    const CommentsFrame* primary = primaryFrame(tag);
    std::vector<ZALTagComment> comments;
    for (Frame* frame : zal::framesWithID(tag, commentID)) {
        const auto* found = dynamic_cast<CommentsFrame*>(frame);
        if (found == nullptr || isForeign(*found)) continue;
        if (found->text().isEmpty()) {
            zal::log("ZALTag: Comment has no contents");
            continue;
        }
        const TagLib::ByteVector language = found->language();
        comments.push_back(madeComment(zal::stringWithTagLibString(found->text()),
                                       zal::utf8FromLatin1({language.data(), language.size()}), 1));
        // A copy of the primary comment in its language is primary too, whatever its description.
        comments.back().setIsPrimary(primary != nullptr && language == primary->language() &&
                                     found->text() == primary->text());
    }
    return comments;
}

}  // namespace

ZALArray<ZALTagComment> ZALTagID3::allComments() const {
    const State& s = state();
    std::vector<ZALTagComment> comments;
    if (s.v2 != nullptr) comments = frameComments(*s.v2TagWith(commentID));
    if (s.v1Tag == nullptr) return comments;

    std::string v1 = zal::stringWithTagLibString(s.v1Tag->comment());
    for (ZALTagComment& comment : comments) {
        v1 = comparable(v1);
        if (v1.empty()) return comments;
        if (comparable(comment.comment().value_or("")) == v1) {
            comment.setV1CommentMatchesv2Comment(true);
            return comments;
        }
    }
    comments.push_back(madeComment(v1, std::nullopt, 0));
    return comments;
}

void ZALTagID3::deleteExtraneousComments() {
    State& s = state();
    if (s.v2 == nullptr) return;
    TagLib::ID3v2::Tag& tag = s.v2->tagToEdit(commentID);
    const CommentsFrame* primary = primaryFrame(tag);
    for (Frame* frame : zal::framesWithID(tag, commentID)) {
        const auto* comment = dynamic_cast<CommentsFrame*>(frame);
        if (comment != nullptr && comment != primary && !isForeign(*comment)) tag.removeFrame(frame);
    }
    // A blank stands for no comment in files of earlier versions.
    if (s.v1Tag != nullptr && s.v1Tag->comment() == " ") s.v1Tag->setComment("");
}

void ZALTagID3::deleteID3v1Comment() {
    if (state().v1Tag != nullptr) state().v1Tag->setComment("");
}

ZALNullableString ZALTagID3::comment() const {
    const State& s = state();
    for (const TagLib::ID3v2::Tag* tag : s.v2Tags) {
        const CommentsFrame* primary = primaryFrame(*tag);
        if (primary != nullptr && !primary->text().isEmpty())
            return zal::stringWithTagLibString(primary->text());
    }
    return s.v1Tag != nullptr ? zal::stringWithTagLibString(s.v1Tag->comment()) : std::string();
}

void ZALTagID3::setComment(const ZALNullableString& comment) {
    State& s = state();
    const TagLib::String text = zal::TagLibString(comment);
    if (s.v2 != nullptr && putPrimaryComment(*s.v2, text)) s.requiresSaving = true;
    if (s.v1Tag != nullptr) s.v1Tag->setComment(text);
}

void ZALTagID3::setPrimaryComment(const std::string& text) {
    putPrimaryComment(*state().v2, text);
}
