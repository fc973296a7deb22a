#include <zaltag/records/ZALTagEnergy.h>

#include "records/RecordHash.h"

#include <atomic>

namespace {

std::atomic<std::int64_t> newestVersion{0};

}  // namespace

std::optional<ZALJSONValue> ZALTagEnergy::JSONDict() const {
    ZALJSONValue::Object dictionary = envelope();
    dictionary["energyLevel"] = energy_;
    return dictionary;
}

void ZALTagEnergy::updateWithJSONDict(const ZALJSONValue& dictionary) {
    energy_ = dictionary["energyLevel"].integerValue();
    setAlgorithm(dictionary["algorithm"].integerValue());
}

std::string ZALTagEnergy::algorithmKey() {
    return "Energy";
}
std::int64_t ZALTagEnergy::algorithmVersion() {
    return newestVersion;
}
void ZALTagEnergy::setAlgorithmVersion(std::int64_t version) {
    newestVersion = version;
}

bool ZALTagEnergy::isEqualToTagEnergy(const ZALTagEnergy& other) const {
    return isEqualToTagProperty(other) && energy_ == other.energy_;
}

bool ZALTagEnergy::isEqual(const ZALTagCustomProperty& other) const {
    const auto* energy = dynamic_cast<const ZALTagEnergy*>(&other);
    return energy != nullptr && isEqualToTagEnergy(*energy);
}

std::size_t ZALTagEnergy::hash() const {
    return zal::formattedHash("{}{}", ZALTagCustomProperty::hash(), energy_);
}
