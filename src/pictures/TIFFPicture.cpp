// TIFF: the first picture of a baseline file. Read here, without libtiff: the distribution's build of it
// brings in a library under the GPL, and covers need none of its rarer encodings.

#include "base/Limits.h"
#include "pictures/PictureFormats.h"
#include "pictures/TIFFBlock.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace zal {

namespace {

enum Tag : std::uint16_t {
    widthTag = 256,
    heightTag = 257,
    bitsTag = 258,
    compressionTag = 259,
    photometricTag = 262,
    offsetsTag = 273,
    samplesTag = 277,
    rowsTag = 278,
    byteCountsTag = 279,
    planarTag = 284,
    predictorTag = 317,
    colorMapTag = 320,
    sampleFormatTag = 339,
};
enum Compression : std::uint32_t { plain = 1, lzw = 5, deflate = 8, packBits = 32773, oldDeflate = 32946 };
enum Photometric : std::uint32_t { whiteIsZero = 0, blackIsZero = 1, colors = 2, palette = 3 };

// A picture's description, as its directory has it.
struct Layout {
    PictureSize size;
    std::uint32_t bits = 1;  // of each sample
    std::uint32_t samples = 1;
    std::uint32_t compression = plain;
    std::uint32_t photometric = blackIsZero;
    std::uint32_t predictor = 1;
    std::uint32_t rowsPerStrip = 0;
    std::vector<std::uint32_t> offsets;
    std::vector<std::uint32_t> byteCounts;
    std::vector<std::uint32_t> colorMap;  // all reds, all greens, all blues, sixteen bits each
    bool bigEndian = false;

    std::size_t rowBytes() const { return (std::size_t{size.width} * samples * bits + 7) / 8; }
};

bool isSupported(const Layout& layout) {
    const bool bits =
        layout.bits == 1 || layout.bits == 2 || layout.bits == 4 || layout.bits == 8 || layout.bits == 16;
    const bool grey = layout.photometric == whiteIsZero || layout.photometric == blackIsZero;
    const bool mapped = layout.photometric == palette && layout.bits <= 8 && layout.samples == 1 &&
                        layout.colorMap.size() >= 3U << layout.bits;
    const bool colored = layout.photometric == colors && layout.samples >= 3 && layout.bits >= 8;
    const bool samples =
        layout.samples >= 1 && layout.samples <= 5 && (layout.samples == 1 || layout.bits >= 8);
    const bool predicted = layout.predictor == 1 || (layout.predictor == 2 && layout.bits >= 8);
    return bits && samples && predicted && (grey || mapped || colored);
}

std::optional<Layout> layoutOf(ZALDataView data) {
    const auto block = TIFFBlock::of(data);
    const auto directory = block ? block->firstDirectory() : std::nullopt;
    if (!directory) return std::nullopt;
    const auto numbers = [&](Tag tag) {
        const TIFFEntry* entry = directory->find(tag);
        return entry != nullptr ? block->numbersOf(*entry) : std::vector<std::uint32_t>();
    };
    const auto number = [&](Tag tag, std::uint32_t standard) {
        const auto all = numbers(tag);
        return all.empty() ? standard : all.front();
    };
    Layout layout;
    layout.bigEndian = block->bigEndian();
    layout.size = {number(widthTag, 0), number(heightTag, 0)};
    layout.samples = number(samplesTag, 1);
    layout.bits = number(bitsTag, 1);
    layout.compression = number(compressionTag, plain);
    layout.photometric = number(photometricTag, std::numeric_limits<std::uint32_t>::max());
    layout.predictor = number(predictorTag, 1);
    layout.rowsPerStrip = std::min(number(rowsTag, layout.size.height), layout.size.height);
    layout.offsets = numbers(offsetsTag);
    layout.byteCounts = numbers(byteCountsTag);
    layout.colorMap = numbers(colorMapTag);
    const auto bits = numbers(bitsTag);
    const bool even = std::ranges::all_of(bits, [&](std::uint32_t one) { return one == layout.bits; });
    const bool interleaved = layout.samples == 1 || number(planarTag, 1) == 1;
    const bool whole = number(sampleFormatTag, 1) == 1;
    return even && interleaved && whole && isSupported(layout) ? std::optional(layout) : std::nullopt;
}

bool begins(ZALDataView data) {
    return TIFFBlock::of(data).has_value();
}

std::optional<PictureSize> sizeOf(ZALDataView data) {
    const auto layout = layoutOf(data);
    return layout ? std::optional(layout->size) : std::nullopt;
}

// Each unpacks a strip into exactly as many bytes as its rows need. False when there are fewer.

bool copyPlain(ZALDataView packed, std::span<std::uint8_t> out) {
    if (packed.size() < out.size()) return false;
    std::ranges::copy(packed.first(out.size()), out.begin());
    return true;
}

bool unpackBits(ZALDataView packed, std::span<std::uint8_t> out) {
    std::size_t from = 0;
    std::size_t to = 0;
    while (to < out.size() && from < packed.size()) {
        const int byte = packed[from++];
        const int code = byte < 128 ? byte : byte - 256;
        if (code == -128) continue;
        const bool run = code < 0;
        const auto length = static_cast<std::size_t>(run ? 1 - code : code + 1);
        const std::size_t count = std::min(length, out.size() - to);
        const std::size_t needed = run ? 1 : count;
        if (needed > packed.size() - from) return false;
        for (std::size_t i = 0; i < count; ++i) {
            out[to + i] = packed[run ? from : from + i];
        }
        from += needed;
        to += count;
    }
    return to == out.size();
}

bool inflate(ZALDataView packed, std::span<std::uint8_t> out) {
    z_stream stream{};
    if (::inflateInit(&stream) != Z_OK) return false;
    stream.next_in = const_cast<Bytef*>(packed.data());  // the library does not write there
    stream.avail_in =
        static_cast<uInt>(std::min<std::size_t>(packed.size(), std::numeric_limits<uInt>::max()));
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int status = ::inflate(&stream, Z_SYNC_FLUSH);
    const bool full = stream.avail_out == 0 && (status == Z_OK || status == Z_STREAM_END);
    ::inflateEnd(&stream);
    return full;
}

// The codes of a TIFF strip: nine to twelve bits, high bits first, growing one code early.
class LZWReader {
  public:
    explicit LZWReader(ZALDataView packed) : packed_(packed) {}

    bool unpack(std::span<std::uint8_t> out) {
        std::size_t to = 0;
        int last = none;
        while (to < out.size()) {
            const int code = nextCode();
            if (code == none || code == endCode) return false;
            if (code == clearCode) {
                count_ = firstFree;
                last = none;
                continue;
            }
            if (code > count_ || (code == count_ && last == none) || (code >= endCode && last == none))
                return false;
            if (last != none && count_ < tableSize) add(last, code == count_ ? last : code);
            if (code >= count_) return false;  // the table is full
            to += write(code, out.subspan(to));
            last = code;
        }
        return true;
    }

  private:
    static constexpr int none = -1;
    static constexpr int clearCode = 256;
    static constexpr int endCode = 257;
    static constexpr int firstFree = 258;
    static constexpr int tableSize = 4096;

    struct Text {  // the text of another code and one more byte
        std::uint16_t front = 0;
        std::uint8_t last = 0;
        std::uint8_t first = 0;
        std::uint16_t length = 1;
    };

    int nextCode() {
        const int width = count_ < 511 ? 9 : count_ < 1023 ? 10 : count_ < 2047 ? 11 : 12;
        while (held_ < width) {
            if (at_ == packed_.size()) return none;
            bits_ = bits_ << 8 | packed_[at_++];
            held_ += 8;
        }
        held_ -= width;
        return static_cast<int>(bits_ >> held_ & ((1U << width) - 1));
    }

    Text text(int code) const {
        if (code >= firstFree) return table_[static_cast<std::size_t>(code)];
        const auto byte = static_cast<std::uint8_t>(code);
        return {0, byte, byte, 1};
    }

    void add(int front, int source) {
        const Text before = text(front);
        table_[static_cast<std::size_t>(count_++)] = {static_cast<std::uint16_t>(front), text(source).first,
                                                      before.first,
                                                      static_cast<std::uint16_t>(before.length + 1)};
    }

    // Writes a code's text from its end and returns how many bytes of it had room.
    std::size_t write(int code, std::span<std::uint8_t> out) const {
        const std::size_t length = text(code).length;
        for (std::size_t i = length; i > 0; --i) {
            const Text one = text(code);
            if (i <= out.size()) out[i - 1] = one.last;
            code = one.front;
        }
        return std::min(length, out.size());
    }

    ZALDataView packed_;
    std::size_t at_ = 0;
    std::uint32_t bits_ = 0;
    int held_ = 0;
    int count_ = firstFree;
    std::vector<Text> table_ = std::vector<Text>(tableSize);
};

bool unpack(std::uint32_t compression, ZALDataView packed, std::span<std::uint8_t> out) {
    switch (compression) {
        case plain:
            return copyPlain(packed, out);
        case packBits:
            return unpackBits(packed, out);
        case lzw:
            return LZWReader(packed).unpack(out);
        case deflate:
        case oldDeflate:
            return inflate(packed, out);
        default:
            return false;
    }
}

// Samples of a row as eight bits each: the high byte of sixteen; palette indices stay as they are.
class RowReader {
  public:
    RowReader(const Layout& layout, ZALDataView row) : layout_(layout), row_(row) {}

    std::uint8_t sample(std::size_t index) const {
        if (layout_.bits == 16) return row_[index * 2 + (layout_.bigEndian ? 0 : 1)];
        if (layout_.bits == 8) return row_[index];
        const std::size_t bit = index * layout_.bits;
        const std::uint32_t most = (1U << layout_.bits) - 1;
        const std::uint32_t value =
            static_cast<std::uint32_t>(row_[bit / 8]) >> (8 - layout_.bits - bit % 8) & most;
        return static_cast<std::uint8_t>(layout_.photometric == palette ? value : value * 0xFF / most);
    }

  private:
    const Layout& layout_;
    ZALDataView row_;
};

void undoPredictor(const Layout& layout, std::span<std::uint8_t> row) {
    const std::size_t width = layout.bits / 8;
    const std::size_t step = layout.samples * width;
    const std::size_t low = layout.bigEndian ? width - 1 : 0;
    for (std::size_t i = step; i + width <= row.size(); i += width) {
        unsigned carry = 0;
        for (std::size_t byte = 0; byte < width; ++byte) {
            const std::size_t at = i + (byte ^ low);
            const unsigned sum = row[at] + row[at - step] + carry;
            row[at] = static_cast<std::uint8_t>(sum);
            carry = sum >> 8;
        }
    }
}

void paintRow(const Layout& layout, ZALDataView bytes, std::uint8_t* rgba) {
    const RowReader row(layout, bytes);
    const std::uint32_t inks = layout.photometric == colors ? 3 : 1;
    for (std::size_t x = 0; x < layout.size.width; ++x, rgba += 4) {
        const std::size_t at = x * layout.samples;
        for (std::size_t ink = 0; ink < 3; ++ink) {
            const std::uint8_t value = row.sample(at + (inks == 3 ? ink : 0));
            if (layout.photometric == palette) {
                rgba[ink] = static_cast<std::uint8_t>(layout.colorMap[(ink << layout.bits) + value] >> 8);
            } else {
                rgba[ink] =
                    layout.photometric == whiteIsZero ? static_cast<std::uint8_t>(0xFF - value) : value;
            }
        }
        rgba[3] = layout.samples > inks ? row.sample(at + inks) : 0xFF;
    }
}

bool decode(ZALDataView data, PictureSize size, std::uint8_t* rgba) {
    const auto layout = layoutOf(data);
    if (!layout || layout->size != size || layout->rowsPerStrip == 0) return false;
    const std::size_t rowBytes = layout->rowBytes();
    if (rowBytes * layout->rowsPerStrip > limits::decoderMemory) return false;
    ZALData strip;
    for (std::uint32_t y = 0, index = 0; y < size.height; y += layout->rowsPerStrip, ++index) {
        if (index >= layout->offsets.size() || index >= layout->byteCounts.size()) return false;
        const std::size_t offset = layout->offsets[index];
        const std::size_t count = layout->byteCounts[index];
        if (offset > data.size() || count > data.size() - offset) return false;
        const std::uint32_t rows = std::min(layout->rowsPerStrip, size.height - y);
        strip.resize(rowBytes * rows);
        if (!unpack(layout->compression, data.subspan(offset, count), strip)) return false;
        for (std::uint32_t i = 0; i < rows; ++i) {
            const std::span<std::uint8_t> row = std::span(strip).subspan(i * rowBytes, rowBytes);
            if (layout->predictor == 2) undoPredictor(*layout, row);
            paintRow(*layout, row, rgba + (std::size_t{y} + i) * size.width * 4);
        }
    }
    return true;
}

}  // namespace

const PictureFormat tiffFormat{"tiff", limits::picturePixels, begins, sizeOf, decode};

}  // namespace zal
