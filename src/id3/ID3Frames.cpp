#include "id3/ID3Frames.h"

#include "base/Limits.h"
#include "id3/TagLibBytes.h"
#include "id3/TagLibText.h"
#include "platform/Log.h"

#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>

#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <generalencapsulatedobjectframe.h>
#include <id3v2framefactory.h>
#include <textidentificationframe.h>
#include <unknownframe.h>

namespace zal {

using TagLib::ID3v2::Frame;
using TagLib::ID3v2::GeneralEncapsulatedObjectFrame;
using TagLib::ID3v2::Tag;
using TagLib::ID3v2::TextIdentificationFrame;
using TagLib::ID3v2::UnknownFrame;

namespace {

// TagLib gives a frame's header only to the classes of frames.
struct FrameAccess : Frame {
    static Header& headerOf(const Frame& frame) { return *(frame.*&FrameAccess::header)(); }
};

template <typename TextFrame>
void prepare(Frame* frame) {
    auto* text = dynamic_cast<TextFrame*>(frame);
    if (text == nullptr) return;
    const auto encoding = static_cast<unsigned>(text->textEncoding());  // bytes from 0x80 on are negative
    if (encoding <= TagLib::String::UTF8) return;
    text->setTextEncoding(TagLib::String::Latin1);  // TagLib takes a wider one where the text asks for it
}

// The frame's length as it is written. That of one with a payload can be more than it will be: rendering it
// would copy the payload.
std::uint64_t lengthOf(const Frame& frame) {
    constexpr std::uint64_t rest = 64;  // headers and single octets
    constexpr std::uint64_t perUnit = 4;
    if (const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(&frame)) {
        const std::uint64_t units = picture->mimeType().size() + picture->description().size();
        return picture->picture().size() + perUnit * units + rest;
    }
    if (const auto* object = dynamic_cast<const GeneralEncapsulatedObjectFrame*>(&frame)) {
        const std::uint64_t units =
            object->mimeType().size() + object->fileName().size() + object->description().size();
        return object->object().size() + perUnit * units + rest;
    }
    return frame.render().size();
}

}  // namespace

bool prepareFrames(Tag& tag) {
    if (tag.frameList().size() > limits::id3Frames) return false;
    for (Frame* frame : tag.frameList()) {
        FrameAccess::headerOf(*frame).setTagAlterPreservation(false);
        prepare<TextIdentificationFrame>(frame);
        prepare<TagLib::ID3v2::CommentsFrame>(frame);
        prepare<GeneralEncapsulatedObjectFrame>(frame);
        prepare<TagLib::ID3v2::AttachedPictureFrame>(frame);
    }
    return true;
}

bool fitsItsLength(const Tag& tag, const std::string& path) {
    // Behind the frames TagLib puts padding, and an ID3v1 tag's fields where these are missing.
    constexpr std::uint64_t sizeMax = (1U << 28) - 4096;
    std::uint64_t size = 0;
    for (const Frame* frame : tag.frameList()) {
        size += lengthOf(*frame);
        if (size <= sizeMax) continue;
        logf("could not save '{}': its ID3v2 tag would be too large", path);
        return false;
    }
    return true;
}

bool isEncrypted(const Frame& frame) {
    return FrameAccess::headerOf(frame).encryption();
}

std::vector<Frame*> framesWithID(const Tag& tag, const char* id) {
    const TagLib::ID3v2::FrameList& frames = tag.frameList(id);
    return {frames.begin(), frames.end()};
}

Frame* firstFrame(const Tag& tag, const char* id) {
    const TagLib::ID3v2::FrameList& frames = tag.frameList(id);
    return frames.isEmpty() ? nullptr : frames.front();
}

ZALNullableString textOfFirstFrame(const Tag& tag, const char* id) {
    const Frame* frame = firstFrame(tag, id);
    return frame != nullptr ? ZALNullableString(stringWithTagLibString(frame->toString())) : std::nullopt;
}

void makeWayForText(Tag& tag, const char* id) {
    Frame* frame = firstFrame(tag, id);
    if (frame != nullptr && dynamic_cast<TextIdentificationFrame*>(frame) == nullptr) tag.removeFrame(frame);
}

void setTextOfFirstFrame(Tag& tag, const char* id, const ZALNullableString& text) {
    makeWayForText(tag, id);
    Frame* frame = firstFrame(tag, id);
    if (frame == nullptr) {
        frame =
            new TextIdentificationFrame(id, TagLib::ID3v2::FrameFactory::instance()->defaultTextEncoding());
        tag.addFrame(frame);
    }
    frame->setText(TagLibString(text));
}

void setOrRemoveFirstFrame(Tag& tag, const char* id, const ZALNullableString& text) {
    if (text.value_or("").empty()) {
        removeFirstFrame(tag, id);
    } else {
        setTextOfFirstFrame(tag, id, text);
    }
}

void removeFirstFrame(Tag& tag, const char* id) {
    if (Frame* frame = firstFrame(tag, id)) tag.removeFrame(frame);
}

ZALNullableString textOfGRP1(const Frame* frame) {
    if (const auto* unknown = dynamic_cast<const UnknownFrame*>(frame)) {
        const TagLib::ByteVector data = unknown->data();
        return ZALTagDecodeGRP1FrameData(data.data(), data.size());
    }
    const auto* text = dynamic_cast<const TextIdentificationFrame*>(frame);
    return text != nullptr ? ZALNullableString(stringWithTagLibString(text->toString())) : std::nullopt;
}

void moveToEnd(Tag& tag, Frame* frame) {
    tag.removeFrame(frame, false);
    tag.addFrame(frame);
}

namespace {

GeneralEncapsulatedObjectFrame* describedObject(const Tag* tag, const std::string& description) {
    if (tag == nullptr) return nullptr;
    for (Frame* frame : framesWithID(*tag, "GEOB")) {
        auto* object = dynamic_cast<GeneralEncapsulatedObjectFrame*>(frame);
        if (object != nullptr && stringWithTagLibString(object->description()) == description) return object;
    }
    return nullptr;
}

}  // namespace

Frame* objectFrame(const Tag* tag, const std::string& description) {
    return describedObject(tag, description);
}

ZALNullableData objectOf(const Tag* tag, const std::string& description) {
    const GeneralEncapsulatedObjectFrame* frame = describedObject(tag, description);
    if (frame == nullptr) return std::nullopt;
    const TagLib::ByteVector object = frame->object();
    return ZALData(object.begin(), object.end());
}

namespace {

// TagLib writes frames that it could not read, such as encrypted ones, without their flags: the next reader
// may take one for the object of another.
void moveUnreadObjectsToEnd(Tag& tag) {
    for (Frame* frame : framesWithID(tag, "GEOB")) {
        if (dynamic_cast<UnknownFrame*>(frame) != nullptr) moveToEnd(tag, frame);
    }
}

}  // namespace

void setObject(Tag& tag, const std::string& description, ZALDataView object) {
    GeneralEncapsulatedObjectFrame* frame = describedObject(&tag, description);
    if (frame == nullptr) {
        frame = new GeneralEncapsulatedObjectFrame;
        frame->setDescription(TagLibString(description));
        frame->setMimeType("application/json");  // for Serato's binary objects too, as the files have it
        tag.addFrame(frame);
    }
    frame->setObject(TagLibBytes(object));
    moveUnreadObjectsToEnd(tag);
}

void removeObject(Tag& tag, const std::string& description) {
    if (Frame* frame = objectFrame(&tag, description)) tag.removeFrame(frame);
}

}  // namespace zal
