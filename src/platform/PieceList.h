#pragma once

#include <zaltag/base/ZALData.h>

#include <cstdint>
#include <map>
#include <memory>

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
/// Neighbours are merged, and bytes that were written before are overwritten where they are, so that many
/// small writes stay cheap: a write of the same length costs a look-up, one that moves what follows costs a
/// pass over the pieces behind it.
class PieceList {
  public:
    using Pieces = std::map<std::uint64_t, Piece>;  ///< by their place in the content

    explicit PieceList(std::uint64_t originalLength);

    std::uint64_t length() const { return length_; }
    /// The pieces in order, without gaps and none of them empty.
    const Pieces& pieces() const { return pieces_; }
    /// The piece that holds a position below the length, cut to begin there.
    Piece pieceAt(std::uint64_t position) const;
    /// True when the content is the original, piece for piece.
    bool isUntouched() const;

    /// Puts bytes in the place of `removed` bytes from a position on, or of as many as there are. A position
    /// behind the end fills what lies between with zeros.
    void replace(std::uint64_t position, std::uint64_t removed, ZALDataView bytes);
    /// Cuts the content, or extends it with zeros.
    void resize(std::uint64_t length);

  private:
    Pieces::iterator holding(std::uint64_t position);
    bool overwriteInMemory(std::uint64_t position, ZALDataView bytes);
    void splitAt(std::uint64_t position);
    void exchange(std::uint64_t position, std::uint64_t removed, Piece piece);
    void shift(Pieces::iterator first, std::uint64_t distance);
    void mergeAt(std::uint64_t position);

    Pieces pieces_;
    std::uint64_t length_;
    std::uint64_t originalLength_;
};

}  // namespace zal
