#include <zaltag/rekordbox/ZALRekordboxTrack.h>

#include "base/Description.h"
#include "base/Numbers.h"
#include "collection/CollectionProgram.h"
#include "collection/Dates.h"
#include "collection/TrackWithCues.h"
#include "platform/Log.h"
#include "records/CuePads.h"
#include "rekordbox/TrackLocation.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

template class ZALTrackWithCues<ZALRekordboxCuePoint>;

namespace {

constexpr const char* markName = "POSITION_MARK";
constexpr const char* placeholder = R"(<POSITION_MARK Num="0" />)";
constexpr std::int64_t memoryCueNum = -1;
// A beat that would fall so close before a change of tempo is left to the new segment.
constexpr double beatMargin = 0.1;

// A save stamps every track with cues, many in the same second; to ask for the time zone takes as long as to
// write a track's cues.
std::string stampNow() {
    using Seconds = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;
    thread_local Seconds last;
    thread_local std::string text;
    const auto now = std::chrono::floor<std::chrono::seconds>(ZALHost::shared().clock()->now());
    if (text.empty() || now != last) text = zal::stampDate(now);
    last = now;
    return text;
}

bool includes(ZALCueKind kind, ZALCueKind part) {
    return (static_cast<unsigned>(kind) & static_cast<unsigned>(part)) != 0;
}

}  // namespace

std::int32_t ZALRekordboxTrack::idOfText(std::string_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(zal::integerValue(text), Limits::min(), Limits::max()));
}

std::int32_t ZALRekordboxTrack::idOfXMLElement(const zal::XMLElement& element) {
    return idOfText(element.attributeText("TrackID"));
}

ZALNullableString ZALRekordboxTrack::pathOfXMLElement(const zal::XMLElement& element) {
    const char* location = element.attribute("Location");
    return location == nullptr ? std::nullopt : zal::pathOfLocation(location);
}

ZALTrackIdentity ZALRekordboxTrack::identityOfXMLElement(const zal::XMLElement& element) {
    return {.path = pathOfXMLElement(element),
            .title = zal::nullable(element.attribute("Name")),
            .artist = zal::nullable(element.attribute("Artist")),
            .size = zal::sizeIn(element.attribute("Size")),
            .sizeUnit = 1,
            .duration = zal::durationIn(element.attribute("TotalTime"))};
}

std::unique_ptr<ZALRekordboxTrack> ZALRekordboxTrack::initWithXMLElement(const zal::XMLElement& element) {
    if (!element) return nullptr;
    std::unique_ptr<ZALRekordboxTrack> track(new ZALRekordboxTrack);
    track->setElement(element);
    track->setPath(pathOfXMLElement(element));
    track->trackId_ = idOfXMLElement(element);
    // Marks without a start are placeholders: the track has them because it was written without cues.
    track->forceDummyCuePoint_ = track->readCues(markName);
    return track;
}

void ZALRekordboxTrack::removeAllCues(bool removeHotCues, bool removeMemoryCues) {
    removeCues([=](const ZALRekordboxCuePoint& cue) {
        return cue.num() == memoryCueNum ? removeMemoryCues : removeHotCues;
    });
    forceDummyCuePoint_ = true;
    setNeedsUpdate(true);
}

void ZALRekordboxTrack::setForceDummyCuePoint(bool forced) {
    if (forceDummyCuePoint_ == forced) return;
    forceDummyCuePoint_ = forced;
    setNeedsUpdate(true);
}

void ZALRekordboxTrack::updateXMLElement() {
    zal::XMLElement track = element();
    if (!track || !xmlNeedsUpdate()) return;
    track.setAttribute("DateModified", stampNow());
    writeCues(markName);
    if (forceDummyCuePoint_ && cueCount() == 0) track.appendChild(markName).setAttribute("Num", "0");
    setNeedsUpdate(false);
}

bool ZALRekordboxTrack::isReplaced(const ZALRekordboxCuePoint& cue, ZALCueKind kind) const {
    return includes(kind, cue.num() == memoryCueNum ? ZALCueKind::memory : ZALCueKind::hot);
}

// Memory cues before hot ones: the order that the program lists them in. What is on no pad is a memory cue
// also among hot ones.
auto ZALRekordboxTrack::newCues(const ZALArray<ZALTagCuePoint>& cuePoints, ZALCueKind kind) const
    -> std::vector<NewCue> {
    std::vector<NewCue> made;
    const bool hasMemoryCues = includes(kind, ZALCueKind::memory);
    for (std::size_t i = 0; hasMemoryCues && i < cuePoints.size(); ++i) {
        made.push_back({ZALRekordboxCuePoint(cuePoints[i], memoryCueNum), i, false});
    }
    if (!includes(kind, ZALCueKind::hot)) return made;
    const std::vector<int> pads = zal::padsOf(cuePoints, {.mostPads = 16, .loadsHavePads = false});
    for (std::size_t i = 0; i < cuePoints.size(); ++i) {
        if (pads[i] == memoryCueNum && hasMemoryCues) continue;
        made.push_back({ZALRekordboxCuePoint(cuePoints[i], pads[i]), i, false});
    }
    return made;
}

const char* ZALRekordboxTrack::padAttribute() const {
    return "Num";
}

bool ZALRekordboxTrack::replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                         const ZALCueRequest& request) {
    const bool isChanged = ZALTrackWithCues::replaceCuePoints(cuePoints, request);
    setForceDummyCuePoint(true);
    return isChanged;
}

zal::TrackEdit ZALRekordboxTrack::editFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                                          const ZALCueRequest& request, zal::XMLDocument* scratch) const {
    zal::TrackEdit edit = editOfMarks(markName, {}, cuePoints, request, scratch);
    const bool keepsNone =
        std::find(edit.isRemoved.begin(), edit.isRemoved.end(), false) == edit.isRemoved.end();
    if (edit.cues == 0 && keepsNone) {
        edit.added.emplace_back(placeholder);
        edit.isChanged = true;
    }
    edit.attributes.push_back({"DateModified", stampNow()});
    return edit;
}

zal::XMLElement ZALRekordboxTrack::xmlElement() {
    updateXMLElement();
    return element();
}

const ZALCollectionTrack::UsualNames& ZALRekordboxTrack::usualNames() const {
    static constexpr UsualNames names{"Name", "Artist", "Tonality", "AverageBpm", {"TotalTime", "TotalTime"},
                                      "TEMPO"};
    return names;
}

std::optional<ZALTrackTempo> ZALRekordboxTrack::readTempo() const {
    const zal::XMLElement track = element();
    ZALTrackTempo tempo;
    tempo.margin = beatMargin;
    for (auto segment = track.firstChild("TEMPO"); segment; segment = segment.next("TEMPO")) {
        const char* start = segment.attribute("Inizio");
        const char* perMinute = segment.attribute("Bpm");
        if (start == nullptr || perMinute == nullptr) return std::nullopt;
        const double beatsPerMinute = zal::doubleValue(perMinute);
        if (!(beatsPerMinute > 0)) return std::nullopt;
        tempo.starts.push_back(zal::doubleValue(start));
        tempo.steps.push_back(60 / beatsPerMinute);
    }
    const char* duration = track.attribute("TotalTime");
    if (tempo.starts.empty() || duration == nullptr) return std::nullopt;
    tempo.duration = zal::doubleValue(duration);
    return tempo;
}

std::string ZALRekordboxTrack::description() const {
    return fmt::format("{} - {} Cues: {}", zal::defaultDescription("ZALRekordboxTrack", this),
                       zal::describe(path()), zal::descriptionOfAll(cues().elements()));
}

std::shared_ptr<const ZALRekordboxTrack> ZALRekordboxTrack::copy() const {
    const std::shared_ptr<ZALRekordboxTrack> made(new ZALRekordboxTrack(*this));
    made->leaveDocument();
    return made;
}
