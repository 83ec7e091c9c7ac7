// Which men a Syzygy table is about: the name of a material, its counts and its key.
//
// A table and a position find each other by a 64-bit sum in which each man except the kings counts
// with a constant of its own. The same material seen from the other side has another sum, so a
// table has two keys; they are equal when both sides have the same men.
#pragma once

#include "bases/syzygy/tb_board.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// Codes of men in a table file: 1 to 6 for White's pawn, knight, bishop, rook, queen and king, the
/// same plus `TbBlackBit` for Black's.
enum TbCode : std::uint8_t { TbPawn = 1, TbKnight, TbBishop, TbRook, TbQueen, TbKing };

inline constexpr std::uint8_t TbBlackBit = 8;
inline constexpr int TbCodes = 16;       ///< length of arrays indexed by a code
inline constexpr int TbMaxTableMen = 6;  ///< most men of a table, kings included

/// How many men of each code there are; White stands for the side that a name gives first.
using TbCounts = std::array<std::uint8_t, TbCodes>;

/// Counts of a name such as "KQvKR". Letters that are not men count nothing.
[[nodiscard]] TbCounts CountsOfName(std::string_view name);

/// The key of the counts; with `mirror` of the same men with the sides exchanged.
[[nodiscard]] std::uint64_t MaterialKey(const TbCounts& counts, bool mirror) noexcept;

/// The key of a position, seen from White, with `mirror` from Black. 0 for two bare kings.
[[nodiscard]] std::uint64_t MaterialKey(const TbPosition& position, bool mirror) noexcept;

/// The name of a position's material, White's men first, with `mirror` Black's.
[[nodiscard]] std::string MaterialName(const TbPosition& position, bool mirror);

/// The squares of the men of one code.
[[nodiscard]] Bitboard SquaresOfCode(const TbPosition& position, unsigned code) noexcept;

/// The names of all tables that there can be, of three to six men, in the order in which they are
/// looked for.
[[nodiscard]] std::vector<std::string> AllTableNames();

}  // namespace brenquil
