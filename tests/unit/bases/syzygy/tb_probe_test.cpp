#include "../../../support/sanitized.h"
#include "bases/syzygy/tb_index_tables.h"
#include "bases/syzygy/tb_probe.h"
#include "syzygy_fixture.h"

#include <bit>
#include <cstdlib>

namespace brenquil {
namespace {

#ifdef BRENQUIL_IS_SANITIZED
// A sanitizer looks at how a value is read, not at which: an odd step meets both sides to move.
constexpr std::size_t Step = 7;
#else
constexpr std::size_t Step = 1;
#endif

class TbProbe : public CSyzygyFixture {
protected:
    /// Of positions that mirror each other: all, or at least the one whose first king stands in
    /// front. They share a place, whatever the table is like.
    enum class Images { All, One };

    /// Compares class and distance of the positions of a solved ending; of each seventh where a
    /// sanitizer is at work.
    /// @param excess  how much more or less than the truth a distance may be
    void Compare(Images images, const char* name, int excess, bool mateInOneIsTwo) {
        const support::SolvedEnding& ending = solver.Solve(name);
        const bool hasPawns = std::string_view(name).find('P') != std::string_view::npos;
        std::size_t compared = 0;
        for (std::size_t index = 0; index < ending.Size(); index += Step) {
            const int wanted = ending.Class(index);
            const Square king = ending.SquaresOf(index)[0];
            const bool isFront = FileOf(king) <= 3 && (hasPawns || RankOf(king) <= FileOf(king));
            if (wanted == support::SolvedEnding::Illegal || (images == Images::One && !isFront)) {
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
        EXPECT_GT(compared, (images == Images::All ? 300000U : 50000U) / Step);
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
};

TEST_F(TbProbe, AMadeTableWithoutPawnsSaysTheTruth) {
    MakeAndLoad({"KRvK"});
    Compare(Images::All, "KRvK", 0, false);
}

TEST_F(TbProbe, AMadeTableWithPawnsSaysTheTruth) {
    MakeAndLoad({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    Compare(Images::All, "KPvK", 0, false);
}

TEST_F(TbProbe, ATableOfTheWrongSideGivesTheValueByOnePly) {
    WriteWdl(TrueWdl("KRvK"));
    support::DtzTable dtz = TrueDtz("KRvK");
    dtz.side = 1;
    WriteDtz(dtz);
    Load();
    Compare(Images::One, "KRvK", 0, true);
    EXPECT_EQ(Dtz("k7/8/1K6/8/8/8/8/7R w - - 0 1"), 2) << "a mate in one";
}

TEST_F(TbProbe, APawnTableOfTheWrongSideGivesTheValueByOnePly) {
    Make({"KQvK", "KRvK", "KBvK", "KNvK"});
    WriteWdl(TrueWdl("KPvK"));
    support::DtzTable dtz = TrueDtz("KPvK");
    dtz.side = 1;
    WriteDtz(dtz);
    Load();
    Compare(Images::One, "KPvK", 0, true);
}

TEST_F(TbProbe, AMapStandsBetweenStoredAndMeantValues) {
    WriteWdl(TrueWdl("KRvK"));
    support::DtzTable dtz = TrueDtz("KRvK");
    dtz.hasMap = true;
    WriteDtz(dtz);
    Load();
    Compare(Images::One, "KRvK", 0, false);
}

TEST_F(TbProbe, EachFileGroupHasMapsOfItsOwn) {
    Make({"KQvK", "KRvK", "KBvK", "KNvK"});
    WriteWdl(TrueWdl("KPvK"));
    support::DtzTable dtz = TrueDtz("KPvK");
    dtz.hasMap = true;
    WriteDtz(dtz);
    Load();
    Compare(Images::One, "KPvK", 0, false);
}

TEST_F(TbProbe, DistancesInMovesAreRoundedPlies) {
    WriteWdl(TrueWdl("KRvK"));
    support::DtzTable dtz = TrueDtz("KRvK");
    const auto plies = dtz.value;
    dtz.value = [plies](const TbPosition& position) { return plies(position) / 2; };
    dtz.winPlies = dtz.lossPlies = false;
    WriteDtz(dtz);
    Load();
    Compare(Images::One, "KRvK", 1, false);
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
    Compare(Images::One, "KPvK", 0, false);
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

}  // namespace
}  // namespace brenquil
