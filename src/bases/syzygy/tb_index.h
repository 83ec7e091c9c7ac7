// The number of a position inside a Syzygy table.
//
// The men are listed in the order that the table's header gives. A leading group is numbered
// together, folded by the symmetries of the board: two kings or three different men without pawns,
// the pawns of one side with them. Every further group of like men is numbered by its combination
// on the squares left. The header also says in which order these numbers are multiplied up.
//
// `LayOutGroups` works out sizes and factors once, when a table is read; the two encoders run at
// each probe and allocate nothing. Whatever squares they are given, they stay inside their arrays;
// for squares that no position has, the number means nothing and may lie outside the table, which
// the caller has to test.
#pragma once

#include "bases/syzygy/tb_material.h"

#include <array>
#include <cstdint>

namespace brenquil {

/// What a table is about.
struct TbShape {
    std::uint64_t key = 0;        ///< White stands for the side that the name gives first
    std::uint64_t mirrorKey = 0;  ///< the sides exchanged
    TbCounts counts{};
    std::uint8_t men = 0;  ///< kings included
    bool symmetric = false;
    bool hasPawns = false;
    std::uint8_t encodingType = 0;            ///< tables without pawns
    std::array<std::uint8_t, 2> pawnCount{};  ///< with pawns: leading group, other side
};

/// The shape of the table of that name.
[[nodiscard]] TbShape ShapeOfName(std::string_view name);

/// Squares in the order of a table's men; unused entries are 0.
using TbSquares = std::array<Square, TbMaxTableMen>;

/// How one stored side of one file group numbers its positions.
struct TbLayout {
    std::uint64_t size = 0;                                   ///< how many numbers there are
    std::array<std::uint64_t, TbMaxTableMen> groupFactors{};  ///< at the first man of each group
    std::array<std::uint8_t, TbMaxTableMen> pieceCodes{};     ///< `TbCode` of each man
    std::array<std::uint8_t, TbMaxTableMen> groupSizes{};     ///< at the first man of each group
};

inline constexpr unsigned TbNoSecondOrder = 15;

/// Works out groups, factors and size from `pieceCodes`. `file` is the file group, 0 without pawns.
/// @return false when the places in the order leave a group without a factor
[[nodiscard]] bool LayOutGroups(const TbShape& shape, unsigned file, unsigned order,
                                unsigned secondOrder, TbLayout& layout) noexcept;

/// How many placements the leading group has. `file` is the file group, 0 without pawns.
[[nodiscard]] std::uint64_t LeadingPlacements(const TbShape& shape, unsigned file) noexcept;

/// The number of the squares in a table without pawns. Folds and reorders `squares`.
[[nodiscard]] std::uint64_t EncodePiece(const TbShape& shape, const TbLayout& layout,
                                        TbSquares& squares) noexcept;

/// The same for a table with pawns; the first pawn is the one that `LeadPawnToFront` chose.
[[nodiscard]] std::uint64_t EncodePawn(const TbShape& shape, const TbLayout& layout,
                                       TbSquares& squares) noexcept;

/// Brings the pawn of the lowest `LeadPawnOrder` to the front of the first `pawns` squares, which
/// is not 0.
/// @return its file group, 0 to 3
unsigned LeadPawnToFront(unsigned pawns, TbSquares& squares) noexcept;

}  // namespace brenquil
