// What the tables answer for a position of the engine: the choice of the root move, and which parts
// of a position are handed over.

#include "syzygy_fixture.h"

#include <sstream>

namespace brenquil {
namespace {

using SyzygyProbe = CSyzygyFixture;

TEST_F(SyzygyProbe, TheShortestWinIsChosenAndTheEarliestOnATie) {
    MakeAndLoad({"KRvK"});
    int dtz = 0;
    const TbMove mate =
        TbProbeRoot(tables, support::PositionOfFen("k7/8/1K6/8/8/8/8/7R w - - 0 1"), dtz);
    EXPECT_EQ(mate, TbMove::Make(H1, H8));
    EXPECT_EQ(dtz, 1);
    const TbMove capture =
        TbProbeRoot(tables, support::PositionOfFen("8/8/8/8/8/8/1r6/K2k4 w - - 0 1"), dtz);
    EXPECT_EQ(capture, TbMove::Make(A1, B2)) << "the only move that draws is a capture";
}

TEST_F(SyzygyProbe, EveryRootMoveOfAWinLeadsToTheShortestDistance) {
    MakeAndLoad({"KRvK"});
    const support::SolvedEnding& ending = solver.Solve("KRvK");
    std::size_t played = 0;
    for (std::size_t index = 0; index < ending.Size(); index += 97) {
        if (ending.Class(index) != 2 && ending.Class(index) != -2) {
            continue;
        }
        const TbPosition position = support::PositionOf(ending, index);
        int dtz = 0;
        const TbMove move = TbProbeRoot(tables, position, dtz);
        if (move == TbMoveCheckmate) {
            ASSERT_TRUE(TbIsCheckmate(position));
            continue;
        }
        TbPosition next;
        ASSERT_TRUE(TbDoMove(next, position, move));
        TbSuccess success = TbSuccess::Found;
        const int after = TbProbeDtz(tables, next, success);
        ASSERT_TRUE((dtz == 1 && TbIsCheckmate(next)) || after == -(dtz - (dtz > 0 ? 1 : -1)))
            << index << " dtz " << dtz << " after " << after;
        ++played;
    }
    EXPECT_GT(played, 1000U);
}

TEST_F(SyzygyProbe, ADrawnRootPicksTheSamePlaceEachTime) {
    MakeAndLoad({"KBvK"});
    const TbPosition position = support::PositionOfFen("8/8/8/3k4/8/8/8/KB6 w - - 0 1");
    TbMoveList list;
    TbGenMoves(position, list);
    std::vector<TbMove> legal;
    TbPosition next;
    for (const TbMove move : list) {
        if (TbDoMove(next, position, move)) {
            legal.push_back(move);
        }
    }
    const TbMove wanted = legal[0xAADC1A2BE446234DU % legal.size()];
    for (int round = 0; round < 3; ++round) {
        int dtz = 99;
        EXPECT_EQ(TbProbeRoot(tables, position, dtz), wanted);
        EXPECT_EQ(dtz, 0);
    }
    // The same from Black's side, where Black's bishop counts as the first side's.
    int dtz = 0;
    const TbMove mirrored =
        TbProbeRoot(tables, support::PositionOfFen("kb6/8/8/8/3K4/8/8/8 b - - 0 1"), dtz);
    TbMoveList mirroredList;
    TbGenMoves(support::PositionOfFen("kb6/8/8/8/3K4/8/8/8 b - - 0 1"), mirroredList);
    EXPECT_NE(mirrored, TbMoveNone);
    EXPECT_EQ(mirroredList.size(), list.size());
}

TEST_F(SyzygyProbe, MateAndStalemateHaveNoMove) {
    MakeAndLoad({"KQvK"});
    EXPECT_EQ(ProbeRoot("k7/1Q6/K7/8/8/8/8/8 b - - 0 1"), TbResultCheckmate);
    EXPECT_EQ(ProbeRoot("k7/2Q5/1K6/8/8/8/8/8 b - - 0 1"), TbResultStalemate);
}

TEST_F(SyzygyProbe, AWinWithAHighCounterIsSpoiledByTheRule) {
    MakeAndLoad({"KRvK"});
    const TbResult early = ProbeRoot("8/8/8/3k4/8/8/8/KR6 w - - 0 1");
    EXPECT_EQ(early.Class(), 4);
    const int distance = early.Distance();
    const auto fen = [](int clock, char side = 'w') {
        std::ostringstream text;
        text << "8/8/8/3k4/8/8/8/KR6 " << side << " - - " << clock << " 80";
        return text.str();
    };
    EXPECT_EQ(ProbeRoot(fen(100 - distance)).Class(), 4);
    EXPECT_EQ(ProbeRoot(fen(101 - distance)).Class(), 3);
    EXPECT_EQ(ProbeRoot(fen(99)).Class(), 3);
    EXPECT_EQ(ProbeRoot(fen(99)).Distance(), distance);
    const TbResult loss = ProbeRoot("8/8/8/3k4/8/8/8/KR6 b - - 0 1");
    EXPECT_EQ(loss.Class(), 0);
    EXPECT_EQ(ProbeRoot(fen(100 - loss.Distance(), 'b')).Class(), 0);
    EXPECT_EQ(ProbeRoot(fen(101 - loss.Distance(), 'b')).Class(), 1);
}

TEST_F(SyzygyProbe, ACounterBeyondAByteIsNoFreshCounter) {
    MakeAndLoad({"KRvK"});
    CPosition position = Position("8/8/8/3k4/8/8/8/KR6 w - - 0 1");
    const int distance = probe.SyzygyProbeRoot(position).Distance();
    for (const int clock : {254, 255, 256, 300, 2000}) {
        position.halfmoveClock = clock;
        EXPECT_EQ(probe.SyzygyProbeRoot(position).Class(), 3) << clock;
        EXPECT_EQ(probe.SyzygyProbeRoot(position).Distance(), distance) << clock;
    }
}

TEST_F(SyzygyProbe, ImpossiblePositionsAreNotAnswered) {
    MakeAndLoad({"KQvK", "KRvK", "KPvK", "KBvK", "KNvK"});
    EXPECT_EQ(ProbeClass("8/8/8/8/8/8/8/KQ6 w - - 0 1"), -1) << "no king";
    EXPECT_EQ(ProbeClass("8/8/8/8/8/8/8/KKQ5 w - - 0 1"), -1);
    EXPECT_EQ(ProbeClass("7k/8/8/8/8/8/8/KP6 w - - 0 1"), -1) << "pawn on the first rank";
    EXPECT_EQ(ProbeRoot("8/8/8/8/8/8/8/KQ6 w - - 0 1"), TbResultFailed);
    EXPECT_EQ(ProbeRoot("7k/8/8/8/8/8/8/K6Q w - - 0 1"), TbResultFailed) << "king en prise";
    // Kings that touch are no position, but the probe must return.
    (void)ProbeClass("8/8/8/8/8/8/8/KkQ5 w - - 0 1");
}

TEST_F(SyzygyProbe, TheRootWordHoldsTheMove) {
    Make({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    Load();
    const TbResult result = ProbeRoot("8/P6k/8/8/8/8/8/K7 w - - 0 1");
    EXPECT_EQ(result.From(), A7);
    EXPECT_EQ(result.To(), A8);
    EXPECT_EQ(result.Promotion(), static_cast<unsigned>(TbPromoteQueen));
    EXPECT_EQ(result.Distance(), 1);
    EXPECT_FALSE(result.IsEnPassant());
    Move move{};
    ASSERT_TRUE(probe.TbResultToMove(result, move));
    EXPECT_EQ(move.Identity(), Move::Make(A7, A8, MoveKind::Promotion, PromoteQueen).Identity());
    EXPECT_EQ(move.Order(), 1);
}

TEST_F(SyzygyProbe, TheWordBecomesTheMoveOfEachPromotion) {
    const auto moveOf = [&](unsigned promotion) {
        Move move{};
        EXPECT_TRUE(probe.TbResultToMove(
            {4U | 56U << 4U | 48U << 10U | promotion << 16U | 7U << 20U}, move));
        return move;
    };
    EXPECT_EQ(moveOf(0).Kind(), MoveKind::Normal);
    EXPECT_EQ(moveOf(1).Index(), PromoteQueen);
    EXPECT_EQ(moveOf(2).Index(), PromoteRook);
    EXPECT_EQ(moveOf(3).Index(), PromoteBishop);
    EXPECT_EQ(moveOf(4).Index(), PromoteKnight);
    EXPECT_EQ(moveOf(4).Order(), 7);
}

TEST_F(SyzygyProbe, TheScoreFollowsClassAndRule) {
    const auto orderOf = [&](unsigned tbClass) {
        Move move{};
        EXPECT_TRUE(probe.TbResultToMove({tbClass | 8U << 10U | 9U << 20U}, move));
        return move.Order();
    };
    const int withRule[] = {-9, 0, 0, 0, 9};
    const int without[] = {-9, -9, 0, 9, 9};
    for (unsigned tbClass = 0; tbClass < 5; ++tbClass) {
        EXPECT_EQ(orderOf(tbClass), withRule[tbClass]);
    }
    options.SetOption("Syzygy 50 Moves Rule", "false");
    for (unsigned tbClass = 0; tbClass < 5; ++tbClass) {
        EXPECT_EQ(orderOf(tbClass), without[tbClass]);
    }
    Move move{};
    EXPECT_FALSE(probe.TbResultToMove(TbResultFailed, move));
    EXPECT_FALSE(probe.TbResultToMove(TbResultCheckmate, move));
    EXPECT_FALSE(probe.TbResultToMove(TbResultStalemate, move));
}

TEST_F(SyzygyProbe, MoreMenThanTheTablesHaveTouchNoTable) {
    MakeAndLoad({"KQvK"});
    std::filesystem::remove(folder / "KQvK.rtbw");
    EXPECT_EQ(ErrorsOf([&] {
                  EXPECT_EQ(ProbeClass("8/8/8/3k4/8/8/8/KQR5 w - - 0 1"), -1);
                  EXPECT_EQ(ProbeRoot("8/8/8/3k4/8/8/8/KQR5 w - - 0 1"), TbResultFailed);
              }),
              "");
}

TEST_F(SyzygyProbe, TheEnPassantRightOfTheBoardChangesNoAnswer) {
    Make({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    WriteFlat("KPvKP", 0, 0);
    Load();
    constexpr const char* With = "8/8/8/8/3Ppk2/8/8/7K b - d3 0 1";
    constexpr const char* Without = "8/8/8/8/3Ppk2/8/8/7K b - - 0 1";
    ASSERT_NE(Position(With).enPassant, SquareNone);
    EXPECT_EQ(ProbeClass(With), 2);
    EXPECT_EQ(ProbeClass(Without), 2);
    EXPECT_EQ(ProbeRoot(With), ProbeRoot(Without));
    EXPECT_EQ(ProbeRoot(With).Class(), 2) << "the capture would win";
    EXPECT_FALSE(ProbeRoot(With).IsEnPassant());
}

TEST_F(SyzygyProbe, CastlingRightsChangeNoAnswer) {
    MakeAndLoad({"KRvK"});
    constexpr const char* With = "8/8/8/8/8/3k4/8/4K2R w K - 0 1";
    constexpr const char* Without = "8/8/8/8/8/3k4/8/4K2R w - - 0 1";
    ASSERT_NE(Position(With).key, Position(Without).key);
    EXPECT_EQ(ProbeClass(With), 4);
    EXPECT_EQ(ProbeRoot(With), ProbeRoot(Without));
    EXPECT_EQ(ProbeRoot(With).Class(), 4);
}

}  // namespace
}  // namespace brenquil
