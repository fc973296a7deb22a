#include "stores/ID3v2Store.h"

#include "base/Limits.h"
#include "stores/ID3Frames.h"
#include "taglib/TagLibBytes.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::ID3v2::Frame;

constexpr std::uint64_t paddingMin = 1024;
constexpr std::uint64_t paddingMax = 1 << 20;
constexpr std::uint64_t paddingShare = 100;  // of the file's length

bool readHeader(TagLibStream& stream, std::uint64_t position, ID3v2Header& header) {
    std::array<std::uint8_t, ID3v2Header::length> bytes{};
    return stream.readAt(position, bytes) == bytes.size() && header.read(bytes);
}

ByteVector withoutPadding(const ByteVector& tail) {
    const ZALDataView bytes = viewOf(tail);
    const auto last = std::find_if(bytes.rbegin(), bytes.rend(), [](std::uint8_t byte) { return byte != 0; });
    return tail.mid(0, static_cast<unsigned>(bytes.rend() - last));
}

// Frames of which a tag has one: another one takes the place of what nobody could read.
bool isSingle(const std::string& id) {
    return id[0] == 'T' && id != "TXXX";
}

}  // namespace

// Reading

std::unique_ptr<ID3v2Store> ID3v2Store::read(TagLibStream& stream, std::uint64_t position, std::uint64_t end,
                                             GenreNumbers genres) {
    auto store = std::make_unique<ID3v2Store>();
    ID3v2Header header;
    if (end < position + ID3v2Header::length || !readHeader(stream, position, header)) return store;
    store->room_ = std::min(header.completeSize(), end - position);
    header.size =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(header.size, store->room_ - ID3v2Header::length));
    const ByteVector bytes = stream.bytesAt(position, ID3v2Header::length + std::uint64_t{header.size});
    store->raw_ = rawTag(header, bytes.mid(ID3v2Header::length));
    std::vector<ReadFrame> frames;
    if (!readFrames(store->raw_, genres, frames)) return nullptr;
    store->genres_ = genres;
    store->tag_.header()->setData(bytes.mid(0, ID3v2Header::length));
    store->entries_.reserve(frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        Frame* frame = frames[i].frame.release();
        if (frame != nullptr) store->tag_.addFrame(frame);
        store->entries_.push_back(
            {store->raw_.frames[i].currentID(), frame, frames[i].isRenewed, frames[i].isMerged});
    }
    return store;
}

TagLib::ID3v2::Tag& ID3v2Store::tagToEdit(std::string_view id) {
    edited_.emplace(id);
    return tag_;
}

TagLib::ID3v2::Tag& ID3v2Store::tagToEdit() {
    isEditedWhole_ = true;
    return tag_;
}

bool ID3v2Store::hadFrame(std::string_view id) const {
    return std::ranges::any_of(entries_, [id](const Entry& entry) { return entry.id == id; });
}

bool ID3v2Store::isEmpty() const {
    const auto isUnheld = [](const Entry& entry) { return entry.frame == nullptr; };
    return tag_.frameList().isEmpty() && !raw_.isOpaque && raw_.tail.isEmpty() &&
           std::ranges::none_of(entries_, isUnheld);
}

void ID3v2Store::addRaw(const ByteVector& bytes) {
    RawTag one;
    one.frames.push_back({4, false, bytes});
    std::vector<ReadFrame> frames;
    if (!readFrames(one, GenreNumbers::kept, frames)) return;
    Frame* frame = frames.front().frame.release();
    if (frame == nullptr) return addedUnread_.push_back(bytes);
    tagToEdit(one.frames.front().currentID()).addFrame(frame);
    added_[frame] = bytes;
}

// Writing

/// One frame of the new tag.
struct NewFrame {
    std::string id;
    Frame* frame = nullptr;   // null when TagLib does not hold it
    ByteVector bytes;         // empty: a place that a frame of its id may take
    std::ptrdiff_t raw = -1;  // the raw frame that it is, byte for byte; below 0 for none
};

class ID3v2Store::Merge {
  public:
    explicit Merge(const ID3v2Store& store) : store_(store), raw_(store.raw_) {
        for (Frame* frame : store.tag_.frameList()) {
            present_.insert(frame);
        }
    }

    void run() {
        const std::vector<ReadFrame> baseline = framesAsRead();
        for (std::size_t i = 0; i < raw_.frames.size(); ++i) {
            takeOld(i, baseline[i].frame.get());
        }
        takeNew();
        std::erase_if(slots_, [](const NewFrame& slot) { return slot.bytes.isEmpty(); });
        moveUnusualToEnd();
    }

    bool isChanged() const { return isChanged_; }
    const std::vector<NewFrame>& frames() const { return slots_; }

    /// Whether a reader finds all of it in the new tag: every kept frame as it was, and nothing else.
    bool isProvedBy(const RawTag& written) const {
        if (written.frames.size() != slots_.size()) return false;
        for (std::size_t i = 0; i < slots_.size(); ++i) {
            const RawFrame& now = written.frames[i];
            const bool isRight =
                slots_[i].raw < 0 ? now.bytes == slots_[i].bytes
                                  : isSameContent(raw_.frames[static_cast<std::size_t>(slots_[i].raw)], now);
            if (!isRight) return false;
        }
        return withoutPadding(written.tail) == withoutPadding(raw_.tail);
    }

  private:
    // What TagLib made of the frames that may have been changed; null for the others.
    std::vector<ReadFrame> framesAsRead() const {
        const bool areDatesEdited = store_.isEdited("TDRC");
        std::vector<ReadFrame> frames;
        readFrames(raw_, store_.genres_, frames, [&](const std::string& id) {
            return store_.isEdited(id) || (areDatesEdited && (id == "TDAT" || id == "TIME"));
        });
        return frames;
    }

    void takeOld(std::size_t i, const Frame* baseline) {
        const RawFrame& raw = raw_.frames[i];
        const Entry& entry = store_.entries_[i];
        if (raw.contentSize() == 0 || entry.isMerged) return;
        NewFrame slot{entry.id, entry.frame, {}, static_cast<std::ptrdiff_t>(i)};
        // Another frame can stand at the address of one that is gone.
        const bool isThere = present_.contains(entry.frame) && idOf(*entry.frame) == entry.id;
        if (entry.frame != nullptr && !isThere) {
            slot.frame = nullptr;
            isChanged_ = true;
        } else {
            slot.bytes = frameInVersion4(raw);
            if (entry.isRenewed || (isThere && baseline != nullptr)) renew(slot, baseline, entry.isRenewed);
        }
        slots_.push_back(std::move(slot));
    }

    void renew(NewFrame& slot, const Frame* baseline, bool isRenewed) {
        ByteVector now = slot.frame->render();
        const bool isSame = baseline == nullptr || now == baseline->render();
        if (isSame && !isRenewed) return;
        if (!isSame && now != slot.bytes) isChanged_ = true;
        slot.bytes = std::move(now);
        slot.raw = -1;
    }

    static std::string idOf(const Frame& frame) {
        const ByteVector id = frame.frameID();
        return {id.data(), id.size()};
    }

    // New frames take the places of those of their id that are gone, so that all of an id keep the order in
    // which TagLib has them; the rest comes last.
    void takeNew() {
        std::map<std::string, std::vector<Frame*>> kept;
        for (const NewFrame& slot : slots_) {
            if (slot.frame != nullptr) kept[slot.id].push_back(slot.frame);
        }
        std::map<std::string, std::vector<Frame*>> wanted;
        for (Frame* frame : store_.tag_.frameList()) {
            wanted[idOf(*frame)].push_back(frame);
        }
        for (const auto& [id, frames] : wanted) {
            if (kept[id] != frames) place(id, frames);
        }
        for (const ByteVector& bytes : store_.addedUnread_) {
            slots_.push_back({RawFrame{4, false, bytes}.id(), nullptr, bytes, -1});
            isChanged_ = true;
        }
    }

    void place(const std::string& id, const std::vector<Frame*>& frames) {
        isChanged_ = true;
        std::vector<std::size_t> places;
        std::map<const Frame*, std::size_t> old;  // where in `places`
        for (std::size_t i = 0; i < slots_.size(); ++i) {
            const bool isUnread = slots_[i].frame == nullptr && !slots_[i].bytes.isEmpty();
            if (slots_[i].id != id || (isUnread && !isSingle(id))) continue;
            if (slots_[i].frame != nullptr) old[slots_[i].frame] = places.size();
            places.push_back(i);
        }
        std::vector<NewFrame> made;
        for (Frame* frame : frames) {
            const auto own = old.find(frame);
            made.push_back(own != old.end() ? slots_[places[own->second]]
                                            : NewFrame{id, frame, bytesOf(frame), -1});
        }
        for (const std::size_t place : places) {
            slots_[place] = NewFrame{id, nullptr, {}, -1};
        }
        const std::vector<std::size_t> chosen = choose(made, old, places.size());
        for (std::size_t i = 0; i < made.size(); ++i) {
            if (i < chosen.size())
                slots_[places[chosen[i]]] = std::move(made[i]);
            else
                slots_.push_back(std::move(made[i]));
        }
    }

    // Which of the places the first of the frames take: old ones stay where they are, when the new ones then
    // stand between them as they are wanted; else all take the first places.
    static std::vector<std::size_t> choose(const std::vector<NewFrame>& made,
                                           const std::map<const Frame*, std::size_t>& old,
                                           std::size_t count) {
        std::vector<bool> isTaken(count);
        for (const NewFrame& frame : made) {
            if (const auto own = old.find(frame.frame); own != old.end()) isTaken[own->second] = true;
        }
        std::vector<std::size_t> chosen;
        std::size_t next = 0;
        bool isInOrder = true;
        for (const NewFrame& frame : made) {
            const auto own = old.find(frame.frame);
            if (own == old.end() && next >= count) break;
            const std::size_t place = own != old.end() ? own->second : next;
            isInOrder = isInOrder && place >= next && (own != old.end() || !isTaken[place]);
            chosen.push_back(place);
            next = place + 1;
        }
        const auto rest = made.begin() + static_cast<std::ptrdiff_t>(chosen.size());
        const auto isOld = [&old](const NewFrame& frame) { return old.contains(frame.frame); };
        if (isInOrder && std::none_of(rest, made.end(), isOld)) return chosen;
        chosen.clear();
        for (std::size_t i = 0; i < std::min(made.size(), count); ++i) {
            chosen.push_back(i);
        }
        return chosen;
    }

    ByteVector bytesOf(Frame* frame) const {
        const auto added = store_.added_.find(frame);
        return added != store_.added_.end() ? added->second : frame->render();
    }

    // Some readers end at an id of three characters.
    void moveUnusualToEnd() {
        if (raw_.version == 4) return;
        std::stable_partition(slots_.begin(), slots_.end(),
                              [](const NewFrame& slot) { return slot.id.size() != 4 || slot.id[3] != ' '; });
    }

    const ID3v2Store& store_;
    const RawTag& raw_;
    std::set<Frame*> present_;
    std::vector<NewFrame> slots_;
    bool isChanged_ = false;
};

namespace {

// How much room the tag gets: what it had, when that is neither too little nor a waste.
std::uint64_t roomFor(std::uint64_t needed, std::uint64_t room, std::uint64_t fileLength) {
    const std::uint64_t most = std::clamp(fileLength / paddingShare, paddingMin, paddingMax);
    return needed < room && room - needed <= most ? room : needed + paddingMin;
}

RawTag takenApart(const ByteVector& tag) {
    ID3v2Header header;
    if (!header.read(viewOf(tag))) return {};
    return rawTag(header, tag.mid(ID3v2Header::length));
}

}  // namespace

ID3v2Edit ID3v2Store::edit(std::uint64_t fileLength) const {
    ID3v2Edit edit;
    Merge merge(*this);
    merge.run();
    edit.isChanged = merge.isChanged();
    if (!edit.isChanged) return edit;
    if (raw_.isOpaque) {
        edit.refusal = "its ID3v2 tag is of a kind that cannot be written";
        return edit;
    }
    std::uint64_t size = raw_.tail.size();
    for (const NewFrame& frame : merge.frames()) {
        size += frame.bytes.size();
        edit.frames_.push_back(frame.frame);
    }
    if (merge.frames().size() > limits::id3Frames) {
        edit.refusal = "its ID3v2 tag would hold too many frames";
        return edit;
    }
    if (size > id3SizeMax - paddingMin) {
        edit.refusal = "its ID3v2 tag would be too large";
        return edit;
    }
    if (size == 0) return edit;
    const std::uint64_t needed = ID3v2Header::length + size;
    // What stands behind the last frame may be one that says it is longer: it must not get longer.
    const std::uint64_t room = raw_.tail.isEmpty() ? roomFor(needed, room_, fileLength) : needed;
    edit.bytes = ByteVector(static_cast<unsigned>(room), '\0');
    auto end = edit.bytes.begin();
    const auto append = [&end](const ByteVector& bytes) { end = std::copy(bytes.begin(), bytes.end(), end); };
    append(tagHeader(static_cast<std::uint32_t>(room - ID3v2Header::length)));
    for (const NewFrame& frame : merge.frames()) {
        append(frame.bytes);
    }
    append(raw_.tail);
    edit.raw_ = takenApart(edit.bytes);
    if (!merge.isProvedBy(edit.raw_)) edit.refusal = "its ID3v2 tag holds what would not stay as it is";
    return edit;
}

void ID3v2Store::accept(const ID3v2Edit& edit) {
    if (!edit.isChanged) return;
    added_.clear();
    addedUnread_.clear();
    edited_.clear();
    entries_.clear();
    room_ = edit.bytes.size();
    raw_ = edit.raw_;
    for (std::size_t i = 0; i < raw_.frames.size(); ++i) {
        entries_.push_back({raw_.frames[i].currentID(), edit.frames_[i]});
    }
    tag_.header()->setMajorVersion(4);
    tag_.header()->setTagSize(static_cast<unsigned>(room_ > 0 ? room_ - ID3v2Header::length : 0));
}

std::vector<const TagLib::ID3v2::Tag*> tagsOf(const ID3v2Store& first,
                                              const std::vector<std::unique_ptr<ID3v2Store>>& further) {
    std::vector<const TagLib::ID3v2::Tag*> tags{&first.tag()};
    for (const auto& store : further) {
        tags.push_back(&store->tag());
    }
    return tags;
}

}  // namespace zal
