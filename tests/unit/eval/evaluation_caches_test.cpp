#include "board/move_generator.h"
#include "eval/evaluation_caches.h"
#include "evaluation_setup.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace brenquil {
namespace {

constexpr std::string_view Middlegame =
    "r1bq1rk1/ppp2ppp/2np1n2/4p3/2B1P3/2NP1N2/PPP2PPP/R1BQ1RK1 w - - 0 8";

TEST(PositionalCache, FindsWhatWasStoredAndNothingElse) {
    const auto cache = std::make_unique<CPositionalCache>();
    constexpr std::uint64_t Key = 0x123456789ABCDEF0;
    EXPECT_FALSE(cache->Find(Key));
    cache->Store(Key, -321);
    EXPECT_EQ(cache->Find(Key), MaybeScore(-321));
    // The same slot, another key.
    EXPECT_FALSE(cache->Find(Key ^ std::uint64_t{1} << 63U));
    EXPECT_FALSE(cache->Find(Key ^ std::uint64_t{1} << 16U));
    cache->Store(Key ^ std::uint64_t{1} << 63U, 5);
    EXPECT_FALSE(cache->Find(Key));
}

TEST(PositionalCache, KeepsEveryScoreOfSixteenBitsAndRefusesOthers) {
    const auto cache = std::make_unique<CPositionalCache>();
    constexpr std::uint64_t Key = 0xFEDCBA9876543210;
    for (Score score = -32768; score <= 32767; ++score) {
        cache->Store(Key, score);
        ASSERT_EQ(cache->Find(Key), MaybeScore(score));
    }
    cache->Store(Key, 32768);
    cache->Store(Key, -32769);
    EXPECT_EQ(cache->Find(Key), MaybeScore(32767));
}

TEST(PositionalCache, EmptyBoardScoresNothing) {
    const auto cache = std::make_unique<CPositionalCache>();
    EXPECT_EQ(cache->Find(0), MaybeScore(0));
}

/// An evaluation that has seen many positions, beside one that is new for each.
class EvaluationCaches : public testing::Test {
protected:
    Score Fresh(Score alpha = WideAlpha, Score beta = WideBeta) {
        const auto fresh =
            std::make_unique<CEvaluation>(used_.position, used_.options, noMemory_, TestBitbase());
        return fresh->Evaluate(alpha, beta);
    }

    void ExpectSame() { EXPECT_EQ(used_.evaluation.Evaluate(WideAlpha, WideBeta), Fresh()); }

    EvaluationSetup used_{512};
    CPawnHash noMemory_;
};

TEST_F(EvaluationCaches, OptionsActOnACachedScore) {
    used_.Set(Middlegame);
    const Score plain = used_.evaluation.Evaluate(WideAlpha, WideBeta);
    used_.options.contempt.SetValue("30");
    EXPECT_EQ(used_.evaluation.Evaluate(WideAlpha, WideBeta), plain + 30);
    used_.options.analyse.enabled = true;
    EXPECT_EQ(used_.evaluation.Evaluate(WideAlpha, WideBeta), plain);
    used_.options.pieceValues[Pawn].SetValue("173");
    used_.options.pieceValues[Bishop].SetValue("17");
    ExpectSame();
}

TEST_F(EvaluationCaches, BoundOfTheLazyExitIsNotRemembered) {
    used_.Set("r1bq1rk1/ppp2ppp/2np1n2/4p3/2B1P3/2NP1N2/PPP2PPP/R1B2RK1 w - - 0 8");
    ASSERT_EQ(used_.evaluation.Evaluate(0, 1), 0);
    ExpectSame();
    ASSERT_EQ(used_.evaluation.Evaluate(0, 1), 0);
}

TEST_F(EvaluationCaches, SideToMoveOnlyTurnsTheSign) {
    used_.Set(Middlegame);
    const Score score = used_.evaluation.Evaluate(WideAlpha, WideBeta);
    used_.position.MakeNullMove();
    EXPECT_EQ(used_.evaluation.Evaluate(WideAlpha, WideBeta), -score);
}

// The key stays off by the number of the square; what is found under it belongs to the same board.
TEST_F(EvaluationCaches, NullMoveOverAnEnPassantSquareFindsTheRightBoard) {
    used_.Set("rnbqkbnr/pp1ppppp/8/8/2pPP3/7P/PPP2PP1/RNBQKBNR b KQkq d3 0 3");
    ASSERT_NE(used_.position.enPassant, SquareNone);
    ExpectSame();
    used_.position.MakeNullMove();
    ExpectSame();
    used_.position.UndoNullMove();
    ExpectSame();
    ASSERT_TRUE(used_.position.MakeMove(Move::Make(G8, F6)));
    ExpectSame();
}

// Games with takebacks and null moves, and the pieces' values changed on the way.
TEST_F(EvaluationCaches, LongLivedAgreesWithFreshOverRandomPlay) {
    std::mt19937_64 random(97);
    for (int game = 0; game < 40; ++game) {
        used_.Set(StartFen);
        for (int ply = 0; ply < 120; ++ply) {
            MoveList moves;
            CMoveGenerator(used_.position).GenerateMoves(moves, MoveKinds::All);
            bool hasMoved = false;
            for (int attempt = 0; attempt < 50 && !hasMoved && moves.count > 0; ++attempt) {
                const Move move =
                    moves[static_cast<std::int32_t>(random() % static_cast<unsigned>(moves.count))];
                hasMoved = used_.position.MakeMove(move);
                if (hasMoved && random() % 3 == 0) {
                    ExpectSame();
                    used_.position.UndoMove(move);
                    ExpectSame();
                    hasMoved = used_.position.MakeMove(move);
                }
            }
            if (!hasMoved) {
                break;
            }
            ExpectSame();
            if (!used_.position.inCheck) {
                used_.position.MakeNullMove();
                ExpectSame();
                used_.position.UndoNullMove();
            }
            if (random() % 20 == 0) {
                used_.options.pieceValues[Rook].SetValue(std::to_string(500 + random() % 300));
            }
            const auto alpha = static_cast<Score>(random() % 1200) - 600;
            EXPECT_EQ(used_.evaluation.Evaluate(alpha, alpha + 1), Fresh(alpha, alpha + 1));
        }
    }
}

}  // namespace
}  // namespace brenquil
