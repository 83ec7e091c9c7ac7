// A position that a person asks about: read from FEN, with its moves.
//
// Inside, a position is one of an ending, whose stronger side is White; for people it is turned
// back to the colours that they gave.
#pragma once

#include "tables/ending.h"

#include <cstddef>
#include <string>
#include <vector>

namespace brenquil {

struct ShownMove;

struct ShownPosition {
    int ending = 0;  ///< its number; 0 for bare kings
    EndingSquares squares{};
    Colour sideToMove = White;
    std::size_t victim = Ending::NoMan;  ///< the pawn that may be taken in passing
    bool flipped = false;                ///< colours and ranks are exchanged inside

    /// Reads a FEN strictly: board, side to move, castling rights, en passant square; the counters
    /// may be left out. Throws `CTableError` with what is wrong.
    [[nodiscard]] static ShownPosition FromFen(const std::string& fen);

    [[nodiscard]] std::string Fen() const;

    /// The board for people, White below.
    [[nodiscard]] std::string Board() const;

    /// "white" or "black", as the person sees it.
    [[nodiscard]] std::string SideName() const;

    [[nodiscard]] bool IsInCheck() const;

    /// The legal moves, in no order that means anything.
    [[nodiscard]] std::vector<ShownMove> Moves() const;

private:
    [[nodiscard]] ShownPosition After(const EndingSquares& moved, std::size_t captured,
                                      std::size_t promoted, PieceType type) const;
};

/// A move and where it leads.
struct ShownMove {
    std::string text;  ///< "e7e8q"
    bool isZeroing;    ///< a capture or a pawn move
    ShownPosition after;
};

}  // namespace brenquil
