// Holds a Nalimov table against itself.
//
// Nothing is solved: a distance to mate is right if, and only if, it follows from the distances
// after each single move, and mates and captures are where the counting begins. Places of a file
// that no position has must hold the mark for that.
#pragma once

#include "tables/nalimov_bytes.h"
#include "tables/table_faults.h"

namespace brenquil {

/// "a win in 12", "a loss in 3", "a draw": what a code of `DistanceToMate` says.
[[nodiscard]] std::string TextOfDistance(int code);

/// @param solved    the values of the ending and of all that it can turn into
/// @param contents  what its files hold
void CheckDistances(const Ending& ending, const SolvedEndings& solved,
                    const NalimovContents& contents, CWorkers& workers, CProgress& progress,
                    CTableFaults& faults);

/// Bytes that the check takes beside the values and the contents.
[[nodiscard]] std::uint64_t DistanceCheckBytes(const Ending& ending);

}  // namespace brenquil
