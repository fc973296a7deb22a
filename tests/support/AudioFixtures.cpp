#include "support/AudioFixtures.h"

#include "base/Endian.h"
#include "support/Hex.h"

#include <zaltag/base/ZALTagSyncSafeInteger.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numeric>
#include <stdexcept>

namespace {

// Where syncing a file costs nothing.
std::filesystem::path placeInMemory() {
    std::error_code error;
    const auto space = std::filesystem::space("/dev/shm", error);
    return !error && space.available >= 1U << 30 ? "/dev/shm" : std::filesystem::temp_directory_path();
}

}  // namespace

TemporaryFolder::TemporaryFolder() : TemporaryFolder(placeInMemory()) {}

TemporaryFolder::TemporaryFolder(const std::filesystem::path& where) {
    std::string pattern = (where / "zaltag-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::write(const std::string& name, ZALDataView bytes) const {
    const std::string file = (path_ / name).string();
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + file);
    return file;
}

ZALData contentsOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

ZALData joined(std::initializer_list<ZALData> parts) {
    ZALData out;
    for (const ZALData& part : parts) {
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

ZALData numbered(std::size_t length) {
    ZALData out(length);
    std::iota(out.begin(), out.end(), std::uint8_t{0});
    return out;
}

ZALData u32(std::size_t value, bool littleEndian) {
    zal::ByteWriter out;
    littleEndian ? out.u32le(static_cast<std::uint32_t>(value))
                 : out.u32be(static_cast<std::uint32_t>(value));
    return out.take();
}

ZALData chunkOf(std::string_view id, const ZALData& content, bool littleEndian) {
    return joined({bytesOf(id), u32(content.size(), littleEndian), content, ZALData(content.size() % 2)});
}

ZALData mpegFrames(int count) {
    ZALData out;
    for (int i = 0; i < count; ++i) {
        ZALData frame(417);
        std::copy_n("\xFF\xFB\x90\x64", 4, frame.begin());
        frame[40] = static_cast<std::uint8_t>(i);  // so that a lost or moved frame shows
        out.insert(out.end(), frame.begin(), frame.end());
    }
    return out;
}

ZALData id3Frame(std::string_view id, const ZALData& payload, std::uint16_t flags) {
    ZALData size(4);
    ZALTagSyncSafe4(static_cast<std::uint32_t>(payload.size()), size.data());
    const ZALData flagBytes{static_cast<std::uint8_t>(flags >> 8), static_cast<std::uint8_t>(flags)};
    return joined({bytesOf(id), size, flagBytes, payload});
}

ZALData id3Text(std::string_view id, std::string_view text, std::uint8_t encoding) {
    return id3Frame(id, joined({{encoding}, bytesOf(text)}));
}

ZALData id3Comment(std::string_view language, std::string_view description, std::string_view text) {
    return id3Frame("COMM", joined({{0}, bytesOf(language), bytesOf(description), {0}, bytesOf(text)}));
}

ZALData id3Object(std::string_view description, std::string_view mimeType, const ZALData& data) {
    return id3Frame("GEOB", joined({{0}, bytesOf(mimeType), {0, 0}, bytesOf(description), {0}, data}));
}

ZALData id3Tag(std::initializer_list<ZALData> frames, std::size_t padding) {
    const ZALData body = joined(frames);
    ZALData size(4);
    ZALTagSyncSafe4(static_cast<std::uint32_t>(body.size() + padding), size.data());
    return joined({{'I', 'D', '3', 4, 0, 0}, size, body, ZALData(padding)});
}

ZALData id3v1Tag(std::string_view title, std::string_view artist, std::string_view comment,
                 std::uint8_t genre) {
    ZALData tag(128);
    const auto put = [&tag](std::size_t at, std::string_view text) {
        std::copy(text.begin(), text.end(), tag.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, "TAG");
    put(3, title);
    put(33, artist);
    put(97, comment);
    tag[127] = genre;
    return tag;
}

ZALData mp3Audio(const std::string& path) {
    ZALData bytes = contentsOf(path);
    if (!id3v1Of(path).empty()) bytes.resize(bytes.size() - 128);
    if (bytes.size() < 10 || bytes[0] != 'I') return bytes;
    const std::size_t tag = 10 + ZALTagUnSyncSafe4(bytes.data() + 6);
    return {bytes.begin() + static_cast<std::ptrdiff_t>(std::min(tag, bytes.size())), bytes.end()};
}

ZALData id3v1Of(const std::string& path) {
    const ZALData bytes = contentsOf(path);
    if (bytes.size() < 128) return {};
    const ZALData last(bytes.end() - 128, bytes.end());
    return last[0] == 'T' && last[1] == 'A' && last[2] == 'G' ? last : ZALData();
}

ZALData iffChunk(std::string_view id, const ZALData& content) {
    return chunkOf(id, content, false);
}

ZALData aiffFile(std::initializer_list<ZALData> chunks) {
    // One channel, 100 sample frames of 16 bits, 44100 Hz as an 80-bit number.
    const ZALData common{0, 1, 0, 0, 0, 100, 0, 16, 0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};
    return iffChunk("FORM", joined({bytesOf("AIFF"), iffChunk("COMM", common),
                                    iffChunk("SSND", joined({ZALData(8), numbered(200)})), joined(chunks)}));
}
