// Visits every legal position of a table, for the proofs on index calculators.
//
// It is independent on purpose: the numbering of the reader and that of the solver are proven with
// it, so it walks over the squares by itself and takes nothing from either but the piece lists.
//
// Positions are given as the reader's piece lists with the first side as White. Each is visited
// once, with the mover's king in the part of the board to which the symmetries can bring it: files
// a to d with pawns, the triangle a1-d1-d4 without. Where the mover's king stands on the long
// diagonal the other king is not above it; with both on the diagonal, a position and its image are
// both visited. Legal means: men on different squares, pawns on ranks 2 to 7, and the king of the
// side that is not to move is not attacked.
#pragma once

#include "bases/nalimov/nalimov_index.h"
#include "board/types.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace brenquil::test {

/// One position of a table.
struct TablePosition {
    NalimovPieceList first;
    NalimovPieceList second;
    Square epSquare = NalimovNoSquare;
};

/// The number of a signature's table; 0 if there is none.
[[nodiscard]] int TableNumber(std::string_view name);

class CTableEnumerator {
public:
    using Visitor = std::function<void(const TablePosition&)>;

    CTableEnumerator(int table, int side);

    [[nodiscard]] bool HasPawns() const noexcept { return hasPawns_; }

    /// Calls `visit` for all positions.
    void Visit(const Visitor& visit);

    /// The same for one pair of kings.
    void VisitKings(Square mover, Square other, const Visitor& visit);

private:
    struct Man {
        PieceType type;
        bool ofFirst;
        int ordinal;
    };

    NalimovPieceList& Mover() { return side_ == 0 ? position_.first : position_.second; }

    NalimovPieceList& Resting() { return side_ == 0 ? position_.second : position_.first; }

    void Place(std::size_t index, Bitboard occupied, const Visitor& visit);
    [[nodiscard]] bool OtherKingIsAttacked(Bitboard occupied);
    void VisitEnPassant(Bitboard occupied, const Visitor& visit);

    NalimovMaterial material_;
    int side_;
    bool hasPawns_ = false;
    bool takesEnPassant_ = false;
    std::vector<Man> men_;
    TablePosition position_;
};

/// The largest index that a legal position of a side has. It belongs to the last pair of kings,
/// which is d8 (d4 without pawns) and h8, or d1 and h1 where pawns move down the board.
[[nodiscard]] std::uint64_t LargestLegalIndex(int table, int side);

/// Maps every square of a position.
[[nodiscard]] TablePosition Mapped(const TablePosition& position,
                                   const std::function<Square(Square)>& map);

/// What a proof has found for one side of a table.
struct IndexProof {
    std::uint64_t positions = 0;   ///< visited
    std::uint64_t outside = 0;     ///< with an index that the file does not have
    std::uint64_t shared = 0;      ///< with an index that another position has, too
    std::uint64_t split = 0;       ///< with an image that has another index
    std::uint64_t onDiagonal = 0;  ///< with two indices, both kings standing on the diagonal
    std::uint64_t largest = 0;     ///< largest index met
};

/// Visits all positions of a side and looks at each index; images at every `stride`-th position.
[[nodiscard]] IndexProof ProveIndices(int table, int side, std::uint64_t stride = 1);

}  // namespace brenquil::test
