// The listing of the moves of a position with what the bases know about each.
#pragma once

#include "bases/base.h"
#include "board/position.h"
#include "board/position_text.h"

#include <string>
#include <vector>

namespace brenquil {

/// One row for each move, numbered from 1, the best by what the bases know first.
///
/// The moves are pseudo-legal: in check, or with a pinned man, the list holds moves that cannot be
/// played. It works on a copy of the position.
/// @param all  also lists moves that no base knows, and shows up to five moves of a base's line
[[nodiscard]] std::vector<std::string> ListMoves(const CBaseList& bases, const CPosition& position,
                                                 bool all, CastlingNotation notation);

}  // namespace brenquil
