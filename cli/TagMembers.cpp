#include "TagMembers.h"

#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/serato/ZALTagSeratoCuePoint.h>
#include <zaltag/serato/ZALTagSeratoCuePointOld.h>
#include <zaltag/serato/ZALTagSeratoGridPoint.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTagComment.h>
#include <zaltag/tag/ZALTagDataImage.h>
#include <zaltag/walks/ZALFirstFrame.h>

#include <fmt/format.h>

#include <cmath>

namespace {

using Array = ZALJSONValue::Array;
using Object = ZALJSONValue::Object;

template <typename Record>
ZALJSONValue jsonOfRecord(const std::optional<Record>& record) {
    const auto dictionary = record ? record->JSONDict() : std::nullopt;
    return dictionary ? *dictionary : ZALJSONValue();
}

std::string colorText(std::uint32_t color) {
    return fmt::format("{:08X}", color);
}

// JSON has no word for the numbers that a damaged grid can hold.
ZALJSONValue finite(double value) {
    return std::isfinite(value) ? ZALJSONValue(value) : ZALJSONValue();
}

ZALJSONValue jsonOfMarker(const std::optional<ZALTagSeratoMarker>& marker) {
    if (!marker) return nullptr;
    Array cuePoints;
    for (const ZALTagSeratoCuePoint& cue : marker->cuePoints()) {
        cuePoints.push_back(Object{{"index", cue.index()},
                                   {"position", cue.position()},
                                   {"color", cue.argbColor()},
                                   {"label", cue.label()}});
    }
    return Object{
        {"major", marker->major()}, {"minor", marker->minor()}, {"cuePoints", std::move(cuePoints)}};
}

ZALJSONValue jsonOfOldMarker(const std::optional<ZALTagSeratoMarkerOld>& marker) {
    if (!marker) return nullptr;
    Array cuePoints;
    for (const ZALTagSeratoCuePointOld& cue : marker->cuePoints()) {
        cuePoints.push_back(Object{{"index", cue.index()},
                                   {"position", cue.position()},
                                   {"loopPosition", cue.loopPosition()},
                                   {"loopEnabled", cue.loopEnabled()},
                                   {"loopIterations", cue.loopIterations()},
                                   {"color", cue.argbColor()},
                                   {"type", cue.type()},
                                   {"loopLocked", cue.loopLocked()}});
    }
    return Object{{"major", marker->major()},
                  {"minor", marker->minor()},
                  {"color", colorText(marker->color())},
                  {"cuePoints", std::move(cuePoints)}};
}

ZALJSONValue jsonOfGrid(const std::optional<ZALTagSeratoGrid>& grid) {
    if (!grid) return nullptr;
    Array gridPoints;
    for (const ZALTagSeratoGridPoint& point : grid->gridPoints()) {
        gridPoints.push_back(Object{{"position", finite(point.position())},
                                    {"beatsToNext", point.beatsToNext()},
                                    {"tempo", finite(point.tempo())}});
    }
    return Object{{"major", grid->major()}, {"minor", grid->minor()}, {"gridPoints", std::move(gridPoints)}};
}

ZALJSONValue jsonOfFirstFrame(const ZALTag& tag) {
    const auto frame = tag.firstFrame();
    if (!frame) return nullptr;
    return Object{{"case", std::string(1, static_cast<char>(frame->kind))},
                  {"offset", frame->traktorOffset()}};
}

}  // namespace

ZALJSONValue jsonOfCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    Array out;
    for (const ZALTagCuePoint& cue : cuePoints) {
        out.push_back(Object{{"time", cue.time()}, {"name", cue.name()}});
    }
    return out;
}

ZALJSONValue jsonOfComments(const ZALTag& tag) {
    Array out;
    for (const ZALTagComment& comment : tag.allComments()) {
        out.push_back(Object{{"comment", comment.comment()},
                             {"lang", comment.lang()},
                             {"tagVersion", comment.tagVersion()},
                             {"isPrimary", comment.isPrimary()},
                             {"v1CommentMatchesv2Comment", comment.v1CommentMatchesv2Comment()}});
    }
    return out;
}

ZALJSONValue jsonOfPictures(const ZALTag& tag) {
    Array out;
    for (const ZALTagStoredImage& stored : tag.allStoredImages()) {
        const auto info = ZALImage::infoWithData(stored.data);
        const ZALTagDataImage data(stored.data);
        const char* mark = data.isOriginalImage() ? "original"
                           : data.isCustomImage() ? "customized"
                                                  : nullptr;
        out.push_back(Object{{"type", stored.imageType},
                             {"format", info ? ZALJSONValue(info->format) : ZALJSONValue()},
                             {"width", info ? ZALJSONValue(info->width) : ZALJSONValue()},
                             {"height", info ? ZALJSONValue(info->height) : ZALJSONValue()},
                             {"bytes", static_cast<std::int64_t>(stored.data.size())},
                             {"mark", mark != nullptr ? ZALJSONValue(mark) : ZALJSONValue()}});
    }
    return out;
}

std::string lineOfPicture(const ZALJSONValue& picture) {
    const std::string size = picture["width"].isNull() ? "-"
                                                       : fmt::format("{}x{}", picture["width"].integerValue(),
                                                                     picture["height"].integerValue());
    return fmt::format("{}\t{}\t{}\t{}\t{}", picture["type"].integerValue(),
                       picture["format"].stringValue().value_or("-"), size, picture["bytes"].integerValue(),
                       picture["mark"].stringValue().value_or("-"));
}

void addProperties(Members& members, const ZALTag& tag) {
    Object properties;
    for (const auto& [name, values] : tag.properties()) {
        properties[name] = Array(values.begin(), values.end());
    }
    const auto unsupported = tag.unsupportedProperties();
    members.emplace_back("properties", std::move(properties));
    members.emplace_back("unsupportedProperties", Array(unsupported.begin(), unsupported.end()));
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
                                   {"hasSeratoMetadata", tag.hasSeratoMetadata()},
                                   {"hasTraktorMetadata", tag.hasTraktorMetadata()},
                                   {"seratoCuePoints", jsonOfCuePoints(tag.seratoCuePoints())}});
    members.insert(members.end(), {{"seratoMarker", jsonOfMarker(tag.seratoMarker())},
                                   {"oldSeratoMarker", jsonOfOldMarker(tag.oldSeratoMarker())},
                                   {"seratoGrid", jsonOfGrid(tag.seratoGrid())},
                                   {"allComments", jsonOfComments(tag)},
                                   {"supportsImages", tag.supportsImages()},
                                   {"allImages", jsonOfPictures(tag)},
                                   {"firstFrame", jsonOfFirstFrame(tag)}});
    return members;
}
