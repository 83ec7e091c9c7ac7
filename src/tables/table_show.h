// What the tables know of one position, in words for people or as JSON for scripts.
#pragma once

#include <string>

namespace brenquil {

/// The text, with its line feeds. Throws `CTableError` for a FEN that is not a position of an
/// ending and where no table knows anything.
[[nodiscard]] std::string ShowPosition(const std::string& fen, const std::string& folder,
                                       bool asJson);

}  // namespace brenquil
