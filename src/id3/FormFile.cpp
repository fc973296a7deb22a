#include "id3/FormFile.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "id3/TagLibBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace zal {

namespace {

using TagLib::ByteVector;

constexpr std::uint64_t headSize = 12;
constexpr std::uint64_t chunkHeaderSize = 8;
constexpr std::uint64_t restMax = 4096;                        // of zeros behind the chunks
constexpr std::uint64_t tailSearch = std::uint64_t{16} << 20;  // for tags behind audio without a size

ByteVector bytesAt(TagLibStream& stream, std::uint64_t position, std::uint64_t count) {
    stream.seek(static_cast<long>(position));
    return stream.readBlock(count);
}

// What TagLib takes for a chunk's id.
bool isID(ZALDataView bytes) {
    return bytes.size() == 4 &&
           std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte >= 32 && byte <= 127; });
}

// A byte behind an odd end is padding when it is 0 or an id follows it; some programs write none.
bool isPadding(ZALDataView byteAndID) {
    return !byteAndID.empty() && (byteAndID.front() == 0 || isID(byteAndID.subspan(1)));
}

bool isID3(const FormChunk& chunk) {
    return chunk.is("ID3 ") || chunk.is("id3 ");
}
bool isTag(const FormChunk& chunk) {
    return isID3(chunk) || chunk.is("LIST") || chunk.is("VCAS");
}

bool isInfo(TagLibStream& stream, const FormChunk& chunk) {
    return chunk.is("LIST") && chunk.size >= 4 && bytesAt(stream, chunk.content(), 4) == "INFO";
}

// Goes from chunk to chunk until there is none or its header makes no sense.
class Walker {
  public:
    Walker(TagLibStream& stream, FormKind kind)
        : stream_(stream), kind_(kind), length_(static_cast<std::uint64_t>(stream.length())) {
        formEnd_ = chunkHeaderSize + numberAt(4);
    }

    FormWalk walk() {
        result_.isTooLarge = length_ > std::numeric_limits<std::uint32_t>::max();
        FormChunk chunk;
        while (!result_.isTooLarge && enter(chunk)) {
            const bool isMuch = isTag(chunk) && chunk.size > limits::formTag;
            result_.isTooLarge = result_.chunks.size() == limits::formChunks || isMuch;
            result_.chunks.push_back(chunk);
            moveTo(chunk.end());
            const bool isLastByte = offset_ + 1 == length_ && offset_ + 1 == formEnd_;
            const bool isOdd = chunk.size % 2 != 0;
            if (isOdd && (isLastByte || isPadding(viewOf(bytesAt(stream_, offset_, 5))))) moveTo(offset_ + 1);
        }
        result_.end = offset_;
        result_.damage = damage();
        return result_;
    }

  private:
    std::uint32_t numberAt(std::uint64_t position) {
        std::array<std::uint8_t, 4> bytes{};
        stream_.readAt(position, bytes);
        ByteReader reader(bytes);
        return kind_ == FormKind::wav ? reader.u32le() : reader.u32be();
    }

    // The header at a place. False when there is none.
    bool header(std::uint64_t place, FormChunk& chunk) {
        std::array<std::uint8_t, 4> id{};
        if (place + chunkHeaderSize > length_ || stream_.readAt(place, id) != id.size() || !isID(id))
            return false;
        std::copy(id.begin(), id.end(), chunk.id.begin());
        chunk.place = place;
        chunk.size = numberAt(place + 4);
        return true;
    }

    bool enter(FormChunk& chunk) {
        if (!header(offset_, chunk)) return false;
        if (chunk.end() <= length_) return true;
        if (kind_ != FormKind::wav || !chunk.is("data") || result_.isUnsized) return false;
        result_.isUnsized = true;
        chunk.size = endOfAudio(chunk.content()) - chunk.content();
        return true;
    }

    // Where audio ends that has no size: in front of tags whose chunks end with the file, or there.
    std::uint64_t endOfAudio(std::uint64_t begin) {
        const std::uint64_t from = std::max(begin, length_ - std::min(length_, tailSearch));
        const ByteVector tail = bytesAt(stream_, from, length_ - from);
        const ZALDataView bytes = viewOf(tail);
        // From the end, so that where a chunk leads to is known already.
        std::vector<bool> endsWithFile(bytes.size() + 1);
        std::size_t first = bytes.size();
        endsWithFile[first] = true;
        for (std::size_t at = bytes.size(); at-- > 0;) {
            if (!isTagAt(bytes, at)) continue;
            ByteReader reader(bytes.subspan(at + 4));
            const std::uint64_t end = at + chunkHeaderSize + reader.u32le();
            const std::uint64_t next = end + (end - at) % 2;
            const bool isLast = end == bytes.size();
            endsWithFile[at] = isLast || (next <= bytes.size() && endsWithFile[next]);
            if (endsWithFile[at]) first = at;
        }
        return from + first;
    }

    static bool isTagAt(ZALDataView bytes, std::size_t at) {
        if (bytes.size() - at < chunkHeaderSize) return false;
        const std::string_view id(reinterpret_cast<const char*>(bytes.data()) + at, 4);
        return id == "LIST" || id == "ID3 " || id == "id3 " || id == "VCAS";
    }

    void moveTo(std::uint64_t offset) {
        offset_ = offset;
        metFormEnd_ = metFormEnd_ || offset == formEnd_;
    }

    bool isPaddedWithZeros(std::uint64_t rest) {
        const auto isAudio = [this](const FormChunk& chunk) {
            return chunk.is(kind_ == FormKind::wav ? "data" : "SSND") && chunk.size > 0;
        };
        if (rest > restMax || std::ranges::none_of(result_.chunks, isAudio)) return false;
        const ByteVector bytes = bytesAt(stream_, offset_, rest);
        return std::ranges::all_of(viewOf(bytes), [](std::uint8_t byte) { return byte == 0; });
    }

    // What is wrong with the place where the walk ended; empty when nothing is.
    std::string damage() {
        if (std::ranges::all_of(result_.chunks, isTag)) return "it holds no chunk besides tags";
        const std::uint64_t rest = length_ - std::min(offset_, length_);
        if (!metFormEnd_ && rest > offset_ % 2 && !isPaddedWithZeros(rest))
            return fmt::format("its chunks are damaged at byte {}", offset_);
        // A recording that was cut off before its sizes were written.
        return rest > offset_ ? "its chunks are only a small part of it" : "";
    }

    TagLibStream& stream_;
    const FormKind kind_;
    const std::uint64_t length_;
    std::uint64_t formEnd_ = 0;
    std::uint64_t offset_ = headSize;
    bool metFormEnd_ = false;  // a chunk ended where the form says that it ends
    FormWalk result_;
};

bool beginsAs(TagLibStream& stream, std::string_view form, std::initializer_list<std::string_view> types) {
    std::array<std::uint8_t, headSize> head{};
    if (stream.readAt(0, head) != head.size()) return false;
    const std::string_view bytes(reinterpret_cast<const char*>(head.data()), head.size());
    return bytes.starts_with(form) && std::ranges::count(types, bytes.substr(8)) > 0;
}

}  // namespace

FormWalk walkForm(TagLibStream& stream, FormKind kind) {
    return Walker(stream, kind).walk();
}

// Reading

std::unique_ptr<FormFile> FormFile::openWAV(TagLibStream& stream) {
    if (!beginsAs(stream, "RIFF", {"WAVE"})) return nullptr;
    std::unique_ptr<FormFile> file(new FormFile(stream, FormKind::wav));
    return file->read() ? std::move(file) : nullptr;
}

std::unique_ptr<FormFile> FormFile::openAIFF(TagLibStream& stream) {
    if (!beginsAs(stream, "FORM", {"AIFF", "AIFC"})) return nullptr;
    std::unique_ptr<FormFile> file(new FormFile(stream, FormKind::aiff));
    return file->read() ? std::move(file) : nullptr;
}

bool FormFile::read() {
    walk_ = walkForm(*stream_, kind_);
    if (walk_.isTooLarge) return false;
    for (std::size_t i = 0; i < walk_.chunks.size(); ++i) {
        if (isID3(walk_.chunks[i]) && !readTag(i)) return false;
    }
    if (v2_ == nullptr) v2_ = std::make_unique<ID3v2Store>();
    readInfo();
    return true;
}

bool FormFile::readTag(std::size_t chunk) {
    const FormChunk& found = walk_.chunks[chunk];
    auto store = ID3v2Store::read(*stream_, found.content(), found.end());
    if (v2_ != nullptr) {
        if (store != nullptr) further_.push_back(std::move(store));
        return true;
    }
    v2_ = std::move(store);
    tagChunk_ = chunk;
    return v2_ != nullptr;
}

void FormFile::readInfo() {
    infos_.clear();
    infoChunk_.reset();
    for (std::size_t i = 0; i < walk_.chunks.size() && kind_ == FormKind::wav; ++i) {
        const FormChunk& chunk = walk_.chunks[i];
        if (!isInfo(*stream_, chunk)) continue;
        if (!infoChunk_) infoChunk_ = i;
        infos_.emplace_back(bytesAt(*stream_, chunk.content(), chunk.size));
    }
    if (infos_.empty()) infos_.emplace_back();
}

std::vector<const TagLib::ID3v2::Tag*> FormFile::v2Tags() const {
    std::vector<const TagLib::ID3v2::Tag*> tags{&v2_->tag()};
    for (const auto& store : further_) {
        tags.push_back(&store->tag());
    }
    return tags;
}

// The first LIST chunk of a type; of any for an empty one.
std::optional<std::size_t> FormFile::listChunk(const ByteVector& type) const {
    const auto found = std::ranges::find_if(walk_.chunks, [&](const FormChunk& chunk) {
        return chunk.is("LIST") &&
               (type.isEmpty() || bytesAt(*stream_, chunk.content(), type.size()) == type);
    });
    if (found == walk_.chunks.end()) return std::nullopt;
    return static_cast<std::size_t>(found - walk_.chunks.begin());
}

ByteVector FormFile::firstList() const {
    const auto chunk = listChunk({});
    if (!chunk) return {};
    return bytesAt(*stream_, walk_.chunks[*chunk].content(), walk_.chunks[*chunk].size);
}

// Writing

std::vector<FormFile::Edit> FormFile::edits() {
    std::vector<Edit> edits;
    edit_ = v2_->edit(static_cast<std::uint64_t>(stream_->length()));
    // Without it the next tag would be taken for the first.
    if (edit_.isChanged && edit_.bytes.isEmpty() && !further_.empty()) edit_.bytes = tagHeader(0);
    if (edit_.isChanged && (tagChunk_ || !edit_.bytes.isEmpty()))
        edits.push_back({tagChunk_, {'I', 'D', '3', ' '}, edit_.bytes, v2_->room()});
    const auto sizeOf = [this](std::optional<std::size_t> chunk) {
        return chunk ? walk_.chunks[*chunk].size : 0;
    };
    constexpr std::array<char, 4> list{'L', 'I', 'S', 'T'};
    if (newList_) {
        const auto chunk = listChunk(newList_->mid(0, 4));
        edits.push_back({chunk, list, *newList_, sizeOf(chunk)});
    } else if (infos_.front().isChanged()) {
        edits.push_back({infoChunk_, list, infos_.front().merged(), sizeOf(infoChunk_)});
    }
    return edits;
}

std::string FormFile::write() {
    isWritten_ = false;
    std::vector<Edit> edits = this->edits();
    if (!edit_.refusal.empty()) return edit_.refusal;
    if (edits.empty() && !(setsSizes_ && walk_.isUnsized)) return {};
    if (!walk_.damage.empty()) return walk_.damage;
    std::uint64_t length = static_cast<std::uint64_t>(stream_->length());
    for (const Edit& edit : edits) {
        length += edit.content.size() + chunkHeaderSize + 2;
    }
    if (length > std::numeric_limits<std::uint32_t>::max()) return "it would become too long for its format";
    // From the end, so that places stay what they are.
    std::ranges::stable_sort(edits, [this](const Edit& one, const Edit& other) {
        return one.chunk.value_or(walk_.chunks.size()) > other.chunk.value_or(walk_.chunks.size());
    });
    const std::uint64_t formEnd = chunkHeaderSize + sizeAt(4);
    if (std::ranges::any_of(edits, [](const Edit& edit) { return !edit.chunk; })) addPadding();
    const auto before = static_cast<std::uint64_t>(stream_->length());
    for (const Edit& edit : edits) {
        edit.chunk ? change(edit) : append(edit, walk_.end);
    }
    const auto after = static_cast<std::uint64_t>(stream_->length());
    for (const FormChunk& chunk : walk_.chunks) {
        if (walk_.isUnsized && chunk.is("data"))
            writeSize(chunk.place + 4 + shiftBefore(edits, chunk), chunk.size);
    }
    const bool holdsRest = walk_.end < before && formEnd > walk_.end && !walk_.isUnsized;
    writeSize(4, (holdsRest ? after : walk_.end + after - before) - chunkHeaderSize);
    isWritten_ = true;
    return whyNotAsWritten(edits);
}

std::uint64_t FormFile::shiftBefore(const std::vector<Edit>& edits, const FormChunk& chunk) const {
    std::uint64_t shift = 0;
    for (const Edit& edit : edits) {
        if (!edit.chunk || walk_.chunks[*edit.chunk].place >= chunk.place) continue;
        const FormChunk& edited = walk_.chunks[*edit.chunk];
        const std::uint64_t size = sizeAfter(edit);
        shift += (size == 0 ? 0 : chunkHeaderSize + size + size % 2) -
                 (chunkHeaderSize + edited.size + paddingBehind(*edit.chunk));
    }
    return shift;
}

std::uint64_t FormFile::paddingBehind(std::size_t chunk) const {
    const std::uint64_t next = chunk + 1 < walk_.chunks.size() ? walk_.chunks[chunk + 1].place : walk_.end;
    return next - walk_.chunks[chunk].end();
}

// Of the chunk's content; 0 when the chunk goes.
std::uint64_t FormFile::sizeAfter(const Edit& edit) const {
    const std::uint64_t kept = edit.chunk ? walk_.chunks[*edit.chunk].size - edit.replaced : 0;
    return kept + edit.content.size();
}

void FormFile::change(const Edit& edit) {
    const FormChunk& chunk = walk_.chunks[*edit.chunk];
    const std::uint64_t padding = paddingBehind(*edit.chunk);
    const std::uint64_t size = sizeAfter(edit);
    if (size == 0) return stream_->removeBlock(chunk.place, chunkHeaderSize + chunk.size + padding);
    if (size % 2 != padding)
        stream_->insert(ByteVector(static_cast<unsigned>(size % 2), '\0'), chunk.end(), padding);
    stream_->insert(edit.content, chunk.content(), edit.replaced);
    writeSize(chunk.place + 4, size);
}

// Behind the last chunk, when it lacks it.
void FormFile::addPadding() {
    const FormChunk& last = walk_.chunks.back();
    if (last.size % 2 == 0 || last.end() != walk_.end) return;
    stream_->insert(ByteVector(1, '\0'), walk_.end, 0);
    ++walk_.end;
}

void FormFile::append(const Edit& edit, std::uint64_t place) {
    ByteVector bytes(edit.id.data(), 4);
    const unsigned size = edit.content.size();
    bytes.append(ByteVector::fromUInt(size, kind_ == FormKind::aiff)).append(edit.content);
    if (size % 2 != 0) bytes.append('\0');
    stream_->insert(bytes, place, 0);
}

std::uint32_t FormFile::sizeAt(std::uint64_t place) const {
    return bytesAt(*stream_, place, 4).toUInt(0U, kind_ == FormKind::aiff);
}

void FormFile::writeSize(std::uint64_t place, std::uint64_t size) {
    stream_->seek(static_cast<long>(place));
    stream_->writeBlock(ByteVector::fromUInt(static_cast<unsigned>(size), kind_ == FormKind::aiff));
}

// Every chunk that was not edited must stand there as it did.
std::string FormFile::whyNotAsWritten(const std::vector<Edit>& edits) {
    walkAfter_ = walkForm(*stream_, kind_);
    std::vector<FormChunk> expected = walk_.chunks;
    for (const Edit& edit : edits) {  // new ones first, then from the last to the first
        if (!edit.chunk) {
            expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(walk_.chunks.size()),
                            {edit.id, 0, sizeAfter(edit)});
            continue;
        }
        expected[*edit.chunk].size = sizeAfter(edit);
        if (sizeAfter(edit) == 0) expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(*edit.chunk));
    }
    const bool isSame = !walkAfter_.isTooLarge && walkAfter_.damage.empty() && !walkAfter_.isUnsized &&
                        std::ranges::equal(walkAfter_.chunks, expected, &FormChunk::isSameAs);
    return isSame ? "" : "its chunks would not stay as they are";
}

void FormFile::takeWalk(FormWalk walk) {
    walk_ = std::move(walk);
    const auto first = [this](const auto& isWanted) -> std::optional<std::size_t> {
        const auto found = std::ranges::find_if(walk_.chunks, isWanted);
        if (found == walk_.chunks.end()) return std::nullopt;
        return static_cast<std::size_t>(found - walk_.chunks.begin());
    };
    tagChunk_ = first(isID3);
    infoChunk_ = kind_ == FormKind::aiff
                     ? std::nullopt
                     : first([this](const FormChunk& chunk) { return isInfo(*stream_, chunk); });
}

bool FormFile::moveTo(TagLibStream& stream) {
    stream_ = &stream;
    takeWalk(walkForm(stream, kind_));
    return !walk_.isTooLarge;
}

void FormFile::accept() {
    setsSizes_ = false;
    if (!isWritten_) return;
    isWritten_ = false;
    takeWalk(std::move(walkAfter_));
    v2_->accept(edit_);
    if (!newList_) infos_.front().accept(infos_.front().merged());
    newList_.reset();
}

}  // namespace zal
