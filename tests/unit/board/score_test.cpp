#include "board/score.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(Score, MateBandBeginsAtAMateIn254HalfMoves) {
    EXPECT_TRUE(IsMateWin(MateScore));
    EXPECT_TRUE(IsMateWin(31746));
    EXPECT_TRUE(IsMateWin(-MatedAt(254)));
    EXPECT_FALSE(IsMateWin(31745));
    EXPECT_FALSE(IsMateWin(-MatedAt(255)));
}

TEST(Score, LosingBandMirrorsTheWinningOne) {
    EXPECT_TRUE(IsMateLoss(-MateScore));
    EXPECT_TRUE(IsMateLoss(-31746));
    EXPECT_FALSE(IsMateLoss(-31745));
    EXPECT_FALSE(IsMateLoss(31746));
    EXPECT_FALSE(IsMateWin(-31746));
}

TEST(Score, ShorterMatesCountMore) {
    EXPECT_EQ(MatedAt(0), -32000);
    EXPECT_EQ(MatedAt(3), -31997);
    EXPECT_LT(MatedAt(2), MatedAt(4));
}

TEST(Score, DistanceCountsHalfMovesAndIsNegativeForTheMatedSide) {
    EXPECT_EQ(MateDistance(31999), 1);
    EXPECT_EQ(MateDistance(31746), 254);
    EXPECT_EQ(MateDistance(31745), 0);
    EXPECT_EQ(MateDistance(-31998), -2);
    EXPECT_EQ(MateDistance(-31746), -254);
    EXPECT_EQ(MateDistance(-31745), 0);
    EXPECT_EQ(MateDistance(MateScore), 0);
    EXPECT_EQ(MateDistance(-MateScore), 0);
}

TEST(MaybeScore, HoldsAScoreOrNone) {
    EXPECT_FALSE(NoScore);
    EXPECT_FALSE(MaybeScore());
    for (const Score score : {0, 1, -1, MateScore, -MateScore, 2147483647, -2147483647}) {
        ASSERT_TRUE(MaybeScore(score)) << score;
        EXPECT_EQ(*MaybeScore(score), score);
    }
    static_assert(sizeof(MaybeScore) == sizeof(Score));
}

}  // namespace
}  // namespace brenquil
