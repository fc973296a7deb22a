// A FLAC file's Xiph comment beside its ID3 tags: which is read, which is written; and files that TagLib must
// not see or save.

#include <zaltag/base/ZALJSON.h>
#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/serato/ZALBase64.h>
#include <zaltag/tag/ZALTagComment.h>

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
using testing::StartsWith;

constexpr const char* keys[] = {"artist",   "album",      "title", "genre", "comment",    "initialKey",
                                "grouping", "modifiedBy", "year",  "tempo", "energyLevel"};

// Every field that the ID3 tag of a FLAC file is asked for.
ZALData id3() {
    const ZALData energy = id3Frame("TXXX", bytesOf(std::string_view("\0EnergyLevel\0003", 14)));
    const ZALData key = id3Object("Key", "x/y", *dataByEncodingBase64(bytesOf(R"({"key":"3B"})")));
    return id3Tag({id3Text("TPE1", "artist 3"), id3Text("TALB", "album 3"), id3Text("TIT2", "title 3"),
                   id3Text("TCON", "genre 3"), id3Text("TDRC", "1993"), id3Comment("eng", "", "comment 3"),
                   id3Text("TBPM", "128"), id3Text("TKEY", "3A"), energy, id3Text("TIT1", "grouping 3"),
                   id3Text("TPE4", "modified 3"), key});
}

class FLAC : public testing::Test {
  protected:
    void open(const std::vector<std::string>& fields, const ZALData& before = {},
              const ZALData& behind = {}) {
        path = folder_.write("song.flac", joined({before, flacFile({flacComment(fields)}), behind}));
        tag = ZALTagFLAC::tagAtPath(path);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    // The fields that a save leaves, "NAME=value", by name.
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
    // All fields of the object.
    std::string shown() const {
        std::string out;
        for (const char* key : keys) {
            out += ZALJSON::description(tag->valueForKey(key)) + ", ";
        }
        return out + tag->zalKey().value_or(ZALTagKey()).key().value_or("(null)");
    }

    TemporaryFolder folder_;
    std::string path;
    std::shared_ptr<ZALTagFLAC> tag;
};

TEST_F(FLAC, id3IsReadWhereTheCommentHasNothing) {
    open({});
    EXPECT_EQ(shown(), R"(null, null, null, null, "", null, null, null, 0, 0, 0, (null))");
    EXPECT_FALSE(tag->hasID3v1Tag() || tag->hasID3v2Tag());
    for (const auto& fields :
         {std::vector<std::string>{}, {"ARTIST=", "BPM=0", "ENERGYLEVEL=-1", "KEY=%%"}}) {
        open(fields, id3());
        EXPECT_TRUE(tag->hasID3v2Tag());
        EXPECT_EQ(
            shown(),
            R"("artist 3", "album 3", "title 3", "genre 3", "comment 3", "3A", "grouping 3", "modified 3", 0, 128, 128, 3B)")
            << "no year; the energy level is the tempo";
    }
    // Names in any case, several values joined.
    open({"artist=a", "Artist=b", "album=c", "title=d", "genre=e", "description=f", "comment=g",
          "date=2001-02", "bpm=99", "bpm=1", "initialkey=1A", "initialkey=2A", "EnergyLevel=7",
          "key=eyJrZXkiO", "key=iI1QiJ9"},
         id3());
    EXPECT_EQ(shown(), R"("a b", "c", "d", "e", "f", "1A 2A", "grouping 3", "modified 3", 2001, 99, 7, 5B)");
    open({}, {}, id3v1Tag("v1 title", "v1 artist", "v1 comment"));
    EXPECT_TRUE(tag->hasID3v1Tag());
    EXPECT_EQ(tag->artist(), "v1 artist");
    EXPECT_EQ(tag->allComments()[0].comment(), "v1 comment");
}

TEST_F(FLAC, id3IsWrittenBesideTheComment) {
    open({"COMMENT=old", "DESCRIPTION=older"}, id3());
    for (const char* key : keys) {
        tag->setValue("55", key);
    }
    tag->setZalKey(ZALTagKey("5B", 1));
    EXPECT_THAT(savedFields(),
                ElementsAre("ALBUM=55", "ARTIST=55", "BPM=55", "COMMENT=55", "DATE=55", "DESCRIPTION=55",
                            "ENERGYLEVEL=55", "GENRE=55", "INITIALKEY=55", StartsWith("KEY="), "TITLE=55"));
    EXPECT_TRUE(tag->requiresSaving()) << "a save does not clear the mark of the grouping";
    TagLib::FLAC::File file(path.c_str(), false);
    const TagLib::ID3v2::Tag& v2 = *file.ID3v2Tag();
    EXPECT_EQ(v2.artist() + v2.comment() + v2.frameList("TBPM").front()->toString(), "555555");
    EXPECT_EQ(v2.frameList("TPE4").front()->toString(), "55");
    EXPECT_TRUE(v2.genre() == "genre 3" && v2.year() == 1993) << "these go to the comment only";
    EXPECT_EQ(tag->ZALTagID3::zalKey(), ZALTagKey("5B", 1));
    for (const char* key : keys) {
        tag->setValue(nullptr, key);
    }
    tag->setZalKey(std::nullopt);
    EXPECT_THAT(savedFields(), IsEmpty());
}

TEST_F(FLAC, withoutID3NothingOfItIsAdded) {
    open({});
    tag->setGrouping("g");
    tag->setModifiedBy("m");
    EXPECT_FALSE(tag->grouping() || tag->requiresSaving());
    tag->setArtist("a");
    tag->setSeratoCuePoints({ZALTagCuePoint(1, "x")});
    EXPECT_THAT(savedFields(), ElementsAre("ARTIST=a", StartsWith("SERATO_MARKERS_V2=YXBwbGljYXRpb24v")));
    EXPECT_EQ(contentsOf(path)[0], 'f');
}

TEST_F(FLAC, presenceTestsAskForOtherNames) {
    const std::tuple<std::vector<std::string>, bool, bool> cases[] = {
        {{}, false, false},
        {{"title=x"}, true, true},
        {{"SERATO_BEATGRID=x", "serato_markers_v2=y"}, false, true},
        {{"SERATO_BEATGRID=x", "XSERATO=y"}, true, true},
        {{"TRAKTOR4=x"}, true, false},
    };
    for (const auto& [fields, serato, traktor] : cases) {
        open(fields);
        tag->title();
        EXPECT_TRUE(tag->hasSeratoMetadata() == serato && tag->hasTraktorMetadata() == traktor);
    }
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
    EXPECT_THAT(savedFields(), ElementsAre("ARTIST=a", "TITLE=t"));
}

}  // namespace
