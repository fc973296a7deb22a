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

#include <algorithm>
#include <fstream>

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
    bool holds(std::string_view text) const {
        const ZALData bytes = result();
        return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
    }

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
    // Every one of these destinations would come out of a save changed: TagLib puts padding behind a tag.
    const ZALData own = id3Tag({id3Text("TIT2", "own")}), none = id3Tag({}, 10);
    const ZALData mp3 = joined({own, mpegFrames()});
    const struct {
        Function copy;
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

TEST_F(CopyTag, framesThatAreCopied) {
    const auto object = [](std::string_view description) {
        return id3Frame("GEOB", joined({{0}, bytesOf("a/b"), {0, 0}, bytesOf(description), {0, 1}}));
    };
    constexpr std::uint16_t discarded = 0x4000, encrypted = 0x0004;
    const struct {
        ZALData frame;
        const char* text;  // what of the result is looked at
        bool isThere;
    } cases[] = {
        {id3Comment("eng", "iTunNORM", "0"), "iTunNORM", false},
        {id3Comment("eng", "iTunNORM2", "0"), "iTunNORM2", true},
        {id3Comment("eng", "itunNORM", "0"), "itunNORM", true},
        {object("Serato Autotags"), "Serato Autotags", false},
        {object("Serato Autotags "), "Serato Autotags ", true},
        {object("serato Autotags"), "serato Autotags", true},
        {id3Comment("eng", "Serato Autotags", "0"), "Serato Autotags", true},
        {id3Text("TCON", "(17)"), "Rock", true},
        {id3Text("TCON", "(17)"), "(17)", false},
        {id3Text("TCON", "(17)"), "House", false},
        {id3Frame("PRIV", bytesOf(std::string_view("me\0data", 7)), discarded), "PRIV", true},
        {id3Frame("POPM", bytesOf(std::string_view("me\0\7", 4)), discarded), "POPM", true},
        {id3Frame("TCON", bytesOf("\1secret"), encrypted), "House", true},
        {id3Frame("TPE2", bytesOf("\1secret"), encrypted), "TPE2", false},
    };
    const ZALData destination = joined({id3Tag({id3Text("TCON", "House")}), mpegFrames()});
    for (const auto& one : cases) {
        EXPECT_TRUE(copy(ZALCopyTagID3, joined({id3Tag({id3Text("TIT2", "x"), one.frame}), mpegFrames()}),
                         destination));
        EXPECT_EQ(holds(one.text), one.isThere) << &one - cases;
    }
    const std::string line =
        "BOOL ZALCopyTagID3(NSString *__strong, NSString *__strong): 1 encrypted frames were "
        "not copied from '" +
        (folder_.path() / "source.mp3").string() + "'";
    EXPECT_THAT(log_.lines(), ElementsAre(line, line));
}

TEST_F(CopyTag, ID3v2TagsAreOfVersion4) {
    ZALData old = id3Tag({id3Text("TIT2", "x")});
    old[3] = 3;
    const ZALData mp3 = joined({old, mpegFrames()}), flac = joined({old, flacFile()});
    const ZALData wav = wavFile({riffChunk("ID3 ", old)}), aiff = aiffFile({iffChunk("ID3 ", old)});
    EXPECT_TRUE(copy(ZALCopyTagID3, mp3, mp3) && holds("ID3\4") && !holds("ID3\3"));
    EXPECT_TRUE(copy(ZALCopyTagWAV, wav, wav) && holds("ID3\4") && !holds("ID3\3"));
    EXPECT_TRUE(copy(ZALCopyTagAIFF, aiff, aiff) && holds("ID3\4") && !holds("ID3\3"));
    EXPECT_TRUE(copy(ZALCopyTagFLAC, flac, flac) && holds("ID3\4") && !holds("ID3\3"));
    // A tempo that is negative to TagLib is none.
    const ZALData mp4 =
        mp4File({mp4Tag({mp4Item("\251nam", {bytesOf("x")}), mp4Item("tmpo", {{0x9C, 0x40}}, 21)})});
    EXPECT_TRUE(copy(ZALCopyTagMP42ID3, mp4, mp3) && holds("ID3\4") && !holds("ID3\3") && !holds("TBPM"));
}

// An ID3v1 tag alone leaves the destination with one alone, which no field of its own has slipped into.
TEST_F(CopyTag, kindsOfTagsAreThoseOfTheSource) {
    const ZALData source = joined({mpegFrames(), id3v1Tag("V1", "", "", 17)});
    EXPECT_TRUE(copy(ZALCopyTagID3, source, joined({id3Tag({id3Text("TPE1", "own")}), mpegFrames()})));
    EXPECT_EQ(result(), joined({mpegFrames(), id3v1Of(destination_)}));
    EXPECT_EQ(id3v1Of(destination_), id3v1Tag("V1", "", "", 17));
    EXPECT_TRUE(copy(ZALCopyTagID3, source, joined({mpegFrames(), id3v1Tag("own", "own", "own", 1)})));
    EXPECT_EQ(id3v1Of(destination_), id3v1Tag("V1", "", "", 17)) << "every field is overwritten";
    const ZALData v1 = id3v1Tag("own", "own", "own", 1);
    const ZALData mp4 = mp4File({mp4Tag({mp4Item("\251nam", {bytesOf("x")})})});
    EXPECT_TRUE(copy(ZALCopyTagMP42ID3, mp4, joined({mpegFrames(), v1})));
    EXPECT_EQ(id3v1Of(destination_), v1);
}

// TagLib would fill a new comment from the ID3 tags.
TEST_F(CopyTag, aNewXiphCommentHasTheFieldsOfTheSource) {
    const ZALData destination =
        joined({id3Tag({id3Text("TALB", "own")}), flacFile(), id3v1Tag("", "own", "")});
    const std::pair<ZALData, std::string> cases[] = {
        {flacFile({flacComment({"TITLE=x", "TITLE=y"})}), "TITLE - 'x' + 'y'\n"},
        {joined({id3Tag({id3Text("TIT2", "x")}), flacFile()}), ""}};
    for (const auto& [source, fields] : cases) {
        EXPECT_TRUE(copy(ZALCopyTagFLAC, source, destination));
        const std::string report = ZALTagDescription(folder_.write("result.flac", result()));
        EXPECT_THAT(report, testing::StartsWith("Xiph Tag\n--------\n" + fields + "SUMMARY"));
        EXPECT_EQ(flacAudio(destination_), flacAudio(folder_.write("before.flac", destination)));
    }
}

// A tag of 256 MiB less a few bytes, of which the file system stores none; more would not fit its length.
TEST_F(CopyTag, aTagThatWouldBeTooLongIsRefused) {
    const std::string path = folder_.path() / "destination.mp3";
    constexpr std::uintmax_t headerSize = 10, frameSize = 1 << 26, tagSize = headerSize + 4 * frameSize - 4;
    {
        std::ofstream out(path, std::ios::binary);
        out.write("ID3\4\0\0\x7F\x7F\x7F\x7C", 10);
        for (std::uintmax_t i = 0; i < 4; ++i) {
            out.seekp(static_cast<std::streamoff>(headerSize + i * (frameSize - 1)));
            out.write("PRIV\x1F\x7F\x7F\x75\0\0", 10);
        }
        out.seekp(tagSize);
        const ZALData audio = mpegFrames();
        out.write(reinterpret_cast<const char*>(audio.data()), static_cast<std::streamsize>(audio.size()));
    }
    const auto size = std::filesystem::file_size(path);
    const auto time = std::filesystem::last_write_time(path);
    const std::string title(5000, 'x');
    const std::string mp3 = folder_.write("s.mp3", joined({id3Tag({id3Text("TIT2", title)}), mpegFrames()}));
    const std::string m4a = folder_.write("s.m4a", mp4File({mp4Tag({mp4Item("\251nam", {bytesOf(title)})})}));
    EXPECT_FALSE(ZALCopyTagID3(mp3, path) || ZALCopyTagMP42ID3(m4a, path));
    const std::string line = "could not save '" + path + "': its ID3v2 tag would be too large";
    EXPECT_THAT(log_.lines(), ElementsAre(line, line));
    EXPECT_EQ(std::filesystem::file_size(path), size);
    EXPECT_EQ(std::filesystem::last_write_time(path), time);
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
    EXPECT_THAT(log_.lines().back(), testing::EndsWith("it could not be opened again"));
}

TEST_F(CopyTag, listsOfAWAV) {
    const ZALData labels = riffChunk("LIST", joined({bytesOf("adtl"), riffChunk("labl", ZALData(6))}));
    const ZALData silence = riffChunk("LIST", joined({bytesOf("wavl"), riffChunk("slnt", ZALData(4))}));
    const ZALData info = infoList({{"IART", "caf\xE9"}}), own = infoList({{"INAM", "own"}, {"ICMT", "own"}});
    const ZALData tag = riffChunk("ID3 ", id3Tag({id3Text("TIT2", "x")}));
    const std::tuple<ZALData, ZALData, ZALData> cases[] = {
        {wavFile({info, labels}), wavFile({own}), info},
        {wavFile({labels, info}), wavFile({own, silence}), labels},
        {wavFile({tag}), wavFile({own, silence}), silence}};
    for (const auto& [source, destination, list] : cases) {
        EXPECT_TRUE(copy(ZALCopyTagWAV, source, destination));
        EXPECT_EQ(riffChunk("LIST", contentOf(result(), "LIST")), list);
        EXPECT_EQ(idsOf(result()), source == wavFile({tag}) ? "fmt  data LIST ID3 " : "fmt  data LIST");
    }
}

}  // namespace
