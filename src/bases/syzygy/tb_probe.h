// What the Syzygy tables say of a position, with the gaps between the tables filled by looking
// ahead.
//
// A win/draw/loss table may hold anything for a position in which a capture is best, and knows
// nothing of en passant, so a probe follows captures first. A distance table stores one side to
// move only and no moves that zero the fifty-move counter, so a probe follows those, and all moves
// where the other side is stored.
//
// Values of `wdl`, from the side to move: -2 loss, -1 loss saved by the fifty-move rule, 0 draw, 1
// win spoiled by the rule, 2 win. `dtz` is the number of plies to the next zeroing move in that
// view; above 100 or below -100 for the two classes that the rule turns into draws.
//
// Threads: `TbProbeWdl` may run on any number of threads; `TbProbeDtz` and `TbProbeRoot` on that of
// the command loop only. Nothing is allocated, except by the first reading of a table.
#pragma once

#include "bases/syzygy/syzygy_tables.h"
#include "bases/syzygy/tb_board.h"
#include "bases/syzygy/tb_lookup.h"

namespace brenquil {

/// The value of an illegal move in the root probe.
inline constexpr int TbScoreIllegal = 32767;
/// No winning move is known yet, in the one-ply search.
inline constexpr int TbBestNone = 65535;

/// The class of a position, en passant included. Meaningless when `success` is `Failed`.
[[nodiscard]] int TbProbeWdl(CSyzygyTables& tables, const TbPosition& position, TbSuccess& success);

/// The distance of a position, en passant included. Meaningless when `success` is `Failed`.
[[nodiscard]] int TbProbeDtz(CSyzygyTables& tables, const TbPosition& position, TbSuccess& success);

/// The best move of a position.
/// @param dtz  takes the distance, if it could be found
/// @return `TbMoveNone` on failure, `TbMoveCheckmate` or `TbMoveStalemate` without a move
[[nodiscard]] TbMove TbProbeRoot(CSyzygyTables& tables, const TbPosition& position, int& dtz);

}  // namespace brenquil
