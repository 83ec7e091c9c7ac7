// Known endings: material constellations of at most five men with one king on each side.
//
// Exact draws are answered as such, and mating drives get a gradient that the general evaluation
// lacks: the defending king to the edge or into the right corner, the kings together. King and pawn
// against king is decided by a bitbase. All other positions get no answer, those with six men or
// more after one comparison.
#pragma once

#include "board/position.h"
#include "board/types.h"
#include "eval/kpk_bitbase.h"
#include "eval/material.h"

#include <optional>

namespace brenquil {

/// Answers for a position of at most five men with one king each.
[[nodiscard]] std::optional<Score> ScoreKnownEnding(const CPosition& position,
                                                    const Material& material,
                                                    const CKpkBitbase& bitbase) noexcept;

/// The score of a known ending from the side to move's view, final as it stands; nothing if the
/// ending is not known. `material` is that of the position: the side with more of it counts as the
/// strong one, so the options of the piece values have a say in the result.
[[nodiscard]] inline std::optional<Score> EvaluateEndgame(const CPosition& position,
                                                          const Material& material,
                                                          const CKpkBitbase& bitbase) noexcept {
    if (position.MenCount() > 5 || position.pieceCount[WhiteKing] != 1 ||
        position.pieceCount[BlackKing] != 1) {
        return std::nullopt;
    }
    return ScoreKnownEnding(position, material, bitbase);
}

}  // namespace brenquil
