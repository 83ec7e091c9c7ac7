#include "board/static_exchange.h"

#include "board/attacks.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace brenquil {

namespace {

/// Men of both colours.
Bitboard Both(const CPosition& position, PieceType type) noexcept {
    return position.PiecesOf(type, Black) | position.PiecesOf(type, White);
}

/// What a side takes with: the cheapest of its men among the attackers, where it has one.
inline PieceType CheapestKind(const CPosition& position, Bitboard attackers, Colour side) noexcept {
    PieceType type = Pawn;
    while ((attackers & position.PiecesOf(type, side)) == 0) {
        type = static_cast<PieceType>(type + 1);
    }
    return type;
}

}  // namespace

Score StaticExchange(const CPosition& position, Move move) noexcept {
    const Square to = move.To();
    const Piece moved = position.board[move.From()];
    const Piece target = position.board[to];
    assert(moved != PieceNone);
    Bitboard rest = position.Occupied() & ~BitOf(move.From());
    const Bitboard queens = Both(position, Queen);
    const Bitboard diagonal = Both(position, Bishop) | queens;
    const Bitboard straight = Both(position, Rook) | queens;

    // Looking with the mover off the board uncovers the sliders behind it at once.
    Bitboard attackers =
        (position.AttackersTo(to, White, rest) | position.AttackersTo(to, Black, rest)) & rest;

    // gain[d]: what the side making capture d has won if the exchange ends with it. Each capture
    // takes another man off, so there is at most one entry for each square.
    std::array<Score, 64> gain;
    gain[0] = target == PieceNone ? 0 : SeeValues[TypeOf(target)];
    std::size_t depth = 0;
    Colour side = ~ColourOf(moved);
    PieceType next = TypeOf(moved);
    while ((attackers & position.colours[side]) != 0) {
        const Score previous = gain[depth];
        const Score balance = SeeValues[next] - previous;
        if (std::max(balance, -previous) < 0) {
            break;  // further captures cannot change the outcome
        }
        ++depth;
        gain[depth] = balance;
        next = CheapestKind(position, attackers, side);
        const Bitboard cheapest = attackers & position.PiecesOf(next, side);
        rest &= ~(cheapest & (~cheapest + 1));
        side = ~side;
        attackers |=
            (BishopAttacksFrom(to, rest) & diagonal) | (RookAttacksFrom(to, rest) & straight);
        attackers &= rest;
    }
    for (; depth > 0; --depth) {
        gain[depth - 1] = -std::max(gain[depth], -gain[depth - 1]);
    }
    return gain[0];
}

bool LosesExchange(const CPosition& position, Move move) noexcept {
    const Square to = move.To();
    const Piece moved = position.board[move.From()];
    const Piece target = position.board[to];
    assert(moved != PieceNone);
    const Colour us = ColourOf(moved);
    Score balance = target == PieceNone ? 0 : SeeValues[TypeOf(target)];  // in the mover's view
    Score next = SeeValues[TypeOf(moved)];                                // what stands on `to`
    if (balance >= next) {
        return false;  // even if the mover is lost
    }
    if (balance + SeeValues[Pawn] < next &&
        (PawnAttacks[us][to] & position.PiecesOf(Pawn, ~us)) != 0) {
        return true;  // even if the pawn that takes the mover is taken in turn
    }

    Bitboard rest = position.Occupied() & ~BitOf(move.From());
    const Bitboard queens = Both(position, Queen);
    const Bitboard diagonal = Both(position, Bishop) | queens;
    const Bitboard straight = Both(position, Rook) | queens;
    Bitboard attackers =
        ((BishopAttacksFrom(to, rest) & diagonal) | (RookAttacksFrom(to, rest) & straight) |
         (KnightAttacks[to] & Both(position, Knight)) | (KingAttacks[to] & Both(position, King)) |
         (PawnAttacks[Black][to] & position.PiecesOf(Pawn, White)) |
         (PawnAttacks[White][to] & position.PiecesOf(Pawn, Black))) &
        rest;

    // The side to move is behind as the balance stands, or it would stop; so it has to go on
    // taking, and fails if it cannot or if taking does not turn the balance.
    for (Colour side = ~us;; side = ~side) {
        if ((attackers & position.colours[side]) == 0) {
            return side == us;
        }
        balance += side == us ? next : -next;
        if ((side == us) == (balance < 0)) {
            return side == us;
        }
        const PieceType type = CheapestKind(position, attackers, side);
        next = SeeValues[type];
        const Bitboard cheapest = attackers & position.PiecesOf(type, side);
        rest &= ~(cheapest & (~cheapest + 1));
        // Only a king or a man that moves along a line can have stood in front of a slider.
        if (type != Knight) {
            attackers |=
                (BishopAttacksFrom(to, rest) & diagonal) | (RookAttacksFrom(to, rest) & straight);
        }
        attackers &= rest;
    }
}

}  // namespace brenquil
