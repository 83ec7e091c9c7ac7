// The records of move ordering, and the rule by which captures are ordered.
//
// `CSearch::NextMove` hands out the moves of a node one at a time and generates them lazily in
// stages, so that a node that cuts off early pays for no quiet moves. Lists are never sorted: each
// take selects the best of the rest by exchanges, and the order among equal keys is whatever those
// exchanges leave. That order is part of the engine's behaviour.
#pragma once

#include "board/move_list.h"
#include "board/position.h"

#include <cstdint>

namespace brenquil {

/// Where a node goes on when it is asked for its next move; the order of the enumerators is the
/// order of work. Between the good captures and the second killer comes the first, between the
/// quiet moves and the losing captures a change of lists, and nobody waits at either.
enum class PickStage : std::uint32_t {
    HashMove,
    GenerateCaptures,
    GoodCaptures,
    SecondKiller,
    GenerateQuiets,
    Quiets,
    BadCaptures
};

/// A list and how far it has been handed out.
class CSelectionList {
public:
    MoveList list;

    /// Empties the list.
    void Reset() noexcept {
        list.count = 0;
        Restart(0);
    }

    /// Begins to hand out. `raised` is how many entries have a key above all the others' common
    /// key: once they are taken the rest stands in its final order and need not be searched.
    void Restart(std::int32_t raised) noexcept {
        next_ = 0;
        raised_ = raised;
        settled_ = 0;
    }

    /// The same for a list whose best entry stands first already, by the exchanges of a `Take`.
    void RestartWithBestFirst() noexcept {
        Restart(list.count);
        settled_ = 1;
    }

    /// What the next `Take` will return if the rest stands in its final order, and a guess if not.
    /// `NoMove` at the end.
    [[nodiscard]] Move Peek() const noexcept { return IsAtEnd() ? NoMove : list[next_]; }

    [[nodiscard]] bool IsAtEnd() const noexcept { return next_ >= list.count; }

    /// Takes the best of the rest: walks from the next place to the end and exchanges the entry at
    /// the next place with every later one of a strictly higher key. Not at the end.
    [[nodiscard]] Move Take() noexcept {
        Move& place = list[next_];
        ++next_;
        if (next_ > raised_ || next_ <= settled_) {
            return place;
        }
        Move best = place;
        for (Move* other = &place + 1; other != list.end(); ++other) {
            // The keys are the signed upper halves: setting the lower half makes "greater" strict.
            if (static_cast<std::int32_t>(other->word) >
                static_cast<std::int32_t>(best.word | 0xFFFFU)) {
                const Move exchanged = *other;
                *other = best;
                best = exchanged;
            }
        }
        place = best;
        return best;
    }

private:
    std::int32_t next_ = 0;
    std::int32_t raised_ = 0;
    std::int32_t settled_ = 0;  ///< entries that stand in their final order from the start
};

/// State of one node; there is one record a ply, used anew by every node of that ply.
struct CMovePicker {
    std::int32_t ply = 0;  ///< index into the killers
    PickStage stage = PickStage::HashMove;
    Move hashMove{0};     ///< what stage `HashMove` returned; `NoMove` if nothing
    Move killerMove1{0};  ///< the same for the first killer
    Move killerMove2{0};  ///< the same for the second killer
    CSelectionList goodList;
    CSelectionList quietList;
    CSelectionList badList;

    /// Prepares the record for a node.
    void Reset(std::int32_t nodePly) noexcept {
        ply = nodePly;
        stage = PickStage::HashMove;
        hashMove = NoMove;
        killerMove1 = NoMove;
        killerMove2 = NoMove;
        goodList.Reset();
        quietList.Reset();
        badList.Reset();
    }
};

/// Whether a capture needs an exchange evaluation before it can count as good: a man takes a lesser
/// one. Promotions, en passant and moves to an empty square never need it.
[[nodiscard]] inline bool NeedsExchangeTest(Move move, const CPosition& position) noexcept {
    if (move.Kind() == MoveKind::Promotion || move.Kind() == MoveKind::EnPassant) {
        return false;
    }
    return TypeOf(position.board[move.To()]) < TypeOf(position.board[move.From()]);
}

}  // namespace brenquil
