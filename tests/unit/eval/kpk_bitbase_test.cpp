#include "board/attacks.h"
#include "eval/kpk_bitbase.h"
#include "evaluation_setup.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace brenquil {
namespace {

/// The analysis one position at a time: a status for each, and passes over all of them until one
/// changes nothing. Slow and plain.
class CPlainAnalysis {
public:
    CPlainAnalysis() : statuses_(CKpkBitbase::BitCount) {
        for (std::size_t index = 0; index < statuses_.size(); ++index) {
            statuses_[index] = FirstStatus(Position(index));
        }
        while (Pass()) {}
    }

    [[nodiscard]] bool IsWin(std::size_t index) const { return statuses_[index] == Win; }

private:
    enum Status : std::uint8_t { Impossible = 0, Unknown = 1, Draw = 2, Win = 4 };

    struct Position {
        explicit Position(std::size_t index)
            : strongKing(static_cast<Square>(index & 63U)),
              weakKing(static_cast<Square>(index >> 6U & 63U)),
              strongToMove((index >> 12U & 1U)),
              pawn(static_cast<Square>((6 - (index >> 13U) / 4) * 8 + (index >> 13U) % 4)) {}

        [[nodiscard]] std::size_t Index() const {
            const int pawnIndex = (6 - RankOf(pawn)) * 4 + FileOf(pawn);
            return static_cast<std::size_t>(strongKing) | static_cast<std::size_t>(weakKing) << 6U |
                   static_cast<std::size_t>(strongToMove) << 12U |
                   static_cast<std::size_t>(pawnIndex) << 13U;
        }

        Square strongKing;
        Square weakKing;
        bool strongToMove;
        Square pawn;
    };

    static bool Contains(Bitboard set, Square square) { return (set & BitOf(square)) != 0; }

    static Status FirstStatus(const Position& p) {
        if (Distance[p.strongKing][p.weakKing] <= 1 || p.pawn == p.strongKing ||
            p.pawn == p.weakKing) {
            return Impossible;
        }
        return p.strongToMove ? FirstStrongStatus(p) : FirstWeakStatus(p);
    }

    static Status FirstStrongStatus(const Position& p) {
        if (Contains(PawnAttacks[White][p.pawn], p.weakKing)) {
            return Impossible;
        }
        const Square front = p.pawn + 8;
        if (RankOf(p.pawn) == 6 && p.strongKing != front && p.weakKing != front &&
            (!Contains(KingAttacks[p.weakKing], front) ||
             Contains(KingAttacks[p.strongKing], front))) {
            return Win;
        }
        return Unknown;
    }

    static Status FirstWeakStatus(const Position& p) {
        if ((KingAttacks[p.weakKing] & ~PawnAttacks[White][p.pawn] & ~KingAttacks[p.strongKing]) ==
            0) {
            return Draw;
        }
        if (Contains(KingAttacks[p.weakKing], p.pawn) &&
            !Contains(KingAttacks[p.strongKing], p.pawn)) {
            return Draw;
        }
        return Unknown;
    }

    bool Pass() {
        bool changed = false;
        for (std::size_t index = 0; index < statuses_.size(); ++index) {
            if (statuses_[index] == Unknown) {
                const Position p(index);
                const Status status = p.strongToMove ? NextStrongStatus(p) : NextWeakStatus(p);
                changed = changed || status != Unknown;
                statuses_[index] = status;
            }
        }
        return changed;
    }

    [[nodiscard]] Status NextStrongStatus(Position p) const {
        unsigned seen = 0;
        p.strongToMove = false;
        const Square from = p.strongKing;
        for (Bitboard steps = KingAttacks[from]; steps != 0;) {
            p.strongKing = PopLowestBit(steps);
            seen |= statuses_[p.Index()];
        }
        p.strongKing = from;
        if (RankOf(p.pawn) < 6) {
            const Square front = p.pawn + 8;
            const bool canJump =
                RankOf(p.pawn) == 1 && p.strongKing != front && p.weakKing != front;
            p.pawn = front;
            seen |= statuses_[p.Index()];
            if (canJump) {
                p.pawn = front + 8;
                seen |= statuses_[p.Index()];
            }
        }
        return (seen & Win) != 0 ? Win : (seen & Unknown) != 0 ? Unknown : Draw;
    }

    [[nodiscard]] Status NextWeakStatus(Position p) const {
        unsigned seen = 0;
        p.strongToMove = true;
        for (Bitboard steps = KingAttacks[p.weakKing]; steps != 0;) {
            p.weakKing = PopLowestBit(steps);
            seen |= statuses_[p.Index()];
        }
        return (seen & Draw) != 0 ? Draw : (seen & Unknown) != 0 ? Unknown : Win;
    }

    std::vector<Status> statuses_;
};

TEST(KpkBitbase, EqualsTheAnalysisOnePositionAtATime) {
    const CPlainAnalysis plain;
    std::size_t wins = 0;
    for (std::size_t index = 0; index < CKpkBitbase::BitCount; ++index) {
        ASSERT_EQ(TestBitbase().BitAt(index), plain.IsWin(index)) << "index " << index;
        wins += plain.IsWin(index) ? 1 : 0;
    }
    // The known number of wins of this ending with the pawn on one half of the board.
    EXPECT_EQ(wins, 111282U);
}

TEST(KpkBitbase, IndexOrder) {
    // Strong king d6, weak king d8, pawn d5: won whoever moves.
    const std::size_t pawnIndex = (6 - 4) * 4 + 3;
    const std::size_t index = D6 | D8 << 6U | pawnIndex << 13U;
    EXPECT_TRUE(TestBitbase().BitAt(index));
    EXPECT_TRUE(TestBitbase().BitAt(index | 1U << 12U));
    EXPECT_TRUE(TestBitbase().IsWin(D6, D8, D5, false));
    EXPECT_TRUE(TestBitbase().IsWin(D6, D8, D5, true));
}

TEST(KpkBitbase, TurnDecidesTheOpposition) {
    // White Kd5, pawn d4, Black Kd7: only Black to move loses.
    EXPECT_TRUE(TestBitbase().IsWin(D5, D7, D4, false));
    EXPECT_FALSE(TestBitbase().IsWin(D5, D7, D4, true));
}

TEST(KpkBitbase, RookPawnWithTheKingInItsCornerIsADraw) {
    EXPECT_FALSE(TestBitbase().IsWin(B6, A8, A6, true));
    EXPECT_FALSE(TestBitbase().IsWin(B6, A8, A6, false));
}

TEST(KpkBitbase, PawnOutsideTheSquareOfTheKingWins) {
    EXPECT_TRUE(TestBitbase().IsWin(H1, H5, A5, true));
    EXPECT_FALSE(TestBitbase().IsWin(H1, E5, A4, false));
}

TEST(KpkBitbase, StalematedAndTakenPawnsAreDraws) {
    EXPECT_FALSE(TestBitbase().IsWin(D6, D8, D7, false));
    EXPECT_FALSE(TestBitbase().IsWin(H1, D8, D7, false));
}

TEST(KpkBitbase, ImpossiblePositionsAreClear) {
    EXPECT_FALSE(TestBitbase().IsWin(D6, D7, D5, true));
    EXPECT_FALSE(TestBitbase().IsWin(D5, D8, D5, true));
    EXPECT_FALSE(TestBitbase().IsWin(H1, C7, D6, true));
}

TEST(KpkBitbase, PawnsOnTheEdgeRanksAreNoWins) {
    EXPECT_FALSE(TestBitbase().IsWin(H1, H5, A8, true));
    EXPECT_FALSE(TestBitbase().IsWin(H1, H5, A1, true));
}

}  // namespace
}  // namespace brenquil
