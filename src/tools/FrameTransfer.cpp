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

int transferFrames(const RawTag& from, ID3v2Store& to) {
    std::vector<ReadFrame> frames;
    if (!readFrames(from, GenreNumbers::named, frames)) return 0;
    int encryptedCount = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const ReadFrame& read = frames[i];
        const RawFrame& raw = from.frames[i];
        const bool isEncrypted = contentOf(raw).encryption >= 0;
        encryptedCount += isEncrypted ? 1 : 0;
        const bool stays = read.frame != nullptr && belongsToAudio(*read.frame);
        if (isEncrypted || stays || read.isMerged || raw.contentSize() == 0) continue;
        if (raw.currentID() == "TCON") to.tagToEdit("TCON").removeFrames("TCON");
        to.addRaw(read.isRenewed ? read.frame->render() : frameInVersion4(raw));
    }
    return encryptedCount;
}

}  // namespace zal
