// The items of an MP4 file: which are read, written, kept and removed; and files that TagLib must not see or
// save.

#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTagComment.h>

#include "base/Endian.h"
#include "containers/TextCarrier.h"
#include "id3/TagLibText.h"
#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <mp4file.h>

#include <map>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr char apple[] = "com.apple.iTunes";
constexpr char serato[] = "com.serato.dj";

// An object over a file with these items, and the items that it leaves when it is saved.
class MP4 : public testing::Test {
  protected:
    void open(std::initializer_list<ZALData> items) { open(mp4File({.userData = mp4Tag(items)})); }
    void open(const ZALData& file) {
        path = folder_.write("song.m4a", file);
        tag = ZALTagMP4::tagAtPath(path);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    std::map<std::string, std::string> savedItems() const {
        EXPECT_TRUE(tag->save());
        TagLib::MP4::File file(path.c_str(), false);
        std::map<std::string, std::string> out;
        for (const auto& [name, item] : file.tag()->itemMap()) {
            out[name.to8Bit()] = zal::joinedText(item.toStringList());
        }
        return out;
    }

    TemporaryFolder folder_;
    std::string path;
    std::shared_ptr<ZALTagMP4> tag;
};

ZALArray<ZALTagCuePoint> cues(std::initializer_list<double> times) {
    std::vector<ZALTagCuePoint> out;
    for (const double time : times) {
        out.push_back(ZALTagCuePoint::cuePointWithTime(time, "c" + std::to_string(out.size())));
    }
    return out;
}

std::string encoded(std::string_view name, const ZALData& payload) {
    const ZALData header =
        joined({bytesOf("application/octet-stream"), {0, 0}, bytesOf(name), ZALData(16 - name.size())});
    const ZALData text = *dataByEncodingBase64(joined({header, payload}));
    return {text.begin(), text.end()};
}

TEST_F(MP4, opensBothExtensionsAndNamesItsOperation) {
    const TemporaryFolder folder;
    EXPECT_NE(ZALTagMP4::tagAtPath(folder.write("a.M4A", mp4File())), nullptr);
    EXPECT_NE(ZALTagMP4::tagAtPath(folder.write("a.mp4", mp4File())), nullptr);
    EXPECT_EQ(ZALTagMP4::tagAtPath(folder.write("a.mp3", mp4File())), nullptr);
    const LogCapture log;
    EXPECT_EQ(ZALTagMP4::initWithPath(std::nullopt, false), nullptr);
    EXPECT_THAT(log.lines(), ElementsAre("-[ZALTagMP4 initWithPath:readOnly:] nil file path"));
}

TEST_F(MP4, absentAndEmptyTextsDiffer) {
    open({});
    for (const char* key : {"artist", "album", "title", "genre", "comment", "initialKey", "grouping"}) {
        EXPECT_TRUE(tag->valueForKey(key).isNull()) << key;
    }
    EXPECT_TRUE(tag->allComments().empty());
    tag->hasSeratoMetadata();
    tag->tempo();
    EXPECT_THAT(savedItems(), IsEmpty()) << "reading adds no item";

    open({mp4Item("\251nam", {{}}), mp4Freeform(apple, "initialkey", {""}),
          mp4Item("\251cmt", {bytesOf("c")})});
    EXPECT_EQ(tag->title(), "");
    EXPECT_EQ(tag->initialKey(), "");
    ASSERT_EQ(tag->allComments().size(), 1u);
    EXPECT_EQ(tag->allComments()[0].comment(), "c");
    EXPECT_TRUE(tag->allComments()[0].isPrimary());

    tag->setInitialKey("8A");
    tag->setInitialKey("");
    tag->setGrouping("g");
    tag->setGrouping("");
    tag->setEnergyLevel(5);
    tag->setEnergyLevel(0);
    tag->setTempo(0);
    tag->setYear(-5);
    tag->setTitle(std::nullopt);
    EXPECT_THAT(savedItems(), UnorderedElementsAre(std::pair("----:com.apple.iTunes:initialkey", ""),
                                                   std::pair("tmpo", ""), std::pair("\251cmt", "c")));
    tag->setInitialKey(std::nullopt);
    EXPECT_EQ(tag->initialKey(), std::nullopt);
}

TEST_F(MP4, textsOfAnItemAreJoinedWithABlank) {
    open({mp4Freeform(apple, "initialkey", {"8A", "9A"}), mp4Freeform(apple, "energylevel", {"7x", "8"}),
          mp4Item("\251grp", {bytesOf("a"), bytesOf("b")}), mp4Item("tmpo", {{0x01, 0x00}}, 21),
          mp4Freeform("com.quorvantis.quorvantis", "energy", {"eyJlbmVyZ3lMZXZlb", "CI6IDZ9"}),
          mp4Freeform("com.quorvantis.velvetcascade", "data", {"%%"})});
    EXPECT_EQ(tag->initialKey(), "8A 9A");
    EXPECT_EQ(tag->energyLevel(), 7);
    EXPECT_EQ(tag->grouping(), "a b");
    EXPECT_EQ(tag->tempo(), 256);
    EXPECT_EQ(tag->zalEnergy()->energy(), 6);
    EXPECT_EQ(tag->zalVelvetCascade(), std::nullopt);
    EXPECT_EQ(tag->zalTagPropertyOfClassAtomName<ZALTagKey>(""), std::nullopt);
    tag->setTempo(100000);
    EXPECT_EQ(tag->tempo(), 32767) << "what the item can hold";
}

TEST_F(MP4, payloadsGoInAsLatin1AndComeOutAsUTF8) {
    const TagLib::String text = zal::carrierText(fromHex("41 E9 0A"));
    EXPECT_EQ(toHex(*zal::payloadOf(zal::stringWithTagLibString(text))), "41 C3 A9 0A");
}

TEST_F(MP4, seratoCuePointsAreWrittenTwice) {
    open({});
    EXPECT_FALSE(tag->hasSeratoMetadata());
    tag->setSeratoCuePoints(cues({1.2345, 0.0005}));
    EXPECT_TRUE(tag->hasSeratoMetadata());
    EXPECT_EQ(tag->seratoMarker()->major(), 1);
    EXPECT_EQ(tag->seratoMarker()->cuePoints()[0].position(), 1235u);
    EXPECT_EQ(tag->seratoMarker()->cuePoints()[1].position(), 1u);
    const auto old = ZALTagSeratoMarkerOld::initWithData(*tag->oldSeratoMarkerData(), "m4a");
    EXPECT_EQ(old->major(), 2);
    EXPECT_EQ(old->cuePoints()[1].position(), 1u);
    tag->setZalKey(ZALTagKey::keyWithKey("8A", 1));
    const auto items = savedItems();
    EXPECT_EQ(items.size(), 3u);
    EXPECT_TRUE(items.at("----:com.serato.dj:markers").starts_with("YXBwbGljYXRpb24vb2N0ZXQtc3RyZWFtAABT"));
    tag->setSeratoCuePoints({});
    EXPECT_THAT(savedItems(), ElementsAre(testing::Key("----:com.quorvantis.quorvantis:key")));
}

TEST_F(MP4, seratoRecordsOfTheFileAreKeptButForTheirCues) {
    const ZALData color = joined({bytesOf(std::string_view("COLOR\0", 6)), fromHex("00000004 00FFFFFF")});
    const ZALData cue = ZALTagSeratoCuePoint::cuePointWithIndex(2, 77, "x").cuePointData();
    const ZALData inner = *dataByEncodingBase64(joined({{1, 1}, cue, color}));
    // One entry of 19 bytes, a loop, and the track's colour.
    const ZALData old = fromHex("0207 00000001 00000001 00000002 01 00000000 FF112233 03 00 00ABCDEF");
    // A grid of one marker at 0.5 s and 120 beats per minute.
    const ZALData grid = fromHex("0100 00000001 3F000000 42F00000 37");
    open({mp4Freeform(serato, "markersv2", {encoded("Serato Markers2", joined({{1, 1}, inner}))}),
          mp4Freeform(serato, "markers", {encoded("Serato Markers_", old)}),
          mp4Freeform(serato, "beatgrid", {encoded("Serato BeatGrid", grid)})});
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 0.077);
    tag->setSeratoCuePoints(cues({1.26, 1.24}));
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 1.5) << "moved to the grid";
    EXPECT_EQ(tag->seratoCuePoints()[1].time(), 1.0);
    const auto decoded = dataByDecodingBase64(bytesOf(savedItems().at("----:com.serato.dj:markersv2")));
    const auto text = dataByDecodingBase64(ZALData(decoded->begin() + 44, decoded->end()));
    EXPECT_THAT(toHex(*text), testing::HasSubstr(toHex(color)));
    const auto after = ZALTagSeratoMarkerOld::initWithData(*tag->oldSeratoMarkerData(), "m4a");
    EXPECT_EQ(after->minor(), 7);
    EXPECT_EQ(after->color(), 0x00ABCDEFu);
    tag->setRawSeratoCuePoints(cues({1.26}));
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 1.26);
}

TEST_F(MP4, seratoRecordsThatCannotBeReadAreNullAndOneLine) {
    open({mp4Freeform(serato, "markersv2", {"AA=="}), mp4Freeform(serato, "beatgrid", {encoded("x", {1})}),
          mp4Freeform(serato, "markers", {"!"})});
    const LogCapture log;
    EXPECT_EQ(tag->seratoMarker(), std::nullopt);
    EXPECT_EQ(tag->seratoGrid(), std::nullopt);
    EXPECT_EQ(tag->oldSeratoMarkerData(), std::nullopt);
    EXPECT_EQ(log.lines().size(), 3u);
    tag->setSeratoCuePoints(cues({1}));
    EXPECT_EQ(tag->seratoCuePoints().size(), 1u);
}

TEST_F(MP4, traktorIsFoundBehindTheFirstTenThousandBytes) {
    const auto withTrace = [](std::size_t at, std::string_view before) {
        ZALData file = mp4File();
        const ZALData marks = joined({bytesOf(before), ZALData(2000), bytesOf("NITR"), ZALData(10)});
        return joined(
            {file, mp4Atom("skip", joined({ZALData(at - 2000 - before.size() - file.size() - 8), marks}))});
    };
    const std::tuple<std::size_t, const char*, bool> cases[] = {{9999, "", false},
                                                                {10000, "", true},
                                                                {50000, "", true},
                                                                {9999, "free", false},
                                                                {50000, "free", false}};
    for (const auto& [at, before, found] : cases) {
        open(withTrace(at, before));
        EXPECT_EQ(tag->hasTraktorMetadata(), found) << at << before;
    }
}

// Where the audio stands must be kept, whatever is in front of it.
TEST_F(MP4, audioIsFoundAfterEverySave) {
    const ZALData tagged =
        mp4Tag({mp4Item("\251nam", {bytesOf("old")}), mp4Item("covr", {ZALData(3000)}, 13)});
    for (const MP4Content& content : {MP4Content{.userData = tagged}, MP4Content{.longTable = true},
                                      MP4Content{.userData = tagged, .audioFirst = true},
                                      MP4Content{.userData = mp4Atom("udta", mp4Atom("name", {1}))}}) {
        open(mp4File(content));
        const ZALData audio = mp4Audio(path);
        for (const std::size_t length : {100U, 60000U, 100U, 70000U}) {
            tag->setComment(std::string(length, 'x'));
            ASSERT_TRUE(tag->save());
            EXPECT_EQ(mp4Audio(path), audio);
            EXPECT_EQ(ZALTagMP4::tagAtPath(path)->comment(), tag->comment());
        }
        EXPECT_TRUE(ZALTagMP4::tagAtPath(path)->save());
    }
}

ZALData fragment(bool absolute) {
    return mp4Atom("moof", mp4Atom("traf", mp4Atom("tfhd", joined({{0, 0, 0, absolute}, ZALData(12)}))));
}

// A damaged copy of a file: its first atom of this name, with other bytes from some place on.
ZALData damaged(std::string_view name, std::size_t at, std::string_view bytes) {
    ZALData file = mp4File({.userData = mp4Tag({mp4Item("\251nam", {bytesOf("title")})})});
    const auto found = std::search(file.begin(), file.end(), name.begin(), name.end()) - 4;
    const ZALData other = fromHex(bytes);
    std::copy(other.begin(), other.end(), found + static_cast<std::ptrdiff_t>(at));
    return file;
}

TEST_F(MP4, whatASaveCouldHarmIsReadOnly) {
    const std::pair<const char*, ZALData> cases[] = {
        {"a table longer than its atom", damaged("stco", 12, "00000003")},
        {"a table of four billion places", damaged("stco", 12, "FFFFFFFF")},
        {"an atom longer than the one around it",
         joined({mp4Atom("moov", fromHex("0000006C 6E616D65")), mp4Atom("free", ZALData(92))})},
        {"items of two gigabytes",
         mp4Atom("moov",
                 mp4Atom("udta", mp4Atom("meta", fromHex("00000000 7FFFFFFF 696C7374 7FFFFFF7 A96E616D"))))},
        {"a table shorter than its head", mp4Atom("moov", mp4Atom("stco", {}))},
        {"a nested atom to the end of the file", damaged("smhd", 0, "00000000")},
        {"later fragments with places of their own",
         mp4File({.behind = joined({fragment(true), fragment(true)})})},
        {"a container with a long length",
         joined({fromHex("00000001 6D6F6F76 00000000 00000018"), mp4Atom("free", {})})},
    };
    for (const auto& [what, file] : cases) {
        SCOPED_TRACE(what);
        open(file);
        tag->setTitle(std::string(5000, 'x'));
        const LogCapture log;
        EXPECT_FALSE(tag->save()) << what;
        EXPECT_THAT(log.lines(),
                    ElementsAre("could not save '" + path + "': its audio would not be found again"));
        EXPECT_EQ(contentsOf(path), file);
    }
    const ZALData cut = mp4File();
    for (const ZALData& file : {mp4File({.behind = joined({fragment(true), fragment(false)})}),
                                damaged("mdat", 0, "00000000"), ZALData(cut.begin(), cut.end() - 20)}) {
        open(file);
        EXPECT_TRUE(tag->save());
    }
}

TEST_F(MP4, whatTagLibWouldChokeOnDoesNotOpen) {
    zal::ByteWriter nested;
    for (std::uint32_t length = 800000; length > 0; length -= 8) {
        nested.u32be(length);
        nested.text("udta");
    }
    ZALData many;
    for (int i = 0; i < 300000; ++i) {
        const ZALData one = mp4Atom("free", {});
        many.insert(many.end(), one.begin(), one.end());
    }
    ZALData values;
    for (int i = 0; i < 5000; ++i) {
        const ZALData one = fromHex("0000000C 64617461 00000001");
        values.insert(values.end(), one.begin(), one.end());
    }
    const std::pair<const char*, ZALData> cases[] = {
        {"nested", mp4Atom("moov", nested.data())},
        {"many", joined({mp4File(), many})},
        {"short values", mp4File({.userData = mp4Tag({mp4Atom("\251nam", values)})})},
        {"no movie", mp4Atom("ftyp", bytesOf("M4A "))},
        {"length below its own", joined({mp4File(), fromHex("00000007 66726565")})},
        {"length without end", joined({mp4File(), fromHex("00000001 66726565 7FFFFFFF FFFFFFFF")})},
    };
    for (const auto& [what, file] : cases) {
        EXPECT_EQ(ZALTagMP4::tagAtPath(folder_.write("bad.m4a", file)), nullptr) << what;
    }
}

}  // namespace
