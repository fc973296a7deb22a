#include "support/AudioFixtures.h"
#include "support/FaultInjection.h"
#include "support/FaultyFileSystem.h"
#include "support/LogCapture.h"
#include "taglib/TagLibStream.h"

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
};

TEST_F(SaveFaults, everyFailureOrKillLeavesTheOldFileOrTheNewOne) {
    for (const auto& [mode, least] :
         {std::pair(ZALSaveMode::safe, 1562), std::pair(ZALSaveMode::inPlace, 757)}) {
        ZALHost::shared().setSaveMode(mode);
        int points = 0;
        for (const SaveCase& row : saveCases()) {
            for (const Fault fault : {Fault::failure, Fault::kill}) {
                // A kill in a save in place may tear the file: that is what the mode is.
                if (fault == Fault::kill && mode == ZALSaveMode::inPlace) continue;
                const FaultResult result = tryFaults(row, fault);
                EXPECT_THAT(result.damage, IsEmpty());
                EXPECT_GE(result.points, 8) << row.name;
                points += result.points;
            }
        }
        EXPECT_GE(points, least) << "is every row still tried?";
        std::cout << (mode == ZALSaveMode::safe ? "safe: " : "in place: ") << points << " faults tried\n";
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
