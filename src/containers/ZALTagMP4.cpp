#include <zaltag/containers/ZALTagMP4.h>

#include "containers/MP4State.h"
#include "files/TagFile.h"
#include "stores/MP4Fields.h"
#include "tag/TagContents.h"
#include "tag/ZALTagBackEnds.h"

#include <zaltag/records/ZALTagRecordData.h>

#include <tfile.h>

#include <string_view>

namespace {

// Traktor's data are not looked for in front of this place, as the files have it.
constexpr long traktorOffset = 10000;
constexpr std::string_view traktorMark = "NITR";
constexpr std::string_view traktorEnd = "free";
constexpr std::size_t searchedBlock = 1024;  // of TagLib's search

// False when TagLib's search finds no trace of Traktor for certain. It takes its time over every block of a
// file, so that a quick look goes first.
bool mayHoldTraktorMark(zal::TagLibStream& stream) {
    constexpr std::size_t lookedAt = 64 * searchedBlock;
    ZALData block(lookedAt + traktorMark.size() - 1);
    for (unsigned long position = traktorOffset;; position += lookedAt) {
        const std::size_t count = stream.readAt(position, block);
        const std::string_view bytes(reinterpret_cast<const char*>(block.data()), count);
        if (bytes.find(traktorMark) != bytes.npos) return true;
        const std::size_t end = bytes.find(traktorEnd);
        const bool isSeen = end < lookedAt && end % searchedBlock + traktorEnd.size() <= searchedBlock;
        if (isSeen || bytes.size() < lookedAt) return false;
    }
}

// TagLib's search is that of its files.
class SearchedFile final : public TagLib::File {
  public:
    explicit SearchedFile(TagLib::IOStream& stream) : File(&stream) {}

    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }
};

}  // namespace

ZALTagMP4::ZALTagMP4() : state_(std::make_unique<State>()) {}
ZALTagMP4::~ZALTagMP4() = default;

// Opening

const ZALArray<std::string>& ZALTagMP4::supportedFileTypes() {
    static const ZALArray<std::string> types{"m4a", "mp4"};
    return types;
}

bool ZALTagMP4::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagMP4> ZALTagMP4::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagMP4::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagMP4", path);
}

std::shared_ptr<ZALTagMP4> ZALTagMP4::initWithPath(const ZALNullableString& path, bool readOnly,
                                                   ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagMP4> tag(new ZALTagMP4);
        return tag->openMP4(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagMP4 initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagMP4::openMP4(const std::string& path, bool readOnly, zal::Failure& failure) {
    state_->stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (state_->stream == nullptr) return false;
    state_->file = zal::MP4File::open(*state_->stream);
    if (state_->file == nullptr) return false;
    auto contents = std::make_unique<zal::TagContents>();
    contents->add(std::make_unique<zal::MP4Fields>(state_->file->tag()));
    addPictures(*contents);
    setContents(std::move(contents));
    return true;
}

bool ZALTagMP4::readOnly() const {
    return state_->stream->readOnly();
}

// Saving

bool ZALTagMP4::save(ZALError* error) {
    if (!ZALTag::save(error)) return false;
    const auto failure = zal::saveFile(*state_->stream, *state_->file);
    return !failure || failSave(error, failure);
}

// Records by any name

std::optional<ZALJSONValue> ZALTagMP4::storedDictionary(const std::string& atomName) const {
    const ZALNullableData payload =
        zal::MP4Fields(state_->file->tag()).payload({nullptr, atomName.c_str(), nullptr});
    return payload ? ZALTagRecordDictionary(*payload) : std::nullopt;
}

void ZALTagMP4::setZalTagPropertyAtomName(const ZALTagCustomProperty* record, const std::string& atomName) {
    if (atomName.empty()) return;
    zal::MP4Fields fields(state_->file->tag());
    zal::setRecord(fields, {nullptr, atomName.c_str(), nullptr}, record);
}

// Traktor

bool ZALTagMP4::hasTraktorMetadata() const {
    return mayHoldTraktorMark(*state_->stream) &&
           SearchedFile(*state_->stream).find(traktorMark.data(), traktorOffset, traktorEnd.data()) >= 0;
}
