// The console commands on a whole engine.

#include "../engine_fixture.h"
#include "../fake_base.h"
#include "interface/console/console_commands.h"

namespace brenquil {
namespace {

using Console = CEngineFixture;

// The full-move number of a FEN follows from the ply, which begins at 1: it stands at 2 after the
// first half-move already.
TEST_F(Console, MoveIsPlayedInSilence) {
    EXPECT_TRUE(Obey("e2e4").empty());
    EXPECT_EQ(Fen(), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2");
}

TEST_F(Console, MoveFollowedByWordsIsNoMove) {
    EXPECT_TRUE(Obey({"e2e4 is what I want", " e2e4", "e2e5"}).empty());
    EXPECT_EQ(Fen(), StartText);
}

TEST_F(Console, MoveThatLeavesTheKingInCheckIsAnsweredBare) {
    EXPECT_EQ(Obey({"fen 4k3/8/8/8/8/8/P3r3/4K3 w - - 0 1", "a2a3"}),
              Strings{"Illegal move: a2a3"});
}

TEST_F(Console, CastlingFollowsTheChess960Option) {
    (void)Obey({"fen 4k3/8/8/8/8/8/8/4K2R w K - 0 1", "O-O", "e1h1"});
    EXPECT_EQ(Fen(), "4k3/8/8/8/8/8/8/4K2R w K - 0 1");
    engine->outputOptions.SetOption("UCI_Chess960", "true");
    (void)Obey("O-O");
    EXPECT_EQ(Fen(), "4k3/8/8/8/8/8/8/5RK1 b - - 1 2");
}

TEST_F(Console, UndoTakesTheLastMoveBack) {
    (void)Obey({"e2e4", "e7e5", "undo"});
    EXPECT_EQ(Fen(), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2");
    (void)Obey("undo");
    EXPECT_EQ(Fen(), StartText);
}

TEST_F(Console, UndoAfterNewDoesNothing) {
    EXPECT_TRUE(Obey({"e2e4", "new", "undo"}).empty());
    EXPECT_EQ(Fen(), StartText);
}

TEST_F(Console, UndoAfterAFenWithALateMoveNumberIsSurvived) {
    for (const char* number : {"40", "250", "251", "252", "100000", "2147483647"}) {
        (void)Obey({"e2e4", "e7e5", std::string("fen 4k3/8/8/8/8/8/8/4K3 w - - 0 ") + number,
                    "undo", "undo", "undo", "board", "eval", "moves", "perft 2"});
        (void)Obey("new");
        EXPECT_EQ(Fen(), StartText) << number;
    }
}

TEST_F(Console, BoardDrawsTheRanksFromTheTop) {
    EXPECT_EQ(Obey({"e2e4", "board"}),
              (Strings{"", "rnbqkbnr", "pppppppp", "........", "........", "....P...", "........",
                       "PPPP.PPP", "RNBQKBNR", ""}));
}

TEST_F(Console, FenAfterNewPrintsTheStartPositionAndTheTextSetsItAgain) {
    EXPECT_EQ(Obey({"e2e4", "new", "fen"}), Strings{StartText});
    EXPECT_TRUE(Obey({"e2e4", std::string("fen ") + StartText}).empty());
    EXPECT_EQ(Fen(), StartText);
}

TEST_F(Console, FenNotesFileLettersAndFlipDoesNotTouchTheNote) {
    (void)Obey("fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1");
    EXPECT_TRUE(engine->protocol.fileLetterCastling);
    (void)Obey("flip");
    EXPECT_TRUE(engine->protocol.fileLetterCastling);
    (void)Obey("fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    EXPECT_FALSE(engine->protocol.fileLetterCastling);
}

TEST_F(Console, FlipMirrorsAndFlipTwiceRestores) {
    (void)Obey({"e2e4", "flip"});
    EXPECT_EQ(Fen(), "rnbqkbnr/pppp1ppp/8/4p3/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 2");
    (void)Obey("flip");
    EXPECT_EQ(Fen(), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2");
}

TEST_F(Console, EvalPrintsTheStaticScore) {
    EXPECT_EQ(Obey("eval"), Strings{"eval: 0"});
    const Strings score =
        Obey({"fen rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1", "eval"});
    EXPECT_NE(score, Strings{"eval: 0"});
    EXPECT_EQ(Obey({"flip", "eval"}), score);
    // The options steer it: a pawn more for White, seen from White.
    const Strings cheap = Obey({"fen 4k3/pppp4/8/8/8/8/PPPPP3/4K3 w - - 0 1", "eval"});
    engine->evaluationOptions.SetOption("Pawn", "200");
    EXPECT_NE(Obey("eval"), cheap);
}

TEST_F(Console, SeePrintsTheExchangeOrRefusesTheMove) {
    EXPECT_EQ(Obey({"fen 4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "see e4d5"}), Strings{"score: 100"});
    EXPECT_EQ(Obey({"see e4e6", "see", "see nonsense"}),
              (Strings{"invalid move!", "invalid move!", "invalid move!"}));
}

TEST_F(Console, MovesListsAllPseudoLegalMoves) {
    const Strings rows = Obey("moves");
    ASSERT_EQ(rows.size(), 20U);
    EXPECT_EQ(rows.front(), "  1. a2a3");
    EXPECT_EQ(rows.back(), " 20. g1h3");
}

TEST_F(Console, MovesInCheckMayShowMovesThatEntryRefuses) {
    const Strings rows = Obey({"fen 4k3/8/8/8/8/8/P3r3/4K3 w - - 0 1", "moves"});
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(rows.front(), "  1. a2a3");
    EXPECT_EQ(Obey("a2a3"), Strings{"Illegal move: a2a3"});
}

TEST_F(Console, Perft1FromTheStartPosition) {
    const Strings lines = WithoutTimes(Obey("perft 1"));
    EXPECT_EQ(lines, Strings{"depth 1 nodes 20 "});
}

TEST_F(Console, Perft1DividedHas20RowsNumberedFrom1To20) {
    const Strings lines = Obey("perft 1 -d");
    ASSERT_EQ(lines.size(), 25U);
    EXPECT_EQ(lines[1], " 1  a2a3 - 1");
    EXPECT_EQ(lines[20], "20  g1h3 - 1");
}

TEST_F(Console, PerftWithoutADepthPrintsNothing) {
    EXPECT_TRUE(Obey({"perft 0", "perft", "perft -d", "perft x", "perft -1", "perft -1 -d",
                      "perft 256", "perft 256 -d"})
                    .empty());
}

TEST_F(Console, PerftTakesTheLastNumber) {
    EXPECT_EQ(Obey("perft 2 3").size(), 3U);
    EXPECT_EQ(Obey("perft 3 -d 1").size(), 25U);
}

TEST_F(Console, PerftStartsFromTheGamePositionAndLeavesItUntouched) {
    (void)Obey("fen 8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67");
    const Strings before = Obey("board");
    EXPECT_EQ(WithoutTimes(Obey("perft 2")).back(), "depth 2 nodes 279 ");
    EXPECT_EQ(Obey("board"), before);
    EXPECT_EQ(Fen(), "8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67");
}

TEST_F(Console, PerftNeverReachesTheLog) {
    Strings log;
    engine->protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    engine->protocol.logging = true;
    (void)Obey({"perft 1", "perft 1 -d"});
    EXPECT_EQ(log, (Strings{"> perft 1", "> perft 1 -d"}));
}

TEST_F(Console, CommandWordsAreHeardInAnyCase) {
    EXPECT_EQ(Obey("FEN"), Strings{StartText});
}

}  // namespace
}  // namespace brenquil
