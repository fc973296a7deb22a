#include <zaltag/collection/ZALCollectionTrack.h>

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
    element_ = nullptr;
    xmlNeedsUpdate_ = false;
}
