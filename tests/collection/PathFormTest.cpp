#include <zaltag/collection/ZALCollectionPath.h>

#include <gtest/gtest.h>

namespace {

TEST(PathForm, whatWindowsAndItsProgramsWriteIsOneForm) {
    const struct {
        const char* written;
        const char* common;
        const char* volume;
        const char* loose;
    } rows[] = {
        {"C:\\Music\\A.mp3", "C:/Music/A.mp3", "", "c:/music/a.mp3"},
        {"/c:/Music/A.mp3", "C:/Music/A.mp3", "", "c:/music/a.mp3"},
        {"/Volumes/C:/Music/", "C:/Music", "", "c:/music"},
        {"C:\\", "C:", "", "c:"},
        {"\\\\nas\\DJ\\a.mp3", "//nas/DJ/a.mp3", "", "//nas/dj/a.mp3"},
        {"/Volumes/\\\\nas\\DJ/a.mp3", "//nas/DJ/a.mp3", "", "//nas/dj/a.mp3"},
        {"/Volumes/Big Disk/a\\b.mp3", "/Volumes/Big Disk/a\\b.mp3", "/Volumes/Big Disk", "/a\\b.mp3"},
        {"/Volumes/Big Disk", "/Volumes/Big Disk", "/Volumes/Big Disk", ""},
        {"/Users/dj/C:/a.mp3", "/Users/dj/C:/a.mp3", "", "/users/dj/c:/a.mp3"},
        {"/\xC3\x84/STRASSE.mp3", "/\xC3\x84/STRASSE.mp3", "", "/a\xCC\x88/strasse.mp3"},
        {"/\x41\xCC\x88/stra\xC3\x9F\x65.mp3", "/A\xCC\x88/stra\xC3\x9F\x65.mp3", "",
         "/a\xCC\x88/strasse.mp3"},
        {"/", "/", "", "/"},
        {"", "", "", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ZALCommonPath(row.written), row.common);
        EXPECT_EQ(ZALVolumeOfPath(row.written), row.volume);
        EXPECT_EQ(ZALLoosePath(row.written), row.loose);
    }
}

}  // namespace
