// The comments of the ID3 family: several COMM frames, one of them the primary one, and the ID3v1 comment.

#include <zaltag/id3/ZALTagID3.h>

#include "base/Unicode.h"
#include "id3/ID3State.h"
#include "platform/Log.h"
#include "stores/ID3Frames.h"
#include "stores/ID3v2Comments.h"
#include "taglib/TagLibText.h"

#include <zaltag/tag/ZALTagComment.h>

namespace {

using TagLib::ID3v2::CommentsFrame;
using TagLib::ID3v2::Frame;

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
    const CommentsFrame* primary = zal::primaryCommentFrame(tag);
    std::vector<ZALTagComment> comments;
    for (Frame* frame : zal::framesWithID(tag, zal::commentID)) {
        const auto* found = dynamic_cast<CommentsFrame*>(frame);
        if (found == nullptr || zal::isForeignComment(*found)) continue;
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
    if (s.v2 != nullptr) comments = frameComments(*s.v2TagWith(zal::commentID));
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
    TagLib::ID3v2::Tag& tag = s.v2->tagToEdit(zal::commentID);
    const CommentsFrame* primary = zal::primaryCommentFrame(tag);
    for (Frame* frame : zal::framesWithID(tag, zal::commentID)) {
        const auto* comment = dynamic_cast<CommentsFrame*>(frame);
        if (comment != nullptr && comment != primary && !zal::isForeignComment(*comment))
            tag.removeFrame(frame);
    }
    // A blank stands for no comment in files of earlier versions.
    if (s.v1Tag != nullptr && s.v1Tag->comment() == " ") s.v1Tag->setComment("");
}

void ZALTagID3::deleteID3v1Comment() {
    if (state().v1Tag != nullptr) state().v1Tag->setComment("");
}

ZALNullableString ZALTagID3::comment() const {
    return ZALTag::comment().value_or("");
}
