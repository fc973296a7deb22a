#include <zaltag/walks/ZALFirstFrame.h>

#include "base/Endian.h"
#include "base/Paths.h"
#include "base/Unicode.h"
#include "walks/FirstFrame.h"
#include "walks/MP3Layout.h"
#include "walks/MPEGFrames.h"

#include <array>
#include <string_view>
#include <vector>

namespace {

// Places in the header that "Xing" or "Info" begins.
constexpr std::size_t encoderAt = 120;
constexpr std::size_t checksumAt = 154;
constexpr std::size_t wholeSize = checksumAt + 2;

std::string_view textAt(ZALDataView bytes, std::size_t at, std::size_t size) {
    if (at + size > bytes.size()) return {};
    return {reinterpret_cast<const char*>(bytes.data()) + at, size};
}

// CRC-16 with the polynomial 8005, the lowest bit first, from 0 on.
std::uint16_t checksumOf(ZALDataView bytes) {
    std::uint16_t sum = 0;
    for (const std::uint8_t byte : bytes) {
        sum = static_cast<std::uint16_t>(sum ^ byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = static_cast<std::uint16_t>((sum >> 1) ^ ((sum & 1) != 0 ? 0xA001 : 0));
        }
    }
    return sum;
}

ZALFirstFrame::Case caseOf(ZALDataView frame, std::size_t headerAt) {
    using Case = ZALFirstFrame::Case;
    const std::string_view mark = textAt(frame, headerAt, 4);
    if (mark != "Xing" && mark != "Info") return Case::a;
    if (textAt(frame, headerAt + encoderAt, 4) != "LAME" || headerAt + wholeSize > frame.size())
        return Case::b;
    const std::uint16_t checksum = zal::ByteReader(frame.subspan(headerAt + checksumAt)).u16be();
    const bool isRight = checksum != 0 && checksum == checksumOf(frame.first(headerAt + checksumAt));
    return isRight ? Case::d : Case::c;
}

}  // namespace

std::optional<ZALFirstFrame> zal::firstFrameOf(TagLibStream& stream) {
    const auto frame = firstMPEGFrame(stream, endOfTagsInFront(stream));
    if (!frame) return std::nullopt;
    ZALFirstFrame first;
    first.duration = frame->duration();
    if (frame->layer != 3) return first;
    std::vector<std::uint8_t> bytes(frame->length);
    bytes.resize(stream.readAt(frame->position, bytes));
    first.kind = caseOf(bytes, MPEGFrame::headerSize + frame->sideInformation());
    return first;
}

std::optional<ZALFirstFrame> ZALFirstFrame::ofFile(const std::string& path) {
    if (zal::asciiLowercase(std::string(zal::pathExtension(path))) != "mp3") return std::nullopt;
    zal::Failure failure;
    const auto stream = zal::TagLibStream::open(path, true, &failure);
    if (stream == nullptr) return std::nullopt;
    return zal::firstFrameOf(*stream);
}
