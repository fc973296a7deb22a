#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstdint>
#include <string>
#include <utility>

/// One comment of a file, as the list of all comments holds it. A value: copy it freely, use one copy from
/// one thread at a time. Changing it changes no file.
class ZALTAG_EXPORT ZALTagComment {
  public:
    /// The current text; null by default.
    const ZALNullableString& comment() const { return comment_; }
    /// Sets the text. The first different text makes the one before it the original, unless there is one.
    void setComment(ZALNullableString comment);

    /// The text as it was first read, kept when comment() changes; null by default.
    const ZALNullableString& originalComment() const { return originalComment_; }
    void setOriginalComment(ZALNullableString comment) { originalComment_ = std::move(comment); }

    /// The three-letter language code of an ID3v2 comment; null for the ID3v1 comment.
    const ZALNullableString& lang() const { return lang_; }
    void setLang(ZALNullableString lang) { lang_ = std::move(lang); }

    /// 1 for a comment from the ID3v2 tag, 0 for the ID3v1 comment.
    std::int64_t tagVersion() const { return tagVersion_; }
    void setTagVersion(std::int64_t tagVersion) { tagVersion_ = tagVersion; }

    /// Whether this is the file's primary comment, or a copy of it.
    bool isPrimary() const { return isPrimary_; }
    void setIsPrimary(bool isPrimary) { isPrimary_ = isPrimary; }

    /// Whether the file's ID3v1 comment says the same; false by default.
    bool v1CommentMatchesv2Comment() const { return v1CommentMatchesv2Comment_; }
    void setV1CommentMatchesv2Comment(bool matches) { v1CommentMatchesv2Comment_ = matches; }

    /// Four lines: "ID3 Version: ", "Language: ", "Comment: " and "Original Comment: " with their values,
    /// null as "(null)". No line feed at the end.
    std::string description() const;

    /// Equality of all fields.
    bool operator==(const ZALTagComment& other) const = default;

  private:
    ZALNullableString comment_;
    ZALNullableString originalComment_;
    ZALNullableString lang_;
    std::int64_t tagVersion_ = 0;
    bool isPrimary_ = false;
    bool v1CommentMatchesv2Comment_ = false;
};
