// What a save leaves alone, byte by byte, in collections of every layout.

#include "support/CollectionPrograms.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// How a file is stored.
struct Storage {
    const char* declaration;
    const char* mark;
    int unit;  // bytes of a code unit; below 0 big-endian
    bool isLatin;
};

constexpr Storage storages[] = {
    {"<?xml version='1.0'  encoding=\"UTF-8\" ?>", "", 1, false},
    {"", "\xEF\xBB\xBF", 1, false},
    {"<?xml version=\"1.0\" encoding=\"UTF-16\"?>", "\xFF\xFE", 2, false},
    {"<?xml version=\"1.0\"?>", "\xFE\xFF", -2, false},
    {"<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>", "", 1, true},
};

const std::string name = "n\xC3\xA9\xE2\x98\x83";  // the snowman is no character of Latin-1

// The texts here hold no other characters beyond ASCII.
std::string stored(std::string text, const Storage& storage) {
    const auto replace = [&text](std::string_view part, std::string_view by) {
        for (auto at = text.find(part); at != text.npos; at = text.find(part, at + by.size())) {
            text.replace(at, part.size(), by);
        }
    };
    if (storage.isLatin) {
        replace("\xC3\xA9", "\xE9");
        replace("\xE2\x98\x83", "&#9731;");
    }
    if (storage.unit == 1) return text;
    std::string units;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isAccent = text[i] == '\xC3';
        const bool isSnowman = text[i] == '\xE2';
        const char high = isSnowman ? '\x26' : '\0';
        const char low = isAccent ? '\xE9' : isSnowman ? '\x03' : text[i];
        units += storage.unit == 2 ? std::string{low, high} : std::string{high, low};
        i += isAccent ? 1 : isSnowman ? 2 : 0;
    }
    return units;
}

class Collections : public testing::TestWithParam<CollectionKind>, protected CollectionHost {
  protected:
    Collections() { host->setCollectionSaveMode(ZALCollectionSaveMode::changedTracks); }

    std::string path() const { return root() + "/collection.xml"; }
    void open(const std::string& content) {
        file("collection.xml", content);
        database = GetParam().open(path());
        queue = GetParam().queue(database);
    }
    // Asks for cues at 1 s and at 9 s.
    bool change(const std::string& track) {
        queue->setCuePoints({ZALTagCuePoint(9, name), ZALTagCuePoint(1, ZALNullableString("kept"))}, track,
                            ZALCueKind::hot);
        return saved(*queue).success;
    }
    // Another one after every write.
    std::uint64_t inode() const {
        ZALFileAttributes attributes;
        EXPECT_FALSE(ZALHost::shared().fileSystem()->attributes(path(), attributes));
        return attributes.inode;
    }
    // All that the tracks say.
    static std::vector<std::string> tracksOf(const ZALCollectionDatabase& database) {
        std::vector<std::string> all;
        database.forEachTrack([&all](const auto& track) {
            all.push_back(track->path().value_or("-"));
            for (const ZALTagCuePoint& cue : track->cuePoints(ZALCueKind::all)) {
                all.push_back(cue.description());
            }
        });
        return all;
    }

    std::shared_ptr<ZALCollectionDatabase> database;
    std::shared_ptr<ZALCollectionQueue> queue;
};

INSTANTIATE_TEST_SUITE_P(Programs, Collections, testing::ValuesIn(collectionKinds()),
                         [](const auto& one) { return std::string(one.param.name); });

// The root's tag says who wrote a file.
void skipRootTag(std::string& bytes, const Storage& storage) {
    const std::string root = stored("<DJ_PLAYLISTS", storage);
    const auto begin = bytes.find(root);
    if (begin == bytes.npos) return;
    bytes.erase(begin, bytes.find(stored(">", storage), begin) - begin);
}

}  // namespace

TEST_P(Collections, oneChangedTrackLeavesEveryOtherByte) {
    const CollectionKind& kind = GetParam();
    const LogCapture log;
    const std::string between[] = {"", "\n    ", "\r\n\t", " <!-- <TRACK/> <ENTRY> --> ",
                                   "<![CDATA[</x>]]>\r\n"};
    for (const Storage& storage : storages) {
        for (const std::string& gap : between) {
            const auto content = [&](bool isChanged) {
                std::string text = storage.declaration + std::string("<!-- > \xC3\xA9 -->") + kind.head;
                for (int number = 1; number <= 5; ++number) {
                    const std::string made = isChanged && number == 3 ? kind.cue(name) : "";
                    text += gap + kind.track(number, gap.find('<') == gap.npos ? gap : "", made);
                }
                return storage.mark + stored(text + gap + kind.tail, storage);
            };
            SCOPED_TRACE(storage.declaration + gap);
            open(content(false));
            EXPECT_EQ(database->trackCount(), 5U);
            ASSERT_TRUE(change("/3.mp3"));
            std::string written = contentOf(path());
            std::string expected = content(true);
            skipRootTag(written, storage);
            skipRootTag(expected, storage);
            ASSERT_EQ(written, expected);

            const auto fresh = kind.open(path());
            EXPECT_EQ(tracksOf(*database), tracksOf(*fresh)) << "the index that the save made";
            EXPECT_EQ(database->cueCount(), fresh->cueCount());
            const auto once = inode();
            ASSERT_TRUE(change("/3.mp3"));
            EXPECT_EQ(inode(), once) << "nothing to change";
            ASSERT_TRUE(change("/4.mp3"));
            ASSERT_TRUE(change("/1.mp3")) << "from an index made by saves";
            EXPECT_EQ(tracksOf(*database), tracksOf(*kind.open(path())));
        }
    }
}

TEST_P(Collections, everyTrackIsRewrittenInTheFilesEncodingOrInUTF8) {
    const CollectionKind& kind = GetParam();
    const LogCapture log;
    host->setCollectionSaveMode(ZALCollectionSaveMode::everyTrackWithCues);
    const bool becomesUTF8 = kind.name == std::string("Rekordbox");
    const std::string text = std::string("<!-- \xC3\xA9 -->") + kind.head + kind.track(1, " ", "") +
                             kind.track(2, "\n", kind.cue("\xC3\xA9")) + kind.tail;
    open(text);
    ASSERT_TRUE(database->save());
    const std::string plain = contentOf(path());
    EXPECT_EQ(plain.find("<?xml") == 0, becomesUTF8);
    for (const Storage& storage : storages) {
        open(storage.mark + stored(storage.declaration + text, storage));
        ASSERT_TRUE(database->save());
        const std::string mark = storage.mark[0] == 0 ? "" : "\xEF\xBB\xBF";
        const std::string kept = storage.mark + stored(storage.declaration + plain, storage);
        std::string utf8 = mark + plain;
        if (storage.declaration[0] != 0 && becomesUTF8) utf8.erase(utf8.find("?>\n") + 2, 1);
        EXPECT_EQ(contentOf(path()), becomesUTF8 ? utf8 : kept) << storage.declaration;
        EXPECT_EQ(tracksOf(*database), tracksOf(*kind.open(path())));
    }
}
