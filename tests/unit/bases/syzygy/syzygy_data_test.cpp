// Real tables, where the folder of shared data is there.

#include "syzygy_fixture.h"

#include <fstream>
#include <random>

namespace brenquil {
namespace {

class SyzygyData : public CSyzygyFixture {
protected:
    void SetUp() override {
        CSyzygyFixture::SetUp();
        data = SharedData();
        if (data.empty() || !std::filesystem::exists(data / "syzygy")) {
            GTEST_SKIP() << "no shared data beside the repository";
        }
        options.SetOption("Syzygy Path",
                          (data / "syzygy").string() + ";" + (data / "syzygy5").string());
    }

    /// The best class that a legal move leads to; 99 if a probe failed, -3 without a move.
    int BestOfMoves(const TbPosition& position) {
        TbMoveList list;
        TbGenMoves(position, list);
        int best = -3;
        TbPosition next;
        for (const TbMove move : list) {
            if (TbDoMove(next, position, move)) {
                TbSuccess success = TbSuccess::Found;
                best = std::max(best, -TbProbeWdl(tables, next, success));
                if (success == TbSuccess::Failed) {
                    return 99;
                }
            }
        }
        return best;
    }

    std::filesystem::path data;
};

TEST_F(SyzygyData, AllTablesAreFound) {
    EXPECT_EQ(found.back(), "info string Found 38 tablebases.");
    EXPECT_EQ(tables.SyzygyMaxMen(), 5);
}

TEST_F(SyzygyData, TheListOfExpectedValuesHolds) {
    std::ifstream file(data / "epd" / "syzygy-expected.csv");
    std::string line;
    std::getline(file, line);
    int compared = 0;
    int withoutTable = 0;
    while (std::getline(file, line)) {
        const std::size_t comma = line.find(',');
        const std::size_t second = line.find(',', comma + 1);
        const std::string fen = line.substr(0, comma);
        if (Wdl(fen) == 99) {
            ++withoutTable;
            continue;
        }
        EXPECT_EQ(Wdl(fen), std::stoi(line.substr(comma + 1))) << line;
        EXPECT_EQ(Dtz(fen), std::stoi(line.substr(second + 1))) << line;
        ++compared;
    }
    EXPECT_EQ(compared, 201);
    EXPECT_EQ(withoutTable, 15);
}

TEST_F(SyzygyData, TheListOfEndingsHolds) {
    std::ifstream file(data / "epd" / "endgame-wdl-dtz.epd");
    int compared = 0;
    for (std::string line; std::getline(file, line);) {
        const std::size_t end = line.find(" wdl_table ");
        const std::string fen = line.substr(0, end);
        EXPECT_EQ(Wdl(fen), std::stoi(line.substr(line.find("; wdl ") + 6))) << line;
        EXPECT_EQ(Dtz(fen), std::stoi(line.substr(line.find("; dtz ") + 6))) << line;
        ++compared;
    }
    EXPECT_EQ(compared, 200);
}

TEST_F(SyzygyData, EveryTableIsTheBestOfItsMoves) {
    std::mt19937_64 random(31415);
    int compared = 0;
    for (const std::string& name : AllTableNames()) {
        if (name.size() > 5 && name != "KPPPvK" && name != "KRPPvK" && name != "KBNvKN") {
            continue;
        }
        for (int round = 0; round < 400; ++round) {
            const TbPosition position = support::RandomPosition(name, random);
            if (!TbIsValid(position)) {
                continue;
            }
            TbSuccess success = TbSuccess::Found;
            const int wdl = TbProbeWdl(tables, position, success);
            if (success == TbSuccess::Failed) {
                // Five men: what a capture or promotion leads to is not all there.
                ASSERT_GT(name.size(), 5U) << name;
                continue;
            }
            int best = BestOfMoves(position);
            if (best == 99) {
                continue;
            }
            if (best == -3) {
                best = TbInCheck(position) ? -2 : 0;
            }
            ASSERT_EQ(wdl, best) << name;
            ++compared;
        }
    }
    EXPECT_GT(compared, 8000);
}

TEST_F(SyzygyData, EndingsOfThreeMenAreAllTrue) {
    for (const char* const name : {"KQvK", "KRvK", "KBvK", "KNvK", "KPvK"}) {
        const support::SolvedEnding& ending = solver.Solve(name);
        for (std::size_t index = 0; index < ending.Size(); ++index) {
            if (ending.Class(index) == support::SolvedEnding::Illegal) {
                continue;
            }
            TbSuccess success = TbSuccess::Found;
            ASSERT_EQ(TbProbeWdl(tables, support::PositionOf(ending, index), success),
                      ending.Class(index))
                << name << " " << index;
        }
    }
}

using SyzygyDataSlow = SyzygyData;

/// A seeded sample of an ending of four men against the solver. Every position is compared by
/// `brenquil-tables check`.
TEST_F(SyzygyDataSlow, ASampleOfFourMenIsTrue) {
    std::mt19937_64 random(27182);
    const support::SolvedEnding& ending = solver.Solve("KRvKN");
    int compared = 0;
    while (compared < 100000) {
        const std::size_t index = random() % ending.Size();
        if (ending.Class(index) == support::SolvedEnding::Illegal) {
            continue;
        }
        const TbPosition position = support::PositionOf(ending, index);
        TbSuccess success = TbSuccess::Found;
        const int wdl = TbProbeWdl(tables, position, success);
        ASSERT_EQ(wdl, ending.Class(index)) << index;
        const int dtz = std::abs(TbProbeDtz(tables, position, success));
        ASSERT_NE(success, TbSuccess::Failed);
        ASSERT_LE(std::abs(dtz - (wdl == 0 ? 0 : ending.Distance(index))), 1) << index;
        ++compared;
    }
}

/// Plays endings out by the root's choice alone: a win must be converted in time.
TEST_F(SyzygyData, TheRootConvertsItsWins) {
    const std::pair<const char*, int> games[] = {
        {"8/8/8/3k4/8/8/8/KQ6 w - - 0 1", 20},      {"8/8/8/3k4/8/8/8/KR6 w - - 0 1", 40},
        {"8/8/8/3k4/8/8/8/KBN5 w - - 0 1", 80},     {"8/8/8/3k4/8/8/8/KBB5 w - - 0 1", 60},
        {"8/8/2k2r2/8/8/8/1K6/3Q4 w - - 0 1", 130}, {"8/8/8/8/8/k7/2P5/K7 w - - 0 1", 120},
        {"8/8/8/4k3/8/4K3/4P3/8 b - - 0 1", 120},   {"8/8/8/8/1p6/2k5/8/K2R4 w - - 0 1", 120}};
    for (const auto& [fen, limit] : games) {
        CPosition position = Position(fen);
        const int wdl = Wdl(fen);
        int plies = 0;
        Move move{};
        while (plies < limit && dtzBase.ProbeRoot(move, position)) {
            ASSERT_TRUE(position.MakeMove(move)) << fen;
            ++plies;
            if (wdl == 0 || position.MenCount() == 2) {
                break;
            }
        }
        if (wdl != 0) {
            EXPECT_TRUE(position.inCheck) << fen;
            EXPECT_EQ(probe.SyzygyProbeRoot(position), TbResultCheckmate) << fen;
        }
    }
}

}  // namespace
}  // namespace brenquil
