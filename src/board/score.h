// What the numbers of a `Score` mean: mates, draws and everything between.
//
// A score is seen from the side to move, in units of which a pawn is worth 100 by default. A side
// that is mated `ply` half-moves from the root has -32000 + ply, so that a shorter mate counts
// more. The outermost 255 values on either side are mates, the rest are ordinary scores.
#pragma once

#include "board/types.h"

#include <cassert>
#include <limits>

namespace brenquil {

/// The score of giving mate at the root. As the pair -32000, 32000 also the widest window, and the
/// mark of a value that the search does not know yet.
inline constexpr Score MateScore = 32000;

/// The smallest score that announces a mate: in 254 half-moves.
inline constexpr Score MateBound = 31746;

inline constexpr Score DrawScore = 0;

/// The score of the side to move being mated `ply` half-moves from the root.
[[nodiscard]] constexpr Score MatedAt(int ply) noexcept {
    assert(ply >= 0);
    return ply - MateScore;
}

/// The side to move gives mate.
[[nodiscard]] constexpr bool IsMateWin(Score score) noexcept {
    return score >= MateBound;
}

/// The side to move is mated.
[[nodiscard]] constexpr bool IsMateLoss(Score score) noexcept {
    return score < -(MateBound - 1);
}

/// Half-moves from the root to the mate that the score announces, negative for the side that is
/// mated. 0 for any other score, and for a mate that stands on the board.
[[nodiscard]] constexpr int MateDistance(Score score) noexcept {
    if (IsMateWin(score)) {
        return MateScore - score;
    }
    return IsMateLoss(score) ? -MateScore - score : 0;
}

/// A score or none, in one register. std::optional takes two, which GCC 12 passes through memory,
/// inlined or not: too slow for what every node asks.
class MaybeScore {
public:
    /// None.
    constexpr MaybeScore() noexcept = default;

    constexpr explicit MaybeScore(Score score) noexcept : score_(score) { assert(score != None); }

    constexpr explicit operator bool() const noexcept { return score_ != None; }

    [[nodiscard]] constexpr Score operator*() const noexcept {
        assert(score_ != None);
        return score_;
    }

    [[nodiscard]] constexpr bool operator==(const MaybeScore&) const noexcept = default;

private:
    static constexpr Score None = std::numeric_limits<Score>::min();

    Score score_ = None;
};

inline constexpr MaybeScore NoScore;

}  // namespace brenquil
