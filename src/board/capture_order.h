// The order in which captures and promotions are tried: the most valuable victim first, and among
// equal victims the cheapest attacker.
//
// `CMoveGenerator::GenerateCaptures` writes these keys along with the moves; `ScoreCaptures` sets
// them in a list that holds other moves as well.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "board/types.h"
#include "platform/bits.h"

#include <array>
#include <cstdint>

namespace brenquil {

namespace capture_order {

/// By `PieceType`, the last entry for an empty square.
inline constexpr std::array<int, 7> VictimValue = {1, 2, 2, 3, 4, 0, 0};
inline constexpr std::array<int, 6> AttackerValue = {5, 4, 3, 2, 1, 0};
// By `PromotionIndex`.
inline constexpr std::array<int, 4> PromotionValue = {2, 1, 1, 3};

/// 0 if nothing is won.
[[nodiscard]] constexpr std::uint8_t KeyOf(int won, PieceType attacker) noexcept {
    constexpr int VictimWeight = 8;
    return ToByte(won == 0 ? 0 : VictimWeight * won + AttackerValue[attacker]);
}

}  // namespace capture_order

/// [attacker][victim]: the sort key of a capture of the normal kind, 0 where nothing is won.
inline constexpr std::array<std::array<std::uint8_t, PieceCodes + 1>, 6> CaptureKeys = [] {
    std::array<std::array<std::uint8_t, PieceCodes + 1>, 6> keys{};
    for (const PieceType attacker : {Pawn, Knight, Bishop, Rook, Queen, King}) {
        for (unsigned victim = 0; victim <= PieceCodes; ++victim) {
            const int won = capture_order::VictimValue[victim / 2];
            keys[attacker][victim] = capture_order::KeyOf(won, attacker);
        }
    }
    return keys;
}();

/// [index][victim]: the sort key of a promotion by `PromotionIndex`, capturing or not.
inline constexpr std::array<std::array<std::uint8_t, PieceCodes + 1>, 4> PromotionKeys = [] {
    std::array<std::array<std::uint8_t, PieceCodes + 1>, 4> keys{};
    for (unsigned index = 0; index < keys.size(); ++index) {
        for (unsigned victim = 0; victim <= PieceCodes; ++victim) {
            const int won =
                capture_order::VictimValue[victim / 2] + capture_order::PromotionValue[index];
            keys[index][victim] = capture_order::KeyOf(won, Pawn);
        }
    }
    return keys;
}();

/// [man on the target]: the sort key of an en passant capture, whose victim stands elsewhere. Only
/// a position that was set up has a man on the target.
inline constexpr std::array<std::uint8_t, PieceCodes + 1> EnPassantKeys = [] {
    std::array<std::uint8_t, PieceCodes + 1> keys{};
    for (unsigned victim = 0; victim <= PieceCodes; ++victim) {
        const int won = capture_order::VictimValue[victim / 2] + capture_order::VictimValue[Pawn];
        keys[victim] = capture_order::KeyOf(won, Pawn);
    }
    return keys;
}();

/// Sets the sort keys of captures and promotions. Moves that win nothing keep the key that they
/// have. Returns how many keys were set.
int ScoreCaptures(MoveList& list, const CPosition& position) noexcept;

}  // namespace brenquil
