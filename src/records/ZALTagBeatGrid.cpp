#include <zaltag/records/ZALTagBeatGrid.h>

#include "base/Numbers.h"
#include "records/RecordHash.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace {

std::atomic<std::int64_t> newestVersion{0};

std::optional<ZALArray<double>> beatsFromJSON(const ZALJSONValue& value) {
    if (!value.isArray()) return std::nullopt;
    std::vector<double> beats;
    beats.reserve(value.arrayValue().size());
    for (const ZALJSONValue& beat : value.arrayValue()) {
        beats.push_back(beat.doubleValue());
    }
    return beats;
}

}  // namespace

std::optional<ZALJSONValue> ZALTagBeatGrid::JSONDict() const {
    if (!beats_) return std::nullopt;
    ZALJSONValue::Object dictionary = envelope();
    dictionary["beats"] = ZALJSONValue::Array(beats_->begin(), beats_->end());
    dictionary["tempo"] = tempo_;
    return dictionary;
}

void ZALTagBeatGrid::updateWithJSONDict(const ZALJSONValue& dictionary) {
    beats_ = beatsFromJSON(dictionary["beats"]);
    tempo_ = zal::singlePrecision(dictionary["tempo"].doubleValue());  // narrowed, as the files have it
    setAlgorithm(dictionary["algorithm"].integerValue());
}

std::string ZALTagBeatGrid::algorithmKey() {
    return "BeatGrid";
}
std::int64_t ZALTagBeatGrid::algorithmVersion() {
    return newestVersion;
}
void ZALTagBeatGrid::setAlgorithmVersion(std::int64_t version) {
    newestVersion = version;
}

bool ZALTagBeatGrid::isEqualToTagBeatGrid(const ZALTagBeatGrid& other) const {
    if (this == &other) return true;
    return isEqualToTagProperty(other) &&
           isBeatArray(beats_.value_or(ZALArray<double>()), other.beats_.value_or(ZALArray<double>())) &&
           tempo_ == other.tempo_;
}

bool ZALTagBeatGrid::isBeatArray(const ZALArray<double>& beats,
                                 const ZALArray<double>& prettyMuchEqualToBeatArray) {
    return std::equal(beats.begin(), beats.end(), prettyMuchEqualToBeatArray.begin(),
                      prettyMuchEqualToBeatArray.end(),
                      [](double a, double b) { return std::fabs(a - b) <= 1e-13; });
}

bool ZALTagBeatGrid::isEqual(const ZALTagCustomProperty& other) const {
    const auto* grid = dynamic_cast<const ZALTagBeatGrid*>(&other);
    return grid != nullptr && isEqualToTagBeatGrid(*grid);
}

std::size_t ZALTagBeatGrid::hash() const {
    return zal::formattedHash("{}{}{:f}", ZALTagCustomProperty::hash(), beats_ ? beats_->hash() : 0, tempo_);
}
