// ctest: threads

#include "board/score.h"
#include "eval/pawn_hash.h"
#include "eval/pawn_structure.h"
#include "evaluation_setup.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace brenquil {
namespace {

TEST(PawnHash, HasNoMemoryBeforeItIsSized) {
    CPawnHash hash;
    EXPECT_FALSE(hash.HasMemory());
    EXPECT_EQ(hash.Count(), 0U);
    hash.Prefetch(12345);
}

TEST(PawnHash, SlotIsTheKeyModuloTheCount) {
    CPawnHash hash;
    ASSERT_TRUE(hash.Resize(3276));
    EXPECT_EQ(hash.Count(), 3276U);
    PawnEntry* const first = &hash.Slot(0);
    for (const std::uint64_t key :
         {std::uint64_t{1}, std::uint64_t{3275}, std::uint64_t{3276}, ~std::uint64_t{0}}) {
        EXPECT_EQ(&hash.Slot(key) - first, static_cast<std::ptrdiff_t>(key % 3276));
        hash.Prefetch(key);
    }
}

TEST(PawnHash, ResizeGivesAnEmptyTable) {
    CPawnHash hash;
    ASSERT_TRUE(hash.Resize(10));
    hash.Slot(7).key = 7;
    hash.Slot(7).middlegame[White] = 5;
    ASSERT_TRUE(hash.Resize(10));
    EXPECT_EQ(hash.Slot(7).key, 0U);
    EXPECT_EQ(hash.Slot(7).middlegame[White], 0);
}

TEST(PawnHash, ZeroEntriesGiveNoTable) {
    CPawnHash hash;
    ASSERT_TRUE(hash.Resize(10));
    EXPECT_TRUE(hash.Resize(0));
    EXPECT_FALSE(hash.HasMemory());
}

TEST(PawnHash, RefusedMemoryLeavesNoTable) {
    CPawnHash hash;
    ASSERT_TRUE(hash.Resize(10));
    EXPECT_FALSE(hash.Resize(std::size_t{1} << 50U));
    EXPECT_FALSE(hash.HasMemory());
}

class PawnHashEntry : public testing::Test {
protected:
    const PawnEntry& Get(std::string_view fen) {
        setup_.Set(fen);
        return GetPawnEntry(setup_.position, setup_.pawnHash, local_);
    }

    /// Whether the entry of a position is in its slot already.
    bool IsHit(std::string_view fen) {
        setup_.Set(fen);
        return setup_.pawnHash.Slot(setup_.position.pawnKingKey).key == setup_.position.pawnKingKey;
    }

    EvaluationSetup setup_{4096};
    PawnEntry local_;
};

TEST_F(PawnHashEntry, KingMoveMissesAndKnightMoveHits) {
    const PawnEntry* const entry = &Get("4k1n1/pp6/8/8/8/8/PP6/4K1N1 w - - 0 1");
    EXPECT_TRUE(IsHit("4k1n1/pp6/8/8/8/5N2/PP6/4K3 b - - 1 1"));
    EXPECT_FALSE(IsHit("4k1n1/pp6/8/8/8/8/PP6/3K2N1 b - - 1 1"));
    EXPECT_EQ(&Get("4k1n1/pp6/8/8/8/5N2/PP6/4K3 b - - 1 1"), entry);
}

TEST_F(PawnHashEntry, FoundEntryIsUsedAsItStands) {
    constexpr std::string_view Fen = "4k1n1/pp6/8/8/8/8/PP6/4K1N1 w - - 0 1";
    Get(Fen);
    setup_.pawnHash.Slot(setup_.position.pawnKingKey).endgame[White] = 4321;
    EXPECT_EQ(Get(Fen).endgame[White], 4321);
}

TEST_F(PawnHashEntry, OtherConfigurationReplaces) {
    ASSERT_TRUE(setup_.pawnHash.Resize(1));
    const std::int32_t first = Get("4k3/8/8/8/8/8/P7/4K3 w - - 0 1").endgame[White];
    const std::int32_t second = Get("4k3/P7/8/8/8/8/8/4K3 w - - 0 1").endgame[White];
    EXPECT_NE(first, second);
    EXPECT_EQ(Get("4k3/8/8/8/8/8/P7/4K3 w - - 0 1").endgame[White], first);
}

TEST_F(PawnHashEntry, ReusedEntryForgetsItsOldSums) {
    ASSERT_TRUE(setup_.pawnHash.Resize(1));
    Get("4k3/pppp4/8/8/8/8/PPPP4/4K3 w - - 0 1");
    const PawnEntry& entry = Get("8/8/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(entry.middlegame[Black], 0);
    EXPECT_EQ(entry.endgame[Black], 0);
    EXPECT_EQ(entry.shelterDanger[Black], 0);
    EXPECT_EQ(entry.middlegame[White], -14);
    EXPECT_EQ(entry.endgame[White], -32);
}

TEST_F(PawnHashEntry, WithoutMemoryTheLocalEntryIsFilledOnEveryCall) {
    ASSERT_TRUE(setup_.pawnHash.Resize(0));
    constexpr std::string_view Fen = "4k3/8/8/8/8/8/P7/4K3 w - - 0 1";
    EXPECT_EQ(&Get(Fen), &local_);
    const std::int32_t sum = local_.endgame[White];
    local_.endgame[White] = 4321;
    EXPECT_EQ(Get(Fen).endgame[White], sum);
    EXPECT_EQ(local_.key, setup_.position.pawnKingKey);
}

TEST(PawnHashScores, AreTheSameWithAnySizeAndWithoutMemory) {
    EvaluationSetup none;
    EvaluationSetup one(1);
    EvaluationSetup many(3276);
    ASSERT_TRUE(one.hasRoom && many.hasRoom);
    for (const std::string& fen : RandomPlay(1000, 3)) {
        const Score score = none.Full(fen);
        ASSERT_EQ(one.Full(fen), score) << fen;
        ASSERT_EQ(many.Full(fen), score) << fen;
        ASSERT_EQ(many.Full(fen), score) << fen;
    }
}

// The shared sums are wrong here, so that a score tells where they were taken from.
TEST(PawnHashScores, AskTheTableOnlyForWhatWasFetched) {
    constexpr std::string_view Fen = "4k1n1/pp6/8/8/8/8/PP6/4K1N1 w - - 0 1";
    constexpr std::string_view OtherFen = "4k1n1/p1p5/8/8/8/8/PP6/4K1N1 w - - 0 1";
    constexpr int Wrong = 1000;
    const Score score = EvaluationSetup().Full(Fen);
    const auto evaluate = [&](std::string_view fetched) {
        EvaluationSetup setup(4096);
        PawnEntry local;
        setup.Set(Fen);
        static_cast<void>(GetPawnEntry(setup.position, setup.pawnHash, local));
        PawnEntry& shared = setup.pawnHash.Slot(setup.position.pawnKingKey);
        shared.middlegame[White] = shared.middlegame[White] + Wrong;
        shared.endgame[White] = shared.endgame[White] + Wrong;
        if (!fetched.empty()) {
            setup.Set(fetched);
            setup.evaluation.FetchPawns();
        }
        setup.Set(Fen);
        return setup.evaluation.Evaluate(WideAlpha, WideBeta);
    };
    EXPECT_EQ(evaluate(""), score);
    EXPECT_EQ(evaluate(OtherFen), score);
    EXPECT_EQ(evaluate(Fen), score + Wrong);
}

// Scores may come from partial entries while others write; memory stays sound, and a table of its
// own gives each thread its exact scores again.
TEST(PawnHashThreads, ShareOneSmallTable) {
    CPawnHash shared;
    ASSERT_TRUE(shared.Resize(3));
    const std::vector<std::string> fens = RandomPlay(200, 17);
    std::vector<int> unordinary(4, 0);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < unordinary.size(); ++thread) {
        threads.emplace_back([&, thread] {
            CPosition position;
            const CEvaluationOptions options;
            CEvaluation evaluation(position, options, shared, TestBitbase());
            for (std::size_t i = 0; i < 4 * fens.size(); ++i) {
                CPositionText(position).SetFen(fens[(i + thread * 5) % fens.size()]);
                evaluation.FetchPawns();
                if (MateDistance(evaluation.Evaluate(WideAlpha, WideBeta)) != 0) {
                    ++unordinary[thread];
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(unordinary, std::vector<int>(4, 0));

    EvaluationSetup alone;
    CPosition position;
    const CEvaluationOptions options;
    CEvaluation evaluation(position, options, shared, TestBitbase());
    ASSERT_TRUE(shared.Resize(3));
    for (const std::string& fen : fens) {
        CPositionText(position).SetFen(fen);
        evaluation.FetchPawns();
        ASSERT_EQ(evaluation.Evaluate(WideAlpha, WideBeta), alone.Full(fen)) << fen;
    }
}

}  // namespace
}  // namespace brenquil
