// The strict reading of `go`.

#include "../../../support/strings.h"
#include "board/position.h"
#include "board/position_text.h"
#include "interface/uci/strict_go.h"

#include <gtest/gtest.h>
#include <string>

namespace brenquil {
namespace {

StrictGo ParseLine(std::string_view line, std::int32_t overhead = 0) {
    static const CPosition position;
    return ParseStrictGo(
        line,
        [](std::string_view word) { return CPositionText::TextToMove(word, position, false); },
        overhead);
}

TEST(StrictGo, EachNumberReachesItsField) {
    const StrictGo go = ParseLine("go wtime 1 btime 2 winc 3 binc 4 movestogo 5 depth 6 nodes 7 "
                                  "movetime 8");
    EXPECT_EQ(go.limits.wtime, 1);
    EXPECT_EQ(go.limits.btime, 2);
    EXPECT_EQ(go.limits.winc, 3);
    EXPECT_EQ(go.limits.binc, 4);
    EXPECT_EQ(go.limits.movestogo, 5);
    EXPECT_EQ(go.limits.depth, 6);
    EXPECT_EQ(go.limits.nodes, 7);
    EXPECT_EQ(go.limits.movetime, 8);
    EXPECT_TRUE(go.remarks.empty());
    EXPECT_FALSE(go.perftDepth);
}

TEST(StrictGo, WordsCountInAnyCaseAndOrder) {
    const StrictGo go = ParseLine("GO  Depth 6 PONDER");
    EXPECT_EQ(go.limits.depth, 6);
    EXPECT_TRUE(go.limits.ponder);
    EXPECT_TRUE(ParseLine("go infinite").limits.infinite);
}

TEST(StrictGo, MateCountsMoves) {
    EXPECT_EQ(ParseLine("go mate 3").limits.mate, 6);
    EXPECT_EQ(ParseLine("go mate 2000000000").limits.mate, 2000);
    EXPECT_EQ(ParseLine("go mate -3").limits.mate, 2);
    EXPECT_EQ(ParseLine("go").limits.mate, 0);
}

TEST(StrictGo, DepthZeroIsDepthOne) {
    EXPECT_EQ(ParseLine("go depth 0").limits.depth, 1);
    EXPECT_EQ(ParseLine("go depth -5").limits.depth, 1);
}

TEST(StrictGo, UsedUpClocksAreZeroAndOneClockCountsForBoth) {
    const StrictGo go = ParseLine("go wtime -50 btime 300 winc -1");
    EXPECT_EQ(go.limits.wtime, 0);
    EXPECT_EQ(go.limits.btime, 300);
    EXPECT_EQ(go.limits.winc, 0);
    EXPECT_EQ(ParseLine("go btime 100").limits.wtime, 100);
    EXPECT_EQ(ParseLine("go wtime 100").limits.btime, 100);
    EXPECT_EQ(ParseLine("go depth 3").limits.wtime, ClockNotGiven);
    EXPECT_EQ(ParseLine("go movetime -1").limits.movetime, 0);
}

TEST(StrictGo, OverheadComesOffEveryClockAndStopsAtZero) {
    const StrictGo go = ParseLine("go wtime 1000 btime 5 winc 30", 10);
    EXPECT_EQ(go.limits.wtime, 990);
    EXPECT_EQ(go.limits.btime, 0);
    EXPECT_EQ(go.limits.winc, 30);
    EXPECT_EQ(go.limits.movetime, ClockNotGiven);
    EXPECT_EQ(ParseLine("go movetime 100", 10).limits.movetime, 90);
}

TEST(StrictGo, WhatIsNotUnderstoodIsSkippedAndNamed) {
    const StrictGo go = ParseLine("go fast depth 3 wtime soon");
    EXPECT_EQ(go.limits.depth, 3);
    EXPECT_EQ(go.limits.wtime, ClockNotGiven);
    EXPECT_EQ(go.remarks, (Strings{"unknown word in go: fast", "no number in go after: wtime",
                                   "unknown word in go: soon"}));
}

TEST(StrictGo, ALineWithoutALimitThatIsUnderstoodIsNoEndlessSearch) {
    for (const char* line : {"go fast", "go depth", "go depth x", "go movestogo 3", "go perft"}) {
        EXPECT_EQ(ParseLine(line).limits.depth, 1) << line;
    }
    EXPECT_EQ(ParseLine("go").limits.depth, 0);
    EXPECT_EQ(ParseLine("go ponder").limits.depth, 0);
}

TEST(StrictGo, SearchMovesEndAtTheNextWordThatIsKnown) {
    const StrictGo go = ParseLine("go searchmoves e2e4 e2e5 d2d4 depth 4");
    EXPECT_EQ(go.limits.searchmoves.count, 2);
    EXPECT_EQ(go.limits.depth, 4);
    EXPECT_EQ(go.remarks, Strings{"no legal move in go: e2e5"});
}

TEST(StrictGo, MoreSearchMovesThanAListHoldsAreSurvived) {
    std::string line = "go searchmoves";
    for (int i = 0; i < 1000; ++i) {
        line += " e2e4";
    }
    EXPECT_EQ(ParseLine(line).limits.searchmoves.count, MoveList::Capacity);
}

TEST(StrictGo, PerftIsACount) {
    EXPECT_EQ(ParseLine("go perft 3").perftDepth, 3);
    EXPECT_EQ(ParseLine("go perft 0").perftDepth, 0);
}

}  // namespace
}  // namespace brenquil
