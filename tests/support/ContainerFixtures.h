#pragma once

#include <zaltag/base/ZALData.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// An atom of an MP4 file: length, name, content.
ZALData mp4Atom(std::string_view name, const ZALData& content);
/// An item of a tag with values of one type (1 is UTF-8 text).
ZALData mp4Item(std::string_view name, const std::vector<ZALData>& values, std::uint8_t type = 1);
/// A freeform item of texts, named "----:mean:name".
ZALData mp4Freeform(std::string_view mean, std::string_view name, const std::vector<std::string>& texts);
/// The "udta" atom of a tag with these items and no padding.
ZALData mp4Tag(std::initializer_list<ZALData> items);

/// What a built file holds beside its audio.
struct MP4Content {
    ZALData userData{};  ///< the "udta" atom, or nothing
    bool audioFirst = false;
    bool longTable = false;  ///< the places of the audio as numbers of 64 bits
    ZALData behind{};        ///< atoms behind all others
};
/// A file with audio in two chunks, whose places stand in a table; only as much of a track as holds that.
ZALData mp4File(const MP4Content& content = {});
/// The audio of such a file, read at the places that its table names.
ZALData mp4Audio(const std::string& path);

/// A payload of Serato as MP4 and FLAC carry it.
std::string seratoText(const ZALData& payload);

/// A metadata block of a FLAC file, behind which others follow.
ZALData flacBlock(std::uint8_t type, const ZALData& content);
/// A comment block with these fields ("NAME=value").
ZALData flacComment(const std::vector<std::string>& fields);
/// A file with these metadata blocks and some audio.
ZALData flacFile(std::initializer_list<ZALData> blocks = {});
/// What follows the metadata blocks.
ZALData flacAudio(const std::string& path);
