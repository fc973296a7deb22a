// A save changes what was asked for: every other entry of a tag stands in the file afterwards, byte for byte.

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/tag/ZALTag.h>

#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/Pictures.h"
#include "support/WavFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace {

struct Row {
    const char* name;  // with the extension
    ZALData file;
    std::vector<ZALData> kept;
};

ZALData bytes(std::string_view text) {
    return bytesOf(text);
}
template <std::size_t size>
ZALData raw(const char (&text)[size]) {  // with the NULs in it
    return bytesOf(std::string_view(text, size - 1));
}

ZALData tag(std::uint8_t version, std::uint8_t flags, const ZALData& body, bool hasFooter = false) {
    const auto size = static_cast<std::uint8_t>(body.size() & 0x7F);
    const ZALData rest{version, 0, flags, 0, 0, static_cast<std::uint8_t>(body.size() >> 7), size};
    return joined({bytes("ID3"), rest, body, hasFooter ? joined({bytes("3DI"), rest}) : ZALData()});
}

const ZALData title = id3Text("TIT2", "Title"), album = id3Text("TALB", "Album");

// Between others in a tag of version 2.4.
Row frame(const char* name, const ZALData& frame) {
    return {name, joined({tag(4, 0, joined({title, frame, album})), mpegFrames()}), {title, frame, album}};
}
// Of an older version; kept is what version 2.4 makes of it.
Row older(const char* name, std::uint8_t version, const ZALData& frames, std::vector<ZALData> kept) {
    return {name, joined({tag(version, 0, frames), mpegFrames()}), std::move(kept)};
}
Row items(const char* name, std::initializer_list<ZALData> items) {
    return {name, mp4File({.userData = mp4Tag(items)}), items};
}
Row fields(const char* name, const std::vector<std::string>& fields) {
    Row row{name, flacFile({flacComment(fields)}), {}};
    for (const std::string& field : fields) {
        row.kept.push_back(bytesOf(field));
    }
    return row;
}

ZALData v1With(std::string_view comment, std::uint8_t genre) {
    return id3v1Tag("T ", "A", comment, genre);
}

std::vector<Row> rows() {
    const ZALData second = tag(4, 0, id3Text("TPE1", "Second"));
    const ZALData full = tag(4, 0,
                             joined({title, album, id3Text("TPE1", "A"), id3Comment("eng", "", "c"),
                                     id3Text("TCON", "Other"), id3Text("TRCK", "1")}));
    // As written into a pipe, where no size can be put in later.
    const auto piped = [](ZALData file) {
        std::fill_n(file.begin() + 4, 4, 0xFF);
        constexpr std::string_view id = "data";
        std::fill_n(std::search(file.begin(), file.end(), id.begin(), id.end()) + 4, 4, 0xFF);
        return file;
    };
    const ZALData tagInFront = riffForm({wavFormat(), riffChunk("id3 ", tag(4, 0, title)), wavAudio()});
    return {
        frame("vinyl track.mp3", id3Text("TRCK", "A1")),
        frame("date in words.mp3", id3Text("TDRC", "Oct 3, 1995")),
        frame("empty main comment.mp3",
              joined({id3Comment("eng", "", ""), id3Comment("eng", "Mood", "warm")})),
        frame("small letters.mp3", id3Frame("Date", raw("\3x"))),
        frame("no mark.mp3", id3Frame("TPE1", raw("\1A\0b\0"))),
        frame("latin called utf8.mp3", id3Frame("TPE1", raw("\3Bj\xF6rk"))),
        frame("unknown encoding.mp3", id3Frame("TPE3", raw("\4weird"))),
        frame("nuls.mp3", id3Frame("TMOO", raw("\3x\0\0\0"))),
        frame("no end.mp3", joined({id3Frame("TXXX", raw("\3nodesc")), id3Frame("PRIV", raw("x")),
                                    id3Frame("GEOB", raw("\0noend")), id3Frame("COMM", raw("\3en"))})),
        frame("two genres.mp3", id3Text("TCON", {"House\0Techno", 12})),
        frame("dates of 2.3 in 2.4.mp3", joined({id3Text("TYER", "1999"), id3Text("TDAT", "3112")})),
        frame("to be discarded.mp3", id3Frame("PRIV", raw("o\0x"), 0x4000)),
        frame("grouped.mp3", id3Frame("TPE1", raw("\1\3A"), 0x0040)),
        frame("encrypted.mp3", id3Frame("TPE1", raw("\1abc"), 0x0004)),
        frame("data length.mp3", id3Frame("TPE1", raw("\0\0\0\4\3abc"), 0x0001)),
        frame("unsynchronised.mp3", id3Frame("TPE1", raw("\1\xFF\0\xFET\0"), 0x0002)),
        frame("chapter.mp3", id3Frame("CHAP", joined({raw("c1\0"), ZALData(16), id3Text("TIT2", "one"),
                                                      id3Frame("TXXX", {}), id3Text("TIT3", "two")}))),
        {"behind an empty frame.mp3",
         joined({tag(4, 0, joined({title, id3Frame("TCOP", {}), id3Object("d", "a/b", {1}), album})),
                 mpegFrames()}),
         {title, id3Object("d", "a/b", {1}), album}},
        {"leftover.mp3",
         joined({tag(4, 0, joined({title, album, raw("\1leftover\2")})), mpegFrames()}),
         {title, album, raw("\1leftover\2")}},
        {"longer than the tag.mp3",
         joined({tag(4, 0, joined({title, raw("TALB\0\0\0\x5a\0\0\3Cut")})), mpegFrames()}),
         {title, raw("TALB\0\0\0\x5a\0\0\3Cut")}},
        // 257 as a plain number, as which alone it leads on to another frame.
        {"plain size.mp3",
         joined(
             {tag(4, 0, joined({title, raw("TPE3\0\0\1\1\0\0\3"), ZALData(256, 'x'), album})), mpegFrames()}),
         {title, id3Frame("TPE3", joined({{3}, ZALData(256, 'x')})), album}},
        {"extended header.mp3",
         joined({tag(4, 0x40, joined({fromHex("00000006 0100"), title, album})), mpegFrames()}),
         {title, album}},
        {"footer.mp3", joined({tag(4, 0x10, joined({title, album}), true), mpegFrames()}), {title, album}},
        {"two tags.mp3", joined({tag(4, 0, title), second, mpegFrames()}), {title, second}},
        {"tag at the end.mp3",
         joined({mpegFrames(), tag(4, 0x10, joined({title, album}), true)}),
         {tag(4, 0x10, joined({title, album}), true)}},
        {"unsynchronised as a whole.mp3",
         joined({tag(4, 0x80, id3Frame("PRIV", raw("o\0\xFF\0\xE0"))), mpegFrames()}),
         {id3Frame("PRIV", raw("o\0\xFF\0\xE0"), 0x0002)}},
        older("2.3.mp3", 3,
              joined({id3Text("IPLS", "a"), id3Frame("TP1", raw("\0")), id3Text("TDAT", "9999")}),
              {id3Text("TIPL", "a"), id3Text("TDAT", "9999")}),
        older("2.3 flags.mp3", 3,
              joined(
                  {id3Frame("TALB", raw("\1\0Album"), 0x0020), id3Frame("TPE1", raw("\0\0\0\4zip"), 0x0080)}),
              {id3Frame("TALB", raw("\1\0Album"), 0x0040), id3Frame("TPE1", raw("\0\0\0\4zip"), 0x0009)}),
        older("2.3 dates.mp3", 3,
              joined({id3Text("TYER", "1999"), id3Text("TDAT", "3112"), id3Text("TIME", "1259")}),
              {id3Text("TDRC", "1999-12-31T12:59")}),
        older("2.2.mp3", 2,
              joined({raw("XYZ\0\0\2\0a"), raw("RVA\0\0\2\3\x10"), raw("PIC\0\0\x07\0PNG\3\0z")}),
              {id3Frame("RVAD", raw("\3\x10")), id3Frame("APIC", raw("\0image/png\0\3\0z")),
               id3Frame("XYZ ", raw("\0a"))}),
        {"comment of 30.mp3",
         joined({full, mpegFrames(), v1With("123456789012345678901234567890", 200)}),
         {full.size() > 0 ? v1With("123456789012345678901234567890", 200) : ZALData()}},
        items("widths.m4a",
              {mp4Item("tmpo", {fromHex("00000080")}, 21), mp4Item("stik", {fromHex("0000000A")}, 21)}),
        items("types.m4a", {mp4Item("abcd", {raw("a\0b")}, 0), mp4Item("gnre", {fromHex("0012")}, 0),
                            mp4Item("\251alb", {raw("Caf\xE9")}), mp4Item("\251wrt", {raw("w")}, 0)}),
        items("names.m4a", {mp4Freeform("com.apple.iTunes", "UFID:http://a", {"v"}),
                            mp4Freeform("com.apple.iTunes", std::string("undo\0", 5), {"1"}),
                            mp4Item("\251gen", {raw("a")}), mp4Item("\251gen", {raw("b")})}),
        fields("odd fields.flac",
               {"Title=T", "RELEASETYPE=", "nofield", "k\xC3\xBC=x", "OLD=Caf\xE9", "Key=1"}),
        {"blocks.flac",
         flacFile({flacBlock(126, raw("z")), flacComment({"A=1"}), flacBlock(6, raw("broken")),
                   flacComment({"B=2"})}),
         {raw("z"), raw("A=1"), flacBlock(6, raw("broken")), flacComment({"B=2"})}},
        {"id3 around.flac",
         joined({tag(4, 0, joined({id3Text("TRCK", "A1"), album})), flacFile(), v1With("c", 200)}),
         {id3Text("TRCK", "A1"), album, v1With("c", 200)}},
        {"pipe.wav", piped(wavFile()), {contentOf(wavFile(), "data")}},
        {"pipe with a tag in front.wav", piped(tagInFront), {wavAudio()}},
        {"lists.wav",
         wavFile({infoList({{"INAM", "caf\xE9"}, {"IART", "a"}, {"IART", "b"}}), infoList({{"IPRD", "x"}}),
                  riffChunk("LIST", bytes("adtlxx"))}),
         {infoList({{"INAM", "caf\xE9"}, {"IART", "a"}, {"IART", "b"}}), infoList({{"IPRD", "x"}}),
          riffChunk("LIST", bytes("adtlxx"))}},
        {"two tags.wav",
         wavFile({riffChunk("id3 ", tag(4, 0, title)), riffChunk("ID3 ", second)}),
         {title, second}},
        {"zeros behind.wav",
         joined({wavFile({riffChunk("cue ", ZALData(4))}), ZALData(3)}),
         {riffChunk("cue ", ZALData(4))}},
        {"two tags.aiff",
         aiffFile({iffChunk("NAME", raw("Caf\xE9")), iffChunk("ID3 ", tag(3, 0, id3Text("TENC", "")))}),
         {iffChunk("NAME", raw("Caf\xE9")), id3Text("TENC", "")}},
    };
}

class KeptEntries : public testing::Test {
  protected:
    static bool holds(const ZALData& file, const ZALData& part) {
        return std::search(file.begin(), file.end(), part.begin(), part.end()) != file.end();
    }
    void expectKept(const Row& row, const std::string& path, const char* after) const {
        const ZALData file = contentsOf(path);
        for (const ZALData& part : row.kept) {
            EXPECT_TRUE(holds(file, part)) << row.name << " after " << after << ": " << toHex(part);
        }
    }

    TemporaryFolder folder_;
};

TEST_F(KeptEntries, whateverIsSetBesideThem) {
    const std::pair<const char*, void (*)(ZALTag&)> edits[] = {
        {"a cue", [](ZALTag& t) { t.setSeratoCuePoints({ZALTagCuePoint(1.5, "Drop")}); }},
        {"the grouping", [](ZALTag& t) { t.setGrouping(t.grouping() == "a" ? "b" : "a"); }},
        {"a picture", [](ZALTag& t) { t.replacePrimaryImage(picture(), false); }},
        {"the key", [](ZALTag& t) { t.setInitialKey("8A"); }},
        {"no cue", [](ZALTag& t) { t.setSeratoCuePoints({}); }},
    };
    for (const Row& row : rows()) {
        const bool hasPicture = holds(row.file, bytes("APIC")) || holds(row.file, bytes("PIC"));
        for (const auto& [name, edit] : edits) {
            const bool isForLater = std::string_view(name) == "no cue";
            if (isForLater || (hasPicture && std::string_view(name) == "a picture")) continue;
            const std::string path = folder_.write(row.name, row.file);
            const auto tag = ZALTag::tagAtPath(path);
            ASSERT_NE(tag, nullptr) << row.name;
            EXPECT_TRUE(tag->save());
            EXPECT_EQ(contentsOf(path), row.file) << "nothing was set: " << row.name;
            edit(*tag);
            EXPECT_TRUE(tag->save()) << row.name << " after " << name;
            expectKept(row, path, name);
        }
        // All of them, one after the other, on one object.
        const std::string path = folder_.write(row.name, row.file);
        const auto tag = ZALTag::tagAtPath(path);
        for (const auto& [name, edit] : edits) {
            if (hasPicture && std::string_view(name) == "a picture") continue;
            edit(*tag);
            EXPECT_TRUE(tag->save());
            expectKept(row, path, name);
        }
    }
}

TEST_F(KeptEntries, whenTheID3v1TagIsStripped) {
    const ZALData ape =
        joined({bytes("APETAGEX"), fromHex("D0070000 2F000000 01000000 00000000"), ZALData(8)});
    const ZALData lyrics = bytes("LYRICSBEGININD0000200000015LYRICS200");
    const ZALData enhanced = joined({bytes("TAG+"), ZALData(223, 'x')});
    for (const ZALData& behind : {ape, lyrics, ZALData()}) {
        const std::string path = folder_.write(
            "a.mp3", joined({tag(4, 0, title), mpegFrames(), behind, enhanced, v1With("c", 1)}));
        const auto mp3 = ZALTag::tagAtPath(path);
        mp3->setShouldStripID3v1Tag(true);
        ASSERT_TRUE(mp3->save());
        EXPECT_EQ(mp3Audio(path), joined({mpegFrames(), behind})) << "nothing else goes";
    }
}

TEST_F(KeptEntries, whereTheLastChunkHasNoPadByteOrAnOddOne) {
    ZALData unpadded = riffChunk("id3 ", tag(4, 0, joined({title, ZALData(3)})));
    unpadded.pop_back();
    ZALData silence = riffForm({wavFormat(), riffChunk("data", ZALData(21, 0x80))});
    silence.back() = 0x80;
    for (const ZALData& file : {joined({wavFile(), unpadded}), silence}) {
        const std::string path = folder_.write("a.wav", file);
        const auto wav = ZALTag::tagAtPath(path);
        wav->setTitle("New");
        EXPECT_TRUE(wav->save());
        EXPECT_EQ(ZALTag::tagAtPath(path)->title(), "New");
        EXPECT_TRUE(holds(contentsOf(path), ZALData(file.begin() + 12, file.begin() + 60)));
    }
}

TEST_F(KeptEntries, amongCoversInTwoItems) {
    const ZALData one = mp4Item("covr", {bytes("A")}, 13), other = mp4Item("covr", {bytes("B")}, 13);
    const auto m4a = ZALTag::tagAtPath(folder_.write("a.m4a", mp4File({.userData = mp4Tag({one, other})})));
    EXPECT_EQ(m4a->allImageData().size(), 2u);
    m4a->replacePrimaryImage(picture(), false);
    ASSERT_TRUE(m4a->save());
    EXPECT_TRUE(holds(contentsOf(*m4a->path()), ZALData(other.begin() + 8, other.end())))
        << "with the type it had";
}

TEST_F(KeptEntries, areReadWhereTagLibDoesNotLook) {
    const auto opened = [this](const char* name, const ZALData& file) {
        return ZALTag::tagAtPath(folder_.write(name, file));
    };
    const ZALData artist = id3Text("TPE1", "A");
    const auto mp3 = [&](const ZALData& front) { return joined({front, mpegFrames()}); };
    EXPECT_EQ(opened("a.mp3", mp3(tag(4, 0, joined({title, id3Frame("TCOP", {}), artist}))))->artist(), "A");
    EXPECT_EQ(opened("b.mp3", mp3(tag(3, 0, joined({id3Frame("TSA ", raw("\0s")), artist}))))->artist(), "A");
    EXPECT_EQ(opened("c.mp3", mp3(joined({tag(4, 0, title), tag(4, 0, artist)})))->artist(), "A");
    EXPECT_EQ(opened("d.mp3", mp3(tag(4, 0, id3Frame("TPE1", raw("\1A\0b\0")))))->artist(), "Ab");
    EXPECT_EQ(opened("e.mp3", mp3(tag(4, 0, id3Frame("TPE1", raw("\1\3A"), 0x0040))))->artist(), "A");
    const auto m4a = opened("a.m4a", mp4File({.userData = mp4Tag({mp4Item("tmpo", {fromHex("00000080")}, 21),
                                                                  mp4Item("gnre", {fromHex("0012")}, 0)})}));
    EXPECT_TRUE(m4a->tempo() == 128 && m4a->genre() == "Rock");
    EXPECT_EQ(opened("a.flac", flacFile({flacComment({"A=1"}), flacComment({"TITLE=Caf\xE9"})}))->title(),
              "Café");
}

}  // namespace
