#include "bases/syzygy/tb_board.h"
#include "board/move_generator.h"
#include "board/position_text.h"
#include "syzygy_writer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace brenquil {
namespace {

using testing_support::PositionOfFen;

std::string TextOf(TbMove move) {
    constexpr const char* Promotions[] = {"", "q", "r", "b", "n"};
    return SquareToText(move.From()) + SquareToText(move.To()) + Promotions[move.Promotion()];
}

template <class Generator>
std::vector<std::string> Moves(std::string_view fen, Generator generator) {
    TbMoveList list;
    generator(PositionOfFen(fen), list);
    std::vector<std::string> texts;
    for (const TbMove move : list) {
        texts.push_back(TextOf(move));
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(TbBoard, ListsMovesByMenAndBySquares) {
    EXPECT_EQ(Moves("8/8/8/8/8/8/8/K1k3NR w - - 0 1", TbGenMoves),
              (Texts{"a1b1", "a1a2", "a1b2", "h1h2", "h1h3", "h1h4", "h1h5", "h1h6", "h1h7", "h1h8",
                     "g1e2", "g1f3", "g1h3"}));
}

TEST(TbBoard, ListsThePawnMovesPawnByPawn) {
    EXPECT_EQ(Moves("k7/8/8/8/8/2n5/1P1P4/K7 w - - 0 1", TbGenMoves),
              (Texts{"a1b1", "a1a2", "b2b3", "b2c3", "b2b4", "d2c3", "d2d3", "d2d4"}));
}

TEST(TbBoard, ListsAPromotionAsQueenKnightRookBishop) {
    EXPECT_EQ(Moves("1n1k4/P7/8/8/8/8/8/K7 w - - 0 1", TbGenCaptures),
              (Texts{"a7a8q", "a7a8n", "a7a8r", "a7a8b", "a7b8q", "a7b8n", "a7b8r", "a7b8b"}));
    EXPECT_EQ(Moves("3k4/P7/8/8/8/8/8/K7 w - - 0 1", TbGenPawnQuiets),
              (Texts{"a7a8q", "a7a8n", "a7a8r", "a7a8b"}));
}

TEST(TbBoard, ListsCapturesOnly) {
    EXPECT_EQ(Moves("k7/8/8/3p4/4P3/8/2B5/K6r w - - 0 1", TbGenCaptures), (Texts{"e4d5"}));
    EXPECT_EQ(Moves("k7/8/8/3p4/4P3/8/2B5/K6r b - - 0 1", TbGenCaptures), (Texts{"h1a1", "d5e4"}));
}

TEST(TbBoard, ListsEnPassant) {
    constexpr std::string_view Fen = "k7/8/8/8/3pPp2/8/8/K7 b - e3 0 1";
    EXPECT_EQ(Moves(Fen, TbGenEp), (Texts{"d4e3", "f4e3"}));
    EXPECT_EQ(Moves(Fen, TbGenCaptures), (Texts{"d4e3", "f4e3"}));
    const TbPosition position = PositionOfFen(Fen);
    EXPECT_TRUE(TbIsEnPassant(position, TbMove::Make(D4, E3)));
    EXPECT_FALSE(TbIsEnPassant(position, TbMove::Make(D4, D3)));
    EXPECT_TRUE(Moves("k7/8/8/8/3pPp2/8/8/K7 b - - 0 1", TbGenEp).empty());
}

TEST(TbBoard, AnEnPassantCaptureRemovesThePawn) {
    TbPosition next;
    ASSERT_TRUE(
        TbDoMove(next, PositionOfFen("k7/8/8/8/3pP3/8/8/K7 b - e3 0 1"), TbMove::Make(D4, E3)));
    EXPECT_EQ(next.pawns, BitOf(E3));
    EXPECT_EQ(next.white, BitOf(A1));
    EXPECT_EQ(next.black, BitOf(A8) | BitOf(E3));
    EXPECT_EQ(next.ep, 0);
}

TEST(TbBoard, ADoubleStepLeavesASquareOnlyWhereAPawnCanTake) {
    TbPosition next;
    ASSERT_TRUE(
        TbDoMove(next, PositionOfFen("k7/8/8/8/3p4/8/4P3/K7 w - - 7 1"), TbMove::Make(E2, E4)));
    EXPECT_EQ(next.ep, E3);
    EXPECT_EQ(next.rule50, 0);
    ASSERT_TRUE(
        TbDoMove(next, PositionOfFen("k7/8/8/8/2p5/8/4P3/K7 w - - 7 1"), TbMove::Make(E2, E4)));
    EXPECT_EQ(next.ep, 0);
    // Nor does a lone king there count as a pawn.
    ASSERT_TRUE(
        TbDoMove(next, PositionOfFen("8/8/8/8/3k4/8/4P3/K7 w - - 7 1"), TbMove::Make(E2, E4)));
    EXPECT_EQ(next.ep, 0);
}

TEST(TbBoard, APromotionChangesTheMan) {
    TbPosition next;
    ASSERT_TRUE(TbDoMove(next, PositionOfFen("1n6/P7/8/8/8/8/8/K2k4 w - - 7 1"),
                         TbMove::Make(A7, B8, TbPromoteRook)));
    EXPECT_EQ(next.rooks, BitOf(B8));
    EXPECT_EQ(next.knights, 0U);
    EXPECT_EQ(next.pawns, 0U);
    EXPECT_EQ(next.rule50, 0);
    EXPECT_FALSE(next.turn);
}

TEST(TbBoard, CountsQuietMovesAndForgetsThemAtCaptures) {
    TbPosition next;
    ASSERT_TRUE(
        TbDoMove(next, PositionOfFen("k7/8/8/8/8/8/1r6/R6K w - - 7 1"), TbMove::Make(A1, B1)));
    EXPECT_EQ(next.rule50, 8);
    ASSERT_TRUE(
        TbDoMove(next, PositionOfFen("8/8/8/k7/8/8/1r6/1R5K w - - 7 1"), TbMove::Make(B1, B2)));
    EXPECT_EQ(next.rule50, 0);
    EXPECT_EQ(next.black, BitOf(A5));
}

TEST(TbBoard, AMoveThatLosesTheOwnKingIsNotLegal) {
    TbPosition next;
    EXPECT_FALSE(
        TbDoMove(next, PositionOfFen("k7/8/8/8/r7/8/R7/K7 w - - 0 1"), TbMove::Make(A2, B2)));
    TbPosition kingless = PositionOfFen("k7/8/8/8/8/8/R7/8 w - - 0 1");
    EXPECT_FALSE(TbDoMove(next, kingless, TbMove::Make(A2, B2)));
}

TEST(TbBoard, KnowsMateAndStalemate) {
    EXPECT_TRUE(TbIsCheckmate(PositionOfFen("k7/1Q6/K7/8/8/8/8/8 b - - 0 1")));
    const TbPosition stalemate = PositionOfFen("k7/2Q5/1K6/8/8/8/8/8 b - - 0 1");
    EXPECT_FALSE(TbIsCheckmate(stalemate));
    EXPECT_FALSE(TbHasLegalMove(stalemate, false));
}

TEST(TbBoard, TellsPositionsOfTheGameFromOthers) {
    EXPECT_TRUE(TbIsValid(PositionOfFen("k7/8/8/8/8/8/1Q6/K7 w - - 0 1")));
    EXPECT_FALSE(TbIsValid(PositionOfFen("k7/8/8/8/8/8/Q7/1K6 w - - 0 1"))) << "in check";
    EXPECT_FALSE(TbIsValid(PositionOfFen("8/8/8/8/8/8/Q7/1K6 w - - 0 1"))) << "no king";
    EXPECT_FALSE(TbIsValid(PositionOfFen("kk6/8/8/8/8/8/8/1K6 w - - 0 1"))) << "two kings";
    EXPECT_FALSE(TbIsValid(PositionOfFen("k1P5/8/8/8/8/8/8/1K6 w - - 0 1"))) << "pawn on edge";
    TbPosition twice = PositionOfFen("k7/8/8/8/8/8/1Q6/K7 w - - 0 1");
    twice.rooks = BitOf(B2);
    EXPECT_FALSE(TbIsValid(twice)) << "two men on one square";
    TbPosition bothColours = PositionOfFen("k7/8/8/8/8/8/1Q6/K7 w - - 0 1");
    bothColours.black |= BitOf(B2);
    EXPECT_FALSE(TbIsValid(bothColours)) << "a man of both colours";
    TbPosition noType = PositionOfFen("k7/8/8/8/8/8/1Q6/K7 w - - 0 1");
    noType.queens = 0;
    EXPECT_FALSE(TbIsValid(noType)) << "a man of no type";
}

/// Legal moves as text, by the board of the engine.
Texts LegalMoves(CPosition& position) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    Texts texts;
    for (const Move move : list) {
        if (position.MakeMove(move)) {
            position.UndoMove(move);
            texts.push_back(
                CPositionText::MoveToText(move, position, CastlingNotation::KingTarget));
        }
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

TEST(TbBoard, HasTheLegalMovesOfTheEngine) {
    std::mt19937_64 random(20260514);
    const std::string starts[] = {
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
        "8/8/1k6/2b5/2pP4/8/5K2/8 b - d3 0 1", "4k3/8/8/8/8/8/PPPPPPPP/4K3 w - - 0 1"};
    std::size_t compared = 0;
    for (const std::string& start : starts) {
        for (int game = 0; game < 50; ++game) {
            CPosition position;
            CPositionText(position).SetFen(start);
            for (int ply = 0; ply < 40; ++ply) {
                const TbPosition board = PositionOfFen(CPositionText(position).GetFen());
                TbMoveList list;
                TbGenMoves(board, list);
                Texts legal;
                TbPosition next;
                for (const TbMove move : list) {
                    if (TbDoMove(next, board, move)) {
                        legal.push_back(TextOf(move));
                    }
                }
                std::sort(legal.begin(), legal.end());
                ASSERT_EQ(legal, LegalMoves(position)) << CPositionText(position).GetFen();
                ++compared;
                if (legal.empty()) {
                    break;
                }
                const Move move =
                    CPositionText::TextToMove(legal[random() % legal.size()], position, false);
                ASSERT_TRUE(position.MakeMove(move));
            }
        }
    }
    EXPECT_GT(compared, 4000U);
}

}  // namespace
}  // namespace brenquil
