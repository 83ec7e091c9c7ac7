// The line of the command `go` as strict UCI reads it: word by word.
#pragma once

#include "search/search_limits.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// What a line asks for.
struct StrictGo {
    SearchLimits limits;
    std::optional<int> perftDepth;     ///< set: only a count is wanted
    std::vector<std::string> remarks;  ///< what was not understood, a message for each
};

/// Reads the line. `mate` counts moves here, a clock that is used up counts as 0, and what is not
/// understood is skipped and remarked upon. A line that asks for something but names no limit that
/// is understood means a search of depth 1, not an endless one.
/// @param textToMove    the move of a word among the `searchmoves`, `NoMove` if it is not legal
/// @param moveOverhead  milliseconds that are taken off every clock
[[nodiscard]] StrictGo ParseStrictGo(std::string_view line,
                                     const std::function<Move(std::string_view)>& textToMove,
                                     int moveOverhead);

}  // namespace brenquil
