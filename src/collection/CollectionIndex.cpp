#include "collection/CollectionIndex.h"

#include "base/Numbers.h"
#include "collection/Checksum.h"
#include "platform/Log.h"

#include <algorithm>
#include <bit>

namespace zal {

const char* valueOf(XMLAttributes attributes, std::string_view name) {
    for (; *attributes != nullptr; attributes += 2) {
        if (name == *attributes) return attributes[1];
    }
    return nullptr;
}

ZALNullableString nullable(const char* value) {
    return value == nullptr ? ZALNullableString() : value;
}

std::optional<std::uint64_t> sizeIn(const char* value) {
    const std::int64_t size = value == nullptr ? 0 : integerValue(value);
    return size > 0 ? std::optional(static_cast<std::uint64_t>(size)) : std::nullopt;
}

std::optional<double> durationIn(const char* value) {
    const double duration = value == nullptr ? 0 : doubleValue(value);
    return duration > 0 ? std::optional(duration) : std::nullopt;
}

CollectionIndex::CollectionIndex(const CollectionProgram& program, std::shared_ptr<SharedFile> file)
    : program_(program), file_(std::move(file)) {}

std::size_t CollectionIndex::cueCount() const {
    std::size_t count = 0;
    for (const IndexedTrack& track : tracks_) {
        count += track.cues;
    }
    return count;
}

std::uint64_t CollectionIndex::hashOf(std::string_view key) const {
    return Checksum::of(key, seed_);
}

void CollectionIndex::sortByPath() {
    byPath_.clear();
    byPath_.reserve(tracks_.size());
    for (std::uint32_t number = 0; number < tracks_.size(); ++number) {
        if (tracks_[number].hasPath) byPath_.push_back(number);
    }
    std::sort(byPath_.begin(), byPath_.end(), [this](std::uint32_t one, std::uint32_t other) {
        const std::uint64_t oneHash = tracks_[one].pathHash;
        const std::uint64_t otherHash = tracks_[other].pathHash;
        return oneHash != otherHash ? oneHash < otherHash : one < other;
    });
}

std::vector<std::uint32_t> CollectionIndex::withPath(std::string_view path) const {
    const std::uint64_t hash = hashOf(path);
    const auto isBefore = [this](std::uint32_t number, std::uint64_t wanted) {
        return tracks_[number].pathHash < wanted;
    };
    std::vector<std::uint32_t> found;
    auto at = std::lower_bound(byPath_.begin(), byPath_.end(), hash, isBefore);
    for (; at != byPath_.end() && tracks_[*at].pathHash == hash; ++at) {
        found.push_back(*at);
    }
    std::reverse(found.begin(), found.end());
    return found;
}

void CollectionIndex::tabulateLoosePaths() const {
    byLoosePath_.resize(std::bit_ceil(2 * byPath_.size() + 1));
    const std::size_t mask = byLoosePath_.size() - 1;
    for (const std::uint32_t number : byPath_) {
        std::size_t at = tracks_[number].looseHash & mask;
        while (byLoosePath_[at] != 0) {
            at = (at + 1) & mask;
        }
        byLoosePath_[at] = number + 1;
    }
}

std::vector<std::uint32_t> CollectionIndex::withLoosePath(std::string_view loose) const {
    std::call_once(isTabulated_, [this] { tabulateLoosePaths(); });
    const std::uint64_t hash = hashOf(loose);
    const std::size_t mask = byLoosePath_.size() - 1;
    std::vector<std::uint32_t> found;
    for (std::size_t at = hash & mask; byLoosePath_[at] != 0; at = (at + 1) & mask) {
        const std::uint32_t number = byLoosePath_[at] - 1;
        if (tracks_[number].looseHash == hash) found.push_back(number);
    }
    return found;
}

bool CollectionIndex::isUnchanged() const {
    ZALFileAttributes now;
    return !file_->attributes(now) && now.size == attributes_.size && now.modified == attributes_.modified;
}

std::optional<std::string_view> ElementReader::bytesOf(std::uint64_t begin, std::uint64_t end) {
    if (begin < windowBegin_ || end > windowBegin_ + window_.size()) {
        const std::uint64_t most = std::min(begin + ahead_, index_->attributes().size);
        windowBegin_ = begin;
        if (!index_->file().read(begin, std::max(end, most), window_)) {
            window_.clear();
            return std::nullopt;
        }
    }
    return std::string_view(window_).substr(begin - windowBegin_, end - begin);
}

std::optional<std::string_view> ElementReader::text(const Span& span) {
    const auto read = bytesOf(span.begin, span.end);
    bytes_ = read.value_or(std::string_view());
    if (!read || Checksum::of(bytes_) != span.checksum) {
        if (!hasFailed_) {
            logf("the {} collection was changed since it was read: it has to be loaded anew",
                 index_->program().name);
        }
        hasFailed_ = true;
        return std::nullopt;
    }
    const XMLEncoding encoding = index_->form().encoding;
    isDecoded_ = encoding != XMLEncoding::utf8 && encoding != XMLEncoding::ascii;
    if (isDecoded_) text_ = decodedXML(bytes_, encoding);
    return lastText();
}

XMLElement ElementReader::element(const Span& span) {
    const auto held = text(span);
    return held ? document_.load(*held) : XMLElement();
}

ZALNullableString ElementReader::path(std::uint32_t number) {
    const XMLElement found = element(index_->tracks()[number].span());
    return found ? index_->program().pathOf(found) : std::nullopt;
}

ZALTrackIdentity ElementReader::identity(std::uint32_t number) {
    const XMLElement found = element(index_->tracks()[number].span());
    return found ? index_->program().identityOf(found) : ZALTrackIdentity();
}

std::unique_ptr<ZALCollectionTrack> ElementReader::track(std::uint32_t number) {
    return trackOf(element(index_->tracks()[number].span()));
}

std::unique_ptr<ZALCollectionTrack> ElementReader::trackOf(const XMLElement& element) const {
    auto track = index_->program().trackOf(element);
    if (track) track->setCollectionHasColors(index_->hasColors());
    return track;
}

std::unique_ptr<ZALCollectionTrack> ElementReader::find(std::string_view path, std::uint32_t& number) {
    for (const std::uint32_t candidate : index_->withPath(path)) {
        auto found = track(candidate);
        if (found && found->indexKey() == path) {
            number = candidate;
            return found;
        }
        if (hasFailed_) return nullptr;
    }
    return nullptr;
}

std::string ElementReader::gapBefore(std::uint32_t number) {
    constexpr std::uint64_t longest = 64;
    if (number == 0) return {};
    const std::uint64_t begin = index_->tracks()[number - 1].span().end;
    const std::uint64_t end = index_->tracks()[number].begin;
    if (end - begin > longest) return {};
    const std::string_view gap = bytesOf(begin, end).value_or(std::string_view());
    return gap.find_first_not_of(" \t\r\n") == gap.npos ? std::string(gap) : std::string();
}

std::string ElementReader::blankInFrontOf(std::uint64_t place) const {
    constexpr std::uint64_t longest = 128;  // what is laid out deeper is not followed
    std::string bytes;
    const std::uint64_t begin = place > longest ? place - longest : place % 2;
    if (!index_->file().read(begin, place, bytes)) return {};
    const std::string text = decodedXML(bytes, index_->form().encoding);
    return std::string(blankBefore(text, text.size()));
}

}  // namespace zal
