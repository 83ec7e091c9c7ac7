// Which of the three spellings of a castling move is used where.
#pragma once

#include "board/position_text.h"
#include "interface/output_options.h"
#include "interface/protocol.h"

namespace brenquil {

/// True when a front end plays Chess960 with KQkq castling fields: castling is then written by
/// name.
[[nodiscard]] inline bool CastlesByName(const CProtocol& protocol,
                                        const COutputOptions& options) noexcept {
    return protocol.IsUci() && options.chess960.enabled && !protocol.fileLetterCastling;
}

/// The notation of lists for a person: squares only.
[[nodiscard]] inline CastlingNotation ListNotation(const COutputOptions& options) noexcept {
    return options.chess960.enabled ? CastlingNotation::KingTakesRook
                                    : CastlingNotation::KingTarget;
}

/// The notation of the lines that a search prints.
[[nodiscard]] inline CastlingNotation LineNotation(const CProtocol& protocol,
                                                   const COutputOptions& options) noexcept {
    return CastlesByName(protocol, options) ? CastlingNotation::Name : ListNotation(options);
}

}  // namespace brenquil
