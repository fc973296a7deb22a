#include "support/ContainerFixtures.h"

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"

#include <algorithm>

namespace {

constexpr std::size_t chunkSize = 64;

ZALData u32(std::size_t value) {
    ZALData out(4);
    for (std::uint8_t& byte : out) {
        byte = static_cast<std::uint8_t>(value >> 24);
        value <<= 8;
    }
    return out;
}

ZALData u64(std::size_t value) {
    return joined({u32(value >> 32), u32(value)});
}

ZALData sound() {
    ZALData out(2 * chunkSize);
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = static_cast<std::uint8_t>(i);
    }
    return out;
}

// One track of 16-bit PCM at 44100 Hz in two chunks.
ZALData movie(const ZALData& chunkTable, const ZALData& userData) {
    const ZALData matrix =
        fromHex("00010000 00000000 00000000 00000000 00010000 00000000 00000000 00000000 40000000");
    const ZALData duration = u32(chunkSize);  // samples: two bytes each, two chunks
    const ZALData rate = u32(44100);
    const ZALData header = mp4Atom("mvhd", joined({ZALData(12), rate, duration, fromHex("00010000 0100"),
                                                   ZALData(10), matrix, ZALData(24), u32(2)}));
    const ZALData track = mp4Atom("tkhd", joined({u32(7), ZALData(8), u32(1), ZALData(4), duration,
                                                  ZALData(12), fromHex("0100 0000"), matrix, ZALData(8)}));
    const ZALData media = mp4Atom("mdhd", joined({ZALData(12), rate, duration, fromHex("55C4 0000")}));
    const ZALData handler = mp4Atom("hdlr", joined({ZALData(8), bytesOf("soun"), ZALData(13)}));
    const ZALData entry = mp4Atom("sowt", joined({ZALData(7),
                                                  {1},
                                                  ZALData(8),
                                                  fromHex("0001 0010 0000 0000 AC44 0000"),
                                                  mp4Atom("chan", ZALData(4))}));
    const ZALData samples =
        mp4Atom("stbl", joined({mp4Atom("stsd", joined({u32(0), u32(1), entry})),
                                mp4Atom("stts", joined({u32(0), u32(1), u32(chunkSize), u32(1)})),
                                mp4Atom("stsc", joined({u32(0), u32(1), u32(1), u32(chunkSize / 2), u32(1)})),
                                mp4Atom("stsz", joined({u32(0), u32(2), u32(chunkSize)})), chunkTable}));
    const ZALData information = mp4Atom(
        "minf", joined({mp4Atom("smhd", ZALData(8)),
                        mp4Atom("dinf", mp4Atom("dref", joined({u32(0), u32(1), mp4Atom("url ", u32(1))}))),
                        samples}));
    return mp4Atom(
        "moov",
        joined({header,
                mp4Atom("trak", joined({track, mp4Atom("mdia", joined({media, handler, information}))})),
                userData}));
}

// The check value that a FLAC frame ends its header, and itself, with.
template <typename Value>
Value checkValue(const ZALData& bytes, Value polynomial) {
    constexpr unsigned top = 8 * sizeof(Value) - 1;
    unsigned value = 0;
    for (const std::uint8_t byte : bytes) {
        value ^= static_cast<unsigned>(byte) << (top - 7);
        for (int bit = 0; bit < 8; ++bit) {
            value = (value << 1) ^ ((value >> top & 1) != 0 ? polynomial : 0U);
        }
    }
    return static_cast<Value>(value);
}

// 192 samples of one and the same value.
ZALData flacFrame(std::uint8_t number) {
    zal::ByteWriter out;
    out.bytes(joined({fromHex("FFF81908"), {number}}));
    out.u8(checkValue<std::uint8_t>(out.data(), 0x07));
    out.bytes({{0, 0, number}});
    out.u16be(checkValue<std::uint16_t>(out.data(), 0x8005));
    return out.take();
}

}  // namespace

ZALData mp4Atom(std::string_view name, const ZALData& content) {
    return joined({u32(8 + content.size()), bytesOf(name), content});
}

ZALData mp4Item(std::string_view name, std::initializer_list<ZALData> values, std::uint8_t type) {
    ZALData content;
    for (const ZALData& value : values) {
        content = joined({content, mp4Atom("data", joined({{0, 0, 0, type}, u32(0), value}))});
    }
    return mp4Atom(name, content);
}

ZALData mp4Freeform(std::string_view mean, std::string_view name,
                    std::initializer_list<std::string_view> texts) {
    ZALData content = joined(
        {mp4Atom("mean", joined({u32(0), bytesOf(mean)})), mp4Atom("name", joined({u32(0), bytesOf(name)}))});
    for (const std::string_view text : texts) {
        content = joined({content, mp4Atom("data", joined({u32(1), u32(0), bytesOf(text)}))});
    }
    return mp4Atom("----", content);
}

ZALData mp4Tag(std::initializer_list<ZALData> items) {
    const ZALData handler = mp4Atom("hdlr", joined({ZALData(8), bytesOf("mdirappl"), ZALData(9)}));
    return mp4Atom("udta", mp4Atom("meta", joined({u32(0), handler, mp4Atom("ilst", joined(items))})));
}

ZALData mp4File(const MP4Content& content) {
    const ZALData type = mp4Atom("ftyp", joined({bytesOf("M4A "), u32(0), bytesOf("M4A mp42")}));
    const ZALData audio = mp4Atom("mdat", sound());
    const auto movieWithAudioAt = [&content](std::size_t at) {
        const ZALData head = joined({u32(0), u32(2)});
        const ZALData table = content.longTable
                                  ? mp4Atom("co64", joined({head, u64(at + 8), u64(at + 8 + chunkSize)}))
                                  : mp4Atom("stco", joined({head, u32(at + 8), u32(at + 8 + chunkSize)}));
        return movie(table, content.userData);
    };
    if (content.audioFirst) return joined({type, audio, movieWithAudioAt(type.size()), content.behind});
    const std::size_t before = type.size() + movieWithAudioAt(0).size();
    return joined({type, movieWithAudioAt(before), audio, content.behind});
}

ZALData mp4Audio(const std::string& path) {
    const ZALData file = contentsOf(path);
    for (const std::string_view name : {"stco", "co64"}) {
        const auto found = std::search(file.begin(), file.end(), name.begin(), name.end());
        if (found == file.end()) continue;
        zal::ByteReader table({found + 8, file.end()});
        ZALData audio;
        for (std::uint32_t i = table.u32be(); i > 0; --i) {
            if (name == "co64") table.skip(4);
            zal::ByteReader in(file);
            in.skip(table.u32be());
            const ZALDataView chunk = in.take(chunkSize);
            audio.insert(audio.end(), chunk.begin(), chunk.end());
        }
        return audio;
    }
    return {};
}

ZALData flacBlock(std::uint8_t type, const ZALData& content) {
    ZALData header = u32(content.size());
    header[0] = type;
    return joined({header, content});
}

ZALData flacComment(const std::vector<std::string_view>& fields) {
    const auto little = [](std::size_t number) {
        ZALData out = u32(number);
        std::reverse(out.begin(), out.end());
        return out;
    };
    ZALData content = joined({little(4), bytesOf("test"), little(fields.size())});
    for (const std::string_view field : fields) {
        content = joined({content, little(field.size()), bytesOf(field)});
    }
    return flacBlock(4, content);
}

ZALData flacFile(std::initializer_list<ZALData> blocks) {
    // Blocks of 192 samples, 44100 Hz, one channel, 16 bits, 576 samples, no check sum.
    const ZALData information = joined({fromHex("00C000C0 000000 000000 0AC440F0 00000240"), ZALData(16)});
    return joined({bytesOf("fLaC"), flacBlock(0, information), joined(blocks), flacBlock(0x81, ZALData(20)),
                   flacFrame(0), flacFrame(1), flacFrame(2)});
}

ZALData flacAudio(const std::string& path) {
    const ZALData file = contentsOf(path);
    const std::string_view start = "fLaC";
    const auto found = std::search(file.begin(), file.end(), start.begin(), start.end());
    zal::ByteReader in({found, file.end()});
    in.skip(4);
    for (bool last = false; !last && in.remaining() > 0;) {
        const std::uint32_t header = in.u32be();
        last = (header >> 31) != 0;
        in.skip(header & 0xFFFFFF);
    }
    const ZALDataView audio = in.take(in.remaining());
    return {audio.begin(), audio.end()};
}
