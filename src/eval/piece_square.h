// What each man is worth for standing where it stands, beyond its material value.
//
// One middlegame and one endgame value for each piece and square. Black's values are White's on the
// vertically mirrored square; left and right differ on purpose. A constant of 6 KiB, built at
// compile time.
#pragma once

#include "board/table.h"
#include "board/types.h"
#include "eval/term_pair.h"

#include <array>

namespace brenquil {

/// [piece][square], from the point of view of the piece's own side.
using PieceSquareTable = std::array<SquareTable<TermPair>, PieceCodes>;

extern const PieceSquareTable PieceSquare;

}  // namespace brenquil
