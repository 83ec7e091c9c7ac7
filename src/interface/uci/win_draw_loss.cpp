#include "interface/uci/win_draw_loss.h"

#include "board/score.h"

#include <cassert>
#include <cmath>

namespace brenquil {

namespace {

int WinsAt(Score score) noexcept {
    const double distance = (EvenChanceScore - score) / ScoreOfAFactor;
    return static_cast<int>(std::lround(1000.0 / (1.0 + std::exp(distance))));
}

}  // namespace

WinDrawLoss ChancesOf(Score score) noexcept {
    if (IsMateWin(score)) {
        return {1000, 0, 0};
    }
    if (IsMateLoss(score)) {
        return {0, 0, 1000};
    }
    const int win = WinsAt(score);
    const int loss = WinsAt(-score);
    assert(win + loss <= 1000);
    return {win, 1000 - win - loss, loss};
}

}  // namespace brenquil
