// ctest: threads

#include "eval/material.h"
#include "eval/material_table.h"
#include "evaluation_setup.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace brenquil {
namespace {

class MaterialTable : public testing::Test {
protected:
    /// The same of the position as it stands.
    const MaterialEntry& Now() { return table_.Find(setup_.position, setup_.options); }

    const MaterialEntry& Of(const std::string& fen) {
        setup_.Set(fen);
        return table_.Find(setup_.position, setup_.options);
    }

    /// What the table says, held against the sums made anew.
    void ExpectRight(const std::string& fen) {
        const MaterialEntry& entry = Of(fen);
        const CPosition& position = setup_.position;
        const Material material = ComputeMaterial(position, setup_.options.pieceValues);
        const int pairs = static_cast<int>(material.hasBishopPair[White]) -
                          static_cast<int>(material.hasBishopPair[Black]);
        ASSERT_EQ(entry.balance, material.value[White] - material.value[Black] + 50 * pairs) << fen;
        ASSERT_EQ(entry.phase, material.phase) << fen;
        const bool isDraw = CannotMate(position, White) && CannotMate(position, Black);
        ASSERT_EQ(entry.ending, isDraw ? UnknownEnding : FindEnding(position)) << fen;
        ASSERT_EQ(entry.isSpecial, isDraw || entry.ending != UnknownEnding) << fen;
    }

    EvaluationSetup setup_;
    CMaterialTable table_;
};

TEST_F(MaterialTable, AgreesWithTheSumsOverRandomPlay) {
    for (const std::string& fen : RandomPlay(3000, 71)) {
        ExpectRight(fen);
    }
}

// More than 31 men of a kind run over in the key; then nothing is kept.
TEST_F(MaterialTable, AgreesWithTheSumsOnFullBoards) {
    std::mt19937 generator(73);
    for (int round = 0; round < 2000; ++round) {
        const std::string letters = round % 2 == 0 ? "pPnNbBrRqQkK" : "pPPPPPPPbBBB";
        std::string fen;
        for (int square = 0; square < 64; ++square) {
            fen += generator() % 16 < 15 ? letters[generator() % 12] : '1';
            if (square % 8 == 7) {
                fen += square < 63 ? "/" : " w - - 0 1";
            }
        }
        ExpectRight(fen);
    }
    // 32 white pawns and no knight have the key of no pawn and one black knight.
    ExpectRight("PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP/8/8/8/8 w - - 0 1");
    ExpectRight("8/8/8/8/8/8/8/n7 w - - 0 1");
}

TEST_F(MaterialTable, ACrowdThatLosesAManIsSummedAsBefore) {
    const std::string pawns = "PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPK";
    EXPECT_EQ(Of("4k3/8/8/r7/" + pawns + " b - - 0 1").balance, 31 * 100 - 600);
    EXPECT_FALSE(IsExact(setup_.position.menKey));
    ASSERT_TRUE(setup_.position.MakeMove(Move::Make(A5, A4)));
    EXPECT_EQ(Now().balance, 30 * 100 - 600);
    EXPECT_FALSE(IsExact(setup_.position.menKey));
    setup_.position.UndoMove(Move::Make(A5, A4));
    EXPECT_EQ(Now().balance, 31 * 100 - 600);
    Of("4k3/8/8/8/r" + pawns.substr(1) + " w - - 0 1");
    EXPECT_TRUE(IsExact(setup_.position.menKey));
}

TEST_F(MaterialTable, FewStrangeMen) {
    for (const char* fen :
         {"8/8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/K7 w - - 0 1",
          "kk6/8/8/8/8/8/8/KK6 w - - 0 1", "kkkkk3/8/8/8/8/8/8/KQ6 w - - 0 1",
          "4k3/8/8/8/8/8/8/BBBBK3 w - - 0 1", "4k3/8/8/8/8/8/8/B1B1K3 w - - 0 1"}) {
        ExpectRight(fen);
    }
}

TEST_F(MaterialTable, BishopsOfBothColoursOfSquaresAreToldApart) {
    EXPECT_EQ(Of("r3k3/8/8/8/8/8/8/B1B1K3 w - - 0 1").balance, 400 - 600);
    EXPECT_EQ(Of("r3k3/8/8/8/8/8/8/BB2K3 w - - 0 1").balance, 800 + 50 - 600);
}

TEST_F(MaterialTable, OnlyDrawsAndKnownEndingsAreSpecial) {
    EXPECT_FALSE(Of(StartFen.data()).isSpecial);
    EXPECT_FALSE(Of("4k3/pp6/8/8/8/8/PP6/4K3 w - - 0 1").isSpecial);
    EXPECT_FALSE(Of("4k3/r7/8/8/8/8/P7/R3K3 w - - 0 1").isSpecial);
    EXPECT_FALSE(Of("4k3/p7/8/8/8/8/P7/4K3 w - - 0 1").isSpecial);
    EXPECT_TRUE(Of("4k3/r7/8/8/8/8/8/Q3K3 w - - 0 1").isSpecial);
    EXPECT_TRUE(Of("4k3/8/8/8/8/8/8/N3K3 w - - 0 1").isSpecial);
}

TEST_F(MaterialTable, ChangedPieceValuesActAtOnce) {
    const std::string fen = "4k3/pp6/8/8/8/8/PP6/R3K3 w - - 0 1";
    EXPECT_EQ(Of(fen).balance, 600);
    setup_.options.pieceValues[Rook].SetValue("555");
    EXPECT_EQ(Of(fen).balance, 555);
    setup_.options.pieceValues[Rook].SetValue("600");
    EXPECT_EQ(Of(fen).balance, 600);
    ExpectRight(fen);
}

// Whatever goes into the sums while a value changes, the last change is seen in the end.
TEST_F(MaterialTable, ChangesFromAnotherThreadAreSeen) {
    setup_.Set("4k3/pp6/8/8/8/8/PP6/R3K3 w - - 0 1");
    std::atomic<bool> isDone{false};
    std::thread changer([&] {
        for (int value = 0; value <= 1000; ++value) {
            setup_.options.pieceValues[Rook].SetValue(std::to_string(value));
        }
        isDone = true;
    });
    Score last = 0;
    while (!isDone) {
        const Score balance = table_.Find(setup_.position, setup_.options).balance;
        EXPECT_TRUE(balance == 600 || balance >= last || last == 600) << balance << " " << last;
        last = balance;
    }
    changer.join();
    EXPECT_EQ(table_.Find(setup_.position, setup_.options).balance, 1000);
}

}  // namespace
}  // namespace brenquil
