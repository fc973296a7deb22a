#include "taglib/TagLibStream.h"

#include "support/AudioFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/Hex.h"

#include <gtest/gtest.h>
#include <tfilestream.h>

#include <random>

namespace {

using TagLib::IOStream;

std::string textOf(const TagLib::ByteVector& bytes) {
    return {bytes.data(), bytes.size()};
}

// One random operation, done to a stream and told as a text with what the stream says after it.
std::string step(IOStream& stream, unsigned seed) {
    std::mt19937 random(seed);
    const auto upTo = [&random](long n) {
        return static_cast<long>(random() % (static_cast<unsigned>(n) + 1));
    };
    const TagLib::ByteVector data(static_cast<unsigned>(upTo(random() % 4 == 0 ? 5000 : 40)),
                                  static_cast<char>('a' + upTo(25)));
    const auto start = static_cast<unsigned long>(upTo(stream.length() + 50));
    const auto count = static_cast<unsigned long>(upTo(random() % 4 == 0 ? 4000 : 60));
    std::string said;
    switch (random() % 8) {
        case 0:
            stream.seek(upTo(9000) - 4500, static_cast<IOStream::Position>(upTo(2)));
            break;
        case 1:
            stream.writeBlock(data);
            break;
        case 2:
            stream.insert(data, start, count);
            break;
        case 3:
            stream.insert(data, start, data.size());
            break;
        case 4:
            stream.removeBlock(start, count);
            break;
        case 5:
            stream.truncate(upTo(stream.length() + 100) - 10);
            break;
        default:
            said = textOf(stream.readBlock(count));
    }
    return said + " at " + std::to_string(stream.tell()) + " of " + std::to_string(stream.length());
}

TEST(TagLibStream, behavesAsTagLibsOwn) {
    const TemporaryFolder folder;
    const auto files = FaultyFileSystem::install();
    for (unsigned round = 0; round < 30; ++round) {
        if (round == 15) files->refuseKernelCopies();
        const ZALData content = mpegFrames(static_cast<int>(round));
        const std::string path = folder.write("ours", content);
        const std::string rawPath = folder.write("raw", content);
        const auto ours = zal::TagLibStream::open(path, false);
        {
            TagLib::FileStream raw(rawPath.c_str());
            for (unsigned i = 0; i < 120; ++i) {
                const unsigned seed = round * 1000 + i;
                ASSERT_TRUE(i != 60 || round % 2 == 0 || ours->commit());
                ASSERT_EQ(step(*ours, seed), step(raw, seed)) << "seed " << seed;
            }
        }
        EXPECT_TRUE(round % 2 != 0 || contentsOf(path) == content) << "nothing is written before the commit";
        ASSERT_TRUE(ours->commit());
        EXPECT_EQ(contentsOf(path), contentsOf(rawPath)) << "round " << round;
    }
    FaultyFileSystem::uninstall();
}

}  // namespace
