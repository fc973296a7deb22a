#pragma once

#include "taglib/TagLibStream.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

/// The two families of files made of chunks: WAV counts little-endian, AIFF big-endian.
enum class FormKind { wav, aiff };

struct FormChunk {
    std::array<char, 4> id{};
    std::uint64_t place = 0;  ///< of its header
    std::uint64_t size = 0;   ///< of its content, without padding

    std::uint64_t content() const { return place + 8; }
    std::uint64_t end() const { return content() + size; }
    bool is(std::string_view name) const { return std::equal(name.begin(), name.end(), id.begin()); }
    bool isSameAs(const FormChunk& other) const { return id == other.id && size == other.size; }
};

/// The chunks of a file, from behind the head to the first header that makes no sense.
struct FormWalk {
    std::vector<FormChunk> chunks;
    std::uint64_t end = 0;    ///< behind the last chunk and its padding
    bool isTooLarge = false;  ///< over 4 GiB, or too many chunks
    bool isUnsized = false;   ///< the size of the audio was never written: it runs to the end
    std::string damage;       ///< why the file must not be edited; empty when it may
};

FormWalk walkForm(TagLibStream& stream, FormKind kind);

/// Whether a chunk holds an ID3v2 tag, or an INFO list.
bool isID3(const FormChunk& chunk);
bool isInfo(TagLibStream& stream, const FormChunk& chunk);

}  // namespace zal
