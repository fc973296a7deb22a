// The DJ data in the frames of an ID3v2 tag: which frames are found, changed, made, moved and removed.

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoCuePoint.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <generalencapsulatedobjectframe.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>

#include <bit>

namespace {

using TagLib::ID3v2::GeneralEncapsulatedObjectFrame;
using testing::ElementsAre;

ZALData object(std::string_view mimeType, std::string_view description, const ZALData& data) {
    return id3Frame("GEOB", joined({{0}, bytesOf(mimeType), {0, 0}, bytesOf(description), {0}, data}));
}

ZALData stored(std::string_view json) {
    return *dataByEncodingBase64(bytesOf(json));
}

std::shared_ptr<ZALTagID3> tagWith(std::initializer_list<ZALData> frames) {
    static const TemporaryFolder folder;
    return ZALTagID3::tagAtPath(folder.write("song.mp3", joined({id3Tag(frames), mpegFrames()})));
}

// The frames of a tag in their order: the id, or MIME type and description of an object.
std::vector<std::string> framesOf(const ZALTagID3& tag) {
    std::vector<std::string> out;
    for (const TagLib::ID3v2::Frame* frame : tag.v2Tag()->frameList()) {
        const auto* geob = dynamic_cast<const GeneralEncapsulatedObjectFrame*>(frame);
        const TagLib::ByteVector id = frame->frameID();
        out.push_back(geob != nullptr ? geob->mimeType().to8Bit() + ":" + geob->description().to8Bit()
                                      : std::string(id.data(), id.size()));
    }
    return out;
}

ZALArray<ZALTagCuePoint> cues(std::initializer_list<double> times) {
    std::vector<ZALTagCuePoint> out;
    for (const double time : times) {
        out.push_back(ZALTagCuePoint::cuePointWithTime(time, "c" + std::to_string(out.size())));
    }
    return out;
}

std::vector<double> timesOf(const ZALArray<ZALTagCuePoint>& cuePoints) {
    std::vector<double> out;
    for (const ZALTagCuePoint& cue : cuePoints) {
        out.push_back(cue.time());
    }
    return out;
}

// A grid of one marker.
ZALData beatGrid(float position, float tempo) {
    zal::ByteWriter out;
    out.u16be(0x0100);
    out.u32be(1);
    out.u32be(std::bit_cast<std::uint32_t>(position));
    out.u32be(std::bit_cast<std::uint32_t>(tempo));
    out.u8(0x37);
    return out.take();
}

TEST(RecordFrames, theFirstOfAnExactDescriptionIsReadAndChanged) {
    const auto tag = tagWith({object("x/y", "key", stored(R"({"key":"no"})")), object("x/y", "Keys", {}),
                              object("text/plain", "Key", stored(R"({"key":"8A","algorithm":2})")),
                              id3Text("TIT2", "t"), object("x/y", "Key", stored(R"({"key":"1B"})"))});
    EXPECT_EQ(tag->zalKey(), ZALTagKey::keyWithKey("8A", 2));
    tag->setZalKey(ZALTagKey::keyWithKey("9A", 3));
    EXPECT_THAT(framesOf(*tag), ElementsAre("x/y:key", "x/y:Keys", "text/plain:Key", "TIT2", "x/y:Key"))
        << "only the object changes";
    EXPECT_EQ(tag->zalKey(), ZALTagKey::keyWithKey("9A", 3));
    tag->setZalKey(std::nullopt);
    EXPECT_EQ(tag->zalKey(), ZALTagKey::keyWithKey("1B", 0)) << "the second comes to light";
    tag->setZalKey(std::nullopt);
    tag->setZalKey(ZALTagKey::keyWithKey("7A", 1));
    EXPECT_THAT(framesOf(*tag), ElementsAre("x/y:key", "x/y:Keys", "TIT2", "application/json:Key"));
    EXPECT_FALSE(tag->requiresSaving());
    EXPECT_EQ(tag->zalTagPropertyOfClassDescription<ZALTagKey>(""), std::nullopt);
}

TEST(SeratoFrames, bothAreWrittenTheNewOneLast) {
    const auto tag = tagWith({id3Text("TIT2", "t")});
    EXPECT_FALSE(tag->hasSeratoMetadata());
    tag->setSeratoCuePoints(cues({12.3456, 0.0004, -1}));
    tag->setZalKey(ZALTagKey::keyWithKey("7A", 1));
    EXPECT_EQ(framesOf(*tag).back(), "application/json:Key");
    tag->setSeratoCuePoints(cues({12.3456, 0.0004, -1}));
    EXPECT_THAT(framesOf(*tag), ElementsAre("TIT2", "application/json:Serato Markers_",
                                            "application/json:Key", "application/json:Serato Markers2"));
    EXPECT_THAT(timesOf(tag->seratoCuePoints()), ElementsAre(12.346, 0, 0));
    EXPECT_EQ(tag->seratoCuePoints()[1].name(), "c1");
    EXPECT_TRUE(tag->seratoMarker()->major() == 1 && tag->seratoMarker()->minor() == 1);
    const auto old = ZALTagSeratoMarkerOld::markerWithData(*tag->oldSeratoMarkerData());
    EXPECT_TRUE(old->major() == 2 && old->minor() == 5);
    EXPECT_EQ(old->cuePoints()[0].position(), 12346u);
    EXPECT_TRUE(tag->hasSeratoMetadata());
    tag->setSeratoCuePoints({});
    EXPECT_THAT(framesOf(*tag), ElementsAre("TIT2", "application/json:Key"));
}

TEST(SeratoFrames, cuesMoveToTheGridOfTheFile) {
    const auto tag = tagWith({object("a/b", "Serato BeatGrid", beatGrid(0.5F, 120))});
    tag->setSeratoCuePoints(cues({1.26, 1.24, 0.1}));
    EXPECT_THAT(timesOf(tag->seratoCuePoints()), ElementsAre(1.5, 1.0, 0));
    tag->setRawSeratoCuePoints(cues({1.26}));
    EXPECT_THAT(timesOf(tag->seratoCuePoints()), ElementsAre(1.26));
    const auto early = tagWith({object("a/b", "Serato BeatGrid", beatGrid(0.3F, 120))});
    early->setSeratoCuePoints(cues({0.0}));
    EXPECT_THAT(timesOf(early->seratoCuePoints()), ElementsAre(0)) << "a beat before the start is the start";
}

TEST(SeratoFrames, anExistingRecordKeepsWhatIsNotACue) {
    // COLOR, one cue, BPMLOCK and a trailer.
    const ZALData color = joined({bytesOf(std::string("COLOR\0", 6)), fromHex("00000004 00FFFFFF")});
    const ZALData lock = joined({bytesOf(std::string("BPMLOCK\0", 8)), fromHex("00000001 00 00 00")});
    const auto cue = ZALTagSeratoCuePoint::cuePointWithIndex(2, 77, "x").cuePointData();
    const ZALData inner = joined({{1, 1}, color, cue, lock});
    const auto tag =
        tagWith({object("a/b", "Serato Markers2", joined({{0, 0}, *dataByEncodingBase64(inner)}))});
    EXPECT_EQ(tag->seratoMarker()->cuePoints()[0].index(), 2);
    tag->setSeratoCuePoints(cues({1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(tag->seratoCuePoints().size(), 8u);
    EXPECT_THAT(framesOf(*tag).back(), "a/b:Serato Markers2");
    tag->setSeratoCuePoints(cues({1}));
    const auto* frame = dynamic_cast<const GeneralEncapsulatedObjectFrame*>(tag->v2Tag()->frameList().back());
    const TagLib::ByteVector bytes = frame->object();
    const auto decoded = dataByDecodingBase64(ZALData(bytes.begin() + 2, bytes.end()));
    const auto first = ZALTagSeratoCuePoint::cuePointWithIndex(0, 1000, "c0").cuePointData();
    EXPECT_EQ(toHex(*decoded), toHex(joined({{0, 0}, first, color, lock})));
}

TEST(SeratoFrames, whatCannotBeReadIsNullAndOneLine) {
    const auto tag = tagWith(
        {object("a/b", "Serato Markers2", bytesOf("\1\1=======")), object("a/b", "Serato BeatGrid", {1})});
    const LogCapture log;
    EXPECT_EQ(tag->seratoMarker(), std::nullopt) << "a payload of fewer than two bytes does not throw here";
    EXPECT_TRUE(tag->seratoGrid() == std::nullopt && tag->oldSeratoMarkerData() == std::nullopt);
    EXPECT_EQ(log.lines().size(), 2u);
    tag->setSeratoCuePoints(cues({1}));
    EXPECT_THAT(timesOf(tag->seratoCuePoints()), ElementsAre(1));
}

TEST(SeratoFrames, colorsTooWideForMP3AreRefused) {
    // Entries of 19 bytes can hold any colour, and their loops are carried over.
    zal::ByteWriter record;
    record.u16be(0x0205);
    record.u32be(1);
    record.bytes(fromHex("00000001 00000002 01 00000000 FF112233 03 00"));
    record.u32be(0x00FFFFFF);
    const auto tag = tagWith({object("a/b", "Serato Markers_", record.data())});
    const LogCapture log;
    EXPECT_EQ(tag->oldSeratoMarkerData(), std::nullopt);
    tag->setSeratoCuePoints(cues({1}));
    ASSERT_EQ(log.lines().size(), 2u) << "one for the look, one for the write";
    EXPECT_TRUE(log.lines()[0].starts_with("Failed to render marker <ZALTagSeratoMarkerOld: "));
    EXPECT_TRUE(log.lines()[0].ends_with(" -- Serato cue points NOT SAVED"));
    EXPECT_THAT(framesOf(*tag), ElementsAre("a/b:Serato Markers_", "application/json:Serato Markers2"));
    const auto* frame =
        dynamic_cast<const GeneralEncapsulatedObjectFrame*>(tag->v2Tag()->frameList().front());
    const TagLib::ByteVector bytes = frame->object();
    EXPECT_EQ(ZALData(bytes.begin(), bytes.end()), record.data()) << "the frame is left as it was";
}

TEST(TraktorFrames, areFoundAndRemoved) {
    const auto priv = [](std::string_view owner) {
        return id3Frame("PRIV", joined({bytesOf(owner), {0, 1, 2}}));
    };
    const auto tag = tagWith({priv("traktor"), priv("TRAKTOR4"), priv("other"), priv("xTRAKTOR")});
    EXPECT_TRUE(tag->hasTraktorMetadata());
    tag->setTraktorCuePoints(cues({1}));
    EXPECT_FALSE(tag->hasTraktorMetadata());
    EXPECT_THAT(framesOf(*tag), ElementsAre("PRIV", "PRIV"));
    EXPECT_FALSE(tag->requiresSaving() || tagWith({priv("traktor")})->hasTraktorMetadata());
    EXPECT_TRUE(tagWith({object("", "Old Serato Analysis", {})})->hasSeratoMetadata());
    EXPECT_FALSE(tagWith({object("", "SERATO", {})})->hasSeratoMetadata());
}

}  // namespace
