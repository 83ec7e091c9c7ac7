#include "interface/move_notation.h"

#include "text/text.h"

#include <cstddef>
#include <string>
#include <vector>

namespace brenquil {

namespace {

constexpr std::size_t CastlingField = 2;  ///< counted from 0 among the fields of a FEN

}  // namespace

bool HasFileLetterCastling(std::string_view fen) {
    constexpr std::string_view FileLetters = "ABCDEFGHabcdefgh";
    const std::vector<std::string> fields = Split(fen, ' ');
    return fields.size() > CastlingField &&
           fields[CastlingField].find_first_of(FileLetters) != std::string::npos;
}

bool CastlesByName(const CProtocol& protocol, const COutputOptions& options) noexcept {
    return protocol.dialect.NamesCastling() && protocol.IsUci() && options.chess960.enabled &&
           !protocol.fileLetterCastling;
}

CastlingNotation ListNotation(const COutputOptions& options) noexcept {
    return options.chess960.enabled ? CastlingNotation::KingTakesRook
                                    : CastlingNotation::KingTarget;
}

CastlingNotation LineNotation(const CProtocol& protocol, const COutputOptions& options) noexcept {
    return CastlesByName(protocol, options) ? CastlingNotation::Name : ListNotation(options);
}

}  // namespace brenquil
