#include "CollectionMembers.h"

#include <fmt/chrono.h>

namespace {

using Array = ZALJSONValue::Array;
using Object = ZALJSONValue::Object;

ZALJSONValue jsonOfBeats(const ZALCollectionTrack& track) {
    const auto beats = track.beatTimes();
    if (!beats) return nullptr;
    return Array(beats->begin(), beats->end());
}

// "2025-07-09T15:09:47Z", or null.
ZALJSONValue jsonOfDate(const std::optional<std::chrono::system_clock::time_point>& date) {
    if (!date) return nullptr;
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::chrono::system_clock::to_time_t(*date)));
}

ZALJSONValue jsonOfAttributes(const ZALCollectionTrack& track) {
    Object attributes;
    for (const auto& [name, value] : track.attributes()) {
        attributes[name] = value;
    }
    return attributes;
}

}  // namespace

Members membersOf(const ZALRekordboxTrack& track, const TrackParts& parts) {
    Array cues;
    for (const ZALRekordboxCuePoint& cue : track.cues()) {
        cues.push_back(Object{{"name", cue.name()},
                              {"type", cue.type()},
                              {"typeName", cue.typeName()},
                              {"start", cue.start()},
                              {"end", cue.end()},
                              {"num", cue.num()}});
    }
    Members members = {{"path", track.path()}, {"trackId", std::int64_t{track.trackId()}}};
    if (parts.beats) members.emplace_back("beatTimes", jsonOfBeats(track));
    members.emplace_back("cues", cues);
    if (parts.attributes) members.emplace_back("attributes", jsonOfAttributes(track));
    return members;
}

Members membersOf(const ZALTraktorTrack& track, const TrackParts& parts) {
    Array cues;
    for (const ZALTraktorCuePoint& cue : track.cues()) {
        cues.push_back(Object{{"name", cue.name()},
                              {"type", cue.type()},
                              {"typeName", cue.typeName()},
                              {"startTime", cue.startTime()},
                              {"length", cue.length()},
                              {"index", cue.index()}});
    }
    Members members = {{"path", track.path()},
                       {"uniqueID", track.uniqueID()},
                       {"modificationDate", jsonOfDate(track.modificationDate())}};
    if (parts.beats) members.emplace_back("beatTimes", jsonOfBeats(track));
    members.emplace_back("cues", cues);
    if (parts.attributes) members.emplace_back("attributes", jsonOfAttributes(track));
    return members;
}
