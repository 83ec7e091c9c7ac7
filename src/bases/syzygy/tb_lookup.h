// Reads one value from a table that is loaded: which men stand where, as the table sees them, and
// what is stored for that.
//
// A table knows its men as those of White and Black in the order of its name. A position with the
// sides exchanged is read mirrored: colours, side to move and, with pawns, the board.
//
// The positions asked for have one king each and no pawn on the first or last rank. Any other
// position of the table's material fails, or gets an answer without meaning; nothing is read
// outside the table in any case. Any number of threads; no allocation.
#pragma once

#include "bases/syzygy/tb_board.h"
#include "bases/syzygy/tb_entry.h"

#include <cstdint>

namespace brenquil {

/// How a probe went.
enum class TbSuccess {
    OtherSide = -1,  ///< the distance table holds the other side to move
    Failed = 0,
    Found = 1,
    ByCapture = 2  ///< found, and the value was reached by a capture
};

/// Reads the class, -2 to 2, of a position with that key. False if the table does not hold it.
[[nodiscard]] bool LookUpWdl(const TbEntry& entry, const TbPosition& position, std::uint64_t key,
                             int& wdl) noexcept;

/// Reads the plies to the next zeroing move, less 1 and without sign, of a position of the class
/// `wdl`, which is not 0.
/// @return `Found`, `OtherSide` or `Failed`
[[nodiscard]] TbSuccess LookUpDtz(const DtzEntry& entry, const TbPosition& position, int wdl,
                                  int& value) noexcept;

}  // namespace brenquil
