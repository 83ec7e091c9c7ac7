// Time, nodes and the status lines, under a clock that stands still until a test moves it.

#include "fake_clock.h"
#include "reference_search.h"
#include "search_setup.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace brenquil {
namespace {

constexpr std::uint32_t Never = std::numeric_limits<std::uint32_t>::max();

class Limits : public testing::Test {
protected:
    /// Whether a search ends after the iteration at whose beginning that much time has passed. The
    /// clock is looked at between iterations only: the tree is far too small for more.
    bool EndsBetweenIterations(SearchLimits limits, std::uint32_t elapsed, bool isWhite = true) {
        const CStoppedClock clock;
        limits.depth = 4;
        setup.hash.Clear();
        setup.Set(isWhite ? StartFen : "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1");
        CRecordingReceiver receiver;
        CFakeWorkers workers;
        receiver.onPv = [elapsed](const SearchRecord::Pv& pv) {
            if (pv.report.depth == 1) {
                CStoppedClock::Advance(elapsed);
            }
        };
        setup.Think(limits, receiver, workers);
        EXPECT_EQ(receiver.record.ends, 1);
        EXPECT_FALSE(receiver.record.best.IsNone());
        const std::size_t lines = receiver.record.pvs.size();
        EXPECT_TRUE(lines == 1 || lines == 4) << lines;
        return lines == 1;
    }

    /// Nodes of a search of six iterations in whose sixth that much time passes at once.
    std::uint64_t NodesWhenTimePasses(SearchLimits limits, std::uint32_t elapsed, bool isWhite) {
        const CStoppedClock clock;
        setup.hash.Clear();
        setup.Set(isWhite ? StartFen : "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1");
        limits.depth = 7;
        CRecordingReceiver receiver;
        CFakeWorkers workers;
        receiver.onPv = [elapsed](const SearchRecord::Pv& pv) {
            if (pv.report.depth == 6) {
                CStoppedClock::Advance(elapsed);
            }
        };
        setup.Think(limits, receiver, workers);
        EXPECT_EQ(receiver.record.ends, 1);
        return setup.search->Nodes();
    }

    /// Whether time ends a search in the middle of an iteration.
    bool EndsWithinAnIteration(const SearchLimits& limits, std::uint32_t elapsed,
                               bool isWhite = true) {
        const std::uint64_t all = NodesWhenTimePasses({}, 0, isWhite);
        return NodesWhenTimePasses(limits, elapsed, isWhite) < all;
    }

    void ExpectBudget(const SearchLimits& limits, std::uint32_t soft, std::uint32_t hard,
                      bool isWhite = true) {
        if (soft != Never) {
            EXPECT_FALSE(EndsBetweenIterations(limits, soft, isWhite)) << soft;
            EXPECT_TRUE(EndsBetweenIterations(limits, soft + 1, isWhite)) << soft;
        } else {
            EXPECT_FALSE(EndsBetweenIterations(limits, 4000000000, isWhite));
        }
        if (hard != Never) {
            EXPECT_FALSE(EndsWithinAnIteration(limits, hard, isWhite)) << hard;
            EXPECT_TRUE(EndsWithinAnIteration(limits, hard + 1, isWhite)) << hard;
        } else {
            EXPECT_FALSE(EndsWithinAnIteration(limits, 4000000000, isWhite));
        }
    }

    /// Looks at the clock during a search without time limits, less those when the root search is
    /// made and when it begins, and those of the reports.
    static std::uint64_t LooksInTheTree(const SearchRecord& record) {
        return CStoppedClock::Looks() - 2 - record.pvs.size() - record.statistics.size();
    }

    static SearchLimits Clock(std::int32_t wtime, std::int32_t winc = 0,
                              std::int32_t movestogo = 40) {
        SearchLimits limits;
        limits.wtime = wtime;
        limits.winc = winc;
        limits.movestogo = movestogo;
        return limits;
    }

    SearchSetup setup;
};

// Time allocation

TEST_F(Limits, ClockOf5000LeavesTheIncrementAloneAndOf5001SpendsIt) {
    ExpectBudget(Clock(5000, 1000), 100, 300);
    ExpectBudget(Clock(5001, 1000), 1100, 2500);
}

TEST_F(Limits, FiftiethPartWithoutMovestogo) {
    ExpectBudget(Clock(60000), 1200, 3600);
    ExpectBudget(Clock(99), 1, 3);
    ExpectBudget(Clock(49), 0, 0);
    ExpectBudget(Clock(0), 0, 0);
}

TEST_F(Limits, MovestogoCountsTenMoreMoves) {
    ExpectBudget(Clock(60000, 0, 20), 2000, 6000);
    ExpectBudget(Clock(1100, 0, 1), 100, 300);
    ExpectBudget(Clock(1000, 0, 0), 100, 300);
    ExpectBudget(Clock(1000, 0, -5), 200, 500);  // half of the clock is less than three times
    ExpectBudget(Clock(1000, 0, -9), 1000, 500);
}

TEST_F(Limits, MovestogoOfMinusTenIsSurvived) {
    ExpectBudget(Clock(1000, 0, -10), 1000, 500);
    ExpectBudget(Clock(1000, 0, -11), 0, 0);  // a very large number of moves
}

TEST_F(Limits, MovetimeOverwritesTheClock) {
    SearchLimits limits = Clock(100000);
    limits.movetime = 100;
    ExpectBudget(limits, 100, 100);
    limits = {};
    limits.movetime = 1;
    ExpectBudget(limits, 1, 1);
    limits.movetime = 0;
    ExpectBudget(limits, 0, 0);
}

TEST_F(Limits, EachSideHasItsOwnClockAndIncrement) {
    SearchLimits limits;
    limits.wtime = 50000;
    limits.winc = 10;
    limits.btime = 10000;
    limits.binc = 300;
    ExpectBudget(limits, 1010, 3030, true);
    ExpectBudget(limits, 500, 1500, false);
}

TEST_F(Limits, ClockOfTheOtherSideAloneGivesNoLimit) {
    SearchLimits black;
    black.btime = 1000;
    ExpectBudget(black, Never, Never, true);
    SearchLimits white;
    white.wtime = 1000;
    ExpectBudget(white, Never, Never, false);
    ExpectBudget(SearchLimits{}, Never, Never);
}

TEST_F(Limits, NegativeClocksAreVeryLongTimes) {
    ExpectBudget(Clock(-2), 85899345, 257698035);
    ExpectBudget(Clock(-2000000000, 0, 10), 114748364, 344245092);
    SearchLimits limits;
    limits.movetime = -100;
    ExpectBudget(limits, 0U - 100, 0U - 100);
}

TEST_F(Limits, NegativeIncrementIsTakenOff) {
    ExpectBudget(Clock(10000, -50), 150, 450);
    ExpectBudget(Clock(5000, -50), 100, 300);
}

TEST_F(Limits, TicksMayWrap) {
    const CStoppedClock clock(0xFFFFFFFF - 40);
    setup.Set(StartFen);
    SearchLimits limits;
    limits.movetime = 100;
    limits.depth = 5;
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    receiver.onPv = [](const SearchRecord::Pv&) { CStoppedClock::Advance(34); };
    setup.Think(limits, receiver, workers);
    EXPECT_EQ(receiver.record.pvs.size(), 3U);  // 102 ms have passed at the end of the fourth
}

// Looks at the clock

TEST_F(Limits, ClockIsLookedAtOnceIn8191Checks) {
    SearchLimits limits;
    for (const std::int32_t nodes : {7000, 9000, 40000, 100000}) {
        CReferenceSearch reference(setup.options, setup.evaluationOptions, setup.hash.EntryCount());
        limits.nodes = nodes;
        setup.hash.Clear();
        (void)reference.Think(limits);
        const CStoppedClock clock;
        const SearchRecord record = setup.Think(limits);
        EXPECT_EQ(LooksInTheTree(record), reference.checks / 8191) << nodes;
    }
}

TEST_F(Limits, EveryLookIsAsFarFromTheLastAsTheFirstFromTheBeginning) {
    // The smallest node limit with which the tenth look is reached.
    const auto checks = [this](std::int32_t nodes) {
        CReferenceSearch reference(setup.options, setup.evaluationOptions, setup.hash.EntryCount());
        SearchLimits limits;
        limits.nodes = nodes;
        (void)reference.Think(limits);
        return reference.checks;
    };
    std::int32_t enough = 10 * 8191;
    for (std::int32_t step = 1 << 15; step > 0; step /= 2) {
        if (checks(enough - step) >= 10 * 8191) {
            enough -= step;
        }
    }
    for (const std::int32_t nodes : {enough, enough - 10}) {
        SearchLimits limits;
        limits.nodes = nodes;
        setup.hash.Clear();
        const CStoppedClock clock;
        const SearchRecord record = setup.Think(limits);
        EXPECT_EQ(LooksInTheTree(record), nodes == enough ? 10U : 9U);
    }
}

TEST_F(Limits, ChecksUpToTheFirstLookCountAnewInEachSearch) {
    SearchLimits limits;
    limits.nodes = 3000;
    for (int search = 0; search < 5; ++search) {
        const CStoppedClock clock;
        setup.hash.Clear();
        const SearchRecord record = setup.Think(limits);
        EXPECT_EQ(LooksInTheTree(record), 0U) << search;
    }
}

TEST_F(Limits, HardLimitStopsAtTheNextLook) {
    CReferenceSearch reference(setup.options, setup.evaluationOptions, setup.hash.EntryCount());
    const CStoppedClock clock;
    setup.Set(StartFen);
    SearchLimits limits;
    limits.movetime = 10;
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    // The time is over from the beginning, so the soft limit ends it after the first iteration.
    workers.onStart = [] { CStoppedClock::Advance(11); };
    setup.Think(limits, receiver, workers);
    EXPECT_TRUE(receiver.record.pvs.empty());
    EXPECT_FALSE(receiver.record.best.IsNone());
    SearchLimits one;
    one.depth = 1;
    (void)reference.Think(one);
    EXPECT_EQ(setup.search->Nodes(), reference.nodes);
}

TEST_F(Limits, NoMoveWhenTheTimeEndsBeforeTheFirstIteration) {
    const CStoppedClock clock;
    setup.Set("8/PPPPPPPP/8/2k5/5K2/8/pppppppp/8 b - - 0 1");  // thousands of nodes at depth 1
    SearchLimits limits;
    limits.wtime = 0;
    limits.btime = 0;
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    workers.onStart = [] { CStoppedClock::Advance(1); };
    setup.Think(limits, receiver, workers);
    EXPECT_EQ(receiver.record.texts.back(), "no best move");
}

// Unbounded searches

TEST_F(Limits, InfiniteKnowsNoTimeAndHoldsItsMoveBackUntilStop) {
    const CStoppedClock clock;
    setup.Set(StartFen);
    SearchLimits limits;
    limits.infinite = true;
    limits.movetime = 10;
    limits.depth = 2;
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    receiver.onPv = [](const SearchRecord::Pv&) { CStoppedClock::Advance(1000); };
    int ticks = 0;
    receiver.onStats = [&] {
        EXPECT_EQ(receiver.record.ends, 0);
        CStoppedClock::Advance(1000);
        if (++ticks == 3) {
            setup.search->RequestStop();
        }
    };
    setup.Think(limits, receiver, workers);
    EXPECT_EQ(receiver.record.pvs.size(), 2U);
    EXPECT_EQ(ticks, 4);  // the last is the one at the end
    EXPECT_FALSE(receiver.record.best.IsNone());
}

TEST_F(Limits, PonderHoldsItsMoveBackUntilTheHardLimit) {
    for (const bool hasHit : {false, true}) {
        const CStoppedClock clock;
        setup.hash.Clear();
        setup.Set(StartFen);
        SearchLimits limits = Clock(3000);  // 60 and 180
        limits.ponder = true;
        limits.depth = 2;
        CRecordingReceiver receiver;
        CFakeWorkers workers;
        receiver.onPv = [this, hasHit](const SearchRecord::Pv&) {
            CStoppedClock::Advance(91);  // the soft limit passes: it does not count
            if (hasHit) {
                setup.root->ClearPause();
            }
        };
        setup.Think(limits, receiver, workers);
        EXPECT_EQ(receiver.record.pvs.size(), 2U);
        EXPECT_FALSE(receiver.record.best.IsNone());
    }
}

TEST_F(Limits, UnboundedSearchGoesOnBeyondAMate) {
    setup.Set("6k1/5ppp/8/8/8/8/R7/6K1 w - - 0 1");
    const CStoppedClock clock;
    SearchLimits limits;
    limits.depth = 4;
    limits.movetime = 500;
    EXPECT_EQ(setup.Think(limits).pvs.size(), 0U);  // mate in one, so over after one iteration
    limits.ponder = true;
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    receiver.onPv = [](const SearchRecord::Pv& pv) {
        CStoppedClock::Advance(pv.report.depth == 4 ? 501 : 0);
    };
    setup.Think(limits, receiver, workers);
    EXPECT_EQ(receiver.record.pvs.size(), 4U);
}

// Mates

TEST_F(Limits, WinningMateNeedsAnIterationAsDeepAsItsDistance) {
    setup.Set("7k/8/5K2/8/8/8/8/6R1 w - - 0 1");  // mate in two: Kf7 and Rh1
    const SearchRecord record = setup.ThinkToDepth(20);
    EXPECT_EQ(setup.hash.Probe(setup.position.key)->score, 32000 - 3);
    EXPECT_EQ(setup.hash.Probe(setup.position.key)->depth, 3);
    EXPECT_LE(record.pvs.size(), 2U);
}

TEST_F(Limits, BeingMatedEndsAtOnce) {
    setup.Set("7k/5K2/8/8/8/8/8/1R6 b - - 0 1");  // Kh7 and Rh1
    const SearchRecord record = setup.ThinkToDepth(20);
    EXPECT_EQ(MoveName(record.best), "h8h7");
    EXPECT_EQ(setup.hash.Probe(setup.position.key)->score, -32000 + 2);
    for (const SearchRecord::Pv& pv : record.pvs) {
        EXPECT_GT(pv.report.score, -31746);
    }
}

TEST_F(Limits, MateBoundsAreTheBandOfTheScores) {
    setup.Set(StartFen);

    struct Case {
        Score answer;  // of the reply, so for the other side
        std::size_t lines;
    };

    for (const Case& test :
         {Case{-31745, 9}, Case{-31746, 9}, Case{-31995, 4}, Case{-31991, 8}, Case{-31990, 9},
          Case{31745, 9}, Case{31746, 0}, Case{31999, 0}, Case{32000, 9}}) {
        SearchSetup other;
        CScriptedBase base;
        base.answer = [&test](Score& score, const CPosition&, int, int) {
            score = test.answer;
            return true;
        };
        other.bases.Add(base);
        EXPECT_EQ(other.ThinkToDepth(9).pvs.size(), test.lines) << test.answer;
    }
}

// Nodes

/// A stopped null-window search looks like one that has beaten alpha, so on the way up some moves
/// are searched again, a node each.
constexpr std::uint64_t Overshoot = 5;

TEST_F(Limits, NodeLimitCountsTheWorkersToo) {
    setup.Set(StartFen);
    SearchLimits limits;
    limits.nodes = 1600;
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    workers.nodes = 500;
    setup.Think(limits, receiver, workers);
    EXPECT_GE(setup.search->Nodes(), 1600U);
    EXPECT_LE(setup.search->Nodes(), 1600U + Overshoot);
    EXPECT_EQ(receiver.record.statistics.back().nodes, setup.search->Nodes());
    for (const SearchRecord::Pv& pv : receiver.record.pvs) {
        EXPECT_GT(pv.statistics.nodes, 500U);
    }
}

TEST_F(Limits, NodeLimitTakesTheMoveOfTheLastFinishedIteration) {
    setup.Set(StartFen);
    SearchLimits limits;
    limits.nodes = 2000;
    const SearchRecord record = setup.Think(limits);
    EXPECT_GE(setup.search->Nodes(), 2000U);
    EXPECT_LE(setup.search->Nodes(), 2000U + Overshoot);
    ASSERT_FALSE(record.pvs.empty());
    EXPECT_EQ(MoveName(record.best), MoveName(record.pvs.back().line[0]));
}

TEST_F(Limits, NodeLimitOf1FindsNoMove) {
    setup.Set(StartFen);
    SearchLimits limits;
    limits.nodes = 1;
    const SearchRecord record = setup.Think(limits);
    EXPECT_EQ(record.texts,
              (std::vector<std::string>{"stats nodes 1 hashfull 0 hits 0", "no best move"}));
}

TEST_F(Limits, NegativeNodeLimitIsNone) {
    setup.Set(StartFen);
    SearchLimits limits;
    limits.nodes = -5;
    limits.depth = 3;
    EXPECT_EQ(setup.Think(limits).pvs.size(), 3U);
}

// Status

/// A search in whose tree the clock is moved now and then.
class StatusLines : public Limits {
protected:
    StatusLines() { setup.bases.Add(base); }

    /// Moves the clock by `steps` milliseconds, one after each further 9000 nodes.
    SearchRecord Run(const std::vector<std::uint32_t>& steps, std::int32_t depth = 8) {
        const CStoppedClock clock;
        setup.Set(StartFen);
        std::size_t next = 0;
        base.answer = [&](Score&, const CPosition&, int, int) {
            if (next < steps.size() && setup.search->Nodes() >= 9000 * (next + 1)) {
                CStoppedClock::Advance(steps[next++]);
            }
            return false;
        };
        const SearchRecord record = setup.ThinkToDepth(depth);
        base.answer = {};
        return record;
    }

    CScriptedBase base;
};

TEST_F(StatusLines, NothingBeforeASecondHasPassed) {
    const SearchRecord record = Run({999});
    EXPECT_EQ(record.statistics.size(), 1U);
    EXPECT_TRUE(record.Beginning("currmove").empty());
    EXPECT_TRUE(record.Beginning("refutation").empty());
    EXPECT_TRUE(record.Beginning("currline").empty());
}

TEST_F(StatusLines, OneASecond) {
    EXPECT_EQ(Run({1000}).statistics.size(), 2U);
}

TEST_F(StatusLines, SecondsCountFromTheLastStatus) {
    EXPECT_EQ(Run({1500, 999}).statistics.size(), 2U);
}

TEST_F(StatusLines, AnotherAfterAnotherSecond) {
    EXPECT_EQ(Run({1500, 1000}).statistics.size(), 3U);
}

TEST_F(StatusLines, RootMovesAreReportedFromThenOnWithTheirNumbers) {
    const SearchRecord record = Run({1000});
    const std::vector<std::string> moves = record.Beginning("currmove");
    ASSERT_GE(moves.size(), 20U);
    // The last iteration reports all twenty.
    for (std::size_t number = 1; number <= 20; ++number) {
        EXPECT_TRUE(moves[moves.size() - 21 + number].ends_with(" " + std::to_string(number)));
    }
    const auto firstStats =
        std::find_if(record.texts.begin(), record.texts.end(),
                     [](const std::string& text) { return text.starts_with("stats"); });
    const auto firstMove =
        std::find_if(record.texts.begin(), record.texts.end(),
                     [](const std::string& text) { return text.starts_with("currmove"); });
    EXPECT_LT(firstStats, firstMove);
}

TEST_F(StatusLines, RefutationIsTheStoredReplyToTheMove) {
    const SearchRecord record = Run({1000});
    const std::vector<std::string> refutations = record.Beginning("refutation");
    ASSERT_FALSE(refutations.empty());
    for (const std::string& text : refutations) {
        CPosition position;
        // "refutation e2e4 by e7e5 ..."
        const std::string move = text.substr(11, text.find(" by ") - 11);
        const std::string line = text.substr(text.find(" by ") + 4);
        EXPECT_FALSE(line.empty());
        SetPosition(position, StartFen, move + " " + line);  // fails if one of them is illegal
    }
}

TEST_F(StatusLines, CurrentLineLeadsFromTheRootToTheNode) {
    const SearchRecord record = Run({1000, 1000});
    const std::vector<std::string> lines = record.Beginning("currline");
    ASSERT_EQ(lines.size(), 2U);  // and none at the end, when no move stands on the board
    for (const std::string& text : lines) {
        CPosition position;
        SetPosition(position, StartFen, text.substr(9));
    }
}

TEST_F(StatusLines, NextSearchBeginsAnew) {
    (void)Run({1000});
    const CStoppedClock clock(5000000);
    setup.hash.Clear();
    const SearchRecord record = setup.ThinkToDepth(4);
    EXPECT_EQ(record.statistics.size(), 1U);
    EXPECT_TRUE(record.Beginning("currmove").empty());
}

}  // namespace
}  // namespace brenquil
