#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

#include <id3v2frame.h>
#include <id3v2tag.h>

#include <string>
#include <vector>

namespace zal {

/// The frames of an id in tag order, as a copy: TagLib's own list changes while frames are added and removed.
std::vector<TagLib::ID3v2::Frame*> framesWithID(const TagLib::ID3v2::Tag& tag, const char* id);

/// Makes a tag ready for use after opening. False for one with more frames than any real one: TagLib searches
/// all of them for each one it removes, so that a hostile tag could keep a setter busy for minutes. Such a
/// file is not opened. All frames must reach the file again: those whose text encoding does not exist get
/// Latin-1, since TagLib would write the empty text, and those marked to be discarded when the tag changes
/// lose that mark.
bool prepareFrames(TagLib::ID3v2::Tag& tag);

/// Whether the tag's length, of 28 bits, can say how long it would be; TagLib would write it without its
/// upper bits, and the rest of the tag would be taken for audio. False with one log line.
bool fitsItsLength(const TagLib::ID3v2::Tag& tag, const std::string& path);

/// Whether the frame was encrypted when it was read. TagLib holds its bytes as they are, and writes them
/// without the mark that says so.
bool isEncrypted(const TagLib::ID3v2::Frame& frame);

/// The first frame of an id, or null.
TagLib::ID3v2::Frame* firstFrame(const TagLib::ID3v2::Tag& tag, const char* id);

/// The text of the first frame of an id; null when there is no such frame.
ZALNullableString textOfFirstFrame(const TagLib::ID3v2::Tag& tag, const char* id);

/// Removes the first frame of an id when TagLib holds it as something that is no text, such as an encrypted
/// one: it would swallow a text silently.
void makeWayForText(TagLib::ID3v2::Tag& tag, const char* id);

/// Sets the text of the first frame of an id, which is created in TagLib's default encoding when there is
/// none, and replaced when TagLib holds it as something that is no text.
void setTextOfFirstFrame(TagLib::ID3v2::Tag& tag, const char* id, const ZALNullableString& text);

/// The same, but null and the empty text remove the frame.
void setOrRemoveFirstFrame(TagLib::ID3v2::Tag& tag, const char* id, const ZALNullableString& text);

/// Removes the first frame of an id, if there is one.
void removeFirstFrame(TagLib::ID3v2::Tag& tag, const char* id);

/// The text of a GRP1 frame, which TagLib holds as text or as bytes; null when it is neither, or cannot be
/// decoded. Null for a null frame.
ZALNullableString textOfGRP1(const TagLib::ID3v2::Frame* frame);

/// Takes a frame out and adds it again as the last one of the tag.
void moveToEnd(TagLib::ID3v2::Tag& tag, TagLib::ID3v2::Frame* frame);

/// The first GEOB frame with this very description, or null. A null tag has none.
TagLib::ID3v2::Frame* objectFrame(const TagLib::ID3v2::Tag* tag, const std::string& description);

/// The object of that frame; null without one.
ZALNullableData objectOf(const TagLib::ID3v2::Tag* tag, const std::string& description);

/// Puts an object into that frame, of which nothing else changes, or into a new one at the end of the tag.
void setObject(TagLib::ID3v2::Tag& tag, const std::string& description, ZALDataView object);

/// Removes that frame, if there is one.
void removeObject(TagLib::ID3v2::Tag& tag, const std::string& description);

}  // namespace zal
