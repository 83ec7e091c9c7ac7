#include "search/search_options.h"

#include "platform/processor.h"
#include "text/text.h"

#include <algorithm>

namespace brenquil {

namespace {

constexpr std::int32_t MaxThreads = 32;

}  // namespace

CSearchOptions::CSearchOptions() : COptionGroup("Search") {
    const std::int32_t maxThreads =
        std::min(MaxThreads, static_cast<std::int32_t>(ProcessorCount()));

    AddSpin(threads, "Threads", "Threads", 1, 1, maxThreads);
    AddSpin(nullmoveReduction, "Nullmove Reduction", "Nullmove Reduction", 3, 1, 5);
    AddSpin(nullmoveMinDepth, "Nullmove Min Depth", "Nullmove Min Depth", 2, 1, 100);
    AddSpin(lmrMinDepth, "LMR Min Depth", "LMR Min Depth", 3, 1, 100);
    AddSpin(lmrMinMoves, "LMR Min Moves", "LMR Min Moves", 4, 1, 100);
    AddMargin(futilityMargin1, "Futility Margin1", 1);
    AddMargin(futilityMargin2, "Futility Margin2", 2);
    AddMargin(futilityMargin3, "Futility Margin3", 3);
    AddSpin(multiPv, "MultiPV", "MultiPV", 1, 1, 20);
    AddSpin(multiPvDelta, "MultiPV Delta", "MultiPV Delta", 500, 1, 2000);
    AddCheck(useNullmove, "Use Nullmove", "Use Nullmove", true);
    AddCheck(useFutility, "Use Futility", "Use Futility", true);
    AddCheck(useLmr, "Use LMR", "Use LMR", true);
    AddCheck(useExtensions, "Use Extensions", "Use Extensions", true);
}

void CSearchOptions::AddMargin(COptionSpin& option, std::string_view optionName,
                               std::size_t depth) {
    Relaxed<std::int32_t>& margin = futilityMargins[depth];
    AddSpin(option, optionName, optionName, margin, 0, 5000, [&margin](const std::string& value) {
        if (IsNumeric(value)) {
            margin = COptionSpin::Bound(ToInteger(value));
        }
    });
}

}  // namespace brenquil
