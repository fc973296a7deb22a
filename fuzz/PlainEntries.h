#pragma once

#include <zaltag/base/ZALData.h>

#include "base/Endian.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <vector>

// What a save must leave as it is, found by readers so plain that they cannot be wrong: each stops at the
// first thing that could be read in another way. They share nothing with the library's own.

inline std::string_view textOf(ZALDataView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Frames of version 2.4, without flags and shorter than 128 bytes.
inline void addFrames(std::vector<ZALDataView>& entries, ZALDataView tag) {
    using namespace std::string_view_literals;
    if (!textOf(tag).starts_with("ID3\4\0\0"sv) || tag.size() < 10) return;
    const auto isLong = [](std::uint8_t octet) { return octet > 127; };
    if (std::ranges::any_of(tag.subspan(6, 4), isLong)) return;
    const std::size_t end =
        10U + (std::size_t{tag[6]} << 21 | std::size_t{tag[7]} << 14 | std::size_t{tag[8]} << 7 | tag[9]);
    for (std::size_t at = 10; end <= tag.size() && at + 11 <= end;) {
        const ZALDataView head = tag.subspan(at, 10);
        const auto isCapital = [](std::uint8_t c) { return c >= 'A' && c <= 'Z'; };
        const std::uint32_t size = zal::ByteReader(head.subspan(4)).u32be();
        const bool isPlain = std::ranges::all_of(head.first(4), isCapital) && head[8] == 0 && head[9] == 0;
        if (!isPlain || size == 0 || size > 127 || at + 10 + size > end) return;
        entries.push_back(tag.subspan(at, 10 + size));
        at += 10 + size;
    }
}

/// What the first atom of a name holds; empty without one.
inline ZALDataView atomIn(ZALDataView around, std::string_view name) {
    while (around.size() >= 8) {
        const std::uint32_t size = zal::ByteReader(around).u32be();
        if (size < 8 || size > around.size()) return {};
        if (textOf(around.subspan(4, 4)) == name) return around.subspan(8, size - 8);
        around = around.subspan(size);
    }
    return {};
}

/// The atoms in the list of items, where each length is right on the way there.
inline void addItems(std::vector<ZALDataView>& entries, ZALDataView file) {
    const ZALDataView meta = atomIn(atomIn(atomIn(file, "moov"), "udta"), "meta");
    ZALDataView list = meta.size() < 4 ? meta : atomIn(meta.subspan(4), "ilst");
    while (list.size() >= 8) {
        const std::uint32_t size = zal::ByteReader(list).u32be();
        if (size < 8 || size > list.size()) return;
        entries.push_back(list.first(size));
        list = list.subspan(size);
    }
}

/// Blocks of a FLAC file but for padding, and the fields of its comments.
inline void addBlocks(std::vector<ZALDataView>& entries, ZALDataView file) {
    for (std::size_t at = 4; textOf(file).starts_with("fLaC") && at + 4 <= file.size();) {
        const std::size_t size = zal::ByteReader(file.subspan(at)).u32be() & 0xFFFFFF;
        const unsigned type = file[at] & 0x7FU;
        if (size > file.size() - at - 4) return;
        const ZALDataView content = file.subspan(at + 4, size);
        if (type != 1 && type != 4 && type != 6) entries.push_back(content);
        zal::ByteReader reader(content);
        reader.skip(type == 4 ? reader.u32le() : 0);
        for (std::uint32_t count = type == 4 ? reader.u32le() : 0; count > 0 && !reader.failed(); --count) {
            const ZALDataView field = reader.take(reader.u32le());
            if (!reader.failed()) entries.push_back(field);
        }
        if ((file[at] & 0x80U) != 0) return;
        at += 4 + size;
    }
}

/// Chunks that are no tags, and the frames of the first that is one.
inline void addChunks(std::vector<ZALDataView>& entries, ZALDataView file, bool isBigEndian) {
    bool hasTag = false;
    for (std::size_t at = 12; at + 8 <= file.size();) {
        zal::ByteReader reader(file.subspan(at + 4));
        const std::size_t size = isBigEndian ? reader.u32be() : reader.u32le();
        const std::string_view id = textOf(file.subspan(at, 4));
        if (size > file.size() - at - 8) return;
        const ZALDataView content = file.subspan(at + 8, size);
        const bool isID3 = id == "ID3 " || id == "id3 ";
        if (isID3 && !hasTag) addFrames(entries, content);
        if (!isID3 && id != "LIST" && id != "VCAS") entries.push_back(content);
        hasTag = hasTag || isID3;
        at += 8 + size + size % 2;
    }
}

inline std::string uppercase(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
    return out;
}

/// What the targets set: frames, items and fields.
inline const std::string namesThatAreSet =
    "TIT2 COMM TKEY TIT1 GRP1 TBPM GEOB APIC TCON \251NAM \251CMT \251GRP TMPO COVR ---- TITLE COMMENT "
    "DESCRIPTION INITIALKEY BPM KEY VELVETCASCADE SERATO_MARKERS_V2";

/// All of a file that nothing of these names is.
inline std::vector<ZALDataView> plainEntries(ZALDataView file, std::string_view extension) {
    std::vector<ZALDataView> entries;
    if (extension == "mp3") addFrames(entries, file);
    if (extension == "m4a") addItems(entries, file);
    if (extension == "flac") addBlocks(entries, file);
    if (extension == "wav" || extension == "aiff") addChunks(entries, file, extension == "aiff");
    std::erase_if(entries, [](ZALDataView entry) {
        const std::string start = uppercase(textOf(entry.first(std::min<std::size_t>(entry.size(), 32))));
        std::istringstream names(namesThatAreSet);
        for (std::string name; names >> name;) {
            if (start.starts_with(name) || (start.size() > 8 && start.substr(4).starts_with(name)))
                return true;
        }
        return false;
    });
    return entries;
}

inline bool holdsAll(const ZALData& file, const std::vector<ZALDataView>& parts) {
    return std::ranges::all_of(parts, [&file](ZALDataView part) {
        return std::search(file.begin(), file.end(), part.begin(), part.end()) != file.end();
    });
}
