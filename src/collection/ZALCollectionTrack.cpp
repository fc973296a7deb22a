#include <zaltag/collection/ZALCollectionTrack.h>

#include "base/Numbers.h"
#include "base/Paths.h"
#include "collection/BeatWalk.h"
#include "collection/NFD.h"
#include "collection/XML.h"

ZALCollectionTrack::~ZALCollectionTrack() = default;

ZALNullableString ZALCollectionTrack::decomposedStringWithCanonicalMapping() const {
    decompose();
    return decomposed_.empty() ? path_ : decomposed_;
}

std::string_view ZALCollectionTrack::indexKey() const {
    decompose();
    if (!decomposed_.empty()) return decomposed_;
    return path_ ? std::string_view(*path_) : std::string_view();
}

ZALNullableString ZALCollectionTrack::filename() const {
    if (!path_) return std::nullopt;
    return std::string(zal::lastPathComponent(*path_));
}

std::string ZALCollectionTrack::packedAttributes() const {
    if (element_ == nullptr) return keptAttributes_;
    std::string packed;
    element().packAttributes(packed);
    const auto isList = [this](std::string_view name) {
        const char* list = usualNames().list;
        return name == "POSITION_MARK" || name == "CUE_V2" || (list != nullptr && name == list);
    };
    for (zal::XMLElement child = element().firstChild(); child; child = child.next()) {
        if (!isList(child.name())) child.packAttributes(packed, child.name());
    }
    return packed;
}

std::map<std::string, std::string> ZALCollectionTrack::attributes() const {
    std::map<std::string, std::string> all;
    const std::string packed = packedAttributes();
    for (std::size_t at = 0; at < packed.size();) {
        const std::string name = packed.c_str() + at;
        at += name.size() + 1;
        const std::string value = packed.c_str() + at;
        at += value.size() + 1;
        all.emplace(name, value);
    }
    return all;
}

ZALNullableString ZALCollectionTrack::attribute(const std::string& name) const {
    const auto all = attributes();
    const auto found = all.find(name);
    return found != all.end() ? ZALNullableString(found->second) : std::nullopt;
}

std::optional<double> ZALCollectionTrack::number(const std::string& name) const {
    const ZALNullableString text = attribute(name);
    const double value = zal::doubleValue(text.value_or(""));
    return value > 0 ? std::optional(value) : std::nullopt;
}

std::optional<double> ZALCollectionTrack::tempo() const {
    return number(usualNames().tempo);
}

std::optional<double> ZALCollectionTrack::length() const {
    const auto first = number(usualNames().length[0]);
    return first ? first : number(usualNames().length[1]);
}

std::optional<ZALArray<double>> ZALCollectionTrack::beatTimes() const {
    const std::optional<ZALTrackTempo> tempo = keptTempo_ ? *keptTempo_ : readTempo();
    return tempo ? zal::beatTimesOf(*tempo) : std::nullopt;
}

ZALArray<ZALTagCuePoint> ZALCollectionTrack::asWritten(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                       const ZALCueRequest& request) const {
    const ZALArray<ZALTagCuePoint> sorted =
        ZALCuePointsMovedBy(ZALSortedCuePoints(cuePoints), request.offset);
    if (request.keepsTimes) return sorted;
    return ZALCuePointsAdjustedToBeatTimes(sorted, beatTimes().value_or(ZALArray<double>()));
}

std::string ZALCollectionTrack::whyLeftOut(std::chrono::system_clock::time_point,
                                           const ZALCueRequest&) const {
    return {};
}

void ZALCollectionTrack::setPath(ZALNullableString path) {
    path_ = std::move(path);
    isDecomposed_ = false;
}

void ZALCollectionTrack::decompose() const {
    if (isDecomposed_) return;
    isDecomposed_ = true;
    decomposed_ = path_ ? zal::canonicalDecomposition(*path_) : std::string();
    if (decomposed_ == path_) decomposed_.clear();
}

zal::XMLElement ZALCollectionTrack::element() const {
    return zal::XMLElement::ofHandle(element_);
}

void ZALCollectionTrack::setElement(const zal::XMLElement& element) {
    element_ = element.handle();
}

void ZALCollectionTrack::leaveDocument() {
    decompose();
    if (!keptTempo_) keptTempo_ = std::make_shared<const std::optional<ZALTrackTempo>>(readTempo());
    keptAttributes_ = packedAttributes();
    element_ = nullptr;
    xmlNeedsUpdate_ = false;
}
