#include <zaltag/id3/ZALTagID3.h>

#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <attachedpictureframe.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>

#include <algorithm>

namespace {

const TemporaryFolder& folder() {
    static const TemporaryFolder one;
    return one;
}

// A file under a fresh name: tag, audio, ID3v1 tag.
std::string mp3(const ZALData& tag, const ZALData& v1 = {}) {
    static int count = 0;
    return folder().write("song " + std::to_string(++count) + ".mp3", joined({tag, mpegFrames(), v1}));
}

std::string textOf(const std::string& path) {
    const ZALData bytes = contentsOf(path);
    return {bytes.begin(), bytes.end()};
}

std::shared_ptr<ZALTagID3> opened(const std::string& path) {
    auto tag = ZALTagID3::tagAtPath(path);
    if (tag == nullptr) throw std::runtime_error("does not open: " + path);
    return tag;
}

TEST(Fields, fallBackToID3v1WhereID3v2IsEmpty) {
    ZALData v1 = id3v1Tag("X", "A", "c");
    std::copy_n("1987", 4, v1.begin() + 93);
    const auto tag = opened(mp3(id3Tag({id3Text("TIT2", ""), id3Text("TALB", "")}), v1));
    EXPECT_TRUE(tag->title() == "X" && tag->artist() == "A" && tag->comment() == "c");
    EXPECT_EQ(tag->album(), "") << "present and empty";
    EXPECT_TRUE(tag->year() == 1987 && tag->tempo() == 0);
    EXPECT_FALSE(tag->genre() || tag->initialKey() || tag->modifiedBy() || tag->grouping());
}

TEST(Fields, numbersAtTheirEdges) {
    const std::string path = mp3(id3Tag({id3Text("TDRC", "1987-05-03"), id3Text("TBPM", " 128.7")}));
    const auto tag = opened(path);
    EXPECT_TRUE(tag->year() == 1987 && tag->tempo() == 128);
    tag->setYear(-5);
    EXPECT_EQ(tag->year(), 0);
    tag->setTempo(0);
    tag->setEnergyLevel(3);
    tag->setEnergyLevel(-1);
    EXPECT_EQ(tag->energyLevel(), 0);
    ASSERT_TRUE(tag->save());
    const std::string text = textOf(path);
    EXPECT_NE(text.find(std::string("TBPM\0\0\0\2\0\0\0\0", 11)), std::string::npos)
        << "0 is written as text";
    EXPECT_EQ(text.find("EnergyLevel"), std::string::npos);
    EXPECT_EQ(text.find("TDRC"), std::string::npos);
}

// TagLib alone would write the empty text, no frame at all, or the frame as it was.
TEST(Fields, areKeptInFramesThatTagLibWouldNotWrite) {
    const std::tuple<const char*, std::uint8_t, std::uint16_t> rows[] = {
        {"an encoding that does not exist", 0x76, 0},
        {"a negative one", 0xFE, 0},
        {"to be discarded when the tag changes", 0, 0x4000},
        {"encrypted", 0, 0x0004}};
    for (const auto& [what, code, flags] : rows) {
        const ZALData encoding{code};
        const std::string path =
            mp3(id3Tag({id3Frame("TIT2", joined({encoding, bytesOf("old")}), flags),
                        id3Frame("TDRC", joined({encoding, bytesOf("1999")}), flags),
                        id3Frame("COMM", joined({encoding, bytesOf(std::string_view("eng\0old", 7))}),
                                 flags & 0x4000)}));
        auto tag = opened(path);
        tag->setTitle("Pièce 🎵");
        tag->setYear(2001);
        tag->setComment("new");
        ASSERT_TRUE(tag->save());
        tag = opened(path);
        EXPECT_EQ(tag->title(), "Pièce 🎵") << what;
        EXPECT_EQ(tag->year(), 2001) << what;
        EXPECT_EQ(tag->comment(), "new") << what;
    }
}

// Its length has 28 bits, the rest of which TagLib would not write.
TEST(Saving, refusesATagThatWouldBeTooLong) {
    const std::string path = mp3(id3Tag({id3Text("TIT2", "old")}), id3v1Tag("old", "", ""));
    const ZALData before = contentsOf(path);
    const auto tag = opened(path);
    const TagLib::ByteVector picture(1 << 26, 'x');  // of which all frames share the bytes
    for (int i = 0; i < 4; ++i) {
        auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
        frame->setPicture(picture);
        tag->v2Tag()->addFrame(frame);
    }
    const LogCapture log;
    EXPECT_FALSE(tag->save());
    EXPECT_THAT(log.lines(), testing::ElementsAre(testing::HasSubstr("its ID3v2 tag would be too large")));
    EXPECT_EQ(contentsOf(path), before);
    tag->v2Tag()->removeFrames("APIC");
    EXPECT_TRUE(tag->save());
}

TEST(Fields, numericGenresBecomeNames) {
    const struct {
        std::string_view stored, read, saved;
    } cases[] = {{"(17)", "Rock", "Rock"},
                 {"17", "Rock", "Rock"},
                 {"(52)(53)", "Electronic Pop-Folk", {"Electronic\0Pop-Folk", 19}},
                 {{"House\00017", 8}, "House Rock", {"House\0Rock", 10}},
                 {{"House\0Techno", 12}, "House Techno", {"House\0Techno", 12}},
                 {"(17)Glam", "Rock Glam", "(17)Glam"},
                 {"(300)", "", "(300)"}};
    for (const auto& one : cases) {
        const std::string path = mp3(id3Tag({id3Text("TCON", one.stored)}));
        const auto tag = opened(path);
        const ZALData before = contentsOf(path);
        ASSERT_TRUE(tag->save());
        EXPECT_EQ(contentsOf(path), before) << "that alone is no change";
        EXPECT_EQ(tag->genre(), one.read) << one.stored;
        tag->setTitle("x");
        ASSERT_TRUE(tag->save());
        const std::string text = textOf(path);
        EXPECT_EQ(text.substr(text.find("TCON") + 11, one.saved.size()), one.saved) << one.stored;
    }
}

TEST(Grouping, isWrittenToBothFrames) {
    const std::string path = mp3({});
    for (const auto& [text, encoding] : {std::pair("Peak time", 0), std::pair("Pièce 🎵", 1)}) {
        auto tag = opened(path);
        tag->setGrouping(text);
        EXPECT_TRUE(tag->requiresSaving());
        ASSERT_TRUE(tag->save());
        EXPECT_FALSE(tag->requiresSaving());
        tag->setGrouping(text);
        EXPECT_FALSE(tag->requiresSaving()) << "the same grouping is no change";
        const std::string bytes = textOf(path);
        ASSERT_NE(bytes.find("GRP1"), std::string::npos);
        EXPECT_EQ(bytes[bytes.find("GRP1") + 10], encoding);
        tag = opened(path);
        EXPECT_TRUE(tag->GRP1Grouping() == text && tag->TIT1Grouping() == text);
    }
    const auto tag = opened(path);
    tag->setTitle("others do not count");
    EXPECT_FALSE(tag->requiresSaving());
    tag->setGrouping("");
    EXPECT_FALSE(tag->GRP1Grouping() || tag->TIT1Grouping());
}

TEST(Grouping, isReadFromAnUnknownFrame) {
    // TagLib keeps a frame whose encryption flag is set as it is.
    constexpr std::uint16_t encrypted = 0x0004;
    const ZALData payload = fromHex("01 00 41");
    const auto tag = opened(mp3(id3Tag({id3Frame("GRP1", payload, encrypted), id3Text("TIT1", "other")})));
    EXPECT_EQ(tag->GRP1Grouping(), "A") << "UTF-16 without a mark is read by our own decoder";
    tag->setGRP1Grouping("new");
    EXPECT_TRUE(tag->GRP1Grouping() == "new" && tag->grouping() == "new");
    tag->setGRP1Grouping(std::nullopt);
    EXPECT_EQ(tag->grouping(), "other");
}

TEST(Comment, isTheLastOrdinaryFrame) {
    const std::pair<ZALData, const char*> cases[] = {
        {id3Tag({id3Comment("eng", "", "yes"), id3Comment("und", "", "no")}), "yes"},
        {id3Tag({id3Comment("eng", "", "first"), id3Comment("eng", "", "second")}), "second"},
        {id3Tag({id3Comment("deu", "", "yes"), id3Comment("eng", "iTunNORM", "no"),
                 id3Comment("lZ2", "", "no")}),
         "yes"},
        {id3Tag({id3Comment("XXX", "", "no"), id3Comment("xxx", "", "no"), id3Comment("Pur", "", "no")}),
         "v1"},
        {id3Tag({id3Comment("eng", "", "")}), "v1"},
    };
    for (const auto& [tag, comment] : cases) {
        EXPECT_EQ(opened(mp3(tag, id3v1Tag("t", "", "v1")))->comment(), comment);
    }
    EXPECT_EQ(opened(mp3({}))->comment(), "") << "never null";
}

TEST(Comment, isMovedInFrontOfTheOthers) {
    const std::string path = mp3(id3Tag({id3Comment("eng", "iTunNORM", "norm"), id3Comment("und", "", "note"),
                                         id3Comment("eng", "", "old"), id3Comment("deu", "x", "later")}));
    const auto tag = opened(path);
    tag->setComment("new");
    EXPECT_TRUE(tag->requiresSaving());
    ASSERT_TRUE(tag->save());
    EXPECT_FALSE(tag->requiresSaving());
    const std::string text = textOf(path);
    std::size_t at = 0;
    for (const char* comment : {"new", "later", "norm", "note"}) {
        const std::size_t found = text.find(comment);
        EXPECT_GT(found, at) << comment;
        at = found;
    }
    tag->setComment("again");
    EXPECT_FALSE(tag->requiresSaving()) << "it is in front already";
    tag->setComment("");
    EXPECT_TRUE(tag->requiresSaving()) << "with the primary frame gone, the others were moved";
    EXPECT_EQ(tag->comment(), "");
    EXPECT_EQ(opened(mp3(id3Tag({id3Comment("und", "", "note")})))->requiresSaving(), false);
}

TEST(ID3v1, anEmptyTagIsNone) {
    const std::string path = mp3({}, id3v1Tag("", "", ""));
    const auto tag = opened(path);
    EXPECT_FALSE(tag->hasID3v1Tag());
    EXPECT_TRUE(tag->hasID3v2Tag());
    tag->setTitle("new");
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(id3v1Of(path), id3v1Tag("", "", "")) << "no ID3v1 step";
}

TEST(ID3v1, isKeptInStepOrStripped) {
    const ZALData ape =
        joined({bytesOf("APETAGEX"), fromHex("D0070000 20000000 00000000 00000000"), ZALData(8)});
    const std::string path = mp3({}, joined({ape, id3v1Tag("old", "A", "c")}));
    const auto tag = opened(path);
    tag->setTitle("new");
    ASSERT_TRUE(tag->save());
    ZALData v1 = id3v1Of(path);
    ASSERT_EQ(v1.size(), 128u);
    EXPECT_EQ(std::string(v1.begin() + 3, v1.begin() + 6), "new");
    EXPECT_NE(contentsOf(path).size(), 0u);
    tag->setShouldStripID3v1Tag(true);
    ASSERT_TRUE(tag->save());
    EXPECT_TRUE(id3v1Of(path).empty());
    EXPECT_EQ(mp3Audio(path), joined({mpegFrames(), ape})) << "nothing else goes";
    EXPECT_TRUE(tag->hasID3v1Tag()) << "the open object still holds it";
    EXPECT_FALSE(opened(path)->hasID3v1Tag());
    EXPECT_EQ(opened(path)->title(), "new");
}

TEST(ID3v1, fillsWhatID3v2Lacks) {
    ZALData v1 = id3v1Tag("T", "\xC0rtist", "words", 17);
    std::copy_n("1987", 4, v1.begin() + 93);
    const std::string path = mp3(id3Tag({id3Text("TALB", ""), id3Text("TPE2", "x")}), v1);
    auto tag = opened(path);
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(textOf(path).find("TIT2"), std::string::npos)
        << "a save that nothing else asks for fills nothing";
    tag->setGrouping("g");
    ASSERT_TRUE(tag->save());
    const std::string text = textOf(path);
    for (const char* id : {"TIT2", "COMM", "TDRC", "TCON"}) {
        EXPECT_NE(text.find(id), std::string::npos) << id;
    }
    EXPECT_EQ(text.find("TPE1"), std::string::npos) << "in which code page?";
    EXPECT_EQ(id3v1Of(path), v1);
    tag->setTitle(std::nullopt);
    tag->deleteExtraneousComments();
    tag->setComment("");
    ASSERT_TRUE(tag->save());
    EXPECT_EQ(textOf(path).find("TIT2"), std::string::npos) << "what was taken away stays away";
}

}  // namespace
