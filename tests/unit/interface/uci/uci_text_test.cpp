// The figures of the `info` lines.

#include "interface/uci/uci_text.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(ScoreText, CentipawnsOutsideTheMateBand) {
    EXPECT_EQ(ScoreText(0), " score cp 0");
    EXPECT_EQ(ScoreText(-57), " score cp -57");
    EXPECT_EQ(ScoreText(31745), " score cp 31745");
    EXPECT_EQ(ScoreText(-31745), " score cp -31745");
}

TEST(ScoreText, Score31746PrintsMate128AndItsNegativeMateMinus127) {
    EXPECT_EQ(ScoreText(31746), " score mate 128");
    EXPECT_EQ(ScoreText(-31746), " score mate -127");
}

TEST(ScoreText, MateDistanceInMoves) {
    EXPECT_EQ(ScoreText(31999), " score mate 1");
    EXPECT_EQ(ScoreText(31998), " score mate 2");
    EXPECT_EQ(ScoreText(31997), " score mate 2");
    EXPECT_EQ(ScoreText(-31999), " score mate 0");
    EXPECT_EQ(ScoreText(-31998), " score mate -1");
    EXPECT_EQ(ScoreText(-31996), " score mate -2");
}

TEST(ScoreText, ExactlyMateOnTheBoardPrintsCentipawns) {
    EXPECT_EQ(ScoreText(32000), " score cp 32000");
    EXPECT_EQ(ScoreText(-32000), " score cp -32000");
}

TEST(ScoreText, ScoresBeyondTheMateScoreStayDefined) {
    EXPECT_EQ(ScoreText(32500), " score mate -250");
    EXPECT_EQ(ScoreText(-32500), " score mate 251");
}

TEST(BoundText, WordsOnlyOutsideTheWindow) {
    EXPECT_EQ(BoundText(11, -10, 10), " lowerbound");
    EXPECT_EQ(BoundText(-11, -10, 10), " upperbound");
    EXPECT_EQ(BoundText(10, -10, 10), "");
    EXPECT_EQ(BoundText(-10, -10, 10), "");
    EXPECT_EQ(BoundText(32000, -32000, 32000), "");
}

TEST(BoundText, ZeroInTheWindowZeroToZeroHasNoWord) {
    EXPECT_EQ(ScoreText(0) + BoundText(0, 0, 0), " score cp 0");
}

TEST(NodesPerSecond, CutsTheQuotient) {
    EXPECT_EQ(NodesPerSecond(1000, 1000), 1000U);
    EXPECT_EQ(NodesPerSecond(1000, 3), 333333U);
    EXPECT_EQ(NodesPerSecond(1, 1500), 0U);
    EXPECT_EQ(NodesPerSecond(0, 5), 0U);
}

TEST(NodesPerSecond, IsTheNodeCountWhenNoTimeHasPassed) {
    EXPECT_EQ(NodesPerSecond(77, 0), 77U);
}

TEST(CpuLoad, IsClockOverTicksInThousandthsAndAtMost1000) {
    EXPECT_EQ(CpuLoad(1000, 1000), 1000);
    EXPECT_EQ(CpuLoad(1000, 999), 999);
    EXPECT_EQ(CpuLoad(3, 2), 666);
    EXPECT_EQ(CpuLoad(1000, 5000), 1000);
}

TEST(CpuLoad, IsZeroUnlessBothClocksHaveMoved) {
    EXPECT_EQ(CpuLoad(0, 5), 0);
    EXPECT_EQ(CpuLoad(5, 0), 0);
    EXPECT_EQ(CpuLoad(-5, 5), 0);
    EXPECT_EQ(CpuLoad(5, -5), 0);
}

}  // namespace
}  // namespace brenquil
