#include <zaltag/tools/ZALTagDescription.h>

#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/WavFixtures.h"

#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagRecordData.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTagDataImage.h>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

// The payloads

ZALData stored(const ZALTagCustomProperty& record) {
    return *tagData(*record.JSONDict());
}

const ZALData key = stored(ZALTagKey::keyWithKey("8A", 3));
const ZALData energy = stored(ZALTagEnergy::keyWithEnergy(7, 2));
const ZALData beats = stored(ZALTagBeatGrid::beatGridWithBeats(ZALArray<double>{0.5, 1, 1.5}, 128.3F, 1));
const ZALData cues = stored(ZALTagCuePoints::cuePointsWithCuePointArray(
    {ZALTagCuePoint::cuePointWithTime(1.25, "Intro ü"), ZALTagCuePoint::cuePointWithTime(1234.5678, "")}, 5));
const ZALData oneCue =
    stored(ZALTagCuePoints::cuePointsWithCuePointArray({ZALTagCuePoint::cuePointWithTime(1e6, "Late")}, 5));
const ZALData noJSON = bytesOf("bm90IGpzb24=\n");

ZALTagSeratoMarker marker() {
    ZALTagSeratoMarker marker;
    marker.setMajor(1);
    marker.setMinor(1);
    marker.setCuePoints({ZALTagSeratoCuePoint::cuePointWithIndex(0, 250, "Intro"),
                         ZALTagSeratoCuePoint::cuePointWithIndex(3, 4294967295, "")});
    return marker;
}

ZALTagSeratoMarkerOld oldMarker(std::vector<ZALTagSeratoCuePointOld> cuePoints) {
    ZALTagSeratoMarkerOld marker;
    marker.setMajor(2);
    marker.setMinor(5);
    marker.setCuePoints(std::move(cuePoints));
    return marker;
}

const auto oldCue = ZALTagSeratoCuePointOld::cuePointWithIndex;

// 8 beats from 0.5 s to 4.5 s, then 120.25 bpm.
const ZALData grid = fromHex("0100 00000002 3F000000 00000008 40900000 42F08000 00");

// One red pixel, with a mark.
ZALData picture(bool original, bool custom) {
    ZALTagDataImage image(
        fromHex("89504E470D0A1A0A0000000D4948445200000001000000010802000000907753DE0000000F4944415478"
                "01010400FBFF00FF0000030101008D1DE5820000000049454E44AE426082"));
    if (original) image.setIsOriginalImage(true);
    if (custom) image.setIsCustomImage(true);
    return image.imageData();
}

// Frames of every kind that a report knows, some of which cannot be read.

constexpr std::uint16_t encrypted = 0x0004;  // TagLib keeps such a frame as bytes

ZALData object(std::string_view description, const ZALData& data) {
    return id3Frame("GEOB",
                    joined({{0}, bytesOf("application/json"), {0, 0}, bytesOf(description), {0}, data}));
}

ZALData pictureFrame(const ZALData& data) {
    return id3Frame("APIC", joined({{0}, bytesOf("image/png"), {0, 3}, bytesOf("front"), {0}, data}));
}

ZALData markersFrame() {
    return object("Serato Markers_",
                  oldMarker({oldCue(0, 250), oldCue(1, 60000)}).markerDataForFileType("mp3"));
}

ZALData tag() {
    return id3Tag({id3Text("TIT2", "not shown"),
                   id3Comment("eng", "", "caf\xE9"),
                   id3Comment("deu", "about", ""),
                   object("Key", key),
                   object("Energy", energy),
                   object("BeatGrid", beats),
                   object("CuePoints", cues),
                   object("Key", noJSON),
                   object("VelvetCascade", key),
                   markersFrame(),
                   object("Serato Markers2", *marker().markerData()),
                   object("Serato BeatGrid", grid),
                   id3Text("TXXX", std::string_view("EnergyLevel\0007", 13)),
                   id3Text("TXXX", std::string_view("Mood\0dark\0deep", 14)),
                   id3Frame("PRIV", joined({bytesOf("TRAKTOR4"), {0, 1, 2, 3}})),
                   pictureFrame(picture(false, true)),
                   pictureFrame(picture(true, false)),
                   id3Text("GRP1", "Peak"),
                   id3Frame("GRP1", fromHex("01 FFFE 4100"), encrypted),
                   id3Frame("GRP1", {0}, encrypted),
                   id3Frame("COMM", ZALData(8), encrypted),
                   id3Frame("APIC", ZALData(8), encrypted)},
                  100);
}

std::string textOf(const ZALData& bytes) {
    return {bytes.begin(), bytes.end()};
}

class Description : public testing::Test {
  protected:
    std::string described(const std::string& name, const ZALData& file) const {
        return ZALTagDescription(folder_.write(name, file));
    }
    static std::string golden(const std::string& name) {
        return textOf(contentsOf(ZALTAG_GOLDEN + name + ".txt"));
    }

    const TemporaryFolder folder_;
    const LogCapture log_;
};

TEST_F(Description, ofMP3) {
    const ZALData v1 = id3v1Tag("V1 title", "V1 artist", "note", 17);
    EXPECT_EQ(described("song.MP3", joined({tag(), mpegFrames(), v1})), golden("mp3"));
    std::vector<std::string> ignored;
    for (const std::string& line : log_.lines()) {
        if (line.starts_with("TagInspect")) ignored.push_back(line);
    }
    EXPECT_THAT(ignored, ElementsAre("TagInspect: Ignoring COMM frame after failed cast.",
                                     "TagInspect: Ignoring APIC frame after failed cast."));
}

TEST_F(Description, ofWAVAndAIFF) {
    const ZALData info =
        infoList({{"INAM", "Title"}, {"ICMT", "caf\xE9"}, {"ICRD", "1999-01-02"}, {"ISFT", "no"}});
    const std::string mp3 = golden("mp3"), frames = mp3.substr(0, mp3.find("ID3v1 Tag"));
    EXPECT_EQ(
        described("song.wav", wavFile({info, riffChunk("ID3 ", tag())})),
        "INFO Chunk\n----------\nINAM - 'Title'\nICMT - 'café'\nICRD - '1999-01-02'\nID3 Tag\n-------\n" +
            frames);
    EXPECT_EQ(described("song.aif", aiffFile({iffChunk("ID3 ", tag())})), frames + "no ID3v1 tag found\n");
}

TEST_F(Description, ofMP4) {
    const auto ours = [](const char* name, const ZALData& record) {
        return mp4Freeform("com.quorvantis.quorvantis", name, {textOf(record)});
    };
    const auto serato = [](const char* name, const std::string& text) {
        return mp4Freeform("com.serato.dj", name, {text});
    };
    const ZALData covers =
        mp4Item("covr", {picture(true, false), picture(false, true), picture(false, false)}, 14);
    const ZALData file = mp4File({mp4Tag({
        mp4Item("\251nam", {bytesOf("Title ü")}),
        mp4Item("\251ART", {bytesOf("One"), bytesOf("Two")}),
        mp4Item("\251day", {bytesOf("1999-01-02")}),
        mp4Item("trkn", {{0, 0, 0, 3, 0, 12, 0, 0}}, 0),
        mp4Item("tmpo", {{0, 128}}, 21),
        mp4Freeform("com.apple.iTunes", "initialkey", {"8A"}),
        mp4Freeform("com.apple.iTunes", "energylevel", {"7"}),
        covers,
        serato("markers", textOf(*oldMarker({oldCue(0, 250)}).encodedMarkerDataForFileType("m4a"))),
        serato("markersv2", textOf(*marker().encodedMarkerData())),
        serato("beatgrid", "AQ=="),
        ours("key", key),
        ours("energy", noJSON),
        ours("beatgrid", beats),
        ours("cuepoints", cues),
    })});
    EXPECT_EQ(described("song.mp4", file), golden("m4a"));
}

TEST_F(Description, ofFLAC) {
    const auto field = [](const std::string& name, const std::string& text) { return name + "=" + text; };
    const ZALData comment =
        flacComment({"TITLE=Title ü", "artist=One", "ARTIST=Two", "DATE=1999", "TRACKNUMBER=3",
                     field("SERATO_MARKERS_V2", textOf(*marker().encodedMarkerData())),
                     field("serato_beatgrid", seratoText(grid)), field("KEY", textOf(key)),
                     field("ENERGY", textOf(energy)), field("BEATGRID", "bm90IGpzb24="),
                     field("CUEPOINTS", textOf(oneCue))});
    const auto block = [](const ZALData& data) {
        const auto sized = [](const ZALData& bytes) {
            return joined({{0, 0, 0, static_cast<std::uint8_t>(bytes.size())}, bytes});
        };
        return flacBlock(
            6, joined({{0, 0, 0, 3}, sized(bytesOf("image/png")), sized({}), ZALData(16), sized(data)}));
    };
    const ZALData flac = flacFile({comment, block(picture(false, true)), block(picture(false, false))});
    const ZALData v2 = id3Tag({id3Text("TIT2", "not shown"), id3Comment("eng", "", "note"), markersFrame()});
    const ZALData file = joined({v2, flac, id3v1Tag("V1 title", "", "")});
    EXPECT_EQ(described("song.flac", file), golden("flac"));
}

// Values that other programs would not write, each with a line of the report.
TEST_F(Description, ofOddValues) {
    const auto mp3 = [](const ZALData& frame) { return joined({id3Tag({frame}), mpegFrames()}); };
    const auto mp4 = [](const ZALData& item) { return mp4File({mp4Tag({item})}); };
    const auto keyless = ZALJSONValue(ZALJSONValue::Object{{"algorithm", 3}, {"source", "quorvantis"}});
    const ZALData plain = picture(false, false);
    const std::tuple<const char*, ZALData, std::string> cases[] = {
        {"a.mp3", mp3(id3Comment("d\xFC\x80", "", "x")), "COMM (d\u00FC\u0080) [] - 'x'"},
        {"a.mp3", mp3(object("Key", *tagData(keyless))), "source = 'quorvantis', key = '', algorithm = 3"},
        {"a.m4a", mp4(mp4Item("covr", {plain}, 13)), "cover - [image/jpeg, 72 bytes]"},
        {"a.m4a", mp4(mp4Freeform("com.apple.iTunes", "energylevel", {"high"})), "energy  -  0"},
    };
    for (const auto& [name, file, line] : cases) {
        EXPECT_THAT(described(name, file), testing::HasSubstr(line + "\n"));
    }
}

TEST_F(Description, ofFilesWithFewTagsOrNone) {
    const ZALData v1 = id3v1Tag("T", "", "");
    const std::string standard =
        "title   - ''\nartist  - ''\nalbum   - ''\ncomment - ''\ngenre   - ''\nyear    -  0\n"
        "track   -  0\n";
    const std::string v1Section =
        "ID3v1 Tag\n---------\ntitle   - 'T'\n" + standard.substr(standard.find("artist"));
    const std::tuple<const char*, ZALData, std::string> cases[] = {
        {"a.mp3", mpegFrames(), "no ID3V1 or ID3V2 tag found\n"},
        {"a.mp3", joined({mpegFrames(), v1}), "no ID3v2 tag found\n" + v1Section},
        {"a.mp3", joined({id3Tag({}, 20), mpegFrames()}),
         "ID3v2.4.0, 20 bytes in tag\n--------------------------\nno ID3v1 tag found\n"},
        {"a.wav", wavFile(), "INFO Chunk\n----------\nnot found\nno ID3 tag found\n"},
        {"a.aiff", aiffFile(), "no ID3V2 tag found\n"},
        {"a.m4a", mp4File(),
         "MP4 Tag\n-------\n" + standard + "EXTRA\n-----\ncovers - none\nCUSTOM\n------\nATOMS\n-----\n"},
        {"a.flac", flacFile(),
         "no Xiph tag found\nSUMMARY\n-------\n" + standard +
             "CUSTOM\n------\nno ID3v2 tag found\nno ID3v1 tag found\nno images found\n"},
        {"a.mp3", bytesOf("garbage"), "not a valid mpeg file\n"},
        {"a.wav", {}, "not a valid wav file\n"},
        {"a.AIFF", wavFile(), "not a valid aif(f) file\n"},
        {"a.mp4", bytesOf("garbage"), "not a valid m4a file\n"},
        {"a.flac", bytesOf("garbage"), "not a valid flac file\n"},
        {"a.ogg", mpegFrames(), "not a mp3, m4a, mp4, wav, or aif(f) file\n"},
    };
    for (const auto& [name, file, report] : cases) {
        EXPECT_EQ(described(name, file), report) << name;
    }
    EXPECT_EQ(ZALTagDescription(std::nullopt), "not a mp3, m4a, mp4, wav, or aif(f) file\n");
    EXPECT_EQ(ZALTagDescription((folder_.path() / "missing.flac").string()), "not a valid flac file\n");
    std::filesystem::create_directory(folder_.path() / "folder.mp3");
    EXPECT_EQ(ZALTagDescription((folder_.path() / "folder.mp3").string()), "not a valid mpeg file\n");
    EXPECT_THAT(log_.lines(), testing::IsEmpty());
}

}  // namespace
