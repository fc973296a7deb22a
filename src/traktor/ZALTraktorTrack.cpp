#include <zaltag/traktor/ZALTraktorTrack.h>

#include "base/Description.h"
#include "base/Numbers.h"
#include "collection/Dates.h"
#include "collection/TrackWithCues.h"
#include "platform/FileReplacement.h"
#include "platform/Log.h"
#include "records/CuePads.h"
#include "traktor/TrackLocation.h"
#include "traktor/TraktorProgram.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>

#include <algorithm>

template class ZALTrackWithCues<ZALTraktorCuePoint>;

namespace {

using TimePoint = std::chrono::system_clock::time_point;
using std::chrono::seconds;

constexpr const char* cueName = "CUE_V2";

// An attribute of the first child of that name which has it; null without one.
const char* attributeOfChild(const zal::XMLElement& element, const char* child, const char* attribute) {
    for (auto at = element.firstChild(child); at; at = at.next(child)) {
        if (const char* value = at.attribute(attribute)) return value;
    }
    return nullptr;
}

const char* durationOf(const zal::XMLElement& track) {
    const char* duration = attributeOfChild(track, "INFO", "PLAYTIME_FLOAT");
    return duration == nullptr ? attributeOfChild(track, "INFO", "PLAYTIME") : duration;
}

zal::TraktorLocation locationOf(const zal::XMLElement& track) {
    const zal::XMLElement location = track.firstChild("LOCATION");
    if (!location) return {};
    return {zal::nullable(location.attribute("VOLUME")), zal::nullable(location.attribute("DIR")),
            zal::nullable(location.attribute("FILE"))};
}

// A second before the audio file's date, so that the file counts as the newer one. `failed` is told the file
// that has none.
TimePoint dateForEntry(const ZALNullableString& path, std::string& failed) {
    ZALFileAttributes attributes;
    const auto failure = ZALHost::shared().fileSystem()->attributes(path.value_or(""), attributes);
    if (!failure) return TimePoint(std::chrono::nanoseconds(attributes.modified)) - seconds(1);
    failed = fmt::format("{} {}", zal::describe(path), zal::describe(failure));
    return ZALHost::shared().clock()->now() - std::chrono::hours(1);
}

// As far as the clock goes.
TimePoint later(TimePoint day, std::int64_t secondCount) {
    constexpr std::int64_t thousandYears = 32'000'000'000;
    const auto time = std::chrono::floor<seconds>(day) +
                      seconds(std::clamp<std::int64_t>(secondCount, -thousandYears, thousandYears));
    return std::clamp(time, std::chrono::ceil<seconds>(TimePoint::min()),
                      std::chrono::floor<seconds>(TimePoint::max()));
}

}  // namespace

std::string ZALTraktorTrack::bootVolumeName() {
    return ZALHost::shared().bootVolumeName();
}

ZALNullableString ZALTraktorTrack::pathOfXMLElement(const zal::XMLElement& element) {
    return zal::pathOf(locationOf(element), bootVolumeName());
}

ZALTrackIdentity ZALTraktorTrack::identityOfXMLElement(const zal::XMLElement& element) {
    return {.path = pathOfXMLElement(element),
            .title = zal::nullable(element.attribute("TITLE")),
            .artist = zal::nullable(element.attribute("ARTIST")),
            .size = zal::sizeIn(attributeOfChild(element, "INFO", "FILESIZE")),
            .sizeUnit = 1024,
            .duration = zal::durationIn(durationOf(element))};
}

std::unique_ptr<ZALTraktorTrack> ZALTraktorTrack::initWithXMLElement(const zal::XMLElement& element) {
    if (!element) return nullptr;
    std::unique_ptr<ZALTraktorTrack> track(new ZALTraktorTrack);
    track->setElement(element);
    const zal::TraktorLocation location = locationOf(element);
    track->uniqueID_ = zal::keyOf(location);
    track->setPath(zal::pathOf(location, bootVolumeName()));
    track->readCues(cueName);
    return track;
}

ZALTraktorTrack::DateText ZALTraktorTrack::readDate() const {
    return {zal::nullable(element().attribute("MODIFIED_DATE")), element().attributeText("MODIFIED_TIME")};
}

std::optional<TimePoint> ZALTraktorTrack::modificationDate() const {
    const DateText text = keptDate_ ? *keptDate_ : readDate();
    if (const auto day = zal::parseSlashDate(text.day.value_or(""))) {
        return later(*day, zal::integerValue(text.seconds));
    }
    zal::logf("could not convert '{}'", zal::describe(text.day));
    return std::nullopt;
}

void ZALTraktorTrack::removeAllCues() {
    removeCues([](const ZALTraktorCuePoint&) { return true; });
    setNeedsUpdate(true);
}

void ZALTraktorTrack::updateXMLElement() {
    if (!element() || !xmlNeedsUpdate()) return;
    writeCues(cueName);
    // Bringing them up to date has put them all on the first pad.
    for (auto mark = element().firstChild(cueName); mark && isFirstPadTaken_; mark = mark.next(cueName)) {
        const auto cue = ZALTraktorCuePoint::initWithXMLElement(mark);
        if (cue && cue->isGrid()) mark.setExistingAttribute(padAttribute(), "-1");
    }
    std::string failed;
    const DateText date = newDate(failed);
    setFileWithoutDate(std::move(failed));
    element().setExistingAttribute("MODIFIED_DATE", date.day.value_or(""));
    element().setExistingAttribute("MODIFIED_TIME", date.seconds);
    setNeedsUpdate(false);
}

zal::XMLElement ZALTraktorTrack::xmlElement() const {
    return element();
}

ZALTraktorTrack::DateText ZALTraktorTrack::newDate(std::string& failed) const {
    const TimePoint date = dateForEntry(path(), failed);
    const auto time = std::chrono::floor<seconds>(date - zal::startOfDayUTC(date));
    return {zal::slashDate(date), std::to_string(time.count())};
}

std::string ZALTraktorTrack::whyLeftOut(TimePoint requested, const ZALCueRequest& request) const {
    const auto date = modificationDate();
    if (!date)
        return request.includesUndated ? ""
                                       : "its entry in the Traktor collection has no date (--force-dates)";
    return *date > requested ? "its entry in the Traktor collection is newer" : "";
}

bool ZALTraktorTrack::isReplaced(const ZALTraktorCuePoint& cue, ZALCueKind kind) const {
    return kind != ZALCueKind::none && !cue.isGrid();
}

auto ZALTraktorTrack::newCues(const ZALArray<ZALTagCuePoint>& cuePoints, ZALCueKind kind) const
    -> std::vector<NewCue> {
    std::vector<NewCue> made;
    if (kind == ZALCueKind::none) return made;
    const bool isSaid = zal::saysPads(cuePoints);
    const std::vector<int> pads = zal::padsOf(cuePoints, {});
    for (std::size_t i = 0; i < cuePoints.size(); ++i) {
        ZALTraktorCuePoint cue(cuePoints[i], pads[i]);
        if (pads[i] == ZALTagCuePoint::noPad) cue.takeOffPads();
        if (!collectionHasColors()) cue.setColor(std::nullopt);
        made.push_back({std::move(cue), i, isSaid});
    }
    return made;
}

// A marker of the grid is on a pad beside what it is there for.
bool ZALTraktorTrack::givesWay(const ZALTraktorCuePoint& cue, const std::vector<NewCue>& added) const {
    return cue.isGrid() && cue.slot() >= 0 &&
           std::any_of(added.begin(), added.end(),
                       [&cue](const NewCue& one) { return one.claimsPad && one.cue.slot() == cue.slot(); });
}

const char* ZALTraktorTrack::padAttribute() const {
    return "HOTCUE";
}

bool ZALTraktorTrack::replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                       const ZALCueRequest& request) {
    ZALTraktorCuePoint onFirstPad;
    onFirstPad.setType(ZALTraktorCuePoint::typeGrid);
    isFirstPadTaken_ = givesWay(onFirstPad, newCues(asWritten(cuePoints, request), request.kind));
    return ZALTrackWithCues::replaceCuePoints(cuePoints, request);
}

zal::TrackEdit ZALTraktorTrack::editFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                                        const ZALCueRequest& request, zal::XMLDocument* scratch) const {
    zal::TrackEdit edit = editOfMarks(cueName, zal::traktorProgram().style, cuePoints, request, scratch);
    if (!edit.isChanged || scratch == nullptr) return edit;
    const DateText date = newDate(edit.fileWithoutDate);
    edit.attributes.push_back({"MODIFIED_DATE", date.day.value_or(""), false});
    edit.attributes.push_back({"MODIFIED_TIME", date.seconds, false});
    return edit;
}

const ZALCollectionTrack::UsualNames& ZALTraktorTrack::usualNames() const {
    static constexpr UsualNames names{
        "TITLE", "ARTIST", "INFO/KEY", "TEMPO/BPM", {"INFO/PLAYTIME_FLOAT", "INFO/PLAYTIME"}, nullptr};
    return names;
}

std::optional<ZALTrackTempo> ZALTraktorTrack::readTempo() const {
    ZALTrackTempo tempo;
    for (const ZALTraktorCuePoint& cue : cues()) {
        if (cue.isGrid()) tempo.starts.push_back(cue.startTime());
    }
    const char* duration = durationOf(element());
    const char* perMinute = attributeOfChild(element(), "TEMPO", "BPM");
    const double beatsPerMinute = perMinute == nullptr ? 0 : zal::doubleValue(perMinute);
    if (tempo.starts.empty() || duration == nullptr || beatsPerMinute == 0) return std::nullopt;
    tempo.steps.assign(tempo.starts.size(), 60 / beatsPerMinute);
    tempo.duration = zal::doubleValue(duration);
    return tempo;
}

std::string ZALTraktorTrack::description() const {
    return fmt::format("{} - {} Cues: {}", zal::defaultDescription("ZALTraktorTrack", this),
                       zal::describe(path()), zal::descriptionOfAll(cues().elements()));
}

std::shared_ptr<const ZALTraktorTrack> ZALTraktorTrack::copy() const {
    const std::shared_ptr<ZALTraktorTrack> made(new ZALTraktorTrack(*this));
    if (!made->keptDate_) made->keptDate_ = std::make_shared<const DateText>(readDate());
    made->leaveDocument();
    return made;
}
