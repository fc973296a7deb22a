// The payloads of a tag object: the library's own records, and Serato's.

#include <zaltag/tag/ZALTag.h>

#include "records/SeratoSlots.h"
#include "tag/TagContents.h"

#include <zaltag/records/ZALTagRecordData.h>

namespace {

using zal::Carrier;
using zal::TagContents;
using zal::TagStore;

// The library's own records: in an object without contents each is a member.

template <typename Record>
std::optional<Record> recordIn(const TagContents* contents, const Carrier& carrier,
                               const std::optional<Record>& member) {
    if (contents == nullptr) return member;
    return contents->firstPayload(carrier, [](const ZALData& payload, const TagStore&) {
        return Record::propertyWithJSONDict(ZALTagRecordDictionary(payload));
    });
}

void setPayload(TagContents& contents, const Carrier& carrier, const ZALNullableData& payload) {
    contents.forEachWritten([&](TagStore& store) { store.setPayload(carrier, payload); });
}

template <typename Record>
void setRecord(TagContents* contents, const Carrier& carrier, std::optional<Record>& member,
               const std::optional<Record>& record) {
    if (contents == nullptr) {
        member = record;
        return;
    }
    contents->forEachWritten(
        [&](TagStore& store) { zal::setRecord(store, carrier, record ? &*record : nullptr); });
}

std::optional<ZALTagSeratoMarkerOld> oldMarkerOf(const TagStore& store) {
    return zal::readOldSeratoMarker(store.payload(zal::markersCarrier), store.seratoForm());
}

void writeOldSlots(TagContents& contents, const zal::SeratoSlots& slots) {
    contents.forEachWritten([&](TagStore& store) {
        if (!store.carries(zal::markersCarrier)) return;
        const ZALNullableData data = zal::renderedOldSeratoMarker(
            zal::oldSeratoMarkerWithSlots(oldMarkerOf(store), slots), store.seratoForm());
        if (data) store.setPayload(zal::markersCarrier, data);
    });
}

void writeNewSlots(TagContents& contents, const std::optional<ZALTagSeratoMarker>& old,
                   const zal::SeratoSlots& slots) {
    const ZALTagSeratoMarker marker = zal::seratoMarkerWithSlots(old, slots);
    contents.forEachWritten([&](TagStore& store) {
        if (!store.carries(zal::markers2Carrier)) return;
        const ZALNullableData data = zal::renderedSeratoMarker(marker, store.seratoForm());
        if (data) store.setPayload(zal::markers2Carrier, data);
    });
}

void writeOldCuePoints(TagContents& contents, const std::optional<ZALTagSeratoMarker>& marker,
                       const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (cuePoints.empty()) return setPayload(contents, zal::markersCarrier, std::nullopt);
    writeOldSlots(contents, zal::seratoSlotsFor(cuePoints, marker));
}

void writeNewCuePoints(TagContents& contents, const std::optional<ZALTagSeratoMarker>& marker,
                       const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (cuePoints.empty()) return setPayload(contents, zal::markers2Carrier, std::nullopt);
    writeNewSlots(contents, marker, zal::seratoSlotsFor(cuePoints, marker));
}

// The legacy record, then Markers2, which is the last one.
void writeCuePoints(TagContents& contents, const std::optional<ZALTagSeratoMarker>& marker,
                    const ZALArray<ZALTagCuePoint>& cuePoints) {
    writeOldCuePoints(contents, marker, cuePoints);
    writeNewCuePoints(contents, marker, cuePoints);
    contents.forEachWritten([](TagStore& store) { store.movePayloadToEnd(zal::markers2Carrier); });
}

// The first legacy record that can be written again, and the file type of the form in which it stands.
std::optional<std::pair<ZALTagSeratoMarkerOld, const char*>> renderableOldMarker(
    const TagContents* contents) {
    using Found = std::optional<std::pair<ZALTagSeratoMarkerOld, const char*>>;
    if (contents == nullptr) return std::nullopt;
    return contents->firstPayload(
        zal::markersCarrier, [](const ZALData& payload, const TagStore& store) -> Found {
            const auto marker = zal::readOldSeratoMarker(payload, store.seratoForm());
            const char* type = store.seratoForm() == zal::SeratoForm::raw ? "mp3" : "m4a";
            if (!marker || !marker->isRenderableForFileType(type)) return std::nullopt;
            return std::pair(*marker, type);
        });
}

}  // namespace

std::optional<ZALTagKey> ZALTag::zalKey() const {
    return recordIn(contents_.get(), zal::keyCarrier, zalKey_);
}
void ZALTag::setZalKey(const std::optional<ZALTagKey>& key) {
    setRecord(contents_.get(), zal::keyCarrier, zalKey_, key);
}

std::optional<ZALTagEnergy> ZALTag::zalEnergy() const {
    return recordIn(contents_.get(), zal::energyCarrier, zalEnergy_);
}
void ZALTag::setZalEnergy(const std::optional<ZALTagEnergy>& energy) {
    setRecord(contents_.get(), zal::energyCarrier, zalEnergy_, energy);
}

std::optional<ZALTagBeatGrid> ZALTag::zalBeatGrid() const {
    return recordIn(contents_.get(), zal::beatGridCarrier, zalBeatGrid_);
}
void ZALTag::setZalBeatGrid(const std::optional<ZALTagBeatGrid>& beatGrid) {
    setRecord(contents_.get(), zal::beatGridCarrier, zalBeatGrid_, beatGrid);
}

std::optional<ZALTagCuePoints> ZALTag::zalCuePoints() const {
    return recordIn(contents_.get(), zal::cuePointsCarrier, zalCuePoints_);
}
void ZALTag::setZalCuePoints(const std::optional<ZALTagCuePoints>& cuePoints) {
    setRecord(contents_.get(), zal::cuePointsCarrier, zalCuePoints_, cuePoints);
}

std::optional<ZALTagVelvetCascade> ZALTag::zalVelvetCascade() const {
    return recordIn(contents_.get(), zal::cascadeCarrier, zalVelvetCascade_);
}
void ZALTag::setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record) {
    setRecord(contents_.get(), zal::cascadeCarrier, zalVelvetCascade_, record);
}

// Serato

std::optional<ZALTagSeratoMarker> ZALTag::seratoMarker() const {
    if (contents_ == nullptr) return std::nullopt;
    return contents_->firstPayload(zal::markers2Carrier, [](const ZALData& payload, const TagStore& store) {
        return zal::readSeratoMarker(payload, store.seratoForm());
    });
}

std::optional<ZALTagSeratoGrid> ZALTag::seratoGrid() const {
    if (contents_ == nullptr) return std::nullopt;
    return contents_->firstPayload(zal::seratoGridCarrier, [](const ZALData& payload, const TagStore& store) {
        return zal::readSeratoGrid(payload, store.seratoForm());
    });
}

std::optional<ZALTagSeratoMarkerOld> ZALTag::oldSeratoMarker() const {
    const auto marker = renderableOldMarker(contents_.get());
    return marker ? std::optional(marker->first) : std::nullopt;
}

ZALNullableData ZALTag::oldSeratoMarkerData() const {
    const auto marker = renderableOldMarker(contents_.get());
    return marker ? ZALNullableData(marker->first.markerDataForFileType(marker->second)) : std::nullopt;
}

bool ZALTag::supportsOldSeratoMarker() const {
    return contents_ != nullptr &&
           contents_->anyStore([](const TagStore& store) { return store.carries(zal::markersCarrier); });
}

ZALArray<ZALTagCuePoint> ZALTag::seratoCuePoints() const {
    return zal::cuePointsOfSeratoMarker(seratoMarker());
}

ZALArray<ZALTagCuePoint> ZALTag::seratoLoops() const {
    return zal::loopsOfSeratoMarker(seratoMarker());
}

void ZALTag::setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    TagContents& contents = contentsFor("setSeratoCuePoints:");
    const auto marker = seratoMarker();
    writeCuePoints(
        contents, marker,
        cuePoints.empty() ? cuePoints : zal::cuePointsOnSeratoGrid(cuePoints, seratoGrid(), marker));
}

void ZALTag::setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    writeCuePoints(contentsFor("setRawSeratoCuePoints:"), seratoMarker(), cuePoints);
}

void ZALTag::setSeratoLoops(const ZALArray<ZALTagCuePoint>& loops) {
    TagContents& contents = contentsFor("setSeratoLoops:");
    const auto marker = seratoMarker();
    const zal::SeratoSlots slots =
        zal::seratoLoopSlotsFor(zal::cuePointsOnSeratoGrid(loops, seratoGrid(), marker), marker);
    if (!marker && slots.loops->empty()) return;
    writeOldSlots(contents, slots);
    writeNewSlots(contents, marker, slots);
}

ZALCuePlan ZALTag::planSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, bool keepsTimes) const {
    const auto marker = seratoMarker();
    const auto moved = keepsTimes ? cuePoints : zal::cuePointsOnSeratoGrid(cuePoints, seratoGrid(), marker);
    ZALCuePlan plan{zal::seratoSlotsFor(moved, marker).outcomes};
    for (std::size_t i = 0; i < plan.outcomes.size(); ++i) {
        plan.outcomes[i].asked = cuePoints[i];
    }
    return plan;
}

void ZALTag::setSeratoCuePointsOld(const ZALArray<ZALTagCuePoint>& cuePoints) {
    writeOldCuePoints(contentsFor("setSeratoCuePointsOld:"), seratoMarker(), cuePoints);
}

void ZALTag::setSeratoCuePointsNew(const ZALArray<ZALTagCuePoint>& cuePoints) {
    writeNewCuePoints(contentsFor("setSeratoCuePointsNew:"), seratoMarker(), cuePoints);
}

bool ZALTag::hasSeratoMetadata() const {
    return contentsFor("hasSeratoMetadata").anyStore([](const TagStore& store) {
        return store.holdsSeratoMetadata();
    });
}
bool ZALTag::hasTraktorMetadata() const {
    return contentsFor("hasTraktorMetadata").anyStore([](const TagStore& store) {
        return store.holdsTraktorMetadata();
    });
}
