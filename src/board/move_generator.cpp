#include "board/move_generator.h"

#include "board/attacks.h"
#include "board/capture_order.h"
#include "platform/bits.h"

#include <array>
#include <cassert>
#include <utility>

namespace brenquil {

namespace {

constexpr int MostTargetsOfOneMan = 27;  // a queen in the centre

/// With so few men there are at most 162 captures: eight pawns that promote in three ways each, two
/// en passant captures and eight queens with eight captures each.
constexpr int MostMenOfASide = 16;

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

/// Takes captures as they are generated. Each selection of the search walks through the list and
/// exchanges the entry at its place with every later one of a strictly higher key; this does so for
/// the first place while the moves are written, and holds that place in a register.
class CCaptureWriter {
public:
    CCaptureWriter(MoveList& list, const CPosition& position) noexcept
        : list_(list), board_(position.board), next_(&list[0]) {}

    template <class Keys>
    void Add(Square from, Square to, const Keys& keys, std::uint32_t form = 0) noexcept {
        const std::uint32_t key = keys[board_[to]];
        const std::uint32_t word = Move::Make(from, to).word | form | key << 16U;
        // The keys are the signed upper halves: setting the lower half makes "greater" strict.
        const bool isBetter =
            static_cast<std::int32_t>(word) > static_cast<std::int32_t>(best_ | 0xFFFFU);
        next_->word = isBetter ? best_ : word;
        best_ = isBetter ? word : best_;
        ++next_;
    }

    template <class Keys>
    void AddAll(Square from, Bitboard targets, const Keys& keys) noexcept {
        while (targets != 0) {
            Add(from, PopLowestBit(targets), keys);
        }
    }

    template <int Step>
    void AddPawnCaptures(Bitboard targets) noexcept {
        while (targets != 0) {
            const Square to = PopLowestBit(targets);
            Add(to - Step, to, CaptureKeys[Pawn]);
        }
    }

    template <int Step>
    void AddPromotions(Bitboard targets) noexcept {
        while (targets != 0) {
            const Square to = PopLowestBit(targets);
            for (const PromotionIndex index :
                 {PromoteQueen, PromoteKnight, PromoteBishop, PromoteRook}) {
                Add(to - Step, to, PromotionKeys[index],
                    Move::Make(A1, A1, MoveKind::Promotion, index).word);
            }
        }
    }

    void AddEnPassant(Square from, Square to) noexcept {
        Add(from, to, EnPassantKeys, Move::Make(A1, A1, MoveKind::EnPassant).word);
    }

    void Finish() noexcept {
        list_.count = static_cast<std::int32_t>(next_ - list_.begin());
        if (list_.count != 0) {
            list_[0].word = best_;
        }
    }

private:
    MoveList& list_;
    const SquareTable<Piece>& board_;
    Move* next_;
    std::uint32_t best_ = 0x80000000;  ///< at first the lowest key, which every move exceeds
};

template <Colour Us>
void WriteCaptures(MoveList& list, const CPosition& position) noexcept {
    using Geometry = PawnGeometry<Us>;
    const Bitboard enemy = position.colours[~Us];
    const Bitboard occupied = enemy | position.colours[Us];
    CCaptureWriter writer(list, position);

    const Bitboard pawns = position.PiecesOf(Pawn, Us);
    const Bitboard ordinary = pawns & ~Geometry::SeventhRank;
    writer.AddPawnCaptures<Geometry::TowardsA>(Shift<Geometry::TowardsA>(ordinary) & enemy);
    writer.AddPawnCaptures<Geometry::TowardsH>(Shift<Geometry::TowardsH>(ordinary) & enemy);
    if (const Bitboard promoting = pawns & Geometry::SeventhRank; promoting != 0) [[unlikely]] {
        writer.AddPromotions<Geometry::TowardsA>(Shift<Geometry::TowardsA>(promoting) & enemy);
        writer.AddPromotions<Geometry::TowardsH>(Shift<Geometry::TowardsH>(promoting) & enemy);
        writer.AddPromotions<Geometry::Up>(Shift<Geometry::Up>(promoting) & ~occupied);
    }
    if (position.enPassant != SquareNone) [[unlikely]] {
        const Bitboard target = BitOf(position.enPassant);
        for (const Bitboard origin :
             {Shift<-Geometry::TowardsA>(target), Shift<-Geometry::TowardsH>(target)}) {
            if ((origin & pawns) != 0) {
                writer.AddEnPassant(LowestBit(origin), position.enPassant);
            }
        }
    }
    for (Bitboard men = position.PiecesOf(Knight, Us); men != 0;) {
        const Square from = PopLowestBit(men);
        writer.AddAll(from, KnightAttacks[from] & enemy, CaptureKeys[Knight]);
    }
    for (Bitboard men = position.PiecesOf(Bishop, Us); men != 0;) {
        const Square from = PopLowestBit(men);
        writer.AddAll(from, BishopAttacksFrom(from, occupied) & enemy, CaptureKeys[Bishop]);
    }
    for (Bitboard men = position.PiecesOf(Rook, Us); men != 0;) {
        const Square from = PopLowestBit(men);
        writer.AddAll(from, RookAttacksFrom(from, occupied) & enemy, CaptureKeys[Rook]);
    }
    for (Bitboard men = position.PiecesOf(Queen, Us); men != 0;) {
        const Square from = PopLowestBit(men);
        writer.AddAll(from, QueenAttacksFrom(from, occupied) & enemy, CaptureKeys[Queen]);
    }
    for (Bitboard men = position.PiecesOf(King, Us); men != 0;) {
        const Square from = PopLowestBit(men);
        writer.AddAll(from, KingAttacks[from] & enemy, CaptureKeys[King]);
    }
    writer.Finish();
}

/// The same on a position with so many men that the list may be too short.
[[gnu::noinline]] void WriteCapturesOfACrowd(MoveList& list, const CPosition& position) noexcept {
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::Captures);
    ScoreCaptures(list, position);
    for (std::int32_t i = 1; i < list.count; ++i) {
        if (list[i].Order() > list[0].Order()) {
            std::swap(list[i], list[0]);
        }
    }
}

}  // namespace

void CMoveGenerator::GenerateCaptures(MoveList& list) const noexcept {
    assert(list.count == 0);
    const CPosition& position = *position_;
    if (position.colourCount[position.sideToMove] > MostMenOfASide) [[unlikely]] {
        WriteCapturesOfACrowd(list, position);
    } else if (position.sideToMove == White) {
        WriteCaptures<White>(list, position);
    } else {
        WriteCaptures<Black>(list, position);
    }
}

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
    GenerateMoves(list, MoveKinds::All, AllSquares, position_->EvasionTargets());
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
