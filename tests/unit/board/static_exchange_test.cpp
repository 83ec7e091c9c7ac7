// Exchanges on one square.

#include "board/static_exchange.h"
#include "board_checks.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace brenquil {
namespace {

Score ExchangeOf(std::string_view fen, std::string_view text) {
    const CPosition position = FromFen(fen);
    const Move move = FindMove(position, text);
    EXPECT_FALSE(move.IsNone()) << text;
    return StaticExchange(position, move);
}

TEST(StaticExchange, OfAPawnThatTakesAnUndefendedPawnIsAPawn) {
    EXPECT_EQ(ExchangeOf("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "e4d5"), 100);
}

TEST(StaticExchange, OfAQueenThatTakesADefendedPawnIsThePawnLessTheQueen) {
    EXPECT_EQ(ExchangeOf("4k3/8/4p3/3p4/8/8/8/3QK3 w - - 0 1", "d1d5"), -800);
}

TEST(StaticExchange, LetsARookBehindTheRookJoin) {
    EXPECT_EQ(ExchangeOf("3rk3/8/8/3r4/8/8/3R4/3RK3 w - - 0 1", "d2d5"), 500);
}

TEST(StaticExchange, OfAQuietMoveOntoAnAttackedSquareLosesTheMan) {
    EXPECT_EQ(ExchangeOf("4k3/8/4p3/8/8/2N5/8/4K3 w - - 0 1", "c3d5"), -300);
    EXPECT_EQ(ExchangeOf("4k3/8/4p3/8/8/2N5/8/4K3 w - - 0 1", "c3b5"), 0);
}

TEST(StaticExchange, OfEnPassantOntoASafeSquareIsNothing) {
    EXPECT_EQ(ExchangeOf("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6"), 0);
}

TEST(StaticExchange, OfAPromotionEarnsNothing) {
    EXPECT_EQ(ExchangeOf("4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8q"), 0);
    EXPECT_EQ(ExchangeOf("1n2k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7b8r"), 300);
}

TEST(StaticExchange, StopsEarlyWithTheFirstGainWhenALossIsCertain) {
    // The recapture of the pawn cannot bring the queen back, so it is not counted.
    EXPECT_EQ(ExchangeOf("4k3/8/4p3/3q4/4P3/8/8/4K3 w - - 0 1", "e4d5"), 900);
}

TEST(StaticExchange, LetsTheKingTakeAsLongAsItHasNoOtherMan) {
    EXPECT_EQ(ExchangeOf("8/8/4k3/3p4/8/8/8/3RK3 w - - 0 1", "d1d5"), -400);
    // The king may take, but is then taken himself: it is better not to.
    EXPECT_EQ(ExchangeOf("8/8/4k3/3p4/8/8/3R4/3RK3 w - - 0 1", "d2d5"), 100);
}

TEST(StaticExchange, ReadsThePositionOnly) {
    for (const CPosition& position : RandomPositions(50, 61)) {
        const CPosition before = position;
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            (void)StaticExchange(position, Move{word});
        }
        EXPECT_EQ(Differences(position, before), "");
    }
}

/// The exchange by recursion, on a board from which each capturer is really lifted.
class CSlowExchange {
public:
    CSlowExchange(const CPosition& position, Move move)
        : slow_(position),
          to_(move.To()),
          onTarget_(position.board[move.From()] / 2),
          side_(1 - position.board[move.From()] % 2) {
        const Piece target = position.board[to_];
        first_ = target == PieceNone ? 0 : Value(target / 2);
        slow_.board[static_cast<std::size_t>(move.From())] = PieceNone;
    }

    [[nodiscard]] int Result() { return Continue(first_, onTarget_, side_); }

private:
    static int Value(int type) {
        constexpr std::array<int, 6> Values = {100, 300, 300, 500, 900, 10000};
        return Values[static_cast<std::size_t>(type)];
    }

    /// What the side that made the last capture, with the balance `won` after it, keeps when
    /// `side` may take the man of type `standing`.
    int Continue(int won, int standing, int side) {
        const std::vector<int> attackers = slow_.Attackers(to_, side);
        const int balance = Value(standing) - won;
        if (attackers.empty() || (balance < 0 && won > 0)) {
            return won;
        }
        const int cheapest =
            *std::min_element(attackers.begin(), attackers.end(), [this](int a, int b) {
                const int typeOfA = slow_.board[static_cast<std::size_t>(a)] / 2;
                const int typeOfB = slow_.board[static_cast<std::size_t>(b)] / 2;
                return typeOfA != typeOfB ? typeOfA < typeOfB : a < b;
            });
        const int type = slow_.board[static_cast<std::size_t>(cheapest)] / 2;
        slow_.board[static_cast<std::size_t>(cheapest)] = PieceNone;
        return std::min(won, -Continue(balance, type, 1 - side));
    }

    SlowPosition slow_;
    int to_;
    int onTarget_;
    int side_;
    int first_;
};

TEST(StaticExchange, EqualsTheSlowExchangeOfEveryMoveOfRandomPositions) {
    int different = 0;
    for (const CPosition& position : RandomPositions(std::max(200, 4000 / WorkDivisor()), 62)) {
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            const Score seen = StaticExchange(position, Move{word});
            ASSERT_EQ(seen, CSlowExchange(position, Move{word}).Result())
                << FenOf(position) << ' ' << SquareToText(Move{word}.From())
                << SquareToText(Move{word}.To());
            different += seen != 0 ? 1 : 0;
        }
    }
    EXPECT_GT(different, 1000);
}

TEST(StaticExchange, EqualsTheSlowExchangeInCrowds) {
    CRandom random(63);
    for (int i = 0; i < std::max(200, 3000 / WorkDivisor()); ++i) {
        const CPosition position = FromFen(LawlessFen(random));
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            ASSERT_EQ(StaticExchange(position, Move{word}),
                      CSlowExchange(position, Move{word}).Result())
                << FenOf(position) << ' ' << word;
        }
    }
}

TEST(LosesExchange, IsTheSignOfTheValueForEveryMoveOfRandomPositions) {
    int losses = 0;
    for (const CPosition& position : RandomPositions(std::max(500, 40000 / WorkDivisor()), 64)) {
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            const bool loses = StaticExchange(position, Move{word}) < 0;
            ASSERT_EQ(LosesExchange(position, Move{word}), loses) << FenOf(position) << ' ' << word;
            losses += loses ? 1 : 0;
        }
    }
    EXPECT_GT(losses, 1000);
}

TEST(LosesExchange, IsTheSignOfTheValueInCrowds) {
    CRandom random(65);
    for (int i = 0; i < std::max(500, 20000 / WorkDivisor()); ++i) {
        const CPosition position = FromFen(LawlessFen(random));
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            ASSERT_EQ(LosesExchange(position, Move{word}), StaticExchange(position, Move{word}) < 0)
                << FenOf(position) << ' ' << word;
        }
    }
}

TEST(LosesExchange, SeesTheSliderBehindAKing) {
    // The king that takes the queen opens the bishop's line, so he had better not.
    EXPECT_FALSE(LosesExchange(FromFen("8/1B6/2k5/3p4/8/8/8/3QK3 w - - 0 1"), Move::Make(D1, D5)));
    EXPECT_TRUE(LosesExchange(FromFen("8/8/2k5/3p4/8/8/8/3QK3 w - - 0 1"), Move::Make(D1, D5)));
}

TEST(StaticExchangeVectors, HaveTheListedValues) {
    const std::string path = SharedPath("BRENQUIL_VECTORS", "vectors", "see.tsv");
    if (path.empty()) {
        GTEST_SKIP() << "the vectors are not there";
    }
    std::ifstream file(path);
    int rows = 0;
    for (std::string line; std::getline(file, line); ++rows) {
        std::istringstream fields(line);
        std::string fen;
        std::string text;
        int value = 0;
        std::getline(fields, fen, '\t');
        std::getline(fields, text, '\t');
        fields >> value;
        EXPECT_EQ(ExchangeOf(fen, text), value) << line;
    }
    EXPECT_EQ(rows, 300);
}

}  // namespace
}  // namespace brenquil
