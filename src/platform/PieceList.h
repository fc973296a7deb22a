#pragma once

#include <zaltag/base/ZALData.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace zal {

/// A run of bytes of an edited file.
struct Piece {
    enum class Source { original, memory, zeros };

    Source source = Source::zeros;
    std::uint64_t offset = 0;  ///< where the run starts in the original or in `bytes`
    std::uint64_t length = 0;
    std::shared_ptr<ZALData> bytes{};  ///< of memory; pieces that share it never overlap in it
};

/// The content of an edited file as an ordered list of pieces over the original, which stays as it is.
/// Neighbours that are one run become one piece, and bytes that were written before are overwritten where
/// they are. Every operation costs the logarithm of the number of pieces, whatever it moves.
class PieceList {
  public:
    explicit PieceList(std::uint64_t originalLength);
    ~PieceList();
    PieceList(PieceList&&) noexcept;
    PieceList& operator=(PieceList&&) noexcept;

    std::uint64_t length() const;
    /// The piece that holds a position below the length, cut to begin there.
    Piece pieceAt(std::uint64_t position) const;
    /// True when the content is the original, piece for piece.
    bool isUntouched() const;

    /// Puts bytes in the place of `removed` bytes from a position on, or of as many as there are. A position
    /// behind the end fills what lies between with zeros. Throws std::bad_alloc and is then as before.
    void replace(std::uint64_t position, std::uint64_t removed, ZALDataView bytes);
    /// Cuts the content, or extends it with zeros.
    void resize(std::uint64_t length);

  private:
    // A treap by place: in order by position, a heap by random priorities, which keeps it flat. A node knows
    // the length below it and no position, so that nothing has to be renumbered behind an edit.
    struct Node;
    using Tree = std::unique_ptr<Node>;

    static std::uint64_t lengthOf(const Tree& tree);
    static std::pair<Tree, Tree> split(Tree tree, std::uint64_t position);
    static Tree merge(Tree left, Tree right);
    static Tree joined(Tree left, Tree right);

    Tree nodeOf(Piece piece);
    bool overwriteInMemory(std::uint64_t position, ZALDataView bytes);
    void cutAt(std::uint64_t position);
    void exchange(std::uint64_t position, std::uint64_t removed, Piece piece);

    Tree root_;
    std::uint64_t originalLength_;
    std::uint32_t random_ = 0x9E3779B9;
};

}  // namespace zal
