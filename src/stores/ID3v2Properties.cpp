#include "stores/ID3v2Properties.h"

#include "stores/ID3Frames.h"

#include <commentsframe.h>
#include <id3v2framefactory.h>
#include <id3v2header.h>
#include <textidentificationframe.h>
#include <unsynchronizedlyricsframe.h>
#include <urllinkframe.h>

#include <memory>
#include <vector>

namespace zal {

using TagLib::PropertyMap;
using TagLib::ID3v2::Frame;
using TagLib::ID3v2::TextIdentificationFrame;

namespace {

// TagLib tells what a frame says only to the classes of frames.
struct FrameAccess : Frame {
    static PropertyMap propertiesOf(const Frame& frame) { return (frame.*&FrameAccess::asProperties)(); }
};

std::string idOf(const Frame& frame) {
    const TagLib::ByteVector id = frame.frameID();
    return {id.data(), id.size()};
}

// TagLib may describe lyrics or a link that have a name alone by that name; what other programs show has no
// description.
template <typename Described>
void removeDescription(Frame* frame, const TagLib::String& name) {
    auto* described = dynamic_cast<Described*>(frame);
    if (described != nullptr && described->description().upper() == name) described->setDescription("");
}

std::unique_ptr<Frame> frameOf(const TagLib::String& name, const TagLib::StringList& values) {
    std::unique_ptr<Frame> frame(Frame::createTextualFrame(name, values));
    if (frame == nullptr) return frame;
    if (auto* comment = dynamic_cast<TagLib::ID3v2::CommentsFrame*>(frame.get()))
        comment->setLanguage("eng");  // without one it is not taken for the primary comment
    removeDescription<TagLib::ID3v2::UnsynchronizedLyricsFrame>(frame.get(), name);
    removeDescription<TagLib::ID3v2::UserUrlLinkFrame>(frame.get(), name);
    return frame;
}

std::vector<Frame*> framesOf(const TagLib::ID3v2::Tag& tag, const TagLib::String& name) {
    std::vector<Frame*> frames;
    for (Frame* frame : tag.frameList()) {
        if (FrameAccess::propertiesOf(*frame).contains(name)) frames.push_back(frame);
    }
    return frames;
}

// What a frame says of other fields: people and their parts stand together in one.
std::unique_ptr<Frame> withoutProperty(const Frame& frame, const TagLib::String& name) {
    PropertyMap others = FrameAccess::propertiesOf(frame);
    others.erase(name);
    if (others.isEmpty()) return nullptr;
    const bool isInvolved = idOf(frame) == "TIPL";
    return std::unique_ptr<Frame>(isInvolved ? TextIdentificationFrame::createTIPLFrame(others)
                                             : TextIdentificationFrame::createTMCLFrame(others));
}

}  // namespace

PropertyMap propertiesOf(const TagLib::ID3v2::Tag& tag) {
    PropertyMap found;
    for (const Frame* frame : tag.frameList()) {
        found.merge(FrameAccess::propertiesOf(*frame));
    }
    return found;
}

void setProperty(ID3v2Store& store, const TagLib::String& name, const TagLib::StringList& values) {
    const std::vector<Frame*> present = framesOf(store.tag(), name);
    std::unique_ptr<Frame> frame = values.isEmpty() ? nullptr : frameOf(name, values);
    // Language, description and encoding stay where one frame takes the place of another.
    const bool isInPlace = present.size() == 1 && values.size() == 1 && frame != nullptr &&
                           idOf(*frame) == idOf(*present.front()) &&
                           FrameAccess::propertiesOf(*present.front()).size() == 1;
    if (isInPlace) {
        store.tagToEdit(idOf(*frame));
        return present.front()->setText(values.front());
    }
    for (Frame* old : present) {
        std::unique_ptr<Frame> rest = withoutProperty(*old, name);
        TagLib::ID3v2::Tag& tag = store.tagToEdit(idOf(*old));
        tag.removeFrame(old);
        if (rest != nullptr) tag.addFrame(rest.release());
    }
    if (frame != nullptr) store.tagToEdit(idOf(*frame)).addFrame(frame.release());
}

TagLib::StringList heldValues(const TagLib::String& name, const TagLib::StringList& values) {
    const std::unique_ptr<Frame> written = frameOf(name, values);
    if (written == nullptr) return {};
    TagLib::ID3v2::Header header;
    header.setMajorVersion(4);
    const std::unique_ptr<Frame> read(
        TagLib::ID3v2::FrameFactory::instance()->createFrame(written->render(), &header));
    return read != nullptr ? FrameAccess::propertiesOf(*read)[name] : TagLib::StringList();
}

}  // namespace zal
