#include "stores/ID3Frames.h"

#include "base/Unicode.h"
#include "taglib/TagLibBytes.h"
#include "taglib/TagLibText.h"

#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>

#include <generalencapsulatedobjectframe.h>
#include <id3v2framefactory.h>
#include <textidentificationframe.h>
#include <unknownframe.h>

namespace zal {

using TagLib::ID3v2::Frame;
using TagLib::ID3v2::GeneralEncapsulatedObjectFrame;
using TagLib::ID3v2::PrivateFrame;
using TagLib::ID3v2::Tag;
using TagLib::ID3v2::TextIdentificationFrame;
using TagLib::ID3v2::UnknownFrame;

namespace {

constexpr char objectID[] = "GEOB";

// TagLib gives a frame's header only to the classes of frames.
struct FrameAccess : Frame {
    static Header& headerOf(const Frame& frame) { return *(frame.*&FrameAccess::header)(); }
};

}  // namespace

void setFrameVersion(Frame& frame, unsigned version) {
    FrameAccess::headerOf(frame).setVersion(version);
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

void makeWayForText(ID3v2Store& store, const char* id) {
    Frame* frame = firstFrame(store.tag(), id);
    if (frame != nullptr && dynamic_cast<TextIdentificationFrame*>(frame) == nullptr)
        store.tagToEdit(id).removeFrame(frame);
}

void setTextOfFirstFrame(ID3v2Store& store, const char* id, const ZALNullableString& text) {
    makeWayForText(store, id);
    Tag& tag = store.tagToEdit(id);
    Frame* frame = firstFrame(tag, id);
    if (frame == nullptr) {
        frame =
            new TextIdentificationFrame(id, TagLib::ID3v2::FrameFactory::instance()->defaultTextEncoding());
        tag.addFrame(frame);
    }
    frame->setText(TagLibString(text));
}

void setOrRemoveFirstFrame(ID3v2Store& store, const char* id, const ZALNullableString& text) {
    if (text.value_or("").empty()) {
        removeFirstFrame(store, id);
    } else {
        setTextOfFirstFrame(store, id, text);
    }
}

void removeFirstFrame(ID3v2Store& store, const char* id) {
    if (Frame* frame = firstFrame(store.tag(), id)) store.tagToEdit(id).removeFrame(frame);
}

ZALNullableString textOfGRP1(const Tag& tag) {
    return textOfGRP1(firstFrame(tag, groupingID));
}

ZALNullableString textOfGRP1(const Frame* frame) {
    if (const auto* unknown = dynamic_cast<const UnknownFrame*>(frame)) {
        const TagLib::ByteVector data = unknown->data();
        return ZALTagDecodeGRP1FrameData(data.data(), data.size());
    }
    const auto* text = dynamic_cast<const TextIdentificationFrame*>(frame);
    return text != nullptr ? ZALNullableString(stringWithTagLibString(text->toString())) : std::nullopt;
}

void setTextOfGRP1(ID3v2Store& store, const ZALNullableString& text) {
    setOrRemoveFirstFrame(store, groupingID, text);
    if (text.value_or("").empty()) return;
    auto* frame = dynamic_cast<TextIdentificationFrame*>(firstFrame(store.tag(), groupingID));
    if (frame != nullptr)
        frame->setTextEncoding(isASCII(*text) ? TagLib::String::Latin1 : TagLib::String::UTF16);
}

std::vector<PrivateFrame*> traktorFrames(const Tag& tag) {
    std::vector<PrivateFrame*> frames;
    for (Frame* frame : framesWithID(tag, "PRIV")) {
        auto* found = dynamic_cast<PrivateFrame*>(frame);
        if (found != nullptr && found->owner().find("TRAKTOR") >= 0) frames.push_back(found);
    }
    return frames;
}

void moveToEnd(ID3v2Store& store, Frame* frame) {
    const TagLib::ByteVector id = frame->frameID();
    Tag& tag = store.tagToEdit({id.data(), id.size()});
    tag.removeFrame(frame, false);
    tag.addFrame(frame);
}

namespace {

GeneralEncapsulatedObjectFrame* describedObject(const Tag& tag, const std::string& description) {
    for (Frame* frame : framesWithID(tag, objectID)) {
        auto* object = dynamic_cast<GeneralEncapsulatedObjectFrame*>(frame);
        if (object != nullptr && stringWithTagLibString(object->description()) == description) return object;
    }
    return nullptr;
}

}  // namespace

Frame* objectFrame(const Tag& tag, const std::string& description) {
    return describedObject(tag, description);
}

ZALNullableData objectOf(const Tag& tag, const std::string& description) {
    const GeneralEncapsulatedObjectFrame* frame = describedObject(tag, description);
    if (frame == nullptr) return std::nullopt;
    const TagLib::ByteVector object = frame->object();
    return ZALData(object.begin(), object.end());
}

void setObject(ID3v2Store& store, const std::string& description, ZALDataView object) {
    Tag& tag = store.tagToEdit(objectID);
    GeneralEncapsulatedObjectFrame* frame = describedObject(tag, description);
    if (frame == nullptr) {
        frame = new GeneralEncapsulatedObjectFrame;
        frame->setDescription(TagLibString(description));
        frame->setMimeType("application/json");  // for Serato's binary objects too, as the files have it
        tag.addFrame(frame);
    }
    frame->setObject(TagLibBytes(object));
}

void removeObject(ID3v2Store& store, const std::string& description) {
    if (Frame* frame = objectFrame(store.tag(), description)) store.tagToEdit(objectID).removeFrame(frame);
}

}  // namespace zal
