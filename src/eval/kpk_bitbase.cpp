#include "eval/kpk_bitbase.h"

#include "board/attacks.h"
#include "platform/bits.h"

// The analysis works on sets: for a pawn, a weak king and a side to move, a bitboard of strong king
// squares. A position is won when a rule says so at once, when the strong side has a move to a won
// one, or when all moves of the weak side lead to won ones. Positions enter these sets and never
// leave them, so the order in which they are looked at has no influence on the end; and as a pawn
// only moves forward, the ranks can be finished one after the other, the seventh first.

namespace brenquil {

namespace {

constexpr int PawnFiles = 4;

/// All squares a king's step away from a set.
constexpr Bitboard KingSteps(Bitboard set) noexcept {
    const Bitboard row = set | Shift<1>(set) | Shift<-1>(set);
    return Shift<1>(set) | Shift<-1>(set) | Shift<8>(row) | Shift<-8>(row);
}

/// The squares where the strong king can stand: not on the pawn, not on or beside the weak king.
Bitboard PossibleKings(Square weakKing, Square pawn) noexcept {
    if (weakKing == pawn) {
        return 0;
    }
    return ~(KingAttacks[weakKing] | BitOf(weakKing) | BitOf(pawn));
}

/// Strong side to move: the weak king may not stand in the pawn's check.
Bitboard PossibleToMove(Square weakKing, Square pawn) noexcept {
    const bool inCheck = (PawnAttacks[White][pawn] & BitOf(weakKing)) != 0;
    return inCheck ? 0 : PossibleKings(weakKing, pawn);
}

/// Strong side to move: the pawn on the seventh rank is free to promote, and the weak king cannot
/// take it there unless the strong king guards the square.
Bitboard PromotionWins(Square weakKing, Square pawn) noexcept {
    const Square front = pawn + 8;
    if (RankOf(pawn) != 6 || weakKing == front) {
        return 0;
    }
    const bool isAttacked = (KingAttacks[weakKing] & BitOf(front)) != 0;
    return isAttacked ? KingAttacks[front] : ~BitOf(front);
}

/// Weak side to move: it is not a draw at once. The weak king has a square that neither pawn nor
/// strong king attacks (without one it counts as a draw, mate or not), and it cannot take the pawn.
Bitboard Undecided(Square weakKing, Square pawn) noexcept {
    Bitboard kings = 0;
    for (Bitboard steps = KingAttacks[weakKing] & ~PawnAttacks[White][pawn]; steps != 0;) {
        kings |= ~KingAttacks[PopLowestBit(steps)];
    }
    const bool attacksPawn = (KingAttacks[weakKing] & BitOf(pawn)) != 0;
    return attacksPawn ? kings & KingAttacks[pawn] : kings;
}

}  // namespace

CKpkBitbase::CKpkBitbase() noexcept {
    for (int rank = 6; rank >= 1; --rank) {
        for (int file = 0; file < PawnFiles; ++file) {
            AnalysePawn(MakeSquare(file, rank));
        }
    }
}

/// Strong kings for which pushing the pawn leads to a position already known to be won. Promotion
/// is not a push: it is decided by `PromotionWins`.
Bitboard CKpkBitbase::PushWins(Square weakKing, Square pawn) const noexcept {
    if (RankOf(pawn) == 6) {
        return 0;
    }
    const Square front = pawn + 8;
    Bitboard wins = words_[WordIndex(weakKing, front, false)];
    if (RankOf(pawn) == 1 && weakKing != front) {
        wins |= words_[WordIndex(weakKing, front + 8, false)] & ~BitOf(front);
    }
    return wins;
}

void CKpkBitbase::AnalysePawn(Square pawn) noexcept {
    // Fixed for this pawn, by weak king.
    SquareTable<Bitboard> possible;   // strong side to move
    SquareTable<Bitboard> pawnWins;   // strong side to move: won by the pawn's move
    SquareTable<Bitboard> undecided;  // weak side to move
    for (Square weakKing = A1; weakKing <= H8; ++weakKing) {
        possible[weakKing] = PossibleToMove(weakKing, pawn);
        pawnWins[weakKing] = possible[weakKing] & (PromotionWins(weakKing, pawn) |  //
                                                   PushWins(weakKing, pawn));
        undecided[weakKing] = PossibleKings(weakKing, pawn) & Undecided(weakKing, pawn);
    }

    std::uint64_t* const weakWins = &words_[WordIndex(A1, pawn, false)];
    std::uint64_t* const strongWins = &words_[WordIndex(A1, pawn, true)];
    bool changed = true;
    while (changed) {
        changed = false;
        for (Square weakKing = A1; weakKing <= H8; ++weakKing) {
            const Bitboard wins =
                pawnWins[weakKing] | (possible[weakKing] & KingSteps(weakWins[weakKing]));
            changed |= wins != strongWins[weakKing];
            strongWins[weakKing] = wins;
        }
        for (Square weakKing = A1; weakKing <= H8; ++weakKing) {
            Bitboard wins = undecided[weakKing];
            for (Bitboard steps = KingAttacks[weakKing]; steps != 0;) {
                const Square step = PopLowestBit(steps);
                wins &= strongWins[step] | ~possible[step];
            }
            changed |= wins != weakWins[weakKing];
            weakWins[weakKing] = wins;
        }
    }
}

}  // namespace brenquil
