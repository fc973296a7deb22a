// A WAV file is opened, changed and saved, twice: what is no tag stays as it is, and a save that succeeds can
// be read again.

#include "containers/ZALFile.h"

#include "AudioFile.h"
#include "FuzzSupport.h"

#include <zaltag/containers/ZALTagWAV.h>

#include <tbytevectorstream.h>

#include <utility>
#include <vector>

namespace {

// The chunks that are neither tags nor records, as TagLib reads them.
class Chunks final : public TagLib::RIFF::WAV::ZALFile {
  public:
    using ZALFile::ZALFile;

    std::vector<std::pair<TagLib::ByteVector, TagLib::ByteVector>> others() {
        std::vector<std::pair<TagLib::ByteVector, TagLib::ByteVector>> chunks;
        for (unsigned int i = 0; i < chunkCount(); ++i) {
            const TagLib::ByteVector name = chunkName(i);
            const TagLib::ByteVector content = chunkData(i);
            const bool isInfo = name == "LIST" && (content.startsWith("INFO") || content.size() < 4);
            if (name != "ID3 " && name != "id3 " && name != "VCAS" && !isInfo)
                chunks.emplace_back(name, content);
        }
        return chunks;
    }
};

auto othersOf(const ZALData& file) {
    TagLib::ByteVectorStream stream(TagLib::ByteVector(reinterpret_cast<const char*>(file.data()),
                                                       static_cast<unsigned int>(file.size())));
    return Chunks(&stream, false).others();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const FuzzedFile file(data, size, "wav");
    const auto tag = ZALTagWAV::tagAtPath(file.path());
    if (tag == nullptr) return 0;
    readEverything(*tag);
    const auto chunks = othersOf({data, data + size});
    for (const std::string text : {"short", "a longer text, so that chunks move"}) {
        tag->setModifiedBy(text);
        tag->setInfoTitle(text);
        tag->setZalVelvetCascade(ZALTagVelvetCascade::tagWithBackupFileName(nullptr, true));
        const bool saved = tag->save();
        require(othersOf(contentsOf(file.path())) == chunks);
        const auto again = ZALTagWAV::tagAtPath(file.path());
        require(again != nullptr);
        require(!saved || (again->modifiedBy() == text && again->infoTitle() == text));
    }
    return 0;
}
