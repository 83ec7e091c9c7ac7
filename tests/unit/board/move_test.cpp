// The move word and the list of moves.

#include "board/move_list.h"
#include "board/types.h"

#include <gtest/gtest.h>
#include <memory>

namespace brenquil {
namespace {

TEST(MoveWord, KeepsEachFieldInItsBits) {
    const Move move = Move::Make(H7, G8, MoveKind::Promotion, PromoteQueen);
    EXPECT_EQ(move.word, 55U | 62U << 6U | 3U << 12U | 3U << 14U);
    EXPECT_EQ(move.From(), H7);
    EXPECT_EQ(move.To(), G8);
    EXPECT_EQ(move.Kind(), MoveKind::Promotion);
    EXPECT_EQ(move.Index(), 3U);
    EXPECT_EQ(Move::Make(A1, B1, MoveKind::Castling, BlackQueenSide).word,
              1U << 6U | 1U << 12U | 3U << 14U);
    EXPECT_EQ(Move::Make(A1, A1, MoveKind::EnPassant).word, 2U << 12U);
}

TEST(MoveWord, RoundTripsEverySquareKindAndIndex) {
    for (std::uint32_t word = 0; word < 65536; ++word) {
        const Move move{word};
        ASSERT_EQ(Move::Make(move.From(), move.To(), move.Kind(), move.Index()).word, word);
    }
}

TEST(MoveWord, CarriesASignedSortKeyThatIsNoPartOfItsIdentity) {
    Move move = Move::Make(E2, E4);
    const Move plain = move;
    for (const int order : {-32768, -1, 0, 1, 32767}) {
        move.SetOrder(order);
        EXPECT_EQ(move.Order(), order);
        EXPECT_TRUE(SameMove(move, plain));
        EXPECT_EQ(move.Identity(), plain.word);
    }
    EXPECT_FALSE(SameMove(plain, Move::Make(E2, E3)));
}

TEST(MoveWord, IsNoMoveOnlyWhenItIsZero) {
    EXPECT_TRUE(NoMove.IsNone());
    EXPECT_TRUE(Move::Make(A1, A1).IsNone());
    EXPECT_FALSE(Move::Make(A1, B1).IsNone());
}

TEST(PieceCodes, AreTypeTimesTwoPlusColourWithBlackFirst) {
    EXPECT_EQ(MakePiece(Pawn, Black), 0);
    EXPECT_EQ(MakePiece(King, White), 11);
    EXPECT_EQ(PieceNone, 12);
    for (int code = 0; code < PieceCodes; ++code) {
        const auto piece = static_cast<Piece>(code);
        EXPECT_EQ(TypeOf(piece), code / 2);
        EXPECT_EQ(ColourOf(piece), code % 2);
        EXPECT_EQ(MakePiece(TypeOf(piece), ~ColourOf(piece)), code ^ 1);
    }
}

TEST(PieceCodes, PromoteInTheOrderRookBishopKnightQueen) {
    EXPECT_EQ(PromotionType(0), Rook);
    EXPECT_EQ(PromotionType(1), Bishop);
    EXPECT_EQ(PromotionType(2), Knight);
    EXPECT_EQ(PromotionType(3), Queen);
}

TEST(ListOfMoves, AppendsInOrderAndDropsTheLast) {
    MoveList list;
    list.Append(Move::Make(A2, A3));
    list.Append(Move::Make(B2, B3));
    EXPECT_EQ(list.count, 2);
    EXPECT_EQ(list[0].word, Move::Make(A2, A3).word);
    EXPECT_EQ(list.count, 2);
    EXPECT_EQ(list.end() - list.begin(), 2);
    list.RemoveLast();
    EXPECT_EQ(list.count, 1);
    list.RemoveLast();
    list.RemoveLast();
    EXPECT_EQ(list.count, 0);
}

TEST(ListOfMoves, TakesTwoHundredAndTwentyMovesAndNoMore) {
    // On the heap, where the sanitizers see a write past the end.
    const auto list = std::make_unique<MoveList>();
    for (unsigned i = 1; i <= 230; ++i) {
        list->Append(Move{i});
    }
    EXPECT_EQ(list->count, 220);
    EXPECT_EQ((*list)[219].word, 220U);
}

}  // namespace
}  // namespace brenquil
