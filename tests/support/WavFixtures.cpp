#include "support/WavFixtures.h"

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"

#include <stdexcept>

namespace {

std::vector<std::pair<std::string, ZALData>> chunksOf(ZALDataView file) {
    zal::ByteReader in(file);
    const auto text = [&in] {
        const ZALDataView bytes = in.take(4);
        return std::string(bytes.begin(), bytes.end());
    };
    const bool isRIFF = text() == "RIFF";
    const auto size = [&] { return isRIFF ? in.u32le() : in.u32be(); };
    if (size() != file.size() - 8) throw std::runtime_error("no file of chunks");
    text();
    std::vector<std::pair<std::string, ZALData>> chunks;
    while (in.remaining() > 0) {
        const std::string id = text();
        const std::uint32_t length = size();
        const ZALDataView content = in.take(length);
        in.skip(length % 2);
        if (in.failed()) throw std::runtime_error("a damaged chunk " + id);
        chunks.emplace_back(id, ZALData(content.begin(), content.end()));
    }
    return chunks;
}

}  // namespace

ZALData riffChunk(std::string_view id, const ZALData& content) {
    return chunkOf(id, content, true);
}

ZALData riffForm(std::initializer_list<ZALData> chunks) {
    return riffChunk("RIFF", joined({bytesOf("WAVE"), joined(chunks)}));
}

ZALData wavFormat() {
    return riffChunk("fmt ", fromHex("0100 0100 44AC0000 88580100 0200 1000"));
}

ZALData wavAudio() {
    return riffChunk("data", numbered(200));
}

ZALData wavFile(std::initializer_list<ZALData> chunks) {
    return riffForm({wavFormat(), wavAudio(), joined(chunks)});
}

ZALData infoList(std::initializer_list<std::pair<std::string_view, std::string_view>> fields) {
    ZALData list = bytesOf("INFO");
    for (const auto& [id, text] : fields) {
        list = joined({list, riffChunk(id, joined({bytesOf(text), {0}}))});
    }
    return riffChunk("LIST", list);
}

std::string idsOf(ZALDataView file) {
    std::string ids;
    for (const auto& [id, content] : chunksOf(file)) {
        ids += (ids.empty() ? "" : " ") + id;
    }
    return ids;
}

ZALData contentOf(ZALDataView file, std::string_view id) {
    ZALData found;
    int count = 0;
    for (const auto& [name, content] : chunksOf(file)) {
        if (name != id) continue;
        found = content;
        ++count;
    }
    if (count != 1) throw std::runtime_error("not one chunk " + std::string(id));
    return found;
}
