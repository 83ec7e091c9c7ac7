// One position of an ending and its moves, as the solver and the checks need them.
//
//     CEndingNode node(ending, squares, White);
//     if (node.IsLegal()) { ... node.QuietTargets(man) ... }
//
// The legal moves of a man come as sets of squares: of the pinned men and of a side in check only
// what is legal is left. Two kinds stand apart, because squares do not tell them: what a pawn turns
// into, and captures in passing.
//
// Everything is worked out from the attack tables, some tens of nanoseconds a position; nothing is
// allocated.
#pragma once

#include "board/attacks.h"
#include "tables/ending.h"

#include <cstddef>

namespace brenquil {

[[nodiscard]] inline Bitboard AttacksOfMan(PieceType type, Colour colour, Square square,
                                           Bitboard occupied) noexcept {
    switch (type) {
    case Pawn: return PawnAttacks[colour][square];
    case Knight: return KnightAttacks[square];
    case Bishop: return BishopAttacksFrom(square, occupied);
    case Rook: return RookAttacksFrom(square, occupied);
    case Queen: return QueenAttacksFrom(square, occupied);
    default: return KingAttacks[square];
    }
}

class CEndingNode {
public:
    CEndingNode(const Ending& ending, const EndingSquares& squares, Colour sideToMove) noexcept
        : ending_(ending), squares_(squares), us_(sideToMove) {
        for (std::size_t man = 0; man < ending.men; ++man) {
            const Bitboard bit = BitOf(squares[man]);
            isPlaced_ = isPlaced_ && (occupied_ & bit) == 0;
            occupied_ |= bit;
            own_ |= ending.man[man].colour == us_ ? bit : 0;
        }
    }

    /// Do the men stand on squares of their own, is the side that is not to move not in check.
    [[nodiscard]] bool IsLegal() const noexcept {
        return isPlaced_ && !IsAttacked(squares_[KingOf(~us_)], us_, occupied_, Ending::NoMan);
    }

    /// Works out checks and pins. To be called once, before any of the moves are asked for.
    void PrepareMoves() noexcept {
        const Square king = squares_[KingOf(us_)];
        pinned_.fill(AllSquares);
        for (std::size_t man = 0; man < ending_.men; ++man) {
            const auto [type, colour] = ending_.man[man];
            if (colour == us_) {
                continue;
            }
            const Square square = squares_[man];
            attacked_ |= AttacksOfMan(type, colour, square, occupied_ & ~BitOf(king));
            const Bitboard rays = type == Bishop ? BishopRays[square]
                                : type == Rook   ? RookRays[square]
                                : type == Queen  ? BishopRays[square] | RookRays[square]
                                                 : 0;
            if ((rays & BitOf(king)) == 0) {
                if (type <= Knight && (AttacksOfMan(type, colour, square, 0) & BitOf(king)) != 0) {
                    AddCheck(BitOf(square));
                }
                continue;
            }
            const Bitboard line = Between[king][square];
            const Bitboard blockers = line & occupied_;
            if (blockers == 0) {
                AddCheck(line | BitOf(square));
            } else if ((blockers & (blockers - 1)) == 0 && (blockers & own_) != 0) {
                for (std::size_t own = 2; own < ending_.men; ++own) {
                    if (BitOf(squares_[own]) == blockers) {
                        pinned_[own] = line | BitOf(square);
                    }
                }
            }
        }
    }

    [[nodiscard]] bool IsInCheck() const noexcept { return answers_ != AllSquares; }

    /// Legal moves of a man of the side to move that is not a pawn.
    [[nodiscard]] Bitboard Targets(std::size_t man) const noexcept {
        const PieceType type = ending_.man[man].type;
        if (type == King) {
            return KingAttacks[squares_[man]] & ~own_ & ~attacked_;
        }
        return AttacksOfMan(type, us_, squares_[man], occupied_) & ~own_ & answers_ & pinned_[man];
    }

    [[nodiscard]] Bitboard QuietTargets(std::size_t man) const noexcept {
        return Targets(man) & ~occupied_;
    }

    [[nodiscard]] Bitboard CaptureTargets(std::size_t man) const noexcept {
        return Targets(man) & occupied_;
    }

    /// Legal steps and captures of a pawn of the side to move, captures in passing left out.
    [[nodiscard]] Bitboard PawnTargets(std::size_t man) const noexcept {
        const Square from = squares_[man];
        const Square single = from + Forward();
        Bitboard targets = PawnAttacks[us_][from] & occupied_ & ~own_;
        if ((occupied_ & BitOf(single)) == 0) {
            targets |= BitOf(single);
            const Square twice = single + Forward();
            if (RankOf(from) == (us_ == White ? 1 : 6) && (occupied_ & BitOf(twice)) == 0) {
                targets |= BitOf(twice);
            }
        }
        return targets & answers_ & pinned_[man];
    }

    /// May the pawn take in passing on that square, which a double step of the other side's pawn
    /// `victim` has just passed.
    [[nodiscard]] bool MayTakeInPassing(std::size_t man, std::size_t victim,
                                        Square passed) const noexcept {
        if ((PawnAttacks[us_][squares_[man]] & BitOf(passed)) == 0) {
            return false;
        }
        const Bitboard after =
            (occupied_ & ~BitOf(squares_[man]) & ~BitOf(squares_[victim])) | BitOf(passed);
        return !IsAttacked(squares_[KingOf(us_)], ~us_, after, victim);
    }

    /// Is there a legal move, captures in passing left out.
    [[nodiscard]] bool HasMove() const noexcept {
        for (std::size_t man = 0; man < ending_.men; ++man) {
            if (ending_.man[man].colour == us_ &&
                (ending_.man[man].type == Pawn ? PawnTargets(man) : Targets(man)) != 0) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] std::size_t ManOn(Square square) const noexcept {
        std::size_t man = 0;
        while (squares_[man] != square) {
            ++man;
        }
        return man;
    }

    [[nodiscard]] const Ending& Of() const noexcept { return ending_; }

    [[nodiscard]] const EndingSquares& Squares() const noexcept { return squares_; }

    [[nodiscard]] Bitboard Occupied() const noexcept { return occupied_; }

    [[nodiscard]] Colour SideToMove() const noexcept { return us_; }

    /// The step of the mover's pawns.
    [[nodiscard]] Square Forward() const noexcept { return us_ == White ? 8 : -8; }

private:
    static constexpr std::size_t KingOf(Colour colour) noexcept { return colour == White ? 0 : 1; }

    /// By men other than `gone`.
    [[nodiscard]] bool IsAttacked(Square square, Colour by, Bitboard occupied,
                                  std::size_t gone) const noexcept {
        for (std::size_t man = 0; man < ending_.men; ++man) {
            const auto [type, colour] = ending_.man[man];
            if (colour == by && man != gone &&
                (AttacksOfMan(type, colour, squares_[man], occupied) & BitOf(square)) != 0) {
                return true;
            }
        }
        return false;
    }

    /// A second check leaves no answer but king moves.
    void AddCheck(Bitboard answers) noexcept { answers_ = answers_ == AllSquares ? answers : 0; }

    const Ending& ending_;
    const EndingSquares& squares_;
    Colour us_;
    bool isPlaced_ = true;
    Bitboard occupied_ = 0;
    Bitboard own_ = 0;
    Bitboard attacked_ = 0;                         // by the other side, seen through our king
    Bitboard answers_ = AllSquares;                 // where a man may go while there is a check
    std::array<Bitboard, EndingMostMen> pinned_{};  // where a pinned man may go
};

}  // namespace brenquil
