#include <zaltag/platform/ZALHost.h>

#include "support/LogCapture.h"

#include <gmock/gmock.h>

namespace {

class Storage final : public ZALCloudStorage {
  public:
    bool isUbiquitousItem(const std::string& path) override { return path.starts_with("/cloud/"); }
    ZALNullableString coordinateReading(const std::string& path, std::string& error) override {
        if (path.ends_with("here.mp3")) return "/local/here.mp3";
        error = "offline";
        return std::nullopt;
    }
};

std::vector<ZALNullableString> resolved(const std::string& path) {
    std::vector<ZALNullableString> calls;
    ZALTagCloudFileResolver::resolveCloudBeforeUsingFileAtUrl(
        path, [&calls](const ZALNullableString& local) { calls.push_back(local); });
    return calls;
}

TEST(CloudFileResolver, callsBackBeforeItReturns) {
    using testing::ElementsAre;
    const LogCapture log;
    EXPECT_THAT(resolved("/cloud/here.mp3"), ElementsAre("/cloud/here.mp3"))
        << "without a storage every file is here";
    ZALHost::shared().setCloudStorage(std::make_shared<Storage>());
    EXPECT_THAT(resolved("/music/a.mp3"), ElementsAre("/music/a.mp3"));
    EXPECT_THAT(resolved("/cloud/here.mp3"), ElementsAre("/local/here.mp3"));
    EXPECT_THAT(resolved("/cloud/gone.mp3"), ElementsAre(std::nullopt));
    ZALHost::shared().setCloudStorage(nullptr);
    EXPECT_THAT(log.lines(),
                ElementsAre("Could not download local file /cloud/gone.mp3 from iCloud: offline"));
}

}  // namespace
