// How an index is made: the stream parser notes where tracks stand, and a second thread beside it decodes
// their paths and sums up their bytes.

#include "base/Unicode.h"
#include "collection/Checksum.h"
#include "collection/CollectionIndex.h"
#include "platform/FileReplacement.h"

#include <zaltag/collection/ZALCollectionPath.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <future>
#include <limits>
#include <mutex>
#include <random>
#include <thread>

namespace zal {

namespace {

using Batch = std::vector<TrackDraft>;

constexpr std::size_t batchSize = 256;
constexpr std::size_t batchesAhead = 16;
constexpr std::size_t windowSize = 262144;  // a multiple of 8, as the checksum asks

// What the parser hands to the other thread. Its end is an empty batch.
class Batches {
  public:
    void put(Batch&& batch) {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [this] { return waiting_.size() < batchesAhead; });
        waiting_.push_back(std::move(batch));
        changed_.notify_all();
    }
    Batch take() {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [this] { return !waiting_.empty(); });
        Batch batch = std::move(waiting_.front());
        waiting_.pop_front();
        changed_.notify_all();
        return batch;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Batch> waiting_;
};

// Reads ranges that follow one another, a window at a time.
class Summer {
  public:
    explicit Summer(SharedFile& file) : file_(file) {}

    std::uint64_t sumOf(std::uint64_t begin, std::uint64_t end) {
        if (begin < begin_ || end > begin_ + window_.size()) {
            if (end - begin > windowSize) return sumOfMany(begin, end);
            fill(begin, std::max<std::uint64_t>(end - begin, windowSize));
        }
        return Checksum::of(std::string_view(window_).substr(begin - begin_, end - begin));
    }
    bool hasFailed() const { return hasFailed_; }

  private:
    void fill(std::uint64_t begin, std::uint64_t size) {
        begin_ = begin;
        window_.resize(size);
        std::size_t count = 0;
        const std::span<std::uint8_t> buffer(reinterpret_cast<std::uint8_t*>(window_.data()), size);
        hasFailed_ = file_.readAt(begin, buffer, count) || hasFailed_;
    }
    std::uint64_t sumOfMany(std::uint64_t begin, std::uint64_t end) {
        Checksum sum(end - begin);
        for (std::uint64_t at = begin; at < end; at += windowSize) {
            fill(at, std::min<std::uint64_t>(windowSize, end - at));
            sum.add(window_);
        }
        return sum.value();
    }

    SharedFile& file_;
    std::string window_;
    std::uint64_t begin_ = 0;
    bool hasFailed_ = false;
};

std::uint64_t newSeed() {
    std::random_device random;
    return std::uint64_t{random()} << 32 | random();
}

}  // namespace

class CollectionReader final : public XMLStream::Reader {
  public:
    CollectionReader(CollectionIndex& index, bool isSaved)
        : index_(index), program_(index.program_), isSaved_(isSaved) {}

    /// Why the file cannot be used, or an empty text.
    std::string read();

    void startElement(const XMLStream& stream, const char* name, XMLAttributes attributes) override;
    void endElement(const XMLStream& stream) override;

  private:
    enum class Section { none, tracks, playlists };

    void startSection(const XMLStream& stream, const char* name);
    void finishTrack(std::uint64_t end);
    // On the other thread:
    void takeBatches();
    void add(const TrackDraft& draft, Summer& summer);
    void sumFrame(Summer& summer);

    CollectionIndex& index_;
    const CollectionProgram& program_;
    const bool isSaved_;
    Batches batches_;
    int depth_ = 0;
    std::string rootName_;
    Section section_ = Section::none;
    bool isInTrack_ = false;
    bool isInFirstNode_ = false;
    TrackDraft draft_;
    Batch batch_;
    std::string failure_;  // of the other thread
};

std::string CollectionReader::read() {
    index_.seed_ = newSeed();
    auto taken = std::async(std::launch::async, [this] { takeBatches(); });
    // Whatever happens, the other thread gets its end.
    struct End {
        CollectionReader& reader;
        ~End() { reader.batches_.put({}); }
    };
    XMLStream stream(*this);
    std::string reason;
    {
        const End end{*this};
        reason = stream.read(index_.file());
        if (!batch_.empty()) batches_.put(std::move(batch_));
    }
    taken.get();
    index_.form_ = stream.form();
    if (!reason.empty() || !failure_.empty()) return reason.empty() ? failure_ : reason;
    if (!index_.frame_.hasRoot)
        return fmt::format("its root is <{}>, not <{}>", rootName_, program_.rootName);
    Summer summer(index_.file());
    sumFrame(summer);
    index_.tracks_.shrink_to_fit();
    index_.sortByPath();
    return summer.hasFailed() ? "it cannot be read" : "";
}

void CollectionReader::startElement(const XMLStream& stream, const char* name, XMLAttributes attributes) {
    ++depth_;
    CollectionFrame& frame = index_.frame_;
    if (depth_ == 1) {
        rootName_ = name;
        frame.hasRoot = rootName_ == program_.rootName;
        frame.rootTag = {stream.tagBegin(), stream.tagEnd(), 0};
    } else if (depth_ == 2 && frame.hasRoot) {
        startSection(stream, name);
    } else if (depth_ == 3 && section_ == Section::tracks && std::strcmp(name, program_.trackName) == 0) {
        draft_ = {};
        draft_.begin = stream.tagBegin();
        isInTrack_ = true;
        program_.readTrack(attributes, draft_);
    } else if (depth_ == 3 && section_ == Section::playlists && !frame.firstNode &&
               std::strcmp(name, "NODE") == 0) {
        frame.firstNode = Span{stream.tagBegin(), 0, 0};
        isInFirstNode_ = true;
    } else if (depth_ == 4 && isInTrack_) {
        program_.readChild(name, attributes, draft_);
    }
}

void CollectionReader::startSection(const XMLStream& stream, const char* name) {
    if (std::strcmp(name, "COLLECTION") == 0) {
        section_ = Section::tracks;
    } else if (std::strcmp(name, "PLAYLISTS") == 0) {
        section_ = Section::playlists;
        index_.frame_.playlists.push_back({stream.tagBegin(), 0, 0});
    }
}

void CollectionReader::endElement(const XMLStream& stream) {
    CollectionFrame& frame = index_.frame_;
    if (depth_ == 1) {
        frame.rootEnd = stream.tagBegin();
        frame.rootIsEmpty = frame.rootEnd == frame.rootTag.end && stream.tagEnd() == frame.rootEnd;
    } else if (depth_ == 2 && section_ != Section::none) {
        if (section_ == Section::playlists) frame.playlists.back().end = stream.tagEnd();
        section_ = Section::none;
    } else if (depth_ == 3 && isInTrack_) {
        finishTrack(stream.tagEnd());
    } else if (depth_ == 3 && isInFirstNode_) {
        frame.firstNode->end = stream.tagEnd();
        isInFirstNode_ = false;
    }
    --depth_;
}

void CollectionReader::finishTrack(std::uint64_t end) {
    isInTrack_ = false;
    draft_.end = end;
    batch_.push_back(std::move(draft_));
    if (batch_.size() < batchSize) return;
    batches_.put(std::move(batch_));
    batch_ = {};
    batch_.reserve(batchSize);
}

void CollectionReader::takeBatches() {
    Summer summer(index_.file());
    for (;;) {
        const Batch batch = batches_.take();
        if (batch.empty()) break;
        try {
            for (const TrackDraft& draft : batch) {
                if (failure_.empty()) add(draft, summer);
            }
        } catch (const std::exception& exception) {  // memory ran out
            failure_ = exception.what();
        }
    }
    if (summer.hasFailed()) failure_ = "it cannot be read";
}

void CollectionReader::add(const TrackDraft& draft, Summer& summer) {
    constexpr auto longest = std::numeric_limits<std::uint32_t>::max();
    if (draft.end - draft.begin > longest || index_.tracks_.size() == longest) {
        failure_ = "it is too large";
        return;
    }
    const TrackKeys keys = program_.keysOf(draft);
    index_.hasColors_ = index_.hasColors_ || draft.hasColor;
    IndexedTrack& track = index_.tracks_.emplace_back();
    track.begin = draft.begin;
    track.length = static_cast<std::uint32_t>(draft.end - draft.begin);
    track.checksum = summer.sumOf(draft.begin, draft.end);
    track.hasPath = !keys.path.empty();
    track.pathHash = index_.hashOf(keys.path);
    track.looseHash = index_.hashOf(ZALLoosePath(keys.path));
    track.nameHash = index_.hashOf(keys.name);
    track.cues = draft.cues;
    track.id = draft.id;
    track.hasMarks = draft.hasMarks;
    track.isMarked = draft.cues > 0 && !isSaved_;
    track.isImportable = draft.hasDuration && draft.place[0].has_value();
}

void CollectionReader::sumFrame(Summer& summer) {
    CollectionFrame& frame = index_.frame_;
    const auto sum = [&](Span& span) { span.checksum = summer.sumOf(span.begin, span.end); };
    sum(frame.rootTag);
    std::for_each(frame.playlists.begin(), frame.playlists.end(), sum);
    if (frame.firstNode) sum(*frame.firstNode);
}

namespace {

std::shared_ptr<SharedFile> opened(const std::string& path, ZALFileAttributes& attributes,
                                   std::string& reason) {
    const auto files = ZALHost::shared().fileSystem();
    if (files->kindOfFile(path) == ZALFileKind::folder) {
        reason = "it is a folder";
        return nullptr;
    }
    std::error_code failure;
    auto handle = files->open(path, false, failure);
    if (!failure) failure = handle->attributes(attributes);
    if (!failure) return std::make_shared<SharedFile>(std::move(handle));
    reason = describe(failure);
    return nullptr;
}

}  // namespace

std::shared_ptr<const CollectionIndex> CollectionIndex::read(const CollectionProgram& program,
                                                             const std::string& path, std::string& reason,
                                                             bool isSaved) {
    for (int again = 0;; ++again) {
        ZALFileAttributes attributes;
        const auto file = opened(path, attributes, reason);
        if (!file) return nullptr;
        const auto index = std::make_shared<CollectionIndex>(program, file);
        index->attributes_ = attributes;
        reason = CollectionReader(*index, isSaved).read();
        const bool isSame = index->isUnchanged() && isFileAt(*ZALHost::shared().fileSystem(), path, *file);
        if (isSame) return reason.empty() ? index : nullptr;
        reason = "the file was changed while it was read";
        if (again == 4) return nullptr;
        // Another program is writing it: it will be whole in a moment.
        std::this_thread::sleep_for(std::chrono::milliseconds(20 << again));
    }
}

}  // namespace zal
