#include "platform/PieceList.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zal {

namespace {

// A run in memory is appended to the one before it when that moves few bytes for what was written already.
constexpr std::uint64_t smallRun = 4096;

bool endsItsBytes(const Piece& piece) {
    return piece.offset + piece.length == piece.bytes->size();
}

// Appends the second piece to the first where the two are one run.
bool join(Piece& first, const Piece& second) {
    if (first.source != second.source) return false;
    const bool follows = first.offset + first.length == second.offset;
    if (first.source == Piece::Source::original && !follows) return false;
    if (first.source == Piece::Source::memory && !(first.bytes == second.bytes && follows)) {
        if (!endsItsBytes(first) || second.length > std::max(first.length, smallRun)) return false;
        const auto begin = second.bytes->begin() + static_cast<std::ptrdiff_t>(second.offset);
        const ZALData copy(begin, begin + static_cast<std::ptrdiff_t>(second.length));
        first.bytes->insert(first.bytes->end(), copy.begin(), copy.end());
    }
    first.length += second.length;
    return true;
}

}  // namespace

PieceList::PieceList(std::uint64_t originalLength)
    : length_(originalLength), originalLength_(originalLength) {
    if (originalLength == 0) return;
    pieces_.emplace(0, Piece{.source = Piece::Source::original, .length = originalLength});
}

PieceList::Pieces::iterator PieceList::holding(std::uint64_t position) {
    return std::prev(pieces_.upper_bound(position));
}

Piece PieceList::pieceAt(std::uint64_t position) const {
    const auto& [start, piece] = *std::prev(pieces_.upper_bound(position));
    Piece cut = piece;
    cut.offset += position - start;
    cut.length -= position - start;
    return cut;
}

bool PieceList::isUntouched() const {
    if (length_ != originalLength_ || pieces_.size() > 1) return false;
    return pieces_.empty() || pieces_.begin()->second.source == Piece::Source::original;
}

void PieceList::replace(std::uint64_t position, std::uint64_t removed, ZALDataView bytes) {
    if (position > length_) resize(position);
    removed = std::min(removed, length_ - position);
    if (removed == bytes.size() && overwriteInMemory(position, bytes)) return;
    exchange(position, removed,
             {.source = Piece::Source::memory,
              .length = bytes.size(),
              .bytes = std::make_shared<ZALData>(bytes.begin(), bytes.end())});
}

void PieceList::resize(std::uint64_t length) {
    if (length < length_) {
        exchange(length, length_ - length, {});
    } else if (length > length_) {
        exchange(length_, 0, {.source = Piece::Source::zeros, .length = length - length_});
    }
}

bool PieceList::overwriteInMemory(std::uint64_t position, ZALDataView bytes) {
    if (bytes.empty()) return true;
    auto& [start, piece] = *holding(position);
    if (piece.source != Piece::Source::memory || position + bytes.size() > start + piece.length) return false;
    std::copy(bytes.begin(), bytes.end(),
              piece.bytes->begin() + static_cast<std::ptrdiff_t>(piece.offset + (position - start)));
    return true;
}

void PieceList::splitAt(std::uint64_t position) {
    if (position >= length_) return;
    auto& [start, left] = *holding(position);
    if (start == position) return;
    pieces_.emplace(position, pieceAt(position));
    left.length = position - start;
}

// The one way the list changes. All that can run out of memory comes before the content is another.
void PieceList::exchange(std::uint64_t position, std::uint64_t removed, Piece piece) {
    const std::uint64_t added = piece.length;
    Pieces made;
    if (added > 0) made.emplace(position, std::move(piece));
    splitAt(position);
    splitAt(position + removed);
    const auto behind = pieces_.erase(pieces_.lower_bound(position), pieces_.lower_bound(position + removed));
    shift(behind, added - removed);
    pieces_.merge(made);
    length_ += added - removed;
    mergeAt(position + added);
    mergeAt(position);
}

// Moves the pieces from one on by a distance, which wraps when it is below zero.
void PieceList::shift(Pieces::iterator first, std::uint64_t distance) {
    if (distance == 0) return;
    Pieces moved;
    while (first != pieces_.end()) {
        auto node = pieces_.extract(first++);
        node.key() += distance;
        moved.insert(moved.end(), std::move(node));
    }
    pieces_.merge(moved);
}

// Makes the two pieces that meet at a position one, where they are one run.
void PieceList::mergeAt(std::uint64_t position) {
    const auto second = pieces_.find(position);
    if (second == pieces_.end() || second == pieces_.begin()) return;
    if (join(std::prev(second)->second, second->second)) pieces_.erase(second);
}

}  // namespace zal
