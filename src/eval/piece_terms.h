// The terms of knights, bishops, rooks and queens: where they stand, how many squares they reach,
// and a rook's file.
//
// One magic look-up per slider and one bit count per knight, bishop and rook; nothing is kept
// between calls. Pawns and kings have their terms in the pawn structure; there is no other king
// safety, and queens have no mobility.
#pragma once

#include "board/position.h"
#include "eval/term_pair.h"

namespace brenquil {

/// White's terms less Black's.
[[nodiscard]] TermPair PieceTerms(const CPosition& position) noexcept;

}  // namespace brenquil
