// The stages in which a node is handed its moves.

#include "board/static_exchange.h"
#include "search/move_picker.h"
#include "search/search.h"

#include <limits>

namespace brenquil {

Move CSearch::NextMove(CMovePicker& picker) noexcept {
    switch (picker.stage) {
    case PickStage::HashMove:
        picker.stage = PickStage::GenerateCaptures;
        if (const auto hit = hash_.Probe(position_.key);
            hit && !hit->move.IsNone() && generator_.IsStoredMoveValid(hit->move)) {
            picker.hashMove = hit->move;
            return hit->move;
        }
        [[fallthrough]];

    case PickStage::GenerateCaptures:
        generator_.GenerateCaptures(picker.goodList.list);
        picker.goodList.RestartWithBestFirst();
        picker.stage = PickStage::GoodCaptures;
        [[fallthrough]];

    case PickStage::GoodCaptures:
        while (!picker.goodList.IsAtEnd()) {
            const Move move = picker.goodList.Take();
            if (SameMove(move, picker.hashMove)) {
                continue;
            }
            if (!NeedsExchangeTest(move, position_) || !LosesExchange(position_, move)) {
                return move;
            }
            picker.badList.list.Append(move);
        }
        picker.stage = PickStage::SecondKiller;
        if (const Move killer = killers_[picker.ply].first; IsKillerUsable(killer, picker)) {
            picker.killerMove1 = killer;
            return killer;
        }
        [[fallthrough]];

    case PickStage::SecondKiller:
        picker.stage = PickStage::GenerateQuiets;
        if (const Move killer = killers_[picker.ply].second; IsKillerUsable(killer, picker)) {
            picker.killerMove2 = killer;
            return killer;
        }
        [[fallthrough]];

    case PickStage::GenerateQuiets:
        generator_.GenerateMoves(picker.quietList.list, MoveKinds::Quiets);
        picker.quietList.Restart(ScoreQuiets(picker.quietList.list));
        picker.stage = PickStage::Quiets;
        [[fallthrough]];

    case PickStage::Quiets:
        while (!picker.quietList.IsAtEnd()) {
            const Move move = picker.quietList.Take();
            // The entry of the move after this one has the whole search of this one to arrive.
            hash_.Prefetch(position_.LikelyKeyAfter(picker.quietList.Peek()));
            if (!SameMove(move, picker.hashMove) && !SameMove(move, picker.killerMove1) &&
                !SameMove(move, picker.killerMove2)) {
                return move;
            }
        }
        picker.badList.Restart(picker.badList.list.count);
        picker.stage = PickStage::BadCaptures;
        [[fallthrough]];

    case PickStage::BadCaptures:
        if (!picker.badList.IsAtEnd()) {
            return picker.badList.Take();
        }
    }
    return NoMove;
}

/// Killers were quiet where they were found. They are tried here even if they capture now, and then
/// the same move comes a second time from the captures; the duplication is accepted.
bool CSearch::IsKillerUsable(Move killer, const CMovePicker& picker) const noexcept {
    return !killer.IsNone() && !SameMove(killer, picker.hashMove) &&
           generator_.IsStoredMoveValid(killer);
}

/// Returns how many entries have a key above the lowest of all: nearly always that is the key of a
/// move that was never successful, which most moves share.
std::int32_t CSearch::ScoreQuiets(MoveList& list) const noexcept {
    std::int32_t raised = 0;
    std::int32_t lowest = std::numeric_limits<std::int16_t>::max();
    for (std::int32_t i = 0; i < list.count; ++i) {
        Move& move = list[i];
        move.SetOrder(HistoryOf(position_.board[move.From()], move.To()).ordering);
        const std::int32_t key = move.Order();
        if (key < lowest) {
            lowest = key;
            raised = i;
        } else if (key > lowest) {
            ++raised;
        }
    }
    return raised;
}

}  // namespace brenquil
