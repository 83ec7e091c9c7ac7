// The weighing of the middlegame against the endgame score by the men that are left.
#pragma once

#include "board/types.h"
#include "eval/material.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>

namespace brenquil {

/// What both scores weigh at a phase, out of 256.
struct PhaseWeight {
    double middlegame;
    double endgame;
};

/// By phase, 0 to 24: a table spares every evaluation a division.
inline constexpr std::array<PhaseWeight, PhaseTotal + 1> PhaseWeights = [] {
    std::array<PhaseWeight, PhaseTotal + 1> weights{};
    for (int phase = 0; phase <= PhaseTotal; ++phase) {
        const double endgame = ((PhaseTotal - phase) * 256 + 12) / 24.0;
        weights[phase] = {256.0 - endgame, endgame};
    }
    return weights;
}();

/// The score between `middlegame` (phase 24 and above) and `endgame` (phase 0), truncated towards
/// zero.
///
/// The rounding term 12 shifts the endgame's weight, which runs from 0.5 to 256.5 out of 256: with
/// no pieces left the middlegame score has the weight -0.5. Deliberate.
///
/// The rounding of the double precision steps shows in the result. Where both scores are equal and
/// the weight is not a binary fraction, the sum can come out a little below the whole number and is
/// truncated to the one before. So each step must round on its own, on every compiler: the build
/// does not let a product be fused with the addition that follows.
[[nodiscard]] inline Score Interpolate(int middlegame, int endgame, int phase) noexcept {
    assert(phase >= 0);
    const auto& weights = PhaseWeights[static_cast<std::size_t>(std::min(phase, PhaseTotal))];
    const double middlegameShare = weights.middlegame * middlegame;
    const double endgameShare = weights.endgame * endgame;
    return static_cast<Score>((middlegameShare + endgameShare) * 0.00390625);
}

}  // namespace brenquil
