#include <zaltag/records/ZALTagKey.h>

#include "platform/Log.h"
#include "records/RecordHash.h"

#include <atomic>

namespace {

std::atomic<std::int64_t> newestVersion{0};

}  // namespace

std::optional<ZALJSONValue> ZALTagKey::JSONDict() const {
    if (!key_) return std::nullopt;
    ZALJSONValue::Object dictionary = envelope();
    dictionary["key"] = *key_;
    return dictionary;
}

void ZALTagKey::updateWithJSONDict(const ZALJSONValue& dictionary) {
    key_ = dictionary["key"].stringValue();
    setAlgorithm(dictionary["algorithm"].integerValue());
}

std::string ZALTagKey::algorithmKey() {
    return "Key";
}
std::int64_t ZALTagKey::algorithmVersion() {
    return newestVersion;
}
void ZALTagKey::setAlgorithmVersion(std::int64_t version) {
    newestVersion = version;
}

bool ZALTagKey::isEqualToTagKey(const ZALTagKey& other) const {
    if (this == &other) return true;
    return isEqualToTagProperty(other) && key_.has_value() && key_ == other.key_;
}

bool ZALTagKey::isEqual(const ZALTagCustomProperty& other) const {
    const auto* key = dynamic_cast<const ZALTagKey*>(&other);
    return key != nullptr && isEqualToTagKey(*key);
}

std::size_t ZALTagKey::hash() const {
    return zal::formattedHash("{}{}", ZALTagCustomProperty::hash(), zal::describe(key_));
}
