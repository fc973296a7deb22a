// Collections before and after a save, as the files of golden/ have them: the mode, requests (a kind, a path,
// cue points), then the file, what becomes of it, and the import file if there is one. Without requests the
// database itself saves.

#include "support/CollectionPrograms.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

struct Golden {
    std::vector<std::string> commands;
    std::map<std::string, std::string> files;  // "before", "after", "import"
};

Golden goldenOf(const std::string& path) {
    Golden golden;
    std::string* file = nullptr;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("--- ")) {
            file = &golden.files[line.substr(4)];
        } else if (file != nullptr) {
            *file += line + "\n";
        } else {
            golden.commands.push_back(line);
        }
    }
    return golden;
}

void request(ZALCollectionQueue& queue, const std::string& command) {
    std::istringstream words(command);
    std::string kind, path;
    words >> kind >> path;
    std::vector<ZALTagCuePoint> cuePoints;
    for (std::string cue; words >> cue;) {
        const auto equals = cue.find('=');
        cuePoints.push_back(ZALTagCuePoint(std::stod(cue), ZALNullableString(cue.substr(equals + 1))));
    }
    queue.setCuePoints(cuePoints, path,
                       kind == "hot"      ? ZALCueKind::hot
                       : kind == "memory" ? ZALCueKind::memory
                                          : ZALCueKind::all);
}

class GoldenCollections : public testing::Test, protected CollectionHost {
  protected:
    GoldenCollections() {
        host->setBootVolumeName("Disk");
        setenv("TZ", "CET-1", 1);
        clock->advance(7);  // no other test stamps this second, in another zone
    }
    ~GoldenCollections() override { unsetenv("TZ"); }

    void run(const std::string& name) {
        const Golden golden = goldenOf(ZALTAG_GOLDEN + name);
        host->setCollectionSaveMode(golden.commands[0] == "every" ? ZALCollectionSaveMode::everyTrackWithCues
                                                                  : ZALCollectionSaveMode::changedTracks);
        const LogCapture log;
        const std::string path = file(name, golden.files.at("before"));
        const CollectionKind& kind = collectionKinds()[name.starts_with("traktor")];
        const auto database = kind.open(path);
        const auto queue = kind.queue(database);
        for (std::size_t i = 1; i < golden.commands.size(); ++i) {
            request(*queue, golden.commands[i]);
        }
        EXPECT_TRUE(golden.commands.size() > 1 ? saved(*queue).success : database->save());
        EXPECT_EQ(contentOf(path), golden.files.at("after"));
        const std::string import = root() + "/rekordbox_zalcues_001.xml";
        EXPECT_EQ(contentOf(import), golden.files.contains("import") ? golden.files.at("import") : "");
        std::filesystem::remove(import);
    }
};

}  // namespace

TEST_F(GoldenCollections, areSavedAsTheFilesSay) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ZALTAG_GOLDEN)) {
        SCOPED_TRACE(entry.path().filename().string());
        run(entry.path().filename().string());
        ++count;
    }
    EXPECT_GE(count, 9) << "are the files still there?";
}
