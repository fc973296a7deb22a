#include "support/ContainerFixtures.h"

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"

#include <zaltag/serato/ZALBase64.h>

#include <algorithm>

namespace {

constexpr std::size_t chunkSize = 64;

// A reader that stands on the first place of a word; at the end without one.
zal::ByteReader found(ZALDataView file, std::string_view word) {
    zal::ByteReader in(file);
    in.skip(static_cast<std::size_t>(std::search(file.begin(), file.end(), word.begin(), word.end()) -
                                     file.begin()));
    return in;
}

ZALData copied(ZALDataView bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace

ZALData mp4Atom(std::string_view name, const ZALData& content) {
    return joined({u32(8 + content.size()), bytesOf(name), content});
}

ZALData mp4Item(std::string_view name, const std::vector<ZALData>& values, std::uint8_t type) {
    ZALData content;
    for (const ZALData& value : values) {
        content = joined({content, mp4Atom("data", joined({u32(type), u32(0), value}))});
    }
    return mp4Atom(name, content);
}

ZALData mp4Freeform(std::string_view mean, std::string_view name, const std::vector<std::string>& texts) {
    ZALData content = joined(
        {mp4Atom("mean", joined({u32(0), bytesOf(mean)})), mp4Atom("name", joined({u32(0), bytesOf(name)}))});
    for (const std::string& text : texts) {
        content = joined({content, mp4Atom("data", joined({u32(1), u32(0), bytesOf(text)}))});
    }
    return mp4Atom("----", content);
}

ZALData mp4Tag(std::initializer_list<ZALData> items) {
    const ZALData handler = mp4Atom("hdlr", joined({ZALData(8), bytesOf("mdirappl"), ZALData(9)}));
    return mp4Atom("udta", mp4Atom("meta", joined({u32(0), handler, mp4Atom("ilst", joined(items))})));
}

ZALData mp4File(const MP4Content& content) {
    const ZALData type = mp4Atom("ftyp", bytesOf("M4A "));
    const ZALData audio = mp4Atom("mdat", numbered(2 * chunkSize));
    const auto movie = [&content](std::size_t at) {
        ZALData table = joined({u32(0), u32(2)});
        for (const std::size_t place : {at + 8, at + 8 + chunkSize}) {
            table = joined({table, ZALData(content.longTable ? 4 : 0), u32(place)});
        }
        ZALData track = mp4Atom(content.longTable ? "co64" : "stco", table);
        for (const char* around : {"stbl", "minf", "mdia", "trak"}) {
            track = mp4Atom(around, track);
        }
        return mp4Atom("moov", joined({track, content.userData}));
    };
    if (content.audioFirst) return joined({type, audio, movie(type.size()), content.behind});
    return joined({type, movie(type.size() + movie(0).size()), audio, content.behind});
}

ZALData mp4Audio(const std::string& path) {
    const ZALData file = contentsOf(path);
    const bool longTable = found(file, "co64").remaining() > 0;
    zal::ByteReader table = found(file, longTable ? "co64" : "stco");
    table.skip(8);
    ZALData audio;
    for (std::uint32_t i = table.u32be(); i > 0; --i) {
        if (longTable) table.skip(4);
        zal::ByteReader in(file);
        in.skip(table.u32be());
        audio = joined({audio, copied(in.take(chunkSize))});
    }
    return audio;
}

std::string seratoText(const ZALData& payload) {
    const ZALData text =
        *dataByEncodingBase64(joined({bytesOf("application/octet-stream"), ZALData(18), payload}));
    return {text.begin(), text.end()};
}

ZALData flacBlock(std::uint8_t type, const ZALData& content) {
    ZALData header = u32(content.size());
    header[0] = type;
    return joined({header, content});
}

ZALData flacComment(const std::vector<std::string>& fields) {
    ZALData content = joined({u32(4, true), bytesOf("test"), u32(fields.size(), true)});
    for (const std::string& field : fields) {
        content = joined({content, u32(field.size(), true), bytesOf(field)});
    }
    return flacBlock(4, content);
}

ZALData flacFile(std::initializer_list<ZALData> blocks) {
    return joined({bytesOf("fLaC"), flacBlock(0, ZALData(34)), joined(blocks), flacBlock(0x81, ZALData(20)),
                   numbered(100)});
}

ZALData flacAudio(const std::string& path) {
    const ZALData file = contentsOf(path);
    zal::ByteReader in = found(file, "fLaC");
    in.skip(4);
    for (bool last = false; !last && in.remaining() > 0;) {
        const std::uint32_t header = in.u32be();
        last = (header >> 31) != 0;
        in.skip(header & 0xFFFFFF);
    }
    return copied(in.take(in.remaining()));
}
