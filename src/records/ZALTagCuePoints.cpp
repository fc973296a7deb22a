#include <zaltag/records/ZALTagCuePoints.h>

#include "records/RecordHash.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<std::int64_t> newestVersion{0};

constexpr double millisecondsPerSecond = 1000;

ZALJSONValue cueToJSON(const ZALTagCuePoint& cue) {
    ZALJSONValue::Object out{{"time", cue.time() * millisecondsPerSecond}};
    if (cue.name()) out["name"] = *cue.name();
    return out;
}

ZALTagCuePoint cueFromJSON(const ZALJSONValue& value) {
    return ZALTagCuePoint::cuePointWithTime(value["time"].doubleValue() / millisecondsPerSecond,
                                            value["name"].stringValue());
}

}  // namespace

std::optional<ZALJSONValue> ZALTagCuePoints::JSONDict() const {
    ZALJSONValue::Array cues;
    for (const ZALTagCuePoint& cue : cuePoints_) {
        cues.push_back(cueToJSON(cue));
    }
    ZALJSONValue::Object dictionary = envelope();
    dictionary["cues"] = std::move(cues);
    return dictionary;
}

void ZALTagCuePoints::updateWithJSONDict(const ZALJSONValue& dictionary) {
    std::vector<ZALTagCuePoint> cues;
    for (const ZALJSONValue& cue : dictionary["cues"].arrayValue()) {
        cues.push_back(cueFromJSON(cue));
    }
    cuePoints_ = std::move(cues);
    setAlgorithm(dictionary["algorithm"].integerValue());
}

std::string ZALTagCuePoints::algorithmKey() {
    return "CuePoints";
}
std::int64_t ZALTagCuePoints::algorithmVersion() {
    return newestVersion;
}
void ZALTagCuePoints::setAlgorithmVersion(std::int64_t version) {
    newestVersion = version;
}

bool ZALTagCuePoints::isEqualToTagCuePoints(const ZALTagCuePoints& other) const {
    return isEqualToTagProperty(other) && cuePoints_ == other.cuePoints_;
}

bool ZALTagCuePoints::isEqual(const ZALTagCustomProperty& other) const {
    const auto* cues = dynamic_cast<const ZALTagCuePoints*>(&other);
    return cues != nullptr && isEqualToTagCuePoints(*cues);
}

std::size_t ZALTagCuePoints::hash() const {
    return zal::formattedHash("{}{}", ZALTagCustomProperty::hash(), cuePoints_.hash());
}
