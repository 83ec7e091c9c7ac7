// The weighing of the middlegame against the endgame score by the men that are left.
#pragma once

#include "board/types.h"
#include "eval/material.h"

#include <algorithm>
#include <cstdint>

namespace brenquil {

/// The score between `middlegame` (phase 24 and above) and `endgame` (phase 0), truncated towards
/// zero.
///
/// The rounding term 12 shifts the endgame's weight, which runs from 0.5 to 256.5 out of 256: with
/// no pieces left the middlegame score has the weight -0.5. Deliberate.
///
/// The rounding of the double precision steps shows in the result. Where both scores are equal and
/// the weight is no binary fraction, the sum can come out a little below the whole number and is
/// truncated to the one before. So each step must round on its own, on every compiler: the build
/// forbids to fuse a product with the addition behind it.
[[nodiscard]] inline Score Interpolate(std::int32_t middlegame, std::int32_t endgame,
                                       std::int32_t phase) noexcept {
    const std::int32_t goneMen = std::clamp(PhaseTotal - phase, 0, PhaseTotal);
    const double endgameWeight = (goneMen * 256 + 12) / 24.0;
    const double middlegameShare = (256.0 - endgameWeight) * middlegame;
    const double endgameShare = endgameWeight * endgame;
    return static_cast<Score>((middlegameShare + endgameShare) * 0.00390625);
}

}  // namespace brenquil
