// What others read in copied files is tested through the program, and that a copy is whole or not made with
// the saves of every format.

#include <zaltag/tools/ZALCopyTag.h>

#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Formats.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/WavFixtures.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using testing::IsEmpty;

class CopyTag : public testing::Test {
  protected:
    bool copy(ZALCopyTagFunction function, const ZALData& source, const ZALData& destination) {
        destination_ = folder_.write("destination.mp3", destination);
        return function(folder_.write("source.mp3", source), destination_, nullptr);
    }
    ZALData result() const { return contentsOf(destination_); }
    bool holds(std::string_view text) const {
        const ZALData bytes = result();
        return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
    }

    const TemporaryFolder folder_;
    std::string destination_;
    const LogCapture log_;
};

TEST_F(CopyTag, whereThereIsNothingToCopyNothingIsWritten) {
    // Every one of these destinations would come out of a save changed: TagLib puts padding behind a tag.
    const ZALData own = id3Tag({id3Text("TIT2", "own")}), none = id3Tag({}, 10);
    const ZALData mp3 = joined({own, mpegFrames()});
    const struct {
        ZALCopyTagFunction copy;
        ZALData source;
        ZALData destination;
    } cases[] = {
        {ZALCopyTagID3, mpegFrames(), mp3},
        {ZALCopyTagID3, joined({none, mpegFrames(), id3v1Tag("", "", "")}), mp3},
        {ZALCopyTagMP4, mp4File(), mp4File({mp4Tag({mp4Item("\251nam", {bytesOf("own")})})})},
        {ZALCopyTagMP42ID3, mp4File({mp4Tag({})}), mp3},
        {ZALCopyTagWAV, wavFile({riffChunk("ID3 ", none)}),
         wavFile({infoList({{"INAM", "own"}}), riffChunk("ID3 ", own)})},
        {ZALCopyTagAIFF, aiffFile({iffChunk("ID3 ", none)}), aiffFile({iffChunk("ID3 ", own)})},
        {ZALCopyTagFLAC, joined({none, flacFile({flacComment({})}), id3v1Tag("", "", "")}), flacFile()},
    };
    for (const auto& one : cases) {
        EXPECT_TRUE(copy(one.copy, one.source, one.destination));
        EXPECT_EQ(result(), one.destination) << &one - cases;
    }
    EXPECT_THAT(log_.lines(), IsEmpty());
}

// What others see of copied frames is tested through the program.
TEST_F(CopyTag, framesWithFlagsAndOfAlmostTheSameName) {
    constexpr std::uint16_t discarded = 0x4000, encrypted = 0x0004;
    const struct {
        ZALData frame;
        const char* text;  // what of the result is looked at
        bool isThere;
    } cases[] = {
        {id3Comment("eng", "iTunNORM2", "0"), "iTunNORM2", true},
        {id3Comment("eng", "itunNORM", "0"), "itunNORM", true},
        {id3Object("Serato Autotags ", "a/b", {1}), "Serato Autotags ", true},
        {id3Comment("eng", "Serato Autotags", "0"), "Serato Autotags", true},
        {id3Frame("PRIV", bytesOf(std::string_view("me\0data", 7)), discarded), "PRIV", true},
        {id3Frame("TCON", bytesOf("\1secret"), encrypted), "House", true},
        {id3Frame("TPE2", bytesOf("\1secret"), encrypted), "TPE2", false},
    };
    const ZALData destination = joined({id3Tag({id3Text("TCON", "House")}), mpegFrames()});
    for (const auto& one : cases) {
        EXPECT_TRUE(copy(ZALCopyTagID3, joined({id3Tag({id3Text("TIT2", "x"), one.frame}), mpegFrames()}),
                         destination));
        EXPECT_EQ(holds(one.text), one.isThere) << &one - cases;
    }
    EXPECT_THAT(log_.lines(), testing::Each(testing::HasSubstr("1 encrypted frames were not copied from '")));
    EXPECT_EQ(log_.lines().size(), 2u);
}

// An ID3v1 tag alone sets its fields; no tag of the destination goes, and no field of it slips into another.
TEST_F(CopyTag, kindsOfTagsStay) {
    const ZALData source = joined({mpegFrames(), id3v1Tag("V1", "", "", 17)});
    const ZALData own = joined({id3Tag({id3Text("TPE1", "own")}), mpegFrames()});
    EXPECT_TRUE(copy(ZALCopyTagID3, source, own));
    EXPECT_EQ(result(), joined({own, id3v1Tag("V1", "", "", 17)}));
    EXPECT_TRUE(copy(ZALCopyTagID3, source, joined({mpegFrames(), id3v1Tag("own", "own", "own", 1)})));
    EXPECT_EQ(id3v1Of(destination_), id3v1Tag("V1", "", "", 17)) << "every field is overwritten";
    const ZALData mp4 = mp4File({mp4Tag({mp4Item("\251nam", {bytesOf("x")})})});
    EXPECT_TRUE(copy(ZALCopyTagMP42ID3, mp4, joined({mpegFrames(), id3v1Tag("own", "own", "own", 1)})));
    EXPECT_EQ(id3v1Of(destination_), id3v1Tag("x", "", "")) << "it has the new texts";
}

// A tag that is written could be one that is not opened any more.
TEST_F(CopyTag, tagsThatWouldBeTooMuchTogetherAreRefused) {
    const ZALData frame = id3Frame("PCNT", ZALData(4));
    ZALData frames;
    for (int i = 0; i < 6000; ++i) {
        frames.insert(frames.end(), frame.begin(), frame.end());
    }
    const ZALData file = joined({id3Tag({frames}), mpegFrames()});
    EXPECT_FALSE(copy(ZALCopyTagID3, file, file));
    EXPECT_EQ(result(), file);
    EXPECT_THAT(log_.lines().back(), testing::EndsWith("its ID3v2 tag would hold too many frames"));
}

TEST_F(CopyTag, listsOfAWAV) {
    const ZALData labels = riffChunk("LIST", joined({bytesOf("adtl"), riffChunk("labl", ZALData(6))}));
    const ZALData silence = riffChunk("LIST", joined({bytesOf("wavl"), riffChunk("slnt", ZALData(4))}));
    const ZALData info = infoList({{"IART", "caf\xE9"}}), own = infoList({{"INAM", "own"}, {"ICMT", "own"}});
    const ZALData tag = riffChunk("ID3 ", id3Tag({id3Text("TIT2", "x")}));
    // Only the first one is copied, and takes the place of one of its type.
    const std::tuple<ZALData, ZALData, ZALData> cases[] = {
        {wavFile({info, labels}), wavFile({own}), wavFile({info})},
        {wavFile({labels, info}), wavFile({own, silence}), wavFile({own, silence, labels})},
        {wavFile({info}), wavFile({silence, own}), wavFile({silence, info})}};
    for (const auto& [source, destination, expected] : cases) {
        EXPECT_TRUE(copy(ZALCopyTagWAV, source, destination));
        EXPECT_EQ(result(), expected);
    }
    EXPECT_TRUE(copy(ZALCopyTagWAV, wavFile({tag}), wavFile({own, silence})));
    EXPECT_EQ(idsOf(result()), "fmt  data LIST LIST ID3 ");
}

}  // namespace
