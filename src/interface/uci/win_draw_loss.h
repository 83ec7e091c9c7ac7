// What a score means for the result of a game: the chances of a win, a draw and a loss.
#pragma once

#include "board/types.h"

namespace brenquil {

/// Two constants of a logistic model: the score at which half of the games are won, and the score
/// that moves the odds from there by a factor of e. Fitted by tools/fit_win_draw_loss to 3294 games
/// of the engine against itself, at 10000 to 11500 nodes a move: 126 +- 5 and 147 +- 5 centipawns.
/// On average over their 308393 positions the points scored are 12.5 permille off the model.
inline constexpr double EvenChanceScore = 126.0;
inline constexpr double ScoreOfAFactor = 147.0;

/// Permille, together 1000, from the view of the side to move.
struct WinDrawLoss {
    int win = 0;
    int draw = 0;
    int loss = 0;
};

/// The chances at a score. A mate is certain.
[[nodiscard]] WinDrawLoss ChancesOf(Score score) noexcept;

}  // namespace brenquil
