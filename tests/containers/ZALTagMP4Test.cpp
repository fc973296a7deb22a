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

constexpr char apple[] = "com.apple.iTunes";
constexpr char serato[] = "com.serato.dj";

class MP4 : public testing::Test {
  protected:
    void open(std::initializer_list<ZALData> items) { open(mp4File({.userData = mp4Tag(items)})); }
    void open(const ZALData& file) {
        path = folder_.write("song.m4a", file);
        tag = ZALTagMP4::tagAtPath(path);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    // The items that a save leaves.
    std::map<std::string, std::string> savedItems() const {
        EXPECT_TRUE(tag->save());
        TagLib::MP4::File file(path.c_str(), false);
        std::map<std::string, std::string> out;
        for (const auto& [name, item] : file.tag()->itemMap()) {
            out[name.to8Bit()] = zal::joinedText(item.toStringList());
        }
        return out;
    }
    ZALTagSeratoMarkerOld oldMarker() const {
        return *ZALTagSeratoMarkerOld::initWithData(tag->oldSeratoMarkerData().value(), "m4a");
    }

    TemporaryFolder folder_;
    std::string path;
    std::shared_ptr<ZALTagMP4> tag;
};

ZALTagCuePoint cue(double time) {
    return ZALTagCuePoint::cuePointWithTime(time, "c");
}

TEST_F(MP4, absentAndEmptyTextsDiffer) {
    open({});
    for (const std::string& key : tag->propertyKeys()) {
        tag->valueForKey(key);
    }
    EXPECT_TRUE(tag->allComments().empty());
    EXPECT_FALSE(tag->hasSeratoMetadata());
    EXPECT_EQ(tag->tempo() + tag->year() + tag->energyLevel(), 0);
    EXPECT_THAT(savedItems(), IsEmpty()) << "reading adds no item";

    open({mp4Item("\251nam", {{}}), mp4Freeform(apple, "initialkey", {""}),
          mp4Item("\251cmt", {bytesOf("c")})});
    EXPECT_TRUE(tag->title() == "" && tag->initialKey() == "");
    EXPECT_EQ(tag->allComments()[0].comment(), "c");
    EXPECT_TRUE(tag->allComments()[0].isPrimary());
    tag->setGrouping("g");
    tag->setGrouping("");
    tag->setEnergyLevel(5);
    tag->setEnergyLevel(0);
    tag->setTempo(0);
    tag->setYear(-5);
    tag->setTitle(std::nullopt);
    EXPECT_THAT(savedItems(), ElementsAre(std::pair("----:com.apple.iTunes:initialkey", ""),
                                          std::pair("tmpo", ""), std::pair("\251cmt", "c")));
    tag->setInitialKey(std::nullopt);
    EXPECT_EQ(tag->initialKey(), std::nullopt);
    tag->setTempo(100000);
    EXPECT_EQ(tag->tempo(), 32767) << "what the item can hold";
}

TEST_F(MP4, textsOfAnItemAreJoinedWithABlank) {
    open({mp4Freeform(apple, "initialkey", {"8A", "9A"}), mp4Freeform(apple, "energylevel", {"7x", "8"}),
          mp4Item("\251grp", {bytesOf("a"), bytesOf("b")}), mp4Item("tmpo", {{1, 0}}, 21),
          mp4Freeform("com.quorvantis.quorvantis", "energy", {"eyJlbmVyZ3lMZXZlb", "CI6IDZ9"})});
    EXPECT_TRUE(tag->initialKey() == "8A 9A" && tag->energyLevel() == 7);
    EXPECT_TRUE(tag->grouping() == "a b" && tag->tempo() == 256 && tag->zalEnergy()->energy() == 6);
    const TagLib::String text = zal::carrierText(fromHex("41 E9 0A"));
    EXPECT_EQ(toHex(*zal::payloadOf(zal::stringWithTagLibString(text))), "41 C3 A9 0A")
        << "Latin-1 in, UTF-8 out";
}

TEST_F(MP4, seratoCuePointsAreWrittenTwice) {
    open({});
    tag->setSeratoCuePoints({cue(1.2345), cue(0.0005)});
    tag->setZalKey(ZALTagKey::keyWithKey("8A", 1));
    EXPECT_TRUE(tag->hasSeratoMetadata());
    EXPECT_EQ(tag->seratoMarker()->major(), 1);
    EXPECT_EQ(tag->seratoMarker()->cuePoints()[0].position(), 1235u);
    EXPECT_EQ(oldMarker().major(), 2);
    EXPECT_EQ(oldMarker().cuePoints()[1].position(), 1u);
    EXPECT_EQ(savedItems().size(), 3u);
    tag->setSeratoCuePoints({});
    EXPECT_THAT(savedItems(), ElementsAre(testing::Key("----:com.quorvantis.quorvantis:key")));
}

TEST_F(MP4, seratoRecordsOfTheFileAreKeptButForTheirCues) {
    const ZALData color = joined({bytesOf(std::string_view("COLOR\0", 6)), fromHex("00000004 00FFFFFF")});
    // A loop of 19 bytes and the track's colour; a grid of one marker at 0.5 s and 120 beats per minute.
    const ZALData old = fromHex("0207 00000001 00000001 00000002 01 00000000 FF112233 03 00 00ABCDEF");
    const ZALData grid = fromHex("0100 00000001 3F000000 42F00000 37");
    open({mp4Freeform(serato, "markersv2",
                      {seratoText(joined({{1, 1}, *dataByEncodingBase64(joined({{1, 1}, color}))}))}),
          mp4Freeform(serato, "markers", {seratoText(old)}),
          mp4Freeform(serato, "beatgrid", {seratoText(grid)})});
    tag->setSeratoCuePoints({cue(1.26)});
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 1.5) << "moved to the grid";
    EXPECT_THAT(toHex(seratoPayload(savedItems().at("----:com.serato.dj:markersv2"))),
                testing::HasSubstr(toHex(color)));
    EXPECT_TRUE(oldMarker().minor() == 7 && oldMarker().color() == 0x00ABCDEFu);
    tag->setRawSeratoCuePoints({cue(1.26)});
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 1.26);
}

TEST_F(MP4, traktorIsFoundBehindTheFirstTenThousandBytes) {
    const std::tuple<std::size_t, const char*, bool> cases[] = {
        {9999, "", false}, {10000, "", true}, {50000, "", true}, {50000, "free", false}};
    for (const auto& [at, before, found] : cases) {
        const std::size_t filling = at - mp4File().size() - 8 - 2000 - std::string_view(before).size();
        open(mp4File({.behind = mp4Atom("skip", joined({ZALData(filling), bytesOf(before), ZALData(2000),
                                                        bytesOf("NITR"), ZALData(10)}))}));
        EXPECT_EQ(tag->hasTraktorMetadata(), found) << at << before;
    }
}

// A "udta" that ends in a length of 0, as QuickTime writes it.
ZALData terminated(const ZALData& userData) {
    return mp4Atom("udta", joined({ZALData(userData.begin() + 8, userData.end()), ZALData(4)}));
}

TEST_F(MP4, audioIsFoundAfterEverySave) {
    const ZALData tagged = mp4Tag({mp4Item("covr", {ZALData(3000)}, 13)});
    const ZALData named = mp4Atom("udta", mp4Atom("name", {1}));
    for (const MP4Content& content :
         {MP4Content{.userData = tagged}, MP4Content{.longTable = true},
          MP4Content{.userData = tagged, .audioFirst = true}, MP4Content{.userData = named},
          MP4Content{.userData = terminated(tagged)}, MP4Content{.userData = terminated(named)},
          MP4Content{
              .userData = terminated(tagged), .audioFirst = true, .behind = mp4Atom("free", ZALData(100))}}) {
        open(mp4File(content));
        const ZALData audio = mp4Audio(path);
        for (const std::size_t length : {100u, 60000u, 100u, 70000u}) {
            tag->setComment(std::string(length, 'x'));
            ASSERT_TRUE(tag->save());
            EXPECT_EQ(mp4Audio(path), audio);
        }
        const auto again = ZALTagMP4::tagAtPath(path);
        EXPECT_EQ(again->comment(), std::string(70000, 'x'));
        EXPECT_TRUE(again->save());
    }
}

ZALData fragment(bool absolute) {
    return mp4Atom("moof", mp4Atom("traf", mp4Atom("tfhd", joined({{0, 0, 0, absolute}, ZALData(12)}))));
}

// A file whose first atom of this name has other bytes from some place on.
ZALData damaged(std::string_view name, std::ptrdiff_t at, const ZALData& bytes) {
    ZALData file = mp4File();
    const auto found = std::search(file.begin(), file.end(), name.begin(), name.end()) - 4;
    std::copy(bytes.begin(), bytes.end(), found + at);
    return file;
}

TEST_F(MP4, whatASaveCouldHarmIsReadOnly) {
    const ZALData longItem = fromHex("00000000 7FFFFFFF 696C7374 7FFFFFF7 A96E616D");
    const std::pair<const char*, ZALData> cases[] = {
        {"a table longer than its atom", damaged("stco", 12, {0, 0, 0, 3})},
        {"a table of four billion places", damaged("stco", 12, {255, 255, 255, 255})},
        {"a table shorter than its head", mp4Atom("moov", mp4Atom("stco", {}))},
        {"an atom longer than the one around it",
         joined({mp4Atom("moov", fromHex("0000006C 6E616D65")), mp4Atom("free", ZALData(92))})},
        {"items of two gigabytes", mp4Atom("moov", mp4Atom("udta", mp4Atom("meta", longItem)))},
        {"a nested atom to the end of the file", damaged("stco", 0, {0, 0, 0, 0})},
        {"later fragments with places", mp4File({.behind = joined({fragment(true), fragment(true)})})},
        {"a table behind the end of user data",
         mp4File(
             {.userData = joined({terminated(mp4Tag({})), mp4Atom("trak", mp4Atom("stco", ZALData(8)))})})},
        {"fragments behind the end of user data",
         mp4File({.userData = terminated(mp4Tag({})), .behind = fragment(true)})},
        {"a zero length within user data",
         mp4File({.userData = mp4Atom("udta", joined({ZALData(4), mp4Atom("name", {1})}))})},
        {"a container with a long length", fromHex("00000001 6D6F6F76 00000000 00000018 00000008 66726565")},
    };
    for (const auto& [what, file] : cases) {
        open(file);
        tag->setTitle(std::string(5000, 'x'));
        const LogCapture log;
        EXPECT_FALSE(tag->save()) << what;
        EXPECT_THAT(log.lines(),
                    ElementsAre("could not save '" + path + "': its audio would not be found again"));
        EXPECT_EQ(contentsOf(path), file);
    }
    const ZALData whole = mp4File();
    for (const ZALData& file : {mp4File({.behind = joined({fragment(true), fragment(false)})}),
                                damaged("mdat", 0, {0, 0, 0, 0}), ZALData(whole.begin(), whole.end() - 20)}) {
        open(file);
        EXPECT_TRUE(tag->save());
    }
}

// Atoms that TagLib would choke on are in the hostile set.
TEST_F(MP4, whatHasNoMovieOrNoEndDoesNotOpen) {
    for (const ZALData& file :
         {mp4Atom("ftyp", bytesOf("M4A ")), mp4File({.behind = fromHex("00000007 66726565")}),
          mp4File({.behind = fromHex("00000001 66726565 7FFFFFFF FFFFFFFF")}),
          mp4File({.userData = mp4Tag({mp4Atom("\251nam", fromHex("0000000C 64617461 00000001"))})})}) {
        EXPECT_EQ(ZALTagMP4::tagAtPath(folder_.write("bad.m4a", file)), nullptr) << toHex(file);
    }
}

}  // namespace
