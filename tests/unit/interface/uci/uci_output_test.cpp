// The lines of a search: field order, moves, and the options that change or silence a line.

#include "../../../support/strings.h"
#include "../collecting_sink.h"
#include "../fake_base.h"
#include "../varying_figures.h"
#include "board/position_text.h"
#include "interface/uci/uci_output.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace brenquil {
namespace {

constexpr const char* CastlingFen = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";

struct CUciOutputFixture : testing::Test {
    CUciOutputFixture() {
        protocol.mode = CommandMode::Uci;
        SetRoot("");
    }

    void SetRoot(const char* fen) {
        CPositionText(*position).SetFen(fen);
        output->SetRoot(*position);
    }

    void SetOption(const char* name, const char* value) {
        ASSERT_TRUE(options.SetOption(name, value));
    }

    /// A move of the root position in the notation without Chess960.
    [[nodiscard]] Move RootMove(const char* text) const {
        return CPositionText::TextToMove(text, *position, false);
    }

    /// Plays the moves from the root and returns them as a line.
    [[nodiscard]] PvLine Line(const Strings& texts) const {
        const auto board = std::make_unique<CPosition>(*position);
        PvLine line;
        for (const std::string& text : texts) {
            const Move move = CPositionText::TextToMove(text, *board, false);
            EXPECT_TRUE(board->MakeMove(move)) << text;
            line.Append(move);
        }
        return line;
    }

    /// The only line printed, without the figures that vary.
    [[nodiscard]] std::string OneLine() {
        const Strings lines = sink.Take();
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? "" : WithoutVaryingFigures(lines.front());
    }

    CCollectingSink sink;
    CProtocol protocol{sink};
    CEvaluationOptions evaluationOptions;
    COutputOptions options{evaluationOptions};
    CStrictOptions strictOptions;
    CBaseList bases;
    CFakeBase base;
    std::unique_ptr<CUciOutput> output =
        std::make_unique<CUciOutput>(protocol, options, strictOptions, bases);
    std::unique_ptr<CPosition> position = std::make_unique<CPosition>();
};

using UciOutput = CUciOutputFixture;

TEST_F(UciOutput, SearchResultHasAllFieldsInOrder) {
    const PvLine line = Line({"e2e4", "e7e5"});
    output->PrintPv({5, 9, 34, -32000, 32000, &line, 0}, {1234, 7, 3});
    EXPECT_EQ(OneLine(), "info depth 5 seldepth 9 nodes 1234 score cp 34 hashfull 7 "
                         "tbhits 3 pv e2e4 e7e5");
}

TEST_F(UciOutput, MultipvFieldStandsBehindTbhitsWhenTheIndexIsAbove0) {
    const PvLine line = Line({"e2e4"});
    output->PrintPv({1, 1, 31999, -32000, 32000, &line, 2}, {1, 0, 0});
    EXPECT_EQ(OneLine(), "info depth 1 seldepth 1 nodes 1 score mate 1 hashfull 0 "
                         "tbhits 0 multipv 2 pv e2e4");
}

TEST_F(UciOutput, BoundWordStandsBehindTheScore) {
    const PvLine line = Line({"e2e4"});
    output->PrintPv({1, 1, 51, -50, 50, &line, 0}, {1, 0, 0});
    EXPECT_EQ(OneLine(), "info depth 1 seldepth 1 nodes 1 score cp 51 lowerbound "
                         "hashfull 0 tbhits 0 pv e2e4");
}

TEST_F(UciOutput, TimeNpsAndCpuloadStandAtTheirPlaces) {
    const PvLine line = Line({"e2e4"});
    const auto follow = [this](const Strings& words) {
        const std::string text = sink.Take().front();
        std::size_t place = 0;
        for (const std::string& word : words) {
            place = text.find(" " + word + " ", place);
            EXPECT_NE(place, std::string::npos) << word << " in " << text;
        }
    };
    output->PrintPv({1, 1, 0, 0, 0, &line, 1}, {1, 0, 0});
    follow({"depth", "seldepth", "time", "nodes", "nps", "score", "hashfull", "tbhits", "multipv",
            "pv"});
    output->PrintStats({1, 0, 0});
    follow({"time", "nodes", "nps", "cpuload", "hashfull", "tbhits"});
}

TEST_F(UciOutput, TimeIsThatOfTheStatisticsAndNpsIsNodesByIt) {
    const PvLine line = Line({"e2e4"});
    output->PrintPv({1, 1, 34, -32000, 32000, &line, 0}, {1234, 7, 3, 250, 250});
    EXPECT_EQ(sink.Take(), Strings{"info depth 1 seldepth 1 time 250 nodes 1234 nps 4936 score cp "
                                   "34 hashfull 7 tbhits 3 pv e2e4"});
    output->PrintStats({1234, 7, 3, 0xFFFFFFFF, 1});
    EXPECT_EQ(sink.Take(), Strings{"info time -1 nodes 1234 nps 0 cpuload 0 hashfull 7 tbhits 3"});
    output->PrintStats({3000, 7, 3, 1000, 994});
    EXPECT_EQ(sink.Take(),
              Strings{"info time 1000 nodes 3000 nps 3000 cpuload 994 hashfull 7 tbhits 3"});
}

TEST_F(UciOutput, StatisticsLine) {
    output->PrintStats({18446744073709551615U, 1000, 12});
    EXPECT_EQ(OneLine(), "info nodes 18446744073709551615 hashfull 1000 "
                         "tbhits 12");
}

TEST_F(UciOutput, CurrentMove) {
    output->PrintCurrMove(RootMove("g1f3"), 7);
    EXPECT_EQ(OneLine(), "info currmove g1f3 currmovenumber 7");
}

TEST_F(UciOutput, CurrentLineNeedsItsOptionAndAMove) {
    output->PrintCurrentLine(Line({"e2e4", "e7e5"}));
    EXPECT_TRUE(sink.Take().empty());
    SetOption("UCI_ShowCurrLine", "true");
    output->PrintCurrentLine(PvLine{});
    EXPECT_TRUE(sink.Take().empty());
    output->PrintCurrentLine(Line({"e2e4", "e7e5"}));
    EXPECT_EQ(OneLine(), "info currline e2e4 e7e5");
}

TEST_F(UciOutput, RefutationNeedsItsOption) {
    PvLine reply;
    reply.Append(Line({"e2e4", "e7e5"})[1]);
    output->PrintRefutation(RootMove("e2e4"), reply);
    EXPECT_TRUE(sink.Take().empty());
    SetOption("UCI_ShowRefutations", "true");
    output->PrintRefutation(RootMove("e2e4"), reply);
    EXPECT_EQ(OneLine(), "info refutation e2e4 e7e5");
}

TEST_F(UciOutput, EmptyVariationIsTheEmptyText) {
    EXPECT_EQ(output->PvText(PvLine{}), "");
}

TEST_F(UciOutput, BestMoveNamesThePonderMove) {
    const PvLine line = Line({"e2e4", "e7e5"});
    output->PrintBestMove(line[0], line[1]);
    EXPECT_EQ(OneLine(), "bestmove e2e4 ponder e7e5");
}

TEST_F(UciOutput, BestMoveWithPonderOffOrWithoutPonderMoveIsPlain) {
    const PvLine line = Line({"e2e4", "e7e5"});
    output->PrintBestMove(line[0], NoMove);
    EXPECT_EQ(OneLine(), "bestmove e2e4");
    SetOption("Ponder", "false");
    output->PrintBestMove(line[0], line[1]);
    EXPECT_EQ(OneLine(), "bestmove e2e4");
}

TEST_F(UciOutput, BestMoveInChess960NamesThePonderMoveEvenWithPonderOff) {
    SetOption("Ponder", "false");
    SetOption("UCI_Chess960", "true");
    const PvLine line = Line({"e2e4", "e7e5"});
    output->PrintBestMove(line[0], line[1]);
    EXPECT_EQ(OneLine(), "bestmove e2e4 ponder e7e5");
    protocol.fileLetterCastling = true;
    output->PrintBestMove(line[0], line[1]);
    EXPECT_EQ(OneLine(), "bestmove e2e4");
    protocol.fileLetterCastling = false;
    protocol.mode = CommandMode::Console;
    output->PrintBestMove(line[0], line[1]);
    EXPECT_EQ(OneLine(), "bestmove e2e4");
}

TEST_F(UciOutput, BestMoveOfZeroPrintsNothing) {
    output->PrintBestMove(NoMove, NoMove);
    EXPECT_TRUE(sink.Take().empty());
}

TEST_F(UciOutput, NoBestMoveIsAMessage) {
    output->PrintNoBestMove();
    EXPECT_EQ(OneLine(), "info string No best move!");
    protocol.mode = CommandMode::Console;
    output->PrintNoBestMove();
    EXPECT_EQ(OneLine(), "No best move!");
}

TEST_F(UciOutput, CastlingIsWrittenInTheNotationOfTheMoment) {
    SetRoot(CastlingFen);
    const PvLine line = Line({"e1g1", "e8c8"});
    EXPECT_EQ(output->PvText(line), "e1g1 e8c8");
    SetOption("UCI_Chess960", "true");
    EXPECT_EQ(output->PvText(line), "O-O O-O-O");
    protocol.fileLetterCastling = true;
    EXPECT_EQ(output->PvText(line), "e1h1 e8a8");
    protocol.fileLetterCastling = false;
    protocol.mode = CommandMode::Console;
    EXPECT_EQ(output->PvText(line), "e1h1 e8a8");
}

TEST_F(UciOutput, DatabaseMovesFollowTheBestMove) {
    bases.Add(base);
    SetOption("Show Database Moves", "true");
    const PvLine line = Line({"e2e4", "e7e5"});
    base.Enter(line[1], 5, "60%");
    base.Enter(Line({"e2e4", "c7c5"})[1], 9, "40%");
    output->PrintBestMove(line[0], NoMove);
    EXPECT_EQ(sink.Take(), (Strings{"bestmove e2e4",
                                    "info string Database moves:   1. c7c5 40%   2. e7e5 60%"}));
    // The root is as it was.
    output->PrintBestMove(line[0], NoMove);
    EXPECT_EQ(sink.Take().size(), 2U);
}

TEST_F(UciOutput, WithoutKnownMovesThereIsNoDatabaseLine) {
    bases.Add(base);
    SetOption("Show Database Moves", "true");
    output->PrintBestMove(RootMove("e2e4"), NoMove);
    EXPECT_EQ(OneLine(), "bestmove e2e4");
}

TEST_F(UciOutput, InfoLinesAreMirroredToTheLog) {
    Strings log;
    protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    protocol.logging = true;
    output->PrintCurrMove(RootMove("g1f3"), 1);
    EXPECT_EQ(log, Strings{"< info currmove g1f3 currmovenumber 1"});
}

}  // namespace
}  // namespace brenquil
