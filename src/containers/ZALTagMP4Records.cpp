// The DJ data in the items of an MP4 file: the library's own records, Serato's, and the trace of Traktor.

#include <zaltag/containers/ZALTagMP4.h>

#include "containers/MP4State.h"
#include "containers/TextCarrier.h"
#include "records/Carriers.h"
#include "records/SeratoCuePoints.h"
#include "records/StoredRecord.h"

#include <tfile.h>

#include <algorithm>
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

ZALNullableData payloadOfItem(const TagLib::MP4::Tag& tag, const std::string& name) {
    return zal::payloadOf(zal::itemText(tag, name));
}

}  // namespace

// The library's own records

std::optional<ZALJSONValue> ZALTagMP4::storedDictionary(const std::string& atomName) const {
    return zal::recordDictionaryOf(zal::itemText(*state_->tag, atomName));
}

void ZALTagMP4::setZalTagPropertyAtomName(const ZALTagCustomProperty* record, const std::string& atomName) {
    if (atomName.empty()) return;
    const ZALNullableData stored = zal::storedRecord(record);
    if (!stored) return;
    if (!stored->empty()) {
        zal::setItemText(*state_->tag, atomName, zal::carrierText(*stored));
    } else {
        zal::removeItem(*state_->tag, atomName);
    }
}

std::optional<ZALTagKey> ZALTagMP4::zalKey() const {
    return zalTagPropertyOfClassAtomName<ZALTagKey>(zal::keyCarrier.item);
}
void ZALTagMP4::setZalKey(const std::optional<ZALTagKey>& key) {
    setZalTagPropertyAtomName(key ? &*key : nullptr, zal::keyCarrier.item);
}

std::optional<ZALTagEnergy> ZALTagMP4::zalEnergy() const {
    return zalTagPropertyOfClassAtomName<ZALTagEnergy>(zal::energyCarrier.item);
}
void ZALTagMP4::setZalEnergy(const std::optional<ZALTagEnergy>& energy) {
    setZalTagPropertyAtomName(energy ? &*energy : nullptr, zal::energyCarrier.item);
}

std::optional<ZALTagBeatGrid> ZALTagMP4::zalBeatGrid() const {
    return zalTagPropertyOfClassAtomName<ZALTagBeatGrid>(zal::beatGridCarrier.item);
}
void ZALTagMP4::setZalBeatGrid(const std::optional<ZALTagBeatGrid>& grid) {
    setZalTagPropertyAtomName(grid ? &*grid : nullptr, zal::beatGridCarrier.item);
}

std::optional<ZALTagCuePoints> ZALTagMP4::zalCuePoints() const {
    return zalTagPropertyOfClassAtomName<ZALTagCuePoints>(zal::cuePointsCarrier.item);
}
void ZALTagMP4::setZalCuePoints(const std::optional<ZALTagCuePoints>& cuePoints) {
    setZalTagPropertyAtomName(cuePoints ? &*cuePoints : nullptr, zal::cuePointsCarrier.item);
}

std::optional<ZALTagVelvetCascade> ZALTagMP4::zalVelvetCascade() const {
    return zalTagPropertyOfClassAtomName<ZALTagVelvetCascade>(zal::cascadeCarrier.item);
}
void ZALTagMP4::setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record) {
    setZalTagPropertyAtomName(record ? &*record : nullptr, zal::cascadeCarrier.item);
}

// Serato

std::optional<ZALTagSeratoMarker> ZALTagMP4::seratoMarker() const {
    return zal::readSeratoMarker(payloadOfItem(*state_->tag, zal::markers2Carrier.item),
                                 zal::SeratoForm::encoded);
}

std::optional<ZALTagSeratoGrid> ZALTagMP4::seratoGrid() const {
    return zal::readSeratoGrid(payloadOfItem(*state_->tag, zal::seratoGridCarrier.item),
                               zal::SeratoForm::encoded);
}

ZALNullableData ZALTagMP4::oldSeratoMarkerData() const {
    const auto marker = zal::readOldSeratoMarker(payloadOfItem(*state_->tag, zal::markersCarrier.item),
                                                 zal::SeratoForm::encoded);
    return marker ? ZALNullableData(marker->markerDataForFileType("m4a")) : std::nullopt;
}

ZALArray<ZALTagCuePoint> ZALTagMP4::seratoCuePoints() const {
    return zal::cuePointsOfSeratoMarker(seratoMarker());
}

void ZALTagMP4::setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    setRawSeratoCuePoints(cuePoints.empty() ? cuePoints
                                            : zal::cuePointsOnSeratoGrid(cuePoints, seratoGrid()));
}

void ZALTagMP4::setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    setSeratoCuePointsOld(cuePoints);
    setSeratoCuePointsNew(cuePoints);
}

void ZALTagMP4::setSeratoCuePointsOld(const ZALArray<ZALTagCuePoint>& cuePoints) {
    TagLib::MP4::Tag& tag = *state_->tag;
    if (cuePoints.empty()) return zal::removeItem(tag, zal::markersCarrier.item);
    const auto existing =
        zal::readOldSeratoMarker(payloadOfItem(tag, zal::markersCarrier.item), zal::SeratoForm::encoded);
    const ZALNullableData data = zal::renderedOldSeratoMarker(
        zal::oldSeratoMarkerWithCuePoints(existing, cuePoints), zal::SeratoForm::encoded);
    if (data) zal::setItemText(tag, zal::markersCarrier.item, zal::carrierText(*data));
}

void ZALTagMP4::setSeratoCuePointsNew(const ZALArray<ZALTagCuePoint>& cuePoints) {
    TagLib::MP4::Tag& tag = *state_->tag;
    if (cuePoints.empty()) return zal::removeItem(tag, zal::markers2Carrier.item);
    const ZALNullableData data = zal::renderedSeratoMarker(
        zal::seratoMarkerWithCuePoints(seratoMarker(), cuePoints), zal::SeratoForm::encoded);
    if (data) zal::setItemText(tag, zal::markers2Carrier.item, zal::carrierText(*data));
}

bool ZALTagMP4::hasSeratoMetadata() const {
    const auto& items = state_->tag->itemMap();
    return std::any_of(items.begin(), items.end(),
                       [](const auto& item) { return item.first.find("serato") >= 0; });
}

// Traktor

bool ZALTagMP4::hasTraktorMetadata() const {
    return mayHoldTraktorMark(*state_->stream) &&
           SearchedFile(*state_->stream).find(traktorMark.data(), traktorOffset, traktorEnd.data()) >= 0;
}
