#include "eval/piece_square.h"
#include "eval/piece_terms.h"
#include "evaluation_setup.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brenquil {
namespace {

class PieceTermsTest : public testing::Test {
protected:
    /// White's terms less Black's, without the piece-square values; the mirrored position must say
    /// the opposite.
    TermPair Terms(const std::string& fen) {
        const TermPair terms = RawTerms(fen);
        EXPECT_EQ(RawTerms(CPositionText::FlipFen(fen)), TermPair() - terms) << fen;
        return terms;
    }

private:
    TermPair RawTerms(const std::string& fen) {
        setup_.Set(fen);
        TermPair terms = PieceTerms(setup_.position);
        for (Square square = A1; square <= H8; ++square) {
            const Piece piece = setup_.position.PieceOn(square);
            const PieceType type = TypeOf(piece);
            if (piece == PieceNone || type == Pawn || type == King) {
                continue;
            }
            if (ColourOf(piece) == White) {
                terms -= PieceSquare[piece][square];
            } else {
                terms += PieceSquare[piece][square];
            }
        }
        return terms;
    }

    EvaluationSetup setup_;
};

/// A FEN with men of White on some squares, "Nd5 Pc4", and both kings out of the way on the e-file.
std::string Board(const std::vector<std::string>& men) {
    std::string squares(64, '1');
    squares[E1] = 'K';
    squares[E8] = 'k';
    for (const std::string& man : men) {
        const Square square = MakeSquare(man[1] - 'a', man[2] - '1');
        squares[static_cast<std::size_t>(square)] = man[0];
    }
    std::string fen;
    for (std::size_t rank = 8; rank-- > 0;) {
        fen += squares.substr(rank * 8, 8) + (rank > 0 ? "/" : " w - - 0 1");
    }
    return fen;
}

TEST_F(PieceTermsTest, KnightMobility) {
    EXPECT_EQ(Terms(Board({"Nd4"})), TermPair(35, 35));
    EXPECT_EQ(Terms(Board({"Na1"})), TermPair(-16, -16));
    EXPECT_EQ(Terms(Board({"Na1", "Pb3"})), TermPair(-26, -26));
    EXPECT_EQ(Terms(Board({"Na1", "Pb3", "Pc2"})), TermPair(-30, -30));
    EXPECT_EQ(Terms(Board({"Nd4", "Pb3", "Pb5"})), TermPair(30, 30));
}

TEST_F(PieceTermsTest, KnightMobilityByCount) {
    const std::vector<std::int32_t> expected = {-30, -26, -16, 0, 16, 26, 30, 33, 35};
    const std::vector<std::string> blockers = {"Pb3", "Pb5", "Pc2", "Pc6",
                                               "Pe2", "Pe6", "Pf3", "Pf5"};
    std::vector<std::string> men = {"Nd4"};
    for (std::size_t blocked = 0; blocked <= 8; ++blocked) {
        const std::int32_t value = expected[8 - blocked];
        EXPECT_EQ(Terms(Board(men)), TermPair(value, value)) << blocked << " squares blocked";
        if (blocked < 8) {
            men.push_back(blockers[blocked]);
        }
    }
}

TEST_F(PieceTermsTest, CorneredKnightBeforePawnAttacksHasNoMobility) {
    // b3 and c2 are attacked by the pawns on a4 and d3.
    EXPECT_EQ(Terms(Board({"Na1", "pa4", "pd3"})), TermPair(-30, -30));
}

TEST_F(PieceTermsTest, EnemyMenAreMobileSquaresUnlessPawnsGuardThem) {
    EXPECT_EQ(Terms(Board({"Na1", "pb3"})), TermPair(-26, -26));  // b3 attacks c2 and stays itself
    EXPECT_EQ(Terms(Board({"Na1", "pb3", "pa4"})), TermPair(-30, -30));
}

TEST_F(PieceTermsTest, OwnPawnsAttacksDoNotLimitMobility) {
    EXPECT_EQ(Terms(Board({"Nd4", "Pa2"})), TermPair(35, 35));  // a2 attacks b3
}

TEST_F(PieceTermsTest, DefendedKnightOnAnOutpostGetsNoBonus) {
    EXPECT_EQ(Terms(Board({"Nd5", "Pc4"})), TermPair(35, 35));
    EXPECT_EQ(Terms(Board({"Nd5", "Pe4"})), TermPair(35, 35));
}

TEST_F(PieceTermsTest, BishopMobilityByCount) {
    const std::vector<std::int32_t> expected = {-45, -36, -24, -8, 8,  24, 36,
                                                45,  52,  57,  61, 65, 67, 69};
    // From d4 one square after the other is taken away, the far ones first.
    const std::vector<std::string> blockers = {"Pa1", "Pb2", "Pc3", "Pa7", "Pb6", "Pc5", "Ph8",
                                               "Pg7", "Pf6", "Pe5", "Pg1", "Pf2", "Pe3"};
    std::vector<std::string> men = {"Bd4"};
    for (std::size_t blocked = 0; blocked <= 13; ++blocked) {
        const std::int32_t value = expected[13 - blocked];
        EXPECT_EQ(Terms(Board(men)), TermPair(value, value)) << blocked << " squares blocked";
        if (blocked < 13) {
            men.push_back(blockers[blocked]);
        }
    }
}

TEST_F(PieceTermsTest, SlidersStopAtMenOfBothColours) {
    EXPECT_EQ(Terms(Board({"Ba1", "nd4"})), TermPair(-8 - 35, -8 - 35));  // b2, c3 and the knight
    EXPECT_EQ(Terms(Board({"Ba1", "Nd4"})), TermPair(-24 + 35, -24 + 35));
}

TEST_F(PieceTermsTest, RookMobilityByCount) {
    const std::vector<TermPair> expected = {
        {-44, -59}, {-39, -50}, {-33, -37}, {-24, -17}, {-13, 6}, {0, 28},  {13, 44}, {24, 55},
        {33, 62},   {39, 68},   {44, 71},   {48, 74},   {51, 77}, {53, 78}, {55, 80}};
    // A pawn of White far down the rook's file leaves it no open file from the first step on.
    const std::vector<std::string> blockers = {"Pd1", "Pd2", "Pd3", "Ph4", "Pg4", "Pf4", "Pe4",
                                               "Pa4", "Pb4", "Pc4", "Pd8", "Pd7", "Pd6", "Pd5"};
    std::vector<std::string> men = {"Rd4"};
    EXPECT_EQ(Terms(Board(men)), expected[14] + TermPair(8, 8));
    for (std::size_t blocked = 1; blocked <= 14; ++blocked) {
        men.push_back(blockers[blocked - 1]);
        EXPECT_EQ(Terms(Board(men)), expected[14 - blocked]) << blocked << " squares blocked";
    }
}

TEST_F(PieceTermsTest, RookOnOpenHalfOpenAndOwnFile) {
    EXPECT_EQ(Terms(Board({"Ra1"})), TermPair(44 + 8, 71 + 8));  // a2 to a8, b1 to d1
    EXPECT_EQ(Terms(Board({"Ra1", "pa7"})), TermPair(39 + 4, 68 + 4));
    EXPECT_EQ(Terms(Board({"Ra1", "Pa2"})), TermPair(-24, -17));
    EXPECT_EQ(Terms(Board({"Ra2", "Pa1"})), TermPair(53, 78));  // a pawn behind counts as well
    EXPECT_EQ(Terms(Board({"Ra1", "Pa2", "pa7"})), TermPair(-24, -17));
}

TEST_F(PieceTermsTest, QueensHaveOnlyTheirTable) {
    EXPECT_EQ(Terms(Board({"Qd4"})), TermPair(0, 0));
    EXPECT_EQ(Terms(Board({"Qa1", "Pa2", "Pb2", "Pb1"})), TermPair(0, 0));
}

TEST_F(PieceTermsTest, QueenBlocksOthers) {
    EXPECT_EQ(Terms(Board({"Ba1", "Qd4"})), TermPair(-24, -24));
}

TEST_F(PieceTermsTest, SquareValuesAreAdded) {
    EvaluationSetup setup;
    setup.Set(Board({"Qd4"}));
    EXPECT_EQ(PieceTerms(setup.position), TermPair(-14, 27));
    setup.Set(Board({"qd4"}));
    EXPECT_EQ(PieceTerms(setup.position), TermPair(23, -45));  // White's d5, for Black
}

}  // namespace
}  // namespace brenquil
