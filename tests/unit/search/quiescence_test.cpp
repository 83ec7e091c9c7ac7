// The search below the horizon.

#include "search_setup.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

class Quiescence : public testing::Test {
protected:
    SearchSetup setup;
};

TEST_F(Quiescence, QuietPositionIsItsStaticScoreAndOneNode) {
    setup.Set("4k3/pp6/8/8/8/8/PPP5/4K3 w - - 0 1");
    EXPECT_EQ(setup.Quiescence(), setup.Static());
    EXPECT_EQ(setup.search->Nodes(), 1U);
}

TEST_F(Quiescence, MatedAtTheHorizonCountsItsPly) {
    setup.Set("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1");
    EXPECT_EQ(setup.Quiescence(7), 7 - 32000);
    EXPECT_EQ(setup.Quiescence(40), 40 - 32000);
    setup.Set("6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1");
    EXPECT_EQ(setup.Node(1, 4), 32000 - 5);
}

TEST_F(Quiescence, MateInOneIsSeenAtDepth1) {
    setup.Set("6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1");
    const SearchRecord record = setup.ThinkToDepth(1);
    EXPECT_EQ(MoveName(record.best), "a1a8");
    EXPECT_EQ(setup.hash.Probe(setup.position.key)->score, 31999);
}

TEST_F(Quiescence, StalemateScoresItsStaticValue) {
    setup.Set("7k/5Q2/8/8/8/8/8/K7 b - - 0 1");
    EXPECT_LT(setup.Static(), -500);
    EXPECT_EQ(setup.Quiescence(), setup.Static());
}

TEST_F(Quiescence, StandingPatReturnsBetaItselfAndAMoveReturnsItsValue) {
    setup.Set("4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1");
    const Score standPat = setup.Static();
    EXPECT_EQ(setup.Quiescence(1, standPat - 50, standPat - 10), standPat - 10);
    EXPECT_EQ(setup.Quiescence(1, standPat - 50, standPat), standPat);
    EXPECT_EQ(setup.search->Nodes(), 1U);

    setup.Set("r5k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1");  // the capture mates
    const Score before = setup.Static();
    EXPECT_EQ(setup.Quiescence(5, before, before + 1), 32000 - 6);
}

TEST_F(Quiescence, FailsLowWithAlphaItself) {
    setup.Set("4k3/pp6/8/8/8/8/PPP5/4K3 w - - 0 1");
    EXPECT_EQ(setup.Quiescence(1, 2000, 2100), 2000);
}

TEST_F(Quiescence, CaptureThatLosesTheExchangeIsSkipped) {
    setup.Set("4k3/8/2p5/3n4/8/3R4/8/4K3 w - - 0 1");
    EXPECT_EQ(setup.Quiescence(), setup.Static());
    EXPECT_EQ(setup.search->Nodes(), 1U);
}

TEST_F(Quiescence, CaptureWithExchangeValueZeroIsSearched) {
    setup.Set("4k3/8/2p5/3n4/8/8/6B1/4K3 w - - 0 1");  // bishop takes covered knight
    (void)setup.Quiescence();
    EXPECT_GT(setup.search->Nodes(), 1U);
}

TEST_F(Quiescence, CaptureOfAHigherOrEqualManIsSearchedWithoutATest) {
    setup.Set("4k3/8/2p5/3b4/1N6/8/8/4K3 w - - 0 1");
    (void)setup.Quiescence();
    EXPECT_GT(setup.search->Nodes(), 1U);
    setup.Set("4k3/8/8/3r4/8/8/8/3RK3 w - - 0 1");
    (void)setup.Quiescence();
    EXPECT_GT(setup.search->Nodes(), 1U);
}

TEST_F(Quiescence, EveryPromotionIsSearchedUnderPromotionsToo) {
    setup.Set("8/P6k/8/8/8/8/8/K7 w - - 0 1");
    EXPECT_GT(setup.Quiescence(), setup.Static() + 500);
    EXPECT_EQ(setup.search->Nodes(), 1U + 4U);
}

TEST_F(Quiescence, LosingPromotionIsSearched) {
    // Each new man is lost to the rook; White does better not to promote.
    setup.Set("7r/P6k/8/8/8/8/R7/K7 w - - 0 1");
    (void)setup.Quiescence();
    EXPECT_GE(setup.search->Nodes(), 1U + 4U);
}

TEST_F(Quiescence, InCheckEveryEvasionIsSearched) {
    setup.Set("4r1k1/8/8/8/8/8/8/4K3 w - - 0 1");
    (void)setup.Quiescence();
    EXPECT_EQ(setup.search->Nodes(), 1U + 4U);  // d1, f1, d2, f2
}

TEST_F(Quiescence, InCheckThereIsNoStandingPat) {
    setup.Set("6k1/8/8/8/8/2b5/8/Q3K3 w - - 0 1");  // ahead, and the queen takes
    EXPECT_EQ(setup.Quiescence(1, -32000, -2000), setup.Quiescence(1, -32000, -2000));
    EXPECT_GT(setup.search->Nodes(), 1U);
}

TEST_F(Quiescence, LosingCaptureIsSearchedInCheck) {
    // The rook can take the covered checking knight: a loss by exchange, yet one of the evasions.
    setup.Set("6k1/8/8/8/8/1p1n4/8/3RK3 w - - 0 1");
    (void)setup.Quiescence();
    const std::uint64_t withCapture = setup.search->Nodes();
    setup.Set("6k1/8/8/8/8/1p1n4/8/R3K3 w - - 0 1");
    (void)setup.Quiescence();
    EXPECT_GT(withCapture, setup.search->Nodes() - 1);
}

TEST_F(Quiescence, RepetitionAndFiftyMovesAreUnknown) {
    setup.Set("4k3/8/8/8/8/8/8/Q3K3 w - - 120 90", "a1a2 e8e7 a2a1 e7e8");
    EXPECT_EQ(setup.Quiescence(), setup.Static());
    EXPECT_NE(setup.Static(), 0);
}

TEST_F(Quiescence, NeitherReadsNorWritesTheTableNorAsksTheBases) {
    CScriptedBase base;
    int questions = 0;
    base.answer = [&questions](Score&, const CPosition&, int, int) {
        ++questions;
        return false;
    };
    setup.bases.Add(base);
    setup.Set("4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1");
    setup.hash.Store(setup.position.key, 12345, 200, Bound::Exact, NoMove);
    const std::uint32_t free = setup.hash.FreeCount();
    EXPECT_NE(setup.Quiescence(), 12345);
    EXPECT_EQ(setup.hash.FreeCount(), free);
    EXPECT_EQ(questions, 0);
}

TEST_F(Quiescence, StopsAtPly255) {
    setup.Set("4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1");
    EXPECT_EQ(setup.Quiescence(255, -77, 5000), -77);
    EXPECT_TRUE(setup.search->IsStopped());
    EXPECT_EQ(setup.Quiescence(254, -77, 5000), -77);  // its child stops
    EXPECT_TRUE(setup.search->IsStopped());
    (void)setup.Quiescence(253, -77, 5000);
    EXPECT_FALSE(setup.search->IsStopped());
}

TEST_F(Quiescence, SelectiveDepthCountsPliesBelowTheHorizon) {
    setup.Set("4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1");
    const SearchRecord record = setup.ThinkToDepth(1);
    ASSERT_FALSE(record.pvs.empty());
    EXPECT_EQ(record.pvs[0].report.selectiveDepth, 1);  // after each move Black has no capture
    setup.Set("4k3/8/8/8/8/8/8/4KR2 w - - 0 1");
    for (const SearchRecord::Pv& pv : setup.ThinkToDepth(3).pvs) {
        EXPECT_GE(pv.report.selectiveDepth, pv.report.depth);
    }
}

}  // namespace
}  // namespace brenquil
