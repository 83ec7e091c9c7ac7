// The men of a position as one number, which a position keeps as it goes.
//
// Five bits of count for each kind of man but the kings, Black's kind before White's; bishops on
// dark squares count apart from those on light ones. Captures and promotions change it by adding
// and subtracting units; all other moves leave it alone, as bishops never leave their colour.
//
// With up to 31 men of a colour no count can overflow into the next, so the key tells the material
// exactly. Fuller boards can be set up; their keys bear a mark, which no overflow reaches and which
// stays as men are taken off.
#pragma once

#include "board/attacks.h"
#include "board/table.h"
#include "board/types.h"

#include <array>
#include <cstdint>

namespace brenquil {

using MenKey = std::uint64_t;

inline constexpr unsigned MenCountBits = 5;
inline constexpr MenKey CrowdMark = MenKey{1} << 63;

/// Does the key tell the material.
[[nodiscard]] constexpr bool IsExact(MenKey key) noexcept {
    return (key & CrowdMark) == 0;
}

/// [piece][square]: what a man adds to the key. By square, though only bishops need it: the index
/// is that of the man's number in the position's key, which a capture has at hand.
inline constexpr std::array<SquareTable<MenKey>, PieceCodes> MenUnits = [] {
    constexpr unsigned DarkBishops = 10;  // the field of Black's, White's comes next
    std::array<SquareTable<MenKey>, PieceCodes> units{};
    for (unsigned kind = BlackPawn; kind <= WhiteQueen; ++kind) {
        for (Square square = A1; square <= H8; ++square) {
            const bool isDarkBishop =
                (kind == BlackBishop || kind == WhiteBishop) && (DarkSquares >> square & 1U) != 0;
            const unsigned field = isDarkBishop ? DarkBishops + kind - BlackBishop : kind;
            units[kind][square] = MenKey{1} << MenCountBits * field;
        }
    }
    return units;
}();

/// What a man of this kind adds to the key on this square.
[[nodiscard]] constexpr MenKey MenUnit(Piece piece, Square square) noexcept {
    return MenUnits[piece][square];
}

}  // namespace brenquil
