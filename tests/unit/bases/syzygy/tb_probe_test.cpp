#include "bases/syzygy/tb_index_tables.h"
#include "bases/syzygy/tb_probe.h"
#include "syzygy_fixture.h"

#include <bit>
#include <cstdlib>
#include <sstream>

namespace brenquil {
namespace {

class TbProbe : public CSyzygyFixture {
protected:
    /// Compares class and distance of every position of a solved ending.
    /// @param excess  how much more or less than the truth a distance may be
    void CompareAll(const char* name, int excess, bool mateInOneIsTwo) {
        const support::SolvedEnding& ending = solver.Solve(name);
        std::size_t compared = 0;
        for (std::size_t index = 0; index < ending.Size(); ++index) {
            const int wanted = ending.Class(index);
            if (wanted == support::SolvedEnding::Illegal) {
                continue;
            }
            const TbPosition position = support::PositionOf(ending, index);
            TbSuccess success = TbSuccess::Found;
            ASSERT_EQ(TbProbeWdl(tables, position, success), wanted) << index;
            ASSERT_NE(success, TbSuccess::Failed);
            const int dtz = TbProbeDtz(tables, position, success);
            ASSERT_NE(success, TbSuccess::Failed);
            const int truth = wanted == 0 ? 0 : ending.Distance(index) * (wanted > 0 ? 1 : -1);
            if (!(mateInOneIsTwo && truth == 1 && dtz == 2)) {
                ASSERT_LE(std::abs(dtz - truth), wanted == 0 ? 0 : excess) << index;
            }
            ++compared;
        }
        EXPECT_GT(compared, 300000U);
    }

    void WriteWdl(const support::WdlTable& table) {
        support::WriteBytes(folder / (table.name + ".rtbw"), support::MakeWdlFile(table));
    }

    void WriteDtz(const support::DtzTable& table) {
        support::WriteBytes(folder / (table.name + ".rtbz"), support::MakeDtzFile(table));
    }

    support::WdlTable TrueWdl(const char* name) {
        return {name, support::SolvedClasses(solver, name)};
    }

    support::DtzTable TrueDtz(const char* name) {
        return {name, support::SolvedClasses(solver, name), support::SolvedDistances(solver, name)};
    }

    void WriteFlat(const char* name, int value, unsigned side) {
        support::WriteBytes(folder / (std::string(name) + ".rtbw"),
                            support::MakeFlatWdlFile(name, value));
        support::WriteBytes(folder / (std::string(name) + ".rtbz"),
                            support::MakeFlatDtzFile(name, side));
    }
};

TEST_F(TbProbe, AMadeTableWithoutPawnsSaysTheTruth) {
    MakeAndLoad({"KRvK"});
    CompareAll("KRvK", 0, false);
}

TEST_F(TbProbe, AMadeTableWithPawnsSaysTheTruth) {
    MakeAndLoad({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    CompareAll("KPvK", 0, false);
}

TEST_F(TbProbe, ATableOfTheWrongSideGivesTheValueByOnePly) {
    WriteWdl(TrueWdl("KRvK"));
    support::DtzTable dtz = TrueDtz("KRvK");
    dtz.side = 1;
    WriteDtz(dtz);
    Load();
    CompareAll("KRvK", 0, true);
    EXPECT_EQ(Dtz("k7/8/1K6/8/8/8/8/7R w - - 0 1"), 2) << "a mate in one";
}

TEST_F(TbProbe, APawnTableOfTheWrongSideGivesTheValueByOnePly) {
    Make({"KQvK", "KRvK", "KBvK", "KNvK"});
    WriteWdl(TrueWdl("KPvK"));
    support::DtzTable dtz = TrueDtz("KPvK");
    dtz.side = 1;
    WriteDtz(dtz);
    Load();
    CompareAll("KPvK", 0, true);
}

TEST_F(TbProbe, AMapStandsBetweenStoredAndMeantValues) {
    WriteWdl(TrueWdl("KRvK"));
    support::DtzTable dtz = TrueDtz("KRvK");
    dtz.hasMap = true;
    WriteDtz(dtz);
    Load();
    CompareAll("KRvK", 0, false);
}

TEST_F(TbProbe, EachFileGroupHasMapsOfItsOwn) {
    Make({"KQvK", "KRvK", "KBvK", "KNvK"});
    WriteWdl(TrueWdl("KPvK"));
    support::DtzTable dtz = TrueDtz("KPvK");
    dtz.hasMap = true;
    WriteDtz(dtz);
    Load();
    CompareAll("KPvK", 0, false);
}

TEST_F(TbProbe, DistancesInMovesAreRoundedPlies) {
    WriteWdl(TrueWdl("KRvK"));
    support::DtzTable dtz = TrueDtz("KRvK");
    const auto plies = dtz.value;
    dtz.value = [plies](const TbPosition& position) { return plies(position) / 2; };
    dtz.winPlies = dtz.lossPlies = false;
    WriteDtz(dtz);
    Load();
    CompareAll("KRvK", 1, false);
}

TEST_F(TbProbe, TheOrderOfTheGroupsIsFree) {
    Make({"KQvK", "KRvK", "KBvK", "KNvK"});
    support::WdlTable wdl = TrueWdl("KPvK");
    wdl.order = 1;
    WriteWdl(wdl);
    support::DtzTable dtz = TrueDtz("KPvK");
    dtz.order = 2;
    WriteDtz(dtz);
    Load();
    CompareAll("KPvK", 0, false);
}

/// Pawns on both sides: what a table holds is found again, whatever it means.
TEST_F(TbProbe, PawnsOfBothSidesAreNumberedTogether) {
    const auto value = [](const TbPosition& position) {
        return std::countr_zero(position.pawns & position.white) / 8 % 3 +
               std::countr_zero(position.kings & position.black) / 32 - 2;
    };
    support::WdlTable table{"KPvKP", value};
    table.split = false;
    table.order = 1;
    table.secondOrder = 0;
    WriteWdl(table);
    Load();
    const int expected[][2] = {{0, 0}, {1, 8}, {3, 35}, {6, 60}};
    std::size_t compared = 0;
    for (Square white = A2; white <= H7; white += 3) {
        for (Square black = A2; black <= H7; black += 5) {
            for (const auto& kings : expected) {
                TbPosition position;
                position.pawns = BitOf(white) | BitOf(black);
                position.kings = BitOf(kings[0] + 2) | BitOf(kings[1] + 3);
                position.white = BitOf(white) | BitOf(kings[0] + 2);
                position.black = BitOf(black) | BitOf(kings[1] + 3);
                TbMoveList captures;
                TbGenCaptures(position, captures);
                if (captures.size() != 0 || !TbIsValid(position) || RankOf(white) == 6 ||
                    RankOf(black) == 1) {
                    continue;
                }
                TbSuccess success = TbSuccess::Found;
                ASSERT_EQ(TbProbeWdl(tables, position, success), value(position));
                ASSERT_EQ(success, TbSuccess::Found);
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 100U);
}

TEST_F(TbProbe, ASymmetricTableReadsTheFirstSideForBoth) {
    support::WdlTable table{"KNvKN", [](const TbPosition& position) {
                                const Square knight =
                                    std::countr_zero(position.knights & position.white);
                                return TriangleClass[knight] % 2 == 0 ? 2 : -1;
                            }};
    table.split = false;
    WriteWdl(table);
    Load();
    const auto both = [&](const char* white, const char* black) {
        EXPECT_NE(Wdl(white), 99);
        EXPECT_EQ(Wdl(white), Wdl(black));
    };
    both("7k/8/8/8/4n3/8/2N5/K7 w - - 0 1", "k7/2n5/8/4N3/8/8/8/7K b - - 0 1");
    both("7k/8/8/8/4n3/8/1N6/K7 w - - 0 1", "k7/1n6/8/4N3/8/8/8/7K b - - 0 1");
    const TbPosition board = support::PositionOfFen("7k/8/8/8/4n3/8/2N5/K7 w - - 0 1");
    const TbEntry* const entry = tables.TbFindWdl(board, MaterialKey(board, false));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->groups[0][1].stream, nullptr) << "nothing is stored for the second side";
}

TEST_F(TbProbe, AFileWithoutSplitAnswersForOneSideOnly) {
    support::WdlTable table = TrueWdl("KRvK");
    table.split = false;
    WriteWdl(table);
    Load();
    EXPECT_EQ(Wdl("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 2);
    EXPECT_EQ(Wdl("8/8/8/3k4/8/8/8/KR6 b - - 0 1"), 99);
}

TEST_F(TbProbe, AFileOfOneGroupAnswersForTheOutermostFilesOnly) {
    Make({"KQvK", "KRvK", "KBvK", "KNvK"});
    support::WdlTable table = TrueWdl("KPvK");
    table.hasFiles = false;
    WriteWdl(table);
    Load();
    EXPECT_EQ(Wdl("8/8/8/8/7k/8/P7/K7 w - - 0 1"), 2);
    EXPECT_EQ(Wdl("8/8/8/8/k7/8/7P/7K w - - 0 1"), 2);
    EXPECT_EQ(Wdl("8/8/8/8/k7/8/6P1/7K w - - 0 1"), 99);
}

TEST_F(TbProbe, MoreThanTwoLikeMenAreOneGroup) {
    WriteFlat("KNNNvK", 1, 0);
    Load();
    EXPECT_EQ(Wdl("8/8/8/3k4/8/8/8/KNNN4 w - - 0 1"), 1);
    const TbPosition board = support::PositionOfFen("8/8/8/3k4/8/8/8/KNNN4 w - - 0 1");
    const TbEntry* const entry = tables.TbFindWdl(board, MaterialKey(board, false));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->shape.encodingType, 2);
    EXPECT_EQ(entry->groups[0][0].layout.groupSizes[2], 3);
    EXPECT_EQ(entry->groups[0][0].layout.size, 462U * 37820);
}

TEST_F(TbProbe, CapturesGoBeforeTheTable) {
    // The table holds nonsense; the queen is taken all the same.
    WriteFlat("KQvKR", -2, 0);
    Make({"KQvK", "KRvK"});
    Load();
    EXPECT_EQ(Wdl("8/8/8/8/8/8/1r6/KQ4k1 w - - 0 1"), 2);
    EXPECT_EQ(Dtz("8/8/8/8/8/8/1r6/KQ4k1 w - - 0 1"), 1);
}

TEST_F(TbProbe, TheClassesBetweenDrawAndWinHaveDistancesBeyondAHundred) {
    for (const char* const name : {"KRBvKR", "KRBBvKR"}) {
        WriteFlat(name, 1, 0);
    }
    Load();
    EXPECT_EQ(tables.SyzygyMaxMen(), 6);
    EXPECT_EQ(Wdl("8/8/8/3k4/7r/8/3B4/KR6 w - - 0 1"), 1);
    EXPECT_EQ(Dtz("8/8/8/3k4/7r/8/3B4/KR6 w - - 0 1"), 101);
    EXPECT_EQ(ProbeClass("8/8/8/3k4/7r/8/3B4/KR6 w - - 0 1"), 3);
    EXPECT_EQ(ProbeClass("8/8/8/3k4/7r/8/3BB3/KR6 w - - 0 1"), 3);
    WriteFlat("KRBvKR", -1, 0);
    options.SetOption("Syzygy Path", folder.string() + ";");
    EXPECT_EQ(Wdl("8/8/8/3k4/7r/8/3B4/KR6 w - - 0 1"), -1);
    EXPECT_EQ(Dtz("8/8/8/3k4/7r/8/3B4/KR6 w - - 0 1"), -101);
    EXPECT_EQ(ProbeClass("8/8/8/3k4/7r/8/3B4/KR6 w - - 0 1"), 1);
}

TEST_F(TbProbe, DistancesOfTheClassesBetweenCountMovesBeyondAHundred) {
    support::WdlTable wdl{"KRvK", [](const TbPosition& p) { return p.turn ? 1 : -1; }};
    WriteWdl(wdl);
    support::DtzTable dtz{"KRvK", wdl.value, [](const TbPosition& p) {
                              return tables::ChebyshevDistance(std::countr_zero(p.kings & p.white),
                                                               std::countr_zero(p.rooks));
                          }};
    dtz.hasMap = true;
    WriteDtz(dtz);
    Load();
    // Whatever the flags say of plies, these classes are stored in moves.
    EXPECT_EQ(Dtz("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 103);
    EXPECT_EQ(Dtz("8/8/8/3k4/8/7R/8/K7 w - - 0 1"), 115);
    EXPECT_EQ(Dtz("8/8/8/3k4/8/8/8/KR6 b - - 0 1"), -104) << "by one ply";
}

// En passant, with tables whose contents make the difference plain.

TEST_F(TbProbe, AnEnPassantCaptureThatWinsBeatsADrawnTable) {
    Make({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    WriteFlat("KPvKP", 0, 0);
    Load();
    constexpr const char* With = "8/8/8/8/3Ppk2/8/8/7K b - d3 0 1";
    constexpr const char* Without = "8/8/8/8/3Ppk2/8/8/7K b - - 0 1";
    EXPECT_EQ(Wdl(With), 2);
    EXPECT_EQ(Wdl(Without), 0);
    EXPECT_EQ(Dtz(With), 1);
    EXPECT_EQ(Dtz(Without), 0);
    // The board's right is never handed over.
    EXPECT_EQ(ProbeClass(With), 2);
    EXPECT_EQ(ProbeClass(Without), 2);
}

TEST_F(TbProbe, AnEnPassantCaptureThatIsTheOnlyMoveMustBePlayed) {
    Make({"KQvK"});
    WriteFlat("KQvKP", 2, 0);
    WriteFlat("KQPvKP", 0, 0);
    Load();
    // Black's king has no square and the pawn is blocked; after taking, White is said to win.
    constexpr const char* Forced = "8/8/8/8/1Pp5/2K5/2Q5/k7 b - b3 0 1";
    EXPECT_EQ(Wdl(Forced), -2);
    EXPECT_EQ(Dtz(Forced), -1);
    // With the queen elsewhere the king can move, and the draw of the table stands.
    constexpr const char* Free = "8/8/8/8/1Pp5/2K5/7Q/k7 b - b3 0 1";
    EXPECT_EQ(Wdl(Free), 0);
    EXPECT_EQ(Dtz(Free), 0);
}

// Choice of the root move.

TEST_F(TbProbe, TheShortestWinIsChosenAndTheEarliestOnATie) {
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

TEST_F(TbProbe, EveryRootMoveOfAWinLeadsToTheShortestDistance) {
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

TEST_F(TbProbe, ADrawnRootPicksTheSamePlaceEachTime) {
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
    const TbMove wanted = legal[0xaadc1a2be446234dU % legal.size()];
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

TEST_F(TbProbe, MateAndStalemateHaveNoMove) {
    MakeAndLoad({"KQvK"});
    EXPECT_EQ(ProbeRoot("k7/1Q6/K7/8/8/8/8/8 b - - 0 1"), TbResultCheckmate);
    EXPECT_EQ(ProbeRoot("k7/2Q5/1K6/8/8/8/8/8 b - - 0 1"), TbResultStalemate);
}

TEST_F(TbProbe, AWinWithAHighCounterIsSpoiledByTheRule) {
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

TEST_F(TbProbe, ACounterBeyondAByteIsNoFreshCounter) {
    MakeAndLoad({"KRvK"});
    CPosition position = Position("8/8/8/3k4/8/8/8/KR6 w - - 0 1");
    const int distance = probe.SyzygyProbeRoot(position).Distance();
    for (const int clock : {254, 255, 256, 300, 2000}) {
        position.halfmoveClock = clock;
        EXPECT_EQ(probe.SyzygyProbeRoot(position).Class(), 3) << clock;
        EXPECT_EQ(probe.SyzygyProbeRoot(position).Distance(), distance) << clock;
    }
}

TEST_F(TbProbe, ImpossiblePositionsAreNotAnswered) {
    MakeAndLoad({"KQvK", "KRvK", "KPvK", "KBvK", "KNvK"});
    EXPECT_EQ(ProbeClass("8/8/8/8/8/8/8/KQ6 w - - 0 1"), -1) << "no king";
    EXPECT_EQ(ProbeClass("8/8/8/8/8/8/8/KKQ5 w - - 0 1"), -1);
    EXPECT_EQ(ProbeClass("7k/8/8/8/8/8/8/KP6 w - - 0 1"), -1) << "pawn on the first rank";
    EXPECT_EQ(ProbeRoot("8/8/8/8/8/8/8/KQ6 w - - 0 1"), TbResultFailed);
    EXPECT_EQ(ProbeRoot("7k/8/8/8/8/8/8/K6Q w - - 0 1"), TbResultFailed) << "king en prise";
    // Kings that touch are no position, but the probe must come back.
    (void)ProbeClass("8/8/8/8/8/8/8/KkQ5 w - - 0 1");
}

TEST_F(TbProbe, TheRootWordHoldsTheMove) {
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

TEST_F(TbProbe, TheWordBecomesTheMoveOfEachPromotion) {
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

TEST_F(TbProbe, TheScoreFollowsClassAndRule) {
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

TEST_F(TbProbe, MoreMenThanTheTablesHaveTouchNoTable) {
    MakeAndLoad({"KQvK"});
    std::filesystem::remove(folder / "KQvK.rtbw");
    EXPECT_EQ(ErrorsOf([&] {
                  EXPECT_EQ(ProbeClass("8/8/8/3k4/8/8/8/KQR5 w - - 0 1"), -1);
                  EXPECT_EQ(ProbeRoot("8/8/8/3k4/8/8/8/KQR5 w - - 0 1"), TbResultFailed);
              }),
              "");
}

}  // namespace
}  // namespace brenquil
