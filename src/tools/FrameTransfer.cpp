#include "tools/FrameTransfer.h"

#include "id3/ID3Frames.h"

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

int transferFrames(TagLib::ID3v2::Tag& from, TagLib::ID3v2::Tag& to) {
    int encryptedCount = 0;
    while (!from.frameList().isEmpty()) {
        Frame* frame = from.frameList().front();
        const bool encrypted = isEncrypted(*frame);
        const bool isGenre = !encrypted && frame->frameID() == "TCON";
        if (isGenre) to.setGenre(from.genre());
        const bool goes = encrypted || isGenre || belongsToAudio(*frame);
        from.removeFrame(frame, goes);
        if (!goes) to.addFrame(frame);
        encryptedCount += encrypted ? 1 : 0;
    }
    return encryptedCount;
}

}  // namespace zal
