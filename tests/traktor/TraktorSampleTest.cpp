// A collection as the program itself wrote it, when the tests are given one.

#include "base/Numbers.h"
#include "platform/XML.h"
#include "support/CollectionFixtures.h"

#include <zaltag/traktor/ZALTraktorDatabase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <regex>

namespace {

struct Element {
    explicit Element(const zal::XMLElement& from) : name(from.name()) {
        for (const auto& [attribute, value] : from.attributes()) {
            attributes += attribute + "=\"" + value + "\" ";
        }
        for (auto child = from.firstChild(); child; child = child.next()) {
            children.emplace_back(child);
        }
    }
    bool operator==(const Element&) const = default;

    void replace(const std::string& pattern, const std::string& by) {
        attributes = std::regex_replace(attributes, std::regex(pattern), by);
    }
    std::int64_t slot() const {
        const auto at = attributes.find("HOTCUE=\"");
        return at == std::string::npos ? -2 : zal::integerValue(attributes.substr(at + 8));
    }

    std::string name, attributes;
    std::vector<Element> children;
};

Element rootOf(const std::string& path) {
    zal::XMLReadError error;
    return Element(zal::XMLDocument::read(path, error)->root("NML"));
}

// What a save must do to an entry whose audio file is missing: the host's clock, less an hour; cues by slot.
void saveEntry(Element& entry) {
    entry.replace("^MODIFIED_DATE=\"[^\"]*\" MODIFIED_TIME=\"[^\"]*\"",
                  "MODIFIED_DATE=\"2023/11/14\" MODIFIED_TIME=\"76400\"");
    std::stable_sort(entry.children.begin(), entry.children.end(),
                     [](const Element& a, const Element& b) { return a.slot() < b.slot(); });
    for (Element& child : entry.children) {
        child.replace("HOTCUE=\"-1\"", "HOTCUE=\"0\"");
    }
}

}  // namespace

TEST(TraktorSample, comesOutOfASaveWithTheRequiredChangesAlone) {
    const char* samples = std::getenv("ZALTAG_SAMPLES");
    if (samples == nullptr) GTEST_SKIP() << "ZALTAG_SAMPLES names no folder of real files";
    const CollectionHost host;
    const std::string path = host.file("collection.nml", contentOf(samples + std::string("/test.nml")));
    Element expected = rootOf(path);
    ZALTraktorDatabase::setUserTraktorDatabaseFileURL(path);
    const auto database = ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL(path);
    ASSERT_TRUE(database->save());
    ASSERT_EQ(expected.children[1].children.size(), 2U);
    for (Element& entry : expected.children[1].children) {
        saveEntry(entry);
    }
    EXPECT_EQ(rootOf(path), expected);

    const auto tracks = database->playlists().at(0)->tracks();
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_EQ(tracks[0]->path(),
              "/Volumes/C:/Users/myname/Music/David Guetta/Beautiful People - Single/"
              "David_Guetta,_Sia_-_Beautiful_People_(Extended).mp3");
    EXPECT_NEAR(tracks[0]->cues()[2].length(), 3.779531192, 1e-9);
    EXPECT_EQ(tracks[0]->beatTimes()->size(), 553U);
}
