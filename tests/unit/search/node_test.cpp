// The alpha-beta node, step by step.

#include "board/polyglot_keys.h"
#include "search_setup.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brenquil {
namespace {

class Node : public testing::Test {
protected:
    /// Whether the table has an entry for the position.
    [[nodiscard]] std::optional<HashHit> Stored() const {
        return setup.hash.Probe(setup.position.key);
    }

    void Store(Score score, std::int32_t depth, Bound bound, Move move = NoMove) {
        setup.hash.Store(setup.position.key, score, depth, bound, move);
    }

    void OptionsOff(std::initializer_list<std::string_view> names) {
        for (const std::string_view name : names) {
            setup.Option(name, "false");
        }
    }

    [[nodiscard]] std::uint64_t Nodes() const { return setup.search->Nodes(); }

    SearchSetup setup;
};

constexpr std::string_view NothingToTake = "4k1n1/pp6/8/8/8/8/PPP5/4K1N1 w - - 4 9";
constexpr std::string_view QuietMiddlegame =
    "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 4 8";

// Stop

TEST_F(Node, StoppedReturnsAlphaAndStoresNothing) {
    setup.Set(QuietMiddlegame);
    setup.search->ResetSearch();
    setup.search->RequestStop();
    EXPECT_EQ(setup.search->AlphaBeta(5, 1, -123, 456, false), -123);
    EXPECT_EQ(Nodes(), 1U);
    EXPECT_FALSE(Stored());
}

TEST_F(Node, StoppedInTheMiddleReturnsAlphaAndStoresNothing) {
    setup.Set(QuietMiddlegame);
    CScriptedBase base;
    int questions = 0;
    base.answer = [&](Score& score, const CPosition&, int, int ply) {
        ++questions;
        score = questions == 2 ? -40 : -90;  // the first move raises alpha to 40
        if (questions == 4) {
            setup.search->RequestStop();
        }
        return ply == 2;
    };
    setup.bases.Add(base);
    EXPECT_EQ(setup.Node(5, 1, -123, 456), 40);
    EXPECT_EQ(Nodes(), 4U);
    EXPECT_FALSE(Stored());
}

TEST_F(Node, StopsAtPly255AndAtTheEndOfTheUndoStack) {
    setup.Set(QuietMiddlegame);
    EXPECT_EQ(setup.Node(3, 255, -9, 9), -9);
    EXPECT_TRUE(setup.search->IsStopped());
    (void)setup.Node(0, 254, -9, 9);
    EXPECT_FALSE(setup.search->IsStopped());

    setup.Set("4k3/8/8/8/8/8/8/R3K3 w - - 0 250");
    setup.position.ply = 499;
    (void)setup.Node(0, 1, -9, 9);
    EXPECT_FALSE(setup.search->IsStopped());
    setup.position.ply = 500;
    EXPECT_EQ(setup.Node(3, 1, -9, 9), -9);
    EXPECT_TRUE(setup.search->IsStopped());
}

// Repetition

TEST_F(Node, PositionOfTheGameBeforeTheRootIsADrawFromPly1On) {
    for (const std::int32_t ply : {1, 2, 77}) {
        setup.Set(StartFen, "g1f3 g8f6 f3g1 f6g8");
        EXPECT_EQ(setup.Node(3, ply, -9000, -8000), 0);
        EXPECT_EQ(Nodes(), 1U);
        EXPECT_FALSE(Stored());
    }
}

TEST_F(Node, RootOfAWorkerIsNotTestedForRepetition) {
    setup.Set(StartFen, "g1f3 g8f6 f3g1 f6g8");
    (void)setup.Node(3, 0);
    EXPECT_GT(Nodes(), 20U);
    EXPECT_TRUE(Stored());
}

TEST_F(Node, ChildOfANullMoveIsNotTestedForRepetition) {
    setup.Set(StartFen, "g1f3 g8f6 f3g1 f6g8");
    (void)setup.Node(2, 1, -9000, 9000, true);
    EXPECT_GT(Nodes(), 20U);
}

TEST_F(Node, PositionBeforeAPawnMoveIsStillCompared) {
    // The walk ends after the record of the irreversible move, not before it.
    setup.Set("4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "e1d1 e8d8 d1e1 d8e8");
    EXPECT_EQ(setup.Node(2), 0);
    EXPECT_EQ(Nodes(), 1U);
}

TEST_F(Node, WalkEndsAtACaptureOrPawnMove) {
    setup.Set(StartFen, "g1f3 g8f6 f3g1 f6g8");
    setup.position.undo[setup.position.ply - 1].halfmoveClock = 0;
    (void)setup.Node(2);
    EXPECT_GT(Nodes(), 20U);
}

TEST_F(Node, RecordOfAnEarlierGameCountsAsAnEarlierOccurrence) {
    setup.Set("4k3/8/8/8/8/8/8/R3K3 w - - 20 1", "a1a2 e8e7 a2a1 e7d7 a1b1 d7e7 b1a1");
    // Set up anew, with a ply above those records: nothing was played, yet its key is among them.
    setup.Set("8/4k3/8/8/8/8/8/R3K3 b - - 24 4");
    EXPECT_EQ(setup.Node(3), 0);
    EXPECT_EQ(Nodes(), 1U);
}

// Hash table

TEST_F(Node, RepetitionComesBeforeTheTable) {
    setup.Set(StartFen, "g1f3 g8f6 f3g1 f6g8");
    Store(555, 100, Bound::Exact);
    EXPECT_EQ(setup.Node(3), 0);
}

TEST_F(Node, ExactEntryOfSufficientDepthReturnsItsScoreInAPvNode) {
    setup.Set(QuietMiddlegame);
    Store(555, 4, Bound::Exact);
    for (const std::int32_t depth : {4, 3, 0, -2}) {
        EXPECT_EQ(setup.Node(depth), 555);
        EXPECT_EQ(setup.Node(depth, 1, -10, 10), 555);
        EXPECT_EQ(setup.Node(depth, 1, 600, 601), 555);
        EXPECT_EQ(Nodes(), 1U);
    }
}

TEST_F(Node, EntryOfTooLittleDepthIsNotUsed) {
    setup.Set(QuietMiddlegame);
    Store(5555, 1, Bound::Exact);
    EXPECT_NE(setup.Node(2), 5555);
    EXPECT_GT(Nodes(), 20U);
}

TEST_F(Node, UpperBoundReturnsAlphaWhenItIsNotAboveIt) {
    setup.Set(QuietMiddlegame);
    Store(-700, 9, Bound::Upper);
    EXPECT_EQ(setup.Node(2, 1, -600, -500), -600);
    EXPECT_EQ(Nodes(), 1U);
    EXPECT_EQ(setup.Node(2, 1, -700, -500), -700);
    EXPECT_EQ(Nodes(), 1U);
    (void)setup.Node(2, 1, -701, -500);
    EXPECT_GT(Nodes(), 1U);
}

TEST_F(Node, LowerBoundReturnsBetaWhenItIsNotBelowIt) {
    setup.Set(QuietMiddlegame);
    Store(700, 9, Bound::Lower);
    EXPECT_EQ(setup.Node(2, 1, 500, 600), 600);
    EXPECT_EQ(Nodes(), 1U);
    EXPECT_EQ(setup.Node(2, 1, 500, 700), 700);
    EXPECT_EQ(Nodes(), 1U);
    (void)setup.Node(2, 1, 500, 701);
    EXPECT_GT(Nodes(), 1U);
}

TEST_F(Node, StoredMateScoreIsUsedAsItStands) {
    setup.Set(QuietMiddlegame);
    Store(31990, 9, Bound::Exact);
    EXPECT_EQ(setup.Node(2, 1), 31990);
    EXPECT_EQ(setup.Node(2, 31), 31990);
}

TEST_F(Node, WrappedDepthAnswersAnyDepth) {
    setup.Set(QuietMiddlegame);
    setup.hash.BeginSearch(false);
    Store(555, -1, Bound::Exact);
    EXPECT_EQ(setup.Node(200), 555);
}

TEST_F(Node, LineEndsWhereAnExactEntryAnswered) {
    setup.Set(StartFen);
    for (const Move move : LegalMoves(setup.position)) {
        ASSERT_TRUE(setup.position.MakeMove(move));
        const bool isBest = MoveName(move) == "g1h3";
        Store(isBest ? -500 : -100, 50, Bound::Exact);
        setup.position.UndoMove(move);
    }
    // The age is raised by the search, which takes protection away but not the answer.
    const SearchRecord record = setup.ThinkToDepth(3);
    ASSERT_EQ(record.pvs.size(), 3U);
    for (const SearchRecord::Pv& pv : record.pvs) {
        EXPECT_EQ(LineText(pv.line), "g1h3");
        EXPECT_EQ(pv.report.score, 500);
        // A root and twenty answers each time; the first time the best move is searched again.
        EXPECT_EQ(pv.statistics.nodes, 1 + 21U * static_cast<std::uint64_t>(pv.report.depth));
    }
    EXPECT_EQ(MoveName(record.best), "g1h3");
    EXPECT_TRUE(record.ponder.IsNone());
}

// Bases

TEST_F(Node, BasesAreAskedInTheirOrderWithDepthAndPlyUntilOneAnswers) {
    setup.Set(QuietMiddlegame);
    CScriptedBase last(3);
    CScriptedBase second(1);
    CScriptedBase first(1);
    std::string asked;
    const auto script = [&asked](const std::string& name, bool knows, Score score) {
        return [=, &asked](Score& answer, const CPosition&, int depth, int ply) {
            asked += name + std::to_string(depth) + "/" + std::to_string(ply) + " ";
            answer = score;
            return knows;
        };
    };
    last.answer = script("last", true, 1);
    second.answer = script("second", true, -444);
    first.answer = script("first", false, 9);
    setup.bases.Add(last);
    setup.bases.Add(first);
    setup.bases.Add(second);
    EXPECT_EQ(setup.Node(7, 12, -10, 10), -444);
    EXPECT_EQ(asked, "first7/12 second7/12 ");
    EXPECT_EQ(setup.bases.hits, 1U);
    EXPECT_EQ(Nodes(), 1U);
    EXPECT_FALSE(Stored());
}

TEST_F(Node, BasesAreAskedAtTheHorizonAndAtTheRootOfAWorkerButNotAfterTheTable) {
    setup.Set(QuietMiddlegame);
    CScriptedBase base;
    int questions = 0;
    base.answer = [&questions](Score& score, const CPosition&, int, int) {
        ++questions;
        score = 7;
        return true;
    };
    setup.bases.Add(base);
    EXPECT_EQ(setup.Node(0, 5), 7);
    EXPECT_EQ(setup.Node(-1, 5), 7);
    EXPECT_EQ(setup.Node(4, 0), 7);
    EXPECT_EQ(questions, 3);
    Store(555, 50, Bound::Exact);
    EXPECT_EQ(setup.Node(4, 0), 555);
    EXPECT_EQ(questions, 3);
}

// Horizon

TEST_F(Node, NodeAtTheHorizonIsCountedOnce) {
    setup.Set("4k3/pp6/8/8/8/8/PPP5/4K3 w - - 0 1");
    for (const std::int32_t depth : {0, -1, -5}) {
        EXPECT_EQ(setup.Node(depth), setup.Static());
        EXPECT_EQ(Nodes(), 1U);
        EXPECT_FALSE(Stored());
    }
}

TEST_F(Node, Depth0InCheckRunsTheMoveLoop) {
    setup.Set("4r1k1/8/8/8/8/8/8/4K3 w - - 0 1");
    (void)setup.Node(0);
    EXPECT_EQ(Nodes(), 1U + 4U);
    ASSERT_TRUE(Stored());
    EXPECT_EQ(Stored()->depth, 0);
}

TEST_F(Node, WithoutExtensionsChecksReachNegativeDepth) {
    // The rook steps between with check, so the child is in check as well.
    for (const bool isExtended : {true, false}) {
        setup.hash.Clear();
        setup.hash.BeginSearch(false);
        setup.Set("4r3/8/8/8/8/R6k/8/4K3 w - - 0 1");
        setup.Option("Use Extensions", isExtended ? "true" : "false");
        (void)setup.Node(0);
        const Move between = MoveOf(setup.position, "a3e3");
        ASSERT_TRUE(setup.position.MakeMove(between));
        ASSERT_TRUE(Stored());
        EXPECT_EQ(Stored()->depth, isExtended ? 0 : 65535);
    }
}

// Static pruning

TEST_F(Node, ReverseFutilityReturnsBetaAfterOneNode) {
    setup.Set(QuietMiddlegame);
    OptionsOff({"Use Nullmove"});
    constexpr std::array<Score, 4> Margins = {0, 50, 350, 550};
    for (std::int32_t depth = 1; depth <= 3; ++depth) {
        setup.hash.Clear();
        const Score beta = setup.Static() - Margins[static_cast<std::size_t>(depth)];
        EXPECT_EQ(setup.Node(depth, 1, beta - 1, beta), beta) << depth;
        EXPECT_EQ(Nodes(), 1U);
        EXPECT_FALSE(Stored());
        (void)setup.Node(depth, 1, beta, beta + 1);
        EXPECT_GT(Nodes(), 1U) << depth;
    }
    (void)setup.Node(4, 1, -9001, -9000);
    EXPECT_GT(Nodes(), 1U);
}

TEST_F(Node, RazoringGoesToQuiescenceAndCountsTheNodeTwice) {
    setup.Set("4k3/pp6/8/8/8/8/PPP5/4K3 w - - 0 1");  // nothing to capture
    OptionsOff({"Use Nullmove"});
    constexpr std::array<Score, 4> Margins = {0, 50, 350, 550};
    for (std::int32_t depth = 1; depth <= 3; ++depth) {
        setup.hash.Clear();
        const Score alpha = setup.Static() + Margins[static_cast<std::size_t>(depth)];
        EXPECT_EQ(setup.Node(depth, 1, alpha, alpha + 1), alpha);
        EXPECT_EQ(Nodes(), 2U) << depth;
        EXPECT_FALSE(Stored());
        (void)setup.Node(depth, 1, alpha - 1, alpha);
        EXPECT_GT(Nodes(), 2U) << depth;
    }
}

TEST_F(Node, StaticPruningNeedsANullWindowNoCheckAndItsOption) {
    setup.Set("4k3/pp6/8/8/8/8/PPP5/4K3 w - - 0 1");
    OptionsOff({"Use Nullmove"});
    EXPECT_EQ(setup.Node(1, 1, -5000, -4999), -4999);
    EXPECT_EQ(Nodes(), 1U);
    EXPECT_EQ(setup.Node(1, 1, -4999, -4999), -4999);  // no width at all
    EXPECT_EQ(Nodes(), 1U);
    (void)setup.Node(1, 1, -5000, -4998);
    EXPECT_GT(Nodes(), 1U);
    setup.hash.Clear();
    OptionsOff({"Use Futility"});
    (void)setup.Node(1, 1, -5000, -4999);
    EXPECT_GT(Nodes(), 1U);

    setup.Option("Use Futility", "true");
    setup.Set("3Rk3/pp6/8/8/8/8/PPP5/4K3 b - - 0 1");
    (void)setup.Node(1, 1, -5000, -4999);
    EXPECT_GT(Nodes(), 1U);
}

TEST_F(Node, StaticPruningNeedsFiveMenKingsAndPawnsIncluded) {
    OptionsOff({"Use Nullmove"});
    setup.Set("4k3/p7/8/8/8/8/P7/4K3 w - - 0 1");
    (void)setup.Node(1, 1, -5000, -4999);
    EXPECT_GT(Nodes(), 1U);
    setup.Set("4k3/pp6/8/8/8/8/P7/4K3 w - - 0 1");
    (void)setup.Node(1, 1, -5000, -4999);
    EXPECT_EQ(Nodes(), 1U);
}

TEST_F(Node, MarginOptionsTakeEffectAndTextThatIsNoNumberDoesNot) {
    setup.Set(QuietMiddlegame);
    OptionsOff({"Use Nullmove"});
    const Score beta = setup.Static() - 400;
    EXPECT_EQ(setup.Node(3, 1, beta - 1, beta), beta);
    EXPECT_GT(Nodes(), 1U);
    setup.hash.Clear();
    setup.Option("Futility Margin3", "400");
    EXPECT_EQ(setup.Node(3, 1, beta - 1, beta), beta);
    EXPECT_EQ(Nodes(), 1U);
    setup.Option("Futility Margin3", "much");
    EXPECT_EQ(setup.Node(3, 1, beta - 1, beta), beta);
    EXPECT_EQ(Nodes(), 1U);
    EXPECT_EQ(setup.options.futilityMargins[2].number, 400);
}

// Null move

TEST_F(Node, NullMoveThatHoldsReturnsBetaAndStoresNothing) {
    setup.Set(NothingToTake);
    OptionsOff({"Use Futility"});
    const CPosition before = setup.position;
    EXPECT_EQ(setup.Node(2, 1, -5000, -4999), -4999);
    EXPECT_EQ(Nodes(), 2U);  // the node and the child's quiescence
    EXPECT_FALSE(Stored());
    EXPECT_EQ(setup.position.key, before.key);
    EXPECT_EQ(setup.position.halfmoveClock, before.halfmoveClock);
    EXPECT_EQ(setup.position.castlingRights, before.castlingRights);
    EXPECT_EQ(setup.position.sideToMove, before.sideToMove);
    EXPECT_EQ(setup.position.ply, before.ply);
}

TEST_F(Node, NullMoveIsNotTriedWhereItMustNotBe) {
    OptionsOff({"Use Futility", "Use LMR"});
    const auto nodes = [this](std::string_view fen, std::int32_t depth, Score alpha, Score beta,
                              bool afterNull) {
        setup.hash.Clear();
        setup.Set(fen);
        (void)setup.Node(depth, 1, alpha, beta, afterNull);
        return Nodes();
    };
    EXPECT_EQ(nodes(NothingToTake, 2, -5000, -4999, false), 2U);
    EXPECT_GT(nodes(NothingToTake, 2, -5000, -4999, true), 2U);
    EXPECT_GT(nodes(NothingToTake, 2, -5000, -4998, false), 2U);
    EXPECT_EQ(nodes("4k3/pp6/8/8/8/8/PPP5/4K1N1 w - - 0 1", 2, -5000, -4999, false), 2U);
    EXPECT_GT(nodes("4k3/pp6/8/8/8/8/PPP5/4K3 w - - 0 1", 2, -5000, -4999, false), 2U);
    EXPECT_GT(nodes("4k1n1/pp6/8/8/8/8/PPP5/4K3 w - - 0 1", 2, -5000, -4999, false), 2U);
    EXPECT_GT(nodes("4k1r1/pp6/8/8/8/8/PPP3r1/4K1R1 w - - 0 1", 1, -5000, -4999, false), 2U);
    setup.Option("Nullmove Min Depth", "3");
    EXPECT_GT(nodes(NothingToTake, 2, -5000, -4999, false), 2U);
    setup.Option("Nullmove Min Depth", "2");
    OptionsOff({"Use Nullmove"});
    EXPECT_GT(nodes(NothingToTake, 2, -5000, -4999, false), 2U);
}

TEST_F(Node, NullMoveChildHasItsDepthAndWindowAndIsMarked) {
    setup.Set(QuietMiddlegame);
    CScriptedBase base;
    std::vector<std::string> asked;
    base.answer = [&asked](Score& score, const CPosition& position, int depth, int ply) {
        asked.push_back(std::to_string(depth) + "/" + std::to_string(ply) + " " +
                        std::to_string(position.halfmoveClock) +
                        (position.sideToMove == White ? " w" : " b"));
        score = 5000;
        return ply == 4;
    };
    setup.bases.Add(base);
    OptionsOff({"Use Futility"});
    EXPECT_EQ(setup.Node(7, 3, -5001, -5000), -5000);
    EXPECT_EQ(asked, (std::vector<std::string>{"7/3 4 w", "3/4 0 b"}));
}

TEST_F(Node, FailedNullMoveLeavesTheKeyWithoutItsEnPassantFile) {
    setup.Set("4k3/8/8/3pP3/8/8/8/N3K3 w - d6 0 1");
    OptionsOff({"Use Futility"});
    const std::uint64_t key = setup.position.key;
    const std::uint64_t without = key ^ EnPassantKey(D6);
    EXPECT_EQ(setup.Node(2, 1, 5000, 5001), 5000);
    EXPECT_EQ(setup.position.key, without);
    EXPECT_EQ(setup.position.enPassant, D6);
    EXPECT_TRUE(setup.hash.Probe(without));
    EXPECT_FALSE(setup.hash.Probe(key));
}

// Moves

TEST_F(Node, SingleLegalMoveIsNotExtended) {
    setup.Set("1r5k/8/8/8/8/8/8/K7 w - - 0 1");
    ASSERT_EQ(LegalMoves(setup.position).size(), 1U);
    (void)setup.Node(1);
    EXPECT_EQ(Nodes(), 2U);
}

/// The depths with which a node at ply 1 asks for its children, by move.
std::string ChildDepths(SearchSetup& setup, std::int32_t depth, Score alpha, Score beta,
                        const std::vector<std::string>& moves) {
    CScriptedBase base;
    std::string asked;
    base.answer = [&](Score& score, const CPosition& position, int childDepth, int ply) {
        score = -alpha + 1;  // every move fails low
        if (ply == 2) {
            const Move last = position.undo[position.ply - 1].move;
            for (const std::string& move : moves) {
                if (move == MoveName(last)) {
                    asked += move + ":" + std::to_string(childDepth) + " ";
                }
            }
        }
        return ply == 2;
    };
    CBaseList bases;
    bases.Add(base);
    const SearchContext context{setup.hash, bases, setup.options, setup.evaluationOptions,
                                TestBitbase()};
    const auto search = std::make_unique<CSearch>(setup.position, context);
    (void)search->AlphaBeta(depth, 1, alpha, beta, true);
    return asked;
}

TEST_F(Node, ChecksAndPawnsOnTheSeventhAreExtended) {
    OptionsOff({"Use Futility", "Use LMR"});
    // b7 gives check and stands before promotion; a7, h7 only the one, the rook's e1 only the other
    constexpr std::string_view Fen = "2k5/8/PP5P/8/8/8/8/R2K4 w - - 0 1";
    const std::vector<std::string> moves = {"a6a7", "b6b7", "a1c1", "a1b1"};
    const auto sorted = [&](std::int32_t depth, Score alpha, Score beta) {
        setup.Set(Fen);
        setup.hash.Clear();
        return ChildDepths(setup, depth, alpha, beta, moves);
    };
    const std::string extended = sorted(5, 0, 1);
    EXPECT_NE(extended.find("a6a7:5 "), std::string::npos) << extended;
    EXPECT_NE(extended.find("b6b7:6 "), std::string::npos) << extended;
    EXPECT_NE(extended.find("a1c1:5 "), std::string::npos) << extended;
    EXPECT_NE(extended.find("a1b1:4 "), std::string::npos) << extended;
    const std::string deep = sorted(6, 0, 1);
    EXPECT_NE(deep.find("b6b7:5 "), std::string::npos) << deep;
    EXPECT_NE(deep.find("a1c1:5 "), std::string::npos) << deep;
    const std::string pv = sorted(6, 0, 2);
    EXPECT_NE(pv.find("b6b7:7 "), std::string::npos) << pv;
    OptionsOff({"Use Extensions"});
    const std::string without = sorted(5, 0, 1);
    EXPECT_NE(without.find("b6b7:4 "), std::string::npos) << without;
}

TEST_F(Node, PromotionIsNotAPawnOnTheSeventh) {
    OptionsOff({"Use Futility", "Use LMR"});
    setup.Set("8/P7/8/8/2k5/8/8/3K4 w - - 0 1");
    EXPECT_EQ(ChildDepths(setup, 3, 0, 1, {"a7a8/3.1", "a7a8/3.2"}), "a7a8/3.1:2 a7a8/3.2:2 ");
}

TEST_F(Node, BlackPawnOnItsSeventhIsExtended) {
    OptionsOff({"Use Futility", "Use LMR"});
    setup.Set("3k4/8/8/8/7p/p7/8/6K1 b - - 0 1");
    const std::string asked = ChildDepths(setup, 3, 0, 1, {"a3a2", "h4h3"});
    EXPECT_NE(asked.find("a3a2:3 "), std::string::npos) << asked;
    EXPECT_NE(asked.find("h4h3:2 "), std::string::npos) << asked;
}

TEST_F(Node, FromTheFourthQualifyingQuietMoveOnOnePlyIsTakenOff) {
    OptionsOff({"Use Futility"});
    setup.Set("7k/7p/8/8/8/8/P7/K7 w - - 0 1");
    // Kb1, Kb2, a3, a4 in the order of the generator: pawn first
    const std::vector<std::string> moves = {"a2a3", "a2a4", "a1b1", "a1b2"};
    EXPECT_EQ(ChildDepths(setup, 3, 0, 1, moves), "a2a3:2 a2a4:2 a1b1:2 a1b2:1 ");
    setup.hash.Clear();
    EXPECT_EQ(ChildDepths(setup, 2, 0, 1, moves), "a2a3:1 a2a4:1 a1b1:1 a1b2:1 ");
    setup.hash.Clear();
    EXPECT_EQ(ChildDepths(setup, 3, 0, 2, moves), "a2a3:2 a2a4:2 a1b1:2 a1b2:2 ");
    setup.Option("LMR Min Moves", "1");
    setup.Option("LMR Min Depth", "2");
    setup.hash.Clear();
    EXPECT_EQ(ChildDepths(setup, 2, 0, 1, moves), "a2a3:0 a2a4:0 a1b1:0 a1b2:0 ");
    OptionsOff({"Use LMR"});
    setup.hash.Clear();
    EXPECT_EQ(ChildDepths(setup, 2, 0, 1, moves), "a2a3:1 a2a4:1 a1b1:1 a1b2:1 ");
}

TEST_F(Node, SquareOfAHugeDepthDoesNotOverflow) {
    // A null move with a reduction far below zero leads to such depths.
    setup.Set("r5k1/8/8/8/8/8/5PPP/6K1 b - - 0 1");
    (void)setup.Node(1000000, 1, 0, 1);
    EXPECT_TRUE(setup.search->IsStopped());  // at the last ply
}

TEST_F(Node, QuietMoveThatRaisedAlphaWithoutReachingBetaCountsAsAMiss) {
    OptionsOff({"Use Futility"});
    setup.Option("LMR Min Moves", "1");
    ASSERT_TRUE(setup.hash.Resize(0));
    setup.Set("7k/7p/8/8/8/8/P7/K7 w - - 0 1");
    CScriptedBase base;
    Score value = 0;
    int depthOfMove = 0;
    base.answer = [&](Score& score, const CPosition& position, int depth, int ply) {
        const Move last = position.undo[position.ply - 1].move;
        const bool isOurs = MoveName(last) == "a1b2";
        depthOfMove = isOurs ? depth : depthOfMove;
        score = isOurs ? -value : 500;
        return ply == 2;
    };
    setup.bases.Add(base);
    const auto node = [&](Score newValue, Score beta) {
        value = newValue;
        (void)setup.search->AlphaBeta(3, 1, 0, beta, true);
    };
    node(1000, 1);  // a hit
    node(-500, 1);
    EXPECT_EQ(depthOfMove, 2);  // more hits than twice the misses: not reduced

    setup.search->ResetSearch();
    node(1000, 1);     // a hit
    node(1000, 2000);  // raises alpha
    node(-500, 1);
    EXPECT_EQ(depthOfMove, 1);
}

// Result

TEST_F(Node, StalemateScoresZeroAndIsStoredAsAnUpperBound) {
    setup.Set("7k/5Q2/8/8/8/8/8/K7 b - - 0 1");
    EXPECT_EQ(setup.Node(2, 9), 0);
    ASSERT_TRUE(Stored());
    EXPECT_EQ(Stored()->score, 0);
    EXPECT_EQ(Stored()->bound, Bound::Upper);
    EXPECT_TRUE(Stored()->move.IsNone());
    EXPECT_EQ(Stored()->depth, 2);
}

TEST_F(Node, MateScoresItsPlyAndIsStoredAsAnUpperBound) {
    setup.Set("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1");
    EXPECT_EQ(setup.Node(2, 9), 9 - 32000);
    ASSERT_TRUE(Stored());
    EXPECT_EQ(Stored()->score, 9 - 32000);
    EXPECT_EQ(Stored()->bound, Bound::Upper);
}

TEST_F(Node, AfterAHundredHalfMovesLegalMovesScoreZeroButAreSearchedFirst) {
    setup.Set("4k3/8/8/8/8/8/8/QR2K3 w - - 100 80");
    EXPECT_EQ(setup.Node(2, 1), 0);
    EXPECT_GT(Nodes(), 30U);
    EXPECT_EQ(Stored()->score, 0);
    EXPECT_EQ(Stored()->bound, Bound::Exact);
    EXPECT_FALSE(Stored()->move.IsNone());
    setup.hash.Clear();
    setup.Set("4k3/8/8/8/8/8/8/QR2K3 w - - 97 80");
    EXPECT_GT(setup.Node(1, 1), 1000);
}

TEST_F(Node, MateOnTheHundredthHalfMoveStaysAMate) {
    setup.Set("R5k1/5ppp/8/8/8/8/8/6K1 b - - 100 80");
    EXPECT_EQ(setup.Node(2, 9), 9 - 32000);
}

TEST_F(Node, StoresWhatItFound) {
    setup.Set(QuietMiddlegame);
    OptionsOff({"Use Futility", "Use Nullmove"});
    const Score score = setup.Node(2, 1);
    ASSERT_TRUE(Stored());
    EXPECT_EQ(Stored()->bound, Bound::Exact);
    EXPECT_EQ(Stored()->score, score);
    EXPECT_EQ(Stored()->depth, 2);
    const Move best = Stored()->move;
    EXPECT_FALSE(best.IsNone());

    setup.hash.Clear();
    EXPECT_EQ(setup.Node(2, 1, score + 200, score + 300), score + 200);
    EXPECT_EQ(Stored()->bound, Bound::Upper);
    EXPECT_EQ(Stored()->score, score + 200);
    EXPECT_TRUE(Stored()->move.IsNone());

    setup.hash.Clear();
    const Score high = setup.Node(2, 1, score - 300, score - 200);
    EXPECT_GE(high, score - 200);
    EXPECT_EQ(Stored()->bound, Bound::Lower);
    EXPECT_EQ(Stored()->score, high);
    EXPECT_FALSE(Stored()->move.IsNone());
}

}  // namespace
}  // namespace brenquil
