#include "board/move_generator.h"

#include "board/attacks.h"
#include "platform/bits.h"

#include <array>

namespace brenquil {

namespace {

constexpr int MostTargetsOfOneMan = 27;  // a queen in the centre

constexpr bool Includes(MoveKinds wanted, MoveKinds kind) noexcept {
    return (static_cast<unsigned>(wanted) & static_cast<unsigned>(kind)) != 0;
}

/// Everything about pawns that depends on their colour.
template <Colour Us>
struct PawnGeometry {
    static constexpr int Up = Forward(Us);
    static constexpr int TowardsA = Up - 1;
    static constexpr int TowardsH = Up + 1;
    static constexpr Bitboard SecondRank = RelativeRankMask(1, Us);
    static constexpr Bitboard SeventhRank = RelativeRankMask(6, Us);
};

/// Writes the moves of one man. The capacity is tested once for all of them.
inline void AppendTargets(MoveList& list, Square from, Bitboard targets) noexcept {
    if (list.count > MoveList::Capacity - MostTargetsOfOneMan) [[unlikely]] {
        while (targets != 0) {
            list.Append(Move::Make(from, PopLowestBit(targets)));
        }
        return;
    }
    Move* out = &list[list.count];
    while (targets != 0) {
        *out++ = Move::Make(from, PopLowestBit(targets));
    }
    list.count = static_cast<std::int32_t>(out - list.begin());
}

/// Writes one move for each target of a set of pawns that all took the same step.
template <int Step>
inline void AppendPawnMoves(MoveList& list, Bitboard targets) noexcept {
    while (targets != 0) {
        const Square to = PopLowestBit(targets);
        list.Append(Move::Make(to - Step, to));
    }
}

template <int Step>
inline void AppendPromotions(MoveList& list, Bitboard targets) noexcept {
    while (targets != 0) {
        const Square to = PopLowestBit(targets);
        for (const PromotionIndex index :
             {PromoteQueen, PromoteKnight, PromoteBishop, PromoteRook}) {
            list.Append(Move::Make(to - Step, to, MoveKind::Promotion, index));
        }
    }
}

template <Colour Us>
inline void AppendPawnCaptures(const CPosition& position, MoveList& list, Bitboard pawns,
                               Bitboard toMask) noexcept {
    using Geometry = PawnGeometry<Us>;
    const Bitboard enemy = position.colours[~Us] & toMask;
    const Bitboard empty = ~position.Occupied() & toMask;
    const Bitboard ordinary = pawns & ~Geometry::SeventhRank;
    const Bitboard promoting = pawns & Geometry::SeventhRank;

    AppendPawnMoves<Geometry::TowardsA>(list, Shift<Geometry::TowardsA>(ordinary) & enemy);
    AppendPawnMoves<Geometry::TowardsH>(list, Shift<Geometry::TowardsH>(ordinary) & enemy);
    if (promoting != 0) {
        AppendPromotions<Geometry::TowardsA>(list, Shift<Geometry::TowardsA>(promoting) & enemy);
        AppendPromotions<Geometry::TowardsH>(list, Shift<Geometry::TowardsH>(promoting) & enemy);
        AppendPromotions<Geometry::Up>(list, Shift<Geometry::Up>(promoting) & empty);
    }
    if (position.enPassant != SquareNone) {
        const Bitboard target = BitOf(position.enPassant);
        for (const Bitboard origin :
             {Shift<-Geometry::TowardsA>(target), Shift<-Geometry::TowardsH>(target)}) {
            if ((origin & pawns) != 0) {
                list.Append(Move::Make(LowestBit(origin), position.enPassant, MoveKind::EnPassant));
            }
        }
    }
}

template <Colour Us>
inline void AppendPawnSteps(const CPosition& position, MoveList& list, Bitboard pawns,
                            Bitboard toMask) noexcept {
    using Geometry = PawnGeometry<Us>;
    const Bitboard empty = ~position.Occupied();
    const Bitboard single = Shift<Geometry::Up>(pawns & ~Geometry::SeventhRank) & empty;
    const Bitboard first = Shift<Geometry::Up>(pawns & Geometry::SecondRank) & empty;
    const Bitboard twice = Shift<Geometry::Up>(first) & empty;
    AppendPawnMoves<Geometry::Up>(list, single & toMask);
    AppendPawnMoves<2 * Geometry::Up>(list, twice & toMask);
}

}  // namespace

void CMoveGenerator::GenerateMoves(MoveList& list, MoveKinds wanted, Bitboard fromMask,
                                   Bitboard toMask) const noexcept {
    const bool captures = Includes(wanted, MoveKinds::Captures);
    const bool quiets = Includes(wanted, MoveKinds::Quiets);
    const CPosition& position = *position_;
    const Colour us = position.sideToMove;
    const Bitboard occupied = position.Occupied();
    const Bitboard targets =
        (captures ? position.colours[~us] : 0) | (quiets ? ~occupied : Bitboard{0});
    const Bitboard pieceTargets = targets & toMask;

    if (const Bitboard pawns = position.PiecesOf(Pawn, us) & fromMask; pawns != 0) {
        if (captures) {
            if (us == White) {
                AppendPawnCaptures<White>(position, list, pawns, toMask);
            } else {
                AppendPawnCaptures<Black>(position, list, pawns, toMask);
            }
        }
        if (quiets) {
            if (us == White) {
                AppendPawnSteps<White>(position, list, pawns, toMask);
            } else {
                AppendPawnSteps<Black>(position, list, pawns, toMask);
            }
        }
    }
    for (Bitboard men = position.PiecesOf(Knight, us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        AppendTargets(list, from, KnightAttacks[from] & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(Bishop, us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        AppendTargets(list, from, BishopAttacksFrom(from, occupied) & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(Rook, us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        AppendTargets(list, from, RookAttacksFrom(from, occupied) & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(Queen, us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        AppendTargets(list, from, QueenAttacksFrom(from, occupied) & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(King, us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        AppendTargets(list, from, KingAttacks[from] & targets);
        if (quiets && !position.inCheck && position.castlingRights != 0) {
            GenerateCastling(list, from, us == White ? WhiteKingSide : BlackKingSide);
            GenerateCastling(list, from, us == White ? WhiteQueenSide : BlackQueenSide);
        }
    }
}

void CMoveGenerator::GenerateEvasions(MoveList& list) const noexcept {
    const CPosition& position = *position_;
    const Colour us = position.sideToMove;
    const Bitboard occupied = position.Occupied();
    Bitboard helpful = 0;
    for (Bitboard kings = position.PiecesOf(King, us); kings != 0;) {
        const Square king = PopLowestBit(kings);
        Bitboard attackers = position.AttackersTo(king, ~us, occupied);
        helpful |= attackers;
        while (attackers != 0) {
            helpful |= Between[PopLowestBit(attackers)][king];
        }
    }
    GenerateMoves(list, MoveKinds::All, AllSquares, helpful);
}

bool CMoveGenerator::CanCastle(Square kingSquare, CastlingIndex index) const noexcept {
    const CPosition& position = *position_;
    const CastlingRecord& record = position.castling[index];
    if (record.kingFrom != kingSquare || !position.HasRight(index) ||
        (record.emptyMask & position.Occupied()) != 0) {
        return false;
    }
    const Colour enemy = ~ColourOf(position.board[kingSquare]);
    for (Bitboard path = record.kingPath; path != 0;) {
        if (position.IsSquareAttacked(PopLowestBit(path), enemy)) {
            return false;
        }
    }
    return true;
}

void CMoveGenerator::GenerateCastling(MoveList& list, Square kingSquare,
                                      CastlingIndex index) const noexcept {
    if (CanCastle(kingSquare, index)) {
        list.Append(
            Move::Make(kingSquare, position_->castling[index].kingTo, MoveKind::Castling, index));
    }
}

/// Whether the generator writes this castling; the word names the king's squares and a right.
bool CMoveGenerator::IsCastlingPossible(Move move) const noexcept {
    const CPosition& position = *position_;
    const auto index = static_cast<CastlingIndex>(move.Index());
    const Colour us = position.sideToMove;
    return position.board[move.From()] == MakePiece(King, us) && !position.inCheck &&
           (index <= WhiteQueenSide) == (us == White) &&
           position.castling[index].kingTo == move.To() && CanCastle(move.From(), index);
}

bool CMoveGenerator::IsPseudoLegal(Move move) const noexcept {
    return move.Kind() == MoveKind::Castling ? IsCastlingPossible(move) : IsStoredMoveValid(move);
}

bool CMoveGenerator::IsStoredMoveValid(Move move) const noexcept {
    const CPosition& position = *position_;
    const Square from = move.From();
    const Square to = move.To();
    const Colour us = position.sideToMove;
    const Bitboard target = BitOf(to);
    if ((position.colours[us] & BitOf(from)) == 0 || (position.colours[us] & target) != 0) {
        return false;
    }
    const PieceType type = TypeOf(position.board[from]);
    const Bitboard occupied = position.Occupied();

    if (move.Kind() == MoveKind::Castling) {
        return IsCastlingPossible(move);
    }
    if (type == Pawn) {
        const int up = Forward(us);
        const bool isSeventh = RelativeRank(from, us) == 6;
        if (move.Kind() == MoveKind::EnPassant) {
            return move.Index() == 0 && to == position.enPassant &&
                   (PawnAttacks[us][from] & target) != 0;
        }
        if ((move.Kind() == MoveKind::Promotion) != isSeventh ||
            (move.Kind() == MoveKind::Normal && move.Index() != 0)) {
            return false;
        }
        if ((occupied & target) != 0) {
            return (PawnAttacks[us][from] & target) != 0;
        }
        const bool isSecond = RelativeRank(from, us) == 1;
        return to == from + up ||
               (isSecond && to == from + 2 * up && (occupied & BitOf(from + up)) == 0);
    }
    if (move.Kind() != MoveKind::Normal || move.Index() != 0) {
        return false;
    }
    switch (type) {
    case Knight: return (KnightAttacks[from] & target) != 0;
    case Bishop: return (BishopAttacksFrom(from, occupied) & target) != 0;
    case Rook: return (RookAttacksFrom(from, occupied) & target) != 0;
    case Queen: return (QueenAttacksFrom(from, occupied) & target) != 0;
    default: return (KingAttacks[from] & target) != 0;
    }
}

}  // namespace brenquil
