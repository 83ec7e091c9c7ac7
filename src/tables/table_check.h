// Checks the table files in a folder against the rules of chess.
//
// A Nalimov table is held against itself (tables/distance_check.h), a Syzygy table against a
// solution made anew (tables/class_check.h), and where both families are in the folder, they are
// held against each other. A table can only be checked together with those that it can turn into;
// without them it counts as not checked, and so does one for which the memory is not enough.
#pragma once

#include "tables/progress.h"
#include "tables/workers.h"

#include <cstdint>
#include <string>
#include <vector>

namespace brenquil {

struct CheckOutcome {
    int sound = 0;
    int faulty = 0;
    int unchecked = 0;  ///< what they need, tables or memory, is not there

    [[nodiscard]] bool IsGood() const noexcept { return faulty == 0 && unchecked == 0; }
};

/// What is to be checked.
struct CheckingPlan {
    std::string folder;
    std::vector<int> endings;  ///< numbers; those without a table are passed over; empty for all
    std::uint64_t memoryBytes = 0;
};

/// Checks tables in a folder and prints a line for each. Throws `CTableError` for what has nothing
/// to do with one table.
[[nodiscard]] CheckOutcome CheckTables(const CheckingPlan& plan, CWorkers& workers,
                                       CProgress& progress);

}  // namespace brenquil
