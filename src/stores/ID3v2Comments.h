#pragma once

#include "stores/ID3v2Store.h"

#include <zaltag/base/ZALText.h>

#include <commentsframe.h>

// The comments of an ID3v2 tag: several COMM frames, one of them the primary one.

namespace zal {

inline constexpr char commentID[] = "COMM";

/// The last frame with an empty description and an ordinary language; null without one.
TagLib::ID3v2::CommentsFrame* primaryCommentFrame(const TagLib::ID3v2::Tag& tag);

/// Other programs keep such comments for themselves: they are never listed, changed or deleted.
bool isForeignComment(const TagLib::ID3v2::CommentsFrame& frame);

/// The text of the primary comment; null when there is none or it is empty.
ZALNullableString primaryComment(const TagLib::ID3v2::Tag& tag);

/// Sets it, in front of all other comments; null and the empty text remove it. True when frames were moved.
bool setPrimaryComment(ID3v2Store& store, const ZALNullableString& text);

}  // namespace zal
