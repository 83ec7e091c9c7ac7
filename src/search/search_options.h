// The option group "Search": what steers the tree, and the number of threads.
//
// Search threads read the typed fields directly, at any time and without a lock; a change takes
// effect at the next read. `threads` is read at the start of each search.
#pragma once

#include "platform/relaxed.h"
#include "text/option.h"

#include <array>
#include <cstdint>

namespace brenquil {

/// The options of the search.
class CSearchOptions final : public COptionGroup {
public:
    CSearchOptions();

    /// Futility margins in evaluation units by remaining depth, steered by the three options named
    /// after them. There is no margin at depth 0, the entry is there for the index.
    std::array<Relaxed<std::int32_t>, 4> futilityMargins{0, 50, 350, 550};

    COptionSpin threads;  ///< search threads, the master included
    COptionSpin nullmoveReduction;
    COptionSpin nullmoveMinDepth;
    COptionSpin lmrMinDepth;
    COptionSpin lmrMinMoves;
    COptionSpin futilityMargin1;
    COptionSpin futilityMargin2;
    COptionSpin futilityMargin3;
    COptionSpin multiPv;
    COptionSpin multiPvDelta;
    COptionCheck useNullmove;
    COptionCheck useFutility;
    COptionCheck useLmr;
    COptionCheck useExtensions;

private:
    void AddMargin(COptionSpin& option, std::string_view optionName, std::size_t depth);
};

}  // namespace brenquil
