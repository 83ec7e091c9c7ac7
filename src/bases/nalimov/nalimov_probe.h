// From a position to its score, through the table list, the index calculators and the block cache.
#pragma once

#include "bases/nalimov/nalimov_cache.h"
#include "bases/nalimov/nalimov_tables.h"
#include "board/position.h"
#include "board/types.h"

namespace brenquil {

/// Asks the tables for the score of a position from the view of the side to move.
///
/// A win in n moves scores 32000 - 2n, a loss in n moves 2n - 32000, a draw 0: two plies a move,
/// which for a win is on purpose one point less than the exact number of plies would give. Castling
/// rights play no part. Any number of threads may ask at the same time.
/// @return false when the answer is in no table that could be read
[[nodiscard]] bool NalimovProbe(Score& score, const CPosition& position,
                                const CNalimovTables& tables, CNalimovCache& cache) noexcept;

}  // namespace brenquil
