// How the two families of tables count.
//
// Solving is the same for both: from the mates and from what captures, promotions and pawn moves
// lead to, backwards move by move. A family says how far the end is when such a move leads to a
// value, and how a distance is written down.
//
// A code of an ending that is being solved: 0 for a draw, positive for a win and negative for a
// loss of the side to move. A value (one byte) is what is kept of it when the ending is done.
#pragma once

#include <algorithm>
#include <cstdint>

namespace brenquil {

/// A distance in plies that is not a distance.
inline constexpr int NoDistance = 0x7FFF;

/// What the moves that leave a slice for good come to, for the side that makes them.
struct ExitSum {
    int bestWin = NoDistance;  ///< plies of the quickest win
    int worstLoss = 0;         ///< plies of the slowest loss, if there is nothing but losses
    bool canDraw = false;
    bool hasMove = false;

    void AddWin(int plies) noexcept {
        hasMove = true;
        bestWin = std::min(bestWin, plies);
    }

    void AddLoss(int plies) noexcept {
        hasMove = true;
        worstLoss = std::max(worstLoss, plies);
    }

    void AddDraw() noexcept {
        hasMove = true;
        canDraw = true;
    }
};

/// Distance to mate: n for a win in n moves, -n - 1 for a loss in n. A code is a value.
struct DistanceToMate {
    using Code = std::int8_t;

    static constexpr int MostPlies = 254;

    [[nodiscard]] static constexpr int WinCode(int plies) noexcept { return (plies + 1) / 2; }

    [[nodiscard]] static constexpr int LossCode(int plies) noexcept { return -(plies / 2) - 1; }

    [[nodiscard]] static constexpr int PliesOf(int code) noexcept {
        return code > 0 ? 2 * code - 1 : -2 * (code + 1);
    }

    [[nodiscard]] static constexpr int ValueOf(int code) noexcept { return code; }

    /// A move that leads to `value` for the other side.
    static void Add(ExitSum& sum, int value) noexcept {
        if (value == 0) {
            sum.AddDraw();
        } else if (value < 0) {
            sum.AddWin(PliesOf(value) + 1);
        } else {
            sum.AddLoss(PliesOf(value) + 1);
        }
    }
};

/// Distance to the next capture, pawn move or mate, under the fifty-move rule: d for a win after d
/// plies, -d - 1 for a loss. From 101 on the rule turns the result into a draw. Values are classes:
/// 2 win, 1 win that the rule spoils, 0 draw, -1 and -2 likewise for losses.
struct DistanceToZeroing {
    using Code = std::int16_t;

    static constexpr int MostPlies = 1000;
    static constexpr int Spoilt = 101;

    [[nodiscard]] static constexpr int WinCode(int plies) noexcept { return plies; }

    [[nodiscard]] static constexpr int LossCode(int plies) noexcept { return -plies - 1; }

    [[nodiscard]] static constexpr int PliesOf(int code) noexcept {
        return code > 0 ? code : -code - 1;
    }

    [[nodiscard]] static constexpr int ValueOf(int code) noexcept {
        if (code == 0) {
            return 0;
        }
        const int rank = PliesOf(code) < Spoilt ? 2 : 1;
        return code > 0 ? rank : -rank;
    }

    static void Add(ExitSum& sum, int value) noexcept {
        switch (value) {
        case -2: sum.AddWin(1); break;
        case -1: sum.AddWin(Spoilt); break;
        case 1: sum.AddLoss(Spoilt); break;
        case 2: sum.AddLoss(1); break;
        default: sum.AddDraw();
        }
    }
};

}  // namespace brenquil
