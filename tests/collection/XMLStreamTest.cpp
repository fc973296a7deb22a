#include "collection/XMLStream.h"
#include "support/AudioFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

namespace {

struct Ignore final : zal::XMLStream::Reader {
    void startElement(const zal::XMLStream&, const char*, const char* const*) override {}
    void endElement(const zal::XMLStream&) override {}
};

// With every block the parser scans an unfinished attribute from its start: blocks of one size would make its
// cost grow with the square of its length.
TEST(XMLStream, aLongAttributeIsScannedFewTimes) {
    const TemporaryFolder folder;
    const std::string attribute = "<a b='" + std::string(40 << 20, 'x') + "'/>";
    const std::string path =
        folder.write("long.xml", bytesOf("<r>" + attribute + "<a/>" + attribute + "</r>"));
    const auto files = std::make_shared<FaultyFileSystem>();
    std::error_code error;
    const auto handle = files->open(path, false, error);
    Ignore reader;
    EXPECT_EQ(zal::XMLStream(reader).read(*handle), "");
    EXPECT_LE(files->count(FaultyFileSystem::Operation::read), 16);
}

}  // namespace
