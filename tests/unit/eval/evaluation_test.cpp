#include "eval/evaluation.h"
#include "eval/interpolation.h"
#include "eval/pawn_structure.h"
#include "eval/piece_terms.h"
#include "evaluation_setup.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace brenquil {
namespace {

class Evaluation : public testing::Test {
protected:
    EvaluationSetup setup_;
};

// White has a knight more.
constexpr const char* KnightUp = "r1bqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

TEST_F(Evaluation, StartPositionIsLevel) {
    EXPECT_EQ(setup_.Full(StartFen), 0);
}

TEST_F(Evaluation, LoneKingsAreADrawWhateverTheOptionSays) {
    for (const char* value : {"true", "false"}) {
        setup_.options.useEndgameEval.SetValue(value);
        setup_.options.contempt.SetValue("30");
        EXPECT_EQ(setup_.Full("4k3/8/8/8/8/8/8/4K3 w - - 0 1"), 0);
        EXPECT_EQ(setup_.Full("4k3/8/8/8/8/8/8/4K3 b - - 0 1"), 0);
    }
}

TEST_F(Evaluation, BishopsOnOneColourOfSquaresAgainstAKingAreADraw) {
    setup_.options.useEndgameEval.SetValue("false");
    EXPECT_EQ(setup_.Full("4k3/8/8/8/8/8/4B3/4KB2 w - - 0 1"), 0);
    EXPECT_EQ(setup_.Full("4k3/8/8/8/8/8/4B3/3BKB2 b - - 0 1"), 0);
}

TEST_F(Evaluation, DrawForWantOfMaterialWithMenOnBothSides) {
    setup_.options.useEndgameEval.SetValue("false");
    EXPECT_EQ(setup_.Full("4kn2/8/8/8/8/8/4B3/4KB2 b - - 0 1"), 0);
    // Each side must be unable to mate.
    EXPECT_NE(setup_.Full("4knn1/8/8/8/8/8/4B3/4KB2 b - - 0 1"), 0);
}

TEST_F(Evaluation, OppositeBishopsGoOnToTheEndings) {
    // Kings seven apart, corner distance 3 on the middle of the edge.
    EXPECT_EQ(setup_.Full("4k3/8/8/8/8/8/8/2B1KB2 w - - 0 1"), 0 + 800 + 30);
}

TEST_F(Evaluation, TwoBishopsOnOneColourGetNoPairBonus) {
    setup_.options.useEndgameEval.SetValue("false");
    // A lazy exit at exactly the material tells how much it is.
    setup_.Set("4k3/p7/8/8/8/8/P3B3/4KB2 w - - 0 1");
    setup_.options.lazyEvalMargin.SetValue("1");
    EXPECT_EQ(setup_.evaluation.Evaluate(-32000, 399), 399);
    EXPECT_EQ(setup_.evaluation.Evaluate(401, 32000), 401);
    setup_.Set("4k3/p7/8/8/8/8/P7/2B1KB2 w - - 0 1");
    EXPECT_EQ(setup_.evaluation.Evaluate(-32000, 849), 849);
    EXPECT_EQ(setup_.evaluation.Evaluate(851, 32000), 851);
}

TEST_F(Evaluation, LazyExitReturnsTheBoundAtTheMargin) {
    setup_.Set(KnightUp);
    const Score full = setup_.evaluation.Evaluate(-32000, 32000);
    // Material 400, margin 250.
    EXPECT_EQ(setup_.evaluation.Evaluate(-100, 150), 150);
    EXPECT_EQ(setup_.evaluation.Evaluate(-100, 151), full);
    EXPECT_EQ(setup_.evaluation.Evaluate(650, 700), 650);
    EXPECT_EQ(setup_.evaluation.Evaluate(649, 700), full);
    EXPECT_NE(full, 400);
}

TEST_F(Evaluation, LazyExitLooksFromTheSideToMove) {
    setup_.Set(WithOtherTurn(KnightUp));
    const Score full = setup_.evaluation.Evaluate(-32000, 32000);
    EXPECT_EQ(setup_.evaluation.Evaluate(-150, -100), -150);
    EXPECT_EQ(setup_.evaluation.Evaluate(-151, -100), full);
    EXPECT_EQ(setup_.evaluation.Evaluate(-700, -650), -650);
    EXPECT_EQ(setup_.evaluation.Evaluate(-700, -649), full);
}

TEST_F(Evaluation, MarginOfZeroTurnsTheLazyExitOff) {
    setup_.options.lazyEvalMargin.SetValue("0");
    setup_.Set(KnightUp);
    const Score full = setup_.evaluation.Evaluate(-32000, 32000);
    for (const Score beta : {-1000, 0, 400, 1000}) {
        EXPECT_EQ(setup_.evaluation.Evaluate(beta - 1, beta), full);
    }
}

TEST_F(Evaluation, WideWindowNeverExitsEarly) {
    EXPECT_GT(setup_.Full("4k3/8/8/8/8/8/QQQQQQQQ/QQQQKQQQ w - - 0 1"), 15 * 1200 - 2000);
    EXPECT_LT(setup_.Full("4k3/8/8/8/8/8/QQQQQQQQ/QQQQKQQQ w - - 0 1"), 32000);
}

TEST_F(Evaluation, ContemptFavoursWhiteWhoeverIsToMove) {
    for (const std::string& fen : RandomPlay(200, 23)) {
        setup_.options.contempt.SetValue("0");
        const Score without = setup_.Full(fen);
        setup_.options.contempt.SetValue("30");
        if (setup_.position.MenCount() > 5) {
            const Score shift = setup_.position.sideToMove == White ? 30 : -30;
            ASSERT_EQ(setup_.Full(fen), without + shift) << fen;
        }
    }
}

TEST_F(Evaluation, AnalyseModeLeavesTheContemptOut) {
    setup_.options.contempt.SetValue("30");
    EXPECT_EQ(setup_.Full(StartFen), 30);
    setup_.options.analyse.SetValue("true");
    EXPECT_EQ(setup_.Full(StartFen), 0);
    EXPECT_EQ(setup_.Full(WithOtherTurn(std::string(StartFen))), 0);
}

TEST_F(Evaluation, TurnOnlyChangesTheSign) {
    for (std::string fen : RandomPlay(500, 29)) {
        setup_.Set(fen);
        if (setup_.position.enPassant == SquareNone && setup_.position.MenCount() > 5) {
            const Score score = setup_.Full(fen);
            ASSERT_EQ(setup_.Full(WithOtherTurn(fen)), -score) << fen;
        }
    }
}

// Known endings are left to their own tests: at equal material Black counts as strong there, and
// rook against bishop has its corners.
TEST_F(Evaluation, ColourFlipEvaluatesAlike) {
    EvaluationSetup flipped(512);
    for (const std::string& fen : RandomPlay(3000, 31)) {
        const Score score = setup_.Full(fen);
        if (setup_.position.MenCount() > 5) {
            ASSERT_EQ(flipped.Full(CPositionText::FlipFen(fen)), score) << fen;
        }
    }
}

TEST_F(Evaluation, FollowsThePieceValueOptions) {
    const Score before = setup_.Full(KnightUp);
    ASSERT_TRUE(setup_.options.SetOption("Knight", "333"));
    EXPECT_EQ(setup_.Full(KnightUp), before - 67);
}

TEST_F(Evaluation, FiftyMoveClockPlaysNoPart) {
    EXPECT_EQ(setup_.Full("r1bqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 99 90"),
              setup_.Full(KnightUp));
}

// Material with 50 for the bishop pair, and the sums of pawns and pieces with six for a point of
// shelter danger in the middlegame alone.
TEST_F(Evaluation, IsTheSumOfItsParts) {
    EvaluationSetup parts;
    PawnEntry local;
    for (const std::string& fen : RandomPlay(1000, 47)) {
        parts.Set(fen);
        if (parts.position.MenCount() <= 5) {
            continue;
        }
        const Material material = ComputeMaterial(parts.position, parts.options.pieceValues);
        const TermPair pieces = PieceTerms(parts.position);
        const PawnEntry& pawns = GetPawnEntry(parts.position, parts.pawnHash, local);
        const int pairs = static_cast<int>(material.hasBishopPair[White]) -
                          static_cast<int>(material.hasBishopPair[Black]);
        const Score middlegame = pieces.Middlegame() + pawns.middlegame[White] -
                                 pawns.middlegame[Black] - 6 * pawns.shelterDanger[White] +
                                 6 * pawns.shelterDanger[Black];
        const Score endgame = pieces.Endgame() + pawns.endgame[White] - pawns.endgame[Black];
        const Score white = material.value[White] - material.value[Black] + 50 * pairs +
                            Interpolate(middlegame, endgame, material.phase);
        ASSERT_EQ(setup_.Full(fen), parts.position.sideToMove == White ? white : -white) << fen;
    }
}

// Any board can be set up: no kings or many, pawns on the edge, all squares full.
TEST_F(Evaluation, StrangeBoardsAreSafeAndSymmetrical) {
    EvaluationSetup hashed(64);
    std::mt19937 generator(37);
    constexpr std::string_view Letters = "pPnNbBrRqQkK";
    for (int round = 0; round < 3000; ++round) {
        const auto density = 1 + generator() % 16;
        std::string fen;
        for (int square = 0; square < 64; ++square) {
            fen += generator() % 16 < density ? Letters[generator() % 12] : '1';
            if (square % 8 == 7) {
                fen += square < 63 ? '/' : ' ';
            }
        }
        fen += generator() % 2 == 0 ? "w - - 0 1" : "b - - 0 1";
        const Score score = setup_.Full(fen);
        ASSERT_EQ(hashed.Full(fen), score) << fen;
        if (setup_.position.MenCount() > 5) {
            ASSERT_EQ(setup_.Full(CPositionText::FlipFen(fen)), score) << fen;
        }
    }
}

TEST_F(Evaluation, FewStrangeMenAreSafe) {
    std::mt19937 generator(41);
    constexpr std::string_view Letters = "pPnNbBrRqQkK";
    for (int round = 0; round < 20000; ++round) {
        std::string squares(64, '1');
        if (round % 2 == 0) {
            squares[generator() % 64] = 'k';
            squares[generator() % 64] = 'K';
        }
        for (auto men = 1 + generator() % 3; men > 0; --men) {
            squares[generator() % 64] = Letters[generator() % 12];
        }
        std::string fen;
        for (std::size_t rank = 0; rank < 8; ++rank) {
            fen += squares.substr(rank * 8, 8) + (rank < 7 ? "/" : " w - - 0 1");
        }
        const Score score = setup_.Full(fen);
        ASSERT_LT(score, 31746) << fen;
        ASSERT_GT(score, -31746) << fen;
    }
}

TEST_F(Evaluation, FullBoardsOfOneManAreSafe) {
    for (const char man : std::string("pPnNbBrRqQkK")) {
        const std::string rank(8, man);
        std::string fen = rank;
        for (int i = 1; i < 8; ++i) {
            fen += "/" + rank;
        }
        const Score score = setup_.Full(fen + " w - - 0 1");
        EXPECT_EQ(setup_.Full(CPositionText::FlipFen(fen + " w - - 0 1")), score) << man;
    }
}

}  // namespace
}  // namespace brenquil
