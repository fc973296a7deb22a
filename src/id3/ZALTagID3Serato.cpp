// What other programs keep in the tag: Serato's objects in GEOB frames, Traktor's PRIV frame.

#include <zaltag/id3/ZALTagID3.h>

#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "records/Carriers.h"
#include "records/SeratoCuePoints.h"

#include <generalencapsulatedobjectframe.h>
#include <privateframe.h>

#include <algorithm>

namespace {

using TagLib::ID3v2::Frame;
using TagLib::ID3v2::GeneralEncapsulatedObjectFrame;
using TagLib::ID3v2::PrivateFrame;

std::vector<PrivateFrame*> traktorFrames(const std::vector<const TagLib::ID3v2::Tag*>& tags) {
    std::vector<PrivateFrame*> frames;
    for (const TagLib::ID3v2::Tag* tag : tags) {
        for (Frame* frame : zal::framesWithID(*tag, "PRIV")) {
            auto* found = dynamic_cast<PrivateFrame*>(frame);
            if (found != nullptr && found->owner().find("TRAKTOR") >= 0) frames.push_back(found);
        }
    }
    return frames;
}

}  // namespace

std::optional<ZALTagSeratoMarker> ZALTagID3::seratoMarker() const {
    return zal::readSeratoMarker(zal::objectOf(state().v2Tags, zal::markers2Carrier.object),
                                 zal::SeratoForm::raw);
}

std::optional<ZALTagSeratoGrid> ZALTagID3::seratoGrid() const {
    return zal::readSeratoGrid(zal::objectOf(state().v2Tags, zal::seratoGridCarrier.object),
                               zal::SeratoForm::raw);
}

ZALNullableData ZALTagID3::oldSeratoMarkerData() const {
    const auto marker = zal::readOldSeratoMarker(zal::objectOf(state().v2Tags, zal::markersCarrier.object),
                                                 zal::SeratoForm::raw);
    const bool isRenderable = marker && marker->isRenderableForFileType("mp3");
    return isRenderable ? ZALNullableData(marker->markerDataForFileType("mp3")) : std::nullopt;
}

ZALArray<ZALTagCuePoint> ZALTagID3::seratoCuePoints() const {
    return zal::cuePointsOfSeratoMarker(seratoMarker());
}

void ZALTagID3::setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (state().v2 == nullptr) return;
    setRawSeratoCuePoints(cuePoints.empty() ? cuePoints
                                            : zal::cuePointsOnSeratoGrid(cuePoints, seratoGrid()));
}

void ZALTagID3::setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (state().v2 == nullptr) return;
    setSeratoCuePointsOld(cuePoints);
    setSeratoCuePointsNew(cuePoints);
    if (Frame* frame = zal::objectFrame(state().v2->tag(), zal::markers2Carrier.object))
        zal::moveToEnd(*state().v2, frame);
}

void ZALTagID3::setSeratoCuePointsNew(const ZALArray<ZALTagCuePoint>& cuePoints) {
    zal::ID3v2Store* v2 = state().v2;
    if (v2 == nullptr) return;
    if (cuePoints.empty()) return zal::removeObject(*v2, zal::markers2Carrier.object);
    const ZALNullableData data = zal::renderedSeratoMarker(
        zal::seratoMarkerWithCuePoints(seratoMarker(), cuePoints), zal::SeratoForm::raw);
    if (data) zal::setObject(*v2, zal::markers2Carrier.object, *data);
}

void ZALTagID3::setSeratoCuePointsOld(const ZALArray<ZALTagCuePoint>& cuePoints) {
    zal::ID3v2Store* v2 = state().v2;
    if (v2 == nullptr) return;
    if (cuePoints.empty()) return zal::removeObject(*v2, zal::markersCarrier.object);
    const auto existing = zal::readOldSeratoMarker(zal::objectOf(state().v2Tags, zal::markersCarrier.object),
                                                   zal::SeratoForm::raw);
    const ZALNullableData data = zal::renderedOldSeratoMarker(
        zal::oldSeratoMarkerWithCuePoints(existing, cuePoints), zal::SeratoForm::raw);
    if (data) zal::setObject(*v2, zal::markersCarrier.object, *data);
}

bool ZALTagID3::hasSeratoMetadata() const {
    const auto isSerato = [](const Frame* frame) {
        const auto* object = dynamic_cast<const GeneralEncapsulatedObjectFrame*>(frame);
        return object != nullptr && object->description().find("Serato") >= 0;
    };
    return std::ranges::any_of(state().v2Tags, [&isSerato](const TagLib::ID3v2::Tag* tag) {
        return std::ranges::any_of(zal::framesWithID(*tag, "GEOB"), isSerato);
    });
}

// Traktor

PrivateFrame* ZALTagID3::findTraktorPrivateFrame() const {
    const auto frames = traktorFrames(state().v2Tags);
    return frames.empty() ? nullptr : frames.front();
}

bool ZALTagID3::hasTraktorMetadata() const {
    return findTraktorPrivateFrame() != nullptr;
}

void ZALTagID3::setTraktorCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (zal::ID3v2Store* v2 = state().v2) {
        for (PrivateFrame* frame : traktorFrames({&v2->tag()})) {
            v2->tagToEdit("PRIV").removeFrame(frame);
        }
    }
    ZALTag::setTraktorCuePoints(cuePoints);
}
