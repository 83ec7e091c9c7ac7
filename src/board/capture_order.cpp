#include "board/capture_order.h"

#include <cassert>

namespace brenquil {

namespace {

/// 0 for a move that wins nothing.
int KeyOf(Move move, const CPosition& position) noexcept {
    const Piece victim = position.board[move.To()];
    switch (move.Kind()) {
    case MoveKind::Promotion: return PromotionKeys[move.Index()][victim];
    case MoveKind::EnPassant: return EnPassantKeys[victim];
    default: break;
    }
    const Piece attacker = position.board[move.From()];
    assert(attacker != PieceNone);
    return CaptureKeys[TypeOf(attacker)][victim];
}

}  // namespace

int ScoreCaptures(MoveList& list, const CPosition& position) noexcept {
    int count = 0;
    for (int i = 0; i < list.count; ++i) {
        if (const int key = KeyOf(list[i], position); key != 0) {
            list[i].SetOrder(key);
            ++count;
        }
    }
    return count;
}

}  // namespace brenquil
