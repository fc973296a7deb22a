// The DJ data in the fields of a Xiph comment: the library's own records and Serato's.

#include <zaltag/containers/ZALTagFLAC.h>

#include "containers/FLACState.h"
#include "containers/TextCarrier.h"
#include "records/Carriers.h"
#include "records/SeratoCuePoints.h"
#include "records/StoredRecord.h"

#include <algorithm>

namespace {

using TagLib::Ogg::XiphComment;

// The test is the wrong way round, as the files have it: any other field answers it, a title for one.
bool hasFieldNotBeginningWith(const XiphComment& comment, const char* word) {
    const auto& fields = comment.fieldListMap();
    return std::any_of(fields.begin(), fields.end(),
                       [word](const auto& field) { return !field.first.startsWith(word); });
}

}  // namespace

// The library's own records

std::optional<ZALJSONValue> ZALTagFLAC::storedXiphDictionary(const std::string& xiphName) const {
    return zal::recordDictionaryOf(zal::fieldText(*flacfile_, xiphName));
}

void ZALTagFLAC::setZalTagPropertyXiphName(const ZALTagCustomProperty* record, const std::string& xiphName) {
    const ZALNullableData stored = zal::storedRecord(record);
    if (stored) zal::setFieldText(flacfile_->comment(), xiphName, zal::carrierText(*stored));
}

std::optional<ZALTagKey> ZALTagFLAC::zalKey() const {
    const auto key = zalTagPropertyOfClassXiphName<ZALTagKey>(zal::keyCarrier.field);
    return key ? key : ZALTagID3::zalKey();
}
void ZALTagFLAC::setZalKey(const std::optional<ZALTagKey>& key) {
    setZalTagPropertyXiphName(key ? &*key : nullptr, zal::keyCarrier.field);
    ZALTagID3::setZalKey(key);
}

std::optional<ZALTagEnergy> ZALTagFLAC::zalEnergy() const {
    const auto energy = zalTagPropertyOfClassXiphName<ZALTagEnergy>(zal::energyCarrier.field);
    return energy ? energy : ZALTagID3::zalEnergy();
}
void ZALTagFLAC::setZalEnergy(const std::optional<ZALTagEnergy>& energy) {
    setZalTagPropertyXiphName(energy ? &*energy : nullptr, zal::energyCarrier.field);
    ZALTagID3::setZalEnergy(energy);
}

std::optional<ZALTagBeatGrid> ZALTagFLAC::zalBeatGrid() const {
    const auto grid = zalTagPropertyOfClassXiphName<ZALTagBeatGrid>(zal::beatGridCarrier.field);
    return grid ? grid : ZALTagID3::zalBeatGrid();
}
void ZALTagFLAC::setZalBeatGrid(const std::optional<ZALTagBeatGrid>& grid) {
    setZalTagPropertyXiphName(grid ? &*grid : nullptr, zal::beatGridCarrier.field);
    ZALTagID3::setZalBeatGrid(grid);
}

std::optional<ZALTagCuePoints> ZALTagFLAC::zalCuePoints() const {
    const auto cuePoints = zalTagPropertyOfClassXiphName<ZALTagCuePoints>(zal::cuePointsCarrier.field);
    return cuePoints ? cuePoints : ZALTagID3::zalCuePoints();
}
void ZALTagFLAC::setZalCuePoints(const std::optional<ZALTagCuePoints>& cuePoints) {
    setZalTagPropertyXiphName(cuePoints ? &*cuePoints : nullptr, zal::cuePointsCarrier.field);
    ZALTagID3::setZalCuePoints(cuePoints);
}

std::optional<ZALTagVelvetCascade> ZALTagFLAC::zalVelvetCascade() const {
    const auto record = zalTagPropertyOfClassXiphName<ZALTagVelvetCascade>(zal::cascadeCarrier.field);
    return record ? record : ZALTagID3::zalVelvetCascade();
}
void ZALTagFLAC::setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record) {
    setZalTagPropertyXiphName(record ? &*record : nullptr, zal::cascadeCarrier.field);
    ZALTagID3::setZalVelvetCascade(record);
}

// Serato

std::optional<ZALTagSeratoMarker> ZALTagFLAC::seratoMarker() const {
    const auto payload = zal::payloadOf(zal::fieldText(*flacfile_, zal::markers2Carrier.field));
    return zal::readSeratoMarker(payload, zal::SeratoForm::encoded);
}

std::optional<ZALTagSeratoGrid> ZALTagFLAC::seratoGrid() const {
    const auto payload = zal::payloadOf(zal::fieldText(*flacfile_, zal::seratoGridCarrier.field));
    return zal::readSeratoGrid(payload, zal::SeratoForm::encoded);
}

void ZALTagFLAC::setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    setRawSeratoCuePoints(cuePoints.empty() ? cuePoints
                                            : zal::cuePointsOnSeratoGrid(cuePoints, seratoGrid()));
}

void ZALTagFLAC::setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (cuePoints.empty()) return zal::setFieldText(flacfile_->comment(), zal::markers2Carrier.field, {});
    const ZALNullableData data = zal::renderedSeratoMarker(
        zal::seratoMarkerWithCuePoints(seratoMarker(), cuePoints), zal::SeratoForm::encoded);
    if (data) zal::setFieldText(flacfile_->comment(), zal::markers2Carrier.field, zal::carrierText(*data));
}

bool ZALTagFLAC::hasSeratoMetadata() const {
    return hasFieldNotBeginningWith(flacfile_->comment(), "SERATO");
}

bool ZALTagFLAC::hasTraktorMetadata() const {
    return hasFieldNotBeginningWith(flacfile_->comment(), "TRAKTOR");
}
