// The UCI commands on a whole engine.
// ctest: threads

#include "../engine_fixture.h"
#include "../fake_base.h"
#include "interface/move_notation.h"
#include "platform/processor.h"

#include <algorithm>
#include <fstream>
#include <string>

namespace brenquil {
namespace {

using UciCommands = CEngineFixture;

/// The lines of the golden file, which stands beside this file.
Strings GoldenAnswer() {
    std::ifstream file(BRENQUIL_TEST_FOLDER "/uci/uci_answer.golden");
    EXPECT_TRUE(file) << "uci_answer.golden cannot be read";
    Strings lines;
    const std::string placeholder = "{threads}";
    const std::string threads = std::to_string(std::min(32, ProcessorCount()));
    for (std::string line; std::getline(file, line);) {
        const std::size_t place = line.find(placeholder);
        if (place != std::string::npos) {
            line.replace(place, placeholder.size(), threads);
        }
        lines.push_back(line);
    }
    return lines;
}

TEST_F(UciCommands, UciAnswerIsTheGoldenFile) {
    EXPECT_EQ(Obey("uci"), GoldenAnswer());
    EXPECT_TRUE(engine->protocol.IsUci());
}

TEST_F(UciCommands, UciInUciModePrintsTheWholeAnswerAgain) {
    EnterUciMode();
    EXPECT_EQ(Obey("uci"), GoldenAnswer());
}

TEST_F(UciCommands, UciAnswerShowsCurrentValuesAsDefaults) {
    EnterUciMode();
    (void)Obey({"setoption name Book Mode value Foo", "setoption name Ponder value maybe",
                "setoption name Threads value 99"});
    const Strings answer = Obey("uci");
    const auto has = [&answer](const std::string& start) {
        return std::any_of(answer.begin(), answer.end(),
                           [&start](const std::string& line) { return line.starts_with(start); });
    };
    EXPECT_TRUE(has("option name Book Mode type combo default Foo var Wide "));
    EXPECT_TRUE(has("option name Ponder type check default maybe"));
    EXPECT_TRUE(has("option name Threads type spin default 99 min 1 "));
}

// setoption and debug

TEST_F(UciCommands, SetoptionIsSilentUnlessDebugIsOn) {
    EnterUciMode();
    EXPECT_TRUE(Obey("setoption name Hash value 8").empty());
    EXPECT_TRUE(Obey("setoption name Nonsense value 8").empty());
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 8U);
}

TEST_F(UciCommands, SetoptionHash128WithDebugOnPrintsItsEcho) {
    EnterUciMode();
    (void)Obey("debug on");
    EXPECT_EQ(Obey("setoption name Hash value 128"), Strings{"info string Hash = 128"});
    EXPECT_EQ(Obey("setoption name hash value 32"), Strings{"info string unknown option: hash"});
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 128U);
}

TEST_F(UciCommands, SetoptionReadsNameAndValueInEitherOrderAndWithBlanks) {
    EnterUciMode();
    (void)Obey("debug on");
    EXPECT_EQ(Obey("setoption value  7  NAME  MultiPV Delta "),
              Strings{"info string MultiPV Delta = 7"});
    EXPECT_EQ(engine->searchOptions.multiPvDelta.number, 7);
    EXPECT_EQ(Obey("setoption name Book Path value /a b/c.bin"),
              Strings{"info string Book Path = /a b/c.bin"});
}

TEST_F(UciCommands, SetoptionWorksThroughUciNameAndIniName) {
    EnterUciMode();
    (void)Obey("setoption name Chess960 value true");
    EXPECT_TRUE(engine->outputOptions.chess960.enabled);
    (void)Obey("setoption name UCI_Chess960 value false");
    EXPECT_FALSE(engine->outputOptions.chess960.enabled);
}

TEST_F(UciCommands, SetoptionWithoutValueLeavesSpinsAndChecks) {
    EnterUciMode();
    (void)Obey({"setoption name MultiPV", "setoption name Ponder value"});
    EXPECT_EQ(engine->searchOptions.multiPv.number, 1);
    EXPECT_EQ(engine->searchOptions.multiPv.value, "");
    EXPECT_TRUE(engine->outputOptions.ponder.enabled);
    EXPECT_EQ(engine->outputOptions.ponder.value, "");
}

TEST_F(UciCommands, SetoptionWithoutNameMeetsTheFirstOptionThatLacksAName) {
    EnterUciMode();
    (void)Obey("setoption value true");
    EXPECT_TRUE(engine->outputOptions.analyse.enabled);
}

TEST_F(UciCommands, SetoptionHashZeroMakesAnEmptyTable) {
    EnterUciMode();
    (void)Obey("setoption name Hash value 0");
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 0U);
    const Strings lines = Search({"go depth 4"});
    EXPECT_TRUE(lines.back().starts_with("bestmove "));
}

TEST_F(UciCommands, SetoptionHashWithoutNumberKeepsTheSize) {
    EnterUciMode();
    (void)Obey("setoption name Hash value lots");
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 64U);
}

TEST_F(UciCommands, HashThatCannotBeAllocatedIsReportedAndTheOldSizeStays) {
    EnterUciMode();
    const Strings lines =
        Obey({"setoption name Hash value 2147483647", "setoption name Hash value -5"});
    EXPECT_EQ(lines,
              (Strings{"info string Hash of 2147483647 MB cannot be allocated, 64 MB stay in use",
                       "info string Hash of -5 MB cannot be allocated, 64 MB stay in use"}));
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 64U);
    EXPECT_TRUE(Search({"go depth 3"}).back().starts_with("bestmove "));
}

TEST_F(UciCommands, AnalyseModeReachesTheEvaluation) {
    EnterUciMode();
    (void)Obey("setoption name UCI_AnalyseMode value true");
    EXPECT_TRUE(engine->evaluationOptions.analyse.enabled);
}

TEST_F(UciCommands, DebugOnFollowedByDebugTurnsItOnAndOff) {
    EnterUciMode();
    EXPECT_TRUE(Obey("debug on").empty());
    EXPECT_TRUE(engine->outputOptions.debug.enabled);
    EXPECT_TRUE(Obey("debug").empty());
    EXPECT_FALSE(engine->outputOptions.debug.enabled);
    (void)Obey("debug  on ");
    EXPECT_TRUE(engine->outputOptions.debug.enabled);
    for (const char* line : {"debug ON", "debug off", "debug on now"}) {
        (void)Obey({"debug on", line});
        EXPECT_FALSE(engine->outputOptions.debug.enabled) << line;
    }
}

// position and ucinewgame

TEST_F(UciCommands, PositionStartposAndPositionAloneAreTheSame) {
    EnterUciMode();
    for (const char* line : {"position startpos", "position"}) {
        (void)Obey({"position fen 8/8/8/4k3/8/8/2BN4/4K3 w - - 0 1", line});
        EXPECT_EQ(Fen(), StartText) << line;
    }
}

TEST_F(UciCommands, PositionPlaysItsMoves) {
    EnterUciMode();
    EXPECT_TRUE(Obey("position startpos moves e2e4 e7e5").empty());
    EXPECT_EQ(Fen(), "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2");
    (void)Obey("position fen 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1 moves e2e4");
    EXPECT_EQ(Fen(), "4k3/8/8/8/4P3/8/8/4K3 b - - 0 2");
}

TEST_F(UciCommands, PositionReportsOneIllegalMoveAndPlaysTheOthers) {
    EnterUciMode();
    EXPECT_EQ(Obey("position startpos moves e2e4 b9b9 e7e5"),
              Strings{"info string Illegal move: b9b9"});
    EXPECT_EQ(Fen(), "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2");
}

TEST_F(UciCommands, PositionReportsAMoveThatLeavesTheKingInCheck) {
    EnterUciMode();
    EXPECT_EQ(Obey("position fen 4k3/8/8/8/8/8/P3r3/4K3 w - - 0 1 moves a2a3 e1e2"),
              Strings{"info string Illegal move: a2a3"});
    EXPECT_EQ(Fen(), "4k3/8/8/8/8/8/P3K3/8 b - - 0 2");
}

TEST_F(UciCommands, PositionWithMovesBeforeFenReadsBoth) {
    EnterUciMode();
    (void)Obey("position moves e1e2 fen 4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(Fen(), "4k3/8/8/8/8/8/4K3/8 b - - 1 2");
}

TEST_F(UciCommands, PositionKeywordsMatchInAnyCase) {
    EnterUciMode();
    (void)Obey("POSITION FEN 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1 MOVES e2e4");
    EXPECT_EQ(Fen(), "4k3/8/8/8/4P3/8/8/4K3 b - - 0 2");
}

TEST_F(UciCommands, PositionNotesTheCastlingLettersOfItsFen) {
    EnterUciMode();
    (void)Obey("position fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1");
    EXPECT_TRUE(engine->protocol.fileLetterCastling);
    (void)Obey("position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    EXPECT_FALSE(engine->protocol.fileLetterCastling);
    (void)Obey({"position fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1", "position startpos"});
    EXPECT_FALSE(engine->protocol.fileLetterCastling);
}

TEST(HasFileLetterCastling, LooksAtTheThirdFieldAlone) {
    EXPECT_TRUE(HasFileLetterCastling("8/8/8/8/8/8/8/8 w KQha - 0 1"));
    EXPECT_TRUE(HasFileLetterCastling("x w xxh"));
    EXPECT_FALSE(HasFileLetterCastling("8/8/8/8/8/8/8/8 b KQkq e3 0 1"));
    EXPECT_FALSE(HasFileLetterCastling("bbb b - b"));
    EXPECT_FALSE(HasFileLetterCastling("bbb b"));
    EXPECT_FALSE(HasFileLetterCastling(""));
}

TEST_F(UciCommands, UcinewgameSetsTheStartPositionAndClearsTheTable) {
    (void)Search({"position fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1", "go depth 3"});
    EXPECT_EQ(engine->hashTable.Age(), 1U);
    EXPECT_TRUE(engine->hashTable.Probe(engine->master.position.key).has_value());
    const std::uint64_t key = engine->master.position.key;
    EXPECT_TRUE(Obey("ucinewgame").empty());
    EXPECT_EQ(Fen(), StartText);
    EXPECT_FALSE(engine->protocol.fileLetterCastling);
    EXPECT_FALSE(engine->hashTable.Probe(key).has_value());
    EXPECT_EQ(engine->hashTable.Age(), 0U);
}

TEST_F(UciCommands, PositionWith600MovesStopsAtTheEndOfTheUndoStack) {
    EnterUciMode();
    std::string line = "position startpos moves";
    const Strings cycle{" g1f3", " g8f6", " f3g1", " f6g8"};
    for (std::size_t i = 0; i < 600; ++i) {
        line += cycle[i % 4];
    }
    const Strings lines = Obey(line);
    EXPECT_LE(engine->master.position.ply, CPosition::UndoCapacity);
    EXPECT_FALSE(lines.empty());
    EXPECT_TRUE(std::all_of(lines.begin(), lines.end(), [](const std::string& text) {
        return text.starts_with("info string Illegal move: ");
    }));
    EXPECT_TRUE(Search({"go depth 2"}).size() > 0);
}

TEST_F(UciCommands, FullMoveNumber100000IsSurvived) {
    EnterUciMode();
    EXPECT_EQ(Obey("position fen 4k3/8/8/8/8/8/8/4K3 w - - 0 100000 moves e1e2"),
              Strings{"info string Illegal move: e1e2"});
    const Strings lines = Search({"go depth 2"});
    EXPECT_EQ(lines.back(), "info string No best move!");
}

// go

TEST_F(UciCommands, GoDepthPrintsALinePerIterationThenStatisticsThenBestmove) {
    const Strings lines = WithoutTimes(Search({"go depth 3"}));
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_TRUE(lines[0].starts_with("info depth 1 seldepth "));
    EXPECT_TRUE(lines[1].starts_with("info depth 2 seldepth "));
    EXPECT_TRUE(lines[2].starts_with("info depth 3 seldepth "));
    EXPECT_TRUE(lines[3].starts_with("info nodes "));
    EXPECT_TRUE(lines[4].starts_with("bestmove "));
}

TEST_F(UciCommands, GoIsHeardInAnyCase) {
    const Strings lines = Search({"GO DEPTH 1"});
    EXPECT_TRUE(lines.front().starts_with("info depth 1 "));
    EXPECT_TRUE(lines.back().starts_with("bestmove "));
}

TEST_F(UciCommands, GoRaisesTheAgeAndGoInfiniteClearsTheTable) {
    (void)Search({"go depth 2", "go depth 2"});
    EXPECT_EQ(engine->hashTable.Age(), 2U);
    (void)Search({"go infinite", "stop"});
    EXPECT_EQ(engine->hashTable.Age(), 0U);
    (void)Search({"go ponder depth 1", "stop"});
    EXPECT_EQ(engine->hashTable.Age(), 1U);
}

TEST_F(UciCommands, GoWithABaseAnswerPrintsOneInfoLineAndBestmoveWithoutASearch) {
    CFakeBase base;
    engine->bases.Add(base);
    base.rootMove = CPositionText::TextToMove("g1f3", engine->master.position, false);
    base.rootMove.SetOrder(-12);
    EXPECT_EQ(WithoutTimes(Search({"go depth 5"})),
              (Strings{"info depth 1 seldepth 0 nodes 0 score cp -12 hashfull 0 tbhits 1 pv g1f3",
                       "bestmove g1f3"}));
    EXPECT_EQ(engine->hashTable.Age(), 0U);
}

TEST_F(UciCommands, GoInfiniteAndGoPonderDoNotAskTheBases) {
    CFakeBase base;
    engine->bases.Add(base);
    base.rootMove = CPositionText::TextToMove("g1f3", engine->master.position, false);
    (void)Search({"go infinite", "stop"});
    (void)Search({"go ponder depth 1", "stop"});
    EXPECT_EQ(base.rootProbes, 0);
    (void)Search({"go depth 1"});
    EXPECT_EQ(base.rootProbes, 1);
}

TEST_F(UciCommands, GoWithoutALegalMoveSaysSo) {
    const Strings lines = Search({"position fen 7k/5Q2/8/8/8/8/8/K7 b - - 0 1", "go depth 2"});
    EXPECT_EQ(lines.back(), "info string No best move!");
}

TEST_F(UciCommands, HashfullBeginsAtZeroWithEachGo) {
    const auto zero = [](const std::string& line) {
        return line.find(" hashfull 0 ") != std::string::npos;
    };
    const Strings first = Search({"setoption name Hash value 1", "go depth 7"});
    EXPECT_TRUE(zero(first.front()));
    EXPECT_FALSE(zero(first[first.size() - 2]));
    EXPECT_TRUE(zero(Search({"go depth 1"}).front()));
}

// Commands while a search runs

TEST_F(UciCommands, StopEndsAnInfiniteSearchWithABestmove) {
    EnterUciMode();
    const Strings before = Obey({"go infinite", "isready"});
    EXPECT_NE(std::find(before.begin(), before.end(), "readyok"), before.end());
    EXPECT_FALSE(HasEnd(before));
    const Strings after = Obey("stop");
    engine->master.WaitForSearch();
    EXPECT_NE(HasEnd(after), HasEnd(sink.Take()));
}

TEST_F(UciCommands, StopWithoutASearchDoesNotHinderTheNextGo) {
    EnterUciMode();
    (void)Obey("stop");
    const Strings lines = Search({"go depth 2"});
    EXPECT_TRUE(lines.back().starts_with("bestmove "));
}

TEST_F(UciCommands, CommandsThatRewriteWhatASearchReadsEndItFirst) {
    EnterUciMode();
    for (const char* line : {"position startpos moves e2e4", "ucinewgame", "go infinite",
                             "setoption name Hash value 3"}) {
        EXPECT_FALSE(HasEnd(Obey({"ucinewgame", "setoption name Hash value 2", "go infinite"})));
        EXPECT_TRUE(HasEnd(Obey(line))) << line;
        (void)StopSearch();
    }
}

TEST_F(UciCommands, OtherCommandsLeaveASearchAlone) {
    EnterUciMode();
    EXPECT_FALSE(
        HasEnd(Obey({"go infinite", "isready", "ponderhit", "setoption name MultiPV value 2",
                     "setoption name Hash value 64", "debug on", "uci", "nonsense", ""})));
    EXPECT_TRUE(StopSearch());
}

TEST_F(UciCommands, QuitLeavesASearchAlone) {
    EnterUciMode();
    (void)Obey({"go infinite", "console"});
    std::istringstream input("quit\n");
    CStreamSource source(input);
    EXPECT_FALSE(CCommandLoop(*engine, source).Pass());
    EXPECT_FALSE(HasEnd(sink.Take()));
    EXPECT_TRUE(StopSearch());
}

TEST_F(UciCommands, ConsoleCommandEndsASearch) {
    EnterUciMode();
    EXPECT_FALSE(HasEnd(Obey({"go infinite", "console", "what is this"})));
    EXPECT_TRUE(HasEnd(Obey("e2e4")));
    EXPECT_EQ(Fen(), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2");
}

}  // namespace
}  // namespace brenquil
