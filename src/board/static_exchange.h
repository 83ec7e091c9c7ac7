// Static exchange evaluation: what a move wins or loses in material if both sides go on recapturing
// on its target square, always with their cheapest man, and stop when that is better for them.
//
// Pins and legality play no part. Reads the position and changes nothing; two slider look-ups for
// each recapture, no allocation.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <array>

namespace brenquil {

/// By `PieceType`. Deliberately not the values of the evaluation, and not set by its options. The
/// king's value keeps him from being the last to take.
inline constexpr std::array<Score, 6> SeeValues = {100, 300, 300, 500, 900, 10000};

/// Gain of the moving side in the units of `SeeValues`; 0 is an even exchange. The from-square must
/// hold a man. En passant counts as taking nothing, a promotion earns nothing.
[[nodiscard]] Score StaticExchange(const CPosition& position, Move move) noexcept;

/// Is `StaticExchange` of the move negative. Costs half as much, because it follows the exchange
/// only until one side can no longer come out ahead, and often does not look for attackers at all.
[[nodiscard]] bool LosesExchange(const CPosition& position, Move move) noexcept;

}  // namespace brenquil
