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

/// With no more men there are at most 162 captures: eight pawns that promote to four men on three
/// squares each, two en passant captures and eight queens with eight captures each.
constexpr int MostMenOfASide = 16;

/// Writes moves as they come, without sort keys.
class CPlainSink {
public:
    explicit CPlainSink(MoveList& list) noexcept : list_(list) {}

    /// The capacity is tested once for all targets.
    void Man(PieceType, Square from, Bitboard targets) noexcept {
        assert(PopCount(targets) <= MostTargetsOfOneMan);
        if (list_.count > MoveList::Capacity - MostTargetsOfOneMan) [[unlikely]] {
            while (targets != 0) {
                list_.Append(Move::Make(from, PopLowestBit(targets)));
            }
            return;
        }
        Move* out = &list_[list_.count];
        while (targets != 0) {
            *out++ = Move::Make(from, PopLowestBit(targets));
        }
        list_.EndAt(out);
    }

    void Pawn(Square from, Square to) noexcept { list_.Append(Move::Make(from, to)); }

    void Special(Move move) noexcept { list_.Append(move); }

private:
    MoveList& list_;
};

/// Takes captures as they are generated. Each selection of the search walks through the list and
/// exchanges the entry at its place with every later one of a strictly higher key; this does so for
/// the first place while the moves are written. All of it is inlined, so that the best move and the
/// end of the list stay in registers.
class CCaptureWriter {
public:
    CCaptureWriter(MoveList& list, const CPosition& position) noexcept
        : list_(list), board_(position.board), next_(&list[0]) {}

    void Man(PieceType type, Square from, Bitboard targets) noexcept {
        while (targets != 0) {
            Add(from, PopLowestBit(targets), CaptureKeys[type]);
        }
    }

    void Pawn(Square from, Square to) noexcept { Add(from, to, CaptureKeys[brenquil::Pawn]); }

    [[gnu::always_inline]] void Special(Move move) noexcept {
        const bool isPromotion = move.Kind() == MoveKind::Promotion;
        Add(move.From(), move.To(), isPromotion ? PromotionKeys[move.Index()] : EnPassantKeys,
            move.word);
    }

    void Finish() noexcept {
        list_.EndAt(next_);
        if (list_.count != 0) {
            list_[0].word = best_;
        }
    }

private:
    using Keys = std::array<std::uint8_t, PieceCodes + 1>;

    [[gnu::always_inline]] void Add(Square from, Square to, const Keys& keys,
                                    std::uint32_t form = 0) noexcept {
        const std::uint32_t key = keys[board_[to]];
        const std::uint32_t word = Move::Make(from, to).word | form | key << 16U;
        const bool isBetter = HasHigherKey(Move{word}, Move{best_});
        next_->word = isBetter ? best_ : word;
        best_ = isBetter ? word : best_;
        ++next_;
    }

    MoveList& list_;
    const SquareTable<Piece>& board_;
    Move* next_;
    std::uint32_t best_ = 0x80000000;  ///< at first the lowest key, which every move exceeds
};

/// Captures in a position with more men, for which the list may be too short.
[[gnu::noinline]] void WriteCapturesOfACrowd(MoveList& list, const CPosition& position) noexcept {
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::Captures);
    ScoreCaptures(list, position);
    for (int i = 1; i < list.count; ++i) {
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
        return;
    }
    CCaptureWriter writer(list, position);
    Visit<MoveKinds::Captures>(writer);
    writer.Finish();
}

void CMoveGenerator::GenerateMoves(MoveList& list, MoveKinds wanted, Bitboard fromMask,
                                   Bitboard toMask) const noexcept {
    CPlainSink sink(list);
    switch (wanted) {
    case MoveKinds::Captures: Visit<MoveKinds::Captures>(sink, fromMask, toMask); break;
    case MoveKinds::Quiets: Visit<MoveKinds::Quiets>(sink, fromMask, toMask); break;
    case MoveKinds::All: Visit<MoveKinds::All>(sink, fromMask, toMask); break;
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
