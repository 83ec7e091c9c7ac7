#include "search/move_picker.h"

#include "board/move_generator.h"

namespace brenquil {

namespace {

/// Writes quiet moves with their history.
class CQuietSink {
public:
    CQuietSink(CQuietList& list, const CPosition& position, const HistoryTable& history) noexcept
        : list_(list), history_(history), us_(position.sideToMove) {}

    void Man(PieceType type, Square from, Bitboard targets) noexcept {
        const auto& entries = history_[MakePiece(type, us_)];
        while (targets != 0) {
            const Square to = PopLowestBit(targets);
            Append(Move::Make(from, to), entries[to]);
        }
    }

    void Pawn(Square from, Square to) noexcept {
        Append(Move::Make(from, to), history_[MakePiece(brenquil::Pawn, us_)][to]);
    }

    void Special(Move castling) noexcept {
        Append(castling, history_[MakePiece(King, us_)][castling.To()]);
    }

private:
    void Append(Move move, const HistoryEntry& entry) noexcept {
        move.SetOrder(entry.ordering);
        list_.Append(move, entry.ordering != HistoryEntry::NeverSuccessful);
    }

    CQuietList& list_;
    const HistoryTable& history_;
    Colour us_;
};

}  // namespace

void GenerateQuiets(CQuietList& list, const CPosition& position,
                    const HistoryTable& history) noexcept {
    list.Reset();
    CQuietSink sink(list, position, history);
    CMoveGenerator(position).Visit<MoveKinds::Quiets>(sink);
}

}  // namespace brenquil
