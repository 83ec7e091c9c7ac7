// The self-test: its tables, its texts, and that it sees faults.

#include "../../../support/strings.h"
#include "../collecting_sink.h"
#include "interface/console/self_test.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace brenquil {
namespace {

constexpr std::string_view KingAndPawn = "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1";

class SelfTest : public testing::Test {
protected:
    /// A test of the two tables alone.
    std::unique_ptr<CSelfTest> Make(std::vector<PerftTestRow> perftRows,
                                    std::vector<HashTestRow> hashRows = {}) {
        auto test = std::make_unique<CSelfTest>(
            sink, [this](const CPosition& position) { return Evaluate(position); }, false);
        test->perftTable = std::move(perftRows);
        test->hashTable = std::move(hashRows);
        return test;
    }

    Score Evaluate(const CPosition& position) const {
        return position.sideToMove == White ? whiteScore : blackScore;
    }

    CCollectingSink sink;
    Score whiteScore = 7;
    Score blackScore = 7;
};

TEST_F(SelfTest, TablesHaveTheirRowsInOrder) {
    const auto evaluate = [](const CPosition&) { return 0; };
    const auto normal = std::make_unique<CSelfTest>(sink, evaluate, false);
    ASSERT_EQ(normal->perftTable.size(), 6U);
    EXPECT_EQ(normal->perftTable[0].nodes, 119060324U);
    EXPECT_EQ(normal->perftTable[5].depth, 7U);
    EXPECT_EQ(normal->hashTable.size(), 9U);

    const auto all = std::make_unique<CSelfTest>(sink, evaluate, true);
    ASSERT_EQ(all->perftTable.size(), 24U);
    EXPECT_EQ(all->perftTable[6].fen, "rbbknnqr/pppppppp/8/8/8/8/PPPPPPPP/RBBKNNQR w KQkq - 0 1");
    EXPECT_EQ(all->perftTable[17].nodes, 3396258275U);
    EXPECT_EQ(all->perftTable[18].fen, all->perftTable[15].fen) << "one row stands twice";
    EXPECT_EQ(all->perftTable[23].nodes, 281330710U);
    EXPECT_EQ(all->hashTable.size(), 9U);
}

TEST_F(SelfTest, MoveGenerationPrintsPerftLinesAndTheResultOfEachRow) {
    Make({{KingAndPawn, 2, 30}, {"8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67", 1, 50}})
        ->TestMoveGeneration();
    const Strings lines = sink.Take();
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[0], "--------------------");
    EXPECT_EQ(lines[1], "test move-generation");
    EXPECT_EQ(lines[2], "--------------------");
    EXPECT_EQ(lines[3], "test fen: 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1");
    EXPECT_TRUE(lines[4].starts_with("depth 1 nodes 6 nps ")) << lines[4];
    EXPECT_TRUE(lines[5].starts_with("depth 2 nodes 30 nps ")) << lines[5];
    EXPECT_EQ(lines[6], "test ok!");
    EXPECT_EQ(lines[7], "");
    EXPECT_EQ(lines[8], "test fen: 8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67");
    EXPECT_TRUE(lines[9].starts_with("depth 1 nodes 50 nps ")) << lines[9];
    EXPECT_EQ(lines[10], "test ok!");
    EXPECT_EQ(lines[11], "");
    EXPECT_EQ(lines[12], "test complete!");
    EXPECT_TRUE(lines[13].starts_with("time:  ")) << lines[13];
}

TEST_F(SelfTest, WrongCountFailsItsRowAndTheRunButDoesNotStopIt) {
    Make({{KingAndPawn, 1, 5}, {KingAndPawn, 1, 6}})->TestMoveGeneration();
    const Strings lines = sink.Take();
    ASSERT_EQ(lines.size(), 13U);
    EXPECT_EQ(lines[5], "test failed!");
    EXPECT_EQ(lines[6], "valid count of nodes = 5");
    EXPECT_EQ(lines[7], "");
    EXPECT_EQ(lines[10], "test ok!");
    EXPECT_EQ(lines[11], "");
    EXPECT_TRUE(lines[12].starts_with("time:  ")) << lines[12];
}

TEST_F(SelfTest, BoardRunPrintsTheResultOfEachRow) {
    Make({{KingAndPawn, 6, 0},
          {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 2, 0}})
        ->TestBoard();
    EXPECT_EQ(sink.Take(),
              (Strings{"----------------------", "test board-correctness", "----------------------",
                       "test fen: 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "test ok!", "",
                       "test fen: r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w "
                       "KQkq - 0 1",
                       "test ok!", "", "test complete!"}));
}

TEST_F(SelfTest, BoardCheckSeesEveryKindOfFault) {
    const CPosition good;
    const auto isRight = [&good](auto damage) {
        CPosition bad;
        damage(bad);
        EXPECT_EQ(CSelfTest::AreBoardsRight(bad, good), CSelfTest::AreBoardsRight(good, bad));
        return CSelfTest::AreBoardsRight(bad, good);
    };
    EXPECT_TRUE(isRight([](CPosition&) {}));
    for (std::size_t piece = 0; piece < PieceCodes; ++piece) {
        EXPECT_FALSE(isRight([piece](CPosition& bad) { bad.pieces[piece] ^= BitOf(E4); })) << piece;
        EXPECT_FALSE(isRight([piece](CPosition& bad) { ++bad.pieceCount[piece]; })) << piece;
    }
    for (const Colour colour : {Black, White}) {
        EXPECT_FALSE(isRight([colour](CPosition& bad) { bad.colours[colour] ^= BitOf(E4); }));
        EXPECT_FALSE(isRight([colour](CPosition& bad) { ++bad.colourCount[colour]; }));
    }
    for (Square square = A1; square <= H8; ++square) {
        EXPECT_FALSE(isRight([square](CPosition& bad) {
            bad.board[square] = bad.board[square] == WhiteQueen ? PieceNone : WhiteQueen;
        })) << square;
    }
    EXPECT_FALSE(isRight([](CPosition& bad) { bad.key ^= 1; }));
    EXPECT_FALSE(isRight([](CPosition& bad) { bad.pawnKingKey ^= 1; }));
}

TEST_F(SelfTest, BoardCheckHoldsCountsAgainstBitboardsInBothPositions) {
    // Equal in both, and wrong in both.
    CPosition first;
    CPosition second;
    ++first.pieceCount[WhiteQueen];
    ++second.pieceCount[WhiteQueen];
    EXPECT_FALSE(CSelfTest::AreBoardsRight(first, second));
}

TEST_F(SelfTest, EvaluationRunComparesAPositionWithItsMirrorImage) {
    Make({{KingAndPawn, 1, 6}})->TestEvaluation();
    EXPECT_EQ(sink.Take(),
              (Strings{"-------------------------", "test evaluation symmetric",
                       "-------------------------", "test fen: 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1",
                       "test ok!", "", "test complete!"}));
}

TEST_F(SelfTest, EvaluationThatFavoursAColourFails) {
    blackScore = -12;
    Make({{KingAndPawn, 1, 6}})->TestEvaluation();
    const Strings lines = sink.Take();
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[4], "test failed!");
    EXPECT_EQ(lines[5], "eval = 7 => eval flip = -12");
    EXPECT_EQ(lines[6], "");
}

TEST_F(SelfTest, HashRunPrintsBothHalves) {
    Make({}, {{"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0x463B96181691FC9C, ""},
              {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", 0x823C9B50FD114196,
               "e2e4"}})
        ->TestHash();
    EXPECT_EQ(sink.Take(),
              (Strings{"-------------------------------",
                       "test hash correctness (fen)",
                       "-------------------------------",
                       "test fen: rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
                       "test ok!",
                       "",
                       "test fen: rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
                       "test ok!",
                       "",
                       "test complete!",
                       "-------------------------------",
                       "test hash correctness (moves)",
                       "-------------------------------",
                       "test moves: ",
                       "test ok!",
                       "",
                       "test moves: e2e4",
                       "test ok!",
                       "",
                       "test complete!"}));
}

TEST_F(SelfTest, FailureInTheFirstHalfOfTheHashRunDoesNotPreventTheSecond) {
    Make({}, {{KingAndPawn, 0x463B96181691FC9C, ""}})->TestHash();
    const Strings lines = sink.Take();
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[4], "test failed!");
    EXPECT_TRUE(lines[5].starts_with("hash = ")) << lines[5];
    EXPECT_TRUE(lines[5].ends_with(" => hash test = 5060803636482931868")) << lines[5];
    EXPECT_EQ(lines[6], "");
    EXPECT_EQ(lines[8], "test hash correctness (moves)");
    EXPECT_EQ(lines[11], "test ok!");
    EXPECT_EQ(lines[13], "test complete!");
}

TEST_F(SelfTest, WrongKeyAfterMovesIsShownInDecimal) {
    Make({},
         {{"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0x463B96181691FC9C, "e2e4"}})
        ->TestHash();
    const Strings lines = sink.Take();
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[6], "test complete!");
    EXPECT_EQ(lines[11], "test failed!");
    EXPECT_EQ(lines[12], "hash = 9384546495678726550 => hash test = 5060803636482931868");
    EXPECT_EQ(lines[13], "");
}

TEST_F(SelfTest, IllegalMoveFailsTheRunAndTheNextWordIsStillTried) {
    Make({}, {{"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", 0x823C9B50FD114196,
               "e2e5 e2e4 x"}})
        ->TestHash();
    const Strings lines = sink.Take();
    ASSERT_EQ(lines.size(), 15U);
    EXPECT_EQ(lines[10], "test moves: e2e5 e2e4 x");
    EXPECT_EQ(lines[11], "Illegal move: e2e5");
    EXPECT_EQ(lines[12], "Illegal move: x");
    EXPECT_EQ(lines[13], "test ok!") << "the key is a matter of its own";
    EXPECT_EQ(lines[14], "");
}

}  // namespace
}  // namespace brenquil
