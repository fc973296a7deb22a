#include <zaltag/collection/ZALCollectionTrack.h>

#include "base/Paths.h"
#include "collection/BeatWalk.h"
#include "platform/NFD.h"
#include "platform/XML.h"

ZALCollectionTrack::~ZALCollectionTrack() = default;

ZALNullableString ZALCollectionTrack::decomposedStringWithCanonicalMapping() const {
    return decomposed_.empty() ? path_ : decomposed_;
}

std::string_view ZALCollectionTrack::indexKey() const {
    if (!decomposed_.empty()) return decomposed_;
    return path_ ? std::string_view(*path_) : std::string_view();
}

ZALNullableString ZALCollectionTrack::filename() const {
    if (!path_) return std::nullopt;
    return std::string(zal::lastPathComponent(*path_));
}

std::optional<ZALArray<double>> ZALCollectionTrack::beatTimes() const {
    const std::optional<ZALTrackTempo> tempo = keptTempo_ ? *keptTempo_ : readTempo();
    return tempo ? zal::beatTimesOf(*tempo) : std::nullopt;
}

ZALArray<ZALTagCuePoint> ZALCollectionTrack::onBeats(const ZALArray<ZALTagCuePoint>& cuePoints) const {
    return cuePointsAdjustedToBeatTimes(sortedCuePoints(cuePoints), beatTimes().value_or(ZALArray<double>()));
}

std::string ZALCollectionTrack::whyLeftOut(std::chrono::system_clock::time_point) const {
    return {};
}

void ZALCollectionTrack::setPath(ZALNullableString path) {
    path_ = std::move(path);
    decomposed_.clear();
    if (!path_) return;
    std::string decomposed = zal::canonicalDecomposition(*path_);
    if (decomposed != *path_) decomposed_ = std::move(decomposed);
}

zal::XMLElement ZALCollectionTrack::element() const {
    return zal::XMLElement::ofHandle(element_);
}

void ZALCollectionTrack::setElement(const zal::XMLElement& element) {
    element_ = element.handle();
}

void ZALCollectionTrack::leaveDocument() {
    if (!keptTempo_) keptTempo_ = std::make_shared<const std::optional<ZALTrackTempo>>(readTempo());
    element_ = nullptr;
    xmlNeedsUpdate_ = false;
}
