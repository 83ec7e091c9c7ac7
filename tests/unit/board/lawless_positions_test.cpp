// Positions that no game reaches stay consistent, and nothing leaves its arrays.

#include "board/polyglot_keys.h"
#include "board/static_exchange.h"
#include "board_checks.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

/// A walk of random moves and back. A captured king's number stays in the key of pawns and kings;
/// the walk keeps account of it.
void WalkAndComeBack(CPosition& position, int length, CRandom& random) {
    struct Made {
        Move move;
        PositionFields before;
        std::uint64_t foreignKey;
    };

    std::vector<Made> made;
    std::uint64_t foreignKey = 0;
    ASSERT_EQ(DerivedFaults(position), "") << FenOf(position);
    for (int i = 0; i < length; ++i) {
        MoveList list;
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        if (list.count == 0) {
            break;
        }
        const Move move = PickMove(list, random);
        (void)StaticExchange(position, move);
        const PositionFields before(position);
        SlowPosition slow(position);
        const bool isLegal = slow.Make(move.word);
        ASSERT_EQ(position.MakeMove(move), isLegal && before.ply < 500) << FenOf(position);
        if (position.ply == before.ply) {
            ASSERT_EQ(Differences(PositionFields(position), before), "") << FenOf(position);
            continue;
        }
        made.push_back({move, before, foreignKey});
        const Piece taken = before.board[move.To()];
        if (move.Kind() != MoveKind::Castling && taken != PieceNone && TypeOf(taken) == King) {
            foreignKey ^= PieceKey(taken, move.To());
        }
        ASSERT_EQ(DerivedFaults(position, foreignKey), "") << FenOf(position);
        ASSERT_EQ(Disagreements(position, slow), "") << FenOf(position);
    }
    for (; !made.empty(); made.pop_back()) {
        position.UndoMove(made.back().move);
        ASSERT_EQ(Differences(PositionFields(position), made.back().before), "") << FenOf(position);
    }
}

TEST(LawlessPositions, FollowTheSlowRulesAndComeBackWhole) {
    CRandom random(51);
    const int count = std::max(200, 4000 / WorkDivisor());
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        CPosition position = FromFen(LawlessFen(random));
        WalkAndComeBack(position, 40, random);
    }
}

TEST(LawlessPositions, OfNamedKindsStayConsistent) {
    CRandom random(52);
    for (const char* fen : {
             "8/8/8/8/8/8/8/8 w - - 0 1",                    // nothing at all
             "8/pppppppp/8/8/8/8/PPPPPPPP/8 w KQkq - 0 1",   // no king
             "kkkkkkkk/8/8/8/8/8/8/KKKKKKKK w KQkq - 0 1",   // sixteen kings
             "r2kk2r/8/8/8/8/8/8/R2KK2R w KQkq - 0 1",       // two kings a side
             "4k3/4R3/8/8/8/8/8/4K3 w - - 0 1",              // opponent in check
             "4k3/8/8/8/8/8/8/4K2r b - - 0 1",               // the same for Black
             "PPPPPPPP/8/4k3/8/8/4K3/8/pppppppp w - - 0 1",  // pawns on last ranks
             "pppppppp/8/4k3/8/8/4K3/8/PPPPPPPP b - - 0 1",  // and behind
             "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ w - - 0 1",
             "qqqqqqqq/QQQQQQQQ/qqqqqqqq/QQQQQQQQ/qqqqqqqq/QQQQQQQQ/qqqqqqqq/QQQQQQQQ w - - 0 1",
             "q1q1q1q1/1q1q1q1q/Q1Q1Q1Q1/1Q1Q1Q1Q/q1q1q1q1/1q1q1q1q/Q1Q1Q1Q1/1Q1Q1Q1Q b - - 0 1",
             "4k3/8/8/8/8/8/P7/4K3 w - - -2147483648 1",  // clocks at the limits
             "4k3/8/8/8/8/8/8/4K2R w K - -7 1",
             "4k3/8/8/8/3pr3/8/8/4K3 b - e3 0 1",   // no victim
             "4k3/8/4n3/3P4/8/8/8/4K3 w - e6 0 1",  // a man on the square
             "4k3/8/4N3/3P4/8/8/8/4K3 w - e6 0 1",  // an own man on it
             "4k3/8/4K3/3P4/8/8/8/8 w - e6 0 1",    // the own king on it
             "3Pk3/2P5/8/8/8/8/8/4K3 w - d8 0 1",   // on the last rank
         }) {
        CPosition position = FromFen(fen);
        for (int i = 0; i < 40; ++i) {
            WalkAndComeBack(position, 60, random);
            ASSERT_FALSE(testing::Test::HasFatalFailure()) << fen;
        }
    }
}

TEST(LawlessPositions, WithoutAKingAreNeverInCheck) {
    const CPosition position = FromFen("8/8/8/8/8/8/8/QQQ1qqq1 w - - 0 1");
    EXPECT_FALSE(position.inCheck);
    EXPECT_FALSE(position.IsKingAttacked(White));
    EXPECT_FALSE(position.IsKingAttacked(Black));
    EXPECT_TRUE(position.IsSquareAttacked(D1, Black));
}

TEST(LawlessPositions, WithSeveralKingsRefuseMovesThatLeaveAnyAttacked) {
    CPosition position = FromFen("3k4/8/8/8/8/8/2N5/r1K2K2 w - - 0 1");
    EXPECT_TRUE(position.inCheck);
    EXPECT_FALSE(position.MakeMove(FindMove(position, "f1e2")));
    EXPECT_TRUE(position.MakeMove(FindMove(position, "c2a1")));
    EXPECT_FALSE(FromFen("3k4/8/8/8/8/8/8/r1N2K1K w - - 0 1").inCheck);
}

TEST(LawlessPositions, KeepTheNumberOfACapturedKingInTheKeyOfPawnsAndKings) {
    CPosition position = FromFen("4k3/4R3/8/8/8/8/8/4K3 w - - 0 1");
    const CPosition before = position;
    const Move move = FindMove(position, "e7e8");
    ASSERT_TRUE(position.MakeMove(move));
    EXPECT_EQ(position.pawnKingKey, before.pawnKingKey);
    EXPECT_EQ(position.pieceCount[BlackKing], 0);
    EXPECT_FALSE(position.inCheck);
    position.UndoMove(move);
    EXPECT_EQ(Differences(position, before), "");
}

TEST(LawlessPositions, BeyondTheUndoStackCanBeShownButNotPlayed) {
    for (const char* fen :
         {"4k3/8/8/8/8/8/4P3/R3K2R w KQ - 0 100000", "4k3/8/8/8/8/8/4P3/R3K2R w KQ - 0 2147483647",
          "4k3/8/8/8/8/8/4P3/R3K2R w KQ - 0 251"}) {
        CPosition position = FromFen(fen);
        const CPosition before = position;
        const std::vector<std::uint32_t> words = GeneratedWords(position, MoveKinds::All);
        EXPECT_FALSE(words.empty());
        for (const std::uint32_t word : words) {
            EXPECT_FALSE(position.MakeMove(Move{word}));
            position.UndoMove(Move{word});
            ASSERT_EQ(Differences(position, before), "");
        }
        CPosition copy;
        copy.CopyFrom(position);
        EXPECT_EQ(copy.ply, position.ply);
        EXPECT_FALSE(copy.MakeMove(Move{words.front()}));
    }
}

TEST(LawlessPositions, WithTheLargestClockGoOn) {
    CPosition position = FromFen("4k3/8/8/8/8/8/8/4K3 w - - 2147483647 1");
    EXPECT_EQ(position.halfmoveClock, 2147483647);
    const Move move = FindMove(position, "e1e2");
    ASSERT_TRUE(position.MakeMove(move));
    position.UndoMove(move);
    EXPECT_EQ(position.halfmoveClock, 2147483647);
}

/// Bytes near a FEN: a real one with a few bytes changed, or letters of its alphabet at random.
std::string BrokenFen(CRandom& random) {
    std::string text;
    if (random.OneIn(2)) {
        const auto& samples = SampleFens();
        text =
            random.OneIn(2)
                ? LawlessFen(random)
                : samples[static_cast<std::size_t>(random.Below(static_cast<int>(samples.size())))];
        const int changes = 1 + random.Below(6);
        for (int i = 0; i < changes; ++i) {
            const auto at = static_cast<std::size_t>(random.Below(static_cast<int>(text.size())));
            switch (random.Below(3)) {
            case 0: text[at] = static_cast<char>(random.Below(256)); break;
            case 1: text.erase(at, 1 + at % 3); break;
            default: text.insert(at, 1, "/ 8Kk-wbHhaA0e3"[random.Below(15)]);
            }
            text += text.empty() ? "8" : "";
        }
        return text;
    }
    constexpr std::string_view Alphabet = "pPnNbBrRqQkK12345678//// -wbKQkqHAhae36.0x\t";
    const int length = random.Below(120);
    for (int i = 0; i < length; ++i) {
        text += Alphabet[static_cast<std::size_t>(random.Below(static_cast<int>(Alphabet.size())))];
    }
    return text;
}

TEST(LawlessPositions, FromBrokenTextStayConsistent) {
    CRandom random(53);
    const int count = std::max(1000, 20000 / WorkDivisor());
    for (int i = 0; i < count; ++i) {
        const std::string text = BrokenFen(random);
        CPosition position = FromFen(text);
        ASSERT_EQ(DerivedFaults(position), "") << text;
        const std::string fen = FenOf(position);
        (void)CPositionText::FlipFen(text);
        ASSERT_EQ(FenOf(FromFen(fen)), fen) << text;
        const std::vector<std::uint32_t> words = GeneratedWords(position, MoveKinds::All);
        const CPosition before = position;
        for (const std::uint32_t word : words) {
            (void)StaticExchange(position, Move{word});
            if (position.MakeMove(Move{word})) {
                position.UndoMove(Move{word});
            }
        }
        ASSERT_EQ(Differences(position, before), "") << text;
    }
}

}  // namespace
}  // namespace brenquil
