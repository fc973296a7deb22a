#pragma once

#include <zaltag/base/ZALText.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zal {

class TagLibStream;

/// The two families of files made of chunks: RIFF counts little-endian, FORM big-endian.
enum class FormKind { riff, form };

struct FormChunk {
    std::array<char, 4> id{};
    std::uint32_t size = 0;

    bool operator==(const FormChunk&) const = default;
};

/// The chunks of a file, walked as TagLib walks them, from behind the head to the first header that makes no
/// sense.
struct FormWalk {
    std::vector<FormChunk> chunks;  ///< those that are no tags: what a save must leave as it is
    bool isTooLarge = false;        ///< TagLib must not see the file: over 4 GiB, too many chunks, a huge tag
    std::optional<std::uint64_t> tagPosition;  ///< of the ID3v2 tag that TagLib reads
    std::string damage;                        ///< why TagLib must not edit the file; empty when it may
};

/// Walks a file whose first twelve bytes are the head of a form.
FormWalk walkForm(TagLibStream& stream, FormKind kind);

/// Whether TagLib may see such a file: neither its chunks nor its ID3v2 tag are beyond what it can take.
bool canReadForm(TagLibStream& stream, FormKind kind);

/// How a save ended. Refused: the file is damaged, or TagLib's edit would damage it; one line was logged.
enum class FormSave { done, failed, refused };

/// What a save does with LIST chunks that are no INFO lists: leaves them as they are, as all chunks that are
/// no tags, or replaces one.
enum class FormLists { kept, replaced };

/// Saves by TagLib and commits what it wrote. TagLib puts its chunks behind the last one it understands,
/// which in a damaged file is before the audio; so the chunks are walked before, and again before the commit:
/// they must be as they were. Catches what TagLib throws.
FormSave saveForm(const ZALNullableString& path, TagLibStream& stream, FormKind kind,
                  const std::function<bool()>& save, FormLists lists = FormLists::kept);

}  // namespace zal
