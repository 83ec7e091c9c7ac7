// The whole path, from the options through files, cache and index calculators to the answers,
// compared with the solver.

#include "../../../support/nalimov_test_folder.h"
#include "bases/nalimov/nalimov_probe.h"
#include "board/move_generator.h"
#include "board/position_text.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <random>
#include <set>

namespace brenquil {
namespace {

using test::Bytes;
using test::CSolvedMates;
using test::CTestFolder;
using test::NalimovEngine;
using test::TableNumber;
using test::TablePosition;

/// Writes both sides of a table, in a form that depends on `form`.
void WriteTable(const CTestFolder& folder, CSolvedMates& solver, int table, int form) {
    const NalimovSignature& row = NalimovSignatures[static_cast<std::size_t>(table)];
    for (int side = 0; side < ((row.flags & NalimovSymmetric) != 0 ? 1 : 2); ++side) {
        const Bytes bytes = solver.TableBytes(table, side);
        const std::string name = std::string(row.name) + (side == 0 ? ".nbw" : ".nbb");
        if ((form + side) % 2 == 0) {
            folder.Write(name, bytes);
        } else {
            folder.Write(name + ".emd", test::Compressed(bytes));
        }
    }
}

/// The mark that the listing should show beside a move to a position.
std::string ExpectedMark(int plies) {
    if (plies == CSolvedMates::Draw) {
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

    /// All positions of a table with both colours, or a sample, one in `oneOf`. Returns how many.
    std::uint64_t CheckTable(CSolvedMates& solver, int table, int side, unsigned oneOf) {
        std::mt19937 random(static_cast<unsigned>(table * 2 + side));
        std::uint64_t count = 0;
        test::CTableEnumerator(table, side).Visit([&](const TablePosition& men) {
            if (oneOf != 1 && random() % oneOf != 0) {
                return;
            }
            count += 2;
            for (const bool invert : {false, true}) {
                test::SetUp(*position, men, side, invert);
                const int plies = solver.Plies(*position);
                Score score = 12345;
                const bool isFound =
                    NalimovProbe(score, *position, engine->bases.Tables(),
                                 const_cast<CNalimovCache&>(engine->bases.Cache()));
                if (!isFound || score != test::ScoreOfPlies(plies)) {
                    ADD_FAILURE() << CPositionText(*position).GetFen() << " " << score << " "
                                  << plies;
                }
                CheckMoves(solver);
            }
        });
        EXPECT_GT(count, 0U);
        return count;
    }

    /// The marks of all moves and the move at the root.
    void CheckMoves(CSolvedMates& solver) {
        constexpr std::uint64_t OneOf = 193;  // odd, so that both colours have their turns
        if (++movesAsked % OneOf != 0) {
            return;
        }
        ++listingsChecked;
        MoveList moves;
        CMoveGenerator(*position).GenerateMoves(moves, MoveKinds::All);
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
            const int plies = solver.Plies(*after);
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
        CSolvedMates solver;
    };

    inline static std::unique_ptr<Shared> shared;

    std::unique_ptr<NalimovEngine> engine = std::make_unique<NalimovEngine>();
    std::unique_ptr<CPosition> position = std::make_unique<CPosition>();
    std::uint64_t movesAsked = 0;
    std::uint64_t listingsChecked = 0;
};

using NalimovWholePath = CNalimovWholePath;
using NalimovWholePathProof = CNalimovWholePath;

TEST_F(NalimovWholePath, ThreeMenAnswerEveryPositionCorrectly) {
    Load();
    EXPECT_EQ(engine->host.printed, std::vector<std::string>{"tablebases 3-men loaded!"});
    for (int table = 1; table < NalimovFirstFourMen; ++table) {
        for (const int side : {0, 1}) {
            CheckTable(shared->solver, table, side, 1);
        }
    }
}

/// Queen against pawn with all that it can turn into, and one of some hundred positions. With
/// BRENQUIL_NALIMOV_MEN=4 all endings and every position, which takes minutes.
TEST_F(NalimovWholePathProof, FourMenAnswerCorrectly) {
    const char* const men = std::getenv("BRENQUIL_NALIMOV_MEN");
    const bool all = men != nullptr && std::string(men) == "4";
    const std::set<std::string_view> sample = {"kpk",  "knk",  "kbk",  "krk",  "kqk",
                                               "kqkn", "kqkb", "kqkr", "kqkq", "kqkp"};
    CTestFolder folder;
    CSolvedMates solver;
    std::vector<int> tables;
    for (int table = 1; table < NalimovFirstFiveMen; ++table) {
        if (all || sample.count(NalimovSignatures[static_cast<std::size_t>(table)].name) != 0) {
            WriteTable(folder, solver, table, table);
            tables.push_back(table);
        }
    }
    engine->options.SetOption("NalimovPath", folder.Name());
    engine->options.SetOption("NalimovCache", "8");
    ASSERT_EQ(engine->host.printed, std::vector<std::string>{"tablebases 4-men loaded!"});
    std::uint64_t checked = 0;
    for (const int table : tables) {
        for (const int side : {0, 1}) {
            checked += CheckTable(solver, table, side, all ? 1 : 251);
        }
    }
    RecordProperty("positions", std::to_string(checked));
    RecordProperty("listings", std::to_string(listingsChecked));
    if (all) {
        std::cout << tables.size() << " tables, " << checked << " positions, " << listingsChecked
                  << " of them with all moves\n";
    }
}

TEST_F(NalimovWholePath, DefaultsLoadNothingAndAllocateTheCache) {
    EXPECT_EQ(engine->bases.Tables().menLoaded, 0);
    EXPECT_EQ(engine->bases.Cache().Megabytes(), 32);
    EXPECT_EQ(engine->options.usage.choice, CNalimovOptions::OnRoot);
    EXPECT_TRUE(engine->host.printed.empty());
    EXPECT_EQ(engine->bases.GetPriority(), 2U);
}

TEST_F(NalimovWholePath, PathThatIsNotThereSaysNothing) {
    engine->options.SetOption("NalimovPath", "nowhere");
    EXPECT_TRUE(engine->host.printed.empty());
    Load();
    engine->options.SetOption("NalimovPath", "<empty>");
    EXPECT_EQ(engine->bases.Tables().menLoaded, 0);
    EXPECT_EQ(engine->host.printed.size(), 1U);
}

TEST_F(NalimovWholePath, ChangesEndTheSearchAndRepeatsDoNothing) {
    const int before = engine->host.searchesEnded;
    engine->options.SetOption("NalimovCache", "32");
    engine->options.SetOption("NalimovCache", "many");
    EXPECT_EQ(engine->host.searchesEnded, before);
    EXPECT_EQ(engine->bases.Cache().Megabytes(), 32);
    Load();
    EXPECT_EQ(engine->host.searchesEnded, before + 2);
    engine->bases.SetPath(shared->folder.Name());
    EXPECT_EQ(engine->host.searchesEnded, before + 2);
}

TEST_F(NalimovWholePath, UnknownUsageLeavesTheOldOne) {
    engine->options.SetOption("Nalimov Usage", "InSearch");
    EXPECT_EQ(engine->options.usage.choice, CNalimovOptions::InSearch);
    engine->options.SetOption("Nalimov Usage", "Sometimes");
    EXPECT_EQ(engine->options.usage.choice, CNalimovOptions::InSearch);
    engine->options.SetOption("Nalimov Usage", "Never");
    EXPECT_EQ(engine->options.usage.choice, CNalimovOptions::Never);
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

/// The copy that the move is made on knows the outermost rooks alone. Castling with an inner one
/// went wrong on it: both rooks vanished, and bare kings are a draw.
TEST_F(NalimovWholePath, CastlingWithAnInnerRookHasNoMark) {
    const CTestFolder folder;
    const int table = TableNumber("krrk");
    folder.Write("krrk.nbw", Bytes(NalimovCalculator(table, 0).Positions()));
    engine->options.SetOption("NalimovPath", folder.Name());
    SetFen("8/8/3k4/8/8/8/8/4KR1R w F - 0 1");
    const Move castling = CPositionText::TextToMove("e1g1", *position, false);
    ASSERT_FALSE(castling.IsNone());
    ASSERT_GE(engine->bases.Tables().menLoaded, position->MenCount());
    BaseMoveInfo info;
    EXPECT_FALSE(engine->bases.ProbeMoveInfo(info, castling, *position));
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

TEST_F(NalimovWholePath, PositionWithCaptureInPassingHasPlaceOfItsOwn) {
    // All positions are drawn but the one in which d5 can be taken; it is won in 26 moves. The
    // calculators take the first side as White, so the second file holds the same with d4.
    const auto menOf = [](Square king, Square pawn) {
        NalimovPieceList list;
        list.squares[NalimovPieceList::KingSlot] = king;
        list.squares[0] = pawn;
        return list;
    };
    const CTestFolder folder;
    const int table = TableNumber("kpkp");
    const auto& sideZero = NalimovCalculator(table, 0);
    const auto& sideOne = NalimovCalculator(table, 1);
    folder.Write("kpkp.nbw", Bytes(static_cast<std::size_t>(sideZero.Positions())));
    folder.Write("kpkp.nbb", Bytes(static_cast<std::size_t>(sideOne.Positions())));
    folder.Poke("kpkp.nbw", sideZero(menOf(B3, E5), menOf(H8, D5), D6, false), {101});
    folder.Poke("kpkp.nbb", sideOne(menOf(H1, D4), menOf(B6, E4), D3, false), {101});
    engine->options.SetOption("NalimovPath", folder.Name());
    engine->options.SetOption("Nalimov Usage", "InSearch");
    const auto scoreOf = [this](const std::string& fen) {
        SetFen(fen);
        Score score = 77;
        return Probe(score) ? score : 99;
    };
    EXPECT_EQ(scoreOf("7k/8/8/3pP3/8/1K6/8/8 w - d6 0 1"), 32000 - 2 * 26 - 1);
    EXPECT_EQ(scoreOf("7k/8/8/3pP3/8/1K6/8/8 w - - 0 1"), 0);
    EXPECT_EQ(scoreOf("8/8/1k6/8/3Pp3/8/8/7K b - d3 0 1"), 32000 - 2 * 26 - 1);
    EXPECT_EQ(scoreOf("8/8/1k6/8/3Pp3/8/8/7K b - - 0 1"), 0);
    // The step of two squares that allows the capture, and another move.
    SetFen("7k/3p4/8/4P3/8/1K6/8/8 b - - 0 1");
    BaseMoveInfo info;
    const auto move = [this](const char* text) {
        return CPositionText::TextToMove(text, *position, false);
    };
    ASSERT_TRUE(engine->bases.ProbeMoveInfo(info, move("d7d5"), *position));
    EXPECT_EQ(info.text, "-M26");
    ASSERT_TRUE(engine->bases.ProbeMoveInfo(info, move("d7d6"), *position));
    EXPECT_EQ(info.text, "0");
}

TEST_F(NalimovWholePath, MissingSideAnswersFalseForThatSideOnly) {
    const CTestFolder folder;
    folder.Write("kqk.nbb", shared->solver.TableBytes(TableNumber("kqk"), 1));
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
