// What others read in copied files is tested through the program, and that a copy is whole or not made with
// the saves of every format.

#include <zaltag/tools/ZALCopyTag.h>

#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Formats.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/WavFixtures.h"

#include <zaltag/tools/ZALTagDescription.h>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Function = bool (*)(const ZALNullableString& source, const ZALNullableString& destination);

struct Row {
    const char* name;
    Function copy;
    const char* from;
    const char* to;
};

constexpr Row rows[] = {
    {"ID3", ZALCopyTagID3, "mp3", "mp3"},         {"MP4", ZALCopyTagMP4, "m4a", "m4a"},
    {"MP42ID3", ZALCopyTagMP42ID3, "m4a", "mp3"}, {"WAV", ZALCopyTagWAV, "wav", "wav"},
    {"AIFF", ZALCopyTagAIFF, "aiff", "aiff"},     {"FLAC", ZALCopyTagFLAC, "flac", "flac"},
};

ZALData plainFile(std::string_view extension) {
    for (const Format& format : formats()) {
        if (format.extension == extension) return format.file();
    }
    throw std::runtime_error("no such format");
}

class CopyTag : public testing::Test {
  protected:
    bool copy(Function function, const ZALData& source, const ZALData& destination) {
        destination_ = folder_.write("destination.mp3", destination);
        return function(folder_.write("source.mp3", source), destination_);
    }
    ZALData result() const { return contentsOf(destination_); }

    const TemporaryFolder folder_;
    std::string destination_;
    const LogCapture log_;
};

TEST_F(CopyTag, whatIsNoFileOfItsTypeIsSaid) {
    for (const Row& row : rows) {
        const std::string function =
            std::string("BOOL ZALCopyTag") + row.name + "(NSString *__strong, NSString *__strong): ";
        const ZALData junk = bytesOf("junk"), from = plainFile(row.from), to = plainFile(row.to);
        const std::size_t lines = log_.lines().size();
        EXPECT_FALSE(row.copy(std::nullopt, "a")) << row.name;
        EXPECT_FALSE(row.copy("a", std::nullopt)) << row.name;
        EXPECT_EQ(log_.lines().size(), lines);
        EXPECT_FALSE(copy(row.copy, junk, to)) << row.name;
        EXPECT_EQ(log_.lines().back(),
                  function + "source file not valid '" + (folder_.path() / "source.mp3").string() + "'");
        EXPECT_EQ(result(), to);
        EXPECT_FALSE(copy(row.copy, from, junk)) << row.name;
        EXPECT_EQ(log_.lines().back(), function + "destination file not valid '" + destination_ + "'");
        EXPECT_EQ(result(), junk);
    }
}

TEST_F(CopyTag, aFileIsNotCopiedIntoItself) {
    for (const Row& row : rows) {
        if (std::string_view(row.from) != row.to) continue;
        const std::string file = folder_.write("file", plainFile(row.from));
        const std::string soft = folder_.path() / "soft", hard = folder_.path() / "hard";
        std::filesystem::create_symlink(file, soft);
        std::filesystem::create_hard_link(file, hard);
        for (const std::string& other : {file, soft, hard}) {
            EXPECT_FALSE(row.copy(file, other));
            EXPECT_THAT(log_.lines().back(),
                        testing::HasSubstr("source and destination are the same file '" + other));
        }
        EXPECT_EQ(contentsOf(file), plainFile(row.from));
        std::filesystem::remove(soft);
        std::filesystem::remove(hard);
    }
}

TEST_F(CopyTag, whereThereIsNothingToCopyNothingIsWritten) {
    // Every one of these destinations would come out of a save changed.
    const ZALData mp3 = joined({id3Tag({id3Text("TIT2", "own")}, 7), mpegFrames()});
    for (const ZALData& source :
         {mpegFrames(), joined({id3Tag({}, 10), mpegFrames(), id3v1Tag("", "", "")})}) {
        EXPECT_TRUE(copy(ZALCopyTagID3, source, mp3));
        EXPECT_EQ(result(), mp3);
    }
    const ZALData aiff = aiffFile({iffChunk("ID3 ", id3Tag({id3Text("TIT2", "own")}, 7))});
    EXPECT_TRUE(copy(ZALCopyTagAIFF, aiffFile({iffChunk("ID3 ", id3Tag({}, 10))}), aiff));
    EXPECT_EQ(result(), aiff);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

// An ID3v1 tag alone leaves the destination with one alone, which no field of its own has slipped into.
TEST_F(CopyTag, kindsOfTagsAreThoseOfTheSource) {
    const ZALData source = joined({mpegFrames(), id3v1Tag("V1", "", "", 17)});
    EXPECT_TRUE(copy(ZALCopyTagID3, source, joined({id3Tag({id3Text("TPE1", "own")}), mpegFrames()})));
    EXPECT_EQ(result(), joined({mpegFrames(), id3v1Of(destination_)}));
    EXPECT_EQ(id3v1Of(destination_), id3v1Tag("V1", "", "", 17));
}

// A tag that is written could be one that is not opened any more.
TEST_F(CopyTag, tagsThatWouldBeTooMuchTogetherAreRefused) {
    struct Case {
        ZALData frame;
        int count;
    };
    const ZALData chapter = joined({{'a', 0}, ZALData(16)});
    const Case cases[] = {{id3Frame("PCNT", ZALData(4)), 6000}, {id3Frame("CHAP", chapter), 600}};
    for (const Case& one : cases) {
        ZALData frames;
        for (int i = 0; i < one.count; ++i) {
            frames.insert(frames.end(), one.frame.begin(), one.frame.end());
        }
        const ZALData file = joined({id3Tag({frames}), mpegFrames()});
        EXPECT_FALSE(copy(ZALCopyTagID3, file, file));
        EXPECT_EQ(result(), file);
        EXPECT_THAT(log_.lines().back(), testing::EndsWith("it could not be opened again"));
    }
}

TEST_F(CopyTag, listsOfAWAV) {
    const ZALData labels = riffChunk("LIST", joined({bytesOf("adtl"), riffChunk("labl", ZALData(6))}));
    const ZALData silence = riffChunk("LIST", joined({bytesOf("wavl"), riffChunk("slnt", ZALData(4))}));
    const ZALData info = infoList({{"IART", "caf\xE9"}}), own = infoList({{"INAM", "own"}, {"ICMT", "own"}});
    struct Case {
        ZALData source;
        ZALData destination;
        ZALData list;
    };
    const Case cases[] = {{wavFile({info, labels}), wavFile({own}), info},
                          {wavFile({labels, info}), wavFile({own, silence}), labels},
                          {wavFile(), wavFile({own, silence}), silence}};
    for (const Case& one : cases) {
        EXPECT_TRUE(copy(ZALCopyTagWAV, one.source, one.destination));
        EXPECT_EQ(riffChunk("LIST", contentOf(result(), "LIST")), one.list);
        EXPECT_EQ(idsOf(result()), "fmt  data LIST");
    }
}

}  // namespace
