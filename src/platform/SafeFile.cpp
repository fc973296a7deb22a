#include "platform/SafeFile.h"

#include "platform/FileReplacement.h"
#include "platform/Log.h"

#include <zaltag/platform/ZALHost.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <new>
#include <utility>
#include <vector>

namespace zal {

namespace {

// A write inside one page of the page cache is not cut by a kill.
constexpr std::uint64_t pageSize = 4096;
constexpr std::uint64_t inPlaceMax = std::uint64_t{64} << 20;
constexpr std::uint64_t compareSize = 65536;
constexpr std::size_t comparedBlock = 256;

const auto tooShort = std::make_error_code(std::errc::io_error);

// The lock of the file that stands under the reference when it ends: a commit may change which one that is.
class LockedFile {
  public:
    explicit LockedFile(std::unique_ptr<ZALFileHandle>& handle) : handle_(handle), error_(handle->lock()) {}
    ~LockedFile() {
        if (!error_) handle_->unlock();
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    const std::error_code& error() const { return error_; }

  private:
    std::unique_ptr<ZALFileHandle>& handle_;
    const std::error_code error_;
};

}  // namespace

namespace {

Failure whyNotRegular(ZALFileKind kind) {
    if (kind == ZALFileKind::missing) return "no such file";
    if (kind == ZALFileKind::folder) return "is a folder";
    return kind == ZALFileKind::regular ? Failure() : Failure("is not a regular file");
}

Failure failureOf(const std::error_code& error) {
    return error == std::errc::permission_denied ? "permission denied" : describe(error);
}

}  // namespace

std::unique_ptr<SafeFile> SafeFile::open(const std::string& path, bool readOnly, Failure* failure) {
    const auto files = ZALHost::shared().fileSystem();
    const auto fail = [failure](Failure reason) {
        if (failure != nullptr) *failure = std::move(reason);
        return nullptr;
    };
    // Before opening, since opening a device can do things by itself.
    if (auto reason = whyNotRegular(files->kindOfFile(path))) return fail(std::move(reason));
    std::string target;
    std::error_code error = files->canonicalPath(path, target);
    if (error) return fail(failureOf(error));
    auto handle = readOnly ? nullptr : files->open(target, true, error);
    const bool writable = handle != nullptr;
    if (!handle) handle = files->open(target, false, error);
    ZALFileAttributes attributes;
    if (handle) error = handle->attributes(attributes);
    if (error) return fail(failureOf(error));
    if (auto reason = whyNotRegular(attributes.kind)) return fail(std::move(reason));
    return std::unique_ptr<SafeFile>(
        new SafeFile(path, std::move(target), files, std::move(handle), attributes, !writable));
}

SafeFile::SafeFile(std::string path, std::string target, std::shared_ptr<ZALFileSystem> files,
                   std::unique_ptr<ZALFileHandle> handle, const ZALFileAttributes& attributes, bool readOnly)
    : path_(std::move(path)),
      target_(std::move(target)),
      files_(std::move(files)),
      handle_(std::move(handle)),
      state_(attributes),
      readOnly_(readOnly),
      pieces_(attributes.size),
      originalLength_(attributes.size) {}

std::size_t SafeFile::readAt(std::uint64_t position, std::span<std::uint8_t> buffer) {
    std::size_t count = 0;
    if (const auto error = readContent(position, buffer, count)) {
        giveUp("it could not be read whole: " + describe(error));
    }
    return count;
}

std::error_code SafeFile::readContent(std::uint64_t position, std::span<std::uint8_t> buffer,
                                      std::size_t& count) {
    count = 0;
    while (count < buffer.size() && position + count < pieces_.length()) {
        const Piece piece = pieces_.pieceAt(position + count);
        const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(piece.length, buffer.size() - count));
        const auto part = buffer.subspan(count, n);
        std::size_t got = n;
        std::error_code error;
        if (piece.source == Piece::Source::original) {
            error = cache_.readAt(*handle_, originalLength_, piece.offset, part, got);
        } else if (piece.source == Piece::Source::memory) {
            std::copy_n(piece.bytes->begin() + static_cast<std::ptrdiff_t>(piece.offset), n, part.begin());
        } else {
            std::fill(part.begin(), part.end(), std::uint8_t{0});
        }
        count += got;
        if (error || got < n) return error ? error : tooShort;
    }
    return {};
}

std::error_code SafeFile::readOriginal(std::uint64_t position, std::span<std::uint8_t> buffer) {
    std::size_t count = 0;
    const auto error = cache_.readAt(*handle_, originalLength_, position, buffer, count);
    return !error && count < buffer.size() ? tooShort : error;
}

void SafeFile::write(std::uint64_t position, ZALDataView bytes) {
    if (!bytes.empty()) edit(position, bytes.size(), bytes);
}

void SafeFile::insert(std::uint64_t position, ZALDataView bytes, std::uint64_t replaced) {
    if (!bytes.empty() || position < length()) edit(position, replaced, bytes);
}

void SafeFile::remove(std::uint64_t position, std::uint64_t length) {
    insert(position, {}, length);
}

void SafeFile::truncate(std::uint64_t length) {
    if (length < this->length()) {
        remove(length, this->length() - length);
    } else {
        edit(length, 0, {});
    }
}

void SafeFile::edit(std::uint64_t position, std::uint64_t removed, ZALDataView bytes) {
    if (readOnly_) return;
    if (position > lengthMax || std::max(position, length()) + bytes.size() > lengthMax) {
        return giveUp("an edit lies too far behind its end");
    }
    try {
        pieces_.replace(position, removed, bytes);
    } catch (const std::bad_alloc&) {
        giveUp("there was no memory for an edit");
    }
}

void SafeFile::revert() {
    pieces_ = PieceList(originalLength_);
}

void SafeFile::giveUp(std::string reason) {
    if (brokenBy_.empty()) brokenBy_ = std::move(reason);
}

bool SafeFile::commit(Failure* failure) {
    Failure found;
    try {
        found = writeChanges();
    } catch (const std::exception& exception) {  // memory ran out
        found = exception.what();
    }
    if (!found) return true;
    if (failure == nullptr) logf("could not save '{}': {}", path_, found.reason());
    if (failure != nullptr) *failure = std::move(found);
    return false;
}

Failure SafeFile::writeChanges() {
    if (readOnly_) return "it is open for reading only";
    if (!brokenBy_.empty()) return brokenBy_;
    if (pieces_.isUntouched()) return {};
    // Keeps a save in place and a save beside, of two processes, from each losing what the other wrote.
    const LockedFile lock(handle_);
    if (lock.error()) return describe(lock.error());
    if (auto changed = checkUnchanged()) return changed;
    if (length() != state_->size) return writeBeside();
    std::optional<Range> difference;
    if (const auto error = findDifference(difference)) return describe(error);
    if (difference && !mayWriteInPlace(*difference)) return writeBeside();
    FileReplacement::clearLeftOver(*files_, target_);
    if (difference) return writeInPlace(*difference);
    pieces_ = PieceList(length());
    return {};
}

bool SafeFile::isCurrent() {
    return !checkUnchanged();
}

Failure SafeFile::checkUnchanged() {
    if (!state_) noteState();
    ZALFileAttributes now;
    if (const auto error = files_->attributes(target_, now)) return describe(error);
    if (!state_ || now.device != state_->device || now.inode != state_->inode) {
        return "another program replaced it since it was opened";
    }
    if (now.size != state_->size || now.modified != state_->modified) {
        return "another program changed it since it was opened";
    }
    state_->links = now.links;
    return {};
}

namespace {

// How many bytes at the beginning of two contents of one length are the same; most often all are.
std::size_t sameAtBeginning(ZALDataView one, ZALDataView other) {
    std::size_t at = 0;
    while (one.size() - at >= comparedBlock && std::memcmp(&one[at], &other[at], comparedBlock) == 0) {
        at += comparedBlock;
    }
    while (at < one.size() && one[at] == other[at])
        ++at;
    return at;
}

std::size_t sameAtEnd(ZALDataView one, ZALDataView other) {
    std::size_t rest = one.size();
    while (rest >= comparedBlock) {
        const std::size_t at = rest - comparedBlock;
        if (std::memcmp(&one[at], &other[at], comparedBlock) != 0) break;
        rest = at;
    }
    while (rest > 0 && one[rest - 1] == other[rest - 1])
        --rest;
    return one.size() - rest;
}

}  // namespace

// The first and the last byte that differ from the original, which has the same length; null when none does.
std::error_code SafeFile::findDifference(std::optional<Range>& difference) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> parts;  // start and length of what may differ
    Piece piece;
    for (std::uint64_t start = 0; start < length(); start += piece.length) {
        piece = pieces_.pieceAt(start);
        if (piece.source == Piece::Source::original && piece.offset == start) continue;
        for (std::uint64_t done = 0; done < piece.length; done += compareSize) {
            parts.emplace_back(start + done, std::min(compareSize, piece.length - done));
        }
    }
    ZALData edited;
    ZALData original;
    const auto load = [&](const std::pair<std::uint64_t, std::uint64_t>& part) -> std::error_code {
        edited.resize(static_cast<std::size_t>(part.second));
        original.resize(edited.size());
        std::size_t count = 0;
        const auto error = readContent(part.first, edited, count);
        return error ? error : readOriginal(part.first, original);
    };
    for (auto part = parts.begin(); part != parts.end() && !difference; ++part) {
        if (const auto error = load(*part)) return error;
        const std::size_t same = sameAtBeginning(edited, original);
        if (same < edited.size()) difference = Range{part->first + same, part->first + same};
    }
    for (auto part = parts.rbegin(); part != parts.rend() && difference; ++part) {
        if (const auto error = load(*part)) return error;
        const std::size_t same = sameAtEnd(edited, original);
        if (same == edited.size()) continue;
        difference->last = part->first + edited.size() - same - 1;
        break;
    }
    return {};
}

bool SafeFile::mayWriteInPlace(const Range& range) const {
    if (state_->links > 1) return false;
    if (range.first / pageSize == range.last / pageSize) return true;
    return ZALHost::shared().saveMode() == ZALSaveMode::inPlace && range.last - range.first < inPlaceMax;
}

// The bytes of a range of the original that edits stand for.
std::error_code SafeFile::readReplaced(const Range& range,
                                       std::vector<std::pair<std::size_t, ZALData>>& replaced) {
    Piece piece;
    for (std::uint64_t at = range.first; at <= range.last; at += piece.length) {
        piece = pieces_.pieceAt(at);
        piece.length = std::min(piece.length, range.last - at + 1);
        if (piece.source == Piece::Source::original && piece.offset == at) continue;
        auto& bytes = replaced
                          .emplace_back(static_cast<std::size_t>(at - range.first),
                                        ZALData(static_cast<std::size_t>(piece.length)))
                          .second;
        if (const auto error = readOriginal(at, bytes)) return error;
    }
    return {};
}

Failure SafeFile::writeInPlace(const Range& range) {
    PieceList whole(length());
    const auto size = static_cast<std::size_t>(range.last - range.first + 1);
    const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    const std::span<std::uint8_t> region(buffer.get(), size);
    std::size_t count = 0;
    if (const auto error = readContent(range.first, region, count)) return describe(error);
    std::vector<std::pair<std::size_t, ZALData>> replaced;  // what was there, by its place in the region
    if (const auto error = readReplaced(range, replaced)) return describe(error);
    const auto error = handle_->writeAt(range.first, region);
    cache_.clear();
    for (const auto& [place, bytes] : replaced) {
        if (error) std::copy(bytes.begin(), bytes.end(), region.begin() + static_cast<std::ptrdiff_t>(place));
    }
    const bool undone = !error || putBack(range.first, region);
    noteState();
    if (!undone) return "writing failed, and so did putting back what was there: " + describe(error);
    if (error) return "writing failed: " + describe(error);
    pieces_ = std::move(whole);
    return {};
}

// What failed once may fail again, but what is there counts, not what the write says.
bool SafeFile::putBack(std::uint64_t position, ZALDataView original) {
    handle_->writeAt(position, original);
    std::array<std::uint8_t, pageSize> present;  // memory may have run out
    for (std::size_t done = 0, count = 0; done < original.size(); done += count) {
        const ZALDataView expected = original.subspan(done, std::min(present.size(), original.size() - done));
        if (handle_->readAt(position + done, std::span(present).first(expected.size()), count)) return false;
        const bool isWhole = count == expected.size();
        if (!isWhole || !std::equal(expected.begin(), expected.end(), present.begin())) return false;
    }
    return true;
}

Failure SafeFile::writeBeside() {
    PieceList whole(length());
    FileReplacement replacement(files_, target_);
    bool written = replacement.begin(handle_.get());
    Piece piece;
    for (std::uint64_t at = 0; written && at < length(); at += piece.length) {
        piece = pieces_.pieceAt(at);
        if (piece.source == Piece::Source::original) {
            written = replacement.appendCopy(*handle_, piece.offset, piece.length);
        } else if (piece.source == Piece::Source::memory) {
            written = replacement.append(
                ZALDataView(*piece.bytes)
                    .subspan(static_cast<std::size_t>(piece.offset), static_cast<std::size_t>(piece.length)));
        } else {
            written = replacement.appendZeros(piece.length);
        }
    }
    if (!written || !replacement.finish([this] { return checkUnchanged().reason(); }))
        return replacement.reason();
    // Unlocked by name: a process forked from this one may keep it open.
    std::exchange(handle_, replacement.takeHandle())->unlock();
    state_ = replacement.attributes();
    pieces_ = std::move(whole);
    originalLength_ = length();
    cache_.clear();
    replacement.syncFolder();
    return {};
}

// After a write of ours the file's time is ours, too.
void SafeFile::noteState() {
    ZALFileAttributes attributes;
    if (handle_->attributes(attributes)) {
        state_.reset();
    } else {
        state_ = attributes;
    }
}

}  // namespace zal
