// The search against the slow literal one: report by report, node count by node count.

#include "fake_clock.h"
#include "reference_search.h"
#include "search_setup.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brenquil {
namespace {

/// Both searches on the same options.
class CPair {
public:
    explicit CPair(std::uint32_t megabytes = 1)
        : setup_(megabytes),
          reference_(std::make_unique<CReferenceSearch>(setup_.options, setup_.evaluationOptions,
                                                        setup_.hash.EntryCount())) {}

    void Option(std::string_view name, const std::string& value) {
        if (!setup_.evaluationOptions.SetOption(name, value)) {
            setup_.Option(name, value);
        }
    }

    /// Both get the base. It answers from the position alone and writes down who asks what.
    void AddBase(std::uint64_t divisor, std::uint64_t remainder, Score score) {
        auto& base = bases_.emplace_back(std::make_unique<CScriptedBase>());
        base->answer = [=, this](Score& answer, const CPosition& position, int depth, int ply) {
            questions_.push_back(std::to_string(divisor) + ": " + std::to_string(position.key) +
                                 " " + std::to_string(depth) + " " + std::to_string(ply));
            answer = score + depth - ply;
            return position.key % divisor == remainder;
        };
        setup_.bases.Add(*base);
        reference_->bases.push_back(base.get());
    }

    void Set(std::string_view fen, std::string_view moves = "") {
        setup_.Set(fen, moves);
        reference_->position = setup_.position;
    }

    void PlayRandomly(int count, std::mt19937_64& random) {
        brenquil::PlayRandomly(setup_.position, count, random);
        reference_->position = setup_.position;
    }

    /// Searches with both and compares what they report.
    void Compare(const SearchLimits& limits) {
        SCOPED_TRACE(CPositionText(setup_.position).GetFen());
        ++reference_->age;
        reference_->freeCount = setup_.hash.EntryCount();
        reference_->baseHits = 0;
        const CPosition before = setup_.position;
        const std::vector<std::string> expected = reference_->Think(limits);
        const std::vector<std::string> expectedQuestions = std::exchange(questions_, {});
        // A slow machine would print lines that are due every second.
        const CStoppedClock clock;
        const SearchRecord record = setup_.Think(limits);
        ASSERT_EQ(record.texts, expected);
        ASSERT_EQ(std::exchange(questions_, {}), expectedQuestions);
        EXPECT_EQ(setup_.search->Nodes(), reference_->nodes);
        EXPECT_EQ(setup_.position.key, before.key);
        EXPECT_EQ(setup_.position.ply, before.ply);
    }

    /// A few of the positions never end even a shallow search, so all of them have a node limit.
    void CompareToDepth(std::int32_t depth, std::int32_t nodes = 40000) {
        SearchLimits limits;
        limits.depth = depth;
        limits.nodes = nodes;
        Compare(limits);
    }

    /// A single node, the state of the searches going on from the last.
    void CompareNode(int depth, int ply, Score alpha, Score beta, bool afterNull) {
        SCOPED_TRACE(CPositionText(setup_.position).GetFen() + " depth " + std::to_string(depth) +
                     " ply " + std::to_string(ply) + " window " + std::to_string(alpha) + " " +
                     std::to_string(beta));
        const int expected = reference_->AlphaBeta(depth, ply, alpha, beta, afterNull);
        ASSERT_EQ(setup_.search->AlphaBeta(depth, ply, alpha, beta, afterNull), expected);
        ASSERT_EQ(setup_.search->Nodes(), reference_->nodes);
        ASSERT_EQ(setup_.position.key, reference_->position.key);
    }

    void CompareQuiescence(int ply, Score alpha, Score beta) {
        SCOPED_TRACE(CPositionText(setup_.position).GetFen() + " window " + std::to_string(alpha) +
                     " " + std::to_string(beta));
        const int expected = reference_->Quiescence(ply, 0, alpha, beta);
        ASSERT_EQ(setup_.search->Quiescence(ply, 0, alpha, beta), expected);
        ASSERT_EQ(setup_.search->Nodes(), reference_->nodes);
    }

    /// The legal moves that both hand out here, with the history and killers that they have
    /// gathered. In check the picker keeps back some that `MakeMove` would refuse.
    void CompareMoveOrder(int ply) {
        SCOPED_TRACE(CPositionText(setup_.position).GetFen() + " ply " + std::to_string(ply));
        std::vector<Move> expected;
        ReferencePicker slow;
        slow.ply = ply;
        for (Move move; reference_->NextMove(move, slow);) {
            if (IsLegal(move)) {
                expected.push_back(move);
            }
        }
        const auto picker = std::make_unique<CMovePicker>();
        picker->Reset(ply, false);
        std::vector<Move> handedOut;
        for (Move move = setup_.search->NextMove(*picker); !move.IsNone();
             move = setup_.search->NextMove(*picker)) {
            if (IsLegal(move)) {
                handedOut.push_back(move);
            }
        }
        EXPECT_TRUE(setup_.search->NextMove(*picker).IsNone());
        ASSERT_EQ(LineText(handedOut), LineText(expected));
    }

    [[nodiscard]] CPosition& Position() { return setup_.position; }

private:
    [[nodiscard]] bool IsLegal(Move move) {
        if (!setup_.position.MakeMove(move)) {
            return false;
        }
        setup_.position.UndoMove(move);
        return true;
    }

    SearchSetup setup_;
    std::unique_ptr<CReferenceSearch> reference_;
    std::vector<std::unique_ptr<CScriptedBase>> bases_;
    std::vector<std::string> questions_;
};

struct Setting {
    std::string name;
    std::vector<std::pair<std::string, std::string>> options;
    std::int32_t depth = 4;
};

std::ostream& operator<<(std::ostream& stream, const Setting& setting) {
    return stream << setting.name;
}

std::vector<Setting> Settings() {
    return {
        {"Default", {}, 5},
        {"NoNullmove", {{"Use Nullmove", "false"}}},
        {"NoFutility", {{"Use Futility", "false"}}},
        {"NoLmr", {{"Use LMR", "false"}}},
        {"NoExtensions", {{"Use Extensions", "false"}}, 5},
        {"Nothing",
         {{"Use Nullmove", "false"},
          {"Use Futility", "false"},
          {"Use LMR", "false"},
          {"Use Extensions", "false"}},
         3},
        {"NullmoveFromDepth1", {{"Nullmove Min Depth", "1"}, {"Nullmove Reduction", "1"}}},
        {"NullmoveLate", {{"Nullmove Min Depth", "4"}, {"Nullmove Reduction", "2"}}, 5},
        {"NullmoveReduction5", {{"Nullmove Reduction", "5"}}},
        {"LmrFromTheFirstMove", {{"LMR Min Depth", "1"}, {"LMR Min Moves", "1"}}, 5},
        {"LmrMinDepth2", {{"LMR Min Depth", "2"}, {"LMR Min Moves", "2"}}, 5},
        {"LmrMinDepth5", {{"LMR Min Depth", "5"}, {"LMR Min Moves", "8"}}, 5},
        {"NarrowMargins",
         {{"Futility Margin1", "0"}, {"Futility Margin2", "10"}, {"Futility Margin3", "20"}}},
        {"UnevenMargins",
         {{"Futility Margin1", "900"}, {"Futility Margin2", "150"}, {"Futility Margin3", "40"}}},
        {"MultiPv2", {{"MultiPV", "2"}, {"MultiPV Delta", "1"}}, 3},
        {"MultiPv5", {{"MultiPV", "5"}, {"MultiPV Delta", "50"}}, 3},
        {"MultiPv20", {{"MultiPV", "20"}}, 3},
        {"MultiPv200", {{"MultiPV", "200"}, {"MultiPV Delta", "2000"}}, 2},
        {"Contempt", {{"Contempt", "120"}, {"Lazy Eval Margin", "0"}}},
        {"PieceValues", {{"Pawn", "80"}, {"Knight", "310"}, {"Queen", "900"}}},
        {"StrangeNumbers",
         {{"Nullmove Reduction", "-1"}, {"Nullmove Min Depth", "3"}, {"LMR Min Moves", "0"}},
         3},
    };
}

class ReferenceSearchSettings : public testing::TestWithParam<Setting> {};

INSTANTIATE_TEST_SUITE_P(Options, ReferenceSearchSettings, testing::ValuesIn(Settings()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_P(ReferenceSearchSettings, AgreesOnVariedPositions) {
    for (const std::string_view fen : VariedPositions()) {
        CPair pair;
        for (const auto& [name, value] : GetParam().options) {
            pair.Option(name, value);
        }
        pair.Set(fen);
        pair.CompareToDepth(GetParam().depth);
        if (HasFatalFailure()) {
            return;
        }
    }
}

class ReferenceSearchSlow : public testing::TestWithParam<Setting> {};

INSTANTIATE_TEST_SUITE_P(Options, ReferenceSearchSlow, testing::ValuesIn(Settings()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_P(ReferenceSearchSlow, AgreesTwoPliesDeeper) {
    std::mt19937_64 random(7);
    for (const std::string_view fen : VariedPositions()) {
        CPair pair;
        for (const auto& [name, value] : GetParam().options) {
            pair.Option(name, value);
        }
        pair.Set(fen);
        SearchLimits limits;
        limits.depth = GetParam().depth + 2;
        limits.nodes = static_cast<std::int32_t>(30000 + random() % 30000);
        pair.Compare(limits);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesAlongAGameOnOneTable) {
    std::mt19937_64 random(11);
    for (int game = 0; game < 6; ++game) {
        CPair pair;
        pair.Set(game % 2 == 0 ? std::string(StartFen) : RandomChess960Fen(random));
        for (int move = 0; move < 12; ++move) {
            pair.PlayRandomly(3 + game, random);
            pair.CompareToDepth(4);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(ReferenceSearch, AgreesWhenTheGameHasRepeatedItself) {
    CPair pair;
    for (const std::string_view moves :
         {"g1f3 g8f6 f3g1", "g1f3 g8f6 f3g1 f6g8 g1f3", "b1c3 b8c6 a1b1 a8b8 b1a1 b8a8 c3b1",
          "e2e4 g8f6 e1e2 f6g8 e2e1 g8f6 e1e2"}) {
        pair.Set(StartFen, moves);
        pair.CompareToDepth(5);
    }
}

TEST(ReferenceSearch, AgreesOnRecordsThatAnEarlierGameLeftBelow) {
    CPair pair;
    pair.Set("4k3/8/8/8/8/8/8/R3K3 w - - 7 1", "a1a2 e8e7 a2a3 e7e8 a3a2 e8e7 a2a1 e7e8 a1a2");
    pair.CompareToDepth(3);
    pair.Set("4k3/8/8/8/8/8/8/R3K3 b - - 9 5");  // its ply stands above those records
    pair.CompareToDepth(5);
}

TEST(ReferenceSearch, AgreesWithoutATable) {
    CPair pair(0);
    for (const std::string_view fen : VariedPositions()) {
        pair.Set(fen);
        pair.CompareToDepth(3);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesWhenTheTableIsCrowded) {
    CPair pair;  // 39321 entries for all positions and depths together
    for (const std::string_view fen : VariedPositions().first(12)) {
        pair.Set(fen);
        SearchLimits limits;
        limits.nodes = 60000;
        pair.Compare(limits);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesBeyondTheAgeThatAByteHolds) {
    CPair pair;
    pair.Set("8/8/1p1r1k2/p1pPN1p1/P3KnP1/1P6/8/3R4 b - - 0 1");
    for (int search = 0; search < 270; ++search) {
        pair.CompareToDepth(search % 3 + 1);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesUnderNodeLimitsOfEverySize) {
    CPair pair;
    std::mt19937_64 random(5);
    for (std::int32_t nodes = 1; nodes < 20000; nodes += 1 + nodes / 8) {
        pair.Set(VariedPositions()[random() % VariedPositions().size()]);
        SearchLimits limits;
        limits.nodes = nodes;
        pair.Compare(limits);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesWithSearchmoves) {
    std::mt19937_64 random(3);
    for (const std::string_view fen : VariedPositions()) {
        CPair pair;
        pair.Set(fen);
        SearchLimits limits;
        limits.depth = 4;
        limits.nodes = 20000;
        for (const Move move : LegalMoves(pair.Position())) {
            if (random() % 3 == 0) {
                limits.searchmoves.Append(move);
            }
        }
        limits.searchmoves.Append(NoMove);
        pair.Compare(limits);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesWithMateLimits) {
    for (std::int32_t mate = -3; mate <= 4; ++mate) {
        CPair pair;
        pair.Set("r5rk/5p1p/5R2/4B3/8/8/7P/7K w - - 0 1");
        SearchLimits limits;
        limits.mate = mate;
        limits.depth = 2;
        limits.nodes = 40000;
        pair.Compare(limits);
    }
}

TEST(ReferenceSearch, AgreesAndAsksTheSameQuestionsOfTheBases) {
    for (const std::string_view fen : VariedPositions().first(40)) {
        CPair pair;
        pair.AddBase(5, 1, 30);
        pair.AddBase(3, 2, -77);
        pair.Set(fen);
        pair.CompareToDepth(3);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesOnSingleNodesOfEveryWindow) {
    std::mt19937_64 random(17);
    for (int i = 0; i < 400; ++i) {
        static CPair pair;  // its table, history and killers go on from node to node
        pair.Set(i % 3 == 0 ? RandomChess960Fen(random)
                            : std::string(VariedPositions()[random() % 61]));
        pair.PlayRandomly(static_cast<int>(random() % 12), random);
        const auto alpha = static_cast<Score>(random() % 1200) - 600;
        const Score width = i % 2 == 0 ? 1 : static_cast<Score>(random() % 400);
        pair.CompareNode(static_cast<int>(random() % 6) - 1, static_cast<int>(random() % 250),
                         alpha, alpha + width, random() % 4 == 0);
        pair.CompareQuiescence(static_cast<int>(random() % 200), alpha, alpha + width);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, AgreesNearTheLastPly) {
    CPair pair;
    for (int ply = 246; ply <= 255; ++ply) {
        pair.Set("r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 4 8");
        pair.CompareNode(5, ply, -50, 50, false);
    }
}

TEST(ReferenceSearch, AgreesNearTheEndOfTheUndoStack) {
    for (const std::string_view number : {"245", "246", "247", "248", "249", "250", "251"}) {
        CPair pair;
        pair.Set("4k3/pp6/8/8/8/8/1P6/R3K3 w - - 0 " + std::string(number));
        pair.CompareToDepth(6);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(ReferenceSearch, HandsOutTheSameMovesAfterTheSameSearch) {
    std::mt19937_64 random(29);
    for (int i = 0; i < 60; ++i) {
        CPair pair;
        pair.Set(i % 3 == 0 ? RandomChess960Fen(random)
                            : std::string(VariedPositions()[static_cast<std::size_t>(i)]));
        pair.CompareToDepth(4);
        for (int ply = 0; ply < 8; ++ply) {
            pair.CompareMoveOrder(ply);
            pair.PlayRandomly(1, random);
        }
        if (HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace brenquil
