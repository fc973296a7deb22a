#include <zaltag/tag/ZALTagPathNames.h>

#include <gtest/gtest.h>

namespace {

TEST(PathNames, splitAtTheFirstSeparator) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"/Music/Some Artist - Some Title.mp3", "Some Artist", "Some Title"},
        {"/Music/A - B - C.flac", "A", "B - C"},
        {"/Music/Intro.mp3", "", "Intro"},
        {"/Music/Artist-Title.mp3", "", "Artist-Title"},
        {"/Music/ - Title.mp3", "", "Title"},
        {"/a - b/Intro", "", "Intro"},
        {"\t\u00A0A \u3000 -  T\n .mp3", "A", "T\n"},
        {"A - v1.2 remix.mp3", "A", "v1.2 remix"},
        {"/", "", ""},
        {"", "", ""},
    };
    for (const auto& [path, artist, name] : cases) {
        EXPECT_EQ(ZALTagArtistFromPath(path), artist) << path;
        EXPECT_EQ(ZALTagNameFromPath(path), name) << path;
    }
}

}  // namespace
