// The DJ data in the frames of an ID3v2 tag: which frames are found, changed, made, moved and removed.

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <generalencapsulatedobjectframe.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>
#include <privateframe.h>

namespace {

using TagLib::ID3v2::GeneralEncapsulatedObjectFrame;
using testing::ElementsAre;

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
        out.push_back(ZALTagCuePoint(time, "c" + std::to_string(out.size())));
    }
    return out;
}

TEST(RecordFrames, theFirstOfAnExactDescriptionIsReadAndChanged) {
    const auto tag =
        tagWith({id3Object("key", "x/y", stored(R"({"key":"no"})")), id3Object("Keys", "x/y", {}),
                 id3Object("Key", "text/plain", stored(R"({"key":"8A","algorithm":2})")),
                 id3Text("TIT2", "t"), id3Object("Key", "x/y", stored(R"({"key":"1B"})"))});
    EXPECT_EQ(tag->zalKey(), ZALTagKey("8A", 2));
    tag->setZalKey(ZALTagKey("9A", 3));
    EXPECT_THAT(framesOf(*tag), ElementsAre("x/y:key", "x/y:Keys", "text/plain:Key", "TIT2", "x/y:Key"))
        << "only the object changes";
    EXPECT_EQ(tag->zalKey(), ZALTagKey("9A", 3));
    tag->setZalKey(std::nullopt);
    EXPECT_EQ(tag->zalKey(), ZALTagKey("1B", 0)) << "the second comes to light";
    tag->setZalKey(std::nullopt);
    tag->setZalKey(ZALTagKey("7A", 1));
    EXPECT_THAT(framesOf(*tag), ElementsAre("x/y:key", "x/y:Keys", "TIT2", "application/json:Key"));
    EXPECT_FALSE(tag->requiresSaving());
    EXPECT_EQ(tag->zalTagPropertyOfClassDescription<ZALTagKey>(""), std::nullopt);
}

TEST(SeratoFrames, bothAreWrittenTheNewOneLast) {
    const auto tag = tagWith({id3Text("TIT2", "t")});
    tag->setSeratoCuePoints(cues({12.3456, 0.0004, -1}));
    tag->setZalKey(ZALTagKey("7A", 1));
    tag->setSeratoCuePoints(cues({12.3456, 0.0004, -1}));
    EXPECT_THAT(framesOf(*tag), ElementsAre("TIT2", "application/json:Serato Markers_",
                                            "application/json:Key", "application/json:Serato Markers2"));
    EXPECT_EQ(tag->seratoCuePoints()[1].time(), 0) << "before the start is the start";
    tag->setSeratoCuePoints(cues({1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(ZALTagSeratoMarkerOld::initWithData(*tag->oldSeratoMarkerData())->cuePoints()[0].position(),
              1000u)
        << "the ninth is in no slot";
    tag->setSeratoCuePoints({});
    EXPECT_THAT(framesOf(*tag), ElementsAre("TIT2", "application/json:Key"));
}

TEST(SeratoFrames, whatCannotBeReadIsNullAndOneLine) {
    const auto tag = tagWith({id3Object("Serato Markers2", "a/b", bytesOf("\1\1=======")),
                              id3Object("Serato BeatGrid", "a/b", {1})});
    const LogCapture log;
    EXPECT_EQ(tag->seratoMarker(), std::nullopt) << "a payload of fewer than two bytes does not throw here";
    EXPECT_TRUE(tag->seratoGrid() == std::nullopt && tag->oldSeratoMarkerData() == std::nullopt);
    EXPECT_EQ(log.lines().size(), 2u);
    tag->setSeratoCuePoints(cues({1}));
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 1);
}

TEST(SeratoFrames, colorsTooWideForMP3AreRefused) {
    // Entries of 19 bytes can hold any colour, and their loops are carried over.
    const ZALData record = fromHex("0205 00000001 00000001 00000002 01 00000000 FF112233 03 00 00FFFFFF");
    const auto tag = tagWith({id3Object("Serato Markers_", "a/b", record)});
    const LogCapture log;
    EXPECT_EQ(tag->oldSeratoMarkerData(), std::nullopt);
    tag->setSeratoCuePoints(cues({1}));
    ASSERT_EQ(log.lines().size(), 1u) << "only for the write";
    EXPECT_TRUE(log.lines()[0].starts_with("Failed to render marker <ZALTagSeratoMarkerOld: "));
    EXPECT_TRUE(log.lines()[0].ends_with(" -- Serato cue points NOT SAVED"));
    EXPECT_THAT(framesOf(*tag), ElementsAre("a/b:Serato Markers_", "application/json:Serato Markers2"));
    const auto* frame =
        dynamic_cast<const GeneralEncapsulatedObjectFrame*>(tag->v2Tag()->frameList().front());
    const TagLib::ByteVector bytes = frame->object();
    EXPECT_EQ(ZALData(bytes.begin(), bytes.end()), record) << "the frame is left as it was";
}

TEST(TraktorFrames, whatAHostChangesInOneIsSaved) {
    const auto tag = tagWith({id3Frame("PRIV", joined({bytesOf("TRAKTOR4"), {0, 1, 2}}))});
    tag->findTraktorPrivateFrame()->setData("new");
    ASSERT_TRUE(tag->save());
    EXPECT_TRUE(ZALTagID3::tagAtPath(tag->path())->findTraktorPrivateFrame()->data() == "new");
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
    EXPECT_TRUE(tagWith({id3Object("Old Serato Analysis", "", {})})->hasSeratoMetadata());
    EXPECT_FALSE(tagWith({id3Object("SERATO", "", {})})->hasSeratoMetadata());
}

}  // namespace
