#include "files/FormFile.h"

#include "base/Limits.h"
#include "taglib/TagLibBytes.h"

#include <algorithm>
#include <limits>

namespace zal {

namespace {

using TagLib::ByteVector;

constexpr std::uint64_t headSize = 12;
constexpr std::uint64_t chunkHeaderSize = 8;

bool beginsAs(TagLibStream& stream, std::string_view form, std::initializer_list<std::string_view> types) {
    std::array<std::uint8_t, headSize> head{};
    if (stream.readAt(0, head) != head.size()) return false;
    const std::string_view bytes(reinterpret_cast<const char*>(head.data()), head.size());
    return bytes.starts_with(form) && std::ranges::count(types, bytes.substr(8)) > 0;
}

}  // namespace

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
        infos_.emplace_back(stream_->bytesAt(chunk.content(), chunk.size));
    }
    if (infos_.empty()) infos_.emplace_back();
}

std::vector<const TagLib::ID3v2::Tag*> FormFile::v2Tags() const {
    return tagsOf(*v2_, further_);
}

// The first LIST chunk of a type; of any for an empty one.
std::optional<std::size_t> FormFile::listChunk(const ByteVector& type) const {
    const auto found = std::ranges::find_if(walk_.chunks, [&](const FormChunk& chunk) {
        return chunk.is("LIST") && (type.isEmpty() || stream_->bytesAt(chunk.content(), type.size()) == type);
    });
    if (found == walk_.chunks.end()) return std::nullopt;
    return static_cast<std::size_t>(found - walk_.chunks.begin());
}

ByteVector FormFile::firstList() const {
    const auto chunk = listChunk({});
    if (!chunk) return {};
    return stream_->bytesAt(walk_.chunks[*chunk].content(), walk_.chunks[*chunk].size);
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
    return stream_->bytesAt(place, 4).toUInt(0U, kind_ == FormKind::aiff);
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
