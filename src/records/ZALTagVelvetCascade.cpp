#include <zaltag/records/ZALTagVelvetCascade.h>

#include "records/RecordHash.h"

std::optional<ZALJSONValue> ZALTagVelvetCascade::JSONDict() const {
    return ZALJSONValue::Object{
        {"backupFileName", backupFileName_ ? *backupFileName_ : ""},
        {"isProcessed", isProcessed_},
    };
}

void ZALTagVelvetCascade::updateWithJSONDict(const ZALJSONValue& dictionary) {
    const std::string name = dictionary["backupFileName"].stringValue().value_or("");
    backupFileName_ = name.empty() ? nullptr : std::make_shared<const std::string>(name);
    isProcessed_ = dictionary["isProcessed"].boolValue();
}

bool ZALTagVelvetCascade::isEqualToTagVelvetCascade(const ZALTagVelvetCascade& other) const {
    // The names are compared by identity on purpose: equal names of two files are two backups.
    return isEqualToTagProperty(other) && backupFileName_ == other.backupFileName_ &&
           isProcessed_ == other.isProcessed_;
}

bool ZALTagVelvetCascade::isEqual(const ZALTagCustomProperty& other) const {
    const auto* cascade = dynamic_cast<const ZALTagVelvetCascade*>(&other);
    return cascade != nullptr && isEqualToTagVelvetCascade(*cascade);
}

std::size_t ZALTagVelvetCascade::hash() const {
    const std::size_t nameHash = backupFileName_ ? std::hash<std::string>{}(*backupFileName_) : 0;
    return zal::formattedHash("{}{}{:d}", ZALTagCustomProperty::hash(), nameHash, isProcessed_);
}
