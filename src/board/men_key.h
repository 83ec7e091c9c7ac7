// The men of a position as one number, which a position keeps as it goes.
//
// Five bits of count for each kind of man but the kings, Black's kind before White's; bishops on
// dark squares count apart from those on light ones. Captures and promotions change it by adding
// and subtracting units; all other moves leave it alone, as bishops never leave their colour.
//
// With up to 31 men of a colour no count can overflow into the next, so the key tells the material
// exactly. Fuller boards can be set up; whoever reads the key asks `CPosition::HasExactMenKey`
// first.
#pragma once

#include "board/attacks.h"
#include "board/types.h"

#include <array>
#include <cstdint>

namespace brenquil {

using MenKey = std::uint64_t;

inline constexpr unsigned MenCountBits = 5;

namespace tables {

/// What a man adds to the key: [on a dark square][piece].
inline constexpr auto MenUnits = [] {
    constexpr unsigned DarkBishops = 10;  // the field of Black's, White's comes next
    std::array<std::array<MenKey, PieceCodes>, 2> units{};
    for (unsigned kind = BlackPawn; kind <= WhiteQueen; ++kind) {
        units[0][kind] = units[1][kind] = MenKey{1} << MenCountBits * kind;
    }
    units[1][BlackBishop] = MenKey{1} << MenCountBits * DarkBishops;
    units[1][WhiteBishop] = MenKey{1} << MenCountBits * (DarkBishops + 1);
    return units;
}();

}  // namespace tables

/// What a man of this kind adds to the key on this square.
[[nodiscard]] constexpr MenKey MenUnit(Piece piece, Square square) noexcept {
    return tables::MenUnits[DarkSquares >> square & 1U][piece];
}

}  // namespace brenquil
