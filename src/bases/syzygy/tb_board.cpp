#include "bases/syzygy/tb_board.h"

#include "board/attacks.h"
#include "platform/bits.h"

#include <bit>

namespace brenquil {

namespace {

[[nodiscard]] Colour ColourToMove(const TbPosition& position) noexcept {
    return position.turn ? White : Black;
}

/// Where the pawns of the side to move may go without capturing, from one square.
[[nodiscard]] Bitboard Pushes(const TbPosition& position, Square from) noexcept {
    const Colour us = ColourToMove(position);
    const Bitboard empty = ~position.Occupied();
    const Bitboard single = StepForward(BitOf(from), us) & empty;
    if (RelativeRank(from, us) != 1) {
        return single;
    }
    return single | (StepForward(single, us) & empty);
}

/// What the pawns of the side to move may take, en passant included, from one square.
[[nodiscard]] Bitboard PawnCaptures(const TbPosition& position, Square from) noexcept {
    const Bitboard enPassant = position.ep != 0 ? BitOf(position.ep) : 0;
    return PawnAttacks[ColourToMove(position)][from] & (position.Enemy() | enPassant);
}

void AppendPawnMoves(TbMoveList& list, Square from, Bitboard targets) noexcept {
    while (targets != 0) {
        const Square to = PopLowestBit(targets);
        if ((BitOf(to) & (Rank1 | Rank8)) == 0) {
            list.Append(TbMove::Make(from, to));
            continue;
        }
        list.Append(TbMove::Make(from, to, TbPromoteQueen));
        list.Append(TbMove::Make(from, to, TbPromoteKnight));
        list.Append(TbMove::Make(from, to, TbPromoteRook));
        list.Append(TbMove::Make(from, to, TbPromoteBishop));
    }
}

/// Calls `attacks` for each of the men, ascending, and appends what is in `allowed`.
template <class Attacks>
void AppendPieceMoves(TbMoveList& list, Bitboard men, Bitboard allowed, Attacks attacks) noexcept {
    while (men != 0) {
        const Square from = PopLowestBit(men);
        Bitboard targets = attacks(from) & allowed;
        while (targets != 0) {
            list.Append(TbMove::Make(from, PopLowestBit(targets)));
        }
    }
}

void AppendAllPieceMoves(const TbPosition& position, TbMoveList& list, Bitboard allowed) noexcept {
    const Bitboard own = position.Own();
    const Bitboard occupied = position.Occupied();
    AppendPieceMoves(list, own & position.kings, allowed, [](Square s) { return KingAttacks[s]; });
    AppendPieceMoves(list, own & position.queens, allowed,
                     [=](Square s) { return QueenAttacksFrom(s, occupied); });
    AppendPieceMoves(list, own & position.rooks, allowed,
                     [=](Square s) { return RookAttacksFrom(s, occupied); });
    AppendPieceMoves(list, own & position.bishops, allowed,
                     [=](Square s) { return BishopAttacksFrom(s, occupied); });
    AppendPieceMoves(list, own & position.knights, allowed,
                     [](Square s) { return KnightAttacks[s]; });
}

/// Calls `targetsOf` for each own pawn, ascending, and appends its moves.
template <class TargetsOf>
void AppendAllPawnMoves(const TbPosition& position, TbMoveList& list,
                        TargetsOf targetsOf) noexcept {
    Bitboard pawns = position.Own() & position.pawns;
    while (pawns != 0) {
        const Square from = PopLowestBit(pawns);
        AppendPawnMoves(list, from, targetsOf(from));
    }
}

/// Is the square attacked by men of `by`, whose occupancy is `men`.
[[nodiscard]] bool IsAttacked(const TbPosition& position, Square square, Colour by,
                              Bitboard men) noexcept {
    const Bitboard occupied = position.Occupied();
    return (KingAttacks[square] & men & position.kings) != 0 ||
           (KnightAttacks[square] & men & position.knights) != 0 ||
           (PawnAttacks[~by][square] & men & position.pawns) != 0 ||
           (RookAttacksFrom(square, occupied) & men & (position.rooks | position.queens)) != 0 ||
           (BishopAttacksFrom(square, occupied) & men & (position.bishops | position.queens)) != 0;
}

/// Is any king of that side attacked.
[[nodiscard]] bool IsKingAttacked(const TbPosition& position, bool ofWhite) noexcept {
    const Bitboard enemy = ofWhite ? position.black : position.white;
    Bitboard kings = position.kings & (ofWhite ? position.white : position.black);
    while (kings != 0) {
        if (IsAttacked(position, PopLowestBit(kings), ofWhite ? Black : White, enemy)) {
            return true;
        }
    }
    return false;
}

[[nodiscard]] bool HasOneKingEach(const TbPosition& position) noexcept {
    return std::has_single_bit(position.kings & position.white) &&
           std::has_single_bit(position.kings & position.black);
}

/// What the new position knows of a pawn move beyond the carried man.
void FinishPawnMove(TbPosition& to, const TbPosition& from, TbMove move) noexcept {
    const Bitboard destination = BitOf(move.To());
    to.rule50 = 0;
    switch (move.Promotion()) {
    case TbPromoteQueen: to.queens |= destination; break;
    case TbPromoteRook: to.rooks |= destination; break;
    case TbPromoteBishop: to.bishops |= destination; break;
    case TbPromoteKnight: to.knights |= destination; break;
    default: break;
    }
    if (move.Promotion() != TbPromoteNone) {
        to.pawns &= ~destination;
        return;
    }
    const Colour us = ColourToMove(from);
    const int distance = move.To() - move.From();
    if (distance == 16 || distance == -16) {
        const Square passed = (move.To() + move.From()) / 2;
        if ((PawnAttacks[us][passed] & to.Own() & to.pawns) != 0) {
            to.ep = ToByte(passed);
        }
    } else if (from.ep != 0 && move.To() == from.ep) {
        const Bitboard victim = StepForward(destination, ~us);
        to.white &= ~victim;
        to.black &= ~victim;
        to.pawns &= ~victim;
    }
}

}  // namespace

void TbGenMoves(const TbPosition& position, TbMoveList& list) noexcept {
    AppendAllPieceMoves(position, list, ~position.Own());
    AppendAllPawnMoves(position, list, [&](Square from) {
        return PawnCaptures(position, from) | Pushes(position, from);
    });
}

void TbGenCaptures(const TbPosition& position, TbMoveList& list) noexcept {
    AppendAllPieceMoves(position, list, position.Enemy());
    AppendAllPawnMoves(position, list, [&](Square from) {
        return PawnCaptures(position, from) | (Pushes(position, from) & (Rank1 | Rank8));
    });
}

void TbGenPawnQuiets(const TbPosition& position, TbMoveList& list) noexcept {
    AppendAllPawnMoves(position, list, [&](Square from) { return Pushes(position, from); });
}

void TbGenEp(const TbPosition& position, TbMoveList& list) noexcept {
    if (position.ep == 0) {
        return;
    }
    const Colour them = ~ColourToMove(position);
    Bitboard pawns = PawnAttacks[them][position.ep] & position.Own() & position.pawns;
    while (pawns != 0) {
        list.Append(TbMove::Make(PopLowestBit(pawns), position.ep));
    }
}

bool TbIsEnPassant(const TbPosition& position, TbMove move) noexcept {
    return position.ep != 0 && move.To() == position.ep &&
           (BitOf(move.From()) & position.Own() & position.pawns) != 0;
}

bool TbDoMove(TbPosition& to, const TbPosition& from, TbMove move) noexcept {
    const Bitboard origin = BitOf(move.From());
    const Bitboard destination = BitOf(move.To());
    const auto carried = [=](Bitboard board) {
        return (board & ~(origin | destination)) | ((board & origin) != 0 ? destination : 0);
    };
    to.white = carried(from.white);
    to.black = carried(from.black);
    to.kings = carried(from.kings);
    to.queens = carried(from.queens);
    to.rooks = carried(from.rooks);
    to.bishops = carried(from.bishops);
    to.knights = carried(from.knights);
    to.pawns = carried(from.pawns);
    to.turn = !from.turn;
    to.ep = 0;
    if ((from.pawns & origin) != 0) {
        FinishPawnMove(to, from, move);
    } else if ((from.Occupied() & destination) != 0) {
        to.rule50 = 0;
    } else {
        to.rule50 = from.rule50 + 1;
    }
    return (to.kings & to.Enemy()) != 0 && !IsKingAttacked(to, from.turn);
}

bool TbInCheck(const TbPosition& position) noexcept {
    return IsKingAttacked(position, position.turn);
}

bool TbHasLegalMove(const TbPosition& position, bool exceptEp) noexcept {
    TbMoveList list;
    TbGenMoves(position, list);
    TbPosition next;
    for (const TbMove move : list) {
        if (!(exceptEp && TbIsEnPassant(position, move)) && TbDoMove(next, position, move)) {
            return true;
        }
    }
    return false;
}

bool TbIsCheckmate(const TbPosition& position) noexcept {
    return TbInCheck(position) && !TbHasLegalMove(position, false);
}

bool TbIsValid(const TbPosition& position) noexcept {
    const Bitboard types[] = {position.kings,   position.queens,  position.rooks,
                              position.bishops, position.knights, position.pawns};
    Bitboard seen = 0;
    for (const Bitboard type : types) {
        if ((seen & type) != 0) {
            return false;
        }
        seen |= type;
    }
    return TbFitsTables(position) && seen == position.Occupied() &&
           (position.white & position.black) == 0 && !IsKingAttacked(position, !position.turn);
}

bool TbFitsTables(const TbPosition& position) noexcept {
    return HasOneKingEach(position) && (position.pawns & (Rank1 | Rank8)) == 0;
}

}  // namespace brenquil
