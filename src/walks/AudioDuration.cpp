#include <zaltag/walks/ZALAudioDuration.h>

#include "base/Endian.h"
#include "base/Paths.h"
#include "base/Unicode.h"
#include "taglib/TagLibStream.h"
#include "walks/FormWalk.h"
#include "walks/MP3Layout.h"
#include "walks/MP4Walk.h"
#include "walks/MPEGFrames.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace zal {

namespace {

using Duration = std::optional<double>;

ZALData bytesAt(TagLibStream& stream, std::uint64_t position, std::size_t size) {
    ZALData bytes(size);
    bytes.resize(stream.readAt(position, bytes));
    return bytes;
}

bool isText(ZALDataView bytes, std::string_view text) {
    return std::equal(bytes.begin(), bytes.end(), text.begin(), text.end());
}

Duration quotient(double amount, double perSecond) {
    return amount > 0 && perSecond > 0 ? Duration(amount / perSecond) : std::nullopt;
}

// How many frames an encoder's header says that there are; 0 without one.
std::uint32_t framesOf(TagLibStream& stream, const MPEGFrame& first) {
    constexpr std::uint32_t hasFrames = 1;
    const std::uint64_t header = first.position + MPEGFrame::headerSize + first.sideInformation();
    const ZALData bytes = bytesAt(stream, header, 12);
    ByteReader reader(bytes);
    const ZALDataView mark = reader.take(4);
    if (!isText(mark, "Xing") && !isText(mark, "Info")) return 0;
    return (reader.u32be() & hasFrames) != 0 ? reader.u32be() : 0;
}

Duration durationOfMP3(TagLibStream& stream) {
    constexpr int looked = 64;  // frames: they differ by a byte of padding
    const auto first = firstMPEGFrame(stream, endOfTagsInFront(stream));
    if (!first) return std::nullopt;
    if (const std::uint32_t frames = framesOf(stream, *first)) return frames * first->duration();
    MPEGFrame last = *first;
    int count = 1;
    for (; count < looked; ++count) {
        const std::uint64_t next = last.position + last.length;
        const auto frame = firstMPEGFrame(stream, next);
        if (!frame || frame->position != next) break;
        last = *frame;
    }
    const auto end = static_cast<std::uint64_t>(stream.length());
    const auto perFrame = static_cast<double>(last.position + last.length - first->position) / count;
    return quotient(static_cast<double>(end - first->position) / perFrame, 1 / first->duration());
}

const FormChunk* chunkNamed(const FormWalk& walk, std::string_view name) {
    const auto found = std::ranges::find_if(walk.chunks, [&](const FormChunk& one) { return one.is(name); });
    return found == walk.chunks.end() ? nullptr : &*found;
}

Duration durationOfWAV(TagLibStream& stream) {
    const FormWalk walk = walkForm(stream, FormKind::wav);
    const FormChunk* format = chunkNamed(walk, "fmt ");
    const FormChunk* audio = chunkNamed(walk, "data");
    if (format == nullptr || audio == nullptr) return std::nullopt;
    const ZALData bytes = bytesAt(stream, format->content() + 8, 4);
    return quotient(static_cast<double>(audio->size), ByteReader(bytes).u32le());
}

// The rate is a floating-point number of 80 bits.
Duration durationOfAIFF(TagLibStream& stream) {
    const FormWalk walk = walkForm(stream, FormKind::aiff);
    const FormChunk* common = chunkNamed(walk, "COMM");
    if (common == nullptr) return std::nullopt;
    const ZALData bytes = bytesAt(stream, common->content() + 2, 16);
    ByteReader reader(bytes);
    const std::uint32_t frames = reader.u32be();
    reader.skip(2);
    const int exponent = reader.u16be() & 0x7FFF;
    const double mantissa = std::ldexp(reader.u32be(), 32) + reader.u32be();
    return quotient(frames, std::ldexp(mantissa, exponent - 16383 - 63));
}

Duration durationOfFLAC(TagLibStream& stream) {
    const ZALData bytes = bytesAt(stream, endOfTagsInFront(stream), 26);
    ByteReader reader(bytes);
    if (!isText(reader.take(4), "fLaC")) return std::nullopt;
    reader.skip(4 + 10);  // the block's header, and sizes of blocks and frames
    const std::uint64_t high = reader.u32be();
    const std::uint64_t packed = high << 32 | reader.u32be();
    constexpr std::uint64_t samples = (std::uint64_t{1} << 36) - 1;
    return quotient(static_cast<double>(packed & samples), static_cast<double>(packed >> 44));
}

Duration durationOfMP4(TagLibStream& stream) {
    constexpr int mostAtoms = 64;
    const MP4Walk walk = walkMP4(stream);
    const auto movie =
        std::ranges::find_if(walk.atoms, [](const MP4Atom& atom) { return atom.name() == "moov"; });
    if (movie == walk.atoms.end()) return std::nullopt;
    std::uint64_t place = movie->content();
    for (int i = 0; i < mostAtoms && place < movie->end(); ++i) {
        const ZALData bytes = bytesAt(stream, place, 40);
        ByteReader reader(bytes);
        const std::uint32_t length = reader.u32be();
        const bool isHeader = isText(reader.take(4), "mvhd");
        if (isHeader && reader.u8() == 0) {
            reader.skip(3 + 8);
            const std::uint32_t scale = reader.u32be();
            return quotient(reader.u32be(), scale);
        }
        if (isHeader || length < MP4Atom::headerSize) break;
        place += length;
    }
    return std::nullopt;
}

constexpr struct {
    std::string_view extension;
    Duration (*durationOf)(TagLibStream& stream);
} kinds[] = {{"mp3", durationOfMP3},   {"wav", durationOfWAV},   {"aif", durationOfAIFF},
             {"aiff", durationOfAIFF}, {"flac", durationOfFLAC}, {"m4a", durationOfMP4},
             {"mp4", durationOfMP4}};

}  // namespace

}  // namespace zal

std::optional<double> ZALAudioDuration(const std::string& path) {
    const std::string extension = zal::asciiLowercase(std::string(zal::pathExtension(path)));
    for (const auto& kind : zal::kinds) {
        if (kind.extension != extension) continue;
        zal::Failure failure;
        const auto stream = zal::TagLibStream::open(path, true, &failure);
        return stream == nullptr ? std::nullopt : kind.durationOf(*stream);
    }
    return std::nullopt;
}
