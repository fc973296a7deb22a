#include "tools/FrameTransfer.h"

#include <commentsframe.h>
#include <generalencapsulatedobjectframe.h>

namespace zal {

namespace {

using TagLib::ID3v2::Frame;

// Volumes and gains measured on the old audio.
bool belongsToAudio(const Frame& frame) {
    if (const auto* comment = dynamic_cast<const TagLib::ID3v2::CommentsFrame*>(&frame))
        return comment->description() == "iTunNORM";
    const auto* object = dynamic_cast<const TagLib::ID3v2::GeneralEncapsulatedObjectFrame*>(&frame);
    return object != nullptr && object->description() == "Serato Autotags";
}

}  // namespace

void transferFrames(TagLib::ID3v2::Tag& from, TagLib::ID3v2::Tag& to) {
    while (!from.frameList().isEmpty()) {
        Frame* frame = from.frameList().front();
        const bool isGenre = frame->frameID() == "TCON";
        if (isGenre) to.setGenre(from.genre());
        const bool goes = isGenre || belongsToAudio(*frame);
        from.removeFrame(frame, goes);
        if (!goes) to.addFrame(frame);
    }
}

}  // namespace zal
