#include "eval/piece_square.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

struct TableSums {
    std::int64_t plain = 0;
    std::int64_t weighted = 0;  ///< each value times the square of (square + 1)

    bool operator==(const TableSums&) const = default;
};

TableSums SumsOf(PieceType type, bool endgame) {
    TableSums sums;
    for (Square square = A1; square <= H8; ++square) {
        const TermPair pair = PieceSquare[MakePiece(type, White)][square];
        const std::int64_t value = endgame ? pair.Endgame() : pair.Middlegame();
        sums.plain += value;
        sums.weighted += value * (square + 1) * (square + 1);
    }
    return sums;
}

// A changed or misplaced number changes a sum.
TEST(PieceSquare, TablesHaveTheirSums) {
    EXPECT_EQ(SumsOf(Pawn, false), (TableSums{1096, 2463977}));
    EXPECT_EQ(SumsOf(Pawn, true), (TableSums{820, 1420036}));
    EXPECT_EQ(SumsOf(Knight, false), (TableSums{-1072, -2472213}));
    EXPECT_EQ(SumsOf(Knight, true), (TableSums{-1433, -1310206}));
    EXPECT_EQ(SumsOf(Bishop, false), (TableSums{-499, -1638725}));
    EXPECT_EQ(SumsOf(Bishop, true), (TableSums{-659, -235311}));
    EXPECT_EQ(SumsOf(Rook, false), (TableSums{91, 1839329}));
    EXPECT_EQ(SumsOf(Rook, true), (TableSums{775, 2402274}));
    EXPECT_EQ(SumsOf(Queen, false), (TableSums{-56, 794687}));
    EXPECT_EQ(SumsOf(Queen, true), (TableSums{-839, 1430112}));
    EXPECT_EQ(SumsOf(King, false), (TableSums{128, 1788811}));
    EXPECT_EQ(SumsOf(King, true), (TableSums{-170, -594847}));
}

TEST(PieceSquare, FirstPrintedRowIsTheEighthRank) {
    EXPECT_EQ(PieceSquare[WhitePawn][A7], TermPair(174, 3));
    EXPECT_EQ(PieceSquare[WhitePawn][H2], TermPair(-16, -5));
    EXPECT_EQ(PieceSquare[WhiteKnight][A8], TermPair(-252, -17));
    EXPECT_EQ(PieceSquare[WhiteRook][H1], TermPair(-4, -24));
    EXPECT_EQ(PieceSquare[WhiteKing][G1], TermPair(30, -33));
}

TEST(PieceSquare, BlackIsTheVerticalMirrorOfWhite) {
    for (const PieceType type : {Pawn, Knight, Bishop, Rook, Queen, King}) {
        for (Square square = A1; square <= H8; ++square) {
            EXPECT_EQ(PieceSquare[MakePiece(type, Black)][square],
                      PieceSquare[MakePiece(type, White)][square ^ 56]);
        }
    }
}

TEST(PieceSquare, LeftAndRightDiffer) {
    EXPECT_NE(PieceSquare[WhiteKing][B1], PieceSquare[WhiteKing][G1]);
}

}  // namespace
}  // namespace brenquil
