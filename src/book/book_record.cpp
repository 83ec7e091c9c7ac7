#include "book/book_record.h"

#include "board/move_generator.h"

#include <array>

namespace brenquil {

namespace {

/// The format's promotion values 1 to 4.
constexpr std::array<PromotionIndex, 4> Promotions = {PromoteKnight, PromoteBishop, PromoteRook,
                                                      PromoteQueen};

/// How the format writes a castling, and what it is.
struct BookCastling {
    Square kingFrom;
    Square rookFrom;
    Square kingTo;
    Colour colour;
};

/// By `CastlingIndex`.
constexpr std::array<BookCastling, CastlingRightsCount> Castlings = {{
    {E1, H1, G1, White},
    {E1, A1, C1, White},
    {E8, H8, G8, Black},
    {E8, A8, C8, Black},
}};

/// The castling that the squares mean, by the men on them; `NoMove` if they mean none.
Move CastlingOf(Square from, Square to, const CPosition& position) noexcept {
    for (unsigned index = 0; index < Castlings.size(); ++index) {
        const BookCastling& castling = Castlings[index];
        if (from == castling.kingFrom && to == castling.rookFrom &&
            position.PieceOn(from) == MakePiece(King, castling.colour) &&
            position.PieceOn(to) == MakePiece(Rook, castling.colour)) {
            return Move::Make(from, castling.kingTo, MoveKind::Castling, index);
        }
    }
    return NoMove;
}

/// A pawn that goes to an empty square other than by one or two steps.
bool IsEnPassant(Square from, Square to, const CPosition& position) noexcept {
    const int distance = to > from ? to - from : from - to;
    return TypeOf(position.PieceOn(from)) == Pawn && position.PieceOn(to) == PieceNone &&
           distance != 8 && distance != 16;
}

/// What the field means on this board, whether it can be played or not.
Move MoveOfField(std::uint16_t field, const CPosition& position) noexcept {
    const Square to = field & 63;
    const Square from = field >> 6 & 63;
    const unsigned promotion = field >> 12U & 7U;
    if (promotion >= 1 && promotion <= Promotions.size()) {
        return Move::Make(from, to, MoveKind::Promotion, Promotions[promotion - 1]);
    }
    if (const Move castling = CastlingOf(from, to, position); !castling.IsNone()) {
        return castling;
    }
    return Move::Make(from, to,
                      IsEnPassant(from, to, position) ? MoveKind::EnPassant : MoveKind::Normal);
}

}  // namespace

Move MoveOfRecord(const BookRecord& record, const CPosition& position) noexcept {
    if (record.move == 0) {
        return NoMove;
    }
    Move move = MoveOfField(record.move, position);
    if (!CMoveGenerator(position).IsStoredMoveValid(move)) {
        return NoMove;
    }
    move.SetOrder(record.weight);
    return move;
}

}  // namespace brenquil
