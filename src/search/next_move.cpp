// The stages in which a node is handed its moves.

#include "board/static_exchange.h"
#include "search/move_picker.h"
#include "search/search.h"

namespace brenquil {

Move CSearch::NextMove(CMovePicker& picker) noexcept {
    switch (picker.stage) {
    case PickStage::HashMove:
        picker.stage = PickStage::GenerateCaptures;
        if (const auto hit = hash_.Probe(position_.key);
            hit && !hit->move.IsNone() && generator_.IsStoredMoveValid(hit->move)) {
            picker.hashMove = hit->move;
            PrefetchAfter(hit->move, picker.mayPassBelow);
            return hit->move;
        }
        [[fallthrough]];

    case PickStage::GenerateCaptures:
        picker.goodList.count = 0;
        generator_.GenerateCaptures(picker.goodList);
        picker.stage = PickStage::GoodCaptures;
        [[fallthrough]];

    case PickStage::GoodCaptures:
        while (picker.index < picker.goodList.count) {
            // `GenerateCaptures` has taken the first already.
            const Move move =
                picker.index == 0 ? picker.goodList[0] : TakeBest(picker.goodList, picker.index);
            ++picker.index;
            if (SameMove(move, picker.hashMove)) {
                continue;
            }
            PrefetchAfter(move, picker.mayPassBelow);
            if (!NeedsExchangeTest(move, position_) || !LosesExchange(position_, move)) {
                return move;
            }
            picker.badList.Append(move);
        }
        picker.stage = PickStage::SecondKiller;
        if (const Move killer = killers_[picker.ply].first; IsKillerUsable(killer, picker)) {
            picker.killerMove1 = killer;
            PrefetchAfter(killer, picker.mayPassBelow);
            return killer;
        }
        [[fallthrough]];

    case PickStage::SecondKiller:
        picker.stage = PickStage::GenerateQuiets;
        if (const Move killer = killers_[picker.ply].second; IsKillerUsable(killer, picker)) {
            picker.killerMove2 = killer;
            PrefetchAfter(killer, picker.mayPassBelow);
            return killer;
        }
        [[fallthrough]];

    case PickStage::GenerateQuiets:
        GenerateQuiets(picker.quietList, position_, history_);
        picker.quietList.Begin();
        if (!position_.inCheck) {
            for (int ahead = 0; ahead < CQuietList::KnownAhead; ++ahead) {
                PrefetchAfter(picker.quietList.Peek(ahead), picker.mayPassBelow);
            }
        }
        picker.stage = PickStage::Quiets;
        [[fallthrough]];

    case PickStage::Quiets:
        while (!picker.quietList.IsAtEnd()) {
            const Move move = picker.quietList.Take();
            if (position_.inCheck) {
                // Most of them do not answer the check; they cost neither a prefetch nor a make.
                if (position_.RefuseAtOnce(move)) {
                    continue;
                }
                PrefetchAfter(move, picker.mayPassBelow);
            } else {
                PrefetchAfter(picker.quietList.Peek(CQuietList::KnownAhead - 1),
                              picker.mayPassBelow);
            }
            if (!SameMove(move, picker.hashMove) && !SameMove(move, picker.killerMove1) &&
                !SameMove(move, picker.killerMove2)) {
                return move;
            }
        }
        picker.index = 0;
        picker.stage = PickStage::BadCaptures;
        [[fallthrough]];

    case PickStage::BadCaptures:
        if (picker.index < picker.badList.count) {
            const Move move = TakeBest(picker.badList, picker.index++);
            PrefetchAfter(move, picker.mayPassBelow);
            return move;
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

}  // namespace brenquil
