#include "search/move_picker.h"

#include <array>

namespace brenquil {

namespace {

// By `PieceType`, the last entry for an empty square.
constexpr std::array<std::int32_t, 7> VictimValue = {1, 2, 2, 3, 4, 0, 0};
constexpr std::array<std::int32_t, 6> AttackerValue = {5, 4, 3, 2, 1, 0};
// By `PromotionIndex`.
constexpr std::array<std::int32_t, 4> PromotionValue = {2, 1, 1, 3};
constexpr std::int32_t VictimWeight = 8;

}  // namespace

std::int32_t ScoreCaptures(MoveList& list, const CPosition& position) noexcept {
    std::int32_t raised = 0;
    for (std::int32_t i = 0; i < list.count; ++i) {
        Move& move = list[i];
        std::int32_t value = VictimValue[TypeOf(position.board[move.To()])];
        if (move.Kind() == MoveKind::Promotion) {
            value += PromotionValue[move.Index()];
        } else if (move.Kind() == MoveKind::EnPassant) {
            value += VictimValue[Pawn];  // the victim is not on the target square
        }
        if (value != 0) {
            move.SetOrder(VictimWeight * value +
                          AttackerValue[TypeOf(position.board[move.From()])]);
            ++raised;
        }
    }
    return raised;
}

}  // namespace brenquil
