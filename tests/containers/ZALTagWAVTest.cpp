#include <zaltag/containers/ZALTagWAV.h>

#include "support/AudioFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/WavFixtures.h"

#include <zaltag/records/ZALTagRecordData.h>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Operation = FaultyFileSystem::Operation;

ZALTagVelvetCascade record(bool isProcessed) {
    return ZALTagVelvetCascade(nullptr, isProcessed);
}

ZALData recordChunk(bool isProcessed) {
    ZALData stored = *tagData(*record(isProcessed).JSONDict());
    stored.resize(stored.size() + stored.size() % 2);  // the size counts the pad byte
    return riffChunk("VCAS", stored);
}

ZALData withoutLast(ZALData bytes, std::size_t count) {
    bytes.resize(bytes.size() - count);
    return bytes;
}

class WAV : public testing::Test {
  protected:
    ~WAV() override { FaultyFileSystem::uninstall(); }

    std::shared_ptr<ZALTagWAV> opened(const ZALData& file, bool readOnly = false) {
        path_ = folder_.write("Take.WAV", file);
        return ZALTagWAV::tagAtPath(path_, readOnly);
    }
    ZALData content() const { return contentsOf(path_); }
    ZALData infoOfFile() const { return riffChunk("LIST", contentOf(content(), "LIST")); }
    std::shared_ptr<ZALTagWAV> again() const { return ZALTagWAV::tagAtPath(path_); }

    const TemporaryFolder folder_;
    std::string path_;
};

TEST_F(WAV, hasOnlyTheInheritedPictures) {
    const auto tag = opened(wavFile(
        {riffChunk("ID3 ", id3Tag({id3Frame("APIC", bytesOf(std::string("\0image/png\0\3\0bytes", 18)))}))}));
    EXPECT_FALSE(tag->supportsImages() || tag->hasImages() || tag->hasOriginalImage() ||
                 tag->hasCustomizedImage() || tag->replaceOriginalImage(nullptr));
    tag->setAllImages({});
    tag->restoreOriginalImage();
    tag->backupOriginalImageAndSetCustomImage(nullptr);
    EXPECT_EQ(tag->allImageData().size(), 1u);
    EXPECT_TRUE(tag->replacePrimaryImage(nullptr, false) && tag->allImageData().empty());
}

TEST_F(WAV, theInfoListIsTheSecondStoreOfSixFields) {
    auto tag = opened(wavFile({infoList({{"INAM", "title"},
                                         {"IART", "artist"},
                                         {"IPRD", "album"},
                                         {"IGNR", "genre"},
                                         {"ICMT", "comment"},
                                         {"ICRD", "1999-05-01"},
                                         {"ISFT", "kept"}}),
                               riffChunk("id3 ", id3Tag({id3Text("TIT2", "")}))}));
    for (const char* key : {"title", "artist", "album", "genre", "comment"}) {
        EXPECT_EQ(tag->valueForKey(key).stringValue(), key) << "is read where ID3 has none";
        tag->setValue("Ö", key);
    }
    EXPECT_EQ(tag->year(), 1999);
    tag->setArtist(std::nullopt);
    tag->setYear(2001);
    for (const char* key : {"infoTitle", "infoAlbum", "infoGenre"}) {
        tag->setValue(key, key);
    }
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(infoOfFile(), infoList({{"INAM", "infoTitle"},
                                      {"IPRD", "infoAlbum"},
                                      {"IGNR", "infoGenre"},
                                      {"ICMT", "Ö"},
                                      {"ICRD", "2001"},
                                      {"ISFT", "kept"}}));
    tag = again();
    EXPECT_TRUE(tag->title() == "Ö" && !tag->artist() && tag->genre() == "Ö" && tag->infoYear() == 2001);
    tag->setValue("a", "infoArtist");
    tag->setValue("c", "infoComment");
    tag->setValue(1987, "infoYear");
    EXPECT_TRUE(tag->artist() == "a" && tag->infoComment() == "c" && tag->infoYear() == 1987);
}

TEST_F(WAV, infoTextThatIsNotUTF8IsReadAsLatin1AndKept) {
    const auto tag = opened(wavFile({infoList(
        {{"INAM", "caf\xE9"}, {"IART", "é"}, {"IGNR", "fir\xE9"}, {"IGNR", "last"}, {"IENG", "\xDC"}})}));
    EXPECT_TRUE(tag->infoTitle() == "café" && tag->infoGenre() == "last");
    tag->setInfoGenre("set");
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(infoOfFile(),
              infoList({{"INAM", "caf\xE9"}, {"IART", "é"}, {"IGNR", "set"}, {"IENG", "\xDC"}}));
}

TEST_F(WAV, theRecordIsOneChunkAtTheEndHoweverOftenItIsSaved) {
    const ZALData tags = riffChunk("id3 ", id3Tag({id3Text("TIT2", "old")}));
    const auto tag =
        opened(wavFile({recordChunk(false), riffChunk("cue ", bytesOf("\0\0\0")), tags, recordChunk(true)}));
    EXPECT_EQ(tag->zalVelvetCascade(), record(true)) << "the last one counts";
    tag->setTitle("first");
    ASSERT_TRUE(tag->save());
    const std::string long_(100'000, 'x');
    tag->setComment(long_);
    tag->setZalVelvetCascade(record(false));
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(tag->save());
        EXPECT_EQ(idsOf(content()), "fmt  data cue  id3  LIST VCAS");
        EXPECT_EQ(contentOf(content(), "data"), contentOf(wavFile(), "data"));
        EXPECT_EQ(again()->comment(), long_) << "all that was written was there to be copied";
        EXPECT_EQ(again()->title(), "first");
        EXPECT_EQ(riffChunk("VCAS", contentOf(content(), "VCAS")), recordChunk(false));
    }
}

TEST_F(WAV, aNullRecordLeavesTheChunkAndAFrameIsNoRecord) {
    auto tag = opened(wavFile({recordChunk(true)}));
    tag->setZalVelvetCascade(std::nullopt);
    const auto other = record(false);
    tag->setZalTagPropertyDescription(&other, "VelvetCascade");
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(idsOf(content()), "fmt  data VCAS ID3 ");
    EXPECT_EQ(again()->zalVelvetCascade(), record(true));
    EXPECT_EQ(tag->zalVelvetCascade(), std::nullopt);
}

TEST_F(WAV, theRecordIsWrittenAlsoWhenTheTagsCannotBe) {
    const auto tag = opened(wavFile(), true);
    tag->setZalVelvetCascade(record(true));
    tag->setTempo(124);
    tag->setInfoTitle("t");
    ZALError error;
    EXPECT_FALSE(tag->save(&error));
    EXPECT_EQ(error.code, ZALErrorCode::saveFailed);
    EXPECT_EQ(content(), wavFile({recordChunk(true)}));
    EXPECT_TRUE(tag->tempo() == 124 && tag->title() == "t");
}

TEST_F(WAV, theRecordIsNotWrittenWhereThatWouldLoseAChunk) {
    const ZALData odd = riffChunk("data", ZALData(21, 7));
    const ZALData files[] = {
        riffForm({wavFormat(), riffChunk("_PMX", bytesOf("<x/>")), wavAudio()}),
        riffForm({wavFormat(), withoutLast(odd, 1), riffChunk("cue ", ZALData(4))}),
        joined({wavFile(), bytesOf("behind the form")}),
    };
    for (const ZALData& file : files) {
        const auto tag = opened(file);
        tag->setZalVelvetCascade(record(true));
        tag->setTitle("t");
        const LogCapture log;
        EXPECT_FALSE(tag->save());
        EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("': its processing record: ")));
        EXPECT_TRUE(again()->title() == "t" && again()->zalVelvetCascade() == std::nullopt);
        EXPECT_TRUE(std::equal(file.begin() + 8, file.begin() + 60, content().begin() + 8));
    }
}

TEST_F(WAV, whatAnotherProgramWroteIsLeftAlone) {
    const ZALData others = wavFile({riffChunk("junk", bytesOf("other"))});
    for (const bool savedBefore : {false, true}) {
        const auto tag = opened(wavFile());
        tag->setZalVelvetCascade(record(false));
        EXPECT_TRUE(!savedBefore || tag->save());
        tag->setZalVelvetCascade(record(true));
        tag->setTitle("t");
        opened(others);
        ZALError error;
        EXPECT_FALSE(tag->save(&error));
        EXPECT_EQ(content(), others);
        EXPECT_THAT(error.localizedDescription,
                    testing::ContainsRegex("another program.*; its processing record: "));
    }
}

TEST_F(WAV, theNewFileStandsBesideTheRealOneAndKeepsItsPermissions) {
    opened(wavFile());
    std::filesystem::permissions(path_, std::filesystem::perms{0640});
    const std::string victim = folder_.write("victim", bytesOf("mine"));
    std::filesystem::create_symlink(victim, path_ + "_");
    const auto link = folder_.path() / "sub" / "link.wav";
    std::filesystem::create_directory(link.parent_path());
    std::filesystem::create_symlink("../Take.WAV", link);
    EXPECT_EQ(ZALTagWAV::writePNTag(record(true), link.string()), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(content(), wavFile({recordChunk(true)}));
    EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms{0640});
    EXPECT_EQ(contentsOf(victim), bytesOf("mine"));
    EXPECT_FALSE(std::filesystem::exists(path_ + "_"));
}

TEST_F(WAV, writingTheRecordTellsWhatFailed) {
    opened(wavFile());
    const auto files = FaultyFileSystem::install();
    const auto run = [&](const std::string& expected) {
        const LogCapture log;
        const auto error = ZALTagWAV::writePNTag(record(true), path_);
        EXPECT_EQ(error.value_or(ZALError()).localizedDescription, expected);
        ASSERT_FALSE(log.lines().empty());
        EXPECT_TRUE(expected.empty() || log.lines().back() == expected);
        EXPECT_FALSE(std::filesystem::exists(path_ + "_"));
    };
    files->failAll(Operation::rename);
    run("could not move file from '" + path_ + "_' to '" + path_ + "' (Input/output error)");
    files->failAll(Operation::rename, false);
    files->before(Operation::sync, 1, [this] { opened(wavFile({riffChunk("junk", {})})); });
    run("could not remove input file '" + path_ + "_' (another program changed it)");
    files->failAll(Operation::create);
    run("could not remove temporary file '" + path_ + "_' (No such file or directory)");
    files->failAll(Operation::create, false);
    files->failAll(Operation::write);
    run("");
    EXPECT_EQ(content(), wavFile({riffChunk("junk", {})}));
    path_ += ".missing";
    run("");
    EXPECT_EQ(ZALTagWAV::writePNTag(std::nullopt, path_), std::nullopt);
}

TEST_F(WAV, aRecordThatHasNothingToStoreLeavesAnEmptyChunk) {
    opened(wavFile({recordChunk(true)}));
    const LogCapture log;
    const auto name = std::make_shared<const std::string>("\xFF");
    ZALTagWAV::writePNTag(ZALTagVelvetCascade(name, true), path_);
    EXPECT_EQ(content(), wavFile({riffChunk("VCAS", {})}));
    EXPECT_EQ(again()->zalVelvetCascade(), std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Invalid generated json object"))) << "reading is silent";
}

}  // namespace
