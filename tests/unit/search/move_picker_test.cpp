// The order in which a node gets its moves. With history and killers it is tested against the
// literal search; here are its parts.

#include "board/capture_order.h"
#include "search/move_picker.h"
#include "search_setup.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace brenquil {
namespace {

std::map<std::string, int> CaptureKeys(std::string_view fen, bool inCheck = false) {
    CPosition position;
    SetPosition(position, fen);
    MoveList list;
    if (inCheck) {
        CMoveGenerator(position).GenerateEvasions(list);
    } else {
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::Captures);
    }
    (void)ScoreCaptures(list, position);
    std::map<std::string, int> keys;
    for (const Move move : list) {
        keys[MoveName(move)] = move.Order();
    }
    return keys;
}

TEST(ScoreCaptures, VictimCountsEightTimesTheCheapestAttackerBreaksTies) {
    // Every man takes the queen on d5, and every kind of victim is taken by the pawn or the king.
    const auto keys = CaptureKeys("k7/8/1n6/3q4/2P2N2/1B1Q3p/8/3RK3 w - - 0 1");
    EXPECT_EQ(keys.at("c4d5"), 8 * 4 + 5);
    EXPECT_EQ(keys.at("f4d5"), 8 * 4 + 4);
    EXPECT_EQ(keys.at("d3d5"), 8 * 4 + 1);
    EXPECT_EQ(keys.at("f4h3"), 8 * 1 + 4);
    EXPECT_EQ(keys.at("d3h3"), 8 * 1 + 1);
    const auto others = CaptureKeys("k7/8/8/r1b5/1P1P3R/8/4n3/4KB1n w - - 0 1");
    EXPECT_EQ(others.at("b4a5"), 8 * 3 + 5);
    EXPECT_EQ(others.at("b4c5"), 8 * 2 + 5);
    EXPECT_EQ(others.at("f1e2"), 8 * 2 + 3);
    EXPECT_EQ(others.at("e1e2"), 8 * 2 + 0);
    EXPECT_EQ(others.at("h4h1"), 8 * 2 + 2);
}

TEST(ScoreCaptures, PawnTakesQueen37QueenTakesPawn9QuietQueenPromotion29) {
    const auto keys = CaptureKeys("k7/3P4/8/q7/1P6/8/p7/Q3K3 w - - 0 1");
    EXPECT_EQ(keys.at("b4a5"), 37);
    EXPECT_EQ(keys.at("a1a2"), 9);
    EXPECT_EQ(keys.at("d7d8/3.3"), 29);
    EXPECT_EQ(keys.at("d7d8/3.0"), 8 * 2 + 5);
    EXPECT_EQ(keys.at("d7d8/3.1"), 8 * 1 + 5);
    EXPECT_EQ(keys.at("d7d8/3.2"), 8 * 1 + 5);
}

TEST(ScoreCaptures, PromotionWithCaptureAddsBoth) {
    const auto keys = CaptureKeys("k2r4/4P3/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(keys.at("e7d8/3.3"), 8 * (3 + 3) + 5);
    EXPECT_EQ(keys.at("e7d8/3.0"), 8 * (3 + 2) + 5);
    EXPECT_EQ(keys.at("e7d8/3.2"), 8 * (3 + 1) + 5);
}

TEST(ScoreCaptures, EnPassantCountsAsAPawn) {
    const auto keys = CaptureKeys("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1");
    EXPECT_EQ(keys.at("e5d6/2.0"), 8 * 1 + 5);
}

TEST(ScoreCaptures, CaptureOfAKingAndQuietEvasionsKeepTheirKey) {
    const auto keys = CaptureKeys("8/8/8/8/3k4/4P3/8/4K3 w - - 0 1");
    EXPECT_EQ(keys.at("e3d4"), 0);
    const auto evasions = CaptureKeys("k3r3/8/8/8/8/8/3R4/4K3 w - - 0 1", true);
    EXPECT_EQ(evasions.at("d2e2"), 0);

    CPosition position;
    SetPosition(position, "k3r3/8/8/8/8/8/3R4/4K3 w - - 0 1");
    MoveList list;
    list.Append(Move::Make(D2, E2));
    list[0].SetOrder(-123);
    EXPECT_EQ(ScoreCaptures(list, position), 0);
    EXPECT_EQ(list[0].Order(), -123);
}

/// Selection by exchanges, in full each time.
std::vector<Move> SelectAll(std::vector<Move> list) {
    for (std::size_t index = 0; index < list.size(); ++index) {
        for (std::size_t other = index + 1; other < list.size(); ++other) {
            if (list[other].Order() > list[index].Order()) {
                std::swap(list[index], list[other]);
            }
        }
    }
    return list;
}

TEST(QuietList, TakesWhatSelectionByExchangesTakes) {
    std::mt19937 random(1);
    for (int round = 0; round < 5000; ++round) {
        // Up to 64 entries have a bit of the mask each; longer lists do without.
        const auto length = static_cast<int>(random() % (round % 4 == 0 ? 130 : 64));
        const unsigned spread = round % 3 == 0 ? 60000 : 5;
        CQuietList quiets;
        quiets.Reset();
        std::vector<Move> list;
        for (int i = 0; i < length; ++i) {
            Move move{static_cast<std::uint32_t>(i + 1)};
            move.SetOrder(random() % 2 == 0 ? -32000
                                            : -32000 + static_cast<int>(random() % spread));
            quiets.Append(move, move.Order() != -32000);
            list.push_back(move);
        }
        quiets.Begin();
        const std::vector<Move> expected = SelectAll(list);
        for (std::size_t taken = 0; taken < expected.size(); ++taken) {
            ASSERT_FALSE(quiets.IsAtEnd());
            for (std::int32_t ahead = 0; ahead < CQuietList::KnownAhead; ++ahead) {
                const std::size_t place = taken + static_cast<std::size_t>(ahead);
                const Move known = place < expected.size() ? expected[place] : NoMove;
                ASSERT_EQ(quiets.Peek(ahead).word, known.word);
            }
            ASSERT_EQ(quiets.Take().word, expected[taken].word);
        }
        ASSERT_TRUE(quiets.IsAtEnd());
        ASSERT_TRUE(quiets.Peek(0).IsNone());
    }
}

TEST(TakeBest, TakesWhatSelectionByExchangesTakes) {
    std::mt19937 random(2);
    for (int round = 0; round < 3000; ++round) {
        MoveList list;
        for (std::uint32_t i = 0; i < random() % 40; ++i) {
            list.Append(Move{i + 1});
            list[list.count - 1].SetOrder(static_cast<int>(random() % 7) - 3);
        }
        const std::vector<Move> expected = SelectAll({list.begin(), list.end()});
        for (std::int32_t index = 0; index < list.count; ++index) {
            ASSERT_EQ(TakeBest(list, index).word, expected[index].word);
        }
    }
}

TEST(TakeBest, EqualKeysKeepTheOrderThatExchangesLeave) {
    MoveList list;
    const auto append = [&list](std::uint32_t word, int key) {
        list.Append(Move{word});
        list[list.count - 1].SetOrder(key);
    };
    append(1, 0);
    append(2, 0);
    append(3, 5);
    // 3 changes places with 1, which then stands after 2.
    std::vector<int> order;
    for (std::int32_t index = 0; index < list.count; ++index) {
        order.push_back(TakeBest(list, index).Identity());
    }
    EXPECT_EQ(order, (std::vector<int>{3, 2, 1}));
}

/// Calls `check` on positions of games, and on set-up ones that no game reaches: several kings,
/// pawns on the edge, more moves than a list holds.
template <class Check>
void OnManyPositions(Check check) {
    std::mt19937_64 random(17);
    for (int i = 0; i < 1500; ++i) {
        CPosition position;
        SetPosition(position, i % 2 == 0 ? RandomChess960Fen(random)
                                         : std::string(VariedPositions()[random() % 64]));
        PlayRandomly(position, static_cast<int>(random() % 80), random);
        check(position);
    }
    constexpr std::string_view Men = "PNBRQKpnbrqk";
    for (int i = 0; i < 1500; ++i) {
        std::string fen;
        for (int rank = 0; rank < 8; ++rank) {
            for (int file = 0; file < 8; ++file) {
                const bool isEmpty = random() % 8 < static_cast<unsigned>(i % 8);
                const std::string_view men = i % 5 == 0 ? "QQQk" : Men;
                fen += isEmpty ? '1' : men[random() % men.size()];
            }
            fen += rank < 7 ? "/" : (i % 2 == 0 ? " w - " : " b - ");
        }
        constexpr std::array<std::string_view, 4> EnPassant = {"-", "e3", "c6", "h6"};
        CPosition position;
        CPositionText(position).SetFen(fen + std::string(EnPassant[random() % 4]) + " 0 1");
        check(position);
    }
}

std::vector<std::uint32_t> Words(const MoveList& list) {
    std::vector<std::uint32_t> words;
    for (const Move move : list) {
        words.push_back(move.word);
    }
    return words;
}

TEST(GenerateQuiets, IsGeneratorAndHistoryInOne) {
    std::mt19937 random(3);
    const auto history = std::make_unique<HistoryTable>();
    for (SquareTable<HistoryEntry>& entries : *history) {
        for (Square square = A1; square <= H8; ++square) {
            if (random() % 3 == 0) {
                entries[square].Reward(random() % 70000);
            }
        }
    }
    const auto quiets = std::make_unique<CQuietList>();
    OnManyPositions([&](CPosition& position) {
        MoveList expected;
        CMoveGenerator(position).GenerateMoves(expected, MoveKinds::Quiets);
        for (std::int32_t i = 0; i < expected.count; ++i) {
            const Move move = expected[i];
            expected[i].SetOrder((*history)[position.board[move.From()]][move.To()].ordering);
        }
        GenerateQuiets(*quiets, position, *history);
        ASSERT_EQ(Words(quiets->list), Words(expected)) << CPositionText(position).GetFen();
        quiets->Begin();
        for (const Move move : SelectAll({expected.begin(), expected.end()})) {
            ASSERT_EQ(quiets->Take().word, move.word);
        }
    });
}

class MovePicker : public testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> Order() {
        const auto picker = std::make_unique<CMovePicker>();
        picker->Reset(3, false);
        std::vector<std::string> order;
        for (Move move = setup.search->NextMove(*picker); !move.IsNone();
             move = setup.search->NextMove(*picker)) {
            order.push_back(MoveName(move));
        }
        return order;
    }

    void StoreHashMove(Move move) {
        setup.hash.Store(setup.position.key, 0, 1, Bound::Exact, move);
    }

    /// Makes the mate a8-a1 the first killer of ply 3: at this window no other move reaches beta.
    void MakeKiller() {
        setup.Option("Use Futility", "false");
        setup.Set("r5k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1");
        EXPECT_GE(setup.Node(1, 3, 31000, 31001), 31001);
        setup.hash.Clear();
    }

    static int Count(const std::vector<std::string>& order, const std::string& move) {
        return static_cast<int>(std::count(order.begin(), order.end(), move));
    }

    // d4 takes c5 or e5 (a pawn), the queen takes the covered pawn h7 (losing), quiet moves
    static constexpr std::string_view Fen = "6k1/7p/8/2p1p3/3P4/3Q4/8/6K1 w - - 0 1";

    SearchSetup setup;
};

TEST_F(MovePicker, CapturesThenQuietsThenLosingCaptures) {
    setup.Set(Fen);
    const std::vector<std::string> order = Order();
    EXPECT_EQ(order[0], "d4c5");
    EXPECT_EQ(order[1], "d4e5");
    EXPECT_EQ(order.back(), "d3h7");
    EXPECT_EQ(order.size(), 28U);
    EXPECT_EQ(Count(order, "d3h7"), 1);
}

TEST_F(MovePicker, HashSizeZeroBeginsWithTheCaptures) {
    setup.Set(Fen);
    StoreHashMove(MoveOf(setup.position, "g1g2"));
    ASSERT_TRUE(setup.hash.Resize(0));
    EXPECT_EQ(Order()[0], "d4c5");
}

TEST_F(MovePicker, HashMoveThatCapturesComesFirstAndOnce) {
    setup.Set(Fen);
    StoreHashMove(MoveOf(setup.position, "d4e5"));
    const std::vector<std::string> order = Order();
    EXPECT_EQ(order[0], "d4e5");
    EXPECT_EQ(order[1], "d4c5");
    EXPECT_EQ(Count(order, "d4e5"), 1);
    EXPECT_EQ(order.size(), 28U);
}

TEST_F(MovePicker, QuietHashMoveComesFirstAndOnce) {
    setup.Set(Fen);
    StoreHashMove(MoveOf(setup.position, "g1f2"));
    const std::vector<std::string> order = Order();
    EXPECT_EQ(order[0], "g1f2");
    EXPECT_EQ(Count(order, "g1f2"), 1);
    EXPECT_EQ(order.size(), 28U);
}

TEST_F(MovePicker, LosingCaptureThatIsTheHashMoveComesFirstAndOnce) {
    setup.Set(Fen);
    StoreHashMove(MoveOf(setup.position, "d3h7"));
    const std::vector<std::string> order = Order();
    EXPECT_EQ(order[0], "d3h7");
    EXPECT_EQ(Count(order, "d3h7"), 1);
    EXPECT_EQ(order.size(), 28U);
}

TEST_F(MovePicker, ImpossibleHashMoveIsPassedOver) {
    setup.Set(Fen);
    for (const Move move : {Move::Make(A1, A8), Move::Make(D3, D5), Move::Make(G8, F8), NoMove}) {
        setup.hash.BeginSearch(false);
        StoreHashMove(move);
        EXPECT_EQ(Order()[0], "d4c5");
        EXPECT_EQ(Order().size(), 28U);
    }
}

TEST_F(MovePicker, HashMoveOfAnotherKeyIsNotTaken) {
    setup.Set(Fen);
    setup.hash.Store(setup.position.key + setup.hash.EntryCount(), 0, 1, Bound::Exact,
                     MoveOf(setup.position, "g1f2"));
    EXPECT_EQ(Order()[0], "d4c5");
}

TEST_F(MovePicker, CaptureOfEqualValueIsGoodWithoutATest) {
    // The exchange of rooks and the winning capture come before the quiet moves.
    setup.Set("1k1r4/8/8/8/8/8/8/1K1R4 w - - 0 1");
    EXPECT_EQ(Order()[0], "d1d8");
}

TEST_F(MovePicker, HandsOutEveryPseudoLegalMoveOnceAndInCheckEveryLegalOne) {
    std::mt19937_64 random(41);
    int keptBack = 0;
    for (int i = 0; i < 300; ++i) {
        setup.Set(i % 2 == 0 ? RandomChess960Fen(random)
                             : std::string(VariedPositions()[random() % 61]));
        PlayRandomly(setup.position, static_cast<int>(random() % 60), random);
        MoveList list;
        CMoveGenerator(setup.position).GenerateMoves(list, MoveKinds::All);
        std::vector<std::string> expected;
        std::vector<std::string> legal;
        for (const Move move : list) {
            expected.push_back(MoveName(move));
            if (setup.position.MakeMove(move)) {
                setup.position.UndoMove(move);
                legal.push_back(MoveName(move));
            }
        }
        if (i % 3 == 0 && list.count > 0) {
            setup.hash.BeginSearch(false);
            StoreHashMove(list[static_cast<std::int32_t>(random() % 1000) % list.count]);
        }
        std::vector<std::string> order = Order();
        std::sort(order.begin(), order.end());
        std::sort(expected.begin(), expected.end());
        std::sort(legal.begin(), legal.end());
        SCOPED_TRACE(CPositionText(setup.position).GetFen());
        if (!setup.position.inCheck) {
            ASSERT_EQ(order, expected);
            continue;
        }
        ASSERT_EQ(std::adjacent_find(order.begin(), order.end()), order.end());
        ASSERT_TRUE(std::includes(expected.begin(), expected.end(), order.begin(), order.end()));
        ASSERT_TRUE(std::includes(order.begin(), order.end(), legal.begin(), legal.end()));
        keptBack += static_cast<int>(expected.size() - order.size());
    }
    EXPECT_GT(keptBack, 0);
}

TEST_F(MovePicker, KillerComesBetweenCapturesAndQuietsAndOnlyAtItsPly) {
    MakeKiller();
    const Move mate = MoveOf(setup.position, "a8a1");
    const std::vector<std::string> order = Order();
    EXPECT_EQ(order[0], MoveName(mate));  // there are no captures, and it has the best history too
    const auto picker = std::make_unique<CMovePicker>();
    picker->Reset(3, false);
    (void)setup.search->NextMove(*picker);
    EXPECT_EQ(picker->killerMove1.Identity(), mate.Identity());
    EXPECT_EQ(picker->killerMove1.Order(), 0);
    EXPECT_EQ(Count(order, MoveName(mate)), 1);

    picker->Reset(4, false);
    (void)setup.search->NextMove(*picker);
    EXPECT_TRUE(picker->killerMove1.IsNone());
}

TEST_F(MovePicker, KillerThatIsImpossibleHereIsPassedOver) {
    MakeKiller();
    setup.Set("6k1/5ppp/8/8/8/8/r4PPP/6K1 w - - 0 1");
    const auto picker = std::make_unique<CMovePicker>();
    picker->Reset(3, false);
    while (!setup.search->NextMove(*picker).IsNone()) {}
    EXPECT_TRUE(picker->killerMove1.IsNone());
    EXPECT_TRUE(picker->killerMove2.IsNone());
}

TEST_F(MovePicker, KillerThatCapturesNowComesTwice) {
    MakeKiller();
    setup.Set("r5k1/5ppp/8/8/8/8/5PPP/N5K1 b - - 0 1");
    EXPECT_EQ(Count(Order(), "a8a1"), 2);
}

TEST_F(MovePicker, HashMoveThatIsAKillerComesOnce) {
    MakeKiller();
    StoreHashMove(MoveOf(setup.position, "a8a1"));
    const std::vector<std::string> order = Order();
    EXPECT_EQ(order[0], "a8a1");
    EXPECT_EQ(Count(order, "a8a1"), 1);
    const auto picker = std::make_unique<CMovePicker>();
    picker->Reset(3, false);
    while (!setup.search->NextMove(*picker).IsNone()) {}
    EXPECT_TRUE(picker->killerMove1.IsNone());
}

TEST(HistoryEntry, RewardStopsAtItsCeiling) {
    HistoryEntry entry;
    EXPECT_EQ(entry.ordering, -32000);
    entry.Reward(49);
    EXPECT_EQ(entry.ordering, -31951);
    entry.Reward(63950);
    EXPECT_EQ(entry.ordering, 31999);
    entry.Reward(1);
    EXPECT_EQ(entry.ordering, 32000);
    entry.Reward(64516);
    EXPECT_EQ(entry.ordering, 32000);
}

}  // namespace
}  // namespace brenquil
