// The reading loop: where lines come from, how they are cut, and which mode hears them.
// ctest: threads

#include "engine_fixture.h"
#include "interface/command_loop.h"

namespace brenquil {
namespace {

using CommandLoop = CEngineFixture;

TEST_F(CommandLoop, QuitAndExitEndItInAnyCaseAndInEitherMode) {
    for (const char* mode : {"console", "uci"}) {
        for (const char* word : {"QUIT", "Quit", "quit", "exit", " Exit now"}) {
            std::istringstream input(std::string(mode) + "\n" + word + "\n" + "uci\n");
            CStreamSource source(input);
            CCommandLoop loop(*engine, source);
            EXPECT_TRUE(loop.Pass());
            EXPECT_FALSE(loop.Pass()) << word;
            engine->protocol.running = true;
        }
    }
}

TEST_F(CommandLoop, RunReturnsAtQuitAndDropsTheRest) {
    std::istringstream input("new\nquit\nboard\n");
    engine->protocol.pendingLines.lines = {{"e2e4"}, {"quit"}, {"board"}};
    CStreamSource source(input);
    CCommandLoop(*engine, source).Run();
    EXPECT_EQ(sink.Take(), (Strings{"e2e4", "quit"}));
}

TEST_F(CommandLoop, EndOfInputDoesNotEndIt) {
    std::istringstream input("");
    CStreamSource source(input);
    CCommandLoop loop(*engine, source);
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(loop.Pass());
    }
}

TEST_F(CommandLoop, LastLineWithoutALineFeedIsObeyed) {
    std::istringstream input("uci\nquit");
    CStreamSource source(input);
    CCommandLoop loop(*engine, source);
    EXPECT_TRUE(loop.Pass());
    EXPECT_FALSE(loop.Pass());
}

TEST_F(CommandLoop, CarriageReturnBeforeTheLineFeedIsDropped) {
    EXPECT_EQ(Obey({"uci\r", "isready\r"}).back(), "readyok");
    EXPECT_TRUE(Obey("isready\r\r").empty());
}

TEST_F(CommandLoop, CommandWordStandsBehindAnyNumberOfBlanksButNoTab) {
    EnterUciMode();
    EXPECT_EQ(Obey("   isready   please"), Strings{"readyok"});
    EXPECT_TRUE(Obey("\tisready").empty());
}

TEST_F(CommandLoop, CommandsOfOneModeAreUnknownInTheOther) {
    EXPECT_TRUE(
        Obey({"go depth 1", "isready", "position startpos moves e2e4", "debug on"}).empty());
    EXPECT_FALSE(StopSearch());
    EnterUciMode();
    EXPECT_TRUE(Obey({"moves", "board", "fen", "e2e4", "perft 1", "new"}).empty());
}

TEST_F(CommandLoop, ModeChangesAsOftenAsWanted) {
    EXPECT_EQ(Obey({"uci", "isready"}).back(), "readyok");
    EXPECT_TRUE(Obey({"console", "isready"}).empty());
    EXPECT_EQ(Obey({"uci", "isready"}).back(), "readyok");
}

TEST_F(CommandLoop, ConsoleLinePrintsNothing) {
    EnterUciMode();
    EXPECT_TRUE(Obey("console").empty());
    EXPECT_FALSE(engine->protocol.IsUci());
}

TEST_F(CommandLoop, UnknownWordsAreIgnoredInBothModes) {
    EXPECT_TRUE(Obey({"xyzzy", "", "   ", "\t"}).empty());
    EnterUciMode();
    EXPECT_TRUE(Obey({"xyzzy", "", "   ", "\t"}).empty());
}

TEST_F(CommandLoop, InputLinesAreLoggedAndAnEmptyOneToo) {
    Strings log;
    engine->protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    engine->protocol.logging = true;
    (void)Obey({"uci", "", "isready\r"});
    ASSERT_GT(log.size(), 4U);
    EXPECT_EQ(log.front(), "> uci");
    EXPECT_EQ(log[1], "< id name Brenquil 3.00");
    EXPECT_EQ(Strings(log.end() - 3, log.end()), (Strings{"> ", "> isready", "< readyok"}));
}

TEST_F(CommandLoop, TheLineThatSwitchesTheLogOnIsNotInIt) {
    Strings log;
    engine->protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    EnterUciMode();
    (void)Obey({"setoption name Logging value true", "isready"});
    EXPECT_EQ(log, (Strings{"> isready", "< readyok"}));
}

TEST_F(CommandLoop, PendingLinesComeFirstAreEchoedAndNotLoggedAsInput) {
    Strings log;
    engine->protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    engine->protocol.logging = true;
    engine->protocol.pendingLines.lines = {{"e2e4"}, {""}, {"fen"}};
    EXPECT_EQ(
        Obey({"e7e5", "", "", "fen"}),
        (Strings{"e2e4", "fen", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2"}));
    EXPECT_EQ(log.front(), "< e2e4");
}

TEST_F(CommandLoop, PendingLinesAreEchoedAsInfoStringsInUciMode) {
    EnterUciMode();
    engine->protocol.pendingLines.lines = {{"isready"}};
    EXPECT_EQ(Obey(""), (Strings{"info string isready", "readyok"}));
}

TEST_F(CommandLoop, LinesOfAnyBytesAreSurvived) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '\n') {
            bytes += static_cast<char>(byte);
        }
    }
    for (const char* mode : {"console", "uci"}) {
        (void)Obey({mode, bytes, "position fen " + bytes, "go depth " + bytes,
                    "setoption name " + bytes + " value " + bytes, "fen " + bytes,
                    std::string(100000, ' ') + "perft " + bytes, std::string(100000, 'e')});
        engine->master.EndSearch();
    }
    EXPECT_EQ(Obey({"uci", "isready"}).back(), "readyok");
}

}  // namespace
}  // namespace brenquil
