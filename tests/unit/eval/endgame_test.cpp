#include "eval/endgame.h"
#include "evaluation_setup.h"

#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <string>

namespace brenquil {
namespace {

std::optional<Score> Answer(EvaluationSetup& setup, const std::string& fen) {
    setup.Set(fen);
    const CPosition& position = setup.position;
    return EvaluateEnding(FindEnding(position), position,
                          ComputeMaterial(position, setup.options.pieceValues), TestBitbase());
}

struct Ending {
    const char* name;
    const char* board;
    Score whiteScore;  ///< from White's view
    /// The score with the colours exchanged, from Black's view, where it is another one.
    std::optional<Score> flippedScore = std::nullopt;
};

void PrintTo(const Ending& ending, std::ostream* out) {
    *out << ending.name << ' ' << ending.board;
}

// Where nothing else is said: White's king e1 and Black's e5, four steps apart (50), the weak king
// in the third ring (30).
constexpr Ending Endings[] = {
    {"KvK", "8/8/8/4k3/8/8/8/4K3", 0},
    {"KBvK", "8/8/8/4k3/8/8/8/4KB2", 0},
    {"KNvK", "8/8/8/4k3/8/8/8/4KN2", 0},
    {"KQvK", "8/8/8/4k3/8/8/8/3QK3", 50 + 1200 + 30},
    {"KQvKInTheCorner", "k7/8/1K6/8/8/8/8/4Q3", 90 + 1200 + 60},
    {"KQvKOnTheEdge", "4k3/8/8/8/8/8/8/3QK3", 0 + 1200 + 60},
    {"KQvKInTheFirstRing", "8/4k3/8/8/8/8/8/3QK3", 10 + 1200 + 50},
    {"KQvKInTheSecondRing", "8/8/4k3/8/8/8/8/3QK3", 30 + 1200 + 40},
    {"KRvK", "8/8/8/4k3/8/8/8/4KR2", 50 + 600 + 30},
    {"KRvKThreeApart", "8/8/8/4k3/8/8/4K3/5R2", 70 + 600 + 30},
    {"KRvKAdjacent", "8/8/8/4k3/4K3/8/8/5R2", 105 + 600 + 30},

    {"KQQvK", "8/8/8/4k3/8/8/8/Q2QK3", 50 + 2400 + 30},
    {"KQRvK", "8/8/8/4k3/8/8/8/R2QK3", 50 + 1800 + 30},
    {"KQBvK", "8/8/8/4k3/8/8/8/B2QK3", 50 + 1600 + 30},
    {"KQNvK", "8/8/8/4k3/8/8/8/N2QK3", 50 + 1600 + 30},
    {"KRRvK", "8/8/8/4k3/8/8/8/R2RK3", 50 + 1200 + 30},
    {"KRBvK", "8/8/8/4k3/8/8/8/B2RK3", 50 + 1000 + 30},
    {"KRNvK", "8/8/8/4k3/8/8/8/N2RK3", 50 + 1000 + 30},
    {"KQPvK", "8/8/8/4k3/1P6/8/8/3QK3", 50 + 1300 + 30 + 32},
    {"KRPvK", "8/8/8/4k3/1P6/8/8/3RK3", 50 + 700 + 30 + 32},
    {"KNPvK", "8/1P6/8/4k3/8/8/8/3NK3", 50 + 500 + 30 + 90},
    {"KBBvK", "8/8/8/4k3/8/8/8/2B1KB2", 50 + 800 + 30},
    {"KBBvKNearACorner", "8/8/8/8/8/8/1k6/2B1KB2", 70 + 800 + 50},
    {"KBBvKInACorner", "k7/8/1K6/8/8/8/8/2B2B2", 90 + 800 + 60},
    {"KBNvKLightBishop", "8/8/8/4k3/8/8/8/1N2KB2", 50 + 800 + 20},
    {"KBNvKLightBishopA8", "k7/8/1K6/8/8/8/8/1N3B2", 90 + 800 + 60},
    {"KBNvKLightBishopH1", "8/8/8/8/8/6K1/8/1N3B1k", 90 + 800 + 60},
    {"KBNvKLightBishopWrongCorner", "4N3/8/8/8/8/8/8/k3KB2", 50 + 800 + 0},
    {"KBNvKDarkBishop", "4N3/8/8/8/8/2B5/8/k3K3", 50 + 800 + 60},
    {"KBNvKDarkBishopOneStepAway", "4N3/8/8/8/8/2B5/1k6/4K3", 70 + 800 + 50},
    {"KBNvKDarkBishopFiveStepsAway", "4N3/8/k7/8/8/2B5/8/4K3", 30 + 800 + 10},
    {"KBNvKDarkBishopSixStepsAway", "4N3/k7/8/8/8/2B5/8/4K3", 10 + 800 + 5},
    {"KBPvK", "8/8/8/4k3/1P6/8/8/4KB2", 50 + 500 + 30 + 32},
    {"KBPvKWrongRookPawnOnTheSquare", "7k/8/8/8/7P/8/8/4KB2", 0},
    {"KBPvKWrongRookPawnBesideTheSquare", "8/6k1/8/8/7P/8/8/4KB2", 0},
    {"KBPvKWrongRookPawnKingOutside", "8/8/5k2/8/7P/8/8/4KB2", 30 + 500 + 40 + 32},
    {"KBPvKRightRookPawn", "7k/8/8/8/7P/8/8/2B1K3", 0 + 500 + 60 + 32},
    {"KBPvKWrongRookPawnOnTheLeft", "1k6/8/8/8/P7/8/8/2B1K3", 0},
    {"KBPvKRightRookPawnOnTheLeft", "1k6/8/8/8/P7/8/8/4KB2", 0 + 500 + 60 + 32},
    {"KBPvKKnightPawnInTheWrongCorner", "7k/8/8/8/6P1/8/8/4KB2", 0 + 500 + 60 + 32},
    {"KNNvK", "8/8/8/4k3/8/8/8/2N1KN2", 0},

    {"KQvKQ", "8/8/8/4k2q/8/8/8/3QK3", 0},
    {"KQvKR", "8/8/8/4k2r/8/8/8/3QK3", 50 + 600 + 30},
    {"KQvKB", "8/8/8/4k2b/8/8/8/3QK3", 50 + 800 + 30},
    {"KQvKN", "8/8/8/4k2n/8/8/8/3QK3", 50 + 800 + 30},
    {"KQvKP", "8/8/8/4k2p/8/8/8/3QK3", 50 + 1100 + 30},
    {"KQvKPDrawA", "8/8/8/8/8/8/pk6/3QK3", 0},
    {"KQvKPDrawC", "8/8/8/8/8/1k6/2p5/3QK3", 0},
    {"KQvKPDrawF", "8/8/8/8/8/8/3Q1p2/K5k1", 0},
    {"KQvKPDrawH", "8/8/8/8/8/8/3Q3p/K5k1", 0},
    {"KQvKPWonB", "8/8/8/8/8/8/1pk5/3QK3", 90 + 1100 + 50},
    {"KQvKPWonD", "8/8/8/8/8/2k5/3p4/K6Q", 90 + 1100 + 40},
    {"KQvKPWonE", "8/8/8/8/8/8/4p3/K2k3Q", 70 + 1100 + 60},
    {"KQvKPWonG", "8/8/8/8/8/7k/6p1/K6Q", 0 + 1100 + 60},
    {"KQvKPWonKingTwoStepsAway", "8/8/8/8/8/2k5/p7/K6Q", 90 + 1100 + 40},
    {"KQvKPWonOnTheSixth", "8/8/8/8/8/p7/1k6/3QK3", 70 + 1100 + 50},
    {"KRvKR", "8/8/8/4k2r/8/8/8/3RK3", 0},
    // Light corners for both colours, so the mirrored board has other distances.
    {"KRvKBLight", "8/8/8/4k2b/8/8/8/3RK3", 30 - 20, 30 - 30},
    {"KRvKBDark", "8/8/8/4k1b1/8/8/8/3RK3", 30 - 20, 30 - 30},
    {"KRvKBLightCorner", "k7/8/8/6b1/8/8/8/3RK3", 60 - 60, 60 - 0},
    {"KRvKBDarkCorner", "8/8/8/6b1/8/8/8/k2RK3", 60 - 0, 60 - 60},
    {"KRvKN", "8/8/8/4k2n/8/8/8/3RK3", 30 - 70},
    {"KRvKNTogether", "8/8/8/4kn2/8/8/8/3RK3", 30 - 105},
    {"KBvKB", "8/8/8/4k2b/8/8/8/3BK3", 0},
    {"KBvKN", "8/8/8/4k2n/8/8/8/3BK3", 0},
    {"KBvKP", "8/8/8/4k3/8/1p6/8/3BK3", -67},
    {"KBvKPOnTheSeventh", "8/8/8/4k3/8/8/1p6/3BK3", -90},
    {"KNvKN", "8/8/8/4k2n/8/8/8/3NK3", 0},
    {"KNvKP", "8/8/8/4k3/1p6/8/8/3NK3", -51},

    {"KQvKRB", "8/8/8/r3k2b/8/8/8/3QK3", 30},
    {"KQvKRN", "8/8/8/r3k2n/8/8/8/3QK3", 30},
    {"KRvKBB", "8/8/8/3bk3/3b4/8/8/3RK3", -60},
    {"KRvKBBOnOneColour", "8/8/8/3bkb2/8/8/8/3RK3", 30},
    {"KRvKRB", "8/8/8/r3k2b/8/8/8/3RK3", -60},
    {"KRvKRN", "8/8/8/r3k2n/8/8/8/3RK3", -60},
    {"KBvKBB", "8/8/8/3bk3/3b4/8/8/3BK3", -60},
};

class KnownEnding : public testing::TestWithParam<Ending> {};

// For both sides to move and with the colours exchanged.
TEST_P(KnownEnding, HasItsScoreFromEverySide) {
    EvaluationSetup setup;
    const Ending& ending = GetParam();
    const Score flippedScore = ending.flippedScore.value_or(ending.whiteScore);
    const std::string whiteToMove = std::string(ending.board) + " w - - 0 1";
    const std::string blackToMove = std::string(ending.board) + " b - - 0 1";
    EXPECT_EQ(Answer(setup, whiteToMove), ending.whiteScore);
    EXPECT_EQ(Answer(setup, blackToMove), -ending.whiteScore);
    EXPECT_EQ(Answer(setup, CPositionText::FlipFen(whiteToMove)), flippedScore);
    EXPECT_EQ(Answer(setup, CPositionText::FlipFen(blackToMove)), -flippedScore);
    // The evaluation returns it unchanged, whatever the contempt.
    setup.options.contempt.SetValue("30");
    EXPECT_EQ(setup.Full(whiteToMove), ending.whiteScore);
    EXPECT_EQ(setup.Full(blackToMove), -ending.whiteScore);
}

INSTANTIATE_TEST_SUITE_P(Rows, KnownEnding, testing::ValuesIn(Endings),
                         [](const auto& tested) { return std::string(tested.param.name); });

class EndgameTest : public testing::Test {
protected:
    std::optional<Score> Get(const std::string& fen) { return Answer(setup_, fen); }

    EvaluationSetup setup_;
};

TEST_F(EndgameTest, UnknownEndingsGetNoAnswer) {
    for (const char* board :
         {"8/8/8/4k3/8/8/PP6/4K3", "8/8/8/4k3/8/7p/8/3RK3", "8/8/8/4k3/7p/8/P7/4K3",
          "8/8/8/q3k2p/8/8/8/3QK3", "8/8/8/b3kb2/8/8/8/3QK3", "8/8/8/3nkn2/8/8/8/3RK3",
          "8/8/8/4k3/8/8/8/RR1RK3", "8/8/8/4k3/8/8/8/QQ1QK3", "8/8/8/r3k2r/8/8/8/3RK3",
          "8/8/8/r3k2r/8/8/8/3BK3", "8/8/8/4kn2/8/8/8/1N1NK3", "8/8/8/4kbn1/8/8/8/3BK3",
          "8/8/8/4k1p1/8/8/PP6/4K3", "8/8/8/4k3/8/8/PPP5/4K3", "8/8/8/4krr1/8/8/P7/4K3"}) {
        EXPECT_EQ(Get(std::string(board) + " w - - 0 1"), std::nullopt) << board;
        EXPECT_EQ(Get(CPositionText::FlipFen(std::string(board) + " w - - 0 1")), std::nullopt)
            << board;
    }
}

TEST_F(EndgameTest, SixMenGetNoAnswer) {
    EXPECT_EQ(Get("8/8/8/4k3/8/8/8/QQQQK3 w - - 0 1"), std::nullopt);
}

TEST_F(EndgameTest, WrongNumberOfKingsGetsNoAnswer) {
    EXPECT_EQ(Get("8/8/8/4k3/8/8/8/3Q4 w - - 0 1"), std::nullopt);
    EXPECT_EQ(Get("8/8/8/8/8/8/8/3QK3 w - - 0 1"), std::nullopt);
    EXPECT_EQ(Get("8/8/8/4k3/8/8/8/K2QK3 w - - 0 1"), std::nullopt);
    EXPECT_EQ(Get("8/8/8/4k2k/8/8/8/3QK3 w - - 0 1"), std::nullopt);
    EXPECT_EQ(Get("8/8/8/8/8/8/8/8 w - - 0 1"), std::nullopt);
    EXPECT_EQ(Get("8/8/8/8/8/8/8/K3K3 w - - 0 1"), std::nullopt);
}

// The colours are not alike here: at equal material Black counts as strong.
TEST_F(EndgameTest, BlackIsStrongAtEqualMaterial) {
    EXPECT_EQ(Get("8/8/8/r3k2r/8/8/8/3QK3 w - - 0 1"), -60);  // weak is White's king, on the edge
    EXPECT_EQ(Get("3qk3/8/8/8/R3K2R/8/8/8 w - - 0 1"), -30);  // weak is White's king, far inside
}

TEST_F(EndgameTest, StrongSideFollowsThePieceValues) {
    ASSERT_TRUE(setup_.options.SetOption("Rook", "1300"));
    // Now the rook's side is strong and White's king on the edge the weak one.
    EXPECT_EQ(Get("8/8/8/4k2r/8/8/8/3QK3 w - - 0 1"), -(50 + 100 + 60));
}

TEST_F(EndgameTest, HeavierManIsStrongAgainstAPawnWhateverThePieceValues) {
    ASSERT_TRUE(setup_.options.SetOption("Pawn", "1900"));
    EXPECT_EQ(Get("8/8/8/4k3/8/1p6/8/3BK3 w - - 0 1"), -67);
    EXPECT_EQ(Get("8/8/8/4k2p/8/8/8/3QK3 w - - 0 1"), 50 + 700 + 30);
}

TEST_F(EndgameTest, PawnWins) {
    // Kings two apart (90), a pawn's worth, the bonus of a pawn on the fifth rank (51).
    for (const char* board : {"4k3/8/4K3/4P3/8/8/8/8", "3k4/8/3K4/3P4/8/8/8/8"}) {
        const std::string white = std::string(board) + " w - - 0 1";
        const std::string black = std::string(board) + " b - - 0 1";
        EXPECT_EQ(Get(white), 241) << board;
        EXPECT_EQ(Get(black), -241) << board;
        EXPECT_EQ(Get(CPositionText::FlipFen(white)), 241) << board;
        EXPECT_EQ(Get(CPositionText::FlipFen(black)), -241) << board;
    }
}

TEST_F(EndgameTest, PawnWinsOrDrawsByTheTurn) {
    for (const char* board : {"8/4k3/8/4K3/4P3/8/8/8", "8/3k4/8/3K4/3P4/8/8/8"}) {
        const std::string white = std::string(board) + " w - - 0 1";
        const std::string black = std::string(board) + " b - - 0 1";
        EXPECT_EQ(Get(white), 0) << board;
        EXPECT_EQ(Get(black), -(90 + 100 + 32)) << board;
        EXPECT_EQ(Get(CPositionText::FlipFen(white)), 0) << board;
        EXPECT_EQ(Get(CPositionText::FlipFen(black)), -(90 + 100 + 32)) << board;
    }
}

TEST_F(EndgameTest, RookPawnDrawsWithTheKingOnItsQueeningSquare) {
    EXPECT_EQ(Get("k7/8/K7/P7/8/8/8/8 w - - 0 1"), 0);
    EXPECT_EQ(Get("7k/8/7K/7P/8/8/8/8 w - - 0 1"), 0);
    EXPECT_EQ(Get("8/8/8/8/7p/7k/8/7K b - - 0 1"), 0);
}

TEST_F(EndgameTest, LonePawnOnAnEdgeRankIsADraw) {
    EXPECT_EQ(Get("P7/8/8/7k/8/8/8/7K w - - 0 1"), 0);
    EXPECT_EQ(Get("8/8/8/7k/8/8/8/P6K w - - 0 1"), 0);
    EXPECT_EQ(Get("8/8/8/7k/8/8/8/p6K b - - 0 1"), 0);
    EXPECT_EQ(Get("7p/8/8/7k/8/8/8/7K b - - 0 1"), 0);
}

TEST_F(EndgameTest, WithoutTheOptionTheGeneralEvaluationRuns) {
    setup_.options.useEndgameEval.SetValue("false");
    EXPECT_NE(setup_.Full("k7/8/1K6/8/8/8/8/4Q3 w - - 0 1"), 1350);
    EXPECT_GT(setup_.Full("8/8/8/4k3/8/8/8/2N1KN2 w - - 0 1"), 400);
    EXPECT_NE(setup_.Full("k7/8/K7/P7/8/8/8/8 w - - 0 1"), 0);
    // The test for lack of material comes before it.
    EXPECT_EQ(setup_.Full("8/8/8/4k3/8/8/8/4KB2 w - - 0 1"), 0);
}

}  // namespace
}  // namespace brenquil
