// What every format promises alike: values set, saved and read again; cleared and gone; the audio untouched.

#include <zaltag/base/ZALJSON.h>
#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/containers/ZALTagWAV.h>
#include <zaltag/id3/ZALTagAIFF.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTag.h>

#include "base/Unicode.h"
#include "support/AudioFixtures.h"
#include "support/Formats.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace {

using Field = std::pair<const char*, ZALJSONValue>;

const Field fields[] = {
    {"artist", "Björk 🎵"}, {"album", "夜明け"},  {"title", " T "},     {"genre", "House"},
    {"comment", "élan"},   {"initialKey", "8A"}, {"grouping", "Peak"}, {"modifiedBy", "DJ Ü"},
    {"year", 1999},        {"tempo", 128},       {"energyLevel", 7},
};

class Contract : public testing::TestWithParam<Format> {
  protected:
    std::string newFile(const std::string& name = "ein Lied – été 🎵") const {
        return folder_.write(name + "." + GetParam().extension, GetParam().file());
    }
    static std::shared_ptr<ZALTag> opened(const std::string& path, bool readOnly = false) {
        auto tag = ZALTag::tagAtPath(path, readOnly);
        if (tag == nullptr) throw std::runtime_error("does not open: " + path);
        return tag;
    }
    static bool isAmong(const std::vector<std::string>& keys, const std::string& key) {
        return std::find(keys.begin(), keys.end(), key) != keys.end();
    }
    // Every field of the tag must be the expected one.
    static void expectFields(const ZALTag& tag, const std::function<ZALJSONValue(const Field&)>& expected) {
        for (const Field& field : fields) {
            EXPECT_EQ(ZALJSON::description(tag.valueForKey(field.first)),
                      ZALJSON::description(expected(field)))
                << field.first;
        }
    }
    void expectAudio(const std::string& path) const {
        const std::string fresh = newFile("fresh");
        EXPECT_FALSE(GetParam().audio(fresh).empty());
        EXPECT_EQ(GetParam().audio(path), GetParam().audio(fresh));
    }

    TemporaryFolder folder_;
};

TEST_P(Contract, anyFieldIsHeldAsItWasSet) {
    const std::map<std::string, ZALArray<std::string>> set{
        {"LABEL", {"Ostgut"}},     {"REMIXER", {"Ünal", "夜明け"}},
        {"DATE", {"2020-05-03"}},  {"COMMENT", {"élan"}},
        {"TRACKNUMBER", {"3/12"}}, {"RATING", {"5"}},
        {"BPM", {"128"}},          {"ISRC", {"DEA1"}},
        {"COMPOSER", {"C"}},       {"MY OWN", {"x", "y z"}}};
    const std::string path = newFile();
    auto tag = opened(path);
    for (const auto& [name, values] : set) {
        EXPECT_TRUE(tag->setProperty(zal::asciiLowercase(name), values)) << name;
    }
    ASSERT_TRUE(tag->save());
    tag = opened(path);
    EXPECT_EQ(tag->properties(), set);
    EXPECT_EQ(tag->comment(), "élan");
    EXPECT_EQ(tag->year(), 2020);
    EXPECT_EQ(tag->property("my own").elements(), (std::vector<std::string>{"x", "y z"}));
    const ZALData before = contentsOf(path);
    for (const auto& [name, values] : set) {
        EXPECT_TRUE(tag->setProperty(name, values));
    }
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(contentsOf(path), before) << "the same values";
    for (const auto& [name, values] : set) {
        EXPECT_TRUE(tag->setProperty(name, {}));
    }
    ASSERT_TRUE(tag->save());
    EXPECT_TRUE(opened(path)->properties().empty());
    expectAudio(path);
}

TEST_P(Contract, aRelativePathStaysTheSameFile) {
    namespace fs = std::filesystem;
    const fs::path path = newFile("here"), before = fs::current_path();
    fs::current_path(path.parent_path());
    const auto tag = opened(path.filename());
    fs::current_path(before);
    EXPECT_EQ(tag->path(), path.string());
    tag->setTitle("T");
    EXPECT_TRUE(tag->save());
    EXPECT_EQ(opened(path)->title(), "T");
}

TEST_P(Contract, whatAFieldCannotHoldIsRefused) {
    struct Case {
        const char* name;
        std::string value;
        const char* onlyIn = nullptr;
    };
    const Case cases[] = {{"", "x"},
                          {"A=B", "x"},
                          {"NÄME", "x"},
                          {"LABEL", ""},
                          {"LABEL", "\xFF"},
                          {"LABEL", std::string("a\0b", 3)},
                          {"BPM", "128.5", "m4a"},
                          {"TRACKNUMBER", "A1", "m4a"},
                          {"TRACKNUMBER", "70000", "m4a"},
                          {"COMPILATION", "perhaps", "m4a"}};
    auto tag = opened(newFile());
    for (const Case& one : cases) {
        const bool isHeld = one.onlyIn != nullptr && GetParam().extension != std::string(one.onlyIn);
        ZALError error;
        EXPECT_EQ(tag->setProperty(one.name, {one.value}, &error), isHeld) << one.name << one.value;
        if (isHeld) continue;
        EXPECT_EQ(error.code, ZALErrorCode::propertyRefused);
        EXPECT_FALSE(error.localizedDescription.empty());
        EXPECT_EQ(tag->property(one.name).size(), 0U);
    }
}

TEST_P(Contract, fieldsAreSavedAndCleared) {
    const std::string path = newFile();
    auto tag = opened(path);
    EXPECT_STREQ(tag->className(), GetParam().className);
    for (const auto& [key, value] : fields) {
        tag->setValue(value, key);
    }
    ASSERT_TRUE(tag->save());
    ASSERT_TRUE(tag->save()) << "a second save";
    expectAudio(path);
    tag = opened(path);
    const Format& format = GetParam();
    expectFields(*tag, [&](const Field& field) {
        return isAmong(format.missingFields, field.first) ? ZALJSONValue() : field.second;
    });
    for (const auto& [key, value] : fields) {
        tag->setValue(nullptr, key);
    }
    ASSERT_TRUE(tag->save());
    expectAudio(path);
    tag = opened(path);
    expectFields(*tag, [&](const Field& field) {
        if (field.second.isInteger()) return ZALJSONValue(0);
        return isAmong(format.emptyFields, field.first) ? ZALJSONValue("") : ZALJSONValue();
    });
}

TEST_P(Contract, oneObjectIsSavedManyTimes) {
    const std::string path = newFile();
    const auto tag = opened(path);
    for (const std::size_t length : {10U, 5000U, 0U, 100U, 70000U, 3000U, 80000U}) {
        tag->setTitle(std::string(length, 'x'));
        tag->setZalKey(ZALTagKey(std::to_string(length), 1));
        ASSERT_TRUE(tag->save());
        const auto reader = opened(path, true);
        EXPECT_EQ(reader->title().value_or("").size(), length);
        EXPECT_EQ(reader->zalKey(), tag->zalKey());
        expectAudio(path);
    }
    EXPECT_TRUE(opened(path)->save()) << "the file is whole";
}

TEST_P(Contract, recordsAreSavedAndRemoved) {
    const auto key = ZALTagKey("8A", 3);
    const auto energy = ZALTagEnergy(7, 4);
    const auto grid = ZALTagBeatGrid::beatGridWithBeats(ZALArray<double>{0.5, 1.0}, 120, 5);
    const auto cue = ZALTagCuePoint(1.2345, "Intro");
    const auto cues = ZALTagCuePoints::cuePointsWithCuePointArray({cue, ZALTagCuePoint()}, 6);
    const auto cascade = ZALTagVelvetCascade(nullptr, true);
    const std::string path = newFile();
    auto tag = opened(path);
    tag->setZalKey(key);
    tag->setZalEnergy(energy);
    tag->setZalBeatGrid(grid);
    tag->setZalCuePoints(cues);
    tag->setZalVelvetCascade(cascade);
    ASSERT_TRUE(tag->save());
    tag = opened(path);
    EXPECT_TRUE(tag->zalKey() == key && tag->zalEnergy() == energy && tag->zalBeatGrid() == grid);
    EXPECT_TRUE(tag->zalCuePoints() == cues && tag->zalVelvetCascade() == cascade);
    tag->setZalKey(ZALTagKey(std::nullopt, 1));  // has nothing to store
    tag->setZalEnergy(std::nullopt);
    tag->setZalBeatGrid(std::nullopt);
    tag->setZalCuePoints(std::nullopt);
    ASSERT_TRUE(tag->save());
    expectAudio(path);
    tag = opened(path);
    EXPECT_FALSE(tag->zalKey() || tag->zalEnergy() || tag->zalBeatGrid() || tag->zalCuePoints());
    EXPECT_EQ(tag->zalVelvetCascade(), cascade);
}

// A colour, a cue and a lock; the cues move to a grid of 120 beats per minute from 0.5 s on.
TEST_P(Contract, aSeratoRecordKeepsWhatIsNoCueAndItsGridMovesCues) {
    const auto data = [](std::int16_t index, std::uint32_t position) {
        return ZALTagSeratoCuePoint::cuePointWithIndex(index, position, "Été 🎵").cuePointData();
    };
    const ZALData color = fromHex("434F4C4F5200 00000004 00FFFFFF"),
                  lock = fromHex("42504D4C4F434B00 00000001 00");
    const ZALData payload = joined({{1, 1}, color, data(2, 77), lock});
    const ZALData markers = joined({{1, 1}, *dataByEncodingBase64(payload)});
    const ZALData grid = fromHex("0100 00000001 3F000000 42F00000 37");
    const std::string path =
        folder_.write(std::string("song.") + GetParam().extension, GetParam().withSerato(markers, grid));
    auto tag = opened(path);
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 0.077);
    const auto cue = [](double time) { return ZALTagCuePoint(time, "Été 🎵"); };
    tag->setSeratoCuePoints({cue(1.26), cue(1.24), cue(0.1)});
    ASSERT_TRUE(tag->save());
    expectAudio(path);
    tag = opened(path);
    const auto* id3 = dynamic_cast<const ZALTagID3*>(tag.get());
    const auto marker = id3 != nullptr ? id3->seratoMarker() : dynamic_cast<ZALTagMP4&>(*tag).seratoMarker();
    const ZALData record = marker->markerData().value();
    const ZALData expected = joined({{1, 1}, data(0, 1500), data(1, 1000), data(2, 0), color, lock});
    EXPECT_EQ(toHex(*dataByDecodingBase64(ZALDataView(record).subspan(2))), toHex(expected));
    tag->setSeratoCuePoints({});
    ASSERT_TRUE(tag->save());
    EXPECT_TRUE(opened(path)->seratoCuePoints().empty());
}

// Entries as Serato orders them. Labels are the names of other entries, colours not its own, and no time is
// on the grid.
TEST_P(Contract, aSeratoCueThatComesBackKeepsItsSlotColorAndTime) {
    const auto cueData = [](std::int16_t index, std::uint32_t position, const char* label,
                            std::uint32_t color) {
        auto cue = ZALTagSeratoCuePoint::cuePointWithIndex(index, position, label);
        cue.setColor(color);
        return cue.cuePointData();
    };
    const ZALData first = cueData(7, 77, "LOOP", 0xFF123456), third = cueData(3, 90, "", 0x00CC8800),
                  color = fromHex("434F4C4F5200 00000004 00FFFFFF"),
                  loop =
                      fromHex("4C4F4F5000 00000018 0002 00000064 000000C8 01020304 00AABBCC 0501 43554500"),
                  flip = fromHex("464C495000 00000007 4C4F4F5000 0000"),
                  lock = fromHex("42504D4C4F434B00 00000001 01");
    const ZALData payload =
        joined({{1, 1}, color, first, cueData(0, 80, "Intro", 0x00CC0000), third, loop, flip, lock, {0}});
    const std::string path =
        folder_.write(std::string("song.") + GetParam().extension,
                      GetParam().withSerato(joined({{1, 1}, *dataByEncodingBase64(payload)}),
                                            fromHex("0100 00000001 3F000000 42F00000 37")));
    const auto saved = [&](const std::function<void(ZALTag & tag)>& change) {
        auto tag = opened(path);
        change(*tag);
        EXPECT_TRUE(tag->save());
        const ZALData record = opened(path)->seratoMarker()->markerData().value();
        return toHex(*dataByDecodingBase64(ZALDataView(record).subspan(2)));
    };
    const auto rename = [](ZALTag& tag) {
        auto cues = tag.seratoCuePoints().elements();
        EXPECT_EQ(cues[0].color(), 0x123456u);
        cues[1].setName("Start");
        tag.setSeratoCuePoints(cues);
    };
    const ZALData second = cueData(0, 80, "Start", 0x00CC0000);
    EXPECT_EQ(saved(rename), toHex(joined({{1, 1}, first, second, third, color, loop, flip, lock, {0}})));
    const auto move = [](ZALTag& tag) {
        auto cues = tag.seratoCuePoints().elements();
        cues[2].setPad(5);
        cues[2].setColor(0x28E214);
        ZALTagCuePoint added(4.2, "Break");
        added.setEnd(6.2);
        std::vector<ZALTagCuePoint> loops = tag.seratoLoops().elements();
        EXPECT_TRUE(loops.at(0).isLoop() && loops[0].color() == 0xAABBCCu && loops[0].pad() == -1);
        loops.insert(loops.begin(), added);
        const ZALCuePlan plan = tag.planSeratoCuePoints(cues);
        EXPECT_TRUE(plan.outcomes[2].isMoved() && plan.outcomes[2].hasOtherColor() &&
                    plan.count(&ZALCueOutcome::isLessThanAsked) == 1);
        tag.setSeratoCuePoints(cues);
        tag.setSeratoLoops(loops);
    };
    const ZALData moved = cueData(5, 0, "", 0x0000CC00),
                  added = fromHex("4C4F4F5000 0000001A 0000 00000FA0 00001770 FFFFFFFF 0027AAE1 0000");
    EXPECT_EQ(
        saved(move),
        toHex(joined(
            {{1, 1}, first, second, moved, added, bytesOf("Break"), {0}, loop, color, flip, lock, {0}})));
    const auto old = opened(path)->oldSeratoMarkerData();
    if (!old) return;  // FLAC
    const auto slots = ZALTagSeratoMarkerOld::initWithData(*old, GetParam().extension)->loopPoints();
    const auto slot = [](const ZALTagSeratoCuePointOld& one) {
        return fmt::format("{} {}-{} {:X} {}", one.type(), one.position(), one.loopPosition(), one.color(),
                           one.loopLocked());
    };
    EXPECT_EQ(slot(slots.at(0)), "3 4000-6000 27AAE1 0");
    EXPECT_EQ(slot(slots.at(1)), "3 4294967295-4294967295 0 0");
    EXPECT_EQ(slot(slots.at(2)), "3 100-200 AABBCC 1");
}

TEST_P(Contract, aReadOnlyObjectCannotBeSaved) {
    const std::string path = newFile();
    const ZALData before = contentsOf(path);
    const auto tag = opened(path, true);
    EXPECT_TRUE(tag->readOnly());
    tag->setTitle("new");
    ZALError error;
    ZALHost::shared().setLogsFailures(false);
    const LogCapture log;
    EXPECT_FALSE(tag->save(&error));
    ZALHost::shared().setLogsFailures(true);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
    EXPECT_TRUE(error.domain == "ZALTagErrorDomain" && static_cast<int>(error.code) == 1);
    EXPECT_EQ(error.localizedDescription, "it is open for reading only");
    EXPECT_EQ(error.failingTag(), tag);
    EXPECT_EQ(contentsOf(path), before);
}

TEST_P(Contract, whatDoesNotOpenSaysWhy) {
    const auto reason = [](const std::string& path) {
        ZALError error;
        EXPECT_EQ(ZALTag::tagAtPath(path, false, &error), nullptr);
        EXPECT_EQ(error.code, ZALErrorCode::openFailed);
        return error.localizedDescription;
    };
    const std::string name = std::string("name.") + GetParam().extension;
    EXPECT_EQ(reason("/none/" + name), "no such file");
    EXPECT_THAT(reason(folder_.write(name, bytesOf("text"))), testing::HasSubstr("damaged, or misnamed"));
    EXPECT_THAT(reason("/name.ogg"), testing::HasSubstr("supported: mp3, "));
}

INSTANTIATE_TEST_SUITE_P(Formats, Contract, testing::ValuesIn(formats()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
