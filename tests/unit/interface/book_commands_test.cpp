// The opening book in the whole engine: `go`, the move listing, the database line, and changes of
// the book while a search runs.
// ctest: threads

#include "../../support/temporary_folder.h"
#include "../book/book_builder.h"
#include "engine_fixture.h"

#include <chrono>
#include <string>
#include <thread>

namespace brenquil {
namespace {

constexpr std::string_view AfterE4 = "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1";
constexpr std::string_view AfterE4E5 =
    "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6 0 2";

class BookCommands : public CEngineFixture {
protected:
    void SetUp() override {
        engine->protocol.mode = CommandMode::Uci;
        path = folder.Write("a book.bin", test::CBookBuilder()
                                              .Add(StartFen, "e2e4", 30)
                                              .Add(StartFen, "d2d4", 10)
                                              .Add(AfterE4, "e7e5", 2)
                                              .Add(AfterE4, "c7c5", 6)
                                              .Add(AfterE4E5, "g1f3", 1)
                                              .Bytes());
    }

    Strings LoadBook() { return Obey("setoption name Book Path value " + path); }

    /// Starts a search that waits for a stop, and stops it when it has printed a line.
    Strings SearchAStep(const std::string& go) {
        Strings lines = Obey(go);
        for (int i = 0; i < 10000 && lines.empty(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            lines = sink.Take();
        }
        engine->master.EndSearch();
        for (std::string& line : sink.Take()) {
            lines.push_back(std::move(line));
        }
        return lines;
    }

    static bool HasStats(const Strings& lines) {
        return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
            return line.find(" cpuload ") != std::string::npos;
        });
    }

    test::CTemporaryFolder folder;
    std::string path;
};

TEST_F(BookCommands, LoadedMessageIsAnInfoStringInUciModeAndBareInTheConsole) {
    EXPECT_EQ(LoadBook(), Strings{"info string book \"" + path + "\" loaded! (5 moves)"});
    EXPECT_TRUE(Obey("setoption name Book Path value <empty>").empty());
    engine->protocol.mode = CommandMode::Console;
    ASSERT_TRUE(SetOption(engine->optionGroups, "Book Path", path));
    EXPECT_EQ(sink.Take(), Strings{"book \"" + path + "\" loaded! (5 moves)"});
}

TEST_F(BookCommands, MissingBookIsSilent) {
    EXPECT_TRUE(Obey("setoption name Book Path value " + folder.At("missing")).empty());
    EXPECT_TRUE(Obey("setoption name Book Path value " + folder.At("")).empty());
}

TEST_F(BookCommands, GoIsAnsweredWithoutASearch) {
    (void)LoadBook();
    (void)Obey("setoption name Book Mode value BestMove");
    constexpr int Wait = 50;
    std::this_thread::sleep_for(std::chrono::milliseconds(Wait));
    const Strings lines = Obey({"position startpos", "go wtime 1000 btime 1000"});
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(WithoutTimes(lines)[0],
              "info depth 1 seldepth 0 nodes 0 score cp 0 hashfull 0 tbhits 1 pv e2e4");
    EXPECT_EQ(lines[1], "bestmove e2e4");
    // Its clock is that of the `go` before, here of the beginning.
    const std::size_t time = lines[0].find(" time ") + 6;
    EXPECT_GE(std::stoi(lines[0].substr(time)), Wait);
    EXPECT_FALSE(StopSearch());
}

TEST_F(BookCommands, GoWithPonderOrInfiniteDoesNotAskTheBook) {
    (void)LoadBook();
    for (const char* go : {"go depth 1 infinite", "go ponder depth 1"}) {
        (void)Obey("position startpos");
        const Strings lines = SearchAStep(go);
        EXPECT_TRUE(HasStats(lines)) << go;
    }
}

TEST_F(BookCommands, GoOutsideTheBookSearches) {
    (void)LoadBook();
    const Strings lines = Search({"position startpos moves a2a3", "go depth 1"});
    EXPECT_TRUE(HasStats(lines));
    EXPECT_TRUE(lines.back().starts_with("bestmove ")) << lines.back();
}

TEST_F(BookCommands, OwnBookOffSearches) {
    (void)LoadBook();
    (void)Obey("setoption name OwnBook value false");
    EXPECT_TRUE(HasStats(Search({"position startpos", "go depth 1"})));
    (void)Obey("setoption name OwnBook value true");
    EXPECT_EQ(Obey("go depth 1").size(), 2U);
}

TEST_F(BookCommands, MovesListsBookMovesFirstWithShareAndLine) {
    (void)LoadBook();
    const Strings rows = Obey({"console", "moves"});
    ASSERT_EQ(rows.size(), 20U);
    EXPECT_EQ(rows[0], "  1. e2e4 (30 = 75.00%) c7c5");
    EXPECT_EQ(rows[1], "  2. d2d4 (10 = 25.00%)");
    EXPECT_EQ(rows[2], "  3. a2a3");
    EXPECT_EQ(rows[19], " 20. g1h3");
}

TEST_F(BookCommands, ShowDatabaseMovesListsTheRepliesBehindBestmove) {
    (void)LoadBook();
    (void)Obey({"setoption name Show Database Moves value true",
                "setoption name Book Mode value BestMove"});
    const Strings lines = Obey({"position startpos", "go depth 1"});
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1], "bestmove e2e4");
    EXPECT_EQ(lines[2],
              "info string Database moves:   1. c7c5 (6 = 75.00%)   2. e7e5 (2 = 25.00%)");
    // Without a line, and nothing at all when the book knows no reply.
    (void)Obey("position startpos moves e2e4 e7e5");
    EXPECT_EQ(Obey("go depth 1").size(), 2U);
}

TEST_F(BookCommands, ShowDatabaseMovesComesAfterASearchToo) {
    (void)LoadBook();
    (void)Obey("setoption name Show Database Moves value true");
    (void)Obey("position startpos");
    const Strings lines = SearchAStep("go ponder depth 1 searchmoves e2e4");
    ASSERT_GE(lines.size(), 2U);
    EXPECT_TRUE(lines[lines.size() - 2].starts_with("bestmove e2e4")) << lines[lines.size() - 2];
    EXPECT_EQ(lines.back(),
              "info string Database moves:   1. c7c5 (6 = 75.00%)   2. e7e5 (2 = 25.00%)");
}

TEST_F(BookCommands, BookMovesAreSpeltByTheOptionForChess960) {
    constexpr std::string_view Fen = "4k3/8/8/8/8/8/8/4K2R w K - 0 1";
    path = folder.Write("castling.bin", test::CBookBuilder().Add(Fen, "e1h1", 1).Bytes());
    (void)LoadBook();
    const std::string position = "position fen " + std::string(Fen);
    EXPECT_EQ(Obey({position, "go depth 1"}).back(), "bestmove e1g1");
    (void)Obey("setoption name UCI_Chess960 value true");
    EXPECT_EQ(Obey({position, "go depth 1"}).back(), "bestmove O-O");
    EXPECT_EQ(Obey({"position fen 4k3/8/8/8/8/8/8/4K2R w H - 0 1", "go depth 1"}).back(),
              "bestmove e1h1");
}

TEST_F(BookCommands, ChangesWhileASearchRunsAreSafe) {
    (void)Obey("setoption name Show Database Moves value true");
    for (int round = 0; round < 30; ++round) {
        (void)Obey({"position startpos", "go infinite"});
        if (round % 3 == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        (void)Obey("setoption name OwnBook value " +
                   std::string(round % 4 == 0 ? "false" : "true"));
        (void)Obey("setoption name Book Mode value " +
                   std::string(round % 2 == 0 ? "Standard" : "Wide"));
        if (round % 5 == 0) {
            engine->master.Stop();  // the master's thread may be asking the book right now
        }
        (void)Obey("setoption name Book Path value " + (round % 2 == 0 ? path : "<empty>"));
        EXPECT_FALSE(StopSearch()) << "another book ends the search first";
    }
}

}  // namespace
}  // namespace brenquil
