// Strict UCI on a whole engine.
// ctest: threads

#include "../engine_fixture.h"
#include "interface/uci/uci_commands.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

namespace brenquil {
namespace {

constexpr const char* NoMovesLeft = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1";
constexpr const char* Mated = "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1";

class StrictUci : public CEngineFixture {
protected:
    StrictUci() {
        engine = std::make_unique<test::COpenEngine>(sink, CDialect::Strict());
        EnterUciMode();
    }

    /// The last line of the lines with a variation.
    static std::string LastPv(const Strings& lines) {
        const auto found = std::find_if(lines.rbegin(), lines.rend(), [](const std::string& line) {
            return line.find(" pv ") != std::string::npos;
        });
        return found == lines.rend() ? "" : *found;
    }

    static std::string WordAfter(const std::string& line, const std::string& word) {
        const std::size_t place = line.find(word + " ");
        if (place == std::string::npos) {
            return {};
        }
        const std::size_t start = place + word.size() + 1;
        return line.substr(start, line.find(' ', start) - start);
    }

    /// The best move is named, has a score, and stands first in the last line.
    static void ExpectAnswer(const Strings& lines) {
        ASSERT_FALSE(lines.empty());
        const std::string pv = LastPv(lines);
        EXPECT_NE(pv.find(" score "), std::string::npos);
        EXPECT_EQ(WordAfter(lines.back(), "bestmove"), WordAfter(pv, " pv")) << pv;
    }

    void Wait(int milliseconds) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
};

TEST_F(StrictUci, UciAnswerIsTheSettledOneWithFourOptionsMore) {
    const Strings answer = Obey("uci");
    const auto has = [&answer](const std::string& line) {
        return std::count(answer.begin(), answer.end(), line) == 1;
    };
    EXPECT_TRUE(has("option name SyzygyPath type string default <empty>"));
    EXPECT_TRUE(has("option name Move Overhead type spin default 10 min 0 max 5000"));
    EXPECT_TRUE(has("option name Clear Hash type button"));
    EXPECT_TRUE(has("option name UCI_ShowWDL type check default false"));
    CCollectingSink other;
    test::COpenEngine settled(other);
    HandleUci(settled);
    EXPECT_EQ(answer.size(), other.Take().size() + 4);
}

TEST_F(StrictUci, LastLineIsShownAlsoWhenARuleEndsTheSearch) {
    const Strings lines =
        Search({"position fen 6k1/5ppp/8/8/8/8/8/R6K w - - 0 1", "go movetime 5000"});
    ExpectAnswer(lines);
    EXPECT_EQ(lines.back(), "bestmove a1a8");
    EXPECT_EQ(WordAfter(LastPv(lines), " mate"), "1");
}

TEST_F(StrictUci, StopBeforeTheFirstIterationStillNamesAMoveWithAScore) {
    ExpectAnswer(Search({"position startpos", "go nodes 1"}));
    for (int i = 0; i < 20; ++i) {
        (void)Obey({"go infinite", "stop"});
        engine->EndSearch();
    }
    Strings lines = Obey({"go infinite", "stop"});
    engine->EndSearch();
    for (std::string& line : sink.Take()) {
        lines.push_back(std::move(line));
    }
    ExpectAnswer(lines);
}

TEST_F(StrictUci, PositionWithoutMovesIsSaid) {
    const std::string mated = std::string("position fen ") + Mated;
    EXPECT_EQ(Search({mated, "go depth 5"}),
              (Strings{"info depth 0 score mate 0", "bestmove (none)"}));
    const std::string stalemate = std::string("position fen ") + NoMovesLeft;
    EXPECT_EQ(Search({stalemate, "go movetime 1000"}),
              (Strings{"info depth 0 score cp 0", "bestmove (none)"}));
    EXPECT_FALSE(HasEnd(Obey("go infinite")));
    Wait(20);
    EXPECT_FALSE(HasEnd(sink.Take()));
    EXPECT_TRUE(StopSearch());
}

TEST_F(StrictUci, PonderingAnswersAfterTheHitAlone) {
    EXPECT_FALSE(HasEnd(Obey("go ponder wtime 100 btime 100")));
    Wait(150);
    EXPECT_FALSE(HasEnd(sink.Take())) << "the clock runs from the hit on";
    (void)Obey("ponderhit");
    engine->WaitForSearch();
    EXPECT_TRUE(HasEnd(sink.Take()));
}

TEST_F(StrictUci, PonderingWaitsBeyondItsDepthAndItsNodes) {
    for (const char* line : {"go ponder depth 2", "go ponder nodes 10", "go infinite depth 2"}) {
        (void)Obey(line);
        Wait(60);
        EXPECT_FALSE(HasEnd(sink.Take())) << line;
        EXPECT_TRUE(StopSearch()) << line;
    }
    (void)Obey("go ponder depth 2");
    (void)Obey("ponderhit");
    engine->WaitForSearch();
    EXPECT_TRUE(HasEnd(sink.Take()));
}

TEST_F(StrictUci, EndOfInputIsQuit) {
    std::istringstream input("isready\n");
    CStreamSource source(input);
    CCommandLoop loop(*engine, source);
    EXPECT_TRUE(loop.Pass());
    EXPECT_FALSE(loop.Pass());
    EXPECT_EQ(sink.Take(), Strings{"readyok"});
}

TEST_F(StrictUci, LinesThatWaitAreObeyedBeforeTheEndOfTheInputCounts) {
    engine->protocol.pendingLines.lines = {{"isready"}};
    std::istringstream input("");
    CStreamSource source(input);
    CCommandLoop(*engine, source).Run();
    EXPECT_EQ(sink.Take().back(), "readyok");
}

TEST_F(StrictUci, CastlingIsReadInEitherNotationAndWrittenByTheOption) {
    const char* const position = "position fen 4k3/8/8/8/8/8/PPP2PPP/4K2R w K - 0 1";
    for (const char* option : {"false", "true"}) {
        (void)Obey(std::string("setoption name UCI_Chess960 value ") + option);
        for (const char* castling : {"e1g1", "e1h1"}) {
            EXPECT_TRUE(Obey(std::string(position) + " moves " + castling).empty());
            EXPECT_EQ(Fen(), "4k3/8/8/8/8/8/PPP2PPP/5RK1 b - - 1 2");
        }
        for (const char* letters : {"K", "H"}) {
            const Strings lines = Search(
                {std::string("position fen 4k3/8/8/8/8/8/PPP2PPP/4K2R w ") + letters + " - 0 1",
                 "go depth 1 searchmoves e1g1"});
            EXPECT_EQ(lines.back(), option[0] == 't' ? "bestmove e1h1" : "bestmove e1g1");
        }
    }
}

TEST_F(StrictUci, GoPerftPrintsEachMoveAndTheTotal) {
    const Strings lines = Obey({"position startpos", "go perft 3"});
    ASSERT_EQ(lines.size(), 22U);
    EXPECT_EQ(lines[0], "a2a3: 380");
    EXPECT_EQ(lines[20], "");
    EXPECT_EQ(lines[21], "Nodes searched: 8902");
    EXPECT_EQ(Obey("go perft 0").back(), "Nodes searched: 1");
}

TEST_F(StrictUci, WordsThatGoDoesNotKnowAreNamedAndTheSearchEnds) {
    const Strings lines = Search({"position startpos", "go fast"});
    EXPECT_EQ(lines.front(), "info string unknown word in go: fast");
    ExpectAnswer(lines);
    ExpectAnswer(Search({"go depth 0"}));
    ExpectAnswer(Search({"go wtime -100 btime -100"}));
    ExpectAnswer(Search({"go movetime -1"}));
}

TEST_F(StrictUci, MateInTwoMovesIsFoundByGoMateTwo) {
    const Strings lines = Search({"position fen 7k/8/8/8/8/8/1R6/R6K w - - 0 1", "go mate 2"});
    ExpectAnswer(lines);
    EXPECT_EQ(WordAfter(LastPv(lines), " mate"), "2");
}

TEST_F(StrictUci, OptionsAreFittedFoundInAnyCaseAndReported) {
    EXPECT_EQ(Obey("setoption name hash value 99999"),
              Strings{"info string Hash is 16384, not 99999"});
    (void)Obey("setoption name HASH value 1");
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 1U);
    EXPECT_EQ(Obey("setoption name Threads value 0"), Strings{"info string Threads is 1, not 0"});
    EXPECT_EQ(Obey("setoption name MultiPV value many"),
              Strings{"info string no value of MultiPV: many"});
    EXPECT_EQ(engine->searchOptions.multiPv.value, "1");
    EXPECT_EQ(Obey("setoption name Ponder value maybe"),
              Strings{"info string no value of Ponder: maybe"});
    EXPECT_TRUE(Obey("setoption name ponder value FALSE").empty());
    EXPECT_FALSE(engine->outputOptions.ponder.enabled);
    EXPECT_EQ(Obey("setoption name Nonsense value 1"),
              Strings{"info string unknown option: Nonsense"});
    EXPECT_EQ(Obey("setoption"), Strings{"info string unknown option: "});
    EXPECT_TRUE(Obey("setoption name book mode value bestmove").empty());
    EXPECT_EQ(engine->book.options.bookMode.text, "BestMove");
}

TEST_F(StrictUci, SyzygyPathHasTwoNamesAndOneValue) {
    EXPECT_EQ(Obey("setoption name SyzygyPath value nowhere").back(),
              "info string Found 0 tablebases.");
    EXPECT_TRUE(Obey("setoption name Syzygy Path value nowhere").empty());
    const Strings answer = Obey("uci");
    EXPECT_EQ(std::count_if(answer.begin(), answer.end(),
                            [](const std::string& line) { return line.ends_with("nowhere"); }),
              2);
    (void)Obey("setoption name Syzygy Path value <empty>");
    EXPECT_EQ(Obey("uci"), Obey("uci"));
}

TEST_F(StrictUci, ClearHashForgetsAndCanBePressedAgain) {
    for (int i = 0; i < 2; ++i) {
        (void)Search({"position startpos", "go depth 3"});
        const std::uint64_t key = engine->Position().key;
        EXPECT_TRUE(engine->hashTable.Probe(key).has_value());
        EXPECT_TRUE(Obey("setoption name Clear Hash").empty());
        EXPECT_FALSE(engine->hashTable.Probe(key).has_value());
    }
}

TEST_F(StrictUci, ShowWdlPutsTheChancesAfterTheScore) {
    (void)Obey("setoption name UCI_ShowWDL value true");
    const std::string pv = LastPv(Search({"position startpos", "go depth 2"}));
    EXPECT_NE(pv.find(" wdl "), std::string::npos);
    EXPECT_LT(pv.find(" score "), pv.find(" wdl "));
    EXPECT_LT(pv.find(" wdl "), pv.find(" hashfull "));
    EXPECT_EQ(Search({std::string("position fen ") + Mated, "go depth 1"}).front(),
              "info depth 0 score mate 0 wdl 0 0 1000");
}

TEST_F(StrictUci, GamesGoOnBeyondTheUndoStack) {
    std::string line = "position startpos moves";
    const Strings cycle{" g1f3", " g8f6", " f3g1", " f6g8"};
    for (std::size_t i = 0; i < 1200; ++i) {
        line += cycle[i % 4];
    }
    EXPECT_TRUE(Obey(line).empty());
    EXPECT_EQ(engine->Fen(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 1200 601");
    ExpectAnswer(Search({"go depth 3"}));
    EXPECT_TRUE(Obey("position fen 4k3/8/8/8/8/8/4P3/4K3 w - - 0 100000 moves e2e4 e8e7").empty());
    EXPECT_EQ(engine->Fen(), "8/4k3/8/8/4P3/8/8/4K3 w - - 1 100001");
    ExpectAnswer(Search({"go depth 6"}));
}

TEST_F(StrictUci, RepeatedSearchShowsALineAsLongAsTheFirst) {
    const Strings first = Search({"position startpos", "go depth 8"});
    const Strings again = Search({"position startpos", "go depth 8"});
    const auto length = [](const std::string& line) {
        const std::string moves = line.substr(line.find(" pv ") + 4);
        return std::count(moves.begin(), moves.end(), ' ') + 1;
    };
    EXPECT_GE(length(LastPv(again)), std::min<std::ptrdiff_t>(length(LastPv(first)), 8));
    ExpectAnswer(again);
}

TEST_F(StrictUci, LineOfAStoppedFirstIterationIsTheFirstOfSeveral) {
    (void)Obey("setoption name MultiPV value 3");
    const Strings lines = Search({"position startpos", "go nodes 1"});
    EXPECT_EQ(WordAfter(LastPv(lines), " multipv"), "1");
    ExpectAnswer(lines);
}

TEST_F(StrictUci, TwentyLinesAreShownAndTheBestIsTheFirst) {
    (void)Obey("setoption name MultiPV value 20");
    const Strings lines = Search({"position fen 3qk3/8/8/8/8/8/8/QQ1RKR2 w - - 0 1", "go depth 3"});
    std::string bestLine;
    int numbers = 0;
    for (const std::string& line : lines) {
        if (line.starts_with("info depth 3 ") && line.find(" multipv ") != std::string::npos) {
            ++numbers;
            if (WordAfter(line, " multipv") == "1") {
                bestLine = line;
            }
        }
    }
    EXPECT_EQ(numbers, 20);
    EXPECT_EQ(WordAfter(lines.back(), "bestmove"), WordAfter(bestLine, " pv"));
}

}  // namespace
}  // namespace brenquil
