// A FLAC file's Xiph comment beside its ID3 tags: which is read, which is written; and files that TagLib must
// not see or save.

#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/tag/ZALTagComment.h>

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <flacfile.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>
#include <xiphcomment.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ZALData userText(std::string_view description, std::string_view text) {
    return id3Frame("TXXX", joined({{0}, bytesOf(description), {0}, bytesOf(text)}));
}

ZALData object(std::string_view description, std::string_view json) {
    return id3Frame("GEOB", joined({{0},
                                    bytesOf("application/json"),
                                    {0, 0},
                                    bytesOf(description),
                                    {0},
                                    *dataByEncodingBase64(bytesOf(json))}));
}

// Every field that the ID3 tag of a FLAC file is asked for.
const ZALData id3 =
    id3Tag({id3Text("TPE1", "artist 3"), id3Text("TALB", "album 3"), id3Text("TIT2", "title 3"),
            id3Text("TCON", "genre 3"), id3Text("TDRC", "1993"), id3Comment("eng", "", "comment 3"),
            id3Text("TBPM", "128"), id3Text("TKEY", "3A"), userText("EnergyLevel", "3"),
            id3Text("TIT1", "grouping 3"), id3Text("TPE4", "modified 3"), object("Key", R"({"key":"3B"})")});

class FLAC : public testing::Test {
  protected:
    void open(const std::vector<std::string_view>& fields, const ZALData& before = {},
              const ZALData& behind = {}) {
        path = folder_.write("song.flac", joined({before, flacFile({flacComment(fields)}), behind}));
        tag = ZALTagFLAC::tagAtPath(path);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    // The fields of the comment after a save, "NAME=value", sorted by name.
    std::vector<std::string> savedFields() const {
        EXPECT_TRUE(tag->save());
        TagLib::FLAC::File file(path.c_str(), false);
        std::vector<std::string> out;
        for (const auto& [name, values] : file.xiphComment()->fieldListMap()) {
            for (const TagLib::String& value : values) {
                out.push_back(name.to8Bit() + "=" + value.to8Bit());
            }
        }
        return out;
    }

    TemporaryFolder folder_;
    std::string path;
    std::shared_ptr<ZALTagFLAC> tag;
};

TEST_F(FLAC, opensWithAndWithoutID3TagsInFront) {
    const ZALData plain = flacFile();
    const ZALData small = id3Tag({id3Text("TIT2", "t")}, 100);
    const std::tuple<const char*, ZALData, bool> cases[] = {
        {"plain", plain, true},
        {"one tag", joined({small, plain}), true},
        {"two tags", joined({small, small, plain}), true},
        {"something else in front", joined({mpegFrames(), plain}), false},
        {"something between", joined({small, ZALData(5), plain}), false},
        {"only a tag", small, false},
        {"cut in a block", ZALData(plain.begin(), plain.begin() + 30), false},
        {"no last block", joined({bytesOf("fLaC"), flacBlock(0, ZALData(34))}), false},
        {"a block beyond the end", joined({bytesOf("fLaC"), fromHex("80FFFFFF"), ZALData(34)}), false},
    };
    for (const auto& [what, file, opens] : cases) {
        EXPECT_EQ(ZALTagFLAC::tagAtPath(folder_.write("a.Flac", file)) != nullptr, opens) << what;
    }
    const LogCapture log;
    EXPECT_EQ(ZALTagFLAC::initWithPath(std::nullopt, false), nullptr);
    EXPECT_THAT(log.lines(), ElementsAre("-[ZALTagFLAC initWithPath:readOnly:] nil file path"));
}

TEST_F(FLAC, whatTagLibWouldChokeOnDoesNotOpen) {
    // A field, or the maker's name, whose length leads TagLib back to where it was.
    const ZALData field = fromHex("00000000 FF000000 FCFFFFFF 613D");
    const ZALData maker = fromHex("FCFFFFFF 04000000");
    ZALData many;
    for (int i = 0; i < 70000; ++i) {
        many.insert(many.end(), {3, 0, 0, 0});  // empty tables
    }
    for (const ZALData& blocks :
         {flacBlock(4, joined({field, ZALData(2000)})), flacBlock(4, joined({maker, ZALData(2000)})), many}) {
        EXPECT_EQ(ZALTagFLAC::tagAtPath(folder_.write("a.flac", flacFile({blocks}))), nullptr);
    }
    ZALData chapters;
    for (int i = 0; i < 1100; ++i) {
        chapters = joined({chapters, id3Frame("CHAP", joined({{'a', 0}, ZALData(16)}))});
    }
    EXPECT_EQ(ZALTagFLAC::tagAtPath(folder_.write("a.flac", joined({id3Tag({chapters}), flacFile()}))),
              nullptr);
    // A field that is only too long ends the list.
    EXPECT_NE(ZALTagFLAC::tagAtPath(folder_.write(
                  "a.flac", flacFile({flacBlock(4, fromHex("00000000 01000000 FFFF0000 613D62"))}))),
              nullptr);
}

TEST_F(FLAC, id3IsReadWhereTheCommentHasNothing) {
    const auto shown = [this] {
        std::string out;
        for (const char* key :
             {"artist", "album", "title", "genre", "comment", "initialKey", "grouping", "modifiedBy"}) {
            out += tag->valueForKey(key).stringValue().value_or("(null)") + ", ";
        }
        for (const char* key : {"year", "tempo", "energyLevel"}) {
            out += std::to_string(tag->valueForKey(key).integerValue()) + ", ";
        }
        return out + tag->zalKey().value_or(ZALTagKey()).key().value_or("(null)");
    };
    open({});
    EXPECT_EQ(shown(), "(null), (null), (null), (null), , (null), (null), (null), 0, 0, 0, (null)");
    EXPECT_FALSE(tag->hasID3v1Tag() || tag->hasID3v2Tag());
    open({}, id3);
    EXPECT_TRUE(tag->hasID3v2Tag());
    EXPECT_EQ(shown(),
              "artist 3, album 3, title 3, genre 3, comment 3, 3A, grouping 3, modified 3, 0, 128, 128, 3B")
        << "no year; the energy level is the tempo";
    open({"ARTIST=", "BPM=0", "ENERGYLEVEL=-1", "KEY=%%", "COMMENT=", "TITLE="}, id3);
    EXPECT_EQ(shown(),
              "artist 3, album 3, title 3, genre 3, comment 3, 3A, grouping 3, modified 3, 0, 128, 128, 3B");
    // Names in any case, several values joined.
    open({"artist=a", "Artist=b", "album=c", "title=d", "genre=e", "description=f", "comment=g",
          "date=2001-02-03", "bpm=99", "bpm=1", "initialkey=1A", "initialkey=2A", "EnergyLevel=7",
          "key=eyJrZXkiO", "key=iI1QiJ9"},
         id3);
    EXPECT_EQ(shown(), "a b, c, d, e, f, 1A 2A, grouping 3, modified 3, 2001, 99, 7, 5B");
    open({}, {}, id3v1Tag("v1 title", "v1 artist", "v1 comment"));
    EXPECT_TRUE(tag->hasID3v1Tag());
    EXPECT_EQ(tag->artist(), "v1 artist");
    EXPECT_EQ(tag->allComments()[0].comment(), "v1 comment");
}

TEST_F(FLAC, id3IsWrittenBesideTheComment) {
    open({"COMMENT=old", "DESCRIPTION=older"}, id3);
    for (const char* key :
         {"artist", "album", "title", "genre", "comment", "initialKey", "grouping", "modifiedBy"}) {
        tag->setValue("new", key);
    }
    for (const char* key : {"year", "tempo", "energyLevel"}) {
        tag->setValue(55, key);
    }
    tag->setZalKey(ZALTagKey::keyWithKey("5B", 1));
    EXPECT_TRUE(tag->requiresSaving()) << "the grouping is that of the ID3 tag";
    EXPECT_THAT(savedFields(), ElementsAre("ALBUM=new", "ARTIST=new", "BPM=55", "COMMENT=new", "DATE=55",
                                           "DESCRIPTION=new", "ENERGYLEVEL=55", "GENRE=new", "INITIALKEY=new",
                                           testing::StartsWith("KEY="), "TITLE=new"));
    EXPECT_TRUE(tag->requiresSaving());
    TagLib::FLAC::File file(path.c_str(), false);
    const TagLib::ID3v2::Tag& v2 = *file.ID3v2Tag();
    EXPECT_EQ(v2.artist(), "new");
    EXPECT_EQ(v2.comment(), "new");
    EXPECT_EQ(v2.frameList("TBPM").front()->toString(), "55");
    EXPECT_EQ(v2.frameList("TPE4").front()->toString(), "new");
    EXPECT_EQ(v2.genre(), "genre 3") << "genre and year go to the comment only";
    EXPECT_EQ(v2.year(), 1993u);
    EXPECT_EQ(tag->ZALTagID3::zalKey(), ZALTagKey::keyWithKey("5B", 1));

    for (const char* key :
         {"artist", "album", "title", "genre", "comment", "initialKey", "year", "tempo", "energyLevel"}) {
        tag->setValue(nullptr, key);
    }
    tag->setZalKey(std::nullopt);
    EXPECT_THAT(savedFields(), IsEmpty());
}

TEST_F(FLAC, withoutID3GroupingAndModifiedByDoNothing) {
    open({});
    tag->setGrouping("g");
    tag->setModifiedBy("m");
    EXPECT_EQ(tag->grouping(), std::nullopt);
    EXPECT_FALSE(tag->requiresSaving());
    tag->setArtist("a");
    tag->setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1, "x")});
    EXPECT_THAT(savedFields(),
                ElementsAre("ARTIST=a", testing::StartsWith("SERATO_MARKERS_V2=YXBwbGljYXRpb24v")));
    EXPECT_EQ(contentsOf(path)[0], 'f') << "no ID3 tag is added";
}

TEST_F(FLAC, presenceTestsAskForOtherNames) {
    const std::tuple<std::vector<std::string_view>, bool, bool> cases[] = {
        {{}, false, false},
        {{"title=x"}, true, true},
        {{"serato_markers_v2=x"}, false, true},
        {{"SERATO_BEATGRID=x", "SERATO_MARKERS_V2=y"}, false, true},
        {{"SERATO_BEATGRID=x", "XSERATO=y"}, true, true},
        {{"TRAKTOR4=x"}, true, false},
    };
    for (const auto& [fields, serato, traktor] : cases) {
        open(fields);
        tag->title();
        EXPECT_EQ(tag->hasSeratoMetadata(), serato);
        EXPECT_EQ(tag->hasTraktorMetadata(), traktor);
    }
}

TEST_F(FLAC, seratoCuePointsKeepTheRestOfTheRecord) {
    const auto encoded = [](const ZALData& payload) {
        const ZALData text =
            *dataByEncodingBase64(joined({bytesOf("application/octet-stream"), ZALData(18), payload}));
        return std::string(text.begin(), text.end());
    };
    const ZALData color = joined({bytesOf(std::string_view("COLOR\0", 6)), fromHex("00000004 00FFFFFF")});
    const ZALData inner = *dataByEncodingBase64(joined({{1, 1}, color}));
    const std::string marker = "serato_markers_v2=" + encoded(joined({{1, 1}, inner}));
    const std::string grid = "serato_beatgrid=" + encoded(fromHex("0100 00000001 3F000000 42F00000 37"));
    open({"TITLE=t", marker, grid}, id3);
    tag->setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1.26, "x")});
    EXPECT_EQ(tag->seratoCuePoints()[0].time(), 1.5);
    const auto decoded = dataByDecodingBase64(bytesOf(savedFields()[1].substr(18)));
    const auto text = dataByDecodingBase64(ZALData(decoded->begin() + 44, decoded->end()));
    EXPECT_THAT(toHex(*text), testing::HasSubstr(toHex(color)));
    EXPECT_EQ(tag->ZALTagID3::seratoMarker(), std::nullopt) << "not in the ID3 tag";
    tag->setSeratoCuePoints({});
    EXPECT_THAT(savedFields(), ElementsAre(testing::StartsWith("SERATO_BEATGRID="), "TITLE=t"));
}

TEST_F(FLAC, aBlockThatIsTooLargeIsNotSaved) {
    open({"TITLE=t"});
    const ZALData before = contentsOf(path);
    tag->setArtist(std::string(17 << 20, 'x'));
    const LogCapture log;
    EXPECT_FALSE(tag->save());
    EXPECT_THAT(log.lines(), ElementsAre(testing::HasSubstr("bytes is too large")));
    EXPECT_EQ(contentsOf(path), before);
    tag->setArtist("a");
    EXPECT_TRUE(tag->save());
    EXPECT_EQ(flacAudio(path),
              ZALData(before.end() - static_cast<std::ptrdiff_t>(flacAudio(path).size()), before.end()));
}

}  // namespace
