#include "eval/material.h"
#include "evaluation_setup.h"

#include <gtest/gtest.h>
#include <limits>

namespace brenquil {
namespace {

class MaterialTest : public testing::Test {
protected:
    Material Of(std::string_view fen) {
        setup_.Set(fen);
        return ComputeMaterial(setup_.position, setup_.options.pieceValues);
    }

    bool WhiteCannotMate(std::string_view fen) {
        setup_.Set(fen);
        return CannotMate(setup_.position, White);
    }

    EvaluationSetup setup_;
};

TEST_F(MaterialTest, StartPositionHasFullPhase) {
    const Material material = Of(StartFen);
    EXPECT_EQ(material.phase, 24);
    EXPECT_EQ(material.value[White], 800 + 800 + 800 + 1200 + 1200);
    EXPECT_EQ(material.value[Black], material.value[White]);
    EXPECT_TRUE(material.hasBishopPair[White]);
    EXPECT_TRUE(material.hasBishopPair[Black]);
    EXPECT_EQ(material.kingSquare[White], E1);
    EXPECT_EQ(material.kingSquare[Black], E8);
}

TEST_F(MaterialTest, PromotedMenBringThePhaseAboveItsTotal) {
    EXPECT_EQ(Of("rnbqkbnr/8/8/8/8/8/8/RNBQKBNQ w - - 0 1").phase, 26);
}

TEST_F(MaterialTest, PawnsCountNothingForThePhase) {
    EXPECT_EQ(Of("4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 w - - 0 1").phase, 0);
}

TEST_F(MaterialTest, TwoBishopsOnLightSquaresCountOnceAndMakeNoPair) {
    const Material material = Of("4k3/8/8/8/8/8/4B3/4KB2 w - - 0 1");  // e2 and f1
    EXPECT_EQ(material.value[White], 400);
    EXPECT_EQ(material.phase, 1);
    EXPECT_FALSE(material.hasBishopPair[White]);
}

TEST_F(MaterialTest, ThirdBishopAddsNothing) {
    const Material material = Of("4k3/8/8/8/8/8/4B3/2B1KB2 w - - 0 1");
    EXPECT_EQ(material.value[White], 800);
    EXPECT_EQ(material.phase, 2);
    EXPECT_TRUE(material.hasBishopPair[White]);
}

TEST_F(MaterialTest, KingSquareIsTheLowestKingOrNone) {
    const Material material = Of("8/8/8/4K3/8/2K5/8/8 w - - 0 1");
    EXPECT_EQ(material.kingSquare[White], C3);
    EXPECT_EQ(material.kingSquare[Black], SquareNone);
}

TEST_F(MaterialTest, FollowsTheValueOptions) {
    EXPECT_TRUE(setup_.options.SetOption("Queen", "900"));
    EXPECT_TRUE(setup_.options.SetOption("Pawn", "80"));
    EXPECT_TRUE(setup_.options.SetOption("Pawn", "no number"));
    EXPECT_EQ(Of("4k3/8/8/8/8/8/P7/3QK3 w - - 0 1").value[White], 980);
}

TEST_F(MaterialTest, LoneKingCannotMate) {
    EXPECT_TRUE(WhiteCannotMate("k7/8/8/8/8/8/8/4K3 w - - 0 1"));
}

TEST_F(MaterialTest, BishopsOnOneColourOfSquaresCannotMate) {
    EXPECT_TRUE(WhiteCannotMate("k7/8/8/8/8/8/8/4KB2 w - - 0 1"));
    EXPECT_TRUE(WhiteCannotMate("k7/8/8/8/8/8/4B3/4KB2 w - - 0 1"));
    EXPECT_TRUE(WhiteCannotMate("k7/8/8/8/8/8/3B4/2B1K3 w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/8/2B1KB2 w - - 0 1"));
}

TEST_F(MaterialTest, OneKnightCannotMateButTwoCan) {
    EXPECT_TRUE(WhiteCannotMate("k7/8/8/8/8/8/8/4KN2 w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/8/4KNN1 w - - 0 1"));
}

TEST_F(MaterialTest, AnyOtherManCanMate) {
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/P7/4K3 w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/P7/4KN2 w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/P7/4KB2 w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/8/4KBN1 w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/8/4K2R w - - 0 1"));
    EXPECT_FALSE(WhiteCannotMate("k7/8/8/8/8/8/8/4K2Q w - - 0 1"));
}

TEST_F(MaterialTest, AnyValueOfAnOptionIsSafe) {
    for (const std::int32_t value :
         {std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
        for (COptionSpin& pieceValue : setup_.options.pieceValues) {
            pieceValue.SetValue(std::to_string(value));
        }
        setup_.options.contempt.SetValue(std::to_string(value));
        setup_.options.lazyEvalMargin.SetValue(std::to_string(value));
        // What sums use of it is bounded.
        EXPECT_EQ(Of("k7/8/8/8/8/8/P7/4K3 w - - 0 1").value[White],
                  value < 0 ? -COptionSpin::ArithmeticLimit : COptionSpin::ArithmeticLimit);
        for (const char* fen : {"k7/8/8/8/8/8/P7/4K3 w - - 0 1", "rnbqkbnr/8/8/8/8/8/PPPPPPPP/8 b",
                                "k7/8/8/8/8/8/8/2R1K3 b - - 0 1", "QQQQ4/8/8/8/8/8/8/8 w"}) {
            const Score score = setup_.Full(fen);
            EXPECT_EQ(score, setup_.Full(fen));
        }
    }
}

}  // namespace
}  // namespace brenquil
