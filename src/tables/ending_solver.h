// Solves an ending by going backwards from the mates and from what leaves the ending.
//
// First every position is looked at once: how many quiet moves it has, and what its other moves
// come to. Then the distances are settled in ascending order. Before a lost position all are won;
// a position is lost when the last of its quiet moves is known to lead to a win of the other side.
// So each position is taken back from once, and nothing is searched.
//
// Large slices are shared out among the threads, small ones are given to one thread each; slices
// that are equally far advanced do not need each other. The values depend on nothing of that.
//
// Memory beside the values: one byte for each place of a slice and side to move, for each thread
// where slices are small.
#pragma once

#include "tables/ending_exits.h"
#include "tables/ending_values.h"
#include "tables/progress.h"
#include "tables/workers.h"

#include <cstddef>
#include <memory>

namespace brenquil {

/// The codes of all positions of an ending. `solved` has all endings that it can turn into.
/// Throws `CTableError` and `CInterrupted`.
template <class Rules>
[[nodiscard]] std::unique_ptr<CEndingValues<typename Rules::Code>>
SolveEnding(const Ending& ending, const SolvedEndings& solved, CWorkers& workers,
            CProgress& progress);

/// What of an ending is needed to solve others.
template <class Rules>
[[nodiscard]] std::shared_ptr<SolvedValues>
KeepValues(std::unique_ptr<CEndingValues<typename Rules::Code>> codes, CWorkers& workers);

/// Bytes that solving takes at its peak, the endings that it can turn into left out.
template <class Rules>
[[nodiscard]] std::uint64_t SolvingBytes(const Ending& ending, std::size_t threads);

/// Bytes of one side to move of an ending that is kept.
[[nodiscard]] std::uint64_t KeptBytesOfSide(const Ending& ending);

}  // namespace brenquil
