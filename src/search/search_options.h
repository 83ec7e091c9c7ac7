// The option group "Search": what steers the tree, and the number of threads.
//
// Search threads read the options themselves, at any time and without a lock; a change takes effect
// at the next read. `threads` is read at the start of each search.
#pragma once

#include "platform/processor.h"
#include "text/option.h"

#include <algorithm>
#include <array>

namespace brenquil {

/// The options of the search.
class CSearchOptions final : public COptionGroup {
public:
    /// The largest number of threads that is advertised, on a machine with as many processors.
    static constexpr int MostAdvertisedThreads = 32;

    CSearchOptions() : COptionGroup("Search") {}

    /// Search threads, the master included.
    COptionSpin threads =
        AddSpin("Threads", 1, 1, std::min(MostAdvertisedThreads, ProcessorCount()));
    COptionSpin nullmoveReduction = AddSpin("Nullmove Reduction", 3, 1, 5);
    COptionSpin nullmoveMinDepth = AddSpin("Nullmove Min Depth", 2, 1, 100);
    COptionSpin lmrMinDepth = AddSpin("LMR Min Depth", 3, 1, 100);
    COptionSpin lmrMinMoves = AddSpin("LMR Min Moves", 4, 1, 100);
    /// In evaluation units, for 1, 2 and 3 remaining plies.
    std::array<COptionSpin, 3> futilityMargins = {AddSpin("Futility Margin1", 50, 0, 5000),
                                                  AddSpin("Futility Margin2", 350, 0, 5000),
                                                  AddSpin("Futility Margin3", 550, 0, 5000)};
    COptionSpin multiPv = AddSpin("MultiPV", 1, 1, 20);
    COptionSpin multiPvDelta = AddSpin("MultiPV Delta", 500, 1, 2000);
    COptionCheck useNullmove = AddCheck("Use Nullmove", true);
    COptionCheck useFutility = AddCheck("Use Futility", true);
    COptionCheck useLmr = AddCheck("Use LMR", true);
    COptionCheck useExtensions = AddCheck("Use Extensions", true);
};

}  // namespace brenquil
