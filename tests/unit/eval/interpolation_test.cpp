#include "eval/interpolation.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(Interpolation, StartPhaseGivesTheEndgameHalfAPart) {
    EXPECT_EQ(Interpolate(256, 0, 24), 255);  // 255.5
    EXPECT_EQ(Interpolate(0, 512, 24), 1);    // 0.5 / 256 * 512
    EXPECT_EQ(Interpolate(0, 511, 24), 0);
}

TEST(Interpolation, WithoutPiecesTheMiddlegameCountsNegatively) {
    EXPECT_EQ(Interpolate(512, 0, 0), -1);   // weight -0.5 / 256
    EXPECT_EQ(Interpolate(0, 512, 0), 513);  // weight 256.5 / 256
    EXPECT_EQ(Interpolate(-512, 512, 0), 514);
}

TEST(Interpolation, PhaseAboveTheTotalCountsAsTheTotal) {
    EXPECT_EQ(Interpolate(300, -300, 40), Interpolate(300, -300, 24));
}

TEST(Interpolation, TruncatesTowardsZero) {
    EXPECT_EQ(Interpolate(100, 0, 12), 49);  // 49.8
    EXPECT_EQ(Interpolate(-100, 0, 12), -49);
}

// With equal scores every weighing is exact on paper. These come out one short because the products
// round on their own; a fused multiplication and addition would give other numbers.
TEST(Interpolation, KeepsTheRoundingOfItsSteps) {
    EXPECT_EQ(Interpolate(298, 298, 22), 297);
    EXPECT_EQ(Interpolate(-298, -298, 22), -297);
    EXPECT_EQ(Interpolate(200, 200, 22), 199);
    EXPECT_EQ(Interpolate(201, 201, 22), 201);
}

TEST(Interpolation, IsOddInBothScores) {
    for (int phase = 0; phase <= 24; ++phase) {
        for (int middlegame = -300; middlegame <= 300; middlegame += 7) {
            for (int endgame = -300; endgame <= 300; endgame += 11) {
                ASSERT_EQ(Interpolate(-middlegame, -endgame, phase),
                          -Interpolate(middlegame, endgame, phase));
            }
        }
    }
}

// How often the rounding shows, for every phase, over equal scores from 1 to 1000.
TEST(Interpolation, RoundingShowsAsOftenAsItDoes) {
    constexpr int Expected[25] = {0, 0,  0, 0, 0,   0, 0, 0, 0, 0,   0, 0, 0,
                                  0, 87, 0, 0, 158, 0, 0, 0, 0, 302, 0, 0};
    for (int phase = 0; phase <= 24; ++phase) {
        int count = 0;
        for (int score = 1; score <= 1000; ++score) {
            count += Interpolate(score, score, phase) != score ? 1 : 0;
        }
        EXPECT_EQ(count, Expected[phase]) << "phase " << phase;
    }
}

}  // namespace
}  // namespace brenquil
