// Iterative deepening and the root.

#include "search_setup.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brenquil {
namespace {

class Root : public testing::Test {
protected:
    /// Answers every question at ply 1 with the score of the move that led there, which the test
    /// gives from the root's view, by depth of the iteration.
    using Scores = std::function<Score(const std::string& move, int iteration)>;

    void Script(Scores scores) {
        base.answer = [this, scores](Score& score, const CPosition& position, int depth, int ply) {
            if (ply != 1) {
                return false;
            }
            const Move last = position.undo[position.ply - 1].move;
            asked.push_back(MoveName(last));
            score = -scores(MoveName(last), depth + 1);
            return true;
        };
        setup.bases.Add(base);
    }

    [[nodiscard]] static SearchLimits Depth(std::int32_t depth) {
        SearchLimits limits;
        limits.depth = depth;
        return limits;
    }

    SearchSetup setup;
    CScriptedBase base;
    std::vector<std::string> asked;
};

// Iterations

TEST_F(Root, DepthOf1RunsOneIteration) {
    const SearchRecord record = setup.ThinkToDepth(1);
    ASSERT_EQ(record.pvs.size(), 1U);
    EXPECT_EQ(record.pvs[0].report.depth, 1);
}

TEST_F(Root, WithoutADepthItRunsTo254) {
    Script([](const std::string&, int) { return 7; });
    for (const std::int32_t depth : {0, -3, 254, 255, 260, 2000000000}) {
        const SearchRecord record = setup.Think(Depth(depth));
        ASSERT_EQ(record.pvs.size(), 254U) << depth;
        EXPECT_EQ(record.pvs.back().report.depth, 254);
        setup.hash.Clear();
    }
}

TEST_F(Root, MateOf5BoundsTheSearchAtDepth5InPlies) {
    Script([](const std::string&, int) { return 7; });
    SearchLimits limits = Depth(9);
    limits.mate = 5;
    EXPECT_EQ(setup.Think(limits).pvs.size(), 5U);
    limits.mate = 1000000;
    EXPECT_EQ(setup.Think(limits).pvs.size(), 254U);
}

TEST_F(Root, NegativeMateRunsNoIteration) {
    SearchLimits limits;
    limits.mate = -1;
    EXPECT_EQ(setup.Think(limits).texts.back(), "no best move");
    limits.mate = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(setup.Think(limits).texts.back(), "no best move");
}

TEST_F(Root, StoppedIterationIsThrownAwayEvenIfItHadChangedItsMind) {
    Script([this](const std::string& move, int iteration) {
        if (iteration == 3 && asked.size() > 50) {
            setup.search->RequestStop();
        }
        if (iteration == 1) {
            return move == "e2e4" ? 50 : 10;
        }
        if (iteration == 2) {
            return move == "d2d4" ? 60 : move == "e2e4" ? 55 : 10;
        }
        return move == "d2d4" ? -300 : 400;  // everything else is better now
    });
    const SearchRecord record = setup.Think(Depth(5));
    EXPECT_EQ(record.pvs.size(), 2U);
    EXPECT_EQ(MoveName(record.best), "d2d4");
}

TEST_F(Root, LineOfTheIterationThatEndsTheSearchIsNotPrintedButPlayed) {
    Script([](const std::string& move, int iteration) {
        return iteration < 3 ? (move == "e2e4" ? 20 : 10) : (move == "b1c3" ? 31997 : 10);
    });
    const SearchRecord record = setup.Think(Depth(8));
    ASSERT_EQ(record.pvs.size(), 2U);
    EXPECT_EQ(MoveName(record.pvs.back().line[0]), "e2e4");
    EXPECT_EQ(MoveName(record.best), "b1c3");
}

TEST_F(Root, EndsWithAStatisticsLineAndTheBestMove) {
    const SearchRecord record = setup.ThinkToDepth(3);
    ASSERT_EQ(record.texts.size(), 5U);
    EXPECT_TRUE(record.texts[3].starts_with("stats "));
    EXPECT_TRUE(record.texts[4].starts_with("best "));
    EXPECT_EQ(record.statistics.back().nodes, setup.search->Nodes());
}

TEST_F(Root, PonderMoveIsTheSecondOfTheLine) {
    const SearchRecord record = setup.ThinkToDepth(4);
    ASSERT_GE(record.pvs.back().line.count, 2);
    EXPECT_EQ(record.ponder.word, record.pvs.back().line[1].word);
    EXPECT_TRUE(setup.ThinkToDepth(1).ponder.IsNone());
}

TEST_F(Root, WorkersStartBeforeAndEndAfterTheSearch) {
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    workers.nodes = 1000000;
    receiver.onPv = [&workers](const SearchRecord::Pv&) { EXPECT_EQ(workers.calls, "start "); };
    receiver.onStats = [&workers] { EXPECT_EQ(workers.calls, "start stop "); };
    setup.Think(Depth(2), receiver, workers);
    EXPECT_EQ(workers.rootKey, setup.position.key);
    EXPECT_EQ(setup.search->Nodes(), receiver.record.statistics.back().nodes);
    EXPECT_GT(setup.search->Nodes(), 1000000U);
    EXPECT_LT(setup.search->Nodes(), 1100000U);  // counted once
}

// The root moves

TEST_F(Root, FirstMoveHasTheFullWindowAndLaterOnesAreSearchedAgainIfBetter) {
    Script([](const std::string& move, int) {
        return move == "a2a3" ? 5 : move == "c2c3" ? 30 : move == "g1h3" ? 31 : 4;
    });
    (void)setup.Think(Depth(1));
    EXPECT_EQ(asked.size(), 22U);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "a2a3"), 1);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "c2c3"), 2);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "g1h3"), 2);
    EXPECT_EQ(setup.search->Nodes(), 23U);
}

TEST_F(Root, CheckIsExtendedAndNothingElse) {
    setup.Set("4k3/8/P7/8/8/8/8/1R2K3 w - - 0 1");
    std::map<std::string, int> depths;
    base.answer = [&depths](Score& score, const CPosition& position, int depth, int ply) {
        const Move last = position.undo[position.ply - 1].move;
        depths[MoveName(last)] = depth;
        score = 0;
        return ply == 1;
    };
    setup.bases.Add(base);
    (void)setup.Think(Depth(1));
    EXPECT_EQ(depths.at("b1b8"), 1);
    EXPECT_EQ(depths.at("a6a7"), 0);
    EXPECT_EQ(depths.at("b1b7"), 0);
    setup.Option("Use Extensions", "false");
    (void)setup.Think(Depth(1));
    EXPECT_EQ(depths.at("b1b8"), 0);
}

TEST_F(Root, RootIsNeitherADrawByRepetitionNorAnsweredByTableOrBases) {
    int rootQuestions = 0;
    base.answer = [&rootQuestions](Score&, const CPosition&, int, int ply) {
        rootQuestions += ply == 0 ? 1 : 0;
        return false;
    };
    setup.bases.Add(base);
    setup.Set(StartFen, "g1f3 g8f6 f3g1 f6g8");
    setup.hash.Store(setup.position.key, 777, 100, Bound::Exact, NoMove);
    const SearchRecord record = setup.Think(Depth(2));
    EXPECT_EQ(rootQuestions, 0);
    ASSERT_EQ(record.pvs.size(), 2U);
    EXPECT_NE(record.pvs[0].report.score, 777);
    EXPECT_FALSE(record.best.IsNone());
}

TEST_F(Root, SearchmovesLeavesTheOthersOut) {
    SearchLimits limits = Depth(3);
    limits.searchmoves.Append(NoMove);
    limits.searchmoves.Append(MoveOf(setup.position, "a2a3"));
    Move withKey = MoveOf(setup.position, "h2h3");
    withKey.SetOrder(77);
    limits.searchmoves.Append(withKey);
    Script([](const std::string& move, int) { return move == "h2h3" ? 20 : 10; });
    const SearchRecord record = setup.Think(limits);
    EXPECT_EQ(MoveName(record.best), "h2h3");
    for (const std::string& move : asked) {
        EXPECT_TRUE(move == "a2a3" || move == "h2h3") << move;
    }
}

TEST_F(Root, SearchmovesWithoutALegalMoveCountsAsNoLegalMove) {
    SearchLimits limits = Depth(3);
    limits.searchmoves.Append(NoMove);
    limits.searchmoves.Append(Move::Make(E7, E5));
    const SearchRecord record = setup.Think(limits);
    ASSERT_EQ(record.pvs.size(), 3U);
    EXPECT_EQ(record.pvs[2].report.score, 0);
    EXPECT_EQ(record.pvs[2].line.count, 0);
    EXPECT_EQ(record.texts.back(), "no best move");

    setup.Set("4r1k1/8/8/8/8/8/8/4K3 w - - 0 1");
    const SearchRecord inCheck = setup.Think(limits);
    ASSERT_EQ(inCheck.pvs.size(), 3U);  // a distance of 0 is not a mate
    EXPECT_EQ(inCheck.pvs[2].report.score, -32000);
}

TEST_F(Root, NoLegalMoveRunsAllIterationsAndFindsNothing) {
    for (const auto& [fen, score] : {std::pair{"7k/5Q2/8/8/8/8/8/K7 b - - 0 1", 0},
                                     std::pair{"R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", -32000}}) {
        setup.Set(fen);
        const SearchRecord record = setup.Think(Depth(6));
        ASSERT_EQ(record.pvs.size(), 6U) << fen;
        EXPECT_EQ(record.pvs[5].report.score, score);
        EXPECT_EQ(record.pvs[5].statistics.nodes, 6U);
        EXPECT_EQ(record.texts.back(), "no best move");
        const auto hit = setup.hash.Probe(setup.position.key);
        ASSERT_TRUE(hit);
        EXPECT_EQ(hit->score, score);
        EXPECT_EQ(hit->bound, Bound::Upper);
        EXPECT_EQ(hit->depth, 6);
    }
}

TEST_F(Root, ResultIsStored) {
    Script([](const std::string& move, int) { return move == "c2c3" ? 30 : 4; });
    (void)setup.Think(Depth(2));
    const auto hit = setup.hash.Probe(setup.position.key);
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->score, 30);
    EXPECT_EQ(hit->depth, 2);
    EXPECT_EQ(hit->bound, Bound::Exact);
    EXPECT_EQ(MoveName(hit->move), "c2c3");
}

TEST_F(Root, FiftyMovesScoreZeroAtTheRootToo) {
    setup.Set("4k3/7p/8/8/8/8/8/QR2K3 w - - 100 80");
    const SearchRecord record = setup.Think(Depth(1));
    ASSERT_EQ(record.pvs.size(), 1U);
    EXPECT_EQ(record.pvs[0].report.score, 0);
    EXPECT_FALSE(record.best.IsNone());
}

TEST_F(Root, EmptyLineIsFilledFromTheTable) {
    // Every move loses by exactly the lowest score, so none raises alpha. An entry of a search of
    // greater depth and the same age keeps its move.
    Script([](const std::string&, int) { return -32000; });
    setup.hash.BeginSearch(false);
    setup.hash.Store(setup.position.key, 0, 50, Bound::Exact, MoveOf(setup.position, "b2b3"));
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    setup.ThinkOn(Depth(2), receiver, workers);
    EXPECT_EQ(MoveName(receiver.record.best), "b2b3");
    EXPECT_EQ(LineText(receiver.record.pvs.back().line), "b2b3");
}

TEST_F(Root, LineFromTheTableIsAtMostAsLongAsTheIteration) {
    Script([](const std::string&, int) { return -32000; });
    setup.hash.BeginSearch(false);
    const std::vector<std::string> line = {"e2e4", "e7e5", "g1f3", "b8c6"};
    for (const std::string& text : line) {
        const Move move = MoveOf(setup.position, text);
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, move);  // answers nothing
        ASSERT_TRUE(setup.position.MakeMove(move));
    }
    for (std::size_t i = line.size(); i-- > 0;) {
        setup.position.UndoMove(setup.position.undo[setup.position.ply - 1].move);
    }
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    setup.ThinkOn(Depth(6), receiver, workers);
    ASSERT_EQ(receiver.record.pvs.size(), 6U);
    EXPECT_EQ(LineText(receiver.record.pvs[0].line), "e2e4");
    EXPECT_EQ(LineText(receiver.record.pvs[2].line), "e2e4 e7e5 g1f3");
    EXPECT_EQ(LineText(receiver.record.pvs[5].line), "e2e4 e7e5 g1f3 b8c6");
    EXPECT_EQ(MoveName(receiver.record.ponder), "e7e5");
}

TEST_F(Root, LineFromTheTableFollowsCastlingAndEnPassant) {
    Script([](const std::string&, int) { return -32000; });
    setup.Set("r3k3/3p4/8/4P3/8/8/8/R3K2R b KQq - 0 1");
    setup.hash.BeginSearch(false);
    const std::vector<std::string> line = {"d7d5", "e5d6", "e8c8", "e1g1"};
    for (const std::string& text : line) {
        const Move move = MoveOf(setup.position, text);
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, move);  // answers nothing
        ASSERT_TRUE(setup.position.MakeMove(move)) << text;
    }
    for (std::size_t i = line.size(); i-- > 0;) {
        setup.position.UndoMove(setup.position.undo[setup.position.ply - 1].move);
    }
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    setup.ThinkOn(Depth(4), receiver, workers);
    const std::vector<Move> moves(receiver.record.pvs.back().line.begin(),
                                  receiver.record.pvs.back().line.end());
    ASSERT_EQ(moves.size(), 4U);
    EXPECT_EQ(moves[1].Kind(), MoveKind::EnPassant);
    EXPECT_EQ(moves[2].Kind(), MoveKind::Castling);
    EXPECT_EQ(moves[3].Kind(), MoveKind::Castling);
}

/// The rule for stored moves refuses both of these.
TEST_F(Root, LineFromTheTableFollowsCastlingOntoTheRookAndEnPassantWithoutItsSquare) {
    struct Case {
        const char* fen;
        Move stored;
    };

    const std::vector<Case> cases = {
        {"5kr1/8/8/8/8/8/8/4K2R w Kg - 0 1", Move::Make(F8, G8, MoveKind::Castling, 2)},
        {"4k3/8/8/8/3pP3/8/8/4K2R w K - 0 1", Move::Make(D4, E3, MoveKind::EnPassant)},
    };
    for (const Case& one : cases) {
        Script([](const std::string&, int) { return -32000; });
        setup.Set(one.fen);
        setup.hash.BeginSearch(false);
        const Move first = MoveOf(setup.position, "h1h3");
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, first);
        ASSERT_TRUE(setup.position.MakeMove(first));
        ASSERT_FALSE(CMoveGenerator(setup.position).IsStoredMoveValid(one.stored)) << one.fen;
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, one.stored);
        setup.position.UndoMove(first);
        CRecordingReceiver receiver;
        CFakeWorkers workers;
        setup.ThinkOn(Depth(2), receiver, workers);
        EXPECT_EQ(MoveName(receiver.record.ponder), MoveName(one.stored)) << one.fen;
    }
}

TEST_F(Root, LineFromTheTableEndsBeforeASpecialMoveOfAnotherPosition) {
    struct Case {
        const char* fen;
        const char* first;
        Move stored;
    };

    const std::vector<Case> cases = {
        // The right to castle has been given up, or is another's.
        {"4k2r/8/8/8/8/8/8/4K2R w K - 0 1", "e1e2", Move::Make(E8, G8, MoveKind::Castling, 2)},
        {"4k2r/8/8/8/8/8/1B6/4K3 w k - 0 1", "b2h8", Move::Make(E8, G8, MoveKind::Castling, 2)},
        {"4k2r/8/8/8/8/8/8/4K2R w k - 0 1", "h1h2", Move::Make(E8, C8, MoveKind::Castling, 2)},
        {"r3k2r/8/8/8/8/8/8/4K2R w kq - 0 1", "h1h2", Move::Make(H8, G8, MoveKind::Castling, 2)},
        // A man stands on the square, none that captures so moves, or none captures there.
        {"4k3/8/8/8/3p4/4P3/8/4K2R w K - 0 1", "h1h2", Move::Make(D4, E3, MoveKind::EnPassant)},
        {"4k3/8/8/8/3n4/8/8/4K2R w K - 0 1", "h1h2", Move::Make(D4, E3, MoveKind::EnPassant)},
        {"4k3/8/8/8/3p4/8/8/4K2R w K - 0 1", "h1h2", Move::Make(D4, F3, MoveKind::EnPassant)},
    };
    for (const Case& one : cases) {
        Script([](const std::string&, int) { return -32000; });
        setup.Set(one.fen);
        setup.hash.BeginSearch(false);
        const Move first = MoveOf(setup.position, one.first);
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, first);
        ASSERT_TRUE(setup.position.MakeMove(first));
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, one.stored);
        setup.position.UndoMove(first);
        CRecordingReceiver receiver;
        CFakeWorkers workers;
        setup.ThinkOn(Depth(4), receiver, workers);
        EXPECT_EQ(LineText(receiver.record.pvs.back().line), one.first) << one.fen;
    }
}

// Small endgames

TEST_F(Root, FewMenAndANearlyEqualScoreShowAsADeadDraw) {
    struct Case {
        std::string_view fen;
        Score score;
        bool isHidden;
    };

    constexpr std::string_view FiveMen = "4k3/pp6/8/8/8/8/P7/4K3 w - - 0 1";
    constexpr std::string_view SixMen = "4k3/pp6/8/8/8/8/PP6/4K3 w - - 0 1";
    for (const Case& test :
         {Case{FiveMen, 100, true}, Case{FiveMen, -100, true}, Case{FiveMen, 101, false},
          Case{FiveMen, -101, false}, Case{SixMen, 100, false}, Case{SixMen, -3, false}}) {
        SearchSetup other;
        other.Set(test.fen);
        CScriptedBase scripted;
        scripted.answer = [&test](Score& score, const CPosition&, int, int) {
            score = -test.score;
            return true;
        };
        other.bases.Add(scripted);
        const SearchRecord record = other.ThinkToDepth(2);
        ASSERT_EQ(record.pvs.size(), 2U);
        const PvReport& report = record.pvs[1].report;
        EXPECT_EQ(report.score, test.isHidden ? 0 : test.score);
        EXPECT_EQ(report.alpha, test.isHidden ? 0 : -32000);
        EXPECT_EQ(report.beta, test.isHidden ? 0 : 32000);
        EXPECT_EQ(other.hash.Probe(other.position.key)->score, test.score);
    }
}

// MultiPV

TEST_F(Root, With20LinesThe19FirstTriedArePrintedBestFirst) {
    setup.Option("MultiPV", "20");
    const auto picker = std::make_unique<CMovePicker>();
    picker->Reset(0, false);
    std::vector<std::string> tried;
    for (Move move = setup.search->NextMove(*picker); !move.IsNone();
         move = setup.search->NextMove(*picker)) {
        tried.push_back(MoveName(move));
    }
    ASSERT_EQ(tried.size(), 20U);
    // Each is better than the one before it; the best of all comes last and is dropped.
    Script([&tried](const std::string& move, int) {
        return static_cast<Score>(std::find(tried.begin(), tried.end(), move) - tried.begin()) * 3;
    });
    const SearchRecord record = setup.Think(Depth(1));
    ASSERT_EQ(record.pvs.size(), 19U);
    for (std::size_t i = 0; i < 19; ++i) {
        EXPECT_EQ(record.pvs[i].report.multiPv, static_cast<std::int32_t>(i + 1));
        EXPECT_EQ(record.pvs[i].report.score, static_cast<Score>(18 - i) * 3);
        EXPECT_EQ(LineText(record.pvs[i].line), tried[18 - i]);
    }
    EXPECT_EQ(MoveName(record.best), tried.back());
}

TEST_F(Root, MultiPvOf1IsNotMultiPv) {
    setup.Option("MultiPV", "0");
    ASSERT_EQ(setup.Think(Depth(1)).pvs.size(), 1U);
    setup.Option("MultiPV", "1");
    const SearchRecord record = setup.Think(Depth(1));
    ASSERT_EQ(record.pvs.size(), 1U);
    EXPECT_EQ(record.pvs[0].report.multiPv, 0);
}

TEST_F(Root, MultiPvPrintsNoMoreLinesThanThereAreMoves) {
    setup.Set("1r5k/8/8/8/8/8/8/K7 w - - 0 1");
    setup.Option("MultiPV", "5");
    const SearchRecord record = setup.Think(Depth(2));
    ASSERT_EQ(record.pvs.size(), 2U);
    EXPECT_EQ(record.pvs[0].report.multiPv, 1);
}

TEST_F(Root, MultiPvSearchesEveryMoveOnceWithTheWindowOfItsDelta) {
    setup.Option("MultiPV", "3");
    setup.Option("MultiPV Delta", "40");
    Script([](const std::string& move, int) { return move == "a2a3" ? 100 : 20; });
    const SearchRecord record = setup.Think(Depth(1));
    EXPECT_EQ(asked.size(), 20U);
    EXPECT_EQ(record.pvs[0].report.score, 100);
    EXPECT_EQ(record.pvs[1].report.score, 20);
}

TEST_F(Root, MultiPvShowsLinesThatFailedLowWithTheirBound) {
    // Entries of the table answer with the bound of the window: best minus delta.
    setup.Option("MultiPV", "2");
    setup.Option("MultiPV Delta", "40");
    for (const Move move : LegalMoves(setup.position)) {
        ASSERT_TRUE(setup.position.MakeMove(move));
        const bool isBest = MoveName(move) == "a2a3";
        setup.hash.Store(setup.position.key, isBest ? -100 : 500, 50,
                         isBest ? Bound::Exact : Bound::Lower, NoMove);
        setup.position.UndoMove(move);
    }
    const SearchRecord record = setup.Think(Depth(1));
    ASSERT_EQ(record.pvs.size(), 2U);
    EXPECT_EQ(record.pvs[0].report.score, 100);
    EXPECT_EQ(record.pvs[1].report.score, 60);
}

TEST_F(Root, MateStoredByItsOwnSearchIsBelowTheWindowOfOneLineAndWithinThatOfSeveral) {
    // The search of the mated side stores -32000 as an upper bound. With one line the root's window
    // begins there, so the bound answers; with several it begins lower.
    for (const bool isMultiPv : {false, true}) {
        SearchSetup other;
        other.Set("R5k1/5ppp/8/8/8/8/8/6K1 b - - 1 1");
        (void)other.ThinkToDepth(6);
        other.Set("6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1");
        other.Option("MultiPV", isMultiPv ? "2" : "1");
        const SearchRecord record = other.ThinkToDepth(3);
        EXPECT_EQ(MoveName(record.best), "a1a8");
        EXPECT_EQ(other.hash.Probe(other.position.key)->score, isMultiPv ? 31999 : 32000);
    }
}

TEST_F(Root, SmallEndgameRuleDoesNotHoldForMultiPv) {
    setup.Set("4k3/p7/8/8/8/8/P7/4K3 w - - 0 1");
    setup.Option("MultiPV", "2");
    Script([](const std::string&, int) { return 50; });
    const SearchRecord record = setup.Think(Depth(1));
    ASSERT_FALSE(record.pvs.empty());
    EXPECT_EQ(record.pvs[0].report.score, 50);
    EXPECT_EQ(record.pvs[0].report.alpha, -32000);
}

// Options during a search

TEST_F(Root, OptionChangedDuringASearchCountsFromTheNextIteration) {
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    receiver.onPv = [this](const SearchRecord::Pv& pv) {
        if (pv.report.depth == 2) {
            setup.Option("MultiPV", "4");
        }
    };
    setup.Think(Depth(3), receiver, workers);
    ASSERT_EQ(receiver.record.pvs.size(), 6U);
    EXPECT_EQ(receiver.record.pvs[5].report.multiPv, 4);
}

TEST_F(Root, AbsurdOptionsAreSurvived) {
    for (const char* name :
         {"Nullmove Reduction", "Nullmove Min Depth", "LMR Min Depth", "LMR Min Moves",
          "Futility Margin1", "Futility Margin2", "Futility Margin3", "MultiPV", "MultiPV Delta"}) {
        for (const char* value : {"2147483647", "-2147483648", "-1", "0", "1000000", "-40000"}) {
            SearchSetup other;
            other.Set("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1");
            other.Option(name, value);
            SearchLimits limits;
            limits.nodes = 20000;
            EXPECT_EQ(other.Think(limits).ends, 1) << name << " " << value;
        }
    }
}

}  // namespace
}  // namespace brenquil
