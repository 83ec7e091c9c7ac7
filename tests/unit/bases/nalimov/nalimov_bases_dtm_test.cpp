// The whole path: from the options through files, cache and index calculators to answers, held
// against the solver.

#include "../../../support/nalimov_test_folder.h"
#include "bases/nalimov/nalimov_probe.h"
#include "board/move_generator.h"
#include "board/position_text.h"

#include <gtest/gtest.h>
#include <set>

namespace brenquil {
namespace {

using test::Bytes;
using test::CEndgameSolver;
using test::CTestFolder;
using test::NalimovEngine;
using test::TableNumber;
using test::TablePosition;

/// Writes both sides of a table, in a form that depends on `form`.
void WriteTable(const CTestFolder& folder, CEndgameSolver& solver, int table, int form) {
    const NalimovSignature& row = NalimovSignatures[static_cast<std::size_t>(table)];
    for (int side = 0; side < ((row.flags & NalimovSymmetric) != 0 ? 1 : 2); ++side) {
        const Bytes bytes = test::TableBytes(solver, table, side);
        const std::string name = std::string(row.name) + (side == 0 ? ".nbw" : ".nbb");
        if ((form + side) % 2 == 0) {
            folder.Write(name, bytes);
        } else {
            folder.Write(name + ".emd", test::Compressed(bytes));
        }
    }
}

/// The mark that the listing should show beside a move to a position.
std::string ExpectedMark(std::uint8_t plies) {
    if (plies == test::CSolvedEnding::Draw) {
        return "0";
    }
    const int moves = (plies + 1) / 2;
    return plies % 2 == 0 ? "+M" + std::to_string(moves + 1) : "-M" + std::to_string(moves);
}

class CNalimovWholePath : public testing::Test {
protected:
    static void SetUpTestSuite() {
        shared = std::make_unique<Shared>();
        for (int table = 1; table < NalimovFirstFourMen; ++table) {
            WriteTable(shared->folder, shared->solver, table, table);
        }
    }

    static void TearDownTestSuite() { shared.reset(); }

    void Load() {
        ASSERT_TRUE(engine->options.SetOption("NalimovPath", shared->folder.Name()));
        ASSERT_TRUE(engine->options.SetOption("NalimovCache", "1"));
    }

    void SetFen(const std::string& fen) { CPositionText(*position).SetFen(fen); }

    [[nodiscard]] bool Probe(Score& score) {
        return engine->bases.ProbeSearch(score, *position, 100, 1);
    }

    /// All positions of a table with both colours, every `stride`-th one.
    void CheckTable(CEndgameSolver& solver, int table, int side, std::uint64_t stride) {
        std::uint64_t count = 0;
        test::CTableEnumerator(table, side).Visit([&](const TablePosition& men) {
            if (count++ % stride != 0) {
                return;
            }
            const std::uint8_t plies = test::SolvedPlies(
                solver.Ending(std::string(NalimovSignatures[static_cast<std::size_t>(table)].name)),
                men, side);
            for (const bool invert : {false, true}) {
                test::SetUp(*position, men, side, invert);
                Score score = 12345;
                const bool isFound =
                    NalimovProbe(score, *position, engine->bases.Tables(),
                                 const_cast<CNalimovCache&>(engine->bases.Cache()));
                if (!isFound || score != test::ScoreOfPlies(plies)) {
                    ADD_FAILURE() << CPositionText(*position).GetFen() << " " << score << " "
                                  << static_cast<int>(plies);
                }
            }
            CheckMoves(solver);
        });
        EXPECT_GT(count, 0U);
    }

    /// The marks of all moves and the move at the root.
    void CheckMoves(CEndgameSolver& solver) {
        if (++movesChecked % 97 != 0) {
            return;
        }
        MoveList moves;
        CMoveGenerator(*position).GenerateMoves(moves, true, true);
        Move best{0};
        bool isAny = false;
        for (const Move move : moves) {
            const auto after = std::make_unique<CPosition>(*position);
            BaseMoveInfo info;
            const bool isKnown = engine->bases.ProbeMoveInfo(info, move, *position);
            ASSERT_EQ(isKnown, after->MakeMove(move)) << CPositionText(*position).GetFen();
            if (!isKnown) {
                continue;
            }
            const std::uint8_t plies = test::SolvedPlies(solver, *after);
            ASSERT_EQ(info.text, ExpectedMark(plies)) << CPositionText(*after).GetFen();
            ASSERT_EQ(info.move.Order(), -test::ScoreOfPlies(plies));
            ASSERT_TRUE(SameMove(info.move, move));
            if (!isAny || info.move.Order() > best.Order()) {
                best = info.move;
            }
            isAny = true;
        }
        Move root{0};
        ASSERT_EQ(engine->bases.ProbeRoot(root, *position), isAny);
        if (isAny) {
            ASSERT_EQ(root.word, best.word) << CPositionText(*position).GetFen();
        }
    }

    struct Shared {
        CTestFolder folder;
        CEndgameSolver solver;
    };

    inline static std::unique_ptr<Shared> shared;

    std::unique_ptr<NalimovEngine> engine = std::make_unique<NalimovEngine>();
    std::unique_ptr<CPosition> position = std::make_unique<CPosition>();
    int movesChecked = 0;
};

using NalimovWholePath = CNalimovWholePath;
using NalimovWholePathSlowReleaseOnly = CNalimovWholePath;

TEST_F(NalimovWholePath, ThreeMenAnswerEveryPositionCorrectly) {
    Load();
    EXPECT_EQ(engine->printed, std::vector<std::string>{"tablebases 3-men loaded!"});
    for (int table = 1; table < NalimovFirstFourMen; ++table) {
        for (const int side : {0, 1}) {
            CheckTable(shared->solver, table, side, 1);
        }
    }
}

/// With BRENQUIL_NALIMOV_MEN=4 all endings of four men and every position; otherwise pawn against
/// pawn, with all that it can turn into, and every 251st position.
TEST_F(NalimovWholePathSlowReleaseOnly, FourMenAnswerCorrectly) {
    const char* const men = std::getenv("BRENQUIL_NALIMOV_MEN");
    const bool all = men != nullptr && std::string(men) == "4";
    CTestFolder folder;
    CEndgameSolver solver;
    (void)solver.Ending("kpkp");
    std::vector<int> tables;
    for (int table = 1; table < NalimovFirstFiveMen; ++table) {
        const std::string name(NalimovSignatures[static_cast<std::size_t>(table)].name);
        const bool fromPawns = name.size() == 3 || (name.size() == 4 && name[2] == 'k');
        if (all || fromPawns) {
            WriteTable(folder, solver, table, table);
            tables.push_back(table);
        }
    }
    engine->options.SetOption("NalimovPath", folder.Name());
    engine->options.SetOption("NalimovCache", "8");
    ASSERT_EQ(engine->printed, std::vector<std::string>{"tablebases 4-men loaded!"});
    for (const int table : tables) {
        for (const int side : {0, 1}) {
            CheckTable(solver, table, side, all ? 1 : 251);
        }
    }
}

TEST_F(NalimovWholePath, DefaultsLoadNothingAndAllocateTheCache) {
    EXPECT_EQ(engine->bases.Tables().menLoaded, 0);
    EXPECT_EQ(engine->bases.Cache().Megabytes(), 32);
    EXPECT_EQ(engine->options.nalimovUsage, CNalimovOptions::OnRoot);
    EXPECT_TRUE(engine->printed.empty());
    EXPECT_EQ(engine->bases.GetPriority(), 2U);
}

TEST_F(NalimovWholePath, PathThatIsNotThereSaysNothing) {
    engine->options.SetOption("NalimovPath", "nowhere");
    EXPECT_TRUE(engine->printed.empty());
    Load();
    engine->options.SetOption("NalimovPath", "<empty>");
    EXPECT_EQ(engine->bases.Tables().menLoaded, 0);
    EXPECT_EQ(engine->printed.size(), 1U);
}

TEST_F(NalimovWholePath, ChangesEndTheSearchAndRepeatsDoNothing) {
    const int before = engine->searchesEnded;
    engine->options.SetOption("NalimovCache", "32");
    engine->options.SetOption("NalimovCache", "many");
    EXPECT_EQ(engine->searchesEnded, before);
    EXPECT_EQ(engine->bases.Cache().Megabytes(), 32);
    Load();
    EXPECT_EQ(engine->searchesEnded, before + 2);
    engine->bases.SetPath(shared->folder.Name());
    EXPECT_EQ(engine->searchesEnded, before + 2);
}

TEST_F(NalimovWholePath, UnknownUsageLeavesTheOldOne) {
    engine->options.SetOption("Nalimov Usage", "InSearch");
    EXPECT_EQ(engine->options.nalimovUsage, CNalimovOptions::InSearch);
    engine->options.SetOption("Nalimov Usage", "Sometimes");
    EXPECT_EQ(engine->options.nalimovUsage, CNalimovOptions::InSearch);
    engine->options.SetOption("Nalimov Usage", "Never");
    EXPECT_EQ(engine->options.nalimovUsage, CNalimovOptions::Never);
}

TEST_F(NalimovWholePath, UsageDecidesWhoIsAnswered) {
    Load();
    SetFen("8/8/8/8/8/2k5/8/K6Q w - - 0 1");
    Score score = 0;
    Move move{0};
    BaseMoveInfo info;
    const Move step = CPositionText::TextToMove("h1g1", *position, false);
    const auto answers = [&] {
        return std::vector<bool>{Probe(score), engine->bases.ProbeRoot(move, *position),
                                 engine->bases.ProbeMoveInfo(info, step, *position)};
    };
    engine->options.SetOption("Nalimov Usage", "Never");
    EXPECT_EQ(answers(), (std::vector<bool>{false, false, false}));
    engine->options.SetOption("Nalimov Usage", "OnRoot");
    EXPECT_EQ(answers(), (std::vector<bool>{false, true, true}));
    engine->options.SetOption("Nalimov Usage", "InSearch");
    EXPECT_EQ(answers(), (std::vector<bool>{true, true, true}));
}

TEST_F(NalimovWholePath, MoreMenThanLoadedAreNotAnswered) {
    Load();
    engine->options.SetOption("Nalimov Usage", "InSearch");
    SetFen("8/8/8/8/8/2k5/8/K5QQ w - - 0 1");
    Score score = 0;
    Move move{0};
    BaseMoveInfo info;
    EXPECT_FALSE(Probe(score));
    EXPECT_FALSE(engine->bases.ProbeRoot(move, *position));
    EXPECT_FALSE(engine->bases.ProbeMoveInfo(
        info, CPositionText::TextToMove("h1h2", *position, false), *position));
}

TEST_F(NalimovWholePath, DrawnPositionGivesRootMoveWithScoreZero) {
    Load();
    SetFen("8/8/8/8/8/2k5/8/K6N w - - 0 1");
    Move move{0};
    ASSERT_TRUE(engine->bases.ProbeRoot(move, *position));
    EXPECT_EQ(move.Order(), 0);
    EXPECT_FALSE(move.IsNone());
}

TEST_F(NalimovWholePath, MateInOneIsTheMoveAtTheRoot) {
    Load();
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 0 1");
    Move move{0};
    ASSERT_TRUE(engine->bases.ProbeRoot(move, *position));
    EXPECT_EQ(CPositionText::MoveToText(move, *position, CastlingNotation::KingTarget), "g1g7");
    EXPECT_EQ(move.Order(), 32000);
    BaseMoveInfo info;
    ASSERT_TRUE(engine->bases.ProbeMoveInfo(info, move, *position));
    EXPECT_EQ(info.text, "+M1");
}

TEST_F(NalimovWholePath, MatedSideHasNoMoveAndNoAnswerAtTheRoot) {
    Load();
    SetFen("7k/6Q1/5K2/8/8/8/8/8 b - - 0 1");
    Move move{0};
    EXPECT_FALSE(engine->bases.ProbeRoot(move, *position));
}

TEST_F(NalimovWholePath, IllegalMoveHasNoMark) {
    Load();
    SetFen("8/8/8/8/8/2k5/8/K6Q w - - 0 1");
    BaseMoveInfo info;
    EXPECT_FALSE(engine->bases.ProbeMoveInfo(
        info, CPositionText::TextToMove("a1b2", *position, false), *position));
}

TEST_F(NalimovWholePath, SearchScoresFoldTheDistanceFromTheRoot) {
    Load();
    engine->options.SetOption("Nalimov Usage", "InSearch");
    Score score = 0;
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 0 1");
    ASSERT_TRUE(engine->bases.ProbeSearch(score, *position, 6, 5));
    EXPECT_EQ(score, 31998 - 5);
    SetFen("7k/6Q1/5K2/8/8/8/8/8 b - - 0 1");
    ASSERT_TRUE(engine->bases.ProbeSearch(score, *position, 6, 5));
    EXPECT_EQ(score, -32000 + 5);
    SetFen("8/8/8/8/8/2k5/8/K6N w - - 0 1");
    ASSERT_TRUE(engine->bases.ProbeSearch(score, *position, 6, 5));
    EXPECT_EQ(score, 0);
}

TEST_F(NalimovWholePath, SearchAsksFromPlyOneAndTheLeastDepthOn) {
    Load();
    engine->options.SetOption("Nalimov Usage", "InSearch");
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 0 1");
    Score score = 0;
    EXPECT_FALSE(engine->bases.ProbeSearch(score, *position, 6, 0));
    EXPECT_FALSE(engine->bases.ProbeSearch(score, *position, 5, 1));
    EXPECT_TRUE(engine->bases.ProbeSearch(score, *position, 6, 1));
    engine->options.SetOption("Nalimov Min Depth", "7");
    EXPECT_FALSE(engine->bases.ProbeSearch(score, *position, 6, 1));
}

TEST_F(NalimovWholePath, RunningFiftyMoveClockForbidsAnswersFromPlyThreeOn) {
    Load();
    engine->options.SetOption("Nalimov Usage", "InSearch");
    Score score = 0;
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 1 1");
    EXPECT_TRUE(engine->bases.ProbeSearch(score, *position, 6, 2));
    EXPECT_FALSE(engine->bases.ProbeSearch(score, *position, 6, 3));
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 0 1");
    EXPECT_TRUE(engine->bases.ProbeSearch(score, *position, 6, 3));
}

TEST_F(NalimovWholePath, BareKingsAreDrawOnceAnyTableIsLoaded) {
    engine->options.SetOption("Nalimov Usage", "InSearch");
    SetFen("7k/8/5K2/8/8/8/8/8 w - - 0 1");
    Score score = 77;
    EXPECT_FALSE(Probe(score));
    const CTestFolder onlyQueen;
    WriteTable(onlyQueen, shared->solver, TableNumber("kqk"), 0);
    engine->options.SetOption("NalimovPath", onlyQueen.Name());
    ASSERT_TRUE(Probe(score));
    EXPECT_EQ(score, 0);
    engine->options.SetOption("NalimovCache", "0");
    EXPECT_TRUE(Probe(score)) << "no table is read";
}

TEST_F(NalimovWholePath, MissingSideAnswersFalseForThatSideOnly) {
    const CTestFolder folder;
    folder.Write("kqk.nbb", test::TableBytes(shared->solver, TableNumber("kqk"), 1));
    engine->options.SetOption("NalimovPath", folder.Name());
    engine->options.SetOption("Nalimov Usage", "InSearch");
    Score score = 0;
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 0 1");
    EXPECT_FALSE(Probe(score));
    SetFen("7k/8/5K2/8/8/8/8/6Q1 b - - 0 1");
    EXPECT_TRUE(Probe(score));
    SetFen("7K/8/5k2/8/8/8/8/6q1 w - - 0 1");
    EXPECT_TRUE(Probe(score)) << "colours exchanged";
    SetFen("7K/8/5k2/8/8/8/8/6q1 b - - 0 1");
    EXPECT_FALSE(Probe(score));
}

TEST_F(NalimovWholePath, MovesThatNoTableKnowsAreLeftOutAtTheRoot) {
    // Only the queen's table: of the promotions one is known, of the other moves none.
    const CTestFolder folder;
    WriteTable(folder, shared->solver, TableNumber("kqk"), 0);
    engine->options.SetOption("NalimovPath", folder.Name());
    SetFen("8/4P3/8/8/8/8/k7/6K1 w - - 0 1");
    Move move{0};
    ASSERT_TRUE(engine->bases.ProbeRoot(move, *position));
    EXPECT_EQ(CPositionText::MoveToText(move, *position, CastlingNotation::KingTarget), "e7e8q");
    SetFen("8/8/4P3/8/8/8/k7/6K1 w - - 0 1");
    EXPECT_FALSE(engine->bases.ProbeRoot(move, *position));
}

TEST_F(NalimovWholePath, StrangePositionsAreNotAnsweredAndBreakNothing) {
    Load();
    engine->options.SetOption("Nalimov Usage", "InSearch");
    for (const char* const fen : {"8/8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/K6Q w - - 0 1",
                                  "kk6/8/8/8/8/8/8/K7 w - - 0 1", "QQQ5/8/8/8/8/8/8/8 w - - 0 1",
                                  "P6k/8/8/8/8/8/8/K7 w - - 0 1", "Qk6/8/8/8/8/8/8/K7 w - - 0 1",
                                  "8/8/8/8/8/8/kQ6/K7 w - - 0 1", "8/8/8/8/4p3/8/8/8 b - e3 0 1"}) {
        SetFen(fen);
        Score score = 0;
        EXPECT_FALSE(Probe(score)) << fen;
        Move move{0};
        (void)engine->bases.ProbeRoot(move, *position);
    }
    SetFen("7k/8/5K2/8/8/8/8/6Q1 w - - 0 1");
    Score score = 0;
    EXPECT_TRUE(Probe(score));
}

}  // namespace
}  // namespace brenquil
