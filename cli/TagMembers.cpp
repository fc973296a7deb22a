#include "TagMembers.h"

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/tag/ZALTagComment.h>

namespace {

template <typename Record>
ZALJSONValue jsonOfRecord(const std::optional<Record>& record) {
    const auto dictionary = record ? record->JSONDict() : std::nullopt;
    return dictionary ? *dictionary : ZALJSONValue();
}

}  // namespace

ZALJSONValue jsonOfCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    ZALJSONValue::Array out;
    for (const ZALTagCuePoint& cue : cuePoints) {
        out.push_back(ZALJSONValue::Object{{"time", cue.time()}, {"name", cue.name()}});
    }
    return out;
}

ZALJSONValue jsonOfComments(const ZALTag& tag) {
    ZALJSONValue::Array out;
    for (const ZALTagComment& comment : tag.allComments()) {
        out.push_back(
            ZALJSONValue::Object{{"comment", comment.comment()},
                                 {"lang", comment.lang()},
                                 {"tagVersion", comment.tagVersion()},
                                 {"isPrimary", comment.isPrimary()},
                                 {"v1CommentMatchesv2Comment", comment.v1CommentMatchesv2Comment()}});
    }
    return out;
}

Members membersOfTag(const std::string& path, const ZALTag& tag) {
    Members members{
        {"path", path},
        {"class", tag.className()},
        {"readOnly", tag.readOnly()},
        {"requiresSaving", tag.requiresSaving()},
        {"hasID3v1Tag", tag.hasID3v1Tag()},
        {"hasID3v2Tag", tag.hasID3v2Tag()},
    };
    for (const char* key : {"artist", "album", "title", "year", "genre", "comment", "tempo", "initialKey",
                            "energyLevel", "grouping", "modifiedBy"}) {
        members.emplace_back(key, tag.valueForKey(key));
    }
    members.insert(members.end(), {{"zalKey", jsonOfRecord(tag.zalKey())},
                                   {"zalEnergy", jsonOfRecord(tag.zalEnergy())},
                                   {"zalBeatGrid", jsonOfRecord(tag.zalBeatGrid())},
                                   {"zalCuePoints", jsonOfRecord(tag.zalCuePoints())},
                                   {"zalVelvetCascade", jsonOfRecord(tag.zalVelvetCascade())},
                                   {"allComments", jsonOfComments(tag)},
                                   {"supportsImages", tag.supportsImages()}});
    return members;
}
