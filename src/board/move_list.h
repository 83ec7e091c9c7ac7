// A list of moves in a fixed array: what the generator fills, and, used as a line, a variation.
//
// 220 moves are enough for every position that a game can reach. A set-up position with dozens of
// queens can have more pseudo-legal moves; what finds no room is dropped, so that nothing a user
// sends can write outside the array.
#pragma once

#include "board/table.h"
#include "board/types.h"

namespace brenquil {

/// Entries beyond `count` are indeterminate: the record is made in the innermost loops, and
/// clearing it would cost more than filling it.
struct MoveList {
    static constexpr int Capacity = 220;

    Table<Move, Capacity> moves;
    int count = 0;

    /// Adds a move at the end; with the list full nothing happens.
    constexpr void Append(Move move) noexcept {
        if (count < Capacity) [[likely]] {
            moves[count++] = move;
        }
    }

    /// Ends the list at a place in the array that has been written up to there.
    constexpr void EndAt(const Move* end) noexcept { count = static_cast<int>(end - begin()); }

    /// Drops the last move; with the list empty nothing happens.
    constexpr void RemoveLast() noexcept {
        if (count > 0) {
            --count;
        }
    }

    [[nodiscard]] constexpr Move& operator[](int index) noexcept { return moves[index]; }

    [[nodiscard]] constexpr Move operator[](int index) const noexcept { return moves[index]; }

    [[nodiscard]] constexpr const Move* begin() const noexcept { return moves.begin(); }

    [[nodiscard]] constexpr const Move* end() const noexcept { return moves.begin() + count; }
};

/// A variation: the same record, its moves played one after the other.
using PvLine = MoveList;

}  // namespace brenquil
