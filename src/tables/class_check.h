// Holds a Syzygy table against a solution of its ending made anew: its classes do not follow from
// each other, and its distances are rounded.
#pragma once

#include "tables/syzygy_bytes.h"
#include "tables/table_faults.h"

namespace brenquil {

/// Probes every position in the tables of a folder, as the engine does, symmetric ones once.
/// @param codes      what is right
/// @param distances  the distances to mate of the same ending, if they are at hand: there is a mate
///                   exactly where there is a win without the fifty-move rule
void CheckClasses(const std::string& folder, const ZeroingCodes& codes,
                  const SolvedValues* distances, CWorkers& workers, CProgress& progress,
                  CTableFaults& faults);

}  // namespace brenquil
