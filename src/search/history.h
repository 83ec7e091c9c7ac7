// What a search has learnt of its moves: the history of each man and target square, and the killers
// of each ply. Both belong to one thread and last one search.
#pragma once

#include "board/table.h"
#include "board/types.h"

#include <array>
#include <cstdint>

namespace brenquil {

/// What a search has learnt of one man going to one square.
struct HistoryEntry {
    static constexpr std::int32_t NeverSuccessful = -32000;
    static constexpr std::int32_t MaxOrdering = 32000;

    std::int32_t ordering = NeverSuccessful;  ///< sort key, its low 16 bits count
    std::uint32_t hits = 0;                   ///< searches of this move that reached beta
    std::uint32_t misses = 0;                 ///< searches of this move that did not

    /// Counts a search of the move. One that raised alpha without reaching beta is a miss as well.
    void Count(bool hasCut) noexcept { ++(hasCut ? hits : misses); }

    /// Raises the sort key, up to its ceiling.
    void Reward(std::int64_t amount) noexcept {
        const std::int64_t raised = ordering + amount;
        ordering = raised < MaxOrdering ? static_cast<std::int32_t>(raised) : MaxOrdering;
    }
};

/// By the code of the moved man and its target square.
using HistoryTable = std::array<SquareTable<HistoryEntry>, PieceCodes>;

/// The two quiet moves that were the last to cut off at a ply, without their sort keys.
struct KillerPair {
    Move first{0};
    Move second{0};

    /// Puts the move first and drops the second, unless the move is first already.
    void Remember(Move move) noexcept {
        if (!SameMove(move, first)) {
            second = first;
            first = Move{move.Identity()};
        }
    }
};

}  // namespace brenquil
