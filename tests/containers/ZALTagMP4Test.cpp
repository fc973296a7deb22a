// The items of an MP4 file: which are read, written, kept and removed; and files that TagLib must not see or
// save.

#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTagComment.h>

#include "base/Endian.h"
#include "stores/TextPayloads.h"
#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "taglib/TagLibText.h"

#include <gmock/gmock.h>
#include <mp4file.h>

#include <map>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char apple[] = "com.apple.iTunes";

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
    TemporaryFolder folder_;
    std::string path;
    std::shared_ptr<ZALTagMP4> tag;
};

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
    EXPECT_EQ(tag->tempo(), 65535) << "what the item can hold";
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
    // A loop of 19 bytes and the track's colour, which stay.
    const ZALData old = fromHex("0207 00000001 00000001 00000002 01 00000000 FF112233 03 00 00ABCDEF");
    open({mp4Freeform("com.serato.dj", "markers", {seratoText(old)})});
    const auto cue = [](double time) { return ZALTagCuePoint(time, "c"); };
    tag->setSeratoCuePoints({cue(1.2345), cue(0.0005)});
    tag->setZalKey(ZALTagKey("8A", 1));
    EXPECT_TRUE(tag->hasSeratoMetadata() && tag->seratoMarker()->major() == 1);
    const auto marker = ZALTagSeratoMarkerOld::initWithData(tag->oldSeratoMarkerData().value(), "m4a");
    EXPECT_TRUE(marker->minor() == 7 && marker->color() == 0x00ABCDEFu);
    EXPECT_EQ(marker->cuePoints()[1].position(), 1u);
    EXPECT_EQ(savedItems().size(), 3u);
    tag->setSeratoCuePoints({});
    EXPECT_THAT(savedItems(), ElementsAre(testing::Key("----:com.quorvantis.quorvantis:key")));
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

}  // namespace
