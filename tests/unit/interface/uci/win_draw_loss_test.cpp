// The chances that a score means.

#include "board/score.h"
#include "interface/uci/win_draw_loss.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(WinDrawLoss, AddUpToAThousandAndRiseWithTheScore) {
    std::int32_t before = -1;
    for (Score score = -3000; score <= 3000; score += 7) {
        const WinDrawLoss chances = ChancesOf(score);
        EXPECT_EQ(chances.win + chances.draw + chances.loss, 1000);
        EXPECT_GE(chances.win, before);
        EXPECT_GE(chances.draw, 0);
        before = chances.win;
    }
}

TEST(WinDrawLoss, AreTheSameForBothSides) {
    for (const Score score : {0, 1, 55, 400}) {
        EXPECT_EQ(ChancesOf(score).win, ChancesOf(-score).loss);
        EXPECT_EQ(ChancesOf(score).draw, ChancesOf(-score).draw);
    }
    EXPECT_EQ(ChancesOf(0).win, ChancesOf(0).loss);
}

TEST(WinDrawLoss, HalfTheGamesAreWonAtTheConstantOfThatName) {
    EXPECT_EQ(ChancesOf(static_cast<Score>(EvenChanceScore)).win, 500);
}

TEST(WinDrawLoss, MatesAreCertain) {
    EXPECT_EQ(ChancesOf(MateScore - 3).win, 1000);
    EXPECT_EQ(ChancesOf(-MateScore + 3).loss, 1000);
}

}  // namespace
}  // namespace brenquil
