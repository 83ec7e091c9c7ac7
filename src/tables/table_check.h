// Holds table files against the rules of chess.
//
// A Nalimov table is checked without solving anything: a distance is right if, and only if, it
// follows from the distances behind each single move, and mates and captures are where the counting
// begins. Places of the file that no position has must hold the mark. A Syzygy table is compared
// with a solution made anew in memory from the tables of what it can turn into: its classes do not
// follow from each other, and its distances are rounded. Where both families are in the folder,
// they are held against each other: there is a mate exactly where there is a win without the
// fifty-move rule.
//
// A table can only be checked together with those that it can turn into; without them it counts as
// not checked.
#pragma once

#include "tables/progress.h"
#include "tables/workers.h"

#include <cstdint>
#include <string>

namespace brenquil {

struct CheckOutcome {
    int sound = 0;
    int faulty = 0;
    int unchecked = 0;  ///< tables that they need are not there

    [[nodiscard]] bool IsGood() const noexcept { return faulty == 0 && unchecked == 0; }
};

/// Checks every table in a folder and prints a line for each. Throws `CTableError` for what has
/// nothing to do with one table.
[[nodiscard]] CheckOutcome CheckTables(const std::string& folder, std::uint64_t memoryBytes,
                                       CWorkers& workers, CProgress& progress);

}  // namespace brenquil
