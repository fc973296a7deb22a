#include "containers/WavVelvetCascadeTagInserter.h"

#include "support/AudioFixtures.h"
#include "support/WavFixtures.h"

#include <gtest/gtest.h>

namespace {

// What it copies, and that it is whole or not at all, is tested with the saves of WAV files.
TEST(WavInserter, aFileThatBecomesShorterIsNotCopied) {
    const TemporaryFolder folder;
    for (const std::uintmax_t length : {50000U, 36U}) {  // within a chunk, and between two
        const auto path = folder.write("a.wav", riffForm({wavFormat(), riffChunk("data", ZALData(90'000))}));
        zal::WavVelvetCascadeTagInserter inserter;
        ASSERT_TRUE(inserter.OpenFile(path));
        ASSERT_TRUE(inserter.OpenOutput(path + "_"));
        std::filesystem::resize_file(path, length);
        inserter.ParseFile();
        EXPECT_TRUE(inserter.failed()) << length;
    }
}

}  // namespace
