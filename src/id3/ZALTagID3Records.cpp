// The library's own records in the GEOB frames of the ID3 family.

#include <zaltag/id3/ZALTagID3.h>

#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "records/Carriers.h"
#include "records/StoredRecord.h"

#include <zaltag/records/ZALTagRecordData.h>

std::optional<ZALJSONValue> ZALTagID3::storedDictionary(const std::string& description) const {
    if (description.empty()) return std::nullopt;
    const ZALNullableData stored = zal::objectOf(state().v2Tags, description);
    return stored ? JSONDict(*stored) : std::nullopt;
}

void ZALTagID3::setZalTagPropertyDescription(const ZALTagCustomProperty* record,
                                             const std::string& description) {
    if (state().v2 == nullptr || description.empty()) return;
    const ZALNullableData stored = zal::storedRecord(record);
    if (!stored) return;
    if (!stored->empty()) {
        zal::setObject(*state().v2, description, *stored);
    } else {
        zal::removeObject(*state().v2, description);
    }
}

std::optional<ZALTagKey> ZALTagID3::zalKey() const {
    return zalTagPropertyOfClassDescription<ZALTagKey>(zal::keyCarrier.object);
}
void ZALTagID3::setZalKey(const std::optional<ZALTagKey>& key) {
    setZalTagPropertyDescription(key ? &*key : nullptr, zal::keyCarrier.object);
}

std::optional<ZALTagEnergy> ZALTagID3::zalEnergy() const {
    return zalTagPropertyOfClassDescription<ZALTagEnergy>(zal::energyCarrier.object);
}
void ZALTagID3::setZalEnergy(const std::optional<ZALTagEnergy>& energy) {
    setZalTagPropertyDescription(energy ? &*energy : nullptr, zal::energyCarrier.object);
}

std::optional<ZALTagBeatGrid> ZALTagID3::zalBeatGrid() const {
    return zalTagPropertyOfClassDescription<ZALTagBeatGrid>(zal::beatGridCarrier.object);
}
void ZALTagID3::setZalBeatGrid(const std::optional<ZALTagBeatGrid>& grid) {
    setZalTagPropertyDescription(grid ? &*grid : nullptr, zal::beatGridCarrier.object);
}

std::optional<ZALTagCuePoints> ZALTagID3::zalCuePoints() const {
    return zalTagPropertyOfClassDescription<ZALTagCuePoints>(zal::cuePointsCarrier.object);
}
void ZALTagID3::setZalCuePoints(const std::optional<ZALTagCuePoints>& cuePoints) {
    setZalTagPropertyDescription(cuePoints ? &*cuePoints : nullptr, zal::cuePointsCarrier.object);
}

std::optional<ZALTagVelvetCascade> ZALTagID3::zalVelvetCascade() const {
    return zalTagPropertyOfClassDescription<ZALTagVelvetCascade>(zal::cascadeCarrier.object);
}
void ZALTagID3::setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record) {
    setZalTagPropertyDescription(record ? &*record : nullptr, zal::cascadeCarrier.object);
}
