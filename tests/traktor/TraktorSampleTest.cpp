// A collection as the program itself wrote it, when the tests are given one.

#include "base/Numbers.h"
#include "platform/XML.h"
#include "support/CollectionFixtures.h"

#include <zaltag/traktor/ZALTraktorDatabase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {

using Attributes = std::vector<std::pair<std::string, std::string>>;

struct Element {
    std::string name;
    Attributes attributes;
    std::vector<Element> children;
    bool operator==(const Element&) const = default;

    std::string& operator[](const std::string& attribute) {
        return std::find_if(attributes.begin(), attributes.end(),
                            [&](const auto& one) { return one.first == attribute; })
            ->second;
    }
};

Element treeOf(const zal::XMLElement& from) {
    Element made{std::string(from.name()), from.attributes(), {}};
    for (auto child = from.firstChild(); child; child = child.next()) {
        made.children.push_back(treeOf(child));
    }
    return made;
}

Element treeOf(const std::string& path) {
    zal::XMLReadError error;
    return treeOf(zal::XMLDocument::read(path, error)->root("NML"));
}

// What a save must do to an entry whose audio file is missing: the host's clock, less an hour; cues by slot.
void saveEntry(Element& entry) {
    entry["MODIFIED_DATE"] = "2023/11/14";
    entry["MODIFIED_TIME"] = "76400";
    const auto slot = [](const Element& element) {
        Element copy = element;
        return element.name == "CUE_V2" ? zal::integerValue(copy["HOTCUE"]) : -2;
    };
    std::stable_sort(entry.children.begin(), entry.children.end(),
                     [&](const Element& a, const Element& b) { return slot(a) < slot(b); });
    for (Element& child : entry.children) {
        if (child.name == "CUE_V2" && child["HOTCUE"] == "-1") child["HOTCUE"] = "0";
    }
}

}  // namespace

TEST(TraktorSample, comesOutOfASaveWithTheRequiredChangesAlone) {
    const char* samples = std::getenv("ZALTAG_SAMPLES");
    if (samples == nullptr) GTEST_SKIP() << "ZALTAG_SAMPLES names no folder of real files";
    const CollectionHost host;
    const std::string path = host.file("collection.nml", contentOf(samples + std::string("/test.nml")));
    Element expected = treeOf(path);
    ZALTraktorDatabase::setUserTraktorDatabaseFileURL(path);
    const auto database = ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL(path);
    ASSERT_TRUE(database->save());
    ASSERT_EQ(expected.children[1].children.size(), 2U);
    for (Element& entry : expected.children[1].children) {
        saveEntry(entry);
    }
    EXPECT_EQ(treeOf(path), expected);

    const auto tracks = database->playlists().at(0)->tracks();
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_EQ(tracks[0]->path(),
              "/Volumes/C:/Users/myname/Music/David Guetta/Beautiful People - Single/"
              "David_Guetta,_Sia_-_Beautiful_People_(Extended).mp3");
    EXPECT_NEAR(tracks[0]->cues()[2].length(), 3.779531192, 1e-9);
    EXPECT_EQ(tracks[0]->beatTimes()->size(), 553U);
}
