// Which of the three spellings of a castling move is used where.
#pragma once

#include "board/position_text.h"
#include "interface/output_options.h"
#include "interface/protocol.h"

#include <string_view>

namespace brenquil {

/// True when the castling field of the FEN names rooks by their files.
[[nodiscard]] bool HasFileLetterCastling(std::string_view fen);

/// True when a front end plays Chess960 with KQkq castling fields: castling is then written by
/// name.
[[nodiscard]] bool CastlesByName(const CProtocol& protocol, const COutputOptions& options) noexcept;

/// The notation of lists for a person: squares only.
[[nodiscard]] CastlingNotation ListNotation(const COutputOptions& options) noexcept;

/// The notation of the lines that a search prints.
[[nodiscard]] CastlingNotation LineNotation(const CProtocol& protocol,
                                            const COutputOptions& options) noexcept;

}  // namespace brenquil
