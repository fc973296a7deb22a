#include "platform/PieceList.h"

#include <algorithm>
#include <new>

namespace zal {

struct PieceList::Node {
    Piece piece;
    std::uint32_t priority = 0;
    std::uint64_t length = 0;  // with all below
    Tree left{};
    Tree right{};

    void update() { length = lengthOf(left) + piece.length + lengthOf(right); }
};

namespace {

// A run in memory is appended to the one before it when that moves few bytes for what was written already.
constexpr std::uint64_t smallRun = 4096;

// Appends the bytes of one piece to those of the piece before it. False where they cannot become one run, for
// want of memory, too.
bool appendBytes(Piece& first, const Piece& second) {
    if (first.offset + first.length != first.bytes->size()) return false;
    if (second.length > std::max(first.length, smallRun)) return false;
    try {
        const auto begin = second.bytes->begin() + static_cast<std::ptrdiff_t>(second.offset);
        const ZALData copy(begin, begin + static_cast<std::ptrdiff_t>(second.length));
        first.bytes->insert(first.bytes->end(), copy.begin(), copy.end());
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Makes the first piece hold the second, too, where the two are one run.
bool join(Piece& first, const Piece& second) {
    if (first.source != second.source) return false;
    const bool follows = first.bytes == second.bytes && first.offset + first.length == second.offset;
    if (first.source == Piece::Source::original && !follows) return false;
    if (first.source == Piece::Source::memory && !follows && !appendBytes(first, second)) return false;
    first.length += second.length;
    return true;
}

}  // namespace

PieceList::PieceList(std::uint64_t originalLength) : originalLength_(originalLength) {
    if (originalLength > 0) root_ = nodeOf({.source = Piece::Source::original, .length = originalLength});
}

PieceList::~PieceList() = default;
PieceList::PieceList(PieceList&&) noexcept = default;
PieceList& PieceList::operator=(PieceList&&) noexcept = default;

std::uint64_t PieceList::lengthOf(const Tree& tree) {
    return tree ? tree->length : 0;
}

std::uint64_t PieceList::length() const {
    return lengthOf(root_);
}

Piece PieceList::pieceAt(std::uint64_t position) const {
    const Node* node = root_.get();
    while (true) {
        const std::uint64_t before = lengthOf(node->left);
        if (position < before) {
            node = node->left.get();
        } else if (position - before < node->piece.length) {
            Piece cut = node->piece;
            cut.offset += position - before;
            cut.length -= position - before;
            return cut;
        } else {
            position -= before + node->piece.length;
            node = node->right.get();
        }
    }
}

bool PieceList::isUntouched() const {
    if (length() != originalLength_) return false;
    return !root_ ||
           (root_->piece.source == Piece::Source::original && root_->piece.length == originalLength_);
}

void PieceList::replace(std::uint64_t position, std::uint64_t removed, ZALDataView bytes) {
    if (position > length()) resize(position);
    removed = std::min(removed, length() - position);
    if (removed == bytes.size() && overwriteInMemory(position, bytes)) return;
    exchange(position, removed,
             {.source = Piece::Source::memory,
              .length = bytes.size(),
              .bytes = std::make_shared<ZALData>(bytes.begin(), bytes.end())});
}

void PieceList::resize(std::uint64_t length) {
    if (length < this->length()) {
        exchange(length, this->length() - length, {});
    } else if (length > this->length()) {
        exchange(this->length(), 0, {.source = Piece::Source::zeros, .length = length - this->length()});
    }
}

bool PieceList::overwriteInMemory(std::uint64_t position, ZALDataView bytes) {
    if (bytes.empty()) return true;
    const Piece piece = pieceAt(position);
    if (piece.source != Piece::Source::memory || bytes.size() > piece.length) return false;
    std::copy(bytes.begin(), bytes.end(), piece.bytes->begin() + static_cast<std::ptrdiff_t>(piece.offset));
    return true;
}

// The one way the list changes. All that can run out of memory comes before the content is another.
void PieceList::exchange(std::uint64_t position, std::uint64_t removed, Piece piece) {
    Tree added = piece.length > 0 ? nodeOf(std::move(piece)) : nullptr;
    cutAt(position);
    cutAt(position + removed);
    auto [left, rest] = split(std::move(root_), position);
    Tree right = split(std::move(rest), removed).second;
    root_ = joined(joined(std::move(left), std::move(added)), std::move(right));
}

PieceList::Tree PieceList::nodeOf(Piece piece) {
    random_ ^= random_ << 13;
    random_ ^= random_ >> 17;
    random_ ^= random_ << 5;
    const std::uint64_t length = piece.length;
    return std::make_unique<Node>(Node{.piece = std::move(piece), .priority = random_, .length = length});
}

// Makes a piece begin at the position.
void PieceList::cutAt(std::uint64_t position) {
    if (position == 0 || position >= length()) return;
    if (pieceAt(position - 1).length == 1) return;  // one begins there
    Tree tail = nodeOf(pieceAt(position));
    Node* node = root_.get();
    for (std::uint64_t at = position;;) {
        node->length -= tail->length;
        const std::uint64_t before = lengthOf(node->left);
        if (at < before) {
            node = node->left.get();
        } else if (at - before < node->piece.length) {
            node->piece.length -= tail->length;
            break;
        } else {
            at -= before + node->piece.length;
            node = node->right.get();
        }
    }
    auto [left, right] = split(std::move(root_), position);
    root_ = merge(merge(std::move(left), std::move(tail)), std::move(right));
}

// The pieces before and behind a position at which a piece begins.
std::pair<PieceList::Tree, PieceList::Tree> PieceList::split(Tree tree, std::uint64_t position) {
    if (!tree) return {};
    const std::uint64_t before = lengthOf(tree->left);
    if (position <= before) {
        auto [left, right] = split(std::move(tree->left), position);
        tree->left = std::move(right);
        tree->update();
        return {std::move(left), std::move(tree)};
    }
    auto [left, right] = split(std::move(tree->right), position - before - tree->piece.length);
    tree->right = std::move(left);
    tree->update();
    return {std::move(tree), std::move(right)};
}

PieceList::Tree PieceList::merge(Tree left, Tree right) {
    if (!left || !right) return left ? std::move(left) : std::move(right);
    if (left->priority > right->priority) {
        left->right = merge(std::move(left->right), std::move(right));
        left->update();
        return left;
    }
    right->left = merge(std::move(left), std::move(right->left));
    right->update();
    return right;
}

// Merges, and makes the two pieces that meet one, where they are one run.
PieceList::Tree PieceList::joined(Tree left, Tree right) {
    if (!left || !right) return merge(std::move(left), std::move(right));
    Node* last = left.get();
    while (last->right) {
        last = last->right.get();
    }
    const Node* first = right.get();
    while (first->left) {
        first = first->left.get();
    }
    const std::uint64_t length = first->piece.length;
    if (!join(last->piece, first->piece)) return merge(std::move(left), std::move(right));
    for (Node* node = left.get(); node != nullptr; node = node->right.get()) {
        node->length += length;
    }
    return merge(std::move(left), split(std::move(right), length).second);
}

}  // namespace zal
