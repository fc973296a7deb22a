#include "id3/TagLibStream.h"
#include "support/AudioFixtures.h"
#include "support/FaultInjection.h"
#include "support/FaultyFileSystem.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <id3v2tag.h>
#include <mpegfile.h>

#include <iostream>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class SaveFaults : public testing::Test {
  protected:
    ~SaveFaults() override { ZALHost::shared().setSaveMode(ZALSaveMode::safe); }

    int pointsOf(const FaultResult& result) {
        EXPECT_THAT(result.damage, IsEmpty());
        return result.points;
    }
};

TEST_F(SaveFaults, everyFailingOperationLeavesTheOldFileOrTheNewOne) {
    for (const ZALSaveMode mode : {ZALSaveMode::safe, ZALSaveMode::inPlace}) {
        ZALHost::shared().setSaveMode(mode);
        int points = 0;
        for (const SaveCase& row : saveCases()) {
            points += pointsOf(tryFaults(row));
        }
        EXPECT_GT(points, 60);
        std::cout << (mode == ZALSaveMode::safe ? "safe" : "in place") << ": " << points
                  << " failing operations tried\n";
    }
}

TEST_F(SaveFaults, everyFailingOrKillingSystemCallLeavesTheOldFileOrTheNewOne) {
    if (!ZALTAG_PRELOADS) GTEST_SKIP() << "nothing can be preloaded under a sanitizer";
    for (const OutsideFault fault : {OutsideFault::failing, OutsideFault::killing}) {
        int points = 0;
        for (const SaveCase& row : saveCases()) {
            points += pointsOf(tryOutsideFaults(row, fault));
        }
        EXPECT_GT(points, 30);
        std::cout << points << (fault == OutsideFault::failing ? " failing" : " killing")
                  << " system calls tried\n";
    }
}

// A tag that was read short would be saved without what was not seen.
TEST_F(SaveFaults, whatCouldNotBeReadIsNotSaved) {
    const TemporaryFolder folder;
    const ZALData content = joined({id3Tag({id3Text("TIT2", "old")}), mpegFrames()});
    const std::string path = folder.write("song.mp3", content);
    const LogCapture log;
    const auto files = FaultyFileSystem::install();
    files->failAll(FaultyFileSystem::Operation::read);
    const auto stream = zal::TagLibStream::open(path, false);
    TagLib::MPEG::File file(stream.get(), TagLib::ID3v2::FrameFactory::instance(), false);
    files->failAll(FaultyFileSystem::Operation::read, false);
    file.ID3v2Tag(true)->setTitle("new");
    EXPECT_FALSE(file.save() && stream->commit());
    EXPECT_EQ(contentsOf(path), content);
    EXPECT_THAT(log.lines(), testing::ElementsAre(HasSubstr("could not be read whole: Input/output error")));
    FaultyFileSystem::uninstall();
}

}  // namespace
