#include "support/AudioFixtures.h"
#include "support/FaultInjection.h"
#include "support/FaultyFileSystem.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <iostream>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SaveFaults : public testing::Test {
  protected:
    ~SaveFaults() override { ZALHost::shared().setSaveMode(ZALSaveMode::safe); }

    int pointsOf(const FaultResult& result) {
        EXPECT_THAT(result.damage, IsEmpty());
        return result.points;
    }
};

ZALData saved(const SaveCase& row) {
    const TemporaryFolder folder;
    const std::string path = folder.write("song.mp3", row.file());
    EXPECT_TRUE(row.openAndEdit(path)()) << row.name;
    return contentsOf(path);
}

TEST_F(SaveFaults, aSaveWritesWhatTagLibItselfWrites) {
    for (std::size_t i = 0; i < rawSaveCases().size(); ++i) {
        EXPECT_EQ(saved(saveCases()[i]), saved(rawSaveCases()[i])) << saveCases()[i].name;
    }
}

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

TEST_F(SaveFaults, theSameTestFindsTheDamageOfSavingWithoutAll) {
    if (!ZALTAG_PRELOADS) GTEST_SKIP() << "nothing can be preloaded under a sanitizer";
    for (const OutsideFault fault : {OutsideFault::failing, OutsideFault::killing}) {
        for (const SaveCase& row : rawSaveCases()) {
            const FaultResult result = tryOutsideFaults(row, fault);
            std::cout << row.name << (fault == OutsideFault::failing ? ", failing: " : ", killing: ")
                      << result.damage.size() << " promises broken at " << result.points << " points\n";
            // One short write, before or after which nothing is lost.
            if (row.name == "raw in place.mp3") continue;
            EXPECT_THAT(result.damage, Not(IsEmpty())) << row.name;
        }
    }
}

// A tag that was read short would be saved without what was not seen.
TEST_F(SaveFaults, whatCouldNotBeReadIsNotSaved) {
    const SaveCase& row = saveCases().front();
    const TemporaryFolder folder;
    const std::string path = folder.write("song.mp3", row.file());
    const LogCapture log;
    const auto files = FaultyFileSystem::install();
    files->failAll(FaultyFileSystem::Operation::read);
    const auto save = row.openAndEdit(path);
    files->failAll(FaultyFileSystem::Operation::read, false);
    ASSERT_TRUE(save);
    EXPECT_FALSE(save());
    EXPECT_EQ(contentsOf(path), row.file());
    EXPECT_THAT(log.lines(), testing::ElementsAre(HasSubstr("could not be read whole: Input/output error")));
    EXPECT_TRUE(row.openAndEdit(path)()) << "opened again it saves";
    FaultyFileSystem::uninstall();
}

}  // namespace
