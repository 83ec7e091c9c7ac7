// The records of move ordering, and the rule by which captures are ordered.
//
// `CSearch::NextMove` hands out the moves of a node one at a time and generates them lazily in
// stages, so that a node that cuts off early pays for no quiet moves. Lists are never sorted: each
// take selects the best of the rest by exchanges, and the order among equal keys is whatever those
// exchanges leave. That order is part of the engine's behaviour.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "platform/bits.h"
#include "search/history.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <utility>

namespace brenquil {

/// A step of a selection: returns the move with the higher key and leaves the other at `place`. No
/// branch, as none could be foretold.
[[nodiscard]] inline Move ExchangeIfHigher(Move& place, Move best) noexcept {
    const Move other = place;
    const std::uint32_t exchanged =
        (other.word ^ best.word) & (std::uint32_t{0} - std::uint32_t{HasHigherKey(other, best)});
    place.word = other.word ^ exchanged;
    return Move{best.word ^ exchanged};
}

/// Where a node goes on when it is asked for its next move; the order of the enumerators is the
/// order of work. The first killer is tried at the end of the good captures, and the lists change
/// at the end of the quiet moves; no node ever goes on from either.
enum class PickStage : std::uint32_t {
    HashMove,
    GenerateCaptures,
    GoodCaptures,
    SecondKiller,
    GenerateQuiets,
    Quiets,
    BadCaptures
};

/// Takes the best of a list from `index` on: walks to the end and exchanges the entry at `index`
/// with every later one of a strictly higher key. There is an entry at `index`.
[[nodiscard]] inline Move TakeBest(MoveList& list, int index) noexcept {
    assert(index >= 0 && index < list.count);
    Move best = list[index];
    for (int later = index + 1; later < list.count; ++later) {
        best = ExchangeIfHigher(list[later], best);
    }
    list[index] = best;
    return best;
}

/// Quiet moves with their keys, handed out in the order of `TakeBest` and known a few moves ahead.
///
/// Most quiet moves were never successful and share the lowest key of all, and so no exchange ever
/// takes one of them forward. A mask says where the others are, and a take visits only those.
class CQuietList {
public:
    /// How many of the next moves are known, so that what the table holds for a move is fetched
    /// while those before it are searched, many of them only for a moment. With 1 a search takes
    /// about 2 % longer, with 2 about 1 %.
    static constexpr int KnownAhead = 4;

    MoveList list;

    /// Empties the list.
    void Reset() noexcept {
        list.count = 0;
        next_ = 0;
        raised_ = 0;
    }

    /// Adds a move whose key is above the lowest, or not.
    void Append(Move move, bool isRaised) noexcept {
        if (list.count < MaskedEntries) [[likely]] {
            raised_ |= std::uint64_t{isRaised} << list.count;
        }
        list.Append(move);
    }

    [[nodiscard]] bool IsAtEnd() const noexcept { return next_ >= list.count; }

    /// Selects the first moves, when all have been added and before the first `Peek` or `Take`.
    void Begin() noexcept {
        for (int index = 0; index < std::min(KnownAhead, list.count); ++index) {
            Select(index);
        }
    }

    /// The move that `Take` will return after it has been called `ahead` times more, which is less
    /// than `KnownAhead`; `NoMove` beyond the end.
    [[nodiscard]] Move Peek(int ahead) const noexcept {
        assert(ahead >= 0 && ahead < KnownAhead);
        return next_ + ahead < list.count ? list[next_ + ahead] : NoMove;
    }

    /// Not at the end. Selects a later move in exchange: it depends on nothing that a search of
    /// this one changes, and can be prepared for meanwhile.
    [[nodiscard]] Move Take() noexcept {
        assert(!IsAtEnd());
        const Move taken = list[next_++];
        if (const int last = next_ + KnownAhead - 1; last < list.count) {
            Select(last);
        }
        return taken;
    }

private:
    /// Brings the move that `TakeBest` would take to the place `index`.
    void Select(int index) noexcept {
        if (list.count > MaskedEntries) [[unlikely]] {
            static_cast<void>(TakeBest(list, index));
            return;
        }
        std::uint64_t later = raised_ & ~std::uint64_t{1} << index;
        if (later == 0) {
            return;
        }
        Move best = list[index];
        if ((raised_ >> index & 1U) == 0) {
            // The first of the others changes places with it, which leaves a lowest key there.
            raised_ ^= later & (~later + 1);
            std::swap(list[PopLowestBit(later)], best);
        }
        while (later != 0) {
            best = ExchangeIfHigher(list[PopLowestBit(later)], best);
        }
        list[index] = best;
    }

    static constexpr int MaskedEntries = 64;

    int next_ = 0;
    std::uint64_t raised_ = 0;  ///< one bit an entry; used while the bits are enough
};

/// The state of one node. There is one record for each ply, reused by every node of that ply.
struct CMovePicker {
    int ply = 0;  ///< index into the killers
    PickStage stage = PickStage::HashMove;
    bool mayPassBelow = false;  ///< the nodes below are deep enough for a null move
    int index = 0;              ///< next place in the list of captures that is being handed out
    Move hashMove{0};           ///< what stage `HashMove` returned; `NoMove` if nothing
    Move killerMove1{0};        ///< the same for the first killer
    Move killerMove2{0};        ///< the same for the second killer
    MoveList goodList;
    CQuietList quietList;
    MoveList badList;

    /// Prepares the record for a node.
    void Reset(int nodePly, bool nodesBelowMayPass) noexcept {
        ply = nodePly;
        mayPassBelow = nodesBelowMayPass;
        stage = PickStage::HashMove;
        index = 0;
        hashMove = NoMove;
        killerMove1 = NoMove;
        killerMove2 = NoMove;
        badList.count = 0;
    }
};

/// Fills the list with quiet moves and, as their keys, the low halves of their history.
void GenerateQuiets(CQuietList& list, const CPosition& position,
                    const HistoryTable& history) noexcept;

/// Whether a capture needs an exchange evaluation before it can count as good: a man takes a lesser
/// one. Promotions, en passant and moves to an empty square never need it.
[[nodiscard]] inline bool NeedsExchangeTest(Move move, const CPosition& position) noexcept {
    if (move.Kind() == MoveKind::Promotion || move.Kind() == MoveKind::EnPassant) {
        return false;
    }
    return TypeOf(position.board[move.To()]) < TypeOf(position.board[move.From()]);
}

}  // namespace brenquil
