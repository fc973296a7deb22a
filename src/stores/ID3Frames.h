#pragma once

#include "stores/ID3v2Store.h"

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

#include <id3v2frame.h>
#include <id3v2tag.h>
#include <privateframe.h>

#include <string>
#include <vector>

namespace zal {

/// The frames of an id in tag order, as a copy: TagLib's own list changes while frames are added and removed.
std::vector<TagLib::ID3v2::Frame*> framesWithID(const TagLib::ID3v2::Tag& tag, const char* id);

/// TagLib renders a frame in the form of its version.
void setFrameVersion(TagLib::ID3v2::Frame& frame, unsigned version);

/// The first frame of an id, or null.
TagLib::ID3v2::Frame* firstFrame(const TagLib::ID3v2::Tag& tag, const char* id);

/// The text of the first frame of an id; null when there is no such frame.
ZALNullableString textOfFirstFrame(const TagLib::ID3v2::Tag& tag, const char* id);

/// Removes the first frame of an id when TagLib holds it as something that is no text, such as an encrypted
/// one: it would swallow a text silently.
void makeWayForText(ID3v2Store& store, const char* id);

/// Sets the text of the first frame of an id, which is created in TagLib's default encoding when there is
/// none, and replaced when TagLib holds it as something that is no text.
void setTextOfFirstFrame(ID3v2Store& store, const char* id, const ZALNullableString& text);

/// The same, but null and the empty text remove the frame.
void setOrRemoveFirstFrame(ID3v2Store& store, const char* id, const ZALNullableString& text);

/// Removes the first frame of an id, if there is one.
void removeFirstFrame(ID3v2Store& store, const char* id);

/// The frames of a grouping: some programs read TIT1, others GRP1.
inline constexpr char contentGroupID[] = "TIT1";
inline constexpr char groupingID[] = "GRP1";

/// The text of a GRP1 frame, which TagLib holds as text or as bytes; null when it is neither, or cannot be
/// decoded. Null for a null frame.
ZALNullableString textOfGRP1(const TagLib::ID3v2::Frame* frame);
/// That of the tag's first one.
ZALNullableString textOfGRP1(const TagLib::ID3v2::Tag& tag);

/// Sets it, in Latin-1 when the text is ASCII and in UTF-16 otherwise; null and the empty text remove the
/// frame.
void setTextOfGRP1(ID3v2Store& store, const ZALNullableString& text);

/// Traktor's frames.
std::vector<TagLib::ID3v2::PrivateFrame*> traktorFrames(const TagLib::ID3v2::Tag& tag);

/// Takes a frame out and adds it again as the last one of the tag.
void moveToEnd(ID3v2Store& store, TagLib::ID3v2::Frame* frame);

/// The first GEOB frame with this very description, or null.
TagLib::ID3v2::Frame* objectFrame(const TagLib::ID3v2::Tag& tag, const std::string& description);

/// The object of that frame; null without one.
ZALNullableData objectOf(const TagLib::ID3v2::Tag& tag, const std::string& description);

/// Puts an object into that frame, of which nothing else changes, or into a new one at the end of the tag.
void setObject(ID3v2Store& store, const std::string& description, ZALDataView object);

/// Removes that frame, if there is one.
void removeObject(ID3v2Store& store, const std::string& description);

}  // namespace zal
