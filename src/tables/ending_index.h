// The numbering on which endings are solved: from the squares of the men to a place in an array.
//
// It is made for solving: six bits for each man, so that a move changes one field of the number,
// and nothing is left out. (The numberings of the files are denser; docs/nalimov.md and
// docs/syzygy.md have them.)
//
//     slice       the squares of the pawns, the board mirrored where that gives a lower number
//     index       White's king, Black's king, the other pieces
//
// Quiet moves of pieces stay in a slice, all others leave it for good: so an ending with pawns is
// solved slice by slice. Inside a slice with pawns no symmetry is left to be used. Without pawns
// there is one slice, with White's king on a1, b1, c1, d1, b2, c2, d2, c3, d3 or d4. Where that
// king stands on the long diagonal a position and its reflection are two places of equal value.
//
// Like men are not told apart by the files, but here each may have each of its squares.
#pragma once

#include "tables/ending.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace brenquil {

class CEndingIndex {
public:
    /// A place: the number of a slice and the place in it.
    struct Place {
        std::size_t slice;
        std::size_t index;
    };

    explicit CEndingIndex(const Ending& ending);

    /// Places of a slice, for one side to move.
    [[nodiscard]] std::size_t SliceSize() const noexcept { return sliceSize_; }

    [[nodiscard]] std::size_t Slices() const noexcept { return slices_.size(); }

    /// The place of men on different squares, pawns on ranks 2 to 7.
    [[nodiscard]] Place PlaceOf(EndingSquares squares) const noexcept;

    /// The men of a place. They may stand on one square, and on squares that attack a king.
    [[nodiscard]] EndingSquares SquaresOf(Place place) const noexcept {
        EndingSquares squares = slices_[place.slice];
        squares[0] = whiteKings_[place.index >> KingShift()];
        for (std::size_t man = 1; man < pieces_; ++man) {
            squares[man] = place.index >> ShiftOf(man) & 63U;
        }
        return squares;
    }

    /// Where the field of a man, not White's king, begins in an index.
    [[nodiscard]] std::size_t ShiftOf(std::size_t man) const noexcept {
        return 6 * (pieces_ - 1 - man);
    }

    [[nodiscard]] std::size_t KingShift() const noexcept { return 6 * (pieces_ - 1); }

    /// The field of White's king on one of the squares that it has in this numbering.
    [[nodiscard]] std::size_t KingField(Square square) const noexcept {
        return kingFields_[square];
    }

    /// How far the pawns of a slice have come together. A pawn move makes it more.
    [[nodiscard]] int Advance(std::size_t slice) const noexcept;

    /// Is this the place that stands for all that are one position: like men in ascending order
    /// and, without pawns, the lower one of two reflections.
    [[nodiscard]] bool IsCanonical(Place place, const EndingSquares& squares) const noexcept;

private:
    void ListSlices();
    [[nodiscard]] std::size_t CodeOf(const EndingSquares& squares) const noexcept;
    [[nodiscard]] EndingSquares Sorted(EndingSquares squares, std::size_t first,
                                       std::size_t end) const noexcept;
    [[nodiscard]] EndingSquares SortedPawns(const EndingSquares& squares) const noexcept;

    const Ending& ending_;
    std::size_t pieces_;
    std::size_t sliceSize_;
    std::vector<Square> whiteKings_;             // by field
    std::array<std::uint8_t, 64> kingFields_{};  // by square
    std::vector<EndingSquares> slices_;
    std::vector<std::uint32_t> sliceOf_;  // by code of the pawns: slice * 2 + board is mirrored
};

}  // namespace brenquil
