// The parsing of `go` lines.

#include "board/position_text.h"
#include "interface/uci/go_parser.h"

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>

namespace brenquil {
namespace {

/// Parses a line in the start position, or in the one of the FEN.
SearchLimits Parse(const std::string& line, const std::string& fen = "", bool chess960 = false) {
    const auto position = std::make_unique<CPosition>();
    CPositionText(*position).SetFen(fen);
    return ParseGo(line, *position, chess960);
}

std::string MoveAt(const SearchLimits& limits, std::int32_t index) {
    return CPositionText::MoveToText(limits.searchmoves[index], CPosition(),
                                     CastlingNotation::KingTarget);
}

TEST(ParseGo, WithoutArgumentsEveryFieldIsUnset) {
    const SearchLimits limits = Parse("go");
    EXPECT_FALSE(limits.ponder);
    EXPECT_FALSE(limits.infinite);
    EXPECT_EQ(limits.wtime, -1);
    EXPECT_EQ(limits.btime, -1);
    EXPECT_EQ(limits.winc, 0);
    EXPECT_EQ(limits.binc, 0);
    EXPECT_EQ(limits.movestogo, 40);
    EXPECT_EQ(limits.depth, 0);
    EXPECT_EQ(limits.nodes, 0);
    EXPECT_EQ(limits.mate, 0);
    EXPECT_EQ(limits.movetime, -1);
    EXPECT_EQ(limits.searchmoves.count, 0);
}

TEST(ParseGo, ReadsEveryNumericToken) {
    const SearchLimits limits =
        Parse("go wtime 1 btime 2 winc 3 binc 4 movestogo 5 depth 6 nodes 7 "
              "mate 8 movetime 9");
    EXPECT_EQ(limits.wtime, 1);
    EXPECT_EQ(limits.btime, 2);
    EXPECT_EQ(limits.winc, 3);
    EXPECT_EQ(limits.binc, 4);
    EXPECT_EQ(limits.movestogo, 5);
    EXPECT_EQ(limits.depth, 6);
    EXPECT_EQ(limits.nodes, 7);
    EXPECT_EQ(limits.mate, 8);
    EXPECT_EQ(limits.movetime, 9);
}

TEST(ParseGo, TokensMatchInAnyCaseAndAnyOrder) {
    const SearchLimits limits = Parse("GO Depth 5 INFINITE WTime 30 ponder");
    EXPECT_EQ(limits.depth, 5);
    EXPECT_EQ(limits.wtime, 30);
    EXPECT_TRUE(limits.infinite);
    EXPECT_TRUE(limits.ponder);
}

TEST(ParseGo, PonderhitIsNotPonder) {
    EXPECT_FALSE(Parse("go ponderhit").ponder);
}

TEST(ParseGo, NonNumericValueKeepsTheDefault) {
    const SearchLimits limits = Parse("go wtime 1000 btime abc movestogo x");
    EXPECT_EQ(limits.wtime, 1000);
    EXPECT_EQ(limits.btime, -1);
    EXPECT_EQ(limits.movestogo, 40);
}

TEST(ParseGo, MovestogoZeroIsZeroAndNotForty) {
    EXPECT_EQ(Parse("go movestogo 0").movestogo, 0);
}

TEST(ParseGo, TokenAtTheVeryEndKeepsTheDefault) {
    EXPECT_EQ(Parse("go movetime").movetime, -1);
    EXPECT_EQ(Parse("go wtime 5 depth ").depth, 0);
}

TEST(ParseGo, NegativeAndHugeNumbers) {
    EXPECT_EQ(Parse("go wtime -500").wtime, -500);
    EXPECT_EQ(Parse("go nodes 99999999999").nodes, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(Parse("go depth -99999999999").depth, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Parse("go depth .5").depth, 0);
    EXPECT_EQ(Parse("go depth 5.9").depth, 5);
}

TEST(ParseGo, TakesTheValueBehindTheFirstPlaceOfTheLettersOfAToken) {
    // The word "depth" is there, but its letters stand first in "xdepth".
    EXPECT_EQ(Parse("go xdepth 3 depth 5").depth, 3);
    EXPECT_EQ(Parse("go depthx 3 depth 5").depth, 0);
    EXPECT_EQ(Parse("go xdepth 3").depth, 0);
}

TEST(ParseGo, RepeatedTokenCountsOnce) {
    EXPECT_EQ(Parse("go depth 3 depth 5").depth, 3);
}

TEST(ParseGo, TabIsNoBlank) {
    EXPECT_EQ(Parse("go\tdepth 5").depth, 0);
}

TEST(ParseGo, SearchmovesInOrder) {
    const SearchLimits limits = Parse("go depth 2 searchmoves e2e4 g1f3");
    EXPECT_EQ(limits.depth, 2);
    ASSERT_EQ(limits.searchmoves.count, 2);
    EXPECT_EQ(MoveAt(limits, 0), "e2e4");
    EXPECT_EQ(MoveAt(limits, 1), "g1f3");
}

TEST(ParseGo, UnparsableSearchmovesAreStoredAsZero) {
    const SearchLimits limits = Parse("go searchmoves e2e5 e2e4 O-O");
    ASSERT_EQ(limits.searchmoves.count, 3);
    EXPECT_TRUE(limits.searchmoves[0].IsNone());
    EXPECT_EQ(MoveAt(limits, 1), "e2e4");
    EXPECT_TRUE(limits.searchmoves[2].IsNone());
}

TEST(ParseGo, TokensBehindSearchmovesCountAndAreStoredAsZeros) {
    const SearchLimits limits = Parse("go searchmoves e2e4 depth 4");
    EXPECT_EQ(limits.depth, 4);
    ASSERT_EQ(limits.searchmoves.count, 3);
    EXPECT_FALSE(limits.searchmoves[0].IsNone());
    EXPECT_TRUE(limits.searchmoves[1].IsNone());
    EXPECT_TRUE(limits.searchmoves[2].IsNone());
}

TEST(ParseGo, SearchmovesWithoutMovesIsEmpty) {
    EXPECT_EQ(Parse("go searchmoves").searchmoves.count, 0);
}

TEST(ParseGo, SearchmovesBeyondTheCapacityAreDropped) {
    std::string line = "go searchmoves";
    for (int i = 0; i < 500; ++i) {
        line += i == 219 ? " e2e4" : " d2d4";
    }
    const SearchLimits limits = Parse(line);
    ASSERT_EQ(limits.searchmoves.count, MoveList::Capacity);
    EXPECT_EQ(MoveAt(limits, 219), "e2e4");
}

TEST(ParseGo, SearchmovesReadCastlingByTheChess960Option) {
    const std::string fen = "4k3/8/8/8/8/8/8/4K2R w K - 0 1";
    const SearchLimits normal = Parse("go searchmoves e1g1 e1h1 O-O", fen);
    ASSERT_EQ(normal.searchmoves.count, 3);
    EXPECT_EQ(normal.searchmoves[0].Kind(), MoveKind::Castling);
    EXPECT_TRUE(normal.searchmoves[1].IsNone());
    EXPECT_TRUE(normal.searchmoves[2].IsNone());

    const SearchLimits chess960 = Parse("go searchmoves e1g1 e1h1 O-O", fen, true);
    ASSERT_EQ(chess960.searchmoves.count, 3);
    EXPECT_TRUE(chess960.searchmoves[0].IsNone());
    EXPECT_EQ(chess960.searchmoves[1].Kind(), MoveKind::Castling);
    EXPECT_EQ(chess960.searchmoves[2].Kind(), MoveKind::Castling);
}

TEST(ParseGo, LinesOfAnyBytesAreSurvived) {
    const SearchLimits limits = Parse(std::string("go depth 5\0 nodes 7", 19));
    EXPECT_EQ(limits.depth, 0);
    EXPECT_EQ(limits.nodes, 7);
}

}  // namespace
}  // namespace brenquil
