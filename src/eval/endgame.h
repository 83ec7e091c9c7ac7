// Known endings: material constellations of at most five men with one king on each side.
//
// Exact draws are answered as such, and mating drives get a gradient that the general evaluation
// lacks: the defending king to the edge or into the right corner, the kings together. King and pawn
// against king is decided by a bitbase. All other positions get no answer.
//
// Which ending it is depends on the men alone: the evaluation finds that out once for each set of
// men.
#pragma once

#include "board/position.h"
#include "board/types.h"
#include "eval/kpk_bitbase.h"
#include "eval/material.h"

#include <cstdint>
#include <optional>

namespace brenquil {

/// A known ending: a number from 1 on.
using EndingNumber = std::uint8_t;

inline constexpr EndingNumber UnknownEnding = 0;

/// The ending that the men of the position make, wherever they and the kings stand, whoever has
/// which and however many kings there are.
[[nodiscard]] EndingNumber FindEnding(const CPosition& position) noexcept;

/// The score of a known ending from the side to move's view, final as it stands; nothing if the
/// ending is not known, or if there is not one king each.
/// @param number    what `FindEnding` says of the position
/// @param material  that of the position: the side with more of it counts as the strong one, so the
///                  options of the piece values have a say in the result
[[nodiscard]] std::optional<Score> EvaluateEnding(EndingNumber number, const CPosition& position,
                                                  const Material& material,
                                                  const CKpkBitbase& bitbase) noexcept;

}  // namespace brenquil
