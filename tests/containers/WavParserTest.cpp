#include "containers/WavVelvetCascadeTagInserter.h"

#include "support/AudioFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/Hex.h"
#include "support/WavFixtures.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

ZALData withByte(ZALData bytes, std::size_t at, std::uint8_t value) {
    bytes.at(at) = value;
    return bytes;
}

// What the inserter makes of a file; null unless it says that it is complete.
std::optional<ZALData> rewritten(const ZALData& file, std::string_view payload) {
    const TemporaryFolder folder;
    const std::string out = folder.write("a.wav_", bytesOf("what stood there before, and longer than all"));
    zal::WavVelvetCascadeTagInserter inserter;
    EXPECT_TRUE(inserter.OpenFile(folder.write("a.wav", file)) && inserter.OpenOutput(out));
    inserter.SetPayload(bytesOf(payload));
    inserter.ParseFile();
    return inserter.done() && !inserter.failed() ? std::optional(contentsOf(out)) : std::nullopt;
}

TEST(WavInserter, copiesAllChunksButTheOldRecords) {
    const ZALData odd = riffChunk("data", ZALData(20'001, 7));
    const ZALData list = infoList({{"INAM", "odd"}});
    const ZALData old = riffChunk("VCAS", bytesOf("old"));
    const ZALData head = joined({wavFormat(), odd});
    const ZALData unpadded = riffForm({wavFormat(), ZALData(odd.begin(), odd.end() - 1), list});
    const ZALData after = riffForm({head, riffChunk("VCAS", bytesOf("abcd"))});
    const ZALData listed = riffForm({head, list, riffChunk("VCAS", bytesOf("abcd"))});
    const struct {
        const char* what;
        ZALData file;
        ZALData expected;
        const char* payload = "abcd";
    } rows[] = {
        {"an odd payload: the size counts its pad byte", riffForm({head, list}),
         riffForm({head, list, riffChunk("VCAS", bytesOf(std::string("abcde\0", 6)))}), "abcde"},
        {"an empty one", riffForm({head, list}), riffForm({head, list, riffChunk("VCAS", {})}), ""},
        {"old records anywhere", riffForm({old, head, old, list, riffChunk("VCAS", bytesOf("longer"))}),
         listed},
        {"a list without a type", riffForm({head, riffChunk("LIST", bytesOf("INF"))}), after},
        {"a damaged id ends the copy", riffForm({head, riffChunk(std::string("LI\0T", 4), {}), list}), after},
        {"so does an id with a sign", riffForm({head, riffChunk("_PMX", {}), list}), after},
        {"and a chunk longer than the form", riffForm({head, withByte(list, 7, 1), list}), after},
        {"and a chunk at an odd position", unpadded, after},
        {"what lies behind the form", joined({riffForm({head}), bytesOf("TAG")}), after},
    };
    for (const bool kernel : {true, false}) {
        if (!kernel) FaultyFileSystem::install()->refuseKernelCopies();
        for (const auto& row : rows) {
            EXPECT_EQ(rewritten(row.file, row.payload), row.expected) << row.what;
        }
        FaultyFileSystem::uninstall();
    }
}

TEST(WavInserter, isDoneOnlyWithWhatItCouldCopy) {
    EXPECT_EQ(rewritten(withByte(wavFile(), 0, 'X'), "abcd"), std::nullopt);
    EXPECT_EQ(rewritten(withByte(wavFile(), 8, 'X'), "abcd"), std::nullopt);
    using Operation = FaultyFileSystem::Operation;
    for (const auto& [operation, kernel] :
         {std::pair(Operation::write, true), std::pair(Operation::copy, true),
          std::pair(Operation::write, false)}) {
        const auto files = FaultyFileSystem::install();
        if (!kernel) files->refuseKernelCopies();
        files->failAll(operation);
        EXPECT_EQ(rewritten(riffForm({wavFormat(), riffChunk("data", ZALData(20'000))}), "abcd"),
                  std::nullopt);
        FaultyFileSystem::uninstall();
    }
}

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
