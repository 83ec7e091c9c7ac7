// The line of the command `go` as limits of a search.
#pragma once

#include "board/position.h"
#include "search/search_limits.h"

#include <string_view>

namespace brenquil {

/// The limits that a `go` line names. A token that is absent, stands at the end of the line or is
/// followed by no number leaves its field at the default. Each `searchmoves` word becomes an entry,
/// even one that is no move here (0), until the list is full; so whatever follows `searchmoves` in
/// the line lands in the list as zeros.
/// @param chess960  how castling is written among the `searchmoves`
[[nodiscard]] SearchLimits ParseGo(std::string_view line, const CPosition& position, bool chess960);

}  // namespace brenquil
