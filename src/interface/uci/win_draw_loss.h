// What a score means for the result of a game: the chances of a win, a draw and a loss.
#pragma once

#include "board/types.h"

#include <cstdint>

namespace brenquil {

/// Two constants of a logistic model: the score at which half of the games are taken to be won, and
/// the score that moves the odds from there by a factor of e. Chosen by hand, not fitted to games.
inline constexpr double EvenChanceScore = 150.0;
inline constexpr double ScoreOfAFactor = 80.0;

/// Permille, together 1000, from the view of the side to move.
struct WinDrawLoss {
    std::int32_t win = 0;
    std::int32_t draw = 0;
    std::int32_t loss = 0;
};

/// The chances at a score. A mate is certain.
[[nodiscard]] WinDrawLoss ChancesOf(Score score) noexcept;

}  // namespace brenquil
